// Message defaults: LoadMessageDefaults, VlxGetMsgDefaultsEx,
// VlxGetUserCoversheet and VlxGetUserFromname.
#include "msg/defaults.h"

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <iterator>
#include <memory>
#include <string>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/process_state.h"
#include "api/text.h"
#include "api/vlapi_internal.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

using namespace vl;

namespace {

constexpr int16_t kUserIniRetrySeconds = 5;
constexpr const char* kDbDirectory = "V-DB\\";
constexpr const char* kUserIni = "USER.INI";
// The buffer length the areas are fetched with: 268 less "V-DB\" and
// "USER.INI", so an area's text must be shorter than this.
constexpr size_t kAreaLimit = 268 - 5 - 8;

// Header parts in the order they are written, with their bits in the record.
constexpr const char* kHeaderParts[] = {"No", "To", "Fr", "Da", "Ti"};

bool HasHeaderPart(const char* value, const char* part) {
  return std::strstr(value, part) || (std::strcmp(part, "Da") == 0 && std::strstr(value, "Dt"));
}

// Keeps value when it is one of words (exact comparison), else fallback.
const char* KnownWordOr(const char* value, std::initializer_list<const char*> words,
                        const char* fallback) {
  for (const char* word : words)
    if (std::strcmp(value, word) == 0) return value;
  return fallback;
}

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Reads a run of digits, saturating far above any valid field.
const char* ReadDigits(const char* text, int* value) {
  *value = 0;
  for (; IsDigit(*text); ++text)
    if (*value < 1000) *value = *value * 10 + (*text - '0');
  return text;
}

// "hh:mm:ss" somewhere in word, the hour being the digits before the first
// colon.
bool FindTime(const std::string& word, int* hour, int* minute, int* second) {
  const size_t colon = word.find(':');
  if (colon == std::string::npos) return false;
  size_t begin = colon;
  while (begin > 0 && IsDigit(word[begin - 1])) --begin;
  if (begin == colon) return false;
  ReadDigits(word.c_str() + begin, hour);
  const char* p = word.c_str() + colon + 1;
  const char* end = ReadDigits(p, minute);
  if (end == p || *end != ':') return false;
  p = end + 1;
  return ReadDigits(p, second) != p;
}

// The "After:" value of USER.INI: "OFFPEAK", today at the time given, or
// empty (send at once).
void SetAfter(const char* value, MessageOptions* options) {
  const std::string word(value, std::strcspn(value, " \t"));
  options->After[0] = '\0';
  if (para::StartsWithNoCase(word.c_str(), "OFFPEAK")) {
    CopyBounded(options->After, "OFFPEAK");
    return;
  }
  int hour = 0, minute = 0, second = 0;
  if (!FindTime(word, &hour, &minute, &second) || hour >= 24 || minute >= 60 || second >= 60)
    return;
  const os::LocalTime now = os::Now();
  char text[64];
  std::snprintf(text, sizeof text, "%.02d-%.02d-%.02d %.02d:%.02d:%.02d", now.year % 100,
                now.month, now.day, hour, minute, second);
  CopyBounded(options->After, text);
}

// 1 when the key is missing or says "YES", else 0.
int32_t SentItems(FILE* file, const char* keyword, long paragraph) {
  char value[para::kLineSize];
  if (!para::ReadText(file, keyword, value, sizeof value, paragraph)) return 1;
  return para::EqualNoCase(value, "YES") ? 1 : 0;
}

void SetWhenYes(FILE* file, const char* keyword, long paragraph, int32_t* flag) {
  char value[para::kLineSize];
  if (para::ReadText(file, keyword, value, sizeof value, paragraph) &&
      para::EqualNoCase(value, "YES"))
    *flag = 1;
}

// Applies the "[OPTIONS]" paragraph of one USER.INI; a file without one
// changes nothing.
void ReadOptions(FILE* file, MessageOptions* options) {
  char value[para::kLineSize];
  long paragraph = 0;
  if (!para::FindParagraph(file, "[OPTIONS]", value, sizeof value, &paragraph)) return;

  const struct {
    const char* keyword;
    char* field;
    int size;
    bool upper;
  } texts[] = {
      {"From:", options->From, sizeof options->From, false},
      {"Telephone:", options->FromTelephone, sizeof options->FromTelephone, false},
      {"Fax:", options->FromFax, sizeof options->FromFax, false},
      {"Email:", options->FromEmail, sizeof options->FromEmail, false},
      {"FromParam:", options->FromParam, sizeof options->FromParam, false},
      {"Coversheet:", options->Coversheet, sizeof options->Coversheet, true},
      {"Letterhead:", options->Letterhead, sizeof options->Letterhead, true},
  };
  for (const auto& t : texts)
    if (para::ReadText(file, t.keyword, t.field, t.size, paragraph) && t.upper) UpperCase(t.field);

  if (para::ReadText(file, "Priority:", value, sizeof value, paragraph))
    CopyBounded(options->Priority,
                KnownWordOr(value, {"NORMAL", "URGENT", "BACKGROUND"}, "BACKGROUND"));
  if (para::ReadText(file, "After:", value, sizeof value, paragraph)) SetAfter(value, options);
  if (para::ReadText(file, "Header:", value, sizeof value, paragraph)) {
    std::string header;
    for (const char* part : kHeaderParts)
      if (HasHeaderPart(value, part)) header += part;
    CopyBounded(options->Header, header);
  }
  if (para::ReadText(file, "Quality:", value, sizeof value, paragraph))
    CopyBounded(options->Quality, KnownWordOr(value, {"HIGH", "NORMAL", "DRAFT"}, "DRAFT"));

  options->SentItemsFax = SentItems(file, "SentItemsFax:", paragraph);
  options->SentItemsSMS = SentItems(file, "SentItemsSMS:", paragraph);
  Process().userSentItemsFax = options->SentItemsFax;
  Process().userSentItemsSMS = options->SentItemsSMS;
  SetWhenYes(file, "DeleteSentFax:", paragraph, &options->DeleteFaxIfOK);
  SetWhenYes(file, "DeleteSentSMS:", paragraph, &options->DeleteSMSIfOK);
}

VLRESULT ReadUserIni(const ApiSession& session, const std::string& directory,
                     MessageOptions* options) {
  const std::string path = directory + kDbDirectory + kUserIni;
  para::Opened file = para::OpenShared(kUserIniRetrySeconds, path.c_str(), "rb");
  if (!file) {
    ApiReportError(&session, "Cannot open file %s", path.c_str());
    return VL_E_CANNOT_READ_MSG_DEFAULTS;
  }
  ReadOptions(file.get(), options);
  return VL_OK;
}

uint16_t WordNumber(const char* text, std::initializer_list<const char*> words) {
  uint16_t number = 1;
  for (const char* word : words) {
    if (para::EqualNoCase(text, word)) return number;
    ++number;
  }
  return 2;
}

// Copies text into a record field only when it is shorter than limit.
template <size_t N>
void CopyWhenShorter(char (&field)[N], const char* text, size_t limit) {
  if (std::strlen(text) < limit) CopyBounded(field, text);
}

// VlxGetUserCoversheet and VlxGetUserFromname: one text of the defaults.
VLRESULT GetDefaultText(VLHANDLE handle, const char* name, char* buffer, int16_t bufLen,
                        const char* (*text)(const MessageOptions&)) {
  return CallFrame(handle, name, UserRule::Needed)
      .Enter("%s", name)
      .Run([&](ApiSession& session) -> VLRESULT {
        if (!buffer) {
          ReportNullArgument(&session, "buffer");
          return VL_E_INVALID_PARAM;
        }
        auto options = std::make_unique<MessageOptions>();
        if (VLRESULT rc = LoadMessageDefaults(session, 0, options.get())) return rc;
        const char* value = text(*options);
        const size_t length = std::strlen(value);
        if (static_cast<long>(length) >= bufLen) return VL_E_BUFFER_TOO_SMALL;
        std::memcpy(buffer, value, length + 1);
        return VL_OK;
      });
}

}  // namespace

namespace vl {

VLRESULT LoadMessageDefaults(const ApiSession& session, uint16_t format, MessageOptions* options) {
  if (!options) {
    ReportNullArgument(&session, "options");
    return VL_E_INVALID_PARAM;
  }
  *options = MessageOptions{};
  options->Format = format;
  CopyBounded(options->Priority, "NORMAL");
  CopyBounded(options->Header, "NoToFrDaTi");
  CopyBounded(options->Quality, "NORMAL");
  options->Preview = 1;
  options->MsgType = kMessageTypeFax;
  options->SentItemsFax = 1;
  options->SentItemsSMS = 1;

  // The areas as VlxGetSystemArea and VlxGetUserArea give them.
  const std::string system = session.systemArea;
  if (system.size() >= kAreaLimit) return VL_E_BUFFER_TOO_SMALL;
  if (VLRESULT rc = ReadUserIni(session, system, options)) return rc;
  const std::string user = std::string(session.userArea) + session.userName + "\\";
  if (!session.HasUser() || user.size() >= kAreaLimit) return VL_E_CANNOT_READ_MSG_DEFAULTS;
  return ReadUserIni(session, user, options);
}

void FillDefaultsRecord(const MessageOptions& options, VLMSGDEFAULTSEX* record) {
  std::memset(record, 0, sizeof *record);
  record->Priority = WordNumber(options.Priority, {"BACKGROUND", "NORMAL", "URGENT"});
  for (size_t i = 0; i < std::size(kHeaderParts); ++i)
    if (std::strstr(options.Header, kHeaderParts[i])) record->Header |= static_cast<uint16_t>(1u << i);
  record->Quality = WordNumber(options.Quality, {"DRAFT", "NORMAL", "HIGH"});

  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0;
  record->SendTime = 1;
  if (para::EqualNoCase(options.After, "OFFPEAK")) {
    record->SendTime = 2;
  } else if (std::sscanf(options.After, "%d-%d-%d %d:%d:%d", &year, &month, &day, &hour, &minute,
                         &second) == 6) {
    // Two-digit years: 00-69 are 2000-2069, 70-99 are 1970-1999.
    if (year < 1900) year = (year < 70 ? 2000 : 1900) + year % 100;
    record->SendTime = 3;
    record->SendYear = static_cast<uint16_t>(year);
    record->SendMonth = static_cast<uint16_t>(month);
    record->SendDay = static_cast<uint16_t>(day);
    record->SendHour = static_cast<uint16_t>(hour);
    record->SendMinute = static_cast<uint16_t>(minute);
    record->SendSecond = static_cast<uint16_t>(second);
  }

  CopyWhenShorter(record->From, options.From, 31);
  CopyWhenShorter(record->Coversheet, options.Coversheet, 9);
  CopyWhenShorter(record->Letterhead, options.Letterhead, 9);
}

}  // namespace vl

extern "C" {

VLRESULT VLAPI_CALL VlxGetMsgDefaultsEx(VLHANDLE handle, uint16_t recordSize,
                                        VLMSGDEFAULTSEX* defaults) {
  return CallFrame(handle, "VlxGetMsgDefaultsEx", UserRule::Needed)
      .Enter("%s", "VlxGetMsgDefaultsEx")
      .Run([&](ApiSession& session) -> VLRESULT {
        if (recordSize != sizeof(VLMSGDEFAULTSEX)) {
          ApiReportError(&session, "VLMSGDEFAULTSEX size invalid");
          return VL_E_INVALID_PARAM;
        }
        if (!defaults) {
          ReportNullArgument(&session, "defaults");
          return VL_E_INVALID_PARAM;
        }
        auto options = std::make_unique<MessageOptions>();
        if (VLRESULT rc = LoadMessageDefaults(session, 0, options.get())) return rc;
        VLMSGDEFAULTSEX record;
        FillDefaultsRecord(*options, &record);
        std::memcpy(defaults, &record, sizeof record);
        return VL_OK;
      });
}

VLRESULT VLAPI_CALL VlxGetUserCoversheet(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDefaultText(handle, "VlxGetUserCoversheet", buffer, bufLen,
                        [](const MessageOptions& o) -> const char* { return o.Coversheet; });
}

VLRESULT VLAPI_CALL VlxGetUserFromname(VLHANDLE handle, char* buffer, int16_t bufLen) {
  return GetDefaultText(handle, "VlxGetUserFromname", buffer, bufLen,
                        [](const MessageOptions& o) -> const char* { return o.From; });
}

}  // extern "C"
