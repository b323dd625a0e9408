#include <cstring>
#include <string>

#include "paragraph/paragraph_reader.h"

namespace para {
namespace {

inline bool IsDigit(char c) { return c >= '0' && c <= '9'; }

// Finds keyword and returns its line's value ("" when the line has none).
const char* FindValue(FILE* stream, const char* keyword, char* line, long startPosition,
                      char stopChar) {
  if (!FindKeyword(stream, keyword, line, kLineSize, startPosition, stopChar)) return nullptr;
  const char* value = ValueOf(line);
  return value ? value : "";
}

// The next content line, or none (the stream put back) when the next line
// that is not ignored is a header, or when it does not begin with keyword.
const char* NextLineValue(FILE* stream, const char* keyword, char* line) {
  const long start = std::ftell(stream);
  while (ReadLine(stream, line, kLineSize)) {
    if (!IsHeader(line) && !IsContentLine(line)) continue;
    if (IsContentLine(line) && StartsWithNoCase(line, keyword)) {
      const char* value = ValueOf(line);
      return value ? value : "";
    }
    break;
  }
  std::fseek(stream, start, SEEK_SET);
  line[0] = '\0';
  return nullptr;
}

void CopyText(const char* value, char* out, int size) {
  if (size <= 0) return;
  size_t length = std::strlen(value);
  if (length > static_cast<size_t>(size - 1)) length = static_cast<size_t>(size - 1);
  std::memcpy(out, value, length);
  out[length] = '\0';
}

}  // namespace

const char* ValueOf(const char* line) {
  const char* separator = std::strpbrk(line, ":=");
  if (!separator) return nullptr;
  const char* value = separator + 1;
  while (*value == ' ' || *value == '\t' || *value == '\r' || *value == '\n') ++value;
  return value;
}

uint16_t LeadingDigitsU16(const char* text) {
  uint16_t n = 0;
  for (; IsDigit(*text); ++text) n = static_cast<uint16_t>(n * 10 + (*text - '0'));
  return n;
}

int32_t DecimalI32(const char* text) {
  while (*text == ' ' || *text == '\t') ++text;
  bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  uint32_t n = 0;
  for (; IsDigit(*text); ++text) n = n * 10u + static_cast<uint32_t>(*text - '0');
  return static_cast<int32_t>(negative ? 0u - n : n);
}

bool ReadText(FILE* stream, const char* keyword, char* out, int size, long startPosition,
              char stopChar) {
  char line[kLineSize];
  const char* value = FindValue(stream, keyword, line, startPosition, stopChar);
  if (!value) return false;
  CopyText(value, out, size);
  return true;
}

bool ReadTextEitherForm(FILE* stream, const char* name, char* out, int size,
                        long startPosition) {
  for (const char* separator : {":", "="}) {
    const std::string keyword = std::string(name) + separator;
    if (ReadText(stream, keyword.c_str(), out, size, startPosition) && *out) return true;
  }
  if (size > 0) *out = '\0';
  return false;
}

bool ReadU16(FILE* stream, const char* keyword, uint16_t* out, long startPosition,
             char stopChar) {
  char line[kLineSize];
  const char* value = FindValue(stream, keyword, line, startPosition, stopChar);
  if (!value || !*value) return false;
  *out = LeadingDigitsU16(value);
  return true;
}

bool ReadI16(FILE* stream, const char* keyword, int16_t* out, long startPosition,
             char stopChar) {
  char line[kLineSize];
  const char* value = FindValue(stream, keyword, line, startPosition, stopChar);
  if (!value || !*value) return false;
  uint16_t magnitude = LeadingDigitsU16(value[0] == '-' ? value + 1 : value);
  *out = static_cast<int16_t>(value[0] == '-' ? -magnitude : magnitude);
  return true;
}

bool ReadI32(FILE* stream, const char* keyword, int32_t* out, long startPosition,
             char stopChar) {
  char line[kLineSize];
  const char* value = FindValue(stream, keyword, line, startPosition, stopChar);
  if (!value || !*value) return false;
  *out = DecimalI32(value);
  return true;
}

bool ReadI64(FILE* stream, const char* keyword, int64_t* out, long startPosition,
             char stopChar) {
  int32_t narrow = 0;
  if (!ReadI32(stream, keyword, &narrow, startPosition, stopChar)) return false;
  *out = narrow;  // converted to 32 bits, then sign-extended
  return true;
}

bool ReadFlag(FILE* stream, const char* keyword, int32_t* out, long startPosition,
              char stopChar) {
  char line[kLineSize];
  const char* value = FindValue(stream, keyword, line, startPosition, stopChar);
  return value && FlagFromText(value, out);
}

bool ReadTimeOfDay(FILE* stream, const char* keyword, int32_t* out, long startPosition,
                   char stopChar) {
  char line[kLineSize];
  const char* found = FindValue(stream, keyword, line, startPosition, stopChar);
  if (!found) return false;
  char value[6];
  CopyText(found, value, sizeof value);
  const char* colon = std::strchr(value, ':');
  if (!colon) return false;
  int32_t hours = DecimalI32(value);
  int32_t minutes = DecimalI32(colon + 1);
  *out = (hours * 60 + minutes) * 60;
  return true;
}

bool NextLineText(FILE* stream, const char* keyword, char* out, int size) {
  char line[kLineSize];
  const char* value = NextLineValue(stream, keyword, line);
  if (!value) return false;
  CopyText(value, out, size);
  return true;
}

bool NextLineU16(FILE* stream, const char* keyword, uint16_t* out) {
  char line[kLineSize];
  const char* value = NextLineValue(stream, keyword, line);
  if (!value || !*value) return false;
  *out = LeadingDigitsU16(value);
  return true;
}

bool NextLineFlag(FILE* stream, const char* keyword, int32_t* out) {
  char line[kLineSize];
  const char* value = NextLineValue(stream, keyword, line);
  return value && FlagFromText(value, out);
}

bool FlagFromText(const char* value, int32_t* out) {
  static const char* const kYes[] = {"Y", "YES", "TRUE", "ON", "1", ""};
  static const char* const kNo[] = {"N", "NO", "FALSE", "OFF", "0"};
  char word[20];
  CopyText(value, word, sizeof word);
  for (const char* yes : kYes)
    if (EqualNoCase(word, yes)) return *out = 1, true;
  for (const char* no : kNo)
    if (EqualNoCase(word, no)) return *out = 0, true;
  return false;
}

bool NumberFromText(const char* value, int16_t* out) {
  char text[20];
  CopyText(value, text, sizeof text);
  const char* p = text;
  while (*p == ' ' || *p == '\t' || *p == '\r' || *p == '\n') ++p;
  const char* digits = (*p == '-' || *p == '+') ? p + 1 : p;
  if (!IsDigit(*digits)) {
    *out = 0;
    return false;
  }
  *out = static_cast<int16_t>(DecimalI32(p));
  return true;
}

}  // namespace para
