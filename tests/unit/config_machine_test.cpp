// Finding and reading the configuration file. These tests change the
// machine's configuration (the per-user client file, the registry, the
// Windows directory) and so run one at a time.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "api/ini_locator.h"
#include "api/process_state.h"
#include "api/text.h"
#include "api/vlapi_internal.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

#ifdef _WIN32
#include <windows.h>
#endif

namespace {

using vltest::Reported;
using Lines = std::vector<std::string>;

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
  ASSERT_EQ(RegSetKeyValueA(HKEY_LOCAL_MACHINE, key, value, REG_SZ, data.c_str(),
                            static_cast<DWORD>(data.size() + 1)),
            ERROR_SUCCESS);
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
    Close();
    os::fault::Clear();
    CleanMachine();
  }
  void CleanMachine() {
    vltest::RemoveTree(clientFile_);
    vltest::RemoveTree(windowsFile_);
#ifdef _WIN32
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kServerKey, "VelomarIniPath");
    RegDeleteKeyValueA(HKEY_LOCAL_MACHINE, kClientKey, "VelomarClientIniPath");
#endif
  }
  void WriteClientFile(const std::string& text) {
    vltest::MakeDirectories(clientFile_.substr(0, clientFile_.find_last_of('\\')));
    vltest::WriteFile(clientFile_, text);
  }
  void Close() {
    if (handle_) VlxAPIClosedown(handle_);
    handle_ = 0;
  }
  // Opens a session, closing the one before.
  VLRESULT Init(const char* user = nullptr) {
    Close();
    return VlxAPIInit(&handle_, user, 0, &Reported::Callback);
  }
  std::string Area(VLRESULT(VLAPI_CALL* get)(VLHANDLE, char*, int16_t)) {
    char text[600] = {};
    EXPECT_EQ(get(handle_, text, 500), VL_OK);
    return text;
  }

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  std::string clientFile_;
  std::string windowsFile_;
  VLHANDLE handle_ = 0;
};

// Explicit areas, when set, come first: every session test runs on them without a file.
TEST_F(ConfigDiscovery, TheClientFileInTheApplicationDataFolderNamesTheAreas) {
  tree_.AddUser("JSMITH");
  WriteClientFile(tree_.ConfigText());
  ASSERT_EQ(Init("JSMITH"), VL_OK) << Reported::Last();
  EXPECT_EQ((Lines{Area(&VlxGetUserArea), Area(&VlxGetSystemArea), Area(&VlxGetRequestArea),
                   Area(&VlxGetServerArea)}),
            (Lines{tree_.Users() + "JSMITH\\", tree_.System(), tree_.Request() + "\\",
                   tree_.Server() + "\\"}));
  EXPECT_TRUE(Reported::Texts().empty());
}

TEST_F(ConfigDiscovery, TheAreaKeywordsGiveTheAreasAndWhatIsMissingIsReported) {
  tree_.AddUser("JSMITH");
  const std::string users = tree_.Users(), system = tree_.System(), request = tree_.Request();
  const std::string rest = "\r\nRequestArea: " + request + "\r\nSystemArea: " + system + "\r\n";
  const std::string longUsers =
      scratch_.Dir() + std::string(250 - scratch_.Dir().size(), 'U') + "\\";
  const Lines areas = {users + "\\", system};
  // text: empty for no client file; want: the users and system areas, or what is reported.
  const struct { std::string text; VLRESULT code; Lines want; } cases[] = {
      {"", VL_E_INIT_FAIL, {"Cannot open file " + clientFile_}},
      {"[API]\r\nTrace: NO\r\n\r\n[OTHER]\r\nSystemArea: X\\\r\n", VL_E_INVALID_INI_FILE,
       {"[SERVER]/[WORKSTATION] Paragraph missing from file (" + clientFile_ + ")"}},
      {"[WORKSTATION]\r\nServerArea: X\\\r\nUserArea:\r\n", VL_E_INVALID_INI_FILE,
       {"SystemArea line missing from " + clientFile_ + " file",
        "AllUserArea line missing from " + clientFile_ + " file",
        "RequestArea line missing from " + clientFile_ + " file"}},
      // The equals form, and a backslash added to a value without one.
      {"[SERVER]\r\nAllUserArea= " + users.substr(0, users.size() - 1) + "\r\nRequestArea= " +
           request + "\r\nSystemArea=" + system + "\r\n",
       VL_OK, areas},
      // "%NAME%" and what follows it are cut from UserArea.
      {"[WORKSTATION]\r\nUserArea: " + users + "%NAME%\\" + rest, VL_OK, areas},
      // A set AllUserArea wins over UserArea.
      {"[WORKSTATION]\r\nUserArea: " + system + "\r\nAllUserArea: " + users + rest, VL_OK, areas},
      // [SERVER] is read in preference to [WORKSTATION].
      {"[WORKSTATION]\r\nAllUserArea: X\\\r\nRequestArea: X\\\r\nSystemArea: X\\\r\n\r\n" +
           tree_.ConfigText("[SERVER]"),
       VL_OK, areas},
      // A value longer than 255 characters is cut to 255, then given a backslash.
      {"[SERVER]\r\nAllUserArea: " + users + "\r\nRequestArea: " + request +
           "\r\nSystemArea: " + std::string(270, 'S') + "\r\n",
       VL_OK, {users + "\\", std::string(255, 'S') + "\\"}},
      {"[SERVER]\r\nAllUserArea: " + longUsers + rest, VL_E_PATH_NOT_FOUND,
       {"User directory name too long: " + longUsers + "JSMITH\\V-OUT\\"}},
  };
  for (const auto& c : cases) {
    if (!c.text.empty()) WriteClientFile(c.text);
    Reported::Clear();
    ASSERT_EQ(Init("JSMITH"), c.code) << c.text << Reported::Last();
    if (c.code == VL_OK) {
      EXPECT_EQ((Lines{Area(&VlxGetUsersArea), Area(&VlxGetSystemArea)}), c.want) << c.text;
    } else {
      EXPECT_EQ(Reported::Texts(), c.want) << c.text;
    }
  }
}

TEST_F(ConfigDiscovery, WithoutApplicationDataTheWindowsDirectoryIsTried) {
  os::fault::Inject(os::fault::Op::AppDataFolder, 1, os::kFileNotFound, true);
  EXPECT_EQ(Init(), VL_E_INIT_FAIL);
  vltest::WriteFile(windowsFile_, tree_.ConfigText("[SERVER]"));
  ASSERT_EQ(Init(), VL_OK);
  EXPECT_EQ(Reported::Texts(),
            (Lines{"File VELOMAR.INI/VLCLIENT.INI not found in user profile, program files or "
                   "windows directory.",
                   "Attempting to use VELOMAR.INI from windows directory. This is a pre version 9 "
                   "file."}));
  EXPECT_EQ(Area(&VlxGetSystemArea), tree_.System());
}

TEST_F(ConfigDiscovery, ApiSettingsAreReadOncePerProcess) {
  vltest::TraceInto(scratch_);
  vl::Process().traceSwitch = 0;
  WriteClientFile("[API]\r\nTrace: YES\r\nOverRideFrom: on\r\n\r\n" + tree_.ConfigText());
  ASSERT_EQ(Init(), VL_OK);
  const vl::ProcessState& p = vl::Process();
  EXPECT_EQ((std::vector<int>{p.traceSetting, p.mailTraceSetting, p.overrideFrom}),
            (std::vector<int>{1, 0, 1}));
  WriteClientFile("[API]\r\nTrace: NO\r\n\r\n" + tree_.ConfigText());
  ASSERT_EQ(Init(), VL_OK);
  EXPECT_EQ(p.traceSetting, 1) << "not read again";
  Lines lines = vltest::TraceLines(scratch_);
  lines.resize(2);
  for (std::string& line : lines) line.erase(0, 12);  // the session field
  EXPECT_EQ(lines, (Lines{"API settings read from VELOMAR.INI", "VlxAPIInit - user '(none)'"}));
}

TEST_F(ConfigDiscovery, SearchPathFindsTheServerFile) {
  std::string found;
  EXPECT_EQ(vl::SearchIniPath(&found), 0xF018);
  vltest::MakeDirectories(scratch_.Path("INIT"));
  vltest::WriteFile(scratch_.Path("INIT\\VELOMAR.INI"), "[SERVER]\r\n");
  SetEnvironment("VLAXINIT", scratch_.Path("INIT"));
  EXPECT_EQ(vl::SearchIniPath(&found), 0);
  EXPECT_EQ(found, scratch_.Path("INIT\\VELOMAR.INI"));
  vltest::WriteFile(windowsFile_, "[SERVER]\r\n");
  EXPECT_EQ(vl::SearchIniPath(&found), 0);
  EXPECT_EQ(found, windowsFile_) << "the Windows directory comes first";
}

TEST_F(ConfigDiscovery, ServerNameComesFromTheSetupFile) {
  WriteClientFile(tree_.ConfigText());
  std::string name;
  EXPECT_EQ(vl::GetServerName(&name), 0xF00C) << "no SETUP.INI";
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

TEST_F(ConfigDiscovery, TheRegistryNamesTheServerFileOrTheClientFileToCopy) {
#ifndef _WIN32
  GTEST_SKIP() << "the registered paths are upper-cased, which a case-sensitive file system "
                  "does not resolve";
#else
  // A missing client file is copied from the registered path.
  vltest::MakeDirectories(scratch_.Path("CLIENTINI"));
  vltest::WriteFile(scratch_.Path("CLIENTINI\\VLCLIENT.INI"), tree_.ConfigText());
  SetMachineValue(kClientKey, "VelomarClientIniPath", scratch_.Path("CLIENTINI"));
  ASSERT_EQ(Init(), VL_OK) << Reported::Last();
  EXPECT_EQ(vltest::ReadFile(clientFile_), tree_.ConfigText());
  // A registered server file comes before it.
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
#endif
}

}  // namespace
