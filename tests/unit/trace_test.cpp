// The trace log and the error report: line format, switches, texts.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "api/diagnostics.h"
#include "api/process_state.h"
#include "platform/os.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::Reported;

std::string Hex8(unsigned long value) {
  char text[16];
  std::snprintf(text, sizeof text, "%.8lx", value);
  return text;
}

std::string Format(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = vl::FormatApiText(format, args);
  va_end(args);
  return text;
}

// The trace log goes to the test's scratch directory.
class Trace : public ::testing::Test {
 protected:
  void SetUp() override { vltest::TraceInto(scratch_); }
  vltest::Scratch scratch_;
};
using ErrorReport = Trace;

TEST_F(Trace, LinesCarryTimeProcessThreadAndSession) {
  vltest::FaxTree tree(scratch_);
  tree.AddUser("JSMITH");
  tree.UseAsExplicitAreas();
  VLHANDLE handle = vltest::LogOn("jsmith");
  char text[300];
  ASSERT_EQ(VlxGetUserOutDir(handle, text, sizeof text), VL_OK);
  EXPECT_EQ(VlxGetUserOutDir(handle, text, 5), VL_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(VlxGetUserOutDir(0, text, 7), VL_E_NOT_INIT);
  ASSERT_EQ(VlxAPIClosedown(handle), VL_OK);

  const std::string s = vltest::SessionField(handle);
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (std::vector<std::string>{
                s + "VlxAPIInit - user 'jsmith'", s + "...VlxAPIInit - return OK",
                s + "VlxGetUserOutDir - BufLen = 300", s + "...VlxGetUserOutDir - return OK",
                s + "VlxGetUserOutDir - BufLen = 5", "S=00000000  VlxGetUserOutDir - BufLen = 7",
                s + "VlxAPIClosedown", s + "...VlxAPIClosedown - return OK"}));

  // The prefix: two-digit date and time, then process and thread.
  std::string raw = vltest::ReadFile(scratch_.Path("VLAPI.LOG"));
  os::LocalTime now = os::Now();
  char date[16];
  std::snprintf(date, sizeof date, "%.2d-%.2d-%.2d ", now.year % 100, now.month, now.day);
  EXPECT_EQ(raw.rfind(date, 0), 0u) << raw.substr(0, 40);
  EXPECT_NE(raw.find("  (P=" + Hex8(os::ProcessId()) + ",T=" + Hex8(os::ThreadId()) + ",S="),
            std::string::npos);
}

TEST_F(Trace, SwitchesDecideWhetherLinesAreWritten) {
  vl::ProcessState& p = vl::Process();
  const struct { int32_t traceSwitch, applicationId, trace, mailTrace; bool written; } cases[] = {
      {1, 0, 0, 0, true},      {0, 0, 1, 0, true},      {0, 0, 0, 1, false},
      {0, 13398, 1, 0, false}, {0, 13398, 0, 1, true},
  };
  for (const auto& c : cases) {
    vltest::RemoveTree(scratch_.Path("VLAPI.LOG"));
    p.traceSwitch = c.traceSwitch;
    p.applicationId = c.applicationId;
    p.traceSetting = c.trace;
    p.mailTraceSetting = c.mailTrace;
    vl::ApiTrace(nullptr, "probe");
    EXPECT_EQ(vltest::FileExists(scratch_.Path("VLAPI.LOG")), c.written)
        << c.traceSwitch << " " << c.applicationId << " " << c.trace << " " << c.mailTrace;
  }
  p = vl::ProcessState{};
}

TEST_F(Trace, EscapeTurnsTracingOnWithoutTracingItself) {
  vl::Process().traceSwitch = 0;
  EXPECT_EQ(VlxEscape(0, "trace", 1), VL_OK);
  EXPECT_TRUE(vl::TraceEnabled());
  char version[16];
  EXPECT_EQ(VlxGetAPIVersion(version, sizeof version, nullptr), VL_OK);
  EXPECT_EQ(VlxEscape(0, "TRACE", 0), VL_OK);
  EXPECT_FALSE(vl::TraceEnabled());
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (std::vector<std::string>{"S=00000000  VlxGetAPIVersion",
                                      "S=00000000  ...VlxGetAPIVersion - return OK"}));
}

TEST_F(Trace, FormatPrintsFsAsS) {
  EXPECT_EQ(Format("user '%Fs' %d%% %Fs", "jsmith", 5, "x"), "user 'jsmith' 5% x");
  EXPECT_EQ(Format("%%Fs %-4Fs|", "ab"), "%Fs ab  |");
  EXPECT_EQ(Format("%s", std::string(700, 'y').c_str()), std::string(700, 'y'));
}

TEST_F(ErrorReport, IsCutTo511CharactersTracedAndHandedToTheCallback) {
  vl::ApiSession session;
  session.errorCallback = &Reported::Callback;
  session.handle = 0x1234;
  Reported::Clear();
  const std::string text(600, 'e');
  vl::ApiReportError(&session, "%s", text.c_str());
  const char* withFs = "Cannot open file %Fs";  // not a literal: compilers do not know %Fs
  vl::ApiReportError(&session, withFs, "X.INI");
  const std::vector<std::string> reported = {std::string(511, 'e'), "Cannot open file X.INI"};
  EXPECT_EQ(Reported::Texts(), reported);
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (std::vector<std::string>{"S=00001234  " + reported[0], "S=00001234  " + reported[1]}));
  session.errorCallback = nullptr;
  vl::ApiReportError(&session, "no callback");  // traced only
  EXPECT_EQ(Reported::Texts(), reported);
}

}  // namespace
