// Text between automation strings (wide) and the library's 8-bit text in the
// system code page.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>

namespace vlauto {

// The 8-bit form of a wide text; null gives an empty text.
std::string Narrow(const wchar_t* text);
std::wstring Widen(const char* text);

// True for a null or empty automation string.
inline bool IsEmpty(BSTR text) { return !text || !*text; }

// A new automation string for the caller: E_OUTOFMEMORY when none can be
// made. The out-pointer must not be null.
HRESULT ReturnText(const char* text, BSTR* out);
HRESULT ReturnText(const std::wstring& text, BSTR* out);

}  // namespace vlauto
