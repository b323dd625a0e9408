// Whether the server runs (its lock file held open by another process) and
// starting its system manager from the set-up file.
#include <gtest/gtest.h>

#include <cstdio>

#ifdef _WIN32
#include <windows.h>
#endif

#include "api/process_state.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/test_support.h"
#include "tests/support/user_fixture.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Lines = std::vector<std::string>;

const std::string kEntry = "VlxCheckServer", kDown = "...VlxCheckServer - return 0xF70C";

class ServerTest : public vltest::JsmithTest {
 protected:
  void TearDown() override {
    vl::Process().checkServerDisabled = 0;
    JsmithTest::TearDown();
  }
  void WriteSetup(const std::string& text) const {
    vltest::WriteFile(tree_.System() + "V-DB\\SETUP.INI", text);
  }

  std::string Field() const { return vltest::SessionField(handle_); }
  const std::string n_ = "S=00000000  ";
};

using ServerCheckTest = ServerTest;
using StartServerTest = ServerTest;

TEST_F(ServerCheckTest, AMissingOrStaleLockFileMeansNotRunningUnlessTheCheckIsOff) {
  const VLHANDLE closed = vltest::LogOn("");
  VlxAPIClosedown(closed);
  vltest::TraceInto(scratch_);
  EXPECT_EQ(VlxCheckServer(handle_), VL_E_SERVER_NOT_RUNNING);
  vltest::WriteFile(tree_.Request() + "VELOMAR.LOK", "");  // left by a server that crashed
  EXPECT_EQ(VlxCheckServer(0), VL_E_SERVER_NOT_RUNNING);
  EXPECT_EQ(VlxCheckServer(closed), VL_E_NOT_INIT);
  ASSERT_EQ(VlxEscape(0, "DISABLECHECKSERVER", 7), VL_OK);
  EXPECT_EQ(VlxCheckServer(0), VL_OK);
  EXPECT_EQ(VlxCheckServer(closed), VL_OK) << "the switch is read before the handle";
  ASSERT_EQ(VlxEscape(0, "DISABLECHECKSERVER", 0), VL_OK);
  EXPECT_EQ(VlxCheckServer(0), VL_E_SERVER_NOT_RUNNING);
  EXPECT_TRUE(Reported::Texts().empty());
  const std::string s = Field(), n = n_, off = "VlxCheckServer - return OK (no check)";
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (Lines{s + kEntry, s + kDown, n + kEntry, n + kDown, n + kEntry, n + kEntry, n + off,
                   n + kEntry, n + off, n + kEntry, n + kDown}));
}

TEST_F(ServerCheckTest, ALockFileHeldByAnotherProcessMeansRunning) {
#ifndef _WIN32
  GTEST_SKIP() << "sharing modes are not enforced natively; the stand-in switches the check off";
#else
  vltest::TraceInto(scratch_);
  vltest::ServerStandIn server(tree_.Request());
  EXPECT_EQ(VlxCheckServer(handle_), VL_OK);
  EXPECT_EQ(VlxCheckServer(0), VL_OK) << "handle 0 reads the areas from the configuration";
  server.Stop();
  EXPECT_EQ(VlxCheckServer(handle_), VL_E_SERVER_NOT_RUNNING);
  const std::string s = Field(), n = n_, up = "...VlxCheckServer - return OK";
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (Lines{s + kEntry, s + up, n + kEntry, n + up, s + kEntry, s + kDown}));
#endif
}

TEST_F(StartServerTest, SetupProblemsAreReportedWithTheirTexts) {
  {
    vltest::ServerStandIn server(tree_.Request());
    EXPECT_EQ(VlxStartServer(handle_, 0, nullptr), VL_E_SERVER_RUNNING);
    EXPECT_TRUE(Reported::Texts().empty());
  }

  const std::string p80 = "[" + std::string(78, 'P') + "]", p81 = "[" + std::string(79, 'P') + "]";
  const std::string p281 = "[" + std::string(279, 'P') + "]";
  // The longest program path the server area leaves room for.
  const std::string path268(268 - tree_.Server().size(), 'X');
  // The "Sysman:" line of [SERVER] is taken, not that of an earlier paragraph.
  const std::string line = "[OTHER]\r\nSysman: S\r\n\r\n[SERVER]\r\nSysman: SYSMAN ";
  const std::string sysman = "\r\nSysman: SYSMAN SYSMAN.EXE\r\n";
  const std::string invalid = "Server paragraph name invalid";
  const std::string started = "Windows error 0x";  // past the checks; no such program
  const VLRESULT kParam = VL_E_INVALID_PARAM, kIni = VL_E_SERVER_INI_FILE_ERROR,
                 kStarted = VL_E_NO_START_SYSMAN;
  // setup: the text of SETUP.INI; empty: there is none.
  struct Case { std::string setup; const char* paragraph; VLRESULT code; std::string report; };
  const Case cases[] = {
      {"", "SERVER", kParam, invalid},      {"", "[SERVER", kParam, invalid},
      {"", p281.c_str(), kParam, invalid},
      {"", nullptr, kIni, "Unable to open file " + tree_.System() + "V-DB\\SETUP.INI"},
      {"[OTHER]\r\nSysman: S X.EXE\r\n", "", kIni, "Section [SERVER] not found in file SETUP.INI"},
      {"[SERVER]\r\nProgram: X.EXE\r\n\r\n[NEXT]\r\nSysman: S X.EXE\r\n", nullptr, kIni,
       "[SERVER] Sysman: line not found in file SETUP.INI"},
      {"[BACKUP]\r\nSysman: SYSMAN\r\n", "[backup]", kIni,
       "[BACKUP] Sysman: line invalid in file SETUP.INI"},
      {line + "\"SYSMAN.EXE " + std::string(72, 'x') + "\"\r\n", nullptr, kIni,
       "Invalid argument string for program SYSMAN"},
      {line + "\"SYSMAN.EXE " + std::string(71, 'x') + "\"\r\n", nullptr, kStarted, started},
      {p81 + sysman, p81.c_str(), kIni, "Paragraph name too long for program SYSMAN"},
      {p80 + sysman, p80.c_str(), kStarted, started},
      {line + path268 + "X\r\n", nullptr, kIni, "Invalid path for program SYSMAN"},
      {line + path268 + "\r\n", nullptr, kStarted, started},
      // Absolute: the server area is not put in front.
      {line + "\\" + path268 + "\r\n", nullptr, kStarted, started},
  };
  for (const auto& c : cases) {
    vltest::RemoveTree(tree_.System() + "V-DB\\SETUP.INI");
    if (!c.setup.empty()) WriteSetup(c.setup);
    Reported::Clear();
    EXPECT_EQ(VlxStartServer(handle_, 0, c.paragraph), c.code) << c.paragraph;
    const std::string text = Reported::Texts().size() == 1 ? Reported::Last() : "";
    EXPECT_EQ(c.code == kStarted ? text.substr(0, started.size()) : text, c.report) << text;
  }
}

TEST_F(StartServerTest, TheSystemManagerGetsTheParagraphOnItsCommandLineOrGivesTheSystemError) {
#ifndef _WIN32
  GTEST_SKIP() << "the native build cannot start processes";
#else
  WriteSetup("[SERVER]\r\nSysman: SYSMAN NOSUCH.EXE\r\n");
  EXPECT_EQ(VlxStartServer(handle_, 0, nullptr), VL_E_NO_START_SYSMAN);
  EXPECT_EQ(Reported::Texts(),
            Lines{"Windows error 0x2 running program '" + tree_.Server() + "NOSUCH.EXE'"});
  char self[MAX_PATH];
  const std::string program(self, GetModuleFileNameA(nullptr, self, sizeof self));
  const std::string recorder =
      program.substr(0, program.rfind('\\') + 1) + "record_command_line.exe";
  ASSERT_TRUE(vltest::FileExists(recorder)) << recorder;
  vltest::WriteFile(tree_.Server() + "SYSMAN.EXE", vltest::ReadFile(recorder));
  const struct { const char* sysman; const char* paragraph; const char* commandLine; } cases[] = {
      {"[SERVER]\r\nSysman: SYSMAN SYSMAN.EXE\r\n", nullptr, "  [SERVER]"},
      {"[BACKUP]\r\nSysman: \"SYS MAN\", \"SYSMAN.EXE -a -b\"\r\n", "[backup]", "  -a -b [BACKUP]"},
  };
  const std::string recorded = tree_.Server() + "COMMAND.TXT";
  for (const auto& c : cases) {
    vltest::RemoveTree(recorded);
    WriteSetup(std::string("[OTHER]\r\nSysman: X Y.EXE\r\n\r\n") + c.sysman);
    ASSERT_EQ(VlxStartServer(handle_, 0, c.paragraph), VL_OK) << Reported::Last();
    std::string commandLine;
    for (int wait = 0; wait < 200 && commandLine.empty(); ++wait) {
      Sleep(50);
      commandLine = vltest::ReadFile(recorded);
    }
    EXPECT_EQ(commandLine, c.commandLine);
  }
#endif
}

}  // namespace
