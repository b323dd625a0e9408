// Message defaults from USER.INI, the defaults record, the cover sheet and
// sender getters, and the user's mail address from MAILLIST.INI.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "api/process_state.h"
#include "api/session.h"
#include "api/text.h"
#include "api/vlapi_internal.h"
#include "msg/defaults.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"
#include "tests/support/user_fixture.h"
#include "vlapi.h"

namespace {

using vl::MessageOptions;
using vltest::Reported;
using Ints = std::vector<int>;
using Lines = std::vector<std::string>;

// "yy-mm-dd " + time for today, as the After rule writes it.
std::string Today(const char* time) {
  const os::LocalTime now = os::Now();
  char text[40];
  std::snprintf(text, sizeof text, "%02d-%02d-%02d %s", now.year % 100, now.month, now.day, time);
  return text;
}

class MessageDefaultsTest : public vltest::JsmithTest {
 protected:
  void SetUp() override {
    JsmithTest::SetUp();
    vltest::WriteFile(SystemIni(), "[VELOMAR]\r\n");
    vltest::WriteFile(UserIni(), "[VELOMAR]\r\n");
  }

  std::string SystemIni() const { return tree_.System() + "V-DB\\USER.INI"; }
  std::string UserIni() const { return tree_.Users() + "JSMITH\\V-DB\\USER.INI"; }
  // A USER.INI whose "[OPTIONS]" holds lines; the paragraph after it is not read.
  static void WriteOptions(const std::string& path, const std::string& lines) {
    vltest::WriteFile(path, "[VELOMAR]\r\nType: UserIni\r\nRevision: A\r\n\r\n[OPTIONS]\r\n" +
                                lines +
                                "\r\n[OTHER]\r\nFrom: not an option\r\nPriority: URGENT\r\n");
  }
  // The defaults loaded into a junk-filled record.
  std::unique_ptr<MessageOptions> Load(VLRESULT expected = VL_OK, uint16_t format = 0) {
    auto options = std::make_unique<MessageOptions>();
    std::memset(static_cast<void*>(options.get()), 0x5A, sizeof *options);
    EXPECT_EQ(vl::LoadMessageDefaults(*vl::SessionFromHandle(handle_), format, options.get()),
              expected)
        << Reported::Last();
    return options;
  }
};

// The junk-filled record is reset as a whole: the first and last fields of
// either kind show it.
TEST_F(MessageDefaultsTest, FixedValuesWhenNoFileHasOptions) {
  auto o = Load(VL_OK, 4);
  EXPECT_EQ((Lines{o->Priority, o->Header, o->Quality, o->Comment, o->Documents[29]}),
            (Lines{"NORMAL", "NoToFrDaTi", "NORMAL", "", ""}));
  EXPECT_EQ((Ints{o->Format, o->Preview, o->MsgType, o->SentItemsFax, o->SentItemsSMS, o->Hold,
                  o->FaxBroadcast}),
            (Ints{4, 1, 1, 1, 1, 0, 0}));
}

TEST_F(MessageDefaultsTest, TextKeysAreCutNamesUpperCasedAndTheUsersFileOverridesTheSystemFile) {
  WriteOptions(SystemIni(), vltest::Lines({"from: Jane Smith of the Accounts Department",
                                           "Telephone: +44 20 7946 0000",
                                           "Fax: 0123456789012345678901234567890123456789XYZ",
                                           "Email: js@example.com", "FromParam: p1",
                                           "Coversheet: cover-sheet-long", "Letterhead: sys"}));
  // The user's file has no "From:" but its "[OTHER]" paragraph has one.
  WriteOptions(UserIni(), "Letterhead: lh1\r\n");
  auto o = Load();
  EXPECT_EQ((Lines{o->From, o->FromTelephone, o->FromFax, o->FromEmail, o->FromParam,
                   o->Coversheet, o->Letterhead}),
            (Lines{"Jane Smith of the Accounts Dep", "+44 20 7946 0000",
                   "0123456789012345678901234567890123456789", "js@example.com", "p1",
                   "COVER-SHEET-", "LH1"}));
  EXPECT_TRUE(Reported::Texts().empty());
}

TEST_F(MessageDefaultsTest, PriorityQualityAndHeaderWordsAreKeptReplacedOrRebuilt) {
  const std::pair<const char*, Lines> cases[] = {
      {"Priority: URGENT\r\nQuality: HIGH\r\nHeader: DtTiNo", {"URGENT", "HIGH", "NoDaTi"}},
      {"Priority: urgent\r\nQuality: high\r\nHeader: TiDaFrToNo",
       {"BACKGROUND", "DRAFT", "NoToFrDaTi"}},
      {"Priority: NORMAL\r\nQuality: NORMAL\r\nHeader: notofrdati", {"NORMAL", "NORMAL", ""}},
  };
  for (const auto& [lines, want] : cases) {
    WriteOptions(UserIni(), lines + std::string("\r\n"));
    auto o = Load();
    EXPECT_EQ((Lines{o->Priority, o->Quality, o->Header}), want) << lines;
  }
}

TEST_F(MessageDefaultsTest, AfterIsOffPeakOrATimeTodayOrEmpty) {
  const std::pair<const char*, const char*> cases[] = {
      {"7:05:09 later", "07:05:09"}, {"at23:59:59", "23:59:59"}, {"25:00:00", ""},
      {"12:60:00", ""},              {"12:00", ""},              {"now 17:30:00", ""},
      {"OffPeakNight 17:30:00", "OFFPEAK"},
  };
  WriteOptions(SystemIni(), "After: 10:00:00\r\n");
  for (const auto& [value, want] : cases) {
    const bool today = want[0] >= '0' && want[0] <= '9';
    WriteOptions(UserIni(), std::string("After: ") + value + "\r\n");
    const std::string before = today ? Today(want) : want;
    auto o = Load();
    const std::string after = today ? Today(want) : want;
    EXPECT_TRUE(o->After == before || o->After == after) << value << " gave " << o->After;
  }
}

TEST_F(MessageDefaultsTest, SentItemsComeFromEachFileAndDeleteFlagsAreNeverCleared) {
  const auto flags = [&] {
    auto o = Load();
    return Ints{o->SentItemsFax, o->SentItemsSMS, o->DeleteFaxIfOK, o->DeleteSMSIfOK,
                o->DeleteFax, vl::Process().userSentItemsFax, vl::Process().userSentItemsSMS};
  };
  WriteOptions(SystemIni(), "SentItemsFax: NO\r\nSentItemsSMS: yes\r\n"
                            "DeleteSentFax: YES\r\nDeleteSentSMS: no\r\n");
  EXPECT_EQ(flags(), (Ints{0, 1, 1, 0, 0, 0, 1}));
  // A missing key means "keep"; any word but YES means "do not keep".
  WriteOptions(UserIni(), "SentItemsSMS: Y\r\nDeleteSentFax: NO\r\nDeleteSentSMS: yes\r\n");
  EXPECT_EQ(flags(), (Ints{1, 0, 1, 1, 0, 1, 0}));
}

TEST_F(MessageDefaultsTest, FilesThatCannotBeOpenedOrAreasTooLongOrNoUserAreRefused) {
  vltest::RemoveTree(UserIni());
  const struct {
    std::string system, users, user;
    VLRESULT code;
    std::string report;
  } cases[] = {
      {tree_.System(), tree_.Users(), "JSMITH", VL_E_CANNOT_READ_MSG_DEFAULTS,
       "Cannot open file " + UserIni()},
      {std::string(255, 'S'), tree_.Users(), "JSMITH", VL_E_BUFFER_TOO_SMALL, ""},
      {std::string(254, 'S'), tree_.Users(), "JSMITH", VL_E_CANNOT_READ_MSG_DEFAULTS,
       "Cannot open file " + std::string(254, 'S') + "V-DB\\USER.INI"},
      {tree_.System(), tree_.Users(), "", VL_E_CANNOT_READ_MSG_DEFAULTS, ""},
      {tree_.System(), std::string(248, 'U'), "JSMITH", VL_E_CANNOT_READ_MSG_DEFAULTS, ""},
      {tree_.System(), std::string(247, 'U'), "JSMITH", VL_E_CANNOT_READ_MSG_DEFAULTS,
       "Cannot open file " + std::string(247, 'U') + "JSMITH\\V-DB\\USER.INI"},
  };
  for (const auto& c : cases) {
    vl::ApiSession session;
    session.errorCallback = &Reported::Callback;
    vl::CopyBounded(session.systemArea, c.system);
    vl::CopyBounded(session.userArea, c.users);
    vl::CopyBounded(session.userName, c.user);
    Reported::Clear();
    auto options = std::make_unique<MessageOptions>();
    EXPECT_EQ(vl::LoadMessageDefaults(session, 0, options.get()), c.code) << c.report;
    EXPECT_EQ(Reported::Texts(), c.report.empty() ? Lines{} : Lines{c.report});
  }

  // Without the system's file the user's (gone too) is not tried.
  vltest::RemoveTree(SystemIni());
  Reported::Clear();
  VLMSGDEFAULTSEX record;
  char text[40];
  EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, sizeof record, &record), VL_E_CANNOT_READ_MSG_DEFAULTS);
  EXPECT_EQ(VlxGetUserFromname(handle_, text, sizeof text), VL_E_CANNOT_READ_MSG_DEFAULTS);
  EXPECT_EQ(Reported::Texts(), Lines(2, "Cannot open file " + SystemIni()));
}

// The words' numbers: MessageDefaultsRecord below.
TEST_F(MessageDefaultsTest, DefaultsRecordIsFilledFromTheFilesAndChecksItsArguments) {
  WriteOptions(UserIni(), "From: " + std::string(30, 'f') +
                              "\r\nCoversheet: ninechars\r\nLetterhead: eightchr\r\n");
  VLMSGDEFAULTSEX r;
  std::memset(&r, 0x5A, sizeof r);
  ASSERT_EQ(VlxGetMsgDefaultsEx(handle_, 72, &r), VL_OK) << Reported::Last();
  EXPECT_EQ((Lines{r.From, r.Coversheet, r.Letterhead}),
            (Lines{std::string(30, 'f'), "", "EIGHTCHR"}))
      << "a cover sheet of 9 characters does not fit";

  EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, 73, &r), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, 72, nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Texts(), (Lines{"VLMSGDEFAULTSEX size invalid",
                                      "Invalid parameter supplied to API: defaults is NULL"}));
  const VLHANDLE noUser = vltest::LogOn("");
  EXPECT_EQ(VlxGetMsgDefaultsEx(noUser, 72, &r), VL_E_USER_NOT_INIT);
  VlxAPIClosedown(noUser);
}

TEST(MessageDefaultsRecord, WordsAreMatchedWithoutCaseAndTwoDigitYearsPivotAt70) {
  const struct {
    const char *priority, *header, *quality, *after;
    Ints want;  // priority, header, quality, send time, year, month, second
  } cases[] = {
      {"urgent", "NoToFrDaTi", "draft", "69-12-31 10:00:00", {3, 31, 1, 3, 2069, 12, 0}},
      {"Background", "FrTi", "High", "70-01-01 00:00:05", {1, 20, 3, 3, 1970, 1, 5}},
      {"NORMAL", "Dt", "NORMAL", "2026-5-1 8:9:10", {2, 0, 2, 3, 2026, 5, 10}},
      {"", "", "", "OffPeak", {2, 0, 2, 2, 0, 0, 0}},
      {"LOW", "no", "FINE", "26-05-01", {2, 0, 2, 1, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    auto options = std::make_unique<MessageOptions>();
    vl::CopyBounded(options->Priority, c.priority);
    vl::CopyBounded(options->Header, c.header);
    vl::CopyBounded(options->Quality, c.quality);
    vl::CopyBounded(options->After, c.after);
    VLMSGDEFAULTSEX r;
    std::memset(&r, 0x5A, sizeof r);
    vl::FillDefaultsRecord(*options, &r);
    EXPECT_EQ((Ints{r.Priority, r.Header, r.Quality, r.SendTime, r.SendYear, r.SendMonth,
                    r.SendSecond}),
              c.want)
        << c.priority << ", " << c.header << ", " << c.quality << ", " << c.after;
  }
}

TEST_F(MessageDefaultsTest, CoversheetAndFromnameNeedRoomForTheNul) {
  WriteOptions(SystemIni(), "Coversheet: cover1\r\nFrom: J Smith\r\n");
  using Getter = VLRESULT(VLAPI_CALL*)(VLHANDLE, char*, int16_t);
  // No text: the buffer is too small and stays untouched.
  const struct { Getter get; int16_t bufLen; const char* text; } cases[] = {
      {VlxGetUserCoversheet, 6, nullptr}, {VlxGetUserCoversheet, 7, "COVER1"},
      {VlxGetUserFromname, -1, nullptr},  {VlxGetUserFromname, 8, "J Smith"},
  };
  for (const auto& c : cases) {
    char buffer[16];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(c.get(handle_, buffer, c.bufLen), c.text ? VL_OK : VL_E_BUFFER_TOO_SMALL) << c.bufLen;
    EXPECT_EQ(c.text ? std::string(buffer) : std::string(1, buffer[0]), c.text ? c.text : "#");
  }
  EXPECT_TRUE(Reported::Texts().empty());

  EXPECT_EQ(VlxGetUserCoversheet(handle_, nullptr, 10), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: buffer is NULL");
}

class MailAddressTest : public vltest::JsmithTest {
 protected:
  void WriteMailList(const std::string& paragraphs) {
    vltest::WriteFile(tree_.System() + "V-DB\\MAILLIST.INI",
                      "[VELOMAR]\r\nType: MailList\r\nRevision: A\r\n\r\n" + paragraphs);
  }
  // Looks the address up into junk-filled outputs: "kind address".
  std::string Lookup(int capacity = sizeof address_) {
    kind_ = 0x5A5A;
    std::memset(address_, '#', sizeof address_);
    EXPECT_EQ(vl::GetUserMailAddress(handle_, &kind_, address_, capacity), VL_OK);
    return std::to_string(kind_) + " " + address_;
  }

  uint16_t kind_ = 0;
  char address_[32] = {};
};

TEST_F(MailAddressTest, ThePrefixGivesTheKind) {
  const std::pair<const char*, const char*> cases[] = {
      {"   smtp:   a.b", "2 a.b"},   {"ex:/o=Org/cn=js", "1 /o=Org/cn=js"},
      {"NOT: Jane/Org", "3 Jane/Org"}, {"grw:js.po", "4 js.po"},
      {"x400:c=gb", "65535 x400:c=gb"}, {"", "65535 "},
  };
  for (const auto& [value, want] : cases) {
    WriteMailList(std::string("[USER]\r\nVeloname: JSMITH\r\nEmailname: ") + value + "\r\n");
    EXPECT_EQ(Lookup(), want) << value;
  }
}

TEST_F(MailAddressTest, TheLastMatchingParagraphThatIsNoProfileWins) {
  WriteMailList(
      "[USER]\r\nVeloname: jsmith\r\nEmailname: smtp:first@example.com\r\n\r\n"
      "[USER]\r\nVeloname: OTHER\r\nEmailname: ex:other\r\n\r\n"
      "[USER]\r\nProfile: YES\r\nVeloname: JSMITH\r\nEmailname: ex:profile\r\n\r\n"
      "[USER]\r\nEmailname: not:last@example\r\nVeloname: JSmith\r\nProfile: no\r\n\r\n"
      "[USER]\r\nVeloname: JSMITH2\r\nEmailname: grw:prefix\r\n");
  EXPECT_EQ(Lookup(), "3 last@example");
  EXPECT_EQ(Lookup(5), "3 last") << "cut to capacity - 1";
  EXPECT_EQ(address_[5], '#');
  EXPECT_EQ(vl::GetUserMailAddress(handle_, nullptr, address_, sizeof address_), VL_OK);
  EXPECT_STREQ(address_, "last@example");
  kind_ = 0;
  EXPECT_EQ(vl::GetUserMailAddress(handle_, &kind_, nullptr, 0), VL_OK);
  EXPECT_EQ(kind_, 3);

  WriteMailList("[USER]\r\nVeloname: OTHER\r\nEmailname: smtp:other@example.com\r\n");
  EXPECT_EQ(Lookup(), "0 ") << "cleared when no paragraph matches";
}

TEST_F(MailAddressTest, MissingOrUnreadableFileAndArguments) {
  EXPECT_EQ(vl::GetUserMailAddress(handle_, nullptr, nullptr, 10), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: address is NULL");
  const VLHANDLE noUser = vltest::LogOn("");
  EXPECT_EQ(vl::GetUserMailAddress(noUser, &kind_, address_, 10), VL_E_USER_NOT_INIT);
  VlxAPIClosedown(noUser);

  EXPECT_EQ(Lookup(), "0 ");
  WriteMailList("[USER]\r\nVeloname: JSMITH\r\nEmailname: smtp:a.b\r\n");
  os::fault::Inject(os::fault::Op::OpenStream, 1, os::kAccessDenied, true);
  EXPECT_EQ(vl::GetUserMailAddress(handle_, &kind_, address_, 10), VL_E_FILE_ERROR);
}

}  // namespace
