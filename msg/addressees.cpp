// Reading the addressees of a message from its control file:
// VlxGetMsgAddrs, and the checks and open shared with the history reader.
#include "msg/addressees.h"

#include <cstdio>
#include <cstring>
#include <string_view>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/text.h"
#include "api/vlapi_internal.h"
#include "msg/body_name.h"
#include "msg/msg_dir.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vl {
namespace {

inline constexpr int16_t kControlRetrySeconds = 10;
inline constexpr uint16_t kHeldStatus = 2;
inline constexpr uint16_t kWaitingStatus = 4;

struct StatusWord {
  const char* word;
  uint16_t status;
};

// "He" is not here: its number depends on the message's "Hold:" line.
const StatusWord kStatusWords[] = {
    {"OK", 30}, {"Ad", 1}, {"Su", 1},  {"Wa", 4},  {"WT", 3}, {"Pr", 6}, {"Co", 7}, {"Ab", 10},
    {"Se", 8},  {"Re", 11}, {"Fa", 31}, {"Ar", 14}, {"Sr", 13}, {"Sc", 9}, {"WD", 4}, {"WS", 4},
};

std::string_view Item(const para::ListItem& item) { return {item.item, item.length}; }

// The token after first, or an empty one.
std::string_view SecondToken(const para::ListItem& first) {
  return first.next ? Item(para::NextListItem(first.next)) : std::string_view();
}

void ReadVia(const ApiSession& session, const char* value, MsgAddresseeRecord& record) {
  const para::ListItem route = para::NextListItem(value);
  if (route.length == 0) {
    ApiTrace(&session, "...VlxGetMsgAddrs - Addressee missing FaxType from Via: line");
    return;
  }
  record.type = para::StartsWithNoCase(value, "FAX-ANY")   ? kAddresseeFax
                : para::StartsWithNoCase(value, "LAN-ANY") ? kAddresseeLan
                : para::StartsWithNoCase(value, "SMS-ANY") ? kAddresseeSms
                                                           : 0;
  const std::string_view number = SecondToken(route);
  if (number.empty())
    ApiTrace(&session, "...VlxGetMsgAddrs - Addressee missing Fax Number from Via: line");
  else
    CopyCut(record.number, number);
}

void ReadField(const ApiSession& session, const char* value, MsgAddresseeRecord& record) {
  if (!*value) {
    ApiTrace(&session, "...VlxGetMsgAddrs - Empty \"Field:\" line");
    return;
  }
  const para::ListItem field = para::NextListItem(value);
  if (field.length != 6 || !para::StartsWithNoCase(value, "Custom")) return;
  const std::string_view custom = SecondToken(field);
  if (custom.empty())
    ApiTrace(&session, "...VlxGetMsgAddrs - Custom \"Field:\" line without value string");
  else
    CopyCut(record.custom, custom);
}

// Fills record from the lines after an entry's "ShortName:" line up to the
// next one or the end of the file, then puts the stream back. Status and
// type keep what the slot held when their lines are missing.
VLRESULT ReadAddressee(const ApiSession& session, FILE* control, const std::string& path,
                       bool held, MsgAddresseeRecord& record) {
  record.name[0] = record.organisation[0] = record.number[0] = record.custom[0] = '\0';
  const long start = std::ftell(control);
  char line[para::kLineSize];
  bool atNext = false;
  while (!atNext && para::ReadLine(control, line, sizeof line)) {
    atNext = para::StartsWithNoCase(line, "ShortName:");
    const char* value = para::ValueOf(line);
    if (atNext || !value) continue;
    if (para::StartsWithNoCase(line, "AddrStatus:")) {
      const std::optional<uint16_t> status = AddresseeStatusOf(value, held);
      if (!status)
        ApiTrace(&session, "...VlxGetMsgAddrs - Addressee has unknown status %s", value);
      record.status = status.value_or(0);
    } else if (para::StartsWithNoCase(line, "Name:")) {
      CopyBounded(record.name, value);
    } else if (para::StartsWithNoCase(line, "Organisation:")) {
      CopyBounded(record.organisation, value);
    } else if (para::StartsWithNoCase(line, "Via:")) {
      ReadVia(session, value, record);
    } else if (para::StartsWithNoCase(line, "Field:")) {
      ReadField(session, value, record);
    }
  }
  if (!atNext && std::ferror(control)) {
    ApiReportError(&session, "Error reading file %s", path.c_str());
    return VL_E_FILE_ERROR;
  }
  std::fseek(control, start, SEEK_SET);
  return VL_OK;
}

VLRESULT ReadAddressees(ApiSession& session, CallFrame& frame, uint16_t selector,
                        const char* body, uint16_t maxEntries, uint16_t* count,
                        MsgAddresseeRecord* records) {
  if (VLRESULT rc = CheckControlFileBody(session, body)) return rc;
  if (VLRESULT rc = CheckListOutputs(session, count, records, maxEntries)) return rc;
  para::Opened control;
  std::string path;
  if (VLRESULT rc = OpenControlFile(session, selector, body, &control, &path)) return rc;
  *count = 0;
  FILE* file = control.get();
  char line[para::kLineSize];
  const char* missing = nullptr;
  if (!para::FindParagraph(file, "[OPTIONS]", line, sizeof line))
    missing = "...VlxGetMsgAddrs - no OPTIONS para";
  else if (!para::FindKeyword(file, "Hold:", line, sizeof line, 0, 0))
    missing = "...VlxGetMsgAddrs - no Hold line";
  const char* hold = missing ? nullptr : para::ValueOf(line);
  const bool held = hold && para::EqualNoCase(hold, "YES");
  // The addressees may stand anywhere in the file.
  if (!missing && (std::fseek(file, 0, SEEK_SET) != 0 ||
                   !para::FindParagraph(file, "[ADDRESSEES]", line, sizeof line)))
    missing = "...VlxGetMsgAddrs - no ADDRESSEES para";
  if (missing) {
    ApiTrace(&session, "%s", missing);
    frame.OmitClosingTrace();
    return VL_OK;
  }
  for (int total = 0; para::FindKeyword(file, "ShortName:", line, sizeof line, 0, 0);) {
    if (total < maxEntries)
      if (VLRESULT rc = ReadAddressee(session, file, path, held, records[total])) return rc;
    *count = static_cast<uint16_t>(++total);
  }
  return VL_OK;
}

}  // namespace

std::optional<uint16_t> AddresseeStatusOf(const char* word, bool held) {
  if (para::EqualNoCase(word, "He")) return held ? kHeldStatus : kWaitingStatus;
  for (const StatusWord& s : kStatusWords)
    if (para::EqualNoCase(s.word, word)) return s.status;
  return std::nullopt;
}

VLRESULT CheckControlFileBody(const ApiSession& session, const char* body) {
  if (!body) {
    ReportNullArgument(&session, "body");
    return VL_E_INVALID_PARAM;
  }
  if (VLRESULT rc = CheckBodyName(session, body)) return rc;
  return CheckNotReserved(session, body);
}

VLRESULT OpenControlFile(const ApiSession& session, uint16_t selector, const char* body,
                         para::Opened* control, std::string* path) {
  *path = UpperCase(std::string(MessageDirectory(session, selector)) + body + ".CTL");
  *control = para::OpenShared(kControlRetrySeconds, path->c_str(), "rb");
  if (*control) return VL_OK;
  if (control->error == os::kFileNotFound || control->error == os::kPathNotFound) {
    ApiReportError(&session, "Control file %s not found", path->c_str());
    return VL_E_MSG_UNKNOWN;
  }
  ApiReportError(&session, "Unable to open file %s", path->c_str());
  return VL_E_CONTROL_FILE_OPEN_ERROR;
}

}  // namespace vl

extern "C" VLRESULT VLAPI_CALL VlxGetMsgAddrs(VLHANDLE handle, uint16_t directory,
                                              const char* body, uint16_t maxEntries,
                                              uint16_t* count, MsgAddresseeRecord* records) {
  vl::CallFrame frame(handle, "VlxGetMsgAddrs", vl::UserRule::Needed);
  frame.Enter("VlxGetMsgAddrs - '%s\\%s.CTL'", vl::DirectoryWord(directory),
              body ? body : "(null)");
  return frame.Run([&](vl::ApiSession& session) {
    return vl::ReadAddressees(session, frame, directory, body, maxEntries, count, records);
  });
}
