#include "errors.h"

#include <windows.h>

#include <cstdio>

namespace vlfax {
namespace {

std::string Trimmed(const char* text, DWORD length) {
  std::string s(text, length);
  while (!s.empty() && (s.back() == '\r' || s.back() == '\n' || s.back() == ' ')) s.pop_back();
  return s;
}

std::string LibraryLine(const std::string& what, uint16_t code) {
  char hex[8];
  std::snprintf(hex, sizeof hex, "0x%04X", code);
  std::string line = what + " failed: " + hex;
  std::string text = ResultText(code);
  if (!text.empty()) line += " " + text;
  return line;
}

std::string SystemLine(const std::string& what, unsigned long error) {
  std::string line = what + " failed: error " + std::to_string(error);
  std::string text = SystemText(error);
  if (!text.empty()) line += " " + text;
  return line;
}

}  // namespace

LibraryError::LibraryError(const std::string& what, VLRESULT code)
    : std::runtime_error(LibraryLine(what, static_cast<uint16_t>(code))),
      code_(static_cast<uint16_t>(code)) {}

SystemError::SystemError(const std::string& what, unsigned long error)
    : std::runtime_error(SystemLine(what, error)) {}

void Check(VLRESULT result, const std::string& what) {
  if (result != VL_OK) throw LibraryError(what, result);
}

std::string ResultText(uint16_t code) {
  HMODULE module = GetModuleHandleA("Vlapi64.dll");
  if (!module) return {};
  char buffer[512];
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS, module,
                                code, 0, buffer, sizeof buffer, nullptr);
  return Trimmed(buffer, length);
}

std::string SystemText(unsigned long error) {
  char buffer[512];
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                error, 0, buffer, sizeof buffer, nullptr);
  return Trimmed(buffer, length);
}

}  // namespace vlfax
