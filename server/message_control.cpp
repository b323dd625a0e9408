// Asking the server to act on a message or on itself: VlxAbortMsg(Ex),
// VlxHoldMsg(Ex), VlxReleaseMsg(Ex), VlxRushMsgEx, VlxStopServer and
// VlxRestartServer.
#include <cstring>
#include <string>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/text.h"
#include "msg/body_name.h"
#include "msg/msg_dir.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"
#include "server/request_writer.h"

using namespace vl;

namespace {

struct MessageRequest {
  const char* name;      // as the traces give it
  int16_t code;
  bool anyDirectory;     // false: the out directory only
};

const MessageRequest kAbort = {"VlxAbortMsg", kRequestDelete, true};
const MessageRequest kHold = {"VlxHoldMsg", kRequestHold, false};
const MessageRequest kRelease = {"VlxReleaseMsg", kRequestRelease, false};
const MessageRequest kRush = {"VlxRushMsg", kRequestRush, false};

// True when the control file's "[HISTORY]" "MessageID:" is exactly id.
bool MessageIdMatches(const ApiSession& session, uint16_t selector, const char* body,
                      const char* id) {
  const std::string path =
      UpperCase(std::string(MessageDirectory(session, selector)) + body + ".CTL");
  para::Opened control = para::OpenShared(10, path.c_str(), "rb");
  if (!control) {
    if (control.error == os::kFileNotFound || control.error == os::kPathNotFound)
      ApiReportError(&session, "Control file %s not found", path.c_str());
    else
      ApiReportError(&session, "Unable to open file %s", path.c_str());
    return false;
  }
  char line[para::kLineSize];
  long position = 0;
  if (!para::FindParagraph(control.get(), "[HISTORY]", line, sizeof line, &position)) {
    ApiTrace(&session, "...CheckMsgID - no HISTORY para");
    return false;
  }
  char value[para::kLineSize];
  if (para::ReadText(control.get(), "MessageID:", value, sizeof value, position) &&
      std::strcmp(value, id) == 0)
    return true;
  ApiTrace(&session, "...CheckMsgID - messageID doesn't match");
  return false;
}

VLRESULT ControlMessage(const MessageRequest& request, VLHANDLE handle, uint16_t directory,
                        const char* body, const char* messageId) {
  return CallFrame(handle, request.name, UserRule::Needed)
      .Enter("%s - '%s\\%s.CTL'", request.name, DirectoryWord(directory), body ? body : "(null)")
      .Run([&](ApiSession& session) -> VLRESULT {
        // The server is checked before the arguments.
        if (VlxCheckServer(handle) != VL_OK) return VL_E_SERVER_NOT_RUNNING;
        if (VLRESULT rc = CheckBodyName(session, body)) return rc;
        const bool directoryOk =
            directory == kDirectoryOut || (request.anyDirectory && directory == kDirectoryIn);
        if (!directoryOk) {
          ApiReportError(&session, "Message directory parameter invalid");
          return VL_E_INVALID_PARAM;
        }
        const uint16_t selector = request.anyDirectory ? directory : kDirectoryOut;
        if (messageId && !MessageIdMatches(session, selector, body, messageId)) {
          ApiReportError(&session, "Message ID does not match given control file");
          return VL_E_MSG_UNKNOWN;
        }
        if (VLRESULT rc = CheckNotReserved(session, body)) return rc;
        return WriteRequest(session, request.code, selector, body);
      });
}

VLRESULT ControlServer(const char* name, int16_t code, VLHANDLE handle, uint16_t reserved) {
  return CallFrame(handle, name, UserRule::NotNeeded)
      .Enter("%s", name)
      .Run([&](ApiSession& session) -> VLRESULT {
        if (VlxCheckServer(handle) != VL_OK) return VL_E_SERVER_NOT_RUNNING;
        if (reserved != 0) {
          ApiReportError(&session, "Reserved parameter must be set to 0");
          return VL_E_INVALID_PARAM;
        }
        return WriteRequest(session, code, kDirectoryOut, nullptr);
      });
}

}  // namespace

extern "C" {

VLRESULT VLAPI_CALL VlxAbortMsgEx(VLHANDLE handle, uint16_t directory, const char* body,
                                  const char* messageId) {
  return ControlMessage(kAbort, handle, directory, body, messageId);
}

VLRESULT VLAPI_CALL VlxHoldMsgEx(VLHANDLE handle, uint16_t directory, const char* body,
                                 const char* messageId) {
  return ControlMessage(kHold, handle, directory, body, messageId);
}

VLRESULT VLAPI_CALL VlxReleaseMsgEx(VLHANDLE handle, uint16_t directory, const char* body,
                                    const char* messageId) {
  return ControlMessage(kRelease, handle, directory, body, messageId);
}

VLRESULT VLAPI_CALL VlxRushMsgEx(VLHANDLE handle, uint16_t directory, const char* body,
                                 const char* messageId) {
  return ControlMessage(kRush, handle, directory, body, messageId);
}

VLRESULT VLAPI_CALL VlxAbortMsg(VLHANDLE handle, uint16_t directory, const char* body) {
  return VlxAbortMsgEx(handle, directory, body, nullptr);
}

VLRESULT VLAPI_CALL VlxHoldMsg(VLHANDLE handle, uint16_t directory, const char* body) {
  return VlxHoldMsgEx(handle, directory, body, nullptr);
}

VLRESULT VLAPI_CALL VlxReleaseMsg(VLHANDLE handle, uint16_t directory, const char* body) {
  return VlxReleaseMsgEx(handle, directory, body, nullptr);
}

VLRESULT VLAPI_CALL VlxStopServer(VLHANDLE handle, uint16_t reserved) {
  return ControlServer("VlxStopServer", kRequestShutdown, handle, reserved);
}

VLRESULT VLAPI_CALL VlxRestartServer(VLHANDLE handle, uint16_t reserved) {
  return ControlServer("VlxRestartServer", kRequestRestart, handle, reserved);
}

}  // extern "C"
