#include "api/user_lock.h"

#include <cstdio>

#include "api/diagnostics.h"
#include "platform/os.h"

namespace vl {

bool LockUser(ApiSession& session, bool take) {
  if (!take) {
    session.lockFile.reset();
    return true;
  }
  char path[600];
  std::snprintf(path, sizeof path, "%s%s\\%s%s", session.userArea, session.userName, "V-DB\\",
                "VELOMAR.LOK");
  os::FileInfo info;
  if (os::GetFileInfo(path, &info) != os::kOk) os::CreateExclusive(path);
  if (os::CheckAccess(path, false) != os::kOk) {
    ApiReportError(&session, "Cannot access file %s", path);
    return false;
  }
  os::OpenedDescriptor lock = os::OpenLockFile(path);
  if (!lock.fd) {
    ApiReportError(&session, "User already logged on - cannot open %s", path);
    return false;
  }
  session.lockFile = std::move(lock.fd);
  return true;
}

}  // namespace vl
