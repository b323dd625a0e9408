// The one implementation of IUnknown, IDispatch and ISupportErrorInfo that
// every automation object shares: a class derives from
// DispatchObject<ITS_INTERFACE> and writes only its own members. IDispatch
// is forwarded to the interface's type information from the type library.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <atomic>
#include <new>
#include <utility>

#include "automation/module.h"
#include "platform/win32/raii_win.h"

namespace vlauto {

template <typename Interface>
class DispatchObject : public Interface, public ISupportErrorInfo {
 public:
  DispatchObject() { ObjectCreated(); }
  DispatchObject(const DispatchObject&) = delete;
  DispatchObject& operator=(const DispatchObject&) = delete;
  virtual ~DispatchObject() { ObjectDestroyed(); }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    if (!out) return E_POINTER;
    if (IsEqualIID(iid, IID_IUnknown) || IsEqualIID(iid, IID_IDispatch) ||
        IsEqualIID(iid, __uuidof(Interface))) {
      *out = static_cast<Interface*>(this);
    } else if (IsEqualIID(iid, IID_ISupportErrorInfo)) {
      *out = static_cast<ISupportErrorInfo*>(this);
    } else {
      *out = nullptr;
      return E_NOINTERFACE;
    }
    AddRef();
    return S_OK;
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  STDMETHODIMP GetTypeInfoCount(UINT* count) override {
    if (!count) return E_INVALIDARG;
    *count = 1;
    return S_OK;
  }
  STDMETHODIMP GetTypeInfo(UINT index, LCID, ITypeInfo** info) override {
    if (!info) return E_INVALIDARG;
    *info = nullptr;
    if (index != 0) return DISP_E_BADINDEX;
    return GetInterfaceTypeInfo(__uuidof(Interface), info);
  }
  STDMETHODIMP GetIDsOfNames(REFIID, LPOLESTR* names, UINT count, LCID, DISPID* ids) override {
    os::ComPtr<ITypeInfo> info;
    HRESULT hr = GetInterfaceTypeInfo(__uuidof(Interface), info.put());
    return FAILED(hr) ? hr : DispGetIDsOfNames(info.get(), names, count, ids);
  }
  STDMETHODIMP Invoke(DISPID id, REFIID, LCID, WORD flags, DISPPARAMS* parameters,
                      VARIANT* result, EXCEPINFO* exception, UINT* badArgument) override {
    os::ComPtr<ITypeInfo> info;
    HRESULT hr = GetInterfaceTypeInfo(__uuidof(Interface), info.put());
    if (FAILED(hr)) return hr;
    // A call written as a method reaches a property getter too (obj.Item(0),
    // the enumerator asked for as a method), as script engines expect.
    if (flags & DISPATCH_METHOD) flags |= DISPATCH_PROPERTYGET;
    return DispInvoke(static_cast<Interface*>(this), info.get(), id, flags, parameters, result,
                      exception, badArgument);
  }

  STDMETHODIMP InterfaceSupportsErrorInfo(REFIID iid) override {
    return IsEqualIID(iid, __uuidof(Interface)) ? S_OK : S_FALSE;
  }

 private:
  std::atomic<ULONG> references_{1};
};

// A new object holding its one first reference; null when it cannot be made.
template <typename T, typename... Args>
os::ComPtr<T> MakeObject(Args&&... args) {
  os::ComPtr<T> object;
  try {
    object.reset(new T(std::forward<Args>(args)...));
  } catch (...) {
  }
  return object;
}

// Hands an object's reference to an out-pointer as interface I.
template <typename I, typename T>
HRESULT ReturnObject(os::ComPtr<T> object, I** out) {
  if (!object) {
    *out = nullptr;
    return E_OUTOFMEMORY;
  }
  *out = static_cast<I*>(object.detach());
  return S_OK;
}

// Runs a member's body, turning an escaping exception into an HRESULT: no
// exception leaves the library.
template <typename F>
HRESULT Guarded(F&& body) noexcept {
  try {
    return body();
  } catch (const std::bad_alloc&) {
    return E_OUTOFMEMORY;
  } catch (...) {
    return E_FAIL;
  }
}

}  // namespace vlauto
