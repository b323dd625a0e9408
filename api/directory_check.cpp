#include "api/directory_check.h"

#include "api/diagnostics.h"
#include "platform/os.h"

namespace vl {

VLRESULT CheckDirectory(const ApiSession* session, const char* path) {
  os::FileInfo info;
  if (int error = os::GetFileInfo(path, &info)) {
    std::string text = os::SystemErrorText(error);
    if (text.empty()) ApiReportError(session, "Error accessing %s", path);
    else ApiReportError(session, "Error accessing %s: %s", path, text.c_str());
    return error == os::kFileNotFound || error == os::kPathNotFound ? VL_E_FILE_NOT_FOUND
                                                                    : VL_E_ACCESS_DENIED;
  }
  if (!info.isDirectory) {
    ApiReportError(session, "Directory expected, file found: %s", path);
    return VL_E_FILE_ERROR;
  }
  if (info.readOnly) {
    ApiReportError(session, "No write permissions: %s", path);
    return VL_E_ACCESS_DENIED;
  }
  return VL_OK;
}

}  // namespace vl
