// The server configuration reader: the areas of VELOMAR.INI, the failover,
// workstation and option items of SETUP.INI, the log writer it sets up and
// the problems it logs.
#include "lib/server_config.h"

#include <gtest/gtest.h>

#include <cctype>
#include <cstdio>
#include <map>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "api/internal_codes.h"
#include "lib/log_writer.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"

namespace {

using Lines = std::vector<std::string>;
using Items = std::map<std::string, std::string>;
FILE* const kJunk = reinterpret_cast<FILE*>(0x5A5A);
const os::LocalTime kClock{2026, 11, 23, 10, 20, 30, 0};
const char kHead[] = "26-11-23 10:20:30             - (S) - ";
const char kMinimal[] =
    "[SERVER]\nSystemArea: ~SHARE\\SYSTEM\\\nRequestArea: ~REQ\nUserArea: ~U\\%NAME%\n";

// Every item of the configuration and of the log writer it sets up.
Items ItemsOf(const vl::ServerConfig& c) {
  auto n = [](auto v) { return std::to_string(v); };
  const vl::LogState& log = vl::Log();
  return {{"areas", c.allUserArea + "|" + c.requestArea + "|" + c.serverArea + "|" + c.systemArea +
                        "|" + c.mailArea + " " + n(c.mailAreaGiven) + " " + n(c.manualOdbc)},
          {"computer", c.computerName}, {"devices", c.devicesParagraph},
          {"primary", c.primaryServer + " " + c.primaryDevices},
          {"backup", c.backupServer + " " + c.backupDevices},
          {"timeouts", n(c.failoverTimeout) + " " + n(c.startupTimeout)},
          {"enrol", n(c.autoEnrolClient)}, {"logFile", c.logFile + "|" + log.fileName},
          {"keepDays", n(c.logKeepDays) + " " + n(log.messageLogSwitch)},
          {"logLevel", n(c.logLevel) + " " + n(log.secondLevel)},
          {"language", n(c.language) + " " + c.languageCode},
          {"options", n(c.serverProgSleepMs) + " " + n(c.serviceStartTimeout) + " " +
                          n(c.epsMaxCheckChars) + " " + n(c.epsMaxCheckEscs) + " " +
                          n(c.detectEpson)}};
}

uint16_t SystemLanguage() {
  const std::map<int, uint16_t> ids = {{10, 1034}, {7, 1031}, {12, 1036}, {16, 1040}};
  auto it = ids.find(os::SystemPrimaryLanguage());
  return it == ids.end() ? 1033 : it->second;
}

class ServerConfig : public ::testing::Test {
 protected:
  void SetUp() override {
    Reset();
    os::fault::RecordEventLog(&events_);
    vltest::MakeDirectories(system_ + "V-DB");
  }
  void TearDown() override {
    os::fault::RecordEventLog(nullptr);
    os::fault::Clear();
    vl::Log() = vl::LogState{};
    vl::ServerSettings() = vl::ServerConfig{};
  }
  // Fresh process-wide state, a fresh log capture and the clock pinned.
  void Reset() {
    vl::ServerSettings() = vl::ServerConfig{};
    vl::Log() = vl::LogState{};
    log_.reset(std::tmpfile());
    vl::Log().stream = log_.get();
    os::fault::PinClock(kClock);
    events_.clear();
  }
  // '~' stands for the scratch directory, '@' for this computer in lower
  // case; lines end in CR LF.
  std::string Expand(const std::string& text) const {
    std::string out;
    for (char c : text)
      out += c == '~'    ? scratch_.Dir()
             : c == '@'  ? Lower(os::ComputerName())
             : c == '\n' ? "\r\n"
                         : std::string(1, c);
    return out;
  }
  static std::string Lower(std::string text) {
    for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
  }
  // Writes VELOMAR.INI and SETUP.INI (a null text removes the file) and reads them.
  int Read(const char* ini, const char* setup, FILE** handed = nullptr) {
    for (auto [text, path] : {std::pair{ini, Ini()}, std::pair{setup, system_ + "V-DB\\SETUP.INI"}})
      text ? vltest::WriteFile(path, Expand(text)) : vltest::RemoveTree(path);
    return vl::ReadServerConfigFrom(Ini(), handed);
  }
  std::string Ini() const { return scratch_.Path("VELOMAR.INI"); }
  // The lines logged, each without the pinned head when it has it.
  Lines Logged() const {
    Lines lines;
    std::istringstream text(vltest::Contents(log_.get()));
    for (std::string line; std::getline(text, line);)
      lines.push_back(line.rfind(kHead, 0) == 0 ? line.substr(sizeof kHead - 1) : line);
    return lines;
  }

  vltest::Scratch scratch_;
  std::string system_ = scratch_.Path("SHARE\\SYSTEM\\");
  os::UniqueFile log_;
  Lines events_;
};

TEST_F(ServerConfig, AreasAreReadDerivedAndCheckedWithEveryProblemLogged) {
  const std::string kMissing = " line missing from VELOMAR.INI file";
  // ini: null for no file; areas: all-user|request|server|system|mail given odbc.
  const struct { const char* ini; int code; const char* areas; Lines logged; } cases[] = {
      {"[WORKSTATION]\nSystemArea:\nSystemArea=~SHARE\\SYSTEM\nRequestArea=R\nAllUserArea=A\n"
       "UserArea: X\\Y\nServerArea=S\nMailArea=M\nManualODBC: yes\n",
       0, "A\\|R\\|S\\|~SHARE\\SYSTEM\\|M\\ 1 1", {}},
      {"[SERVER]\nSystemArea: \\\\HOST\\SHARE\\SYSTEM\nRequestArea: R\nUserArea: %NAME%\n",
       0xF026,
       "%NAME%|R\\|\\\\HOST\\SHARE\\server\\|\\\\HOST\\SHARE\\SYSTEM\\|\\\\HOST\\SHARE\\MAIL\\ 0 0",
       {"ERROR - Unable to open file \\\\HOST\\SHARE\\SYSTEM\\V-DB\\SETUP.INI"}},
      {"[SERVER]\nSystemArea: SYS\nRequestArea: R\nAllUserArea: A\n", 0xF025,
       "A\\|R\\||SYS\\|MAIL\\ 0 0", {"ServerArea" + kMissing}},
      {"[SERVER]\nServerArea: \\SRV\\\n", 0xF025, "||\\SRV\\||\\MAIL\\ 0 0",
       {"SystemArea" + kMissing, "AllUserArea" + kMissing, "RequestArea" + kMissing}},
      {"[SERVERS]\nSystemArea: S\n[OTHER]\n", 0xF019, "|||| 0 0",
       {"ERROR - [SERVER] Paragraph missing from VELOMAR.INI file"}},
      {nullptr, 0xF00C, "|||| 0 0", {"ERROR - Can't open file " + Ini()}},
  };
  for (const auto& c : cases) {
    Reset();
    FILE* setup = kJunk;
    const std::string what = c.ini ? c.ini : "no file";
    EXPECT_EQ(Read(c.ini, "", &setup), c.code) << what;
    EXPECT_EQ(setup != nullptr, c.code == 0) << what;
    if (setup) std::fclose(setup);
    EXPECT_EQ(ItemsOf(vl::ServerSettings())["areas"], Expand(c.areas)) << what;
    EXPECT_EQ(Logged(), c.logged) << what;
  }
}

TEST_F(ServerConfig, SetupFileItemsTakeTheirValuesDefaultsAndLimits) {
  const std::string kLogDir = "~SHARE\\SYSTEM\\V-DB\\";
  const struct { const char* setup; Items want; } cases[] = {
      // An empty file: every item (the areas are those of kMinimal) at its default.
      {"", {{"areas", "~U\\|~REQ\\|~SHARE\\server\\|~SHARE\\SYSTEM\\|~SHARE\\MAIL\\ 0 0"},
            {"computer", os::ComputerName()}, {"devices", "[DEVICES]"}, {"primary", " [DEVICES]"},
            {"backup", " [DEVICES-BACKUP]"}, {"timeouts", "2 5"}, {"enrol", "0"},
            {"logFile", kLogDir + "SERVER.LOG|" + kLogDir + "SERVER.LOG"}, {"keepDays", "0 0"},
            {"logLevel", "3 3"}, {"language", std::to_string(SystemLanguage()) + " "},
            {"options", "100 600 1000 200 1"}}},
      {"[FAILOVER]\nPrimaryServer: @ [DEV-A]\nTimeout: 45\nStartupTimeout: 4\n",
       {{"primary", "@ [DEV-A]"}, {"devices", "[DEV-A]"}, {"timeouts", "2 5"}}},
      {"[FAILOVER]\nPrimaryServer: @\nBackupServer: @\nTimeout: 30\nStartupTimeout: 20\n",
       {{"primary", "@ [DEVICES]"}, {"backup", "@ [DEVICES-BACKUP]"},
        {"devices", "[DEVICES-BACKUP]"}, {"timeouts", "30 20"}}},
      {"[FAILOVER]\nPrimaryServer: OTHER [DEV-A]\nBackupServer: ELSE [DEV-B]\nTimeout: 0\n"
       "StartupTimeout: 21\n",
       {{"backup", "ELSE [DEV-B]"}, {"devices", "[DEVICES]"}, {"timeouts", "2 5"}}},
      {"[WORKSTATION]\nAutoEnrolClient: yes\n", {{"enrol", "1"}}},
      {"[WORKSTATION]\nAutoEnrolClient:\n[OPTIONS]\nAutoEnrolClient: 1\n", {{"enrol", "0"}}},
      {"[OPTIONS]\nLanguage: 2057\n", {{"language", "1033 ENG"}}},
      {"[OPTIONS]\nLanguage: 1034\n", {{"language", "1034 ESP"}}},
      {"[OPTIONS]\nLogFile: D:\\LOGS\\SRV.LOG\n",
       {{"logFile", "D:\\LOGS\\SRV.LOG|D:\\LOGS\\SRV.LOG"}}},
      {"[OPTIONS]\nLogFile: SRV.LOG\n", {{"logFile", kLogDir + "SRV.LOG|" + kLogDir + "SRV.LOG"}}},
      {"[OPTIONS]\nLogKeepDays: 7\nLogLevel: 5\n", {{"keepDays", "7 7"}, {"logLevel", "5 5"}}},
      {"[OPTIONS]\nLogKeepDays:7\nLogLevel:5\n", {{"keepDays", "0 0"}, {"logLevel", "3 3"}}},
      {"[OPTIONS]\nServerProgSleepMS: 250\nServiceStartTimeout: 90\nEPSMaxCheckChars: 5000\n"
       "EPSMaxCheckEscs: 12\nDetectEpson: no\n",
       {{"options", "250 90 5000 12 0"}}},
  };
  for (const auto& c : cases) {
    Reset();
    ASSERT_EQ(Read(kMinimal, c.setup), 0) << c.setup;
    Items items = ItemsOf(vl::ServerSettings());
    for (const auto& [name, value] : c.want) EXPECT_EQ(items[name], Expand(value)) << c.setup;
  }
  // Without a Language line the code is left as it was. The setup file is handed over rewound.
  ASSERT_EQ(Read(kMinimal, "[OPTIONS]\nLanguage: 1034\n"), 0);
  FILE* handed = kJunk;
  ASSERT_EQ(Read(kMinimal, "[OPTIONS]\n", &handed), 0);
  ASSERT_NE(handed, nullptr);
  os::UniqueFile setup(handed);
  EXPECT_EQ(std::ftell(handed), 0);
  EXPECT_EQ(vltest::Contents(handed), Expand("[OPTIONS]\n"));
  EXPECT_EQ(ItemsOf(vl::ServerSettings())["language"], std::to_string(SystemLanguage()) + " ESP");
}

TEST_F(ServerConfig, ALogFilePathOf269CharactersIsRefusedAndLogged) {
  const size_t room = 268 - system_.size() - 5;  // the longest name that still fits
  for (size_t length : {room, room + 1}) {
    Reset();
    const std::string name(length, 'L');
    ASSERT_EQ(Read(kMinimal, ("[OPTIONS]\nLogFile: " + name + "\n").c_str()), 0);
    const std::string path = system_ + "V-DB\\" + name;
    const bool fits = length == room;
    EXPECT_EQ(vl::ServerSettings().logFile, fits ? path : "");
    const std::string text = "Invalid log file name '" + path + "'";
    EXPECT_EQ(Logged(), fits ? Lines{} : Lines{text.substr(0, 199 - (sizeof kHead - 1))});
    const Lines events = {"open Velomar Server", "write error 0xD803 " + text.substr(0, 199),
                          "close"};
    EXPECT_EQ(events_, fits ? Lines{} : events);
  }
}

TEST_F(ServerConfig, NoConfigurationFileFoundIsLogged) {
  os::fault::Inject(os::fault::Op::Any, 1, os::kFileNotFound, true);  // no registry, no folder
  os::fault::PinClock(kClock);
  FILE* setup = kJunk;
  EXPECT_EQ(vl::ReadServerConfig(&setup), vl::kInternalNotFound);
  EXPECT_EQ(setup, nullptr);
  EXPECT_EQ(Logged(), Lines{"ERROR - File VELOMAR.INI not found"});
}

}  // namespace
