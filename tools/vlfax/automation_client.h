// The automation objects of the Vlapi64.dll loaded in this process, called
// by member name. The root object comes from the module's own class factory,
// so no registration is needed and settings made through it (a server chosen
// from the directory service) apply to this process's copy of the library.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace vlfax {

// Owns one reference to a COM interface.
template <class T>
class ComPtr {
 public:
  ComPtr() = default;
  ~ComPtr() { Reset(); }
  ComPtr(ComPtr&& other) noexcept : p_(std::exchange(other.p_, nullptr)) {}
  ComPtr& operator=(ComPtr&& other) noexcept {
    if (this != &other) {
      Reset();
      p_ = std::exchange(other.p_, nullptr);
    }
    return *this;
  }
  ComPtr(const ComPtr&) = delete;
  ComPtr& operator=(const ComPtr&) = delete;

  T* operator->() const { return p_; }
  T* get() const { return p_; }
  // The address to receive a new reference; the old one is released first.
  void** Out() {
    Reset();
    return reinterpret_cast<void**>(&p_);
  }
  void Reset() {
    if (p_) std::exchange(p_, nullptr)->Release();
  }

 private:
  T* p_ = nullptr;
};

// Owns a VARIANT, cleared when it goes out of scope.
class Variant {
 public:
  Variant() { VariantInit(&v_); }
  ~Variant() { VariantClear(&v_); }
  Variant(Variant&& other) noexcept : v_(other.v_) { VariantInit(&other.v_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  VARIANT* get() { return &v_; }
  const VARIANT& operator*() const { return v_; }

 private:
  VARIANT v_;
};

// An argument of a call: a text, a number or a truth value.
using Argument = std::variant<std::string, long, bool>;

// One automation object. Failures throw: LibraryError for the library's own
// codes, otherwise a runtime_error with the code and the system's text, each
// introduced by the description the object was made with.
class AutomationObject {
 public:
  AutomationObject(ComPtr<IDispatch> object, std::string what)
      : object_(std::move(object)), what_(std::move(what)) {}

  // Calls the method or reads the property name with args, in order.
  Variant Invoke(const std::string& name, const std::vector<Argument>& args = {}) const;
  // As Invoke, for members that give an object, a text or a number.
  AutomationObject Object(const std::string& name, const std::vector<Argument>& args = {}) const;
  std::string Text(const std::string& name) const;
  long Number(const std::string& name) const;

 private:
  ComPtr<IDispatch> object_;
  std::string what_;
};

// A new root object (Vlapi32.VlAPI) of this process's Vlapi64.dll; what
// describes the job in the messages of its failures.
AutomationObject RootObject(const std::string& what);

// The texts of a one-dimensional SAFEARRAY of VARIANTs or BSTRs; none for
// an empty value.
std::vector<std::string> ArrayStrings(const VARIANT& value, const std::string& what);

}  // namespace vlfax
