// ReportError: the description of a failure and the error information made
// of it.
#include "automation/error_report.h"

#include <oleauto.h>

#include <cstdio>
#include <cstring>

#include "automation/module.h"
#include "automation/text.h"
#include "platform/win32/raii_win.h"

namespace vlauto {

void DescribeError(HRESULT hr, uint16_t code, char (&text)[512]) {
  const auto value = static_cast<uint32_t>(hr);
  uint32_t number = code;
  if (!number && value >= 0x8004F700u && value <= 0x8004F7FFu) number = value & 0xFFFFu;
  if (!number) number = value;
  DWORD length = FormatMessageA(
      FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      ThisModule(), number, MAKELANGID(LANG_NEUTRAL, SUBLANG_NEUTRAL), text, sizeof text, nullptr);
  if (length >= sizeof text) length = 0;
  text[length] = '\0';
  if (length >= 2 && text[length - 2] == '\r' && text[length - 1] == '\n') text[length - 2] = '\0';
  if (length) return;
  const int dispatchError = static_cast<int>(value & 0xFFFFu) - 0x200;
  if (value >= 0x80040000u && value <= 0x8004FDFFu && dispatchError != 0)
    std::snprintf(text, sizeof text, "IDispatch error #%d", dispatchError);
  else
    std::snprintf(text, sizeof text, "Unknown error 0x%0lX", static_cast<unsigned long>(value));
}

HRESULT ReportError(HRESULT hr, uint16_t code, REFIID iid, const char* source) noexcept {
  if (hr >= 0) return hr;
  try {
    char description[512];
    DescribeError(hr, code, description);
    os::ComPtr<ICreateErrorInfo> creator;
    if (FAILED(CreateErrorInfo(creator.put()))) return hr;
    creator->SetGUID(iid);
    creator->SetSource(const_cast<LPOLESTR>(Widen(source).c_str()));
    creator->SetDescription(const_cast<LPOLESTR>(Widen(description).c_str()));
    os::ComPtr<IErrorInfo> info;
    if (SUCCEEDED(creator->QueryInterface(IID_IErrorInfo, info.put_void())))
      SetErrorInfo(0, info.get());
  } catch (...) {
    // Without memory for the texts the failure goes without its record.
  }
  return hr;
}

}  // namespace vlauto
