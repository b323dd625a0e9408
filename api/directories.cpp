// The directory getters: each copies one of the session's directories into
// a caller buffer.
#include <cstring>
#include <string>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/vlapi_internal.h"

using namespace vl;

namespace {

struct DirectoryQuery {
  const char* name;
  UserRule rule;
  std::string (*text)(const ApiSession&);
  // Trailing characters of the text that the buffer test does not count.
  size_t uncounted;
};

const DirectoryQuery kUserOutDir = {"VlxGetUserOutDir", UserRule::Needed,
                                    [](const ApiSession& s) { return std::string(s.userOutDir); }, 0};
const DirectoryQuery kUserInDir = {"VlxGetUserInDir", UserRule::Needed,
                                   [](const ApiSession& s) { return std::string(s.userInDir); }, 0};
const DirectoryQuery kUserArea = {
    "VlxGetUserArea", UserRule::Needed,
    [](const ApiSession& s) { return std::string(s.userArea) + s.userName + "\\"; }, 0};
const DirectoryQuery kSystemArea = {"VlxGetSystemArea", UserRule::NotNeeded,
                                    [](const ApiSession& s) { return std::string(s.systemArea); }, 0};
// The unexported getters append a further backslash that their buffer test
// does not count: callers inside the library pass large buffers.
const DirectoryQuery kServerArea = {
    "VlxGetServerArea", UserRule::NotNeeded,
    [](const ApiSession& s) { return std::string(s.serverArea) + "\\"; }, 1};
const DirectoryQuery kRequestArea = {
    "VlxGetRequestArea", UserRule::NotNeeded,
    [](const ApiSession& s) { return std::string(s.requestArea) + "\\"; }, 1};
const DirectoryQuery kUsersArea = {"VlxGetUsersArea", UserRule::NotNeeded,
                                   [](const ApiSession& s) { return std::string(s.userArea) + "\\"; },
                                   1};

VLRESULT GetDirectory(const DirectoryQuery& query, VLHANDLE handle, char* buffer, int16_t bufLen) {
  return CallFrame(handle, query.name, query.rule)
      .Enter("%s - BufLen = %d", query.name, bufLen)
      .Run([&](ApiSession& session) -> VLRESULT {
        if (!buffer) {
          ReportNullArgument(&session, "buffer");
          return VL_E_INVALID_PARAM;
        }
        std::string text = query.text(session);
        if (static_cast<long>(text.size() - query.uncounted) >= bufLen) return VL_E_BUFFER_TOO_SMALL;
        std::memcpy(buffer, text.c_str(), text.size() + 1);
        return VL_OK;
      });
}

}  // namespace

extern "C" {

VLRESULT VLAPI_CALL VlxGetUserOutDir(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDirectory(kUserOutDir, handle, buffer, bufLen);
}

VLRESULT VLAPI_CALL VlxGetUserInDir(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDirectory(kUserInDir, handle, buffer, bufLen);
}

VLRESULT VLAPI_CALL VlxGetUserArea(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDirectory(kUserArea, handle, buffer, bufLen);
}

VLRESULT VLAPI_CALL VlxGetSystemArea(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDirectory(kSystemArea, handle, buffer, bufLen);
}

VLRESULT VLAPI_CALL VlxGetServerArea(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDirectory(kServerArea, handle, buffer, bufLen);
}

VLRESULT VLAPI_CALL VlxGetRequestArea(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDirectory(kRequestArea, handle, buffer, bufLen);
}

VLRESULT VLAPI_CALL VlxGetUsersArea(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDirectory(kUsersArea, handle, buffer, bufLen);
}

}  // extern "C"
