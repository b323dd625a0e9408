// Small helpers for the fixed-size texts of records and sessions.
#pragma once

#include <cstddef>
#include <cstring>
#include <string>

namespace vl {

// Copies at most size-1 characters of text and terminates.
inline void CopyBounded(char* out, size_t size, const char* text) {
  if (size == 0) return;
  size_t i = 0;
  for (; i + 1 < size && text[i]; ++i) out[i] = text[i];
  out[i] = '\0';
}

template <size_t N>
void CopyBounded(char (&out)[N], const char* text) {
  CopyBounded(out, N, text);
}

template <size_t N>
void CopyBounded(char (&out)[N], const std::string& text) {
  CopyBounded(out, N, text.c_str());
}

inline bool EndsWithBackslash(const char* text) {
  size_t length = std::strlen(text);
  return length > 0 && text[length - 1] == '\\';
}

// Appends a backslash to a non-empty text without one, when it fits.
inline void EnsureBackslash(char* text, size_t size) {
  size_t length = std::strlen(text);
  if (length == 0 || text[length - 1] == '\\' || length + 1 >= size) return;
  text[length] = '\\';
  text[length + 1] = '\0';
}

inline void EnsureBackslash(std::string& text) {
  if (!text.empty() && text.back() != '\\') text.push_back('\\');
}

inline void UpperCase(char* text) {
  for (; *text; ++text)
    if (*text >= 'a' && *text <= 'z') *text = static_cast<char>(*text - 32);
}

inline std::string UpperCase(std::string text) {
  UpperCase(text.data());
  return text;
}

}  // namespace vl
