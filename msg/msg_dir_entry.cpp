// Reading one entry of a message directory file.
#include <cstdio>
#include <cstring>

#include "api/diagnostics.h"
#include "api/text.h"
#include "msg/body_name.h"
#include "msg/msg_dir.h"
#include "msg/tables.h"

namespace vl {
namespace {

// The body name of a "File:" value: the part before its last '.', which
// must exist and follow the body name rule.
bool BodyOfFileValue(const char* value, char (&body)[kMaxBodyChars + 1]) {
  const char* dot = std::strrchr(value, '.');
  if (!dot) return false;
  const size_t length = static_cast<size_t>(dot - value);
  if (BodyNameFaultOf(value, length) != BodyNameFault::None) return false;
  std::memcpy(body, value, length);
  body[length] = '\0';
  UpperCase(body);
  return true;
}

// A decimal number; one of more than four digits counts as out of range.
bool ReadNumber(const char*& p, int* value) {
  if (*p < '0' || *p > '9') return false;
  int n = 0;
  for (; *p >= '0' && *p <= '9'; ++p)
    if (n < 10000) n = n * 10 + (*p - '0');
  *value = n;
  return true;
}

// Three numbers separated by separator.
bool ReadTriple(const char*& p, char separator, int (&parts)[3]) {
  for (int i = 0; i < 3; ++i) {
    if (i > 0) {
      if (*p != separator) return false;
      ++p;
    }
    if (!ReadNumber(p, &parts[i])) return false;
  }
  return true;
}

// "yy-mm-dd hh:mm:ss" into the six accepted fields; a part that is missing
// or out of range leaves its three fields 0.
void ReadAccepted(const char* value, VLMSGINFOEX& record) {
  const char* p = value;
  int date[3], time[3];
  bool dateOk = ReadTriple(p, '-', date) && date[0] <= 99 && date[1] >= 1 && date[1] <= 12 &&
                date[2] >= 1 && date[2] <= 31;
  while (*p && *p != ' ' && *p != '\t') ++p;
  while (*p == ' ' || *p == '\t') ++p;
  bool timeOk = ReadTriple(p, ':', time) && time[0] <= 23 && time[1] <= 59 && time[2] <= 59;
  if (dateOk) {
    record.AcceptedYear = static_cast<uint16_t>(date[0] < 80 ? 2000 + date[0] : 1900 + date[0]);
    record.AcceptedMonth = static_cast<uint16_t>(date[1]);
    record.AcceptedDay = static_cast<uint16_t>(date[2]);
  }
  if (timeOk) {
    record.AcceptedHour = static_cast<uint16_t>(time[0]);
    record.AcceptedMinute = static_cast<uint16_t>(time[1]);
    record.AcceptedSecond = static_cast<uint16_t>(time[2]);
  }
}

}  // namespace

namespace {

para::ParagraphFields DocumentFields() { return para::ParagraphFields({"File:", "Comment:", "Organisation:"}); }
para::ParagraphFields MessageFields() {
  return para::ParagraphFields(
      {"Accepted:", "Type:", "Status:", "UserStatus:", "Subject:", "MsgType:", "Custom:"});
}

}  // namespace

MsgDirReader::MsgDirReader(FILE* list)
    : cursor(list), document(DocumentFields()), message(MessageFields()) {}

MsgDirReader::MsgDirReader(const char* bytes, size_t size)
    : cursor(bytes, size), document(DocumentFields()), message(MessageFields()) {}

const char* DirectoryWord(uint16_t selector) {
  return selector == kDirectoryOut ? "V-OUT" : selector == kDirectoryIn ? "V-IN" : "???";
}

const char* MessageDirectory(const ApiSession& session, uint16_t selector) {
  return selector == kDirectoryOut ? session.userOutDir : session.userInDir;
}

VLRESULT CheckSelector(const ApiSession& session, uint16_t selector) {
  if (selector == kDirectoryOut || selector == kDirectoryIn) return VL_OK;
  ApiReportError(&session, "Message directory parameter invalid");
  return VL_E_INVALID_PARAM;
}

VLRESULT CheckNotReserved(const ApiSession& session, const char* body) {
  if (!para::EqualNoCase(body, "MSGDIR")) return VL_OK;
  ApiReportError(&session, "Message name %s not valid", body);
  return VL_E_INVALID_PARAM;
}

VLRESULT CheckInfoSize(const ApiSession& session, uint16_t size) {
  for (uint16_t accepted : {272, 114, 116, 160, 260})
    if (size == accepted) return VL_OK;
  ApiReportError(&session, "VLMSGINFOEX size invalid");
  return VL_E_INVALID_PARAM;
}

VLRESULT CheckListOutputs(const ApiSession& session, const void* count, const void* records,
                          int maxEntries) {
  if (count && (records || maxEntries <= 0)) return VL_OK;
  ReportNullArgument(&session, count ? "records" : "count");
  return VL_E_INVALID_PARAM;
}

VLRESULT MsgDirReadEntry(const ApiSession& session, uint16_t selector, MsgDirReader& reader,
                         const char* wanted, long* position, uint16_t size, VLMSGINFOEX* record) {
  (void)selector;
  para::LineCursor& cursor = reader.cursor;
  para::ParagraphFields& document = reader.document;
  para::ParagraphFields& message = reader.message;
  using R = MsgDirReader;
  char body[kMaxBodyChars + 1];
  for (;;) {
    // Skip to the next entry.
    bool found = false;
    while (cursor.Next())
      if (IsEntryStart(cursor.line())) {
        found = true;
        break;
      }
    if (!found) {
      if (wanted) ApiTrace(&session, "Unknown message for %s", wanted);
      return VL_E_MSG_UNKNOWN;
    }
    const long start = cursor.start();
    document.Collect(cursor);
    const char* file = document.Value(R::kFile);
    if (!file || !BodyOfFileValue(file, body))
      return ReportFailure(&session, VL_E_INFO_FILE_INVALID, "[DOCUMENT] File: line missing or invalid");
    if (wanted && !para::EqualNoCase(body, wanted)) continue;
    if (position) *position = start;
    break;
  }

  const bool full = size == kFullInfoSize;
  if (record) {
    // Only the fields this size fills are cleared: sizes 160 and 260 are
    // filled as 116 is.
    std::memset(record, 0, full ? kFullInfoSize : size >= 116 ? 116 : size);
    CopyBounded(record->Body, body);
  }
  const char* comment = document.Value(R::kComment);
  if (!comment) return ReportFailure(&session, VL_E_INFO_FILE_INVALID, "[DOCUMENT] Comment: line missing or invalid");
  if (record) {
    CopyBounded(record->Comment, comment);
    if (full) {
      const char* organisation = document.Value(R::kOrganisation);
      CopyBounded(record->Organisation, organisation ? organisation : "");
    }
  }

  // The entry's "[MESSAGE]" paragraph; the next entry's is never taken.
  bool foundMessage = false;
  while (cursor.Next()) {
    if (IsEntryStart(cursor.line())) {
      cursor.Unread();
      break;
    }
    if (para::IsHeader(cursor.line()) && para::StartsWithNoCase(cursor.line(), "[MESSAGE]")) {
      foundMessage = true;
      break;
    }
  }
  if (!foundMessage) return ReportFailure(&session, VL_E_INFO_FILE_INVALID, "[MESSAGE] paragraph missing");
  message.Collect(cursor);

  const char* accepted = message.Value(R::kAccepted);
  if (!accepted) return ReportFailure(&session, VL_E_INFO_FILE_INVALID, "[MESSAGE] Accepted: line missing or invalid");
  if (record && full) ReadAccepted(accepted, *record);
  const char* type = message.Value(R::kType);
  if (!type) return ReportFailure(&session, VL_E_INFO_FILE_INVALID, "[MESSAGE] Type: line missing or invalid");
  const bool preview = para::EqualNoCase(type, "PREVIEW");
  const char* status = message.Value(R::kStatus);
  if (!status || std::strlen(status) != 2)
    return ReportFailure(&session, VL_E_INFO_FILE_INVALID, "[MESSAGE] Status: line missing or invalid");
  if (!record) return VL_OK;

  record->Status = MessageStatusOf(status, preview);
  if (size >= 116) {
    const char* userStatus = message.Value(R::kUserStatus);
    if (!userStatus || std::strlen(userStatus) != 2)
      return ReportFailure(&session, VL_E_INFO_FILE_INVALID, "[MESSAGE] UserStatus: line missing or invalid");
    record->UserStatus = UserStatusOf(userStatus);
  }
  const char* subject = message.Value(R::kSubject);
  CopyBounded(record->Subject, subject ? subject : "");
  if (!full) return VL_OK;
  const char* messageType = message.Value(R::kMsgType);
  record->MsgType = messageType ? MessageTypeOf(messageType, 1) : 1;
  const char* custom = message.Value(R::kCustom);
  CopyBounded(record->Custom, custom ? custom : "");
  return VL_OK;
}

}  // namespace vl
