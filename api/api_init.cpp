// VlxAPIInit and VlxAPIClosedown: opening and closing sessions.
#include <cstring>

#include "api/call_frame.h"
#include "api/config.h"
#include "api/diagnostics.h"
#include "api/directory_check.h"
#include "api/text.h"
#include "api/user_list.h"
#include "api/user_lock.h"

using namespace vl;

namespace {

inline constexpr size_t kAccountChars = 280;
inline constexpr size_t kMaxUserChars = 8;

bool IsNameCharacter(char c) {
  return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '-';
}

// Checks a fax user name given directly and copies it.
VLRESULT TakeDirectName(ApiSession& session, const char* name, char (&userName)[kUserNameSize]) {
  size_t length = std::strlen(name);
  if (length < 1 || length > kMaxUserChars) {
    ApiReportError(&session, "Invalid Velomar user name '%s'", name);
    return VL_E_INVALID_PARAM;
  }
  for (size_t i = 0; i < length; ++i) {
    if (i == 0 && name[i] == '@') continue;
    if (!IsNameCharacter(name[i])) {
      ApiReportError(&session, "Invalid characters in user name");
      return VL_E_INVALID_PARAM;
    }
  }
  CopyBounded(userName, name);
  return VL_OK;
}

// Checks the user's directory, its V-DB and (except for group users) its
// V-OUT; a missing directory is an invalid user.
VLRESULT CheckUserDirectories(const ApiSession& session) {
  std::string user = std::string(session.userArea) + session.userName;
  std::string paths[] = {user, user + "\\V-DB", user + "\\V-OUT"};
  const int count = session.userName[0] == '@' ? 2 : 3;
  for (int i = 0; i < count; ++i) {
    VLRESULT rc = CheckDirectory(&session, paths[i].c_str());
    if (rc == VL_E_FILE_NOT_FOUND) return VL_E_INVALID_USER;
    if (rc) return rc;
  }
  return VL_OK;
}

VLRESULT OpenSession(ApiSession& session, const char* userName, uint16_t lock) {
  if (VLRESULT rc = ReadSessionConfig(session)) return rc;
  ApiTrace(&session, "VlxAPIInit - user '%s'", userName && *userName ? userName : "(none)");
  if (!userName || !*userName) return VL_OK;

  char name[kUserNameSize] = {};
  if (const char* backslash = std::strchr(userName, '\\')) {
    char account[kAccountChars + 1];
    CopyBounded(account, backslash + 1);
    if (!*account) {
      ApiReportError(&session, "Invalid user name '%s'", userName);
      return VL_E_INVALID_PARAM;
    }
    if (VLRESULT rc = ResolveAccountName(session, account, userName, name)) return rc;
  } else if (VLRESULT rc = TakeDirectName(session, userName, name)) {
    return rc;
  }
  UpperCase(name);
  CopyBounded(session.userName, name);
  const std::string userDirectory = std::string(session.userArea) + session.userName + "\\";
  if ((userDirectory + "V-OUT\\").size() >= sizeof session.userOutDir) {
    ApiReportError(&session, "User directory name too long: %sV-OUT\\", userDirectory.c_str());
    return VL_E_PATH_NOT_FOUND;
  }
  CopyBounded(session.userOutDir, userDirectory + "V-OUT\\");
  CopyBounded(session.userInDir, userDirectory + "V-IN\\");
  session.lockRequested = lock != 0;
  if (VLRESULT rc = CheckUserDirectories(session)) return rc;
  if (lock && !LockUser(session, true)) return VL_E_CANNOT_LOG_ON;
  return VL_OK;
}

}  // namespace

extern "C" VLRESULT VLAPI_CALL VlxAPIInit(VLHANDLE* handle, const char* userName, uint16_t lock,
                                          VLERRORPROC errorCallback) {
  SessionPtr session;
  try {
    session = NewSession(errorCallback);
  } catch (...) {
    if (errorCallback) errorCallback("Unable to allocate memory for session");
    return VL_E_MALLOC_FAILED;
  }
  return Guarded(session.get(), [&]() -> VLRESULT {
    if (!handle) {
      ReportNullArgument(session.get(), "handle");
      return VL_E_INVALID_PARAM;
    }
    if (VLRESULT rc = OpenSession(*session, userName, lock)) return rc;
    session->active = 1;
    RegisterSession(session);
    *handle = session->handle;
    ApiTrace(session.get(), "...VlxAPIInit - return OK");
    return VL_OK;
  });
}

extern "C" VLRESULT VLAPI_CALL VlxAPIClosedown(VLHANDLE handle) {
  SessionPtr session = SessionFromHandle(handle);
  ApiTrace(session.get(), "VlxAPIClosedown");
  if (!session) return VL_E_NOT_INIT;
  return Guarded(nullptr, [&]() -> VLRESULT {
    if (session->HasUser()) LockUser(*session, false);
    session->active = 0;
    UnregisterSession(handle);
    session.reset();
    ApiTraceHandle(handle, "...VlxAPIClosedown - return OK");
    return VL_OK;
  });
}
