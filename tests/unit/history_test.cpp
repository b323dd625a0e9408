// The route table and a message's history read from its control file.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "msg/routes.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Ints = std::vector<int>;
using Lines = std::vector<std::string>;

TEST(RouteTable, RowsStandInTheirOrderAndTheFirstMatchingWordWins) {
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
  EXPECT_STREQ(vl::RouteByCode(11)->description, "Laserjet 300 dpi");
  EXPECT_EQ(vl::RouteByCode(11)->classWord, 0x4000au);
  for (uint16_t missing : {9, 12, 26, 28, 108}) EXPECT_EQ(vl::RouteByCode(missing), nullptr);
}

class HistoryTest : public ::testing::Test {
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

  static void WriteHistory(const std::string& lines) {
    vltest::WriteFile("USERS\\JSMITH\\V-OUT\\MSG1.CTL",
                      "[MESSAGE]\r\nStatus: OK\r\n\r\n[HISTORY]\r\nMessageID: Id-1\r\n" + lines +
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

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
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
  uint16_t count = 0;
  EXPECT_EQ(VlxGetMsgHistoryEx(handle_, VL_DIR_OUT, "MSG1", 0, 0, 0, &count, 94, nullptr), VL_OK);
  EXPECT_EQ(count, 7);

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
  EXPECT_EQ(VlxGetMsgHistory(handle_, VL_DIR_OUT, "MSG1", 0, 0, 0, &count, nullptr), VL_OK);
  EXPECT_EQ(VlxGetMsgHistory(handle_, VL_DIR_OUT, "MSG1", 0, 0, 1, &count, nullptr),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: records is NULL");
}

TEST_F(HistoryTest, ArgumentsFilesAndTraces) {
  count_ = 77;
  const VLRESULT codes[] = {
      Get(1, "MSG1", 100), Get(1, "", 100), Get(1, "msgdir"), Get(1, nullptr),
      VlxGetMsgHistoryEx(handle_, 1, "MSG1", 0, 0, 1, nullptr, 166, &record_), Get(3, "Gone")};
  EXPECT_EQ(Ints(codes, codes + 5), Ints(5, VL_E_INVALID_PARAM));
  EXPECT_EQ(codes[5], VL_E_MSG_UNKNOWN);
  EXPECT_EQ(Reported::Texts(), (Lines{"VLMSGHISTORYEX size invalid", "Body name invalid",
                                      "Message name msgdir not valid",
                                      "Invalid parameter supplied to API: body is NULL",
                                      "Invalid parameter supplied to API: count is NULL",
                                      "Control file USERS\\JSMITH\\V-IN\\GONE.CTL not found"}));
  EXPECT_EQ(count_, 77) << "set only once the file is open";
  WriteHistory("SentOK: 26-01-01\r\n");
  os::fault::Inject(os::fault::Op::OpenStream, 1, os::kAccessDenied);
  EXPECT_EQ(Get(1, "msg1"), VL_E_CONTROL_FILE_OPEN_ERROR);
  EXPECT_EQ(Reported::Last(), "Unable to open file USERS\\JSMITH\\V-OUT\\MSG1.CTL");
  EXPECT_EQ(VlxGetMsgHistoryEx(0, 1, "MSG1", 0, 0, 1, &count_, 166, &record_), VL_E_NOT_INIT);

  vltest::WriteFile("USERS\\JSMITH\\V-IN\\NOHIST.CTL", "[MESSAGE]\r\nSentOK: 26-01-01\r\n");
  vltest::TraceInto(scratch_);
  ASSERT_EQ(Get(1, "msg1", 166, 2), VL_OK);
  ASSERT_EQ(VlxGetMsgHistoryEx(handle_, 7, "NoHist", 0, 0, -1, &count_, 166, nullptr), VL_OK);
  EXPECT_EQ(count_, 0);
  char s[16];
  std::snprintf(s, sizeof s, "S=%.8x  ", static_cast<unsigned>(handle_));
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (Lines{s + std::string("VlxGetMsgHistory - 'V-OUT\\msg1.CTL', MaxEntries = 2"),
                   s + std::string("...VlxGetMsgHistory - return OK"),
                   s + std::string("VlxGetMsgHistory - '???\\NoHist.CTL', MaxEntries = -1"),
                   s + std::string("...VlxGetMsgHistory - no HISTORY para")}));
}

}  // namespace
