// Output of records: code words, aligned text tables, JSON and CSV.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

namespace vlfax {

using Json = nlohmann::ordered_json;

enum class Format { kText, kJson, kCsv };

// Rows of text under named columns. keys name the columns in JSON.
struct Table {
  std::vector<std::string> headings;
  std::vector<std::string> keys;
  std::vector<std::vector<std::string>> rows;
};

// Prints the table to stdout: aligned columns, a JSON array of objects, or
// CSV with a heading line (RFC 4180 quoting).
void PrintTable(const Table& table, Format format);

// Prints a JSON document to stdout, indented, with a line end.
void PrintJson(const Json& document);

// Words for the numbers of the library's records; "??" for unknown numbers.
const char* MessageStatusWord(unsigned status);     // VLMSGINFOEX.Status: "Wa", "OK"...
const char* MessageStatusMeaning(unsigned status);  // "waiting", "completed"...
const char* UserStatusWord(unsigned status);        // "Aw", "Wa", "OK"
const char* MessageTypeWord(unsigned type);         // "Fax", "LAN", "SMS"
const char* HistoryEventWord(unsigned event);       // "SentOK", "Tried"...
const char* RouteWord(unsigned route);              // "FAX-ANY", "LAN"...
const char* DeviceStatusWord(unsigned status);      // "OK", "Se"...
const char* DeviceStatusMeaning(unsigned status);
const char* LinkStatusWord(unsigned status);  // "ONLINE"...

// The status number of a two-letter status word (any case); statuses 30
// and 32 share "OK", 31 and 33 "Fa". Empty when the word is unknown.
std::vector<unsigned> MessageStatusesOf(const std::string& word);

// "YYYY-MM-DD HH:MM:SS", or "" when the year is 0.
std::string DateTime(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute,
                     unsigned second);

// The text of a fixed-size, possibly unterminated character field.
template <size_t N>
std::string Field(const char (&field)[N]) {
  size_t length = 0;
  while (length < N && field[length]) ++length;
  return std::string(field, length);
}

}  // namespace vlfax
