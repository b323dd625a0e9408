// msi_registry: the Registry table of the installer package, as an IDT file,
// made from the library itself: the entries its registration script writes
// and the ones the system writes when it registers the library's type
// library. So the package registers exactly what DllRegisterServer
// registers, through its own tables, and removes it again on uninstall.
//
//   msi_registry DLL COMPONENT FILE_ID FOLDER > Registry.idt
//
// The module path becomes [#FILE_ID]; FOLDER is the package's formatted
// text for the module's folder, without a final backslash (the type
// library's help folder). Every row belongs to COMPONENT.
#include <windows.h>
#include <oleauto.h>

#include <cstdio>
#include <set>
#include <string>
#include <vector>

#include "automation/registration.h"
#include "automation/text.h"
#include "platform/win32/raii_win.h"

namespace {

constexpr int kClassesRoot = 0;  // the Registry table's root for HKCR
// The proxies that type library registration names for interfaces.
constexpr char kAutomationProxy[] = "{00020424-0000-0000-C000-000000000046}";
constexpr char kDispatchProxy[] = "{00020420-0000-0000-C000-000000000046}";

// One row: a value (name empty for the default value), or with an empty
// value one of the key actions "+" (create) and "-" (delete the key whole
// on uninstall).
struct Row {
  std::string key;
  std::string name;
  std::string value;
};

// Stand for the installed module's path and folder in the rows until they
// are written as the package's references.
constexpr char kModuleMarker = '\x01';
constexpr char kFolderMarker = '\x02';

// A text for a Formatted column: brackets stand for themselves, a leading
// "#" is not a number's mark, and the markers become the references given.
// (Braces around text without a reference, as in an identity, are kept.)
std::string Formatted(const std::string& text, const std::string& modulePath = {},
                      const std::string& folder = {}) {
  std::string out = text.rfind('#', 0) == 0 ? "#" : "";
  for (char c : text) {
    if (c == '[' || c == ']')
      out += std::string("[\\") + c + "]";
    else if (c == kModuleMarker)
      out += modulePath;
    else if (c == kFolderMarker)
      out += folder;
    else
      out += c;
  }
  return out;
}

std::string GuidText(const GUID& guid) {
  wchar_t text[40];
  StringFromGUID2(guid, text, 40);
  return vlauto::Narrow(text);
}

// The script's rows: every value it sets, every key it only creates, and
// every key it deletes whole on unregistration.
bool ScriptRows(const std::string& script, std::vector<Row>* rows) {
  const std::string marker(1, kModuleMarker);
  std::vector<vlauto::RegistryStep> install, uninstall;
  if (!vlauto::PlanRegistration(script, marker, vlauto::ScriptAction::Register, &install) ||
      !vlauto::PlanRegistration(script, marker, vlauto::ScriptAction::Unregister, &uninstall))
    return false;
  using Kind = vlauto::RegistryStep::Kind;
  std::set<std::string> keysWithValues;
  for (const auto& step : install)
    if (step.kind == Kind::SetValue) keysWithValues.insert(step.key);
  std::set<std::string> removed;
  for (const auto& step : uninstall)
    if (step.kind == Kind::DeleteTree) removed.insert(step.key);
  auto isRemoved = [&removed](const std::string& key) {
    for (const auto& top : removed)
      if (key == top || key.rfind(top + "\\", 0) == 0) return true;
    return false;
  };
  for (const auto& step : install) {
    if (step.kind == Kind::SetValue) rows->push_back({step.key, step.name, step.data});
    // A key with nothing in it is created; one that unregistration leaves
    // (CLSID itself) is only entered, so it gets no row.
    if (step.kind == Kind::CreateKey && !keysWithValues.count(step.key) && isRemoved(step.key))
      rows->push_back({step.key, "+", ""});
  }
  for (const auto& key : removed) rows->push_back({key, "-", ""});
  return true;
}

// The entries that registering the type library writes: the library's key
// and, for every interface that automation can marshal, its interface key
// naming the proxy the system uses for it.
bool TypeLibraryRows(const std::wstring& dllPath, std::vector<Row>* rows) {
  os::ComPtr<ITypeLib> library;
  if (FAILED(LoadTypeLibEx(dllPath.c_str(), REGKIND_NONE, library.put()))) return false;
  TLIBATTR* attributes = nullptr;
  if (FAILED(library->GetLibAttr(&attributes))) return false;
  const std::string libraryId = GuidText(attributes->guid);
  char version[16], lcid[16];
  std::snprintf(version, sizeof version, "%x.%x", attributes->wMajorVerNum,
                attributes->wMinorVerNum);
  std::snprintf(lcid, sizeof lcid, "%lx", static_cast<unsigned long>(attributes->lcid));
  const std::string flags = std::to_string(attributes->wLibFlags);
  library->ReleaseTLibAttr(attributes);

  BSTR doc = nullptr;
  library->GetDocumentation(-1, nullptr, &doc, nullptr, nullptr);
  os::UniqueBstr docString(doc);
  const std::string libraryKey = "TypeLib\\" + libraryId;
  const std::string versionKey = libraryKey + "\\" + version;
  rows->push_back({versionKey, "", vlauto::Narrow(docString.get())});
  rows->push_back({versionKey + "\\FLAGS", "", flags});
  rows->push_back({versionKey + "\\" + lcid + "\\win64", "", std::string(1, kModuleMarker)});
  rows->push_back({versionKey + "\\HELPDIR", "", std::string(1, kFolderMarker)});
  rows->push_back({libraryKey, "-", ""});

  for (UINT i = 0, count = library->GetTypeInfoCount(); i < count; ++i) {
    os::ComPtr<ITypeInfo> info;
    if (FAILED(library->GetTypeInfo(i, info.put()))) return false;
    TYPEATTR* type = nullptr;
    if (FAILED(info->GetTypeAttr(&type))) return false;
    // Dispatch interfaces go through the dispatch proxy, dual and
    // automation-compatible ones through the type library's marshaller;
    // others are not registered.
    const bool dual = type->wTypeFlags & TYPEFLAG_FDUAL;
    const char* proxy = type->typekind == TKIND_DISPATCH && !dual ? kDispatchProxy
                        : (type->typekind == TKIND_DISPATCH ||
                           (type->typekind == TKIND_INTERFACE &&
                            (type->wTypeFlags & TYPEFLAG_FOLEAUTOMATION)))
                            ? kAutomationProxy
                            : nullptr;
    const GUID interfaceId = type->guid;
    info->ReleaseTypeAttr(type);
    if (!proxy) continue;
    BSTR name = nullptr;
    info->GetDocumentation(MEMBERID_NIL, &name, nullptr, nullptr, nullptr);
    os::UniqueBstr interfaceName(name);
    const std::string key = "Interface\\" + GuidText(interfaceId);
    rows->push_back({key, "", vlauto::Narrow(interfaceName.get())});
    rows->push_back({key + "\\ProxyStubClsid", "", proxy});
    rows->push_back({key + "\\ProxyStubClsid32", "", proxy});
    rows->push_back({key + "\\TypeLib", "", libraryId});
    rows->push_back({key + "\\TypeLib", "Version", version});
    rows->push_back({key, "-", ""});
  }
  return true;
}

}  // namespace

int wmain(int argc, wchar_t** argv) {
  if (argc != 5) {
    std::fprintf(stderr, "usage: msi_registry DLL COMPONENT FILE_ID FOLDER\n");
    return 2;
  }
  const std::wstring dllPath = argv[1];
  const std::string component = vlauto::Narrow(argv[2]);
  const std::string modulePath = "[#" + vlauto::Narrow(argv[3]) + "]";
  const std::string folder = vlauto::Narrow(argv[4]);

  os::UniqueModule module(LoadLibraryExW(dllPath.c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
  std::string script;
  std::vector<Row> rows;
  if (!module || FAILED(vlauto::LoadScript(module.get(), &script))) {
    std::fprintf(stderr, "msi_registry: no registration script in %ls\n", dllPath.c_str());
    return 1;
  }
  if (!ScriptRows(script, &rows) || !TypeLibraryRows(dllPath, &rows)) {
    std::fprintf(stderr, "msi_registry: cannot read the registration of %ls\n", dllPath.c_str());
    return 1;
  }

  std::printf("Registry\tRoot\tKey\tName\tValue\tComponent_\n");
  std::printf("s72\ti2\tl255\tL255\tL0\ts72\n");
  std::printf("Registry\tRegistry\n");
  int number = 0;
  for (const Row& row : rows) {
    // The key actions "+" and "-" are the Name column's own words.
    const std::string name = row.value.empty() ? row.name : Formatted(row.name);
    std::printf("reg%03d\t%d\t%s\t%s\t%s\t%s\n", ++number, kClassesRoot,
                Formatted(row.key).c_str(), name.c_str(),
                Formatted(row.value, modulePath, folder).c_str(), component.c_str());
  }
  return 0;
}
