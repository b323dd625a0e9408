// The addressees of a message read from its control file.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "api/vlapi_internal.h"
#include "msg/addressees.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Ints = std::vector<int>;
using Lines = std::vector<std::string>;

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

class AddresseeTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JSMITH");
    tree_.UseAsRelativeAreas();
    handle_ = vltest::LogOn("JSMITH");
    std::memset(records_, 0x5A, sizeof records_);
    Reported::Clear();
  }
  void TearDown() override { VlxAPIClosedown(handle_); }

  static void Write(const std::string& text) {
    vltest::WriteFile("USERS\\JSMITH\\V-OUT\\MSG1.CTL", text);
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
  Lines Traced(std::initializer_list<const char*> outcomes) const {
    char prefix[16];
    std::snprintf(prefix, sizeof prefix, "S=%.8x  ", static_cast<unsigned>(handle_));
    Lines lines = {prefix + std::string("VlxGetMsgAddrs - 'V-OUT\\msg1.CTL'")};
    for (const char* outcome : outcomes)
      lines.push_back(prefix + std::string("...VlxGetMsgAddrs - ") + outcome);
    return lines;
  }

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
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
  ASSERT_EQ(VlxGetMsgAddrs(handle_, VL_DIR_OUT, "MSG1", 0, &count_, nullptr), VL_OK);
  EXPECT_EQ(count_, 4);

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
            Traced({"Addressee has unknown status XY", "Addressee missing FaxType from Via: line",
                    "Empty \"Field:\" line", "Addressee missing Fax Number from Via: line",
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
    EXPECT_EQ(vltest::TraceLines(scratch_), Traced({trace}));
  }
  EXPECT_EQ(records_[0].status, 2);

  const VLRESULT codes[] = {
      VlxGetMsgAddrs(handle_, 1, "MsgDir", 1, &count_, records_),
      VlxGetMsgAddrs(handle_, 1, nullptr, 1, &count_, records_),
      VlxGetMsgAddrs(handle_, 1, "MSG1", 1, &count_, nullptr),
      VlxGetMsgAddrs(handle_, 2, "Gone", 1, &count_, records_),
      VlxGetMsgAddrs(0, 1, "MSG1", 1, &count_, records_),
  };
  EXPECT_EQ(Ints(codes, codes + 5), (Ints{VL_E_INVALID_PARAM, VL_E_INVALID_PARAM,
                                          VL_E_INVALID_PARAM, VL_E_MSG_UNKNOWN, VL_E_NOT_INIT}));
  EXPECT_EQ(Reported::Texts(), (Lines{"Message name MsgDir not valid",
                                      "Invalid parameter supplied to API: body is NULL",
                                      "Invalid parameter supplied to API: records is NULL",
                                      "Control file USERS\\JSMITH\\V-IN\\GONE.CTL not found"}));
}

}  // namespace
