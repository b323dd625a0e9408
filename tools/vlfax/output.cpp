#include "output.h"

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <iostream>

namespace vlfax {
namespace {

struct CodeWord {
  unsigned code;
  const char* word;
  const char* meaning;
};

// Message states; 30 and up are final.
constexpr CodeWord kMessageStatus[] = {
    {0, "??", "unknown"},
    {1, "Su", "submitted"},
    {2, "He", "held"},
    {3, "WT", "deferred"},
    {4, "Wa", "waiting"},
    {6, "Pr", "converting"},
    {7, "Co", "connecting"},
    {8, "Se", "sending"},
    {9, "Sc", "scanning"},
    {10, "Ab", "aborting"},
    {11, "Re", "receiving"},
    {12, "WD", "waiting for a device"},
    {13, "Sr", "submitted to the router"},
    {14, "Ar", "accepted from a remote server"},
    {30, "OK", "completed"},
    {31, "Fa", "failed"},
    {32, "OK", "preview done"},
    {33, "Fa", "preview failed"},
};

constexpr CodeWord kUserStatus[] = {
    {0, "-", nullptr}, {1, "OK", "read"}, {2, "Aw", nullptr}, {3, "Wa", nullptr}};

constexpr CodeWord kMessageType[] = {{1, "Fax", nullptr}, {2, "LAN", nullptr}, {3, "SMS", nullptr}};

constexpr CodeWord kHistoryEvent[] = {
    {1, "SentOK", "sent"},
    {2, "RecdOK", "received"},
    {3, "ScanOK", "scanned"},
    {4, "SentEr", "send error"},
    {5, "RecdEr", "receive error"},
    {6, "ScanEr", "scan error"},
    {7, "Tried", "attempt"},
    {8, "RouterSub", "routed"},
    {9, "RouterAcc", "accepted by the router"},
    {10, "RouterErr", "router error"},
};

constexpr CodeWord kRoute[] = {
    {100, "FAX-ANY", nullptr},
    {101, "PRINTER-ANY", nullptr},
    {102, "FAX-PRINTER-ANY", nullptr},
    {103, "HP-PRINTER-ANY", nullptr},
    {104, "PS-PRINTER-ANY", nullptr},
    {105, "LAN-ANY", nullptr},
    {106, "PREVIEW-ANY", nullptr},
    {107, "SMS-ANY", nullptr},
    {0, "none", nullptr},
    {1, "BINARY", nullptr},
    {2, "FAX", nullptr},
    {3, "FAX-FINE", nullptr},
    {4, "FAX-SFINE", nullptr},
    {5, "HQFAX", nullptr},
    {6, "FAX-ASCII", nullptr},
    {7, "EMAIL", nullptr},
    {8, "PS-PRINTER", nullptr},
    {10, "HP-PRINTER-DRAFT", nullptr},
    {11, "HP-PRINTER", nullptr},
    {13, "SCAN", nullptr},
    {14, "SCAN-FINE", nullptr},
    {15, "SCAN-SUPERFINE", nullptr},
    {16, "FAX-PRINTER", nullptr},
    {17, "FAX-PRINTER-FINE", nullptr},
    {18, "FAX-PRINTER-SFINE", nullptr},
    {19, "LAN", nullptr},
    {20, "LAN-FINE", nullptr},
    {21, "LAN-SUPERFINE", nullptr},
    {22, "PREVIEW", nullptr},
    {23, "PREVIEW-FINE", nullptr},
    {24, "PREVIEW-SUPERFINE", nullptr},
    {27, "PREVIEW-ASCII", nullptr},
    {25, "SMS", nullptr},
    {31, "DIAL-INTERNAL", nullptr},
    {30, "FAX-INCOMING", nullptr},
    {29, "SMS-INCOMING", nullptr},
};

// No word of the server's status file gives 5.
constexpr CodeWord kDeviceStatus[] = {
    {0, "Un", "unknown"},
    {1, "OK", "idle"},
    {2, "Er", "error"},
    {3, "Fa", "failed"},
    {4, "Of", "offline"},
    {5, "?", "busy"},
    {6, "WC", "waiting to connect"},
    {7, "Se", "sending"},
    {8, "Re", "receiving"},
    {9, "PS", nullptr},
    {10, "PR", nullptr},
    {11, "WS", "waiting for a document to scan"},
    {12, "Sc", "scanning"},
    {13, "In", "incoming call"},
};

constexpr CodeWord kLinkStatus[] = {
    {0, "-", nullptr},           {1, "ONLINE", nullptr},   {2, "OFFLINE", nullptr},
    {3, "WDOGFAILED", nullptr},  {4, "LINKINIT", nullptr}, {5, "LINKSHUTDOWN", nullptr},
    {6, "LINKUNKNOWN", nullptr},
};

template <size_t N>
const CodeWord* Find(const CodeWord (&table)[N], unsigned code) {
  for (const CodeWord& row : table)
    if (row.code == code) return &row;
  return nullptr;
}

template <size_t N>
const char* WordOf(const CodeWord (&table)[N], unsigned code) {
  const CodeWord* row = Find(table, code);
  return row ? row->word : "??";
}

template <size_t N>
const char* MeaningOf(const CodeWord (&table)[N], unsigned code) {
  const CodeWord* row = Find(table, code);
  return row && row->meaning ? row->meaning : "";
}

std::string CsvField(const std::string& value) {
  if (value.find_first_of(",\"\r\n") == std::string::npos) return value;
  std::string quoted = "\"";
  for (char c : value) {
    if (c == '"') quoted += '"';
    quoted += c;
  }
  return quoted + "\"";
}

bool SameLetters(const std::string& a, const char* b) {
  size_t i = 0;
  for (; i < a.size() && b[i]; ++i)
    if (std::toupper(static_cast<unsigned char>(a[i])) !=
        std::toupper(static_cast<unsigned char>(b[i])))
      return false;
  return i == a.size() && !b[i];
}

}  // namespace

void PrintTable(const Table& table, Format format) {
  switch (format) {
    case Format::kJson: {
      Json rows = Json::array();
      for (const auto& row : table.rows) {
        Json object = Json::object();
        for (size_t i = 0; i < table.keys.size() && i < row.size(); ++i)
          object[table.keys[i]] = row[i];
        rows.push_back(std::move(object));
      }
      PrintJson(rows);
      return;
    }
    case Format::kCsv: {
      auto line = [](const std::vector<std::string>& cells) {
        std::string text;
        for (size_t i = 0; i < cells.size(); ++i) text += (i ? "," : "") + CsvField(cells[i]);
        std::cout << text << "\r\n";
      };
      line(table.keys);
      for (const auto& row : table.rows) line(row);
      return;
    }
    case Format::kText: {
      std::vector<size_t> widths(table.headings.size());
      for (size_t i = 0; i < widths.size(); ++i) widths[i] = table.headings[i].size();
      for (const auto& row : table.rows)
        for (size_t i = 0; i < widths.size() && i < row.size(); ++i)
          widths[i] = std::max(widths[i], row[i].size());
      auto line = [&](const std::vector<std::string>& cells) {
        std::string text;
        for (size_t i = 0; i < cells.size() && i < widths.size(); ++i) {
          text += cells[i];
          if (i + 1 < cells.size()) text += std::string(widths[i] - cells[i].size() + 2, ' ');
        }
        while (!text.empty() && text.back() == ' ') text.pop_back();
        std::cout << text << "\n";
      };
      line(table.headings);
      for (const auto& row : table.rows) line(row);
      return;
    }
  }
}

void PrintJson(const Json& document) {
  std::cout << document.dump(2, ' ', false, nlohmann::json::error_handler_t::replace) << "\n";
}

const char* MessageStatusWord(unsigned status) { return WordOf(kMessageStatus, status); }
const char* MessageStatusMeaning(unsigned status) { return MeaningOf(kMessageStatus, status); }
const char* UserStatusWord(unsigned status) { return WordOf(kUserStatus, status); }
const char* MessageTypeWord(unsigned type) { return WordOf(kMessageType, type); }
const char* HistoryEventWord(unsigned event) { return WordOf(kHistoryEvent, event); }
const char* RouteWord(unsigned route) { return WordOf(kRoute, route); }
const char* DeviceStatusWord(unsigned status) { return WordOf(kDeviceStatus, status); }
const char* DeviceStatusMeaning(unsigned status) { return MeaningOf(kDeviceStatus, status); }
const char* LinkStatusWord(unsigned status) { return WordOf(kLinkStatus, status); }

std::vector<unsigned> MessageStatusesOf(const std::string& word) {
  std::vector<unsigned> statuses;
  for (const CodeWord& row : kMessageStatus)
    if (row.code != 0 && SameLetters(word, row.word)) statuses.push_back(row.code);
  return statuses;
}

std::string DateTime(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                     unsigned second) {
  if (year == 0) return {};
  char text[32];
  std::snprintf(text, sizeof text, "%04u-%02u-%02u %02u:%02u:%02u", year, month, day, hour, minute,
                second);
  return text;
}

}  // namespace vlfax
