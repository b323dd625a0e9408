// servers and --server: the fax servers of the directory service, reached
// through the automation root object of the Vlapi64.dll loaded in this
// process (its class factory is asked directly, so no registration is
// needed and the selection applies to this process's copy of the library).
#include <windows.h>
#include <oleauto.h>

#include <cstdio>
#include <iostream>
#include <utility>

#include "commands.h"
#include "errors.h"
#include "output.h"

namespace vlfax {
namespace {

// The automation root object and the dispatch identifiers of its members.
constexpr CLSID kRootClsid = {
    0xF8F6D7F6, 0xF36C, 0x11D4, {0xB8, 0x63, 0x00, 0x90, 0x27, 0xA6, 0xFE, 0xE2}};
constexpr DISPID kSetServerFromDirectory = 13;
constexpr DISPID kServersFromDirectory = 15;

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

// Owns a BSTR.
class Bstr {
 public:
  explicit Bstr(const std::string& text) {
    int length =
        MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), nullptr, 0);
    b_ = SysAllocStringLen(nullptr, static_cast<UINT>(length));
    if (!b_) throw std::bad_alloc();
    MultiByteToWideChar(CP_ACP, 0, text.data(), static_cast<int>(text.size()), b_, length);
  }
  ~Bstr() { SysFreeString(b_); }
  Bstr(const Bstr&) = delete;
  Bstr& operator=(const Bstr&) = delete;
  BSTR get() const { return b_; }

 private:
  BSTR b_ = nullptr;
};

// Owns a VARIANT, cleared when it goes out of scope.
class Variant {
 public:
  Variant() { VariantInit(&v_); }
  ~Variant() { VariantClear(&v_); }
  Variant(const Variant&) = delete;
  Variant& operator=(const Variant&) = delete;
  VARIANT* get() { return &v_; }
  const VARIANT& operator*() const { return v_; }

 private:
  VARIANT v_;
};

// Owns the strings of an EXCEPINFO.
struct ExceptionInfo {
  EXCEPINFO info{};
  ~ExceptionInfo() {
    SysFreeString(info.bstrSource);
    SysFreeString(info.bstrDescription);
    SysFreeString(info.bstrHelpFile);
  }
};

std::string Narrow(const wchar_t* text, UINT length) {
  if (!text || length == 0) return {};
  int size =
      WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), nullptr, 0, nullptr, nullptr);
  std::string result(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_ACP, 0, text, static_cast<int>(length), result.data(), size, nullptr,
                      nullptr);
  return result;
}

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
void InitialiseCom() {
  static const HRESULT initialised = CoInitialize(nullptr);
  if (FAILED(initialised) && initialised != RPC_E_CHANGED_MODE)
    ThrowResult("initialising COM", initialised);
}

// A new automation root object of this process's Vlapi64.dll.
ComPtr<IDispatch> RootObject(const std::string& what) {
  InitialiseCom();
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
  return root;
}

// Calls the method dispid of object with the arguments given in reverse
// order (as DISPPARAMS holds them); throws with the code the method raised.
void CallMethod(IDispatch* object, DISPID dispid, VARIANT* reversedArgs, UINT argCount,
                VARIANT* result, const std::string& what) {
  DISPPARAMS params{reversedArgs, nullptr, argCount, 0};
  ExceptionInfo exception;
  UINT argError = 0;
  HRESULT hr = object->Invoke(dispid, IID_NULL, LOCALE_USER_DEFAULT, DISPATCH_METHOD, &params,
                              result, &exception.info, &argError);
  if (hr == DISP_E_EXCEPTION) {
    if (exception.info.pfnDeferredFillIn) exception.info.pfnDeferredFillIn(&exception.info);
    if (FAILED(exception.info.scode)) hr = exception.info.scode;
  }
  if (FAILED(hr)) ThrowResult(what, hr);
}

std::string VariantText(const VARIANT& value) {
  if (V_VT(&value) == VT_BSTR) return Narrow(V_BSTR(&value), SysStringLen(V_BSTR(&value)));
  Variant text;
  if (FAILED(VariantChangeType(text.get(), const_cast<VARIANT*>(&value), 0, VT_BSTR))) return {};
  return Narrow(V_BSTR(text.get()), SysStringLen(V_BSTR(text.get())));
}

// The strings of a one-dimensional SAFEARRAY of VARIANTs or of BSTRs.
std::vector<std::string> ArrayStrings(const VARIANT& value, const std::string& what) {
  std::vector<std::string> strings;
  VARTYPE type = V_VT(&value);
  if (type == VT_EMPTY || type == VT_NULL) return strings;
  if (!(type & VT_ARRAY) || ((type & VT_TYPEMASK) != VT_VARIANT && (type & VT_TYPEMASK) != VT_BSTR))
    ThrowResult(what + ": reading the result", DISP_E_TYPEMISMATCH);
  SAFEARRAY* array = (type & VT_BYREF) ? *V_ARRAYREF(&value) : V_ARRAY(&value);
  if (!array || SafeArrayGetDim(array) != 1) return strings;
  LONG lower = 0, upper = -1;
  SafeArrayGetLBound(array, 1, &lower);
  SafeArrayGetUBound(array, 1, &upper);
  for (LONG i = lower; i <= upper; ++i) {
    if ((type & VT_TYPEMASK) == VT_VARIANT) {
      Variant element;
      HRESULT hr = SafeArrayGetElement(array, &i, element.get());
      if (FAILED(hr)) ThrowResult(what + ": reading the result", hr);
      strings.push_back(VariantText(*element));
    } else {
      BSTR element = nullptr;
      HRESULT hr = SafeArrayGetElement(array, &i, &element);
      if (FAILED(hr)) ThrowResult(what + ": reading the result", hr);
      strings.push_back(Narrow(element, SysStringLen(element)));
      SysFreeString(element);
    }
  }
  return strings;
}

struct ServersOptions {
  bool json = false;
};

int RunServers(const Globals& globals, const ServersOptions& options) {
  if (globals.trace) Check(VlxEscape(0, "TRACE", 1), "turning the trace on");
  const std::string what = "listing the servers of the directory service";
  ComPtr<IDispatch> root = RootObject(what);
  Variant result;
  CallMethod(root.get(), kServersFromDirectory, nullptr, 0, result.get(), what);
  std::vector<std::string> names = ArrayStrings(*result, what);
  if (options.json) {
    PrintJson(Json(names));
  } else {
    for (const auto& name : names) std::cout << name << "\n";
  }
  return kExitOk;
}

}  // namespace

void SelectServer(const std::string& name) {
  const std::string what = "selecting server " + name;
  ComPtr<IDispatch> root = RootObject(what);
  Bstr serverName(name);
  VARIANT argument;
  VariantInit(&argument);
  V_VT(&argument) = VT_BSTR;
  V_BSTR(&argument) = serverName.get();  // still owned by serverName
  CallMethod(root.get(), kSetServerFromDirectory, &argument, 1, nullptr, what);
}

void AddServersCommand(CLI::App& app, const Globals& globals, Action& action) {
  auto options = std::make_shared<ServersOptions>();
  CLI::App* command =
      app.add_subcommand("servers", "list the fax servers registered in the directory service");
  command->add_flag("--json", options->json, "JSON output");
  command->callback([&globals, &action, options] {
    action = [&globals, options] { return RunServers(globals, *options); };
  });
}

}  // namespace vlfax
