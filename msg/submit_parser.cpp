#include "msg/submit_parser.h"

#include <cstring>
#include <ctime>

#include "api/diagnostics.h"
#include "api/process_state.h"
#include "api/text.h"
#include "msg/tables.h"
#include "msg/text_source.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"

namespace vl {
namespace {

inline constexpr size_t kInfoSubjectChars = 60;

// The first 20 characters of a line and "..." when it is longer.
const char* More(const char* line) { return std::strlen(line) > 20 ? "..." : ""; }

// The yes/no rule: only a first character N or n says no.
int32_t YesUnlessN(const char* value) { return value[0] == 'N' || value[0] == 'n' ? 0 : 1; }

// Copies a value and cuts a file extension (at the last '.' that is not
// the first character).
template <size_t N>
void CopyWithoutExtension(char (&out)[N], const char* value) {
  CopyBounded(out, value);
  char* dot = std::strrchr(out, '.');
  if (dot && dot != out) *dot = '\0';
}

// A text option: keyword and the field it fills.
struct TextOption {
  const char* keyword;
  char* (*field)(MessageOptions&);
  size_t size;
};

#define VL_TEXT_OPTION(keyword, name) \
  {keyword, [](MessageOptions& o) { return o.name; }, sizeof(MessageOptions::name)}
const TextOption kTextOptions[] = {
    VL_TEXT_OPTION("Comment:", Comment),         VL_TEXT_OPTION("Custom:", Custom),
    VL_TEXT_OPTION("FromTelephone:", FromTelephone), VL_TEXT_OPTION("FromFax:", FromFax),
    VL_TEXT_OPTION("FromEmail:", FromEmail),     VL_TEXT_OPTION("FromParam:", FromParam),
    VL_TEXT_OPTION("Priority:", Priority),       VL_TEXT_OPTION("Header:", Header),
    VL_TEXT_OPTION("Quality:", Quality),         VL_TEXT_OPTION("Charge:", Chargecode),
    VL_TEXT_OPTION("Chargecode:", Chargecode),   VL_TEXT_OPTION("Attach:", Attach),
    VL_TEXT_OPTION("NotifyMail:", NotifyMail),
    // Only the first 10 characters of this keyword are compared.
    {"QSMessageI", [](MessageOptions& o) { return o.QSMessageID; }, sizeof(MessageOptions::QSMessageID)},
};
#undef VL_TEXT_OPTION

// A flag option under the yes/no rule.
struct FlagOption {
  const char* keyword;
  int32_t MessageOptions::*field;
};
const FlagOption kFlagOptions[] = {
    {"Preview:", &MessageOptions::Preview},
    {"Hold:", &MessageOptions::Hold},
    {"AbortAfterPreview:", &MessageOptions::AbortAfterPreview},
    {"FaxBroadcast:", &MessageOptions::FaxBroadcast},
};

// Applies one options line; false when it is not an options line.
bool ApplyOption(const ApiSession& session, const char* line, const char* value,
                 MessageOptions& o, std::string* sentItems, VLRESULT* error) {
  auto is = [&](const char* keyword) { return para::StartsWithNoCase(line, keyword); };
  for (const TextOption& t : kTextOptions)
    if (is(t.keyword)) return CopyBounded(t.field(o), t.size, value), true;
  for (const FlagOption& f : kFlagOptions)
    if (is(f.keyword)) return o.*f.field = YesUnlessN(value), true;
  if (is("Format:")) {
    const DataFormat* format = FormatByWord(value);
    if (format) o.Format = format->code;
    else {
      ApiReportError(&session, "Invalid Format: line '%.20s%s'", line, More(line));
      *error = VL_E_SUBMIT_FILE_INVALID;
    }
  } else if (is("From:")) {
    if (Process().overrideFrom) {
      ApiTrace(&session, "Over ride set - don't use From field from Sub file");
    } else {
      ApiTrace(&session, "Using From field from Sub file");
      CopyBounded(o.From, value);
    }
  } else if (is("Coversheet:")) {
    CopyWithoutExtension(o.Coversheet, value);
  } else if (is("Letterhead:")) {
    CopyWithoutExtension(o.Letterhead, value);
  } else if (is("After:")) {
    std::string after = value;  // checked whole, then kept to the field's size
    CheckAfterTime(session, &after);
    CopyBounded(o.After, after);
  } else if (is("Delete:")) {
    const bool all = para::EqualNoCase(value, "YES"), ifOk = para::EqualNoCase(value, "OK");
    o.DeleteFax = o.DeleteSMS = all;
    o.DeleteFaxIfOK = o.DeleteSMSIfOK = all || ifOk;
  } else if (is("DOCUMENT:")) {
    for (auto& slot : o.Documents)
      if (!slot[0]) {
        CopyBounded(slot, value);
        break;
      }
  } else if (is("SentItems:")) {
    *sentItems = value;
  } else if (!is("User:")) {
    return false;
  }
  return true;
}

// Looks past the options for the section heads of a subject or cover text
// not given yet, up to the next message.
VLRESULT FindTextSections(const ApiSession& session, FILE* submit, SubmitMessage* m) {
  char line[para::kLineSize];
  long start = 0;
  const struct {
    const char* head;
    const char* fileHead;
    TextSource* source;
    const char* notFound;
    const char* nameMissing;
  } kinds[] = {
      {"%%[COVERTEXT]", "%%[COVERTEXTFILE]", &m->cover, "Covertext file not found",
       "Covertext file name missing from SUBMIT file"},
      {"%%[SUBJECT]", "%%[SUBJECTFILE]", &m->subject, "Subject file not found",
       "Subject file name missing from SUBMIT file"},
  };
  while (para::ReadLine(submit, line, sizeof line, &start)) {
    if (para::StartsWithNoCase(line, "%%[MESSAGE]")) break;
    for (const auto& kind : kinds) {
      if (para::StartsWithNoCase(line, kind.fileHead)) {
        char name[para::kLineSize];
        if (!para::ReadLine(submit, name, sizeof name)) {
          if (std::ferror(submit)) {
            ApiReportError(&session, "Error reading submit");
            return VL_E_FILE_ERROR;
          }
          return ReportFailure(&session, VL_E_SUBMIT_FILE_INVALID, kind.nameMissing);
        }
        if (para::OpenShared(0, name, "rb")) kind.source->file = name;
        else ApiReportError(&session, "%s", kind.notFound);
      } else if (para::StartsWithNoCase(line, kind.head) && kind.source->position < 0 &&
                 kind.source->file.empty()) {
        kind.source->position = start;
      }
    }
  }
  return VL_OK;
}

// The message type and the organisation, from the addressing lines.
void ReadAddressing(FILE* submit, MessageOptions& o) {
  char line[para::kLineSize];
  bool typeKnown = false, organisationKnown = false;
  while ((!typeKnown || !organisationKnown) && para::ReadLine(submit, line, sizeof line)) {
    if (!typeKnown) {
      if (para::StartsWithNoCase(line, "SMS:")) o.MsgType = kMessageTypeSms, typeKnown = true;
      else if (para::StartsWithNoCase(line, "FAX:") || para::StartsWithNoCase(line, "LAN:") ||
               (line[0] == '%' && line[1] == '%'))
        o.MsgType = kMessageTypeFax, typeKnown = true;
    }
    if (!organisationKnown && para::StartsWithNoCase(line, "Organisation:")) {
      const char* value = para::ValueOf(line);
      if (value && *value) {
        CopyBounded(o.Organisation, value);
        organisationKnown = true;
      }
    }
  }
}

bool ValidCalendarTime(int year, int month, int day, int hour, int minute, int second) {
  std::tm t{};
  t.tm_year = year - 1900;
  t.tm_mon = month - 1;
  t.tm_mday = day;
  t.tm_hour = hour;
  t.tm_min = minute;
  t.tm_sec = second;
  t.tm_isdst = -1;
  std::tm copy = t;
  return std::mktime(&copy) != -1 && copy.tm_mday == day && copy.tm_mon == month - 1;
}

}  // namespace

bool CheckAfterTime(const ApiSession& session, std::string* after) {
  const char* text = after->c_str();
  if (text[0] < '0' || text[0] > '9') return true;  // "OFFPEAK" and the like stay
  int y = 0, mo = 0, d = 0, h = 0, mi = 0, s = 0;
  const bool scanned = std::sscanf(text, "%d-%d-%d %d:%d:%d", &y, &mo, &d, &h, &mi, &s) == 6;
  if (scanned && y == 120) {
    after->clear();  // send at once
    return true;
  }
  const bool yearOk = (y >= 0 && y <= 119) || (y >= 1980 && y <= 2079);
  const int fullYear = y < 1900 ? (y < 80 ? 2000 + y : 1900 + y) : y;
  if (scanned && yearOk && mo >= 1 && mo <= 12 && d >= 1 && d <= 31 && h >= 0 && h <= 23 &&
      mi >= 0 && mi <= 59 && s >= 0 && s <= 59 && ValidCalendarTime(fullYear, mo, d, h, mi, s)) {
    char rewritten[32];
    std::snprintf(rewritten, sizeof rewritten, "%.02d-%.02d-%.02d %.02d:%.02d:%.02d", y % 100, mo,
                  d, h, mi, s);
    *after = rewritten;
    return true;
  }
  ApiReportError(&session, "After time '%s' invalid - reset to send immediately", text);
  after->clear();
  return false;
}

VLRESULT ParseMessageOptions(const ApiSession& session, FILE* submit, MessageOptions* options,
                             SubmitMessage* message) {
  MessageOptions& o = *options;
  *message = SubmitMessage{};
  std::string sentItems;
  bool sentItemsGiven = false;
  char line[para::kLineSize];
  long start = 0;
  for (;;) {
    if (!para::ReadLine(submit, line, sizeof line, &start)) {
      if (std::ferror(submit)) {
        ApiReportError(&session, "Error reading SUBMIT file");
        return VL_E_FILE_ERROR;
      }
      return ReportFailure(&session, VL_E_SUBMIT_FILE_INVALID, "To: line missing from SUBMIT file");
    }
    if (line[0] == '%' && line[1] == '%') return ReportFailure(&session, VL_E_SUBMIT_FILE_INVALID, "To: line missing from SUBMIT file");
    if (line[0] == '\0' || line[0] == ';') continue;
    if (para::StartsWithNoCase(line, "To:")) break;
    if (para::StartsWithNoCase(line, "Covertext:") || para::StartsWithNoCase(line, "Note:")) {
      if (message->cover.position < 0) message->cover.position = start;
      continue;
    }
    if (para::StartsWithNoCase(line, "Subject:")) {
      if (message->subject.position < 0) message->subject.position = start;
      continue;
    }
    const char* value = para::ValueOf(line);
    VLRESULT error = VL_OK;
    if (para::StartsWithNoCase(line, "SentItems:")) sentItemsGiven = true;
    if (!ApplyOption(session, line, value ? value : "", o, &sentItems, &error)) {
      ApiReportError(&session, "Unrecognised message options line '%.20s%s'", line, More(line));
      return VL_E_SUBMIT_FILE_INVALID;
    }
    if (error) return error;
  }
  message->toPosition = start;
  if (!o.Comment[0]) CopyBounded(o.Comment, line);

  if (message->cover.position < 0 || message->subject.position < 0)
    if (VLRESULT rc = FindTextSections(session, submit, message)) return rc;
  std::fseek(submit, message->toPosition, SEEK_SET);
  ReadAddressing(submit, o);
  if (sentItemsGiven) {
    const int32_t keep = sentItems[0] == 'N' ? 0 : 1;
    if (o.MsgType == kMessageTypeFax) o.SentItemsFax = keep;
    else if (o.MsgType == kMessageTypeSms) o.SentItemsSMS = keep;
  }
  std::fseek(submit, message->toPosition, SEEK_SET);
  return VL_OK;
}

std::string InfoSubject(FILE* submit, const TextSource& subject) {
  std::string first;
  bool further = false;
  int lines = 0;
  auto take = [&](const std::string& line) {
    if (lines++ == 0) first = line;
    else further = true;
    return lines < 2;
  };
  if (subject.position >= 0) {
    ForEachSubmitTextLine(submit, subject.position, kSubject, take);
  } else if (!subject.file.empty()) {
    para::Opened file = para::OpenShared(0, subject.file.c_str(), "rb");
    char line[para::kLineSize];
    while (file && lines < 2 && para::ReadLine(file.get(), line, sizeof line)) take(line);
  }
  if (first.size() > kInfoSubjectChars) first.resize(kInfoSubjectChars);
  if (further && first.size() + 3 <= kInfoSubjectChars) return first + "...";
  if (further || first.size() == kInfoSubjectChars) {
    const size_t keep = first.size() >= 3 ? first.size() - 3 : 0;
    return first.substr(0, keep) + "...";
  }
  return first;
}

}  // namespace vl
