#include "automation_client.h"

#include <cstdio>
#include <stdexcept>

#include "errors.h"

namespace vlfax {
namespace {

// The automation root object's class.
constexpr CLSID kRootClsid = {
    0xF8F6D7F6, 0xF36C, 0x11D4, {0xB8, 0x63, 0x00, 0x90, 0x27, 0xA6, 0xFE, 0xE2}};

// Owns the strings of an EXCEPINFO.
struct ExceptionInfo {
  EXCEPINFO info{};
  ~ExceptionInfo() {
    SysFreeString(info.bstrSource);
    SysFreeString(info.bstrDescription);
    SysFreeString(info.bstrHelpFile);
  }
};

std::wstring Widen(const std::string& text) {
  int length =
      MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
  std::wstring wide(static_cast<size_t>(length), L'\0');
  MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), wide.data(), length);
  return wide;
}

std::string Narrow(const wchar_t* text, UINT length) {
  if (!text || length == 0) return {};
  int size =
      WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), result.data(), size, nullptr,
                      nullptr);
  return result;
}

std::string BstrText(BSTR text) { return Narrow(text, SysStringLen(text)); }

// Throws for a failed HRESULT: a LibraryError carrying the low 16 bits for
// the library's own codes (interface facility), otherwise the code in hex
// with the system's text.
[[noreturn]] void ThrowResult(const std::string& what, HRESULT hr) {
  if (HRESULT_FACILITY(hr) == FACILITY_ITF)
    throw LibraryError(what, static_cast<VLRESULT>(static_cast<uint16_t>(hr & 0xFFFF)));
  char hex[16];
  std::snprintf(hex, sizeof hex, "0x%08lX", static_cast<unsigned long>(hr));
  std::string line = what + " failed: " + hex;
  std::string text = SystemText(static_cast<unsigned long>(hr));
  if (!text.empty()) line += " " + text;
  throw std::runtime_error(line);
}

// COM stays initialised for the rest of the process once it is.
void InitialiseCom(const std::string& what) {
  static const HRESULT initialised = CoInitialize(nullptr);
  if (FAILED(initialised) && initialised != RPC_E_CHANGED_MODE)
    ThrowResult(what + ": initialising COM", initialised);
}

// The argument as a VARIANT that owns its text.
Variant ToVariant(const Argument& argument) {
  Variant value;
  VARIANT* v = value.get();
  if (const auto* text = std::get_if<std::string>(&argument)) {
    std::wstring wide = Widen(*text);
    V_VT(v) = VT_BSTR;
    V_BSTR(v) = SysAllocStringLen(wide.data(), static_cast<UINT>(wide.size()));
    if (!V_BSTR(v)) throw std::bad_alloc();
  } else if (const auto* number = std::get_if<long>(&argument)) {
    V_VT(v) = VT_I4;
    V_I4(v) = *number;
  } else {
    V_VT(v) = VT_BOOL;
    V_BOOL(v) = std::get<bool>(argument) ? VARIANT_TRUE : VARIANT_FALSE;
  }
  return value;
}

// The value converted to type, or a thrown failure.
Variant Converted(const Variant& value, VARTYPE type, const std::string& what) {
  Variant converted;
  HRESULT hr = VariantChangeType(converted.get(), const_cast<VARIANT*>(&*value), 0, type);
  if (FAILED(hr)) ThrowResult(what + ": reading the result", hr);
  return converted;
}

}  // namespace

Variant AutomationObject::Invoke(const std::string& name, const std::vector<Argument>& args) const {
  std::wstring wideName = Widen(name);
  LPOLESTR names[] = {wideName.data()};
  DISPID dispid = DISPID_UNKNOWN;
  HRESULT hr = object_->GetIDsOfNames(IID_NULL, names, 1, LOCALE_USER_DEFAULT, &dispid);
  if (FAILED(hr)) ThrowResult(what_ + ": finding member " + name, hr);

  std::vector<Variant> owned;
  owned.reserve(args.size());
  for (const Argument& argument : args) owned.push_back(ToVariant(argument));
  std::vector<VARIANT> reversed;
  for (auto it = owned.rbegin(); it != owned.rend(); ++it) reversed.push_back(**it);

  DISPPARAMS params{reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  Variant result;
  ExceptionInfo exception;
  UINT argError = 0;
  hr = object_->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD | DISPATCH_PROPERTYGET,
                       &params, result.get(), &exception.info, &argError);
  if (hr == DISP_E_EXCEPTION) {
    if (exception.info.pfnDeferredFillIn) exception.info.pfnDeferredFillIn(&exception.info);
    if (FAILED(exception.info.scode)) hr = exception.info.scode;
  }
  if (FAILED(hr)) ThrowResult(what_, hr);
  return result;
}

AutomationObject AutomationObject::Object(const std::string& name,
                                          const std::vector<Argument>& args) const {
  Variant result = Invoke(name, args);
  ComPtr<IDispatch> object;
  const VARIANT& v = *result;
  if ((V_VT(&v) != VT_DISPATCH && V_VT(&v) != VT_UNKNOWN) || !V_UNKNOWN(&v) ||
      FAILED(V_UNKNOWN(&v)->QueryInterface(IID_IDispatch, object.Out())))
    ThrowResult(what_ + ": reading " + name, DISP_E_TYPEMISMATCH);
  return AutomationObject(std::move(object), what_);
}

std::string AutomationObject::Text(const std::string& name) const {
  return BstrText(V_BSTR(Converted(Invoke(name), VT_BSTR, what_).get()));
}

long AutomationObject::Number(const std::string& name) const {
  return V_I4(Converted(Invoke(name), VT_I4, what_).get());
}

AutomationObject RootObject(const std::string& what) {
  InitialiseCom(what);
  HMODULE module = GetModuleHandleA("Vlapi64.dll");
  if (!module) throw SystemError(what + ": finding Vlapi64.dll", GetLastError());
  using GetClassObject = HRESULT(STDAPICALLTYPE*)(REFCLSID, REFIID, void**);
  auto getClassObject = reinterpret_cast<GetClassObject>(
      reinterpret_cast<void (*)()>(GetProcAddress(module, "DllGetClassObject")));
  if (!getClassObject) throw SystemError(what + ": finding DllGetClassObject", GetLastError());
  ComPtr<IClassFactory> factory;
  HRESULT hr = getClassObject(kRootClsid, IID_IClassFactory, factory.Out());
  if (FAILED(hr)) ThrowResult(what + ": getting the class factory", hr);
  ComPtr<IDispatch> root;
  hr = factory->CreateInstance(nullptr, IID_IDispatch, root.Out());
  if (FAILED(hr)) ThrowResult(what + ": creating the automation object", hr);
  return AutomationObject(std::move(root), what);
}

std::vector<std::string> ArrayStrings(const VARIANT& value, const std::string& what) {
  std::vector<std::string> strings;
  VARTYPE type = V_VT(&value);
  if (type == VT_EMPTY || type == VT_NULL) return strings;
  VARTYPE element = type & VT_TYPEMASK;
  if (!(type & VT_ARRAY) || (element != VT_VARIANT && element != VT_BSTR))
    ThrowResult(what + ": reading the result", DISP_E_TYPEMISMATCH);
  SAFEARRAY* array = (type & VT_BYREF) ? *V_ARRAYREF(&value) : V_ARRAY(&value);
  if (!array || SafeArrayGetDim(array) != 1) return strings;
  LONG lower = 0, upper = -1;
  SafeArrayGetLBound(array, 1, &lower);
  SafeArrayGetUBound(array, 1, &upper);
  for (LONG i = lower; i <= upper; ++i) {
    Variant item;
    HRESULT hr = element == VT_VARIANT ? SafeArrayGetElement(array, &i, item.get())
                                       : SafeArrayGetElement(array, &i, &V_BSTR(item.get()));
    if (FAILED(hr)) ThrowResult(what + ": reading the result", hr);
    if (element == VT_BSTR) V_VT(item.get()) = VT_BSTR;
    strings.push_back(BstrText(V_BSTR(Converted(item, VT_BSTR, what).get())));
  }
  return strings;
}

}  // namespace vlfax
