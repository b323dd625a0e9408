#include <cstring>

#include "paragraph/paragraph_reader.h"

namespace para {
namespace {

bool g_eightBitText = true;

inline unsigned char Fold(unsigned char c) { return (c >= 'A' && c <= 'Z') ? c + 32 : c; }

// Whether a byte of a line survives cleaning.
inline bool Printable(unsigned char c, bool eightBit) {
  if (c < 32 || c == 127) return false;
  if (c < 128) return true;
  return eightBit || c == 156 || c == 163;
}

}  // namespace

void SetEightBitText(bool on) { g_eightBitText = on; }
bool EightBitText() { return g_eightBitText; }

bool KeptInLine(unsigned char c) { return Printable(c, g_eightBitText); }

const char* BadNamePartCharacter(const char* text, size_t length) {
  for (size_t i = 0; i < length; ++i) {
    const auto c = static_cast<unsigned char>(text[i]);
    if (!KeptInLine(c) || std::strchr("\\/:*?\"<>|.", c)) return text + i;
  }
  return nullptr;
}

bool StartsWithNoCase(const char* text, const char* prefix) {
  for (; *prefix; ++text, ++prefix)
    if (Fold(static_cast<unsigned char>(*text)) != Fold(static_cast<unsigned char>(*prefix)))
      return false;
  return true;
}

bool EqualNoCase(const char* a, const char* b) {
  if (Fold(static_cast<unsigned char>(*a)) != Fold(static_cast<unsigned char>(*b))) return false;
  for (; *a && *b; ++a, ++b)
    if (Fold(static_cast<unsigned char>(*a)) != Fold(static_cast<unsigned char>(*b))) return false;
  return *a == *b;
}

bool ReadLine(FILE* stream, char* buffer, int size, long* lineStart) {
  if (lineStart) *lineStart = std::ftell(stream);
  long consumed = 0;
  return ReadLineCounted(stream, buffer, size, &consumed);
}

bool ReadLineCounted(FILE* stream, char* buffer, int size, long* consumed) {
  *consumed = 0;
  if (size < 2) return false;
  // The buffer is pre-filled with LF so that the terminator fgets writes is
  // the last NUL in it, even when the line itself holds NUL bytes.
  std::memset(buffer, '\n', static_cast<size_t>(size));
  if (!std::fgets(buffer, size, stream)) {
    buffer[0] = '\0';
    return false;
  }
  int length = size - 1;
  while (length > 0 && buffer[length] != '\0') --length;
  *consumed = length;
  if (length == 0 || buffer[length - 1] != '\n') {
    int c;
    while ((c = std::getc(stream)) != EOF) {
      ++*consumed;
      if (c == '\n') break;
    }
  }
  CleanLine(buffer, length);
  return true;
}

void CleanLine(char* line, int length) {
  auto* bytes = reinterpret_cast<unsigned char*>(line);
  if (g_eightBitText) {
    // The common case, kept simple enough for the compiler to vectorise.
    for (int i = 0; i < length; ++i)
      if (bytes[i] < 32 || bytes[i] == 127) bytes[i] = ' ';
  } else {
    for (int i = 0; i < length; ++i)
      if (!Printable(bytes[i], false)) bytes[i] = ' ';
  }
  // Tabs, CR and LF are blanks by now.
  while (length > 0 && line[length - 1] == ' ') --length;
  line[length] = '\0';
}

}  // namespace para
