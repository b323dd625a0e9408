// The registration script reader, the server's registry entries and the
// directory access check.
#include "automation/registration.h"

#include <windows.h>
#include <sddl.h>

#include <gtest/gtest.h>

#include "platform/fault.h"
#include "platform/os.h"
#include "platform/win32/raii_win.h"
#include "tests/support/test_support.h"

namespace {

using vlauto::RegistryStep;
using vlauto::ScriptAction;

// One line per step: "create K", "set K = D", "set K|N = D", "delete K".
std::string Describe(const std::vector<RegistryStep>& steps) {
  std::string text;
  for (const RegistryStep& step : steps) {
    switch (step.kind) {
      case RegistryStep::Kind::CreateKey: text += "create " + step.key; break;
      case RegistryStep::Kind::DeleteTree: text += "delete " + step.key; break;
      case RegistryStep::Kind::SetValue:
        text += "set " + step.key + (step.name.empty() ? "" : "|" + step.name) + " = " + step.data;
        break;
    }
    text += "\n";
  }
  return text;
}

struct ScriptCase {
  const char* script;
  const char* registering;  // null: the script is refused
  const char* unregistering;
};

const ScriptCase kScripts[] = {
    {"HKCR { A = s 'x' { B = s 'y' val N = s 'z' } }", "set A = x\nset A\\B = y\nset A|N = z\n",
     "delete A\n"},
    {"HKCR\r\n{\r\n\tNoRemove C\r\n\t{\r\n\t\tForceRemove K = s '%MODULE%'\r\n\t\t{\r\n\t\t\tE\r\n"
     "\t\t}\r\n\t}\r\n}\r\n",
     "create C\ndelete C\\K\nset C\\K = Z:\\m.dll\ncreate C\\K\\E\n", "delete C\\K\n"},
    {"HKEY_CLASSES_ROOT { 'a b' = s 'it''s' { {F8F6D7F6} { val 'T M' = s '' } } }",
     "set a b = it's\ncreate a b\\{F8F6D7F6}\nset a b\\{F8F6D7F6}|T M = \n", "delete a b\n"},
    {"HKCR { NoRemove A { NoRemove B { C } } } hkcr { D }",
     "create A\ncreate A\\B\ncreate A\\B\\C\ncreate D\n", "delete A\\B\\C\ndelete D\n"},
    {"", "", ""},
    {"HKLM { A }", nullptr, nullptr},
    {"HKCR { A = s 'x' ", nullptr, nullptr},
    {"HKCR { A = s 'x }", nullptr, nullptr},
    {"HKCR { A = d '1' }", nullptr, nullptr},
    {"HKCR { A = s x }", nullptr, nullptr},
    {"HKCR { val A = s 'x' }", nullptr, nullptr},
    {"HKCR { { } }", nullptr, nullptr},
};

TEST(RegistrationScript, ReadsEachScriptIntoItsSteps) {
  for (const ScriptCase& c : kScripts) {
    SCOPED_TRACE(c.script);
    for (ScriptAction action : {ScriptAction::Register, ScriptAction::Unregister}) {
      std::vector<RegistryStep> steps(1);  // junk, to be replaced
      const char* expected = action == ScriptAction::Register ? c.registering : c.unregistering;
      ASSERT_EQ(expected != nullptr,
                vlauto::PlanRegistration(c.script, "Z:\\m.dll", action, &steps));
      EXPECT_EQ(expected ? expected : "", Describe(steps));
    }
  }
}

std::string Value(const std::string& key, const char* name = "") {
  std::string data = "(missing)";
  os::RegistryReadString(os::Hive::ClassesRoot, key.c_str(), name, &data, 1024);
  return data;
}

bool KeyExists(const std::string& key) {
  return os::RegistryCheckKey(os::Hive::ClassesRoot, key.c_str()) == os::kOk;
}

const std::string kClsid = "{F8F6D7F6-F36C-11D4-B863-009027A6FEE2}", kClass = "CLSID\\" + kClsid;
const std::string kLibid = "{F1A35D64-ED5D-11D4-B860-009027A6FEE2}";
const std::string kLibKey = "TypeLib\\" + kLibid + "\\1.4";

// HKEY_CLASSES_ROOT of this process is a fresh key holding only CLSID, so
// that the round trip neither meets nor disturbs the registration of the
// built DLL that script tests use meanwhile.
class RegistrationServer : public testing::Test {
 protected:
  void SetUp() override {
    HKEY raw = nullptr;
    ASSERT_EQ(ERROR_SUCCESS, RegCreateKeyExA(HKEY_CURRENT_USER, standIn_.c_str(), 0, nullptr, 0,
                                             KEY_ALL_ACCESS, nullptr, &raw, nullptr));
    classes_.reset(raw);
    ASSERT_EQ(ERROR_SUCCESS, RegOverridePredefKey(HKEY_CLASSES_ROOT, classes_.get()));
    ASSERT_EQ(os::kOk, os::RegistryCreateKey(os::Hive::ClassesRoot, "CLSID"));
  }
  void TearDown() override {
    RegOverridePredefKey(HKEY_CLASSES_ROOT, nullptr);
    classes_.reset();
    RegDeleteTreeA(HKEY_CURRENT_USER, standIn_.c_str());
  }
  const std::string standIn_ = "Software\\VlapiTestClasses" + std::to_string(os::ProcessId());
  os::UniqueRegistryKey classes_;
};

TEST_F(RegistrationServer, WritesTheListedEntriesAndRemovesThemAgain) {
  const std::string entries[][3] = {  // key, value name, data
      {"Vlapi32.VlAPI.1", "", "VlAPI Class"}, {"Vlapi32.VlAPI.1\\CLSID", "", kClsid},
      {"Vlapi32.VlAPI", "", "VlAPI Class"}, {"Vlapi32.VlAPI\\CLSID", "", kClsid},
      {"Vlapi32.VlAPI\\CurVer", "", "Vlapi32.VlAPI.1"}, {kClass, "", "VlAPI Class"},
      {kClass + "\\ProgID", "", "Vlapi32.VlAPI.1"},
      {kClass + "\\VersionIndependentProgID", "", "Vlapi32.VlAPI"},
      {kClass + "\\InprocServer32", "", os::ExecutablePath()},
      {kClass + "\\InprocServer32", "ThreadingModel", "Apartment"},
      {kClass + "\\TypeLib", "", kLibid}};
  for (int round = 0; round < 2; ++round) {  // registering again replaces the entries
    ASSERT_EQ(S_OK, vlauto::RegisterServer());
    for (const auto& [key, name, data] : entries) EXPECT_EQ(data, Value(key, name.c_str())) << key;
  }
  EXPECT_TRUE(KeyExists(kClass + "\\Programmable"));
  EXPECT_TRUE(KeyExists(kLibKey));

  // That the class's keys go and CLSID stays is check_unregister.sh's.
  ASSERT_EQ(S_OK, vlauto::UnregisterServer());
  EXPECT_FALSE(KeyExists(kLibKey));
  EXPECT_EQ(S_OK, vlauto::UnregisterServer()) << "unregistering what is gone succeeds";
}

TEST_F(RegistrationServer, RegistryFailureIsItsWin32Result) {
  os::fault::Inject(os::fault::Op::RegistryWrite, 1, os::kAccessDenied);
  EXPECT_EQ(HRESULT_FROM_WIN32(ERROR_ACCESS_DENIED), vlauto::RegisterServer());
  os::fault::Clear();
  EXPECT_EQ(S_OK, vlauto::UnregisterServer());
}

// Masks as the objects ask: 0x120089 to read, 0x13019F to read, write and
// delete. Injected denials are followed by the objects that check access.
TEST(AccessCheck, GrantsWhatTheDirectoryAllowsAndMissingIsNotFound) {
  vltest::Scratch scratch;
  const std::string& dir = scratch.Dir();  // ends in a backslash
  EXPECT_EQ(os::kOk, os::CheckDirectoryAccess(dir.substr(0, dir.size() - 1).c_str(), 0x13019F));
  EXPECT_EQ(os::kFileNotFound, os::CheckDirectoryAccess(scratch.Path("MISSING").c_str(), 0x120089));
  PSECURITY_DESCRIPTOR readOnly = nullptr;  // protected: everyone may read and traverse
  ASSERT_TRUE(ConvertStringSecurityDescriptorToSecurityDescriptorA(
      "D:P(A;OICI;GRGX;;;WD)", SDDL_REVISION_1, &readOnly, nullptr));
  ASSERT_TRUE(SetFileSecurityA(dir.c_str(), DACL_SECURITY_INFORMATION, readOnly));
  LocalFree(readOnly);
  EXPECT_EQ(os::kOk, os::CheckDirectoryAccess(dir.c_str(), 0x120089));
  EXPECT_EQ(os::kAccessDenied, os::CheckDirectoryAccess(dir.c_str(), 0x13019F));
}

}  // namespace
