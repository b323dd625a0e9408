// Finding and reading the configuration file. These tests change the
// machine's configuration (the per-user client file, the registry, the
// Windows directory) and so run one at a time.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

#include "api/config.h"
#include "api/diagnostics.h"
#include "api/ini_locator.h"
#include "api/text.h"
#include "api/process_state.h"
#include "api/vlapi_internal.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

using vltest::FaxTree;
using vltest::Reported;
using vltest::Scratch;

const char kServerKey[] = "SOFTWARE\\Ornavex\\Velomar Server";
const char kClientKey[] = "SOFTWARE\\Ornavex\\Velomar";

void SetEnvironment(const char* name, const std::string& value) {
#ifdef _WIN32
  SetEnvironmentVariableA(name, value.c_str());
#else
  setenv(name, value.c_str(), 1);
#endif
}

#ifdef _WIN32
void SetMachineValue(const char* key, const char* value, const std::string& data) {
  HKEY opened = nullptr;
  ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, key, 0, nullptr, 0, KEY_WRITE, nullptr, &opened,
                            nullptr),
            ERROR_SUCCESS);
  RegSetValueExA(opened, value, 0, REG_SZ, reinterpret_cast<const BYTE*>(data.c_str()),
                 static_cast<DWORD>(data.size() + 1));
  RegCloseKey(opened);
}

void DeleteMachineValue(const char* key, const char* value) {
  HKEY opened = nullptr;
  if (RegOpenKeyExA(HKEY_LOCAL_MACHINE, key, 0, KEY_WRITE, &opened) != ERROR_SUCCESS) return;
  RegDeleteValueA(opened, value);
  RegCloseKey(opened);
}
#endif

class ConfigDiscovery : public ::testing::Test {
 protected:
  void SetUp() override {
#ifndef _WIN32
    SetEnvironment("VLAPI_APPDATA", scratch_.Path("APPDATA\\"));
    SetEnvironment("VLAPI_WINDIR", scratch_.Path("WINDOWS\\"));
    vltest::MakeDirectories(scratch_.Path("WINDOWS"));
#endif
    std::string folder;
    ASSERT_EQ(os::AppDataFolder(&folder), os::kOk);
    clientFile_ = folder + "Ornavex\\Velomar Client\\VLCLIENT.INI";
    ASSERT_EQ(os::WindowsDirectory(&windowsFile_), os::kOk);
    windowsFile_ += "VELOMAR.INI";
    CleanMachine();
    Reported::Clear();
  }
  void TearDown() override {
    os::fault::Clear();
    CleanMachine();
  }
  void CleanMachine() {
    vltest::RemoveTree(clientFile_);
    vltest::RemoveTree(windowsFile_);
#ifdef _WIN32
    DeleteMachineValue(kServerKey, "VelomarIniPath");
    DeleteMachineValue(kClientKey, "VelomarClientIniPath");
#endif
  }
  void WriteClientFile(const std::string& text) {
    vltest::MakeDirectories(clientFile_.substr(0, clientFile_.find_last_of('\\')));
    vltest::WriteFile(clientFile_, text);
  }
  VLRESULT Init(const char* user = nullptr) {
    handle_ = 0;
    return VlxAPIInit(&handle_, user, 0, &Reported::Callback);
  }
  std::string Area(VLRESULT(VLAPI_CALL* get)(VLHANDLE, char*, int16_t)) {
    char text[600] = {};
    EXPECT_EQ(get(handle_, text, 500), VL_OK);
    return text;
  }

  Scratch scratch_;
  FaxTree tree_{scratch_};
  std::string clientFile_;
  std::string windowsFile_;
  VLHANDLE handle_ = 0;
};

TEST_F(ConfigDiscovery, ClientFileInTheApplicationDataFolderNamesTheAreas) {
  tree_.AddUser("JSMITH");
  WriteClientFile(tree_.ConfigText());
  ASSERT_EQ(Init("JSMITH"), VL_OK) << Reported::Last();
  EXPECT_EQ(Area(&VlxGetUserArea), tree_.Users() + "JSMITH\\");
  EXPECT_EQ(Area(&VlxGetSystemArea), tree_.System());
  EXPECT_EQ(Area(&VlxGetRequestArea), tree_.Request() + "\\");
  EXPECT_EQ(Area(&VlxGetServerArea), tree_.Server() + "\\");
  EXPECT_TRUE(Reported::Texts().empty());
  VlxAPIClosedown(handle_);
}

TEST_F(ConfigDiscovery, AreaKeywordForms) {
  const std::string users = tree_.Users(), system = tree_.System(), request = tree_.Request();
  const std::string noSlash = users.substr(0, users.size() - 1);
  const struct {
    std::string text;
    std::string usersArea;
    std::string systemArea;
  } cases[] = {
      // The equals form, and a backslash added to a value without one.
      {"[SERVER]\r\nAllUserArea= " + noSlash + "\r\nRequestArea= " + request +
           "\r\nSystemArea=" + system + "\r\n",
       users, system},
      // "%NAME%" and what follows it are cut from UserArea.
      {"[WORKSTATION]\r\nUserArea: " + users + "%NAME%\\\r\nRequestArea: " + request +
           "\r\nSystemArea: " + system + "\r\n",
       users, system},
      // An empty AllUserArea lets UserArea decide; a set one wins.
      {"[WORKSTATION]\r\nAllUserArea:\r\nUserArea: " + users + "\r\nRequestArea: " + request +
           "\r\nSystemArea: " + system + "\r\n",
       users, system},
      {"[WORKSTATION]\r\nUserArea: " + system + "\r\nAllUserArea: " + users +
           "\r\nRequestArea: " + request + "\r\nSystemArea: " + system + "\r\n",
       users, system},
      // [SERVER] is read in preference to [WORKSTATION].
      {"[WORKSTATION]\r\nAllUserArea: X\\\r\nRequestArea: X\\\r\nSystemArea: X\\\r\n\r\n" +
           tree_.ConfigText("[SERVER]"),
       users, system},
      // A value longer than 255 characters is cut to 255, then given a backslash.
      {"[SERVER]\r\nAllUserArea: " + users + "\r\nRequestArea: " + request +
           "\r\nSystemArea: " + std::string(270, 'S') + "\r\n",
       users, std::string(255, 'S') + "\\"},
  };
  for (const auto& c : cases) {
    WriteClientFile(c.text);
    ASSERT_EQ(Init(), VL_OK) << c.text << Reported::Last();
    EXPECT_EQ(Area(&VlxGetUsersArea), c.usersArea + "\\") << c.text;
    EXPECT_EQ(Area(&VlxGetSystemArea), c.systemArea) << c.text;
    VlxAPIClosedown(handle_);
  }
}

TEST_F(ConfigDiscovery, MissingParagraphsAndLinesAreReported) {
  WriteClientFile("[API]\r\nTrace: NO\r\n\r\n[OTHER]\r\nSystemArea: X\\\r\n");
  EXPECT_EQ(Init(), VL_E_INVALID_INI_FILE);
  EXPECT_EQ(Reported::Texts(), std::vector<std::string>{
                                   "[SERVER]/[WORKSTATION] Paragraph missing from file (" +
                                   clientFile_ + ")"});
  Reported::Clear();
  WriteClientFile("[WORKSTATION]\r\nServerArea: X\\\r\nUserArea:\r\n");
  EXPECT_EQ(Init(), VL_E_INVALID_INI_FILE);
  EXPECT_EQ(Reported::Texts(),
            (std::vector<std::string>{"SystemArea line missing from " + clientFile_ + " file",
                                      "AllUserArea line missing from " + clientFile_ + " file",
                                      "RequestArea line missing from " + clientFile_ + " file"}));
  EXPECT_EQ(handle_, 0u);
}

TEST_F(ConfigDiscovery, AMissingClientFileCannotBeOpened) {
  EXPECT_EQ(Init("JSMITH"), VL_E_INIT_FAIL);
  EXPECT_EQ(Reported::Texts(), std::vector<std::string>{"Cannot open file " + clientFile_});
}

TEST_F(ConfigDiscovery, WithoutApplicationDataTheWindowsDirectoryIsTried) {
  os::fault::Inject(os::fault::Op::AppDataFolder, 1, os::kFileNotFound, true);
  EXPECT_EQ(Init(), VL_E_INIT_FAIL);
  EXPECT_EQ(Reported::Texts(),
            std::vector<std::string>{"File VELOMAR.INI/VLCLIENT.INI not found in user profile, "
                                     "program files or windows directory."});
  Reported::Clear();
  vltest::WriteFile(windowsFile_, tree_.ConfigText("[SERVER]"));
  ASSERT_EQ(Init(), VL_OK);
  EXPECT_EQ(Reported::Texts(), std::vector<std::string>{
                                   "Attempting to use VELOMAR.INI from windows directory. This "
                                   "is a pre version 9 file."});
  EXPECT_EQ(Area(&VlxGetSystemArea), tree_.System());
  VlxAPIClosedown(handle_);
}

TEST_F(ConfigDiscovery, ApiSettingsAreReadOncePerProcess) {
  vltest::TraceInto(scratch_);
  vl::Process().traceSwitch = 0;
  WriteClientFile("[API]\r\nTrace: YES\r\nOverRideFrom: on\r\n\r\n" + tree_.ConfigText());
  ASSERT_EQ(Init(), VL_OK);
  EXPECT_TRUE(vl::Process().apiSettingsRead);
  EXPECT_EQ(vl::Process().traceSetting, 1);
  EXPECT_EQ(vl::Process().mailTraceSetting, 0);
  EXPECT_EQ(vl::Process().overrideFrom, 1);
  VlxAPIClosedown(handle_);

  WriteClientFile("[API]\r\nTrace: NO\r\n\r\n" + tree_.ConfigText());
  ASSERT_EQ(Init(), VL_OK);
  EXPECT_EQ(vl::Process().traceSetting, 1);  // not read again
  VlxAPIClosedown(handle_);

  auto lines = vltest::TraceLines(scratch_);
  ASSERT_GE(lines.size(), 2u);
  EXPECT_EQ(lines[0].substr(12), "API settings read from VELOMAR.INI");
  EXPECT_EQ(lines[1].substr(12), "VlxAPIInit - user '(none)'");
}

TEST_F(ConfigDiscovery, UserDirectoriesThatDoNotFitAreRefused) {
  const std::string area = scratch_.Dir() + std::string(250 - scratch_.Dir().size(), 'U') + "\\";
  WriteClientFile("[SERVER]\r\nAllUserArea: " + area + "\r\nRequestArea: " + tree_.Request() +
                  "\r\nSystemArea: " + tree_.System() + "\r\n");
  EXPECT_EQ(Init("JSMITH"), VL_E_PATH_NOT_FOUND);
  EXPECT_EQ(Reported::Last(), "User directory name too long: " + area + "JSMITH\\V-OUT\\");
}

TEST_F(ConfigDiscovery, ExplicitAreasReplaceTheFile) {
  tree_.AddUser("JSMITH");
  tree_.UseAsExplicitAreas();
  ASSERT_EQ(Init("JSMITH"), VL_OK) << Reported::Last();
  EXPECT_FALSE(vl::Process().apiSettingsRead);
  EXPECT_EQ(Area(&VlxGetUserArea), tree_.Users() + "JSMITH\\");
  VlxAPIClosedown(handle_);
}

TEST_F(ConfigDiscovery, SearchPathFindsTheServerFile) {
  std::string found;
  EXPECT_EQ(vl::SearchIniPath(&found), 0xF018);
  vltest::MakeDirectories(scratch_.Path("INIT"));
  vltest::WriteFile(scratch_.Path("INIT\\VELOMAR.INI"), "[SERVER]\r\n");
  SetEnvironment("VLAXINIT", scratch_.Path("INIT"));
  EXPECT_EQ(vl::SearchIniPath(&found), 0);
  EXPECT_EQ(found, scratch_.Path("INIT\\VELOMAR.INI"));
  vltest::WriteFile(windowsFile_, "[SERVER]\r\n");  // the Windows directory comes first
  EXPECT_EQ(vl::SearchIniPath(&found), 0);
  EXPECT_EQ(found, windowsFile_);
}

TEST_F(ConfigDiscovery, ServerNameComesFromTheSetupFile) {
  WriteClientFile(tree_.ConfigText());
  std::string name;
  EXPECT_EQ(vl::GetServerName(&name), 0xF00C);  // no SETUP.INI
  vltest::WriteFile(tree_.System() + "V-DB\\SETUP.INI",
                    "[SERVER]\r\nSysman: SYSMAN SYSMAN.EXE\r\n\r\n"
                    "[FAILOVER]\r\nPrimaryServer: FAXPRIME [DEVICES-A]\r\n");
  EXPECT_EQ(vl::GetServerName(&name), 0);
  EXPECT_EQ(name, "FAXPRIME");
  vltest::WriteFile(tree_.System() + "V-DB\\SETUP.INI", "[SERVER]\r\n");
  EXPECT_EQ(vl::GetServerName(&name), 0);
  EXPECT_EQ(name, os::ComputerName());
  WriteClientFile("[SERVER]\r\nSystemArea: X\\\r\n");
  EXPECT_EQ(vl::GetServerName(&name), 0xF019);
}

TEST_F(ConfigDiscovery, RegistryNamesTheServerFile) {
#ifndef _WIN32
  GTEST_SKIP() << "the registered path is upper-cased, which a case-sensitive file system "
                  "does not resolve";
#else
  WriteClientFile("[WORKSTATION]\r\n");  // would fail if it were read
  vltest::MakeDirectories(scratch_.Path("SERVERINI"));
  vltest::WriteFile(scratch_.Path("SERVERINI\\VELOMAR.INI"), tree_.ConfigText("[SERVER]"));
  SetMachineValue(kServerKey, "VelomarIniPath", std::string(256, 'X'));  // too long to read
  std::string found;
  EXPECT_EQ(vl::FindServerIni(&found), 0xF018);
  SetMachineValue(kServerKey, "VelomarIniPath", scratch_.Path("serverini"));
  ASSERT_EQ(vl::FindServerIni(&found), 0);
  EXPECT_EQ(found, vl::UpperCase(scratch_.Path("SERVERINI\\VELOMAR.INI")));
  ASSERT_EQ(Init(), VL_OK) << Reported::Last();
  EXPECT_EQ(Area(&VlxGetSystemArea), tree_.System());
  VlxAPIClosedown(handle_);
#endif
}

TEST_F(ConfigDiscovery, MissingClientFileIsCopiedFromTheRegisteredPath) {
#ifndef _WIN32
  GTEST_SKIP() << "the registered path is upper-cased, which a case-sensitive file system "
                  "does not resolve";
#else
  vltest::MakeDirectories(scratch_.Path("CLIENTINI"));
  const std::string text = tree_.ConfigText();
  vltest::WriteFile(scratch_.Path("CLIENTINI\\VLCLIENT.INI"), text);
  SetMachineValue(kClientKey, "VelomarClientIniPath", scratch_.Path("CLIENTINI"));
  ASSERT_EQ(Init(), VL_OK) << Reported::Last();
  EXPECT_EQ(vltest::ReadFile(clientFile_), text);
  VlxAPIClosedown(handle_);
#endif
}

}  // namespace
