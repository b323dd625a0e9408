// Reading a message's history from its control file's "[HISTORY]"
// paragraph: VlxGetMsgHistoryEx and VlxGetMsgHistory.
#include <cstddef>
#include <cstring>
#include <memory>
#include <new>
#include <string>
#include <string_view>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/text.h"
#include "msg/addressees.h"
#include "msg/msg_dir.h"
#include "msg/routes.h"
#include "paragraph/paragraph_reader.h"

using namespace vl;

namespace {

inline constexpr int16_t kShortHistorySize = 94;
inline constexpr int16_t kLongHistorySize = 166;

struct Event {
  const char* keyword;
  uint16_t number;
  bool routing;  // taken only when routing events are asked for
};

// In the order lines are classified.
const Event kEvents[] = {
    {"SentOK:", 1, false},   {"RecdOK:", 2, false},    {"ScanOK:", 3, false},
    {"SentEr:", 4, false},   {"RecdEr:", 5, false},    {"ScanEr:", 6, false},
    {"Tried:", 7, true},     {"RouterSub:", 8, true},  {"RouterAcc:", 9, true},
    {"RouterErr:", 10, true},
};

// The event number of a history line, or 0 for a line that is not taken.
uint16_t EventOf(const char* line, bool includeRouting) {
  for (const Event& e : kEvents)
    if ((includeRouting || !e.routing) && para::StartsWithNoCase(line, e.keyword))
      return e.number;
  return 0;
}

// The tokens of a history line's value, one after the other; empty once the
// value is used up.
class Tokens {
 public:
  explicit Tokens(const char* text) : next_(text) {}

  std::string_view Next() {
    if (!next_) return {};
    const para::ListItem item = para::NextListItem(next_);
    next_ = item.next;
    return {item.item, item.length};
  }

  // A token whose enclosing quotes are removed.
  std::string_view NextQuoted() {
    std::string_view token = Next();
    if (!token.empty() && token.front() == '"') token.remove_prefix(1);
    if (!token.empty() && token.back() == '"') token.remove_suffix(1);
    return token;
  }

 private:
  const char* next_;
};

// Reads a run of decimal digits from the front of text (the value stops
// growing past 10^9); false when there is none.
bool TakeDigits(std::string_view& text, uint32_t* value) {
  size_t i = 0;
  uint32_t n = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
    n = n > 100000000u ? n : n * 10 + static_cast<uint32_t>(text[i] - '0');
  text.remove_prefix(i);
  *value = n;
  return i > 0;
}

// Three numbers separated by separator at the front of token.
bool TakeTriple(std::string_view token, char separator, uint32_t (&parts)[3]) {
  for (int i = 0; i < 3; ++i) {
    if (i > 0) {
      if (token.empty() || token.front() != separator) return false;
      token.remove_prefix(1);
    }
    if (!TakeDigits(token, &parts[i])) return false;
  }
  return true;
}

uint16_t Decimal(std::string_view token) {
  uint32_t n = 0;
  TakeDigits(token, &n);
  return static_cast<uint16_t>(n);
}

// "<" and a hexadecimal number, read up to the first other character or
// before it would overflow 16 bits; anything else is 0.
uint16_t ErrorCode(std::string_view token) {
  if (token.empty() || token.front() != '<') return 0;
  token.remove_prefix(1);
  while (!token.empty() && (token.front() == ' ' || token.front() == '\t')) token.remove_prefix(1);
  uint32_t n = 0;
  for (char c : token) {
    const int digit = c >= '0' && c <= '9'   ? c - '0'
                      : c >= 'a' && c <= 'f' ? c - 'a' + 10
                      : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                             : -1;
    if (digit < 0 || n * 16 + static_cast<uint32_t>(digit) > 0xFFFF) break;
    n = n * 16 + static_cast<uint32_t>(digit);
  }
  return static_cast<uint16_t>(n);
}

// Parses the value of a history line into record, writing every field but
// the event. A line without ':' or '=' gives zeros and empty texts.
void ParseHistoryLine(const char* line, VLMSGHISTORYEX& record) {
  std::memset(&record, 0, sizeof record);
  const char* separator = std::strpbrk(line, ":=");
  if (!separator) return;
  const char* value = separator + 1;
  while (*value == ' ' || *value == '\t') ++value;
  Tokens tokens(value);

  uint32_t date[3], time[3], connect[3];
  if (TakeTriple(tokens.Next(), '-', date) && date[0] < 100 && date[1] >= 1 && date[1] <= 12 &&
      date[2] >= 1 && date[2] <= 31) {
    record.Year = static_cast<uint16_t>(date[0] < 80 ? 2000 + date[0] : 1900 + date[0]);
    record.Month = static_cast<uint16_t>(date[1]);
    record.Day = static_cast<uint16_t>(date[2]);
  }
  if (TakeTriple(tokens.Next(), ':', time) && time[0] < 24 && time[1] < 60 && time[2] < 60) {
    record.Hour = static_cast<uint16_t>(time[0]);
    record.Minute = static_cast<uint16_t>(time[1]);
    record.Second = static_cast<uint16_t>(time[2]);
  }
  record.Addressee = Decimal(tokens.Next());
  CopyCut(record.AddresseeText, tokens.NextQuoted());
  const std::string route(tokens.Next());
  const Route* known = RouteByWord(route.c_str());
  record.Route = known ? known->code : 0;
  CopyCut(record.RouteParams, tokens.NextQuoted());
  record.ErrorCode = ErrorCode(tokens.Next());
  record.Pages = Decimal(tokens.Next());
  // Hours are not limited; the seconds wrap at 16 bits.
  if (TakeTriple(tokens.Next(), ':', connect) && connect[1] < 60 && connect[2] < 60)
    record.ConnectTime = static_cast<uint16_t>((connect[0] * 60 + connect[1]) * 60 + connect[2]);
  CopyCut(record.Device, tokens.NextQuoted());
  CopyCut(record.RemoteServer, tokens.NextQuoted());
}

VLRESULT ReadHistory(ApiSession& session, CallFrame& frame, uint16_t selector, const char* body,
                     uint16_t addresseeFilter, uint16_t includeRouting, int16_t maxEntries,
                     uint16_t* count, int16_t recordSize, VLMSGHISTORYEX* records) {
  if (VLRESULT rc = CheckControlFileBody(session, body)) return rc;
  if (recordSize != kShortHistorySize && recordSize != kLongHistorySize) {
    ApiReportError(&session, "VLMSGHISTORYEX size invalid");
    return VL_E_INVALID_PARAM;
  }
  if (VLRESULT rc = CheckListOutputs(session, count, records, maxEntries)) return rc;
  para::Opened control;
  std::string path;
  if (VLRESULT rc = OpenControlFile(session, selector, body, &control, &path)) return rc;
  *count = 0;
  char line[para::kLineSize];
  if (!para::FindParagraph(control.get(), "[HISTORY]", line, sizeof line)) {
    ApiTrace(&session, "...VlxGetMsgHistory - no HISTORY para");
    frame.OmitClosingTrace();
    return VL_OK;
  }
  auto* slot = reinterpret_cast<unsigned char*>(records);
  int total = 0;
  while (para::ReadLine(control.get(), line, sizeof line) && !para::IsHeader(line)) {
    const uint16_t event = EventOf(line, includeRouting != 0);
    if (!event) continue;
    VLMSGHISTORYEX record;
    ParseHistoryLine(line, record);
    record.Event = event;
    const bool passes = addresseeFilter == 0 || record.Addressee == addresseeFilter;
    // A line that the filter refuses fills the slot that the next line reuses.
    if (total < maxEntries) {
      std::memcpy(slot, &record, static_cast<size_t>(recordSize));
      if (passes) slot += recordSize;
    }
    if (passes) *count = static_cast<uint16_t>(++total);
  }
  return VL_OK;
}

}  // namespace

extern "C" {

VLRESULT VLAPI_CALL VlxGetMsgHistoryEx(VLHANDLE handle, uint16_t directory, const char* body,
                                       uint16_t addresseeFilter, uint16_t includeRouting,
                                       int16_t maxEntries, uint16_t* count, int16_t recordSize,
                                       VLMSGHISTORYEX* records) {
  CallFrame frame(handle, "VlxGetMsgHistory", UserRule::Needed);
  frame.Enter("VlxGetMsgHistory - '%s\\%s.CTL', MaxEntries = %d", DirectoryWord(directory),
              body ? body : "(null)", maxEntries);
  return frame.Run([&](ApiSession& session) {
    return ReadHistory(session, frame, directory, body, addresseeFilter, includeRouting,
                       maxEntries, count, recordSize, records);
  });
}

VLRESULT VLAPI_CALL VlxGetMsgHistory(VLHANDLE handle, uint16_t directory, const char* body,
                                     uint16_t addresseeFilter, uint16_t includeRouting,
                                     int16_t maxEntries, uint16_t* count, VLMSGHISTORY* records) {
  return Guarded(nullptr, [&]() -> VLRESULT {
    const int slots = maxEntries > 0 ? maxEntries : 0;
    std::unique_ptr<VLMSGHISTORYEX[]> full(new (std::nothrow) VLMSGHISTORYEX[slots ? slots : 1]);
    if (!full) return VL_E_MALLOC_FAILED;
    VLRESULT rc = VlxGetMsgHistoryEx(handle, directory, body, addresseeFilter, includeRouting,
                                     maxEntries, count, kLongHistorySize,
                                     records ? full.get() : nullptr);
    if (rc != VL_OK) return rc;
    for (int i = 0; i < *count && i < slots; ++i) {
      const VLMSGHISTORYEX& from = full[i];
      VLMSGHISTORY& to = records[i];
      std::memcpy(&to, &from, offsetof(VLMSGHISTORY, RouteParams));
      CopyBounded(to.RouteParams, from.RouteParams);
      to.ErrorCode = from.ErrorCode;
      to.Pages = from.Pages;
      to.ConnectTime = from.ConnectTime;
      CopyBounded(to.Device, from.Device);
    }
    return rc;
  });
}

}  // extern "C"
