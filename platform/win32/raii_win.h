// Owners of the Windows resources the library holds, one line each.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include "platform/raii.h"

namespace os {

inline void CloseFileHandle(HANDLE h) { ::CloseHandle(h); }
inline void CloseFindHandle(HANDLE h) { ::FindClose(h); }
inline void CloseRegistryKey(HKEY k) { ::RegCloseKey(k); }
inline void UnloadModule(HMODULE m) { ::FreeLibrary(m); }
inline void ReleaseBstr(BSTR s) { ::SysFreeString(s); }
inline void DestroySafeArray(SAFEARRAY* a) { ::SafeArrayDestroy(a); }

OS_RESOURCE_TRAITS(FileHandleTraits, HANDLE, INVALID_HANDLE_VALUE, CloseFileHandle);
OS_RESOURCE_TRAITS(KernelHandleTraits, HANDLE, nullptr, CloseFileHandle);
OS_RESOURCE_TRAITS(FindHandleTraits, HANDLE, INVALID_HANDLE_VALUE, CloseFindHandle);
OS_RESOURCE_TRAITS(RegistryKeyTraits, HKEY, nullptr, CloseRegistryKey);
OS_RESOURCE_TRAITS(ModuleTraits, HMODULE, nullptr, UnloadModule);
OS_RESOURCE_TRAITS(BstrTraits, BSTR, nullptr, ReleaseBstr);
OS_RESOURCE_TRAITS(SafeArrayTraits, SAFEARRAY*, nullptr, DestroySafeArray);

using UniqueFileHandle = UniqueResource<FileHandleTraits>;
using UniqueHandle = UniqueResource<KernelHandleTraits>;
using UniqueFindHandle = UniqueResource<FindHandleTraits>;
using UniqueRegistryKey = UniqueResource<RegistryKeyTraits>;
using UniqueModule = UniqueResource<ModuleTraits>;
using UniqueBstr = UniqueResource<BstrTraits>;
using UniqueSafeArray = UniqueResource<SafeArrayTraits>;

// Owns one VARIANT, cleared when dropped.
class UniqueVariant {
 public:
  UniqueVariant() { ::VariantInit(&value_); }
  UniqueVariant(UniqueVariant&& other) noexcept : value_(other.value_) { ::VariantInit(&other.value_); }
  UniqueVariant& operator=(UniqueVariant&& other) noexcept {
    if (this != &other) {
      ::VariantClear(&value_);
      value_ = other.value_;
      ::VariantInit(&other.value_);
    }
    return *this;
  }
  UniqueVariant(const UniqueVariant&) = delete;
  UniqueVariant& operator=(const UniqueVariant&) = delete;
  ~UniqueVariant() { ::VariantClear(&value_); }

  VARIANT* get() { return &value_; }
  const VARIANT* get() const { return &value_; }
  // The variant to receive a new value, the old one cleared.
  VARIANT* put() {
    ::VariantClear(&value_);
    return &value_;
  }

 private:
  VARIANT value_;
};

// Owns one reference to a COM interface.
template <typename T>
class ComPtr {
 public:
  ComPtr() = default;
  ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    if (this != &other) reset(std::exchange(other.p_, nullptr));
    return *this;
  }
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;
  ~ComPtr() { reset(); }

  T* get() const { return p_; }
  T* operator->() const { return p_; }
  explicit operator bool() const { return p_ != nullptr; }
  // The address to receive a new reference, dropping the old one.
  T** put() {
    reset();
    return &p_;
  }
  void** put_void() { return reinterpret_cast<void**>(put()); }
  // Hands the reference over to the caller.
  T* detach() { return std::exchange(p_, nullptr); }
  void reset(T* p = nullptr) {
    if (T* old = std::exchange(p_, p)) old->Release();
  }

 private:
  T* p_ = nullptr;
};

}  // namespace os
