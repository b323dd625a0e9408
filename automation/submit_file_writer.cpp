// The submit file writer.
#include "automation/submit_file_writer.h"

#include <oleauto.h>

#include <cstdio>

namespace vlauto {
namespace {

struct Word {
  long value;
  const char* word;
};

const Word kFormats[] = {{2, "EPSON"}, {3, "TIFF-NORMAL"}, {4, "TIFF-FINE"}};
const Word kPriorities[] = {{2, "NORMAL"}, {3, "URGENT"}};
const Word kQualities[] = {{1, "HIGH"}, {2, "NORMAL"}, {3, "DRAFT"}};
const Word kHeaderParts[] = {{1, "No"}, {2, "To"}, {4, "Fr"}, {8, "Da"}, {16, "Ti"}};
const Word kAddressKeywords[] = {{2, "LAN"}, {3, "SMS"}};

// The word of value in table, or otherwise.
template <size_t N>
const char* WordOf(const Word (&table)[N], long value, const char* otherwise) {
  for (const Word& w : table)
    if (w.value == value) return w.word;
  return otherwise;
}

const char* YesNo(bool value) { return value ? "YES" : "NO"; }

constexpr long kFaxRecipient = 1;
constexpr long kSendTimeOffpeak = 2;
constexpr long kSendTimeAfter = 3;
constexpr size_t kMostDocuments = 30;

class Lines {
 public:
  explicit Lines(std::string* out) : out_(out) {}
  // keyword, then ": " and the value; an empty value with blank false
  // leaves the keyword alone ("AFTER:"). A line break inside the value
  // becomes a blank: it would otherwise start keyword lines of its own.
  void Add(const char* keyword, const std::string& value, bool blank = true) {
    *out_ += keyword;
    *out_ += ':';
    if (blank || !value.empty()) *out_ += ' ';
    for (char c : value) *out_ += c == '\r' || c == '\n' ? ' ' : c;
    *out_ += "\r\n";
  }
  void AddIfSet(const char* keyword, const std::string& value) {
    if (!value.empty()) Add(keyword, value);
  }
  void Raw(const std::string& text) { (*out_ += text) += "\r\n"; }

 private:
  std::string* out_;
};

std::string SentItems(const SubmitValues& message, const SubmitSwitches& switches) {
  if (switches.sentItems == 0 || switches.sentItems == 1) return YesNo(switches.sentItems == 1);
  const bool fax = message.recipients.empty() || message.recipients[0].type == kFaxRecipient;
  return YesNo((fax ? message.sentItemsFax : message.sentItemsSms) == 1);
}

// The After line's value; false when the date cannot be converted.
bool AfterValue(DATE after, std::string* value) {
  if (after == 0) return true;
  SYSTEMTIME t;
  if (!VariantTimeToSystemTime(after, &t)) return false;
  char text[64];
  std::snprintf(text, sizeof text, "%.02d-%d-%d %d:%d:%d", t.wYear, t.wMonth, t.wDay, t.wHour,
                t.wMinute, t.wSecond);
  *value = text;
  return true;
}

}  // namespace

HRESULT WriteSubmitFile(const SubmitValues& m, const SubmitSwitches& switches, std::string* out) {
  std::string after;
  if (m.sendTime == kSendTimeAfter && !AfterValue(m.after, &after)) return E_FAIL;
  std::string header;
  for (const Word& part : kHeaderParts)
    if (m.header & part.value) header += part.word;
  std::string attach;
  for (const std::string& name : m.attachments) attach += (attach.empty() ? "" : ", ") + name;

  std::string text;
  Lines lines(&text);
  lines.Raw("%%[MESSAGE]");
  lines.AddIfSet("FROM", m.from);
  lines.AddIfSet("SUBJECT", m.subject);
  lines.Add("COMMENT", m.comment);
  lines.Add("DELETE", !m.deleteAfterSend ? "NO" : switches.deleteFailedFaxes ? "YES" : "OK");
  lines.Add("HOLD", YesNo(m.hold));
  lines.Add("PREVIEW", YesNo(m.preview));
  lines.Add("FAXBROADCAST", YesNo(m.broadcast));
  lines.Add("CUSTOM", m.customField);
  lines.AddIfSet("CHARGE", m.charge);
  lines.AddIfSet("USER", m.user);
  lines.Add("FORMAT", WordOf(kFormats, m.format, "ASCII"));
  lines.Add("PRIORITY", WordOf(kPriorities, m.priority, "BACKGROUND"));
  if (const char* quality = WordOf(kQualities, m.quality, nullptr)) lines.Add("QUALITY", quality);
  if (m.sendTime == kSendTimeOffpeak) lines.Add("AFTER", "OFFPEAK");
  if (m.sendTime == kSendTimeAfter) lines.Add("AFTER", after, false);
  lines.Add("HEADER", header);
  lines.Add("COVERSHEET", m.coverSheet, false);
  lines.Add("LETTERHEAD", m.letterhead, false);
  lines.Add("SENTITEMS", SentItems(m, switches));
  lines.AddIfSet("ATTACH", attach);
  for (size_t i = 0; i < m.files.size() && i < kMostDocuments; ++i)
    lines.Add("DOCUMENT", m.files[i]);
  for (const SubmitRecipient& r : m.recipients) {
    lines.Add("To", r.to);
    lines.Add("Organisation", r.organisation);
    lines.Add(WordOf(kAddressKeywords, r.type, "Fax"), r.address);
    lines.Add("Field", "Custom " + r.custom);
  }
  if (!m.covertext.empty()) {
    lines.Raw("\r\n%%[COVERTEXT]");
    lines.Raw(m.covertext);
  }
  if (!m.text.empty() || m.files.empty()) {
    lines.Raw("\r\n%%[TEXT]");
    lines.Raw(m.text);
  }
  if (!m.files.empty()) {
    lines.Raw("\r\n%%[FILE]");
    for (const std::string& file : m.files) lines.Raw(file);
  }
  *out = std::move(text);
  return S_OK;
}

HRESULT WriteSubmitFile(const SubmitValues& message, const SubmitSwitches& switches, FILE* stream) {
  std::string text;
  if (HRESULT hr = WriteSubmitFile(message, switches, &text); FAILED(hr)) return hr;
  const bool written = std::fwrite(text.data(), 1, text.size(), stream) == text.size();
  return written && std::fflush(stream) == 0 ? S_OK : E_FAIL;
}

}  // namespace vlauto
