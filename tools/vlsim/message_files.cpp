#include "tools/vlsim/message_files.h"

#include <cstdio>

#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vlsim {
namespace {

// The [MESSAGE] paragraph that follows the [DOCUMENT] entry of body, as a
// line range; begin is kNone when the list has no such entry.
struct Entry {
  size_t document = kNone;  // the [DOCUMENT] line
  size_t begin = kNone;     // the [MESSAGE] line
  size_t end = kNone;       // the next header after it
};

bool NamesBody(const std::string& fileValue, const std::string& body) {
  std::string name = fileValue.substr(0, fileValue.find('.'));
  return para::EqualNoCase(name.c_str(), body.c_str());
}

Entry FindEntry(const Lines& lines, const std::string& body) {
  for (size_t doc = FindHeader(lines, "[DOCUMENT]"); doc != kNone;
       doc = FindHeader(lines, "[DOCUMENT]", doc + 1)) {
    size_t end = ParagraphEnd(lines, doc);
    size_t file = FindKeyword(lines, doc + 1, end, "File:");
    if (file == kNone || !NamesBody(ValueOf(lines[file]), body)) continue;
    Entry entry;
    entry.document = doc;
    if (end < lines.size() && para::StartsWithNoCase(lines[end].c_str(), "[MESSAGE]")) {
      entry.begin = end;
      entry.end = ParagraphEnd(lines, end);
    }
    return entry;
  }
  return {};
}

// The line range of addressee number index (from 0): from its "ShortName:"
// line to the next one or the paragraph's end.
std::pair<size_t, size_t> AddresseeRange(const Lines& lines, size_t begin, size_t end,
                                         size_t index) {
  size_t found = 0;
  for (size_t i = begin; i < end; ++i) {
    if (!para::StartsWithNoCase(lines[i].c_str(), "ShortName:")) continue;
    if (found++ != index) continue;
    size_t next = FindKeyword(lines, i + 1, end, "ShortName:");
    return {i, next == kNone ? end : next};
  }
  return {kNone, kNone};
}

}  // namespace

int ReadSendOrder(const std::string& controlPath, SendOrder* order) {
  Lines lines;
  if (int error = ReadSharedFile(controlPath, &lines)) return error;
  *order = SendOrder();
  if (size_t options = FindHeader(lines, "[OPTIONS]"); options != kNone) {
    size_t hold = FindKeyword(lines, options + 1, ParagraphEnd(lines, options), "Hold:");
    order->hold = hold != kNone && para::EqualNoCase(ValueOf(lines[hold]).c_str(), "YES");
  }
  size_t addressees = FindHeader(lines, "[ADDRESSEES]");
  if (addressees == kNone) return os::kOk;
  const size_t end = ParagraphEnd(lines, addressees);
  for (size_t i = addressees + 1; i < end; ++i) {
    const char* line = lines[i].c_str();
    if (para::StartsWithNoCase(line, "ShortName:")) {
      order->addressees.emplace_back();
    } else if (order->addressees.empty()) {
      continue;
    } else if (para::StartsWithNoCase(line, "Name:")) {
      order->addressees.back().name = ValueOf(lines[i]);
    } else if (para::StartsWithNoCase(line, "Organisation:")) {
      order->addressees.back().organisation = ValueOf(lines[i]);
    } else if (para::StartsWithNoCase(line, "Via:")) {
      std::string via = ValueOf(lines[i]);
      size_t blank = via.find(' ');
      Addressee& addressee = order->addressees.back();
      addressee.route = via.substr(0, blank);
      addressee.number = blank == std::string::npos ? "" : via.substr(blank + 1);
    }
  }
  return os::kOk;
}

int ApplyControlChange(const std::string& controlPath, const ControlChange& change) {
  return EditSharedFile(controlPath, false, [&](Lines& lines) {
    if (size_t message = FindHeader(lines, "[MESSAGE]"); message != kNone) {
      if (!change.accepted.empty())
        SetValue(lines, message + 1, ParagraphEnd(lines, message), "Accepted:", change.accepted);
      if (!change.status.empty())
        SetValue(lines, message + 1, ParagraphEnd(lines, message), "Status:", change.status);
    }
    if (size_t options = FindHeader(lines, "[OPTIONS]"); options != kNone && !change.hold.empty())
      SetValue(lines, options + 1, ParagraphEnd(lines, options), "Hold:", change.hold);
    if (size_t addressees = FindHeader(lines, "[ADDRESSEES]"); addressees != kNone) {
      for (const auto& [index, word] : change.addresseeStatus) {
        auto [begin, end] = AddresseeRange(lines, addressees + 1,
                                           ParagraphEnd(lines, addressees), index);
        if (begin != kNone) SetValue(lines, begin + 1, end, "AddrStatus:", word);
      }
    }
    if (!change.history.empty()) {
      size_t history = FindHeader(lines, "[HISTORY]");
      if (history == kNone) {
        lines.push_back("[HISTORY]");
        history = lines.size() - 1;
      }
      size_t end = ParagraphEnd(lines, history);
      lines.insert(lines.begin() + static_cast<long>(end), change.history.begin(),
                   change.history.end());
    }
    return true;
  });
}

int ApplyEntryChanges(const std::string& listPath, const std::vector<EntryChange>& changes) {
  return EditSharedFile(listPath, false, [&](Lines& lines) {
    bool changed = false;
    for (const EntryChange& change : changes) {
      Entry entry = FindEntry(lines, change.body);
      if (entry.begin == kNone) continue;
      if (change.unlessComplete) {
        size_t status = FindKeyword(lines, entry.begin + 1, entry.end, "Status:");
        std::string word = status == kNone ? "" : ValueOf(lines[status]);
        if (para::EqualNoCase(word.c_str(), "OK") || para::EqualNoCase(word.c_str(), "Fa")) continue;
      }
      if (!change.accepted.empty())
        SetValue(lines, entry.begin + 1, entry.end, "Accepted:", change.accepted);
      entry.end = ParagraphEnd(lines, entry.begin);
      SetValue(lines, entry.begin + 1, entry.end, "Status:", change.status);
      changed = true;
    }
    return changed;
  });
}

int RemoveEntry(const std::string& listPath, const std::string& body) {
  return EditSharedFile(listPath, false, [&](Lines& lines) {
    Entry entry = FindEntry(lines, body);
    if (entry.document == kNone) return false;
    size_t end = entry.end != kNone ? entry.end : ParagraphEnd(lines, entry.document);
    size_t begin = entry.document;
    // Each entry is preceded by an empty line: a middle entry's range ends
    // with the next one's, the last entry takes its own.
    if (end == lines.size() && begin > 0 && lines[begin - 1].empty()) --begin;
    lines.erase(lines.begin() + static_cast<long>(begin), lines.begin() + static_cast<long>(end));
    return true;
  });
}

int AppendEntry(const std::string& listPath, const char* type, const Lines& entry) {
  return EditSharedFile(listPath, true, [&](Lines& lines) {
    if (lines.empty()) lines = {"[VELOMAR]", std::string("Type: ") + type, "Revision: A"};
    lines.push_back("");
    lines.insert(lines.end(), entry.begin(), entry.end());
    return true;
  });
}

std::string TimeStamp() {
  os::LocalTime now = os::Now();
  char text[32];
  std::snprintf(text, sizeof text, "%.2d-%.2d-%.2d %.2d:%.2d:%.2d", now.year % 100, now.month,
                now.day, now.hour, now.minute, now.second);
  return text;
}

}  // namespace vlsim
