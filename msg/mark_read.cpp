// VlxMarkMsgAsRead: the user status of one entry becomes "OK", written over
// the two letters in place.
#include <cstdio>
#include <cstring>
#include <string>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "msg/msg_dir.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"

namespace vl {
namespace {

// Finds the entry and the position of its "UserStatus:" line.
VLRESULT FindUserStatusLine(const ApiSession& session, FILE* list, const char* body,
                            const std::string& path, long* lineStart) {
  char line[para::kLineSize];
  char file[para::kLineSize];
  long position = 0;
  bool found = false;
  while (!found && para::FindParagraph(list, "[DOCUMENT]", line, sizeof line, &position)) {
    if (!para::ReadText(list, "File:", file, sizeof file, position)) {
      ApiTrace(&session, "'[DOCUMENT]' paragraph found missing 'File:' field - ignore");
      continue;
    }
    found = para::StartsWithNoCase(file, body);
  }
  if (!found) return VL_E_FILE_ERROR;
  if (!para::FindParagraph(list, "[MESSAGE]", line, sizeof line)) {
    ApiTrace(&session, "No '[MESSAGE]' parargraph found after '[DOCUMENT]' paragraph in file '%s'",
             path.c_str());
    return VL_E_INFO_FILE_INVALID;
  }
  while (para::ReadLine(list, line, sizeof line, lineStart)) {
    if (para::IsHeader(line)) break;
    if (para::IsContentLine(line) && para::StartsWithNoCase(line, "UserStatus:")) return VL_OK;
  }
  ApiTrace(&session, "No 'UserStatus' line found in '[MESSAGE]' paragraph in file '%s'",
           path.c_str());
  return VL_E_INFO_FILE_INVALID;
}

// Writes "OK" over the value of the line at lineStart.
VLRESULT OverwriteUserStatus(const ApiSession& session, FILE* list, const std::string& path,
                             long lineStart) {
  if (std::fseek(list, lineStart, SEEK_SET) != 0) {
    ApiTrace(&session, "File error reading file '%s'", path.c_str());
    return VL_E_FILE_ERROR;
  }
  int c;
  while ((c = std::fgetc(list)) != EOF && c != ':' && c != '\r' && c != '\n') {
  }
  if (c == ':')
    while ((c = std::fgetc(list)) == ' ' || c == '\t') {
    }
  if (c == EOF || c == '\r' || c == '\n') {
    char line[para::kLineSize];
    std::fseek(list, lineStart, SEEK_SET);
    para::ReadLine(list, line, sizeof line);
    ApiTrace(&session, "Invalid line '%s' found in file '%s'", line, path.c_str());
    return VL_E_INFO_FILE_INVALID;
  }
  if (std::fseek(list, -1, SEEK_CUR) != 0) {
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
  if (VLRESULT rc = CheckBodyLength(session, body)) return rc;
  if (VLRESULT rc = CheckSelector(session, selector)) return rc;
  if (VLRESULT rc = CheckNotReserved(session, body)) return rc;
  const std::string path = std::string(MessageDirectory(session, selector)) + "MSGDIR.CTL";
  para::Opened list = para::OpenShared(path.c_str(), "rb+");
  if (!list) {
    ApiReportError(&session, "Unable to open file %s", path.c_str());
    return VL_E_INFO_FILE_OPEN_ERROR;
  }
  long lineStart = 0;
  VLRESULT rc = FindUserStatusLine(session, list.get(), body, path, &lineStart);
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
