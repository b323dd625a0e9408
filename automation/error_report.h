// The error convention of every automation object: result codes become
// automation errors, and each failure is made the thread's error
// information with its interface, source and description.
#pragma once

#include <windows.h>

#include <cstdint>

#include "vlapi.h"

namespace vlauto {

// The automation error of a result code: 0x80040000 + code, S_OK for 0.
inline HRESULT FromResultCode(VLRESULT code) {
  return code ? static_cast<HRESULT>(0x80040000u + static_cast<uint16_t>(code)) : S_OK;
}

// Makes a failing hr the thread's error information: the interface iid, the
// source (such as "IVlAPI::Logon()") and the description of code (when not
// 0) or of hr, from the library's message table or the system's. Returns hr.
HRESULT ReportError(HRESULT hr, uint16_t code, REFIID iid, const char* source) noexcept;

// Reports a non-zero result code as its automation error; 0 gives S_OK.
inline HRESULT ReportResult(VLRESULT code, REFIID iid, const char* source) {
  return code ? ReportError(FromResultCode(code), static_cast<uint16_t>(code), iid, source) : S_OK;
}

// The description ReportError gives hr and code (exposed for tests).
void DescribeError(HRESULT hr, uint16_t code, char (&text)[512]);

}  // namespace vlauto
