// The common log: line format, levels, lost lines, the event log and the
// message-log records it adds; the message-log record parser.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "lib/log_writer.h"
#include "lib/message_log.h"
#include "lib/server_config.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"

namespace {

using vl::Log;

#ifdef _WIN32
const char kEol[] = "\r\n";  // the log files are text files
#else
const char kEol[] = "\n";
#endif
const char kStamp[] = "26-11-23 10:20:30";
const std::string kHead = std::string(kStamp) + "  VLSIM      - ";  // of the lines written

class LogWriterTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Log() = vl::LogState{};
    vl::ServerSettings() = vl::ServerConfig{};
    vl::ServerSettings().serverArea = scratch_.Dir();
    vltest::MakeDirectories(scratch_.Path("V-DB"));
    PinClock();
    os::fault::RecordEventLog(&events_);
    vl::LogInit(stream_.get(), file_.c_str(), 0, "VLSIM");
  }
  void TearDown() override {
    os::fault::Clear();
    os::fault::RecordEventLog(nullptr);
    Log() = vl::LogState{};
  }
  static void PinClock() { os::fault::PinClock(os::LocalTime{2026, 11, 23, 10, 20, 30, 0}); }
  std::string Streamed() { return vltest::Contents(stream_.get()); }

  vltest::Scratch scratch_;
  os::UniqueFile stream_ = vltest::StreamOf("");
  std::string file_ = scratch_.Path("SERVER.LOG");
  std::vector<std::string> events_;
};

TEST_F(LogWriterTest, EachLevelHasItsLetterAndEvent) {
  // event: the event-log entry of levels 6 and above.
  const struct { int level; const char *head, *event; } cases[] = {
      {1, "(.)", nullptr}, {2, "(-)", nullptr}, {3, "(I)", nullptr}, {4, "(W)", nullptr},
      {5, "(E)", nullptr}, {6, "(S)", "write error 0xD803 text"},
      {9, "(?)", "write information 0x5801 text"},
  };
  std::string expected;
  for (const auto& c : cases) {
    events_.clear();
    vl::LogWrite(c.level, "%s", "text");
    expected += kHead + c.head + " - text\n";
    const std::vector<std::string> entry = {"open Velomar Server", c.event ? c.event : "", "close"};
    EXPECT_EQ(events_, c.event ? entry : std::vector<std::string>()) << c.level;
  }
  EXPECT_EQ(Streamed(), expected);
}

TEST_F(LogWriterTest, AMessageIsDroppedOnlyBelowBothLevels) {
  const struct { int level, second, message; bool written; } cases[] = {
      {4, 3, 3, true}, {4, 4, 3, false}, {1, 5, 1, true}, {2, 3, 1, false}};
  for (const auto& c : cases) {
    Log().level = static_cast<int16_t>(c.level);
    Log().secondLevel = static_cast<int16_t>(c.second);
    const size_t before = Streamed().size();
    Log().eventLogOnce = true;  // consumed by a dropped message too
    vl::LogWrite(c.message, "m");
    EXPECT_EQ(Streamed().size() > before, c.written) << c.level << c.second << c.message;
    EXPECT_FALSE(Log().eventLogOnce);
    EXPECT_EQ(events_.empty(), !c.written);
    events_.clear();
  }
}

TEST_F(LogWriterTest, LinesLostToTheFileAreCountedAndAnnouncedByTheNextOneWritten) {
  for (int failures : {3, 1}) {
    vltest::WriteFile(file_, "");
    os::fault::Inject(os::fault::Op::OpenStream, 1, os::kAccessDenied, true);
    for (int i = 0; i < failures; ++i) vl::LogWrite(3, "lost %d", i);
    os::fault::Clear();
    PinClock();
    vl::LogWrite(3, "back");
    EXPECT_EQ(vltest::ReadFile(file_),
              kHead + "(E) - " +
                  (failures == 3 ? "(3 system messages lost)" : "(1 system message lost)") + kEol +
                  kHead + "(I) - back" + kEol);
  }
}

TEST_F(LogWriterTest, TheEventLogGetsTheTextWithSingleQuotesAndTheTypeOfItsIdentifier) {
  vl::LogWrite(6, "Disk \"C\" full");
  Log().eventLogOnce = true;
  vl::LogWrite(4, "Line \"busy\"");
  vl::ReportToEventLog(0x5801, "LIB_I_INFO", "note %d", 7);
  EXPECT_EQ(events_, (std::vector<std::string>{
                         "open Velomar Server", "write error 0xD803 Disk 'C' full", "close",
                         "open Velomar Server", "write warning 0x9802 Line 'busy'", "close",
                         "open Velomar Server", "write information 0x5801 note 7", "close"}));
  os::fault::Inject(os::fault::Op::EventLog, 1, os::kAccessDenied);
  events_.clear();
  vl::LogWrite(6, "unregistered");  // a source that cannot be registered is given up
  EXPECT_TRUE(events_.empty());
}

TEST_F(LogWriterTest, TheIdentifierIsCutToTenCharactersAndAnOverlongFileNameEndsTheProcess) {
  vl::LogInit(stream_.get(), nullptr, 0, "SIMULATOR-12");
  EXPECT_STREQ(Log().identifier, "SIMULATOR-");
  const std::string name(269, 'n');
  EXPECT_EXIT(vl::LogInit(nullptr, name.c_str(), 0, "X"), ::testing::ExitedWithCode(1), "");
}

TEST_F(LogWriterTest, EventsFromLevel3MakeMessageLogRecordsWhileTheMessageLogIsOn) {
  Log().messageLogSwitch = 1;
  Log().source = "JSMITH";
  Log().subSource = "~FAXA000";
  Log().number = 2;
  Log().count = 3;
  Log().code = 0x1F;
  vl::LogWrite(3, "Sent \"report\"");
  vl::LogWrite(2, "not recorded");
  Log().source.clear();
  Log().subSource = "TOOLONGNAME";
  vl::LogWrite(5, "Failed");
  EXPECT_EQ(vltest::ReadFile(scratch_.Path("V-DB\\V-261123.LOG")),
            "5801: " + std::string(kStamp) + ",JSMITH    ,~FAXA000,00000002,3  ,001F,LIB_I_INFO"
            "          ,\"" + kHead + "(I) - Sent \"report\"\"" + kEol +
            "D803: " + kStamp + ",VLSIM     ,TOOLONGN,00000002,3  ,001F,LIB_E_ERROR         ,\"" +
            kHead + "(E) - Failed\"" + kEol);
  // A message log that cannot be opened is reported once, never recorded.
  vltest::RemoveTree(scratch_.Path("V-DB"));
  vl::LogWrite(3, "again");
  EXPECT_NE(Streamed().find("(E) - Error opening message log file\n"), std::string::npos);
}

using MessageLogParse = LogWriterTest;

// A record laid out as the writer lays it out (above) gives its fields back.
TEST_F(MessageLogParse, FieldsComeBackYearsCountFrom1900AndEmptyNumbersReadAsZero) {
  char written[] = "5801: 26-11-23 10:20:30,JSMITH    ,~FAXA000,00000002,3  ,001F,LIB_I_INFO"
                   "          ,\"(I) - Sent\"";
  char record[] = "5801: 99-12-31 23:59:59,SRC,,,,,LIB_I_INFO";
  uint16_t id = 0, count = 7, code = 7;
  uint32_t number = 7;
  std::tm time{};
  char *name = nullptr, *source = nullptr, *subSource = nullptr, *rest = nullptr;
  ASSERT_EQ(vl::ParseMessageRecord(written, {&id, &time, &name, &source, &subSource, &number,
                                             &count, &code, &rest}),
            1);
  EXPECT_EQ(std::vector<std::string>({source, subSource, name, rest}),
            std::vector<std::string>({"JSMITH", "~FAXA000", "LIB_I_INFO", "\"(I) - Sent\""}));
  EXPECT_EQ(std::vector<unsigned>({id, number, count, code, unsigned(time.tm_year),
                                   unsigned(time.tm_mon), unsigned(time.tm_sec)}),
            std::vector<unsigned>({0x5801, 2, 3, 0x1F, 126, 11, 30}));
  ASSERT_EQ(vl::ParseMessageRecord(record, {nullptr, &time, nullptr, nullptr, &subSource, &number,
                                            &count, &code, &rest}),
            1);
  EXPECT_EQ(std::vector<int>({time.tm_year, time.tm_mday}), std::vector<int>({99, 31}));
  EXPECT_EQ(std::string(subSource) + rest, "");
  EXPECT_EQ(number + count + code, 0u);
}

TEST_F(MessageLogParse, EachMalformedRecordNamesItsFirstFailingStep) {
  const struct { const char* record; int step; } cases[] = {
      {"xyz: 05-01-02 03:04:05,S,U,1,2,3,N", 1},  {"5801: 05-01-02", 2},
      {"5801: 05/01/02 03:04:05,S", 2},           {"5801: 05-01-02 03:04:05", 3},
      {"5801: 05-01-02 03:04:05,S", 4},           {"5801: 05-01-02 03:04:05,S,U", 5},
      {"5801: 05-01-02 03:04:05,S,U,zz", 6},      {"5801: 05-01-02 03:04:05,S,U,1", 7},
      {"5801: 05-01-02 03:04:05,S,U,1,x", 8},     {"5801: 05-01-02 03:04:05,S,U,1,2", 9},
      {"5801: 05-01-02 03:04:05,S,U,1,2,q", 10},  {"5801: 05-01-02 03:04:05,S,U,1,2,3", 11},
  };
  std::string expected;
  for (const auto& c : cases) {
    std::string text = c.record;
    uint16_t id;
    std::tm time;
    EXPECT_EQ(vl::ParseMessageRecord(text.data(), {&id, &time}), 0) << c.record;
    expected += kHead + "(-) - Invalid message line (" + std::to_string(c.step) + ")\n";
  }
  EXPECT_EQ(Streamed(), expected);
}

}  // namespace
