// The route table, and a message's history and addressees read from its
// control file.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "api/vlapi_internal.h"
#include "msg/addressees.h"
#include "msg/routes.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Ints = std::vector<int>;
using Lines = std::vector<std::string>;

TEST(RouteTable, RowsStandInTheirOrderAndWordsAreMatchedWithoutCase) {
  Ints codes;
  for (const vl::Route& r : vl::Routes()) codes.push_back(r.code);
  EXPECT_EQ(codes, (Ints{100, 101, 102, 103, 104, 105, 106, 107, 0, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11,
                         13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 27, 25, 31, 30, 29}));
  const std::pair<const char*, int> words[] = {{"fax-fine", 3}, {"FAX-ANY", 100}, {"none", 0},
                                               {"Sms-Incoming", 29}, {"FAX-", -1}, {"", -1}};
  for (const auto& [word, code] : words) {
    const vl::Route* r = vl::RouteByWord(word);
    EXPECT_EQ(r ? r->code : -1, code) << word;
  }
}

TEST(AddresseeStatus, WordsGiveTheirNumbersAndHeDependsOnHold) {
  const char* words[] = {"OK", "ad", "Su", "Wa", "WT", "Pr", "Co", "Ab", "Se", "Re", "FA",
                         "He", "Ar", "Sr", "Sc", "WD", "ws", "XY", "OKAY", ""};
  Ints notHeld, held;
  for (const char* word : words) {
    notHeld.push_back(vl::AddresseeStatusOf(word, false).value_or(99));
    held.push_back(vl::AddresseeStatusOf(word, true).value_or(99));
  }
  EXPECT_EQ(notHeld, (Ints{30, 1, 1, 4, 3, 6, 7, 10, 8, 11, 31, 4, 14, 13, 9, 4, 4, 99, 99, 99}));
  notHeld[11] = 2;
  EXPECT_EQ(held, notHeld);
}

// User JSMITH on relative areas, reading the control file of MSG1 in V-OUT.
class ControlFileReaderTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JSMITH");
    tree_.UseAsRelativeAreas();
    handle_ = vltest::LogOn("JSMITH");
    Reported::Clear();
  }
  void TearDown() override {
    os::fault::Clear();
    VlxAPIClosedown(handle_);
  }
  static void Write(const std::string& text) {
    vltest::WriteFile("USERS\\JSMITH\\V-OUT\\MSG1.CTL", text);
  }
  // The texts as this session's trace lines.
  Lines Traced(std::initializer_list<std::string> texts) const {
    Lines lines;
    for (const std::string& text : texts) lines.push_back(vltest::SessionField(handle_) + text);
    return lines;
  }

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
};

class HistoryTest : public ControlFileReaderTest {
 protected:
  static void WriteHistory(const std::string& lines) {
    Write("[MESSAGE]\r\nStatus: OK\r\n\r\n[HISTORY]\r\nMessageID: Id-1\r\n" + lines +
          "\r\n[ADDRESSEES]\r\nSentOK: 26-01-01 10:00:00 2\r\n");
  }
  // Reads MSG1 into junk-filled long records, one more than maxEntries.
  std::vector<VLMSGHISTORYEX> Read(uint16_t filter, uint16_t routing, int16_t maxEntries,
                                   uint16_t expectedCount) {
    std::vector<VLMSGHISTORYEX> records(maxEntries + 1);
    std::memset(records.data(), 0x5A, records.size() * sizeof records[0]);
    uint16_t count = 0x5A5A;
    EXPECT_EQ(VlxGetMsgHistoryEx(handle_, VL_DIR_OUT, "msg1", filter, routing, maxEntries, &count,
                                 166, records.data()),
              VL_OK)
        << Reported::Last();
    EXPECT_EQ(count, expectedCount);
    return records;
  }
  // One long record of the body into record_, counted in count_.
  VLRESULT Get(uint16_t dir, const char* body, int16_t size = 166, int16_t maxEntries = 1) {
    return VlxGetMsgHistoryEx(handle_, dir, body, 0, 0, maxEntries, &count_, size, &record_);
  }
  static Ints Events(const std::vector<VLMSGHISTORYEX>& records, size_t n) {
    Ints events;
    for (size_t i = 0; i < n; ++i) events.push_back(records[i].Event);
    return events;
  }

  VLMSGHISTORYEX record_;
  uint16_t count_ = 0;
};

TEST_F(HistoryTest, TheFilterPicksOneAddresseeAndCountingGoesOnPastMaxEntries) {
  // Pages number the lines.
  const std::pair<const char*, int> rows[] = {
      {"Tried:", 2},  {"SentOK:", 1}, {"SentEr:", 2}, {"SentOK:", 1},
      {"sentok:", 2}, {"SentEr:", 1}, {"RecdOK:", 2}, {"SentEr:", 1}};
  std::string lines;
  int page = 0;
  for (const auto& [keyword, addressee] : rows)
    lines += std::string(keyword) + " 26-01-01 10:00:00 " + std::to_string(addressee) +
             " \"\" FAX \"\" <0 " + std::to_string(page++) + "\r\n";
  WriteHistory(lines);
  auto records = Read(2, 0, 2, 3);
  EXPECT_EQ((Ints{records[0].Event, records[0].Pages, records[1].Event, records[1].Pages}),
            (Ints{4, 2, 1, 4}));
  EXPECT_EQ(records[2].Event, 0x5A5A) << "nothing is stored past MaxEntries";
  // A line that the filter refuses fills the free slot, which the next line takes over.
  records = Read(2, 1, 5, 4);
  EXPECT_EQ((Ints{records[0].Pages, records[3].Pages, records[4].Pages}), (Ints{0, 6, 7}));

  WriteHistory("RouterSub: 1\r\nScanOK: 2\r\nTried: 3\r\nRouterAcc: 4\r\nStatus: OK\r\n"
               "RouterErr: 5\r\nScanEr: 6\r\nRecdEr: 7\r\nTriedX: 8\r\n");
  EXPECT_EQ(Events(Read(0, 0, 3, 3), 3), (Ints{3, 6, 5}));
  EXPECT_EQ(Events(Read(0, 1, 7, 7), 7), (Ints{8, 3, 7, 9, 10, 6, 5}));
}

TEST_F(HistoryTest, LinesAreParsedTokenByToken) {
  const std::string x(75, 'x');
  const struct {
    std::string line;
    Ints numbers;  // year, month, day, hour, minute, second, addressee, route, error, pages, time
    Lines texts;   // addressee, route parameters, device, remote server
  } cases[] = {
      {"SentOK: 99-01-01 23:59:59, 2, \"Jane Doe\", fax-fine, \"0123, 456\", <1A, 3, 1:02:03, "
       "\"COM 1\", \"REMOTE\"",
       {1999, 1, 1, 23, 59, 59, 2, 3, 26, 3, 3723}, {"Jane Doe", "0123, 456", "COM 1", "REMOTE"}},
      {"SentEr:79-01-01 24:00:00 1 x FAX-ANY p 1A 2 0:60:00 dev",
       {2079, 1, 1, 0, 0, 0, 1, 100, 0, 2, 0}, {"x", "p", "dev", ""}},
      // The connection time wraps at 16 bits: 72000 seconds give 6464.
      {"SentEr: 05-13-01 00:60:00 7 \"\" NOSUCH \"\" <12345 0 20:00:00",
       {0, 0, 0, 0, 0, 0, 7, 0, 0x1234, 0, 6464}, {"", "", "", ""}},
      // Empty items between commas; an unclosed quote runs to the end.
      {"RecdOK: 80-12-32 10:00:00, 4,, LAN,, <zz, 1, -1:00:00, \"unclosed device",
       {0, 0, 0, 10, 0, 0, 4, 19, 0, 1, 0}, {"", "", "unclosed dev", ""}},
      {"RecdEr: 00-01-31 \"10:00:00\" 65537 " + x + " SMS \"" + x + "\" <Ff 1 0:0:59 " +
           x.substr(0, 13) + " " + x.substr(0, 13),
       {2000, 1, 31, 0, 0, 0, 1, 25, 255, 1, 59},
       {x.substr(0, 70), x.substr(0, 40), x.substr(0, 12), x.substr(0, 12)}},
      {"ScanOK:", {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0}, {"", "", "", ""}},
  };
  for (const auto& c : cases) {
    WriteHistory(c.line + "\r\n");
    const VLMSGHISTORYEX r = Read(0, 0, 1, 1)[0];
    EXPECT_EQ((Ints{r.Year, r.Month, r.Day, r.Hour, r.Minute, r.Second, r.Addressee, r.Route,
                    r.ErrorCode, r.Pages, r.ConnectTime}),
              c.numbers)
        << c.line;
    EXPECT_EQ((Lines{r.AddresseeText, r.RouteParams, r.Device, r.RemoteServer}), c.texts) << c.line;
  }
}

TEST_F(HistoryTest, ShortAndOldRecordsHoldTheirPartOfTheEvent) {
  WriteHistory("SentOK: 26-02-03 04:05:06 1 \"Jane\" HQFAX \"p q\" <F 3 0:1:0 COM1 R\r\n"
               "SentEr: 26-02-03 04:05:06 2 \"Bob\" FAX p <0 2 0:0:0 D R\r\n"
               "SentOK: 26-02-03 04:05:06 3\r\n");
  // Short records lie 94 bytes apart, without the addressee text.
  std::string bytes(2 * 94 + 10, 'Z');
  uint16_t count = 0;
  ASSERT_EQ(VlxGetMsgHistoryEx(handle_, VL_DIR_OUT, "MSG1", 0, 0, 2, &count, 94,
                               reinterpret_cast<VLMSGHISTORYEX*>(bytes.data())),
            VL_OK);
  VLMSGHISTORYEX second;
  std::memcpy(&second, bytes.data() + 94, 94);
  EXPECT_EQ((Ints{count, bytes[0], second.Event, second.Pages}), (Ints{3, 1, 4, 2}));
  EXPECT_STREQ(second.RemoteServer, "R");
  EXPECT_EQ(bytes.substr(188), std::string(10, 'Z'));

  VLMSGHISTORY old[3];
  std::memset(old, 0x5A, sizeof old);
  ASSERT_EQ(VlxGetMsgHistory(handle_, VL_DIR_OUT, "MSG1", 0, 0, 2, &count, old), VL_OK);
  const VLMSGHISTORY& r = old[0];
  EXPECT_EQ((Ints{count, r.Event, r.Year, r.Month, r.Day, r.Hour, r.Minute, r.Second, r.Addressee,
                  r.Route, r.ErrorCode, r.Pages, r.ConnectTime, old[1].Addressee, old[2].Event}),
            (Ints{3, 1, 2026, 2, 3, 4, 5, 6, 1, 5, 15, 3, 60, 2, 0x5A5A}));
  EXPECT_EQ((Lines{r.RouteParams, r.Device}), (Lines{"p q", "COM1"}));
  EXPECT_EQ(VlxGetMsgHistory(handle_, VL_DIR_OUT, "MSG1", 0, 0, 1, &count, nullptr),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: records is NULL");
}

TEST_F(HistoryTest, ArgumentsFilesAndTraces) {
  count_ = 77;
  // The body name rule itself is BodyNameTest's.
  const VLRESULT codes[] = {
      Get(1, "MSG1", 100), Get(1, "msgdir"), Get(1, nullptr),
      VlxGetMsgHistoryEx(handle_, 1, "MSG1", 0, 0, 1, nullptr, 166, &record_), Get(3, "Gone")};
  EXPECT_EQ(Ints(codes, codes + 4), Ints(4, VL_E_INVALID_PARAM));
  EXPECT_EQ(codes[4], VL_E_MSG_UNKNOWN);
  EXPECT_EQ(Reported::Texts(), (Lines{"VLMSGHISTORYEX size invalid",
                                      "Message name msgdir not valid",
                                      "Invalid parameter supplied to API: body is NULL",
                                      "Invalid parameter supplied to API: count is NULL",
                                      "Control file USERS\\JSMITH\\V-IN\\GONE.CTL not found"}));
  EXPECT_EQ(count_, 77) << "set only once the file is open";
  WriteHistory("SentOK: 26-01-01\r\n");
  os::fault::Inject(os::fault::Op::OpenStream, 1, os::kAccessDenied);
  EXPECT_EQ(Get(1, "msg1"), VL_E_CONTROL_FILE_OPEN_ERROR);
  EXPECT_EQ(Reported::Last(), "Unable to open file USERS\\JSMITH\\V-OUT\\MSG1.CTL");

  vltest::WriteFile("USERS\\JSMITH\\V-IN\\NOHIST.CTL", "[MESSAGE]\r\nSentOK: 26-01-01\r\n");
  vltest::TraceInto(scratch_);
  ASSERT_EQ(Get(1, "msg1", 166, 2), VL_OK);
  ASSERT_EQ(VlxGetMsgHistoryEx(handle_, 7, "NoHist", 0, 0, -1, &count_, 166, nullptr), VL_OK);
  EXPECT_EQ(count_, 0);
  EXPECT_EQ(vltest::TraceLines(scratch_),
            Traced({"VlxGetMsgHistory - 'V-OUT\\msg1.CTL', MaxEntries = 2",
                    "...VlxGetMsgHistory - return OK",
                    "VlxGetMsgHistory - '???\\NoHist.CTL', MaxEntries = -1",
                    "...VlxGetMsgHistory - no HISTORY para"}));
}

class AddresseeTest : public ControlFileReaderTest {
 protected:
  void SetUp() override {
    ControlFileReaderTest::SetUp();
    std::memset(records_, 0x5A, sizeof records_);
  }
  // Options with the given "Hold:" value, then the addressees and a history.
  static std::string Control(const char* hold, const std::string& addressees) {
    return std::string("[OPTIONS]\r\nFrom: me\r\nHold: ") + hold + "\r\n[ADDRESSEES]\r\n" +
           addressees + "\r\n[HISTORY]\r\nSentOK: 26-01-01 10:00:00 1\r\n";
  }
  VLRESULT Read(uint16_t maxEntries) {
    return VlxGetMsgAddrs(handle_, VL_DIR_OUT, "msg1", maxEntries, &count_, records_);
  }
  // The trace of one read of MSG1 that ends with these outcomes.
  Lines ReadTraced(std::initializer_list<const char*> outcomes) const {
    Lines lines = Traced({"VlxGetMsgAddrs - 'V-OUT\\msg1.CTL'"});
    for (const char* outcome : outcomes)
      lines.push_back(Traced({std::string("...VlxGetMsgAddrs - ") + outcome})[0]);
    return lines;
  }

  uint16_t count_ = 0x5A5A;
  MsgAddresseeRecord records_[4];
};

TEST_F(AddresseeTest, EntriesFillTheirRecordsAndCountingGoesOnPastMaxEntries) {
  const std::string x(90, 'x');
  Write(Control("NO", "Shortname:\r\nAddrStatus: Wa\r\nName: Jane Doe\r\nField: Name Jane Doe\r\n"
                      "Organisation: Acme Ltd\r\nField: Organisation Acme Ltd\r\n"
                      "Field: Custom C-42\r\nVia: FAX-ANY 0123456\r\n"
                      "Shortname:\r\nAddrStatus: OK\r\nName: Bob\r\nVia: SMS-ANY +4477\r\n"
                      "ShortName: x\r\nVia: lan-any JSMITH\r\nName: " + x + "\r\nOrganisation: " +
                      x + "\r\nField: Custom " + x + "\r\n"
                      "Shortname:\r\nName: Ann\r\n"));
  ASSERT_EQ(Read(3), VL_OK) << Reported::Last();
  EXPECT_EQ(count_, 4);
  const std::pair<Ints, Lines> expected[] = {
      {{4, 1}, {"Jane Doe", "Acme Ltd", "0123456", "C-42"}},
      {{30, 3}, {"Bob", "", "+4477", ""}},
      // Without an "AddrStatus:" line the slot keeps its status.
      {{0x5A5A, 2}, {x.substr(0, 30), x.substr(0, 40), "JSMITH", x.substr(0, 80)}},
  };
  for (int i = 0; i < 3; ++i) {
    const MsgAddresseeRecord& r = records_[i];
    EXPECT_EQ((Ints{r.status, r.type}), expected[i].first) << i;
    EXPECT_EQ((Lines{r.name, r.organisation, r.number, r.custom}), expected[i].second) << i;
  }
  EXPECT_EQ(records_[3].status, 0x5A5A) << "nothing is stored past MaxEntries";

  for (const auto& [hold, status] : {std::pair{"YES", 2}, {"yes", 2}, {"NO", 4}, {"Y", 4}}) {
    Write(Control(hold, "Shortname:\r\nAddrStatus: He\r\n"));
    ASSERT_EQ(Read(1), VL_OK);
    EXPECT_EQ(records_[0].status, status) << hold;
  }
}

TEST_F(AddresseeTest, DoubtfulLinesAreTracedAndPassedOver) {
  Write(Control("NO", "Shortname:\r\nAddrStatus: XY\r\nVia:\r\nField:\r\n"
                      "Shortname:\r\nAddrStatus: OK\r\nVia: FAX-ANY\r\nField: Custom\r\n"
                      "Shortname:\r\nVia: TELEX 99\r\nField: custom c1\r\nField: Customer c2\r\n"));
  vltest::TraceInto(scratch_);
  ASSERT_EQ(Read(3), VL_OK);
  const MsgAddresseeRecord* r = records_;
  EXPECT_EQ((Ints{r[0].status, r[0].type, r[1].type, r[2].type}), (Ints{0, 0x5A5A, 1, 0}));
  EXPECT_EQ((Lines{r[1].number, r[2].number, r[2].custom}), (Lines{"", "99", "c1"}));
  EXPECT_EQ(vltest::TraceLines(scratch_),
            ReadTraced({"Addressee has unknown status XY",
                        "Addressee missing FaxType from Via: line", "Empty \"Field:\" line",
                        "Addressee missing Fax Number from Via: line",
                        "Custom \"Field:\" line without value string", "return OK"}));
}

TEST_F(AddresseeTest, MissingParagraphsGiveNoAddresseesAndArgumentsAreChecked) {
  const std::string entry = "Shortname:\r\nAddrStatus: He\r\n";
  const std::pair<std::string, const char*> cases[] = {
      {"[MESSAGE]\r\nHold: YES\r\n[ADDRESSEES]\r\n" + entry, "no OPTIONS para"},
      {"[OPTIONS]\r\nFrom: me\r\n[X]\r\nHold: YES\r\n[ADDRESSEES]\r\n" + entry, "no Hold line"},
      {"[OPTIONS]\r\nHold: YES\r\n[ADDRESSEE]\r\n" + entry, "no ADDRESSEES para"},
      // The addressees may come before the options.
      {"[ADDRESSEES]\r\n" + entry + "[OPTIONS]\r\nHold: YES\r\n", "return OK"},
  };
  vltest::TraceInto(scratch_);
  for (const auto& [text, trace] : cases) {
    Write(text);
    vltest::RemoveTree(scratch_.Path("VLAPI.LOG"));
    count_ = 77;
    ASSERT_EQ(Read(1), VL_OK);
    EXPECT_EQ(count_, std::strcmp(trace, "return OK") == 0 ? 1 : 0) << text;
    EXPECT_EQ(vltest::TraceLines(scratch_), ReadTraced({trace}));
  }

  // One case for each check shared with the history reader.
  const VLRESULT codes[] = {
      VlxGetMsgAddrs(handle_, 1, nullptr, 1, &count_, records_),
      VlxGetMsgAddrs(handle_, 1, "MSG1", 1, &count_, nullptr),
      VlxGetMsgAddrs(handle_, 2, "Gone", 1, &count_, records_),
      VlxGetMsgAddrs(0, 1, "MSG1", 1, &count_, records_),
  };
  EXPECT_EQ(Ints(codes, codes + 4),
            (Ints{VL_E_INVALID_PARAM, VL_E_INVALID_PARAM, VL_E_MSG_UNKNOWN, VL_E_NOT_INIT}));
  EXPECT_EQ(Reported::Texts(), (Lines{"Invalid parameter supplied to API: body is NULL",
                                      "Invalid parameter supplied to API: records is NULL",
                                      "Control file USERS\\JSMITH\\V-IN\\GONE.CTL not found"}));
}

}  // namespace
