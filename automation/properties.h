// The bodies of plain stored properties: a getter checks its out-pointer and
// returns a copy, a setter replaces the stored value.
#pragma once

#include <string>

#include "automation/dispatch_object.h"
#include "automation/text.h"

namespace vlauto {

inline HRESULT GetText(const std::wstring& value, BSTR* out) {
  if (!out) return E_POINTER;
  return ReturnText(value, out);
}

// A null text stores an empty one.
inline HRESULT PutText(std::wstring& value, BSTR text) {
  return Guarded([&] {
    value = text ? text : L"";
    return S_OK;
  });
}

template <typename T, typename V>
HRESULT GetValue(V value, T* out) {
  if (!out) return E_POINTER;
  *out = static_cast<T>(value);
  return S_OK;
}

template <typename T, typename V>
HRESULT PutValue(T& stored, V value) {
  stored = static_cast<T>(value);
  return S_OK;
}

}  // namespace vlauto
