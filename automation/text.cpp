// Conversions in the system code page.
#include "automation/text.h"

#include <cstring>

namespace vlauto {

std::string Narrow(const wchar_t* text) {
  if (!text || !*text) return {};
  const int length = static_cast<int>(wcslen(text));
  const int size = WideCharToMultiByte(CP_ACP, 0, text, length, nullptr, 0, nullptr, nullptr);
  std::string narrow(size, '\0');
  WideCharToMultiByte(CP_ACP, 0, text, length, narrow.data(), size, nullptr, nullptr);
  return narrow;
}

std::wstring Widen(const char* text) {
  if (!text || !*text) return {};
  const int length = static_cast<int>(std::strlen(text));
  const int size = MultiByteToWideChar(CP_ACP, 0, text, length, nullptr, 0);
  std::wstring wide(size, L'\0');
  MultiByteToWideChar(CP_ACP, 0, text, length, wide.data(), size);
  return wide;
}

HRESULT ReturnText(const std::wstring& text, BSTR* out) {
  *out = SysAllocStringLen(text.data(), static_cast<UINT>(text.size()));
  return *out ? S_OK : E_OUTOFMEMORY;
}

HRESULT ReturnText(const char* text, BSTR* out) {
  try {
    return ReturnText(Widen(text), out);
  } catch (...) {
    *out = nullptr;
    return E_OUTOFMEMORY;
  }
}

}  // namespace vlauto
