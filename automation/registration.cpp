// Registration of the automation server from its registration script.
#include "automation/registration.h"

#include <oleauto.h>

#include <cctype>
#include <cstdio>

#include "automation/module.h"
#include "automation/text.h"
#include "platform/os.h"
#include "platform/win32/raii_win.h"

namespace vlauto {
namespace {

const int kScriptResource = 101;

bool SameWord(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (std::tolower(static_cast<unsigned char>(a[i])) !=
        std::tolower(static_cast<unsigned char>(b[i])))
      return false;
  return true;
}

struct Token {
  std::string text;
  bool quoted = false;
  bool Is(std::string_view word) const { return !quoted && SameWord(text, word); }
};

// Reads a script and emits the steps of one action as it goes.
class ScriptReader {
 public:
  ScriptReader(std::string_view text, std::string_view modulePath, ScriptAction action,
               std::vector<RegistryStep>* steps)
      : text_(text), module_(modulePath), action_(action), steps_(steps) {}

  bool Script() {
    Token root;
    while (Next(&root)) {
      if (!root.Is("HKCR") && !root.Is("HKEY_CLASSES_ROOT")) return false;
      if (!Expect("{") || !Block("", false)) return false;
    }
    return !broken_;
  }

 private:
  // The next word or quoted text; false at the end or on an unclosed quote.
  bool Next(Token* token) {
    while (at_ < text_.size() && std::isspace(static_cast<unsigned char>(text_[at_]))) ++at_;
    if (at_ >= text_.size()) return false;
    token->text.clear();
    token->quoted = text_[at_] == '\'';
    if (!token->quoted) {
      while (at_ < text_.size() && !std::isspace(static_cast<unsigned char>(text_[at_])))
        token->text.push_back(text_[at_++]);
      return true;
    }
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] != '\'') {
        token->text.push_back(text_[at_]);
      } else if (at_ + 1 < text_.size() && text_[at_ + 1] == '\'') {
        token->text.push_back(text_[++at_]);
      } else {
        ++at_;
        Substitute(&token->text);
        return true;
      }
    }
    broken_ = true;
    return false;
  }

  bool Expect(std::string_view word) {
    Token token;
    return Next(&token) && token.Is(word);
  }

  // Consumes the next token when it is word.
  bool Accept(std::string_view word) {
    size_t from = at_;
    Token token;
    if (Next(&token) && token.Is(word)) return true;
    at_ = from;
    return false;
  }

  void Substitute(std::string* text) const {
    const std::string_view variable = "%MODULE%";
    for (size_t at = text->find(variable); at != std::string::npos;
         at = text->find(variable, at + module_.size()))
      text->replace(at, variable.size(), module_);
  }

  // "= s 'text'": only string values are written.
  bool Value(std::string* data) {
    Token token;
    if (!Expect("=") || !Expect("s") || !Next(&token) || !token.quoted) return false;
    *data = std::move(token.text);
    return true;
  }

  void Emit(RegistryStep::Kind kind, const std::string& key, std::string name = {},
            std::string data = {}) {
    steps_->push_back(RegistryStep{kind, key, std::move(name), std::move(data)});
  }

  // The entries of one braced block below parent, up to its closing brace.
  // quiet: the parent goes whole in this action, so nothing below it counts.
  bool Block(const std::string& parent, bool quiet) {
    const bool registering = action_ == ScriptAction::Register;
    Token token;
    while (Next(&token)) {
      if (token.Is("}")) return true;
      if (token.Is("{") || token.Is("=")) return false;
      if (token.Is("val")) {
        std::string data;
        if (parent.empty() || !Next(&token) || !Value(&data)) return false;
        if (registering && !quiet)
          Emit(RegistryStep::Kind::SetValue, parent, token.text, std::move(data));
        continue;
      }
      const bool noRemove = token.Is("NoRemove");
      const bool forceRemove = token.Is("ForceRemove");
      if ((noRemove || forceRemove) && !Next(&token)) return false;
      if (token.Is("{") || token.Is("}") || token.Is("=") || token.text.empty()) return false;
      const std::string key = parent.empty() ? token.text : parent + "\\" + token.text;
      std::string data;
      const bool hasValue = Peek("=");
      if (hasValue && !Value(&data)) return false;
      if (!quiet && registering) {
        if (forceRemove) Emit(RegistryStep::Kind::DeleteTree, key);
        if (hasValue) Emit(RegistryStep::Kind::SetValue, key, "", std::move(data));
        else Emit(RegistryStep::Kind::CreateKey, key);
      } else if (!quiet && !noRemove) {
        Emit(RegistryStep::Kind::DeleteTree, key);
      }
      if (Accept("{") && !Block(key, quiet || (!registering && !noRemove))) return false;
    }
    return false;  // the block is not closed
  }

  bool Peek(std::string_view word) {
    size_t from = at_;
    bool found = Accept(word);
    at_ = from;
    return found;
  }

  std::string_view text_;
  std::string module_;
  ScriptAction action_;
  std::vector<RegistryStep>* steps_;
  size_t at_ = 0;
  bool broken_ = false;
};

HRESULT LastErrorResult() {
  DWORD error = GetLastError();
  return error ? HRESULT_FROM_WIN32(error) : E_FAIL;
}

HRESULT RunScript(const std::wstring& modulePath, ScriptAction action) {
  std::string script;
  if (HRESULT hr = LoadScript(ThisModule(), &script); FAILED(hr)) return hr;
  std::vector<RegistryStep> steps;
  if (!PlanRegistration(script, Narrow(modulePath.c_str()), action, &steps)) return E_FAIL;
  int error = ApplyRegistration(steps);
  return error ? HRESULT_FROM_WIN32(error) : S_OK;
}

HRESULT LoadOwnTypeLibrary(const std::wstring& modulePath, os::ComPtr<ITypeLib>* library) {
  return LoadTypeLibEx(modulePath.c_str(), REGKIND_NONE, library->put());
}

}  // namespace

bool PlanRegistration(std::string_view script, std::string_view modulePath, ScriptAction action,
                      std::vector<RegistryStep>* steps) {
  steps->clear();
  if (ScriptReader(script, modulePath, action, steps).Script()) return true;
  steps->clear();
  return false;
}

HRESULT LoadScript(HMODULE module, std::string* script) {
  HRSRC found = FindResourceW(module, MAKEINTRESOURCEW(kScriptResource), L"REGISTRY");
  if (!found) return LastErrorResult();
  HGLOBAL loaded = LoadResource(module, found);
  const void* bytes = loaded ? LockResource(loaded) : nullptr;
  if (!bytes) return LastErrorResult();
  script->assign(static_cast<const char*>(bytes), SizeofResource(module, found));
  return S_OK;
}

int ApplyRegistration(const std::vector<RegistryStep>& steps) {
  const os::Hive root = os::Hive::ClassesRoot;
  for (const RegistryStep& step : steps) {
    int error = os::kOk;
    switch (step.kind) {
      case RegistryStep::Kind::CreateKey:
        error = os::RegistryCreateKey(root, step.key.c_str());
        break;
      case RegistryStep::Kind::SetValue:
        error = os::RegistrySetString(root, step.key.c_str(), step.name.c_str(), step.data.c_str());
        break;
      case RegistryStep::Kind::DeleteTree:
        error = os::RegistryDeleteTree(root, step.key.c_str());
        if (error == os::kFileNotFound) error = os::kOk;
        break;
    }
    if (error) return error;
  }
  return os::kOk;
}

HRESULT RegisterServer() {
  const std::wstring modulePath = ThisModulePath();
  if (modulePath.empty()) return LastErrorResult();
  if (HRESULT hr = RunScript(modulePath, ScriptAction::Register); FAILED(hr)) return hr;
  os::ComPtr<ITypeLib> library;
  if (HRESULT hr = LoadOwnTypeLibrary(modulePath, &library); FAILED(hr)) return hr;
  std::wstring path = modulePath;  // the function takes a writable string
  return RegisterTypeLib(library.get(), path.data(), nullptr);
}

HRESULT UnregisterServer() {
  const std::wstring modulePath = ThisModulePath();
  if (modulePath.empty()) return LastErrorResult();
  if (HRESULT hr = RunScript(modulePath, ScriptAction::Unregister); FAILED(hr)) return hr;
  os::ComPtr<ITypeLib> library;
  if (HRESULT hr = LoadOwnTypeLibrary(modulePath, &library); FAILED(hr)) return hr;
  TLIBATTR* attributes = nullptr;
  if (HRESULT hr = library->GetLibAttr(&attributes); FAILED(hr)) return hr;
  const GUID guid = attributes->guid;
  const WORD major = attributes->wMajorVerNum;
  const WORD minor = attributes->wMinorVerNum;
  const LCID lcid = attributes->lcid;
  library->ReleaseTLibAttr(attributes);
  // A library that is not registered (any more) is already unregistered.
  wchar_t guidText[40];
  StringFromGUID2(guid, guidText, 40);
  char version[16];
  snprintf(version, sizeof version, "%x.%x", major, minor);
  const std::string key = "TypeLib\\" + Narrow(guidText) + "\\" + version;
  if (os::RegistryCheckKey(os::Hive::ClassesRoot, key.c_str()) == os::kFileNotFound) return S_OK;
  return UnRegisterTypeLib(guid, major, minor, lcid, SYS_WIN64);
}

}  // namespace vlauto
