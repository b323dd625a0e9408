// Registration of the automation server: the registry entries written from
// the module's registration script (resource REGISTRY 101) and its type
// library.
//
// The script language is the brace form, as much of it as the script needs:
//   HKCR { [NoRemove|ForceRemove] Name [= s 'text'] [{ ... }]  val Name = s 'text' }
// Names are words or quoted texts ('' stands for a quote); %MODULE% stands
// for the module's full path. Registering writes every key and value (a
// ForceRemove key is deleted whole first); unregistering deletes every key
// whole except NoRemove ones, which are only entered.
#pragma once

#include <windows.h>

#include <string>
#include <string_view>
#include <vector>

namespace vlauto {

// One registry change below HKEY_CLASSES_ROOT.
struct RegistryStep {
  enum class Kind { CreateKey, SetValue, DeleteTree };
  Kind kind = Kind::CreateKey;
  std::string key;
  std::string name;  // SetValue: the value's name, empty for the default value
  std::string data;  // SetValue: the text written
  friend bool operator==(const RegistryStep&, const RegistryStep&) = default;
};

enum class ScriptAction { Register, Unregister };

// The changes that register or unregister a script, in the script's order.
// False, with no steps, when the text is not a script of the form above.
bool PlanRegistration(std::string_view script, std::string_view modulePath, ScriptAction action,
                      std::vector<RegistryStep>* steps);

// The registration script (resource REGISTRY 101) of module, which may be
// loaded as data only: S_OK, or the failure of finding or loading it.
HRESULT LoadScript(HMODULE module, std::string* script);

// Makes the changes through the platform layer, stopping at the first that
// fails: 0 or its system error. Deleting a key that is not there succeeds.
int ApplyRegistration(const std::vector<RegistryStep>& steps);

// The module's registry entries and type library written (Register) or
// removed (Unregister): S_OK or the first failure, a registry error e as
// HRESULT_FROM_WIN32(e).
HRESULT RegisterServer();
HRESULT UnregisterServer();

}  // namespace vlauto
