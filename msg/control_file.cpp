#include "msg/control_file.h"

#include <cstring>
#include <string>

#include "api/diagnostics.h"
#include "api/process_state.h"
#include "msg/tables.h"
#include "msg/text_source.h"
#include "msg/text_wrap.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vl {
namespace {

inline constexpr size_t kTextFileLineChars = 280;

// Whether a byte of a subject or cover text file survives as it is.
bool KeptInTextFile(unsigned char c) {
  if (c == '\n') return true;
  if (c < 32 || c == 127) return false;
  if (c < 128 || c == 156 || c == 163) return true;
  return Process().eightBitTextFiles != 0;
}

// The lines of a subject or cover text file.
VLRESULT WriteFromFile(const ApiSession& session, const std::string& path, TextWrapper& out) {
  para::Opened file = para::OpenShared(path.c_str(), "rb");
  if (!file) {
    ApiReportError(&session, "Error opening file - %s", path.c_str());
    return VL_E_FILE_ERROR;
  }
  std::string line;
  for (int c = std::getc(file.get()); c != EOF;) {
    line.clear();
    for (; c != EOF && c != '\n'; c = std::getc(file.get()))
      line.push_back(KeptInTextFile(static_cast<unsigned char>(c)) ? static_cast<char>(c) : ' ');
    if (c == '\n') c = std::getc(file.get());
    // A line filling the 280 characters is cut back to its last blank and
    // its rest read as the next line, continuing the same source line.
    size_t at = 0;
    while (line.size() - at > kTextFileLineChars) {
      size_t cut = line.find_last_of(" \t", at + kTextFileLineChars - 1);
      if (cut == std::string::npos || cut <= at) {
        ApiReportError(&session, "Error reading file - %s", path.c_str());
        return VL_E_FILE_ERROR;
      }
      out.Line(line.substr(at, cut - at), false);
      at = cut;
    }
    out.Line(line.substr(at));
  }
  return std::ferror(file.get()) ? VL_E_FILE_ERROR : VL_OK;
}

VLRESULT WriteTextBlock(const ApiSession& session, FILE* out, FILE* submit,
                        const TextSource& source, const TextBlock& block) {
  TextWrapper wrapper(out, block.keyword);
  if (source.position >= 0) {
    ForEachSubmitTextLine(submit, source.position, block, [&](const std::string& line) {
      wrapper.Line(line);
      return true;
    });
    return VL_OK;
  }
  if (!source.file.empty()) return WriteFromFile(session, source.file, wrapper);
  return VL_OK;
}

// The keyword's value: the text after it, leading blanks skipped.
const char* AfterKeyword(const char* line, const char* keyword) {
  const char* value = line + std::strlen(keyword);
  while (*value == ' ' || *value == '\t') ++value;
  return value;
}

// Translates the addressing lines into the "[ADDRESSEES]" paragraph.
VLRESULT WriteAddressees(const ApiSession& session, FILE* out, FILE* submit) {
  std::fputs("[ADDRESSEES]\r\n", out);
  char line[para::kLineSize];
  long start = 0;
  bool any = false, inAddressee = false, hasOrganisation = false;
  std::string route;
  auto complete = [&]() -> VLRESULT {
    if (!hasOrganisation) std::fputs("Organisation:\r\nField: Organisation\r\n", out);
    if (route.empty()) return ReportFailure(&session, VL_E_SUBMIT_FILE_INVALID, "Route missing from SUBMIT file");
    std::fprintf(out, "Via: %s\r\n", route.c_str());
    return VL_OK;
  };
  bool atEnd = true;
  while (para::ReadLine(submit, line, sizeof line, &start)) {
    atEnd = false;
    if (line[0] == '%' && line[1] == '%') {
      std::fseek(submit, start, SEEK_SET);
      break;
    }
    if (line[0] == '\0' || line[0] == ';') continue;
    auto is = [&](const char* keyword) { return para::StartsWithNoCase(line, keyword); };
    if (is("To:")) {
      if (inAddressee)
        if (VLRESULT rc = complete()) return rc;
      const char* name = AfterKeyword(line, "To:");
      std::fprintf(out, "Shortname:\r\nAddrStatus: Wa\r\nName: %s\r\nField: Name %s\r\n", name,
                   name);
      any = inAddressee = true;
      hasOrganisation = false;
      route.clear();
    } else if (is("Organisation:")) {
      const char* organisation = AfterKeyword(line, "Organisation:");
      std::fprintf(out, "Organisation: %s\r\nField: Organisation %s\r\n", organisation,
                   organisation);
      hasOrganisation = true;
    } else if (is("Field:")) {
      std::fprintf(out, "Field: %s\r\n", AfterKeyword(line, "Field:"));
    } else if (is("Fax:")) {
      const char* fax = AfterKeyword(line, "Fax:");
      std::fprintf(out, "Field: Fax %s\r\n", fax);
      route = std::string("FAX-ANY ") + fax;
    } else if (is("SMS:")) {
      const char* sms = AfterKeyword(line, "SMS:");
      std::fprintf(out, "Field: SMS %s\r\n", sms);
      route = std::string("SMS-ANY ") + sms;
    } else if (is("Lan:")) {
      route = std::string("LAN-ANY ") + AfterKeyword(line, "Lan:");
    } else if (is("Via:")) {
      route = AfterKeyword(line, "Via:");
    } else if (is("Covertext:") || is("Note:")) {
      return ReportFailure(&session, VL_E_SUBMIT_FILE_INVALID,
                             "'Covertext' lines must be immediately before first 'To' line");
    } else {
      ApiReportError(&session, "Unrecognised addressing options line '%.20s%s'", line,
                     std::strlen(line) > 20 ? "..." : "");
      return ReportFailure(&session, VL_E_SUBMIT_FILE_INVALID,
                             "Message options lines must be before 'To' and 'Covertext' lines");
    }
  }
  if (atEnd || !any) return ReportFailure(&session, VL_E_SUBMIT_FILE_INVALID, "No addressees specified in SUBMIT file");
  return complete();
}

const char* YesNo(int32_t flag) { return flag ? "YES" : "NO"; }

const char* DeleteWord(const MessageOptions& o) {
  if (o.MsgType == kMessageTypeFax) return o.DeleteFax ? "YES" : o.DeleteFaxIfOK ? "OK" : "";
  if (o.MsgType == kMessageTypeSms) return o.DeleteSMS ? "YES" : o.DeleteSMSIfOK ? "OK" : "";
  return "";
}

// The "SentItems:" word, or none when the process's mode writes no line.
const char* SentItemsWord(const MessageOptions& o) {
  switch (Process().sentItemsMode) {
    case 0: return "NO";
    case 1: return "YES";
    case -1:
      if (o.MsgType == kMessageTypeFax) return o.SentItemsFax == 1 ? "YES" : "NO";
      if (o.MsgType == kMessageTypeSms) return o.SentItemsSMS ? "YES" : "NO";
      return "NO";
    default: return nullptr;
  }
}

void WriteHeadAndOptions(FILE* out, const char* body, const MessageOptions& o) {
  const DataFormat* format = FormatByCode(o.Format);
  os::LocalTime t = os::Now();
  std::fprintf(out,
               "[VELOMAR]\r\nType: SendControl\r\nRevision: A\r\n\r\n"
               "[DOCUMENT]\r\nFile: %s.%s\r\nComment: %s\r\nOrganisation: %s\r\n"
               "[MESSAGE]\r\nAssocFile:\r\nFormat: %s\r\n"
               "Submitted: %.2d-%.2d-%.2d %.2d:%.2d:%.2d [xxxxxxxxxx]\r\n"
               "Accepted: 00-00-00 00:00:00\r\nType: SEND\r\nStatus: Su\r\nUserStatus: Aw\r\n"
               "MsgType: %s\r\nCustom: %s\r\n",
               body, format ? format->extension : "", o.Comment, o.Organisation,
               format ? format->word : "", t.year % 100, t.month, t.day, t.hour, t.minute,
               t.second, o.MsgType == kMessageTypeSms ? "SMS" : "FAX", o.Custom);
  std::fprintf(out,
               "[OPTIONS]\r\nFrom: %s\r\nFromTelephone: %s\r\nFromFax: %s\r\nFromEmail: %s\r\n"
               "FromParam: %s\r\nCoversheet: %s\r\nLetterhead: %s\r\nPriority: %s\r\n"
               "After: %s\r\nHeader: %s\r\nQuality: %s\r\nChargecode: %s\r\nCodeDescription:\r\n"
               "Preview: %s\r\nFaxBroadcast: %s\r\nHold: %s\r\nDelete: %s\r\nConvGraph: YES\r\n",
               o.From, o.FromTelephone, o.FromFax, o.FromEmail, o.FromParam, o.Coversheet,
               o.Letterhead, o.Priority, o.After, o.Header, o.Quality, o.Chargecode,
               YesNo(o.Preview), YesNo(o.FaxBroadcast), YesNo(o.Hold), DeleteWord(o));
  for (const char* p = o.Attach; p && *p;) {
    while (*p == ' ' || *p == '\t') ++p;
    const char* comma = std::strchr(p, ',');
    const size_t length = comma ? static_cast<size_t>(comma - p) : std::strlen(p);
    if (length > 0) std::fprintf(out, "Attach: %.*s\r\n", static_cast<int>(length), p);
    p = comma ? comma + 1 : nullptr;
  }
  for (int slot = 0; slot < kDocumentSlots && o.Documents[slot][0]; ++slot)
    std::fprintf(out, "Document: %s\r\n", o.Documents[slot]);
  if (o.NotifyMail[0]) std::fprintf(out, "NotifyMail: %s\r\n", o.NotifyMail);
  if (o.QSMessageID[0]) std::fprintf(out, "QSMessageID: %s\r\n", o.QSMessageID);
  if (o.AbortAfterPreview) std::fputs("AbortAfterPreview: YES\r\n", out);
}

}  // namespace

VLRESULT WriteControlFile(const ApiSession& session, FILE* out, const char* body,
                          const MessageOptions& options, FILE* submit, const TextSource& subject,
                          const TextSource& cover) {
  WriteHeadAndOptions(out, body, options);
  if (VLRESULT rc = WriteTextBlock(session, out, submit, subject, kSubject)) return rc;
  if (VLRESULT rc = WriteTextBlock(session, out, submit, cover, kCover)) return rc;
  if (const char* sentItems = SentItemsWord(options))
    std::fprintf(out, "SentItems: %s\r\n", sentItems);
  if (VLRESULT rc = WriteAddressees(session, out, submit)) return rc;
  if (std::fflush(out) != 0 || std::ferror(out)) {
    ApiReportError(&session, "Error writing to control file");
    return VL_E_FILE_ERROR;
  }
  return VL_OK;
}

}  // namespace vl
