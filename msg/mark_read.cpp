// VlxMarkMsgAsRead: the user status of one entry becomes "OK", written over
// the two letters in place.
#include <cstdio>
#include <cstring>
#include <string>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "msg/body_name.h"
#include "msg/msg_dir.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"

namespace vl {
namespace {

// Reads the whole list as the listing does, so that a list that does not
// read is never written, and finds the "UserStatus:" line of the first
// entry whose "File:" value begins with body (so MSG1 also matches an entry
// MSG10.TXT). 0, the reader's code, or 0xF70A when no entry matches.
VLRESULT FindUserStatusLine(const ApiSession& session, uint16_t selector, FILE* list,
                            const char* body, long* lineStart) {
  MsgDirReader reader(list);
  VLMSGINFOEX info;
  bool found = false;
  for (;;) {
    VLRESULT rc = MsgDirReadEntry(session, selector, reader, nullptr, nullptr, kFullInfoSize, &info);
    if (rc == VL_E_MSG_UNKNOWN) break;
    if (rc) return rc;
    if (!found && para::StartsWithNoCase(reader.document.Value(MsgDirReader::kFile), body)) {
      found = true;
      *lineStart = reader.message.LineStart(MsgDirReader::kUserStatus);
    }
  }
  return found ? VL_OK : VL_E_FILE_ERROR;
}

// A byte that the line reader turns into a blank or that is one, short of
// the line's end.
bool IsBlank(int c) { return c != '\n' && (c == ' ' || !para::KeptInLine(static_cast<unsigned char>(c))); }
bool IsValueCharacter(int c) { return c != EOF && c != ' ' && para::KeptInLine(static_cast<unsigned char>(c)); }

// Writes "OK" over the two letters of the value of the line at lineStart:
// past the ':' and exactly the bytes that the line reader treats as blanks.
VLRESULT OverwriteUserStatus(const ApiSession& session, FILE* list, const std::string& path,
                             long lineStart) {
  if (std::fseek(list, lineStart, SEEK_SET) != 0) {
    ApiTrace(&session, "File error reading file '%s'", path.c_str());
    return VL_E_FILE_ERROR;
  }
  int c;
  while ((c = std::fgetc(list)) != EOF && c != ':' && c != '\n') {
  }
  if (c == ':')
    while (IsBlank(c = std::fgetc(list)) && c != EOF) {
    }
  const long valueStart = std::ftell(list) - 1;
  if (!IsValueCharacter(c) || !IsValueCharacter(std::fgetc(list))) {
    char line[para::kLineSize];
    std::fseek(list, lineStart, SEEK_SET);
    para::ReadLine(list, line, sizeof line);
    ApiTrace(&session, "Invalid line '%s' found in file '%s'", line, path.c_str());
    return VL_E_INFO_FILE_INVALID;
  }
  if (std::fseek(list, valueStart, SEEK_SET) != 0) {
    ApiTrace(&session, "File error reading file '%s'", path.c_str());
    return VL_E_FILE_ERROR;
  }
  if (std::fwrite("OK", 1, 2, list) != 2 || std::fflush(list) != 0) {
    ApiTrace(&session, "Error writing to file '%s'", path.c_str());
    return VL_E_FILE_ERROR;
  }
  return VL_OK;
}

VLRESULT MarkAsRead(ApiSession& session, uint16_t selector, const char* body) {
  if (VlxCheckServer(session.handle) != VL_OK) return VL_E_SERVER_NOT_RUNNING;
  if (VLRESULT rc = CheckBodyName(session, body)) return rc;
  if (VLRESULT rc = CheckSelector(session, selector)) return rc;
  if (VLRESULT rc = CheckNotReserved(session, body)) return rc;
  const std::string path = std::string(MessageDirectory(session, selector)) + "MSGDIR.CTL";
  para::Opened list = para::OpenShared(path.c_str(), "rb+");
  if (!list) {
    ApiReportError(&session, "Unable to open file %s", path.c_str());
    return VL_E_INFO_FILE_OPEN_ERROR;
  }
  long lineStart = 0;
  VLRESULT rc = FindUserStatusLine(session, selector, list.get(), body, &lineStart);
  if (rc == VL_OK) rc = OverwriteUserStatus(session, list.get(), path, lineStart);
  list.file.reset();
  NotifyGroupChange(session, false, session.userName, session.userInDir);
  if (rc) ApiReportError(&session, "Unable to mark message '%s' as read", body);
  return rc;
}

}  // namespace
}  // namespace vl

using namespace vl;

extern "C" VLRESULT VLAPI_CALL VlxMarkMsgAsRead(VLHANDLE handle, uint16_t directory,
                                                const char* body) {
  return CallFrame(handle, "VlxMarkMsgAsRead", UserRule::Needed)
      .Enter("VlxMarkMsgAsRead - '%s\\%s.CTL'", DirectoryWord(directory), body ? body : "(null)")
      .Run([&](ApiSession& session) { return MarkAsRead(session, directory, body); });
}
