// Access checks against the shared directories.
#include "automation/access.h"

#include "api/vlapi_internal.h"
#include "platform/os.h"

namespace vlauto {

bool MayAccess(const std::string& directory, uint32_t mask) {
  return directory.empty() || os::CheckDirectoryAccess(directory.c_str(), mask) == os::kOk;
}

std::string RequestArea(VLHANDLE handle) {
  char area[300] = {};
  return VlxGetRequestArea(handle, area, sizeof area - 1) == VL_OK ? area : "";
}

std::string UserOutDir(VLHANDLE handle) {
  char directory[300] = {};
  return VlxGetUserOutDir(handle, directory, sizeof directory) == VL_OK ? directory : "";
}

std::string FolderDir(VLHANDLE handle, uint16_t folder) {
  char directory[300] = {};
  VLRESULT rc = folder == VL_DIR_IN ? VlxGetUserInDir(handle, directory, sizeof directory)
                                    : VlxGetUserOutDir(handle, directory, sizeof directory);
  return rc == VL_OK ? directory : "";
}

}  // namespace vlauto
