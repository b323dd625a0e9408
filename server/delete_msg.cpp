// VlxDeleteMsg: removing a message's entry and files, or every message of a
// directory while the server is stopped. The server is not told.
#include <string>
#include <vector>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "msg/body_name.h"
#include "msg/msg_dir.h"
#include "msg/tables.h"
#include "platform/os.h"

using namespace vl;

namespace {

inline constexpr uint16_t kLastDocumentFormat = 20;

// Deletes the files matching pattern in directory; the number that could
// not be deleted.
int RemoveMatching(const std::string& directory, const std::string& pattern) {
  std::vector<std::string> names;
  if (os::ListFiles((directory + pattern).c_str(), &names) != os::kOk) return 0;
  int failed = 0;
  for (const std::string& name : names)
    if (os::RemoveFile((directory + name).c_str()) != os::kOk) ++failed;
  return failed;
}

// Deletes the files of body (all files for "*") from the out directory's
// format and preview subdirectories, then from the directory itself.
int RemoveMessageFiles(const ApiSession& session, uint16_t selector, const char* base) {
  const std::string pattern = std::string(base) + ".*";
  const std::string out = session.userOutDir;
  int failed = 0;
  if (selector == kDirectoryOut) {
    for (uint16_t code = 1; code <= kLastDocumentFormat; ++code)
      if (const DataFormat* format = FormatByCode(code))
        failed += RemoveMatching(out + format->extension + "\\", pattern);
    // The preview directory once for each known format, as the file
    // remover has always done; passes after the first find nothing.
    for (uint16_t code = 1; code <= kLastDocumentFormat; ++code)
      if (FormatByCode(code)) failed += RemoveMatching(out + "PREVIEW\\", pattern);
  }
  failed += RemoveMatching(MessageDirectory(session, selector), pattern);
  return failed;
}

VLRESULT DeleteMessage(ApiSession& session, VLHANDLE handle, uint16_t directory, const char* body,
                       uint16_t deleteFiles) {
  if (VLRESULT rc = CheckSelector(session, directory)) return rc;
  if (body) {
    if (VLRESULT rc = CheckBodyName(session, body)) return rc;
    if (VLRESULT rc = CheckNotReserved(session, body)) return rc;
    // A message missing from the list may still have files to remove.
    VLRESULT rc = MsgDirUpdate(session, directory, body, nullptr);
    if (rc && rc != VL_E_MSG_UNKNOWN) return rc;
  } else {
    VLRESULT running = VlxCheckServer(handle);
    if (running == VL_OK) {
      ApiReportError(&session, "Server not stopped");
      return VL_E_SERVER_RUNNING;
    }
    if (running != VL_E_SERVER_NOT_RUNNING) return running;
  }
  if (deleteFiles) RemoveMessageFiles(session, directory, body ? body : "*");
  if (!body) return MsgDirReset(session, directory);
  return VL_OK;
}

}  // namespace

extern "C" VLRESULT VLAPI_CALL VlxDeleteMsg(VLHANDLE handle, uint16_t directory, const char* body,
                                            uint16_t deleteFiles) {
  return CallFrame(handle, "VlxDeleteMsg", UserRule::Needed)
      .Enter("VlxDeleteMsg - '%s\\%s.CTL'", DirectoryWord(directory), body ? body : "(null)")
      .Run([&](ApiSession& session) {
        return DeleteMessage(session, handle, directory, body, deleteFiles);
      });
}
