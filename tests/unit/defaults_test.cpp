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
#include "api/vlapi_internal.h"
#include "msg/defaults.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vl::MessageOptions;
using vltest::FaxTree;
using vltest::Reported;
using vltest::Scratch;
using Lines = std::vector<std::string>;

// A USER.INI whose "[OPTIONS]" holds lines; the paragraph after it is not read.
std::string UserIniText(const std::string& lines) {
  return "[VELOMAR]\r\nType: UserIni\r\nRevision: A\r\n\r\n[OPTIONS]\r\n" + lines +
         "\r\n[OTHER]\r\nFrom: not an option\r\nPriority: URGENT\r\n";
}

// "yy-mm-dd " + time for today, as the After rule writes it.
std::string Today(const char* time) {
  const os::LocalTime now = os::Now();
  char text[40];
  std::snprintf(text, sizeof text, "%02d-%02d-%02d %s", now.year % 100, now.month, now.day, time);
  return text;
}

std::string TraceField(VLHANDLE handle) {
  char field[32];
  std::snprintf(field, sizeof field, "S=%.8lx  ", static_cast<unsigned long>(handle));
  return field;
}

class MessageDefaultsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JSMITH");
    tree_.UseAsExplicitAreas();
    handle_ = vltest::LogOn("JSMITH");
    vltest::WriteFile(SystemIni(), "[VELOMAR]\r\n");
    vltest::WriteFile(UserIni(), "[VELOMAR]\r\n");
    Reported::Clear();
  }
  void TearDown() override { VlxAPIClosedown(handle_); }

  std::string SystemIni() const { return tree_.System() + "V-DB\\USER.INI"; }
  std::string UserIni() const { return tree_.Users() + "JSMITH\\V-DB\\USER.INI"; }

  // The defaults loaded into a junk-filled record.
  std::unique_ptr<MessageOptions> Load(VLRESULT expected = VL_OK, uint16_t format = 0) {
    auto options = std::make_unique<MessageOptions>();
    std::memset(static_cast<void*>(options.get()), 0x5A, sizeof *options);
    EXPECT_EQ(vl::LoadMessageDefaults(*vl::SessionFromHandle(handle_), format, options.get()),
              expected)
        << Reported::Last();
    return options;
  }
  VLMSGDEFAULTSEX Record() {
    VLMSGDEFAULTSEX record;
    std::memset(&record, 0x5A, sizeof record);
    EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, sizeof record, &record), VL_OK) << Reported::Last();
    return record;
  }

  Scratch scratch_;
  FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
};

TEST_F(MessageDefaultsTest, FixedValuesWhenNoFileHasOptions) {
  auto o = Load(VL_OK, 4);
  EXPECT_EQ(o->Format, 4);
  EXPECT_STREQ(o->Priority, "NORMAL");
  EXPECT_STREQ(o->Header, "NoToFrDaTi");
  EXPECT_STREQ(o->Quality, "NORMAL");
  for (const char* text : {o->Comment, o->From, o->FromTelephone, o->FromFax, o->FromEmail,
                           o->FromParam, o->Coversheet, o->Letterhead, o->After, o->Chargecode,
                           o->Attach, o->NotifyMail, o->QSMessageID, o->Organisation, o->Custom,
                           o->Documents[0], o->Documents[29]})
    EXPECT_STREQ(text, "");
  EXPECT_EQ(o->Preview, 1);
  for (int32_t flag : {o->Hold, o->DeleteFaxIfOK, o->DeleteFax, o->DeleteSMSIfOK, o->DeleteSMS,
                       o->AbortAfterPreview, o->FaxBroadcast})
    EXPECT_EQ(flag, 0);
  EXPECT_EQ(o->MsgType, 1);
  EXPECT_EQ(o->SentItemsFax, 1);
  EXPECT_EQ(o->SentItemsSMS, 1);
}

TEST_F(MessageDefaultsTest, TextKeysAreCutAndNamesUpperCased) {
  vltest::WriteFile(SystemIni(), UserIniText("from: Jane Smith of the Accounts Department\r\n"
                                             "Telephone: +44 20 7946 0000\r\n"
                                             "Fax: 0123456789012345678901234567890123456789XYZ\r\n"
                                             "Email: js@example.com\r\nFromParam: p1\r\n"
                                             "Coversheet: cover-sheet-long\r\nLetterhead: lh1\r\n"));
  auto o = Load();
  EXPECT_STREQ(o->From, "Jane Smith of the Accounts Dep");
  EXPECT_STREQ(o->FromTelephone, "+44 20 7946 0000");
  EXPECT_STREQ(o->FromFax, "0123456789012345678901234567890123456789");
  EXPECT_STREQ(o->FromEmail, "js@example.com");
  EXPECT_STREQ(o->FromParam, "p1");
  EXPECT_STREQ(o->Coversheet, "COVER-SHEET-");
  EXPECT_STREQ(o->Letterhead, "LH1");
  EXPECT_STREQ(o->Priority, "NORMAL") << "only [OPTIONS] is read";
}

TEST_F(MessageDefaultsTest, PriorityQualityAndHeaderWordsAreKeptReplacedOrRebuilt) {
  const struct {
    const char *priority, *quality, *header;
    const char *wantPriority, *wantQuality, *wantHeader;
  } cases[] = {
      {"URGENT", "HIGH", "DtTiNo", "URGENT", "HIGH", "NoDaTi"},
      {"urgent", "high", "TiDaFrToNo", "BACKGROUND", "DRAFT", "NoToFrDaTi"},
      {"BACKGROUND", "DRAFT", "Fr Da Dt", "BACKGROUND", "DRAFT", "FrDa"},
      {"NORMAL", "NORMAL", "notofrdati", "NORMAL", "NORMAL", ""},
      {"", "", "", "BACKGROUND", "DRAFT", ""},
  };
  for (const auto& c : cases) {
    vltest::WriteFile(UserIni(), UserIniText(std::string("Priority: ") + c.priority +
                                             "\r\nQuality: " + c.quality +
                                             "\r\nHeader: " + c.header + "\r\n"));
    auto o = Load();
    EXPECT_STREQ(o->Priority, c.wantPriority) << c.priority;
    EXPECT_STREQ(o->Quality, c.wantQuality) << c.quality;
    EXPECT_STREQ(o->Header, c.wantHeader) << c.header;
  }
}

TEST_F(MessageDefaultsTest, AfterIsOffPeakOrATimeTodayOrEmpty) {
  const struct {
    const char* value;
    const char* time;  // today at this time; none: literally want
    const char* want;
  } cases[] = {
      {"17:30:00", "17:30:00", nullptr}, {"7:05:09 later", "07:05:09", nullptr},
      {"at23:59:59", "23:59:59", nullptr}, {"25:00:00", nullptr, ""},
      {"12:60:00", nullptr, ""},         {"12:00", nullptr, ""},
      {"offpeak", nullptr, "OFFPEAK"},   {"OffPeakNight 17:30:00", nullptr, "OFFPEAK"},
      {"now 17:30:00", nullptr, ""},     {"", nullptr, ""},
  };
  for (const auto& c : cases) {
    vltest::WriteFile(SystemIni(), UserIniText("After: 10:00:00\r\n"));
    vltest::WriteFile(UserIni(), UserIniText(std::string("After: ") + c.value + "\r\n"));
    const std::string before = c.time ? Today(c.time) : c.want;
    auto o = Load();
    const std::string after = c.time ? Today(c.time) : c.want;
    EXPECT_TRUE(o->After == before || o->After == after) << c.value << " gave " << o->After;
  }
}

TEST_F(MessageDefaultsTest, SentItemsComeFromEachFileAndDeleteFlagsAreNeverCleared) {
  vltest::WriteFile(SystemIni(), UserIniText("SentItemsFax: NO\r\nSentItemsSMS: yes\r\n"
                                             "DeleteSentFax: YES\r\nDeleteSentSMS: no\r\n"));
  auto o = Load();
  EXPECT_EQ(o->SentItemsFax, 0);
  EXPECT_EQ(o->SentItemsSMS, 1);
  EXPECT_EQ(o->DeleteFaxIfOK, 1);
  EXPECT_EQ(o->DeleteSMSIfOK, 0);
  EXPECT_EQ(o->DeleteFax, 0);
  EXPECT_EQ(vl::Process().userSentItemsFax, 0);
  EXPECT_EQ(vl::Process().userSentItemsSMS, 1);

  // A missing key means "keep"; any word but YES means "do not keep".
  vltest::WriteFile(UserIni(), UserIniText("SentItemsSMS: Y\r\nDeleteSentFax: NO\r\n"
                                           "DeleteSentSMS: yes\r\n"));
  o = Load();
  EXPECT_EQ(o->SentItemsFax, 1);
  EXPECT_EQ(o->SentItemsSMS, 0);
  EXPECT_EQ(o->DeleteFaxIfOK, 1);
  EXPECT_EQ(o->DeleteSMSIfOK, 1);
  EXPECT_EQ(vl::Process().userSentItemsFax, 1);
  EXPECT_EQ(vl::Process().userSentItemsSMS, 0);
}

TEST_F(MessageDefaultsTest, TheUsersFileOverridesTheSystemFile) {
  vltest::WriteFile(SystemIni(), UserIniText("From: System Sender\r\nCoversheet: sys\r\n"
                                             "Priority: URGENT\r\nHeader: No\r\n"));
  vltest::WriteFile(UserIni(), UserIniText("From: Jane Smith\r\nHeader: ToFr\r\n"));
  auto o = Load();
  EXPECT_STREQ(o->From, "Jane Smith");
  EXPECT_STREQ(o->Coversheet, "SYS");
  EXPECT_STREQ(o->Priority, "URGENT");
  EXPECT_STREQ(o->Header, "ToFr");
  EXPECT_TRUE(Reported::Texts().empty());
}

TEST_F(MessageDefaultsTest, AFileThatCannotBeOpenedIsReported) {
  std::remove(vltest::NativePath(UserIni()).c_str());
  Load(VL_E_CANNOT_READ_MSG_DEFAULTS);
  EXPECT_EQ(Reported::Texts(), Lines{"Cannot open file " + UserIni()});

  std::remove(vltest::NativePath(SystemIni()).c_str());
  Reported::Clear();
  VLMSGDEFAULTSEX record;
  char text[40];
  EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, sizeof record, &record), VL_E_CANNOT_READ_MSG_DEFAULTS);
  EXPECT_EQ(VlxGetUserCoversheet(handle_, text, sizeof text), VL_E_CANNOT_READ_MSG_DEFAULTS);
  EXPECT_EQ(VlxGetUserFromname(handle_, text, sizeof text), VL_E_CANNOT_READ_MSG_DEFAULTS);
  EXPECT_EQ(Reported::Texts(), Lines(3, "Cannot open file " + SystemIni()))
      << "the user's file is not tried";
}

TEST_F(MessageDefaultsTest, AreasTooLongForThePathOrNoUserAreRefused) {
  const struct {
    std::string system, users, user;
    VLRESULT code;
    std::string report;
  } cases[] = {
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
    std::snprintf(session.systemArea, sizeof session.systemArea, "%s", c.system.c_str());
    std::snprintf(session.userArea, sizeof session.userArea, "%s", c.users.c_str());
    std::snprintf(session.userName, sizeof session.userName, "%s", c.user.c_str());
    Reported::Clear();
    auto options = std::make_unique<MessageOptions>();
    EXPECT_EQ(vl::LoadMessageDefaults(session, 0, options.get()), c.code) << c.report;
    EXPECT_EQ(Reported::Last(), c.report);
  }
}

TEST_F(MessageDefaultsTest, DefaultsRecordGivesTheWordsAsNumbers) {
  vltest::WriteFile(UserIni(), UserIniText("Priority: URGENT\r\nHeader: DtTiNo\r\nQuality: HIGH\r\n"
                                           "After: 17:30:00\r\nFrom: " + std::string(30, 'f') +
                                           "\r\nCoversheet: ninechars\r\nLetterhead: eightchr\r\n"));
  VLMSGDEFAULTSEX r = Record();
  EXPECT_EQ(r.Priority, 3);
  EXPECT_EQ(r.Header, 25);
  EXPECT_EQ(r.Quality, 3);
  EXPECT_EQ(r.SendTime, 3);
  EXPECT_EQ(r.SendYear, 2000 + os::Now().year % 100);
  EXPECT_EQ(r.SendHour, 17);
  EXPECT_EQ(r.SendMinute, 30);
  EXPECT_EQ(r.SendSecond, 0);
  EXPECT_EQ(r.From, std::string(30, 'f'));
  EXPECT_STREQ(r.Coversheet, "") << "9 characters do not fit";
  EXPECT_STREQ(r.Letterhead, "EIGHTCHR");
}

TEST(MessageDefaultsRecord, WordsAreMatchedWithoutCaseAndTwoDigitYearsPivotAt70) {
  const struct {
    const char *priority, *header, *quality, *after;
    uint16_t wantPriority, wantHeader, wantQuality, sendTime, year, month, second;
  } cases[] = {
      {"urgent", "NoToFrDaTi", "draft", "69-12-31 10:00:00", 3, 31, 1, 3, 2069, 12, 0},
      {"Background", "FrTi", "High", "70-01-01 00:00:05", 1, 20, 3, 3, 1970, 1, 5},
      {"NORMAL", "Dt", "NORMAL", "2026-5-1 8:9:10", 2, 0, 2, 3, 2026, 5, 10},
      {"", "", "", "OffPeak", 2, 0, 2, 2, 0, 0, 0},
      {"LOW", "no", "FINE", "", 2, 0, 2, 1, 0, 0, 0},
      {"NORMAL", "To", "NORMAL", "26-05-01", 2, 2, 2, 1, 0, 0, 0},
  };
  for (const auto& c : cases) {
    auto options = std::make_unique<MessageOptions>();
    std::snprintf(options->Priority, sizeof options->Priority, "%s", c.priority);
    std::snprintf(options->Header, sizeof options->Header, "%s", c.header);
    std::snprintf(options->Quality, sizeof options->Quality, "%s", c.quality);
    std::snprintf(options->After, sizeof options->After, "%s", c.after);
    VLMSGDEFAULTSEX r;
    std::memset(&r, 0x5A, sizeof r);
    vl::FillDefaultsRecord(*options, &r);
    EXPECT_EQ(r.Priority, c.wantPriority) << c.priority;
    EXPECT_EQ(r.Header, c.wantHeader) << c.header;
    EXPECT_EQ(r.Quality, c.wantQuality) << c.quality;
    EXPECT_EQ(r.SendTime, c.sendTime) << c.after;
    EXPECT_EQ(r.SendYear, c.year) << c.after;
    EXPECT_EQ(r.SendMonth, c.month) << c.after;
    EXPECT_EQ(r.SendSecond, c.second) << c.after;
  }
}

TEST_F(MessageDefaultsTest, DefaultsRecordSizeArgumentsAndTraces) {
  VLMSGDEFAULTSEX record;
  EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, 71, &record), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, 73, &record), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, 72, nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Texts(),
            (Lines{"VLMSGDEFAULTSEX size invalid", "VLMSGDEFAULTSEX size invalid",
                   "Invalid parameter supplied to API: defaults is NULL"}));
  EXPECT_EQ(VlxGetMsgDefaultsEx(0, 72, &record), VL_E_NOT_INIT);
  const VLHANDLE noUser = vltest::LogOn("");
  EXPECT_EQ(VlxGetMsgDefaultsEx(noUser, 72, &record), VL_E_USER_NOT_INIT);
  VlxAPIClosedown(noUser);

  vltest::TraceInto(scratch_);
  EXPECT_EQ(VlxGetMsgDefaultsEx(handle_, 72, &record), VL_OK);
  const std::string s = TraceField(handle_);
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (Lines{s + "VlxGetMsgDefaultsEx", s + "...VlxGetMsgDefaultsEx - return OK"}));
}

TEST_F(MessageDefaultsTest, CoversheetAndFromnameNeedRoomForTheNul) {
  vltest::WriteFile(SystemIni(), UserIniText("Coversheet: cover1\r\nFrom: J Smith\r\n"));
  using Getter = VLRESULT(VLAPI_CALL*)(VLHANDLE, char*, int16_t);
  const struct {
    Getter getter;
    int16_t bufLen;
    VLRESULT code;
    const char* text;  // none: the buffer is untouched
  } cases[] = {
      {VlxGetUserCoversheet, 6, VL_E_BUFFER_TOO_SMALL, nullptr},
      {VlxGetUserCoversheet, 7, VL_OK, "COVER1"},
      {VlxGetUserFromname, 7, VL_E_BUFFER_TOO_SMALL, nullptr},
      {VlxGetUserFromname, 8, VL_OK, "J Smith"},
      {VlxGetUserFromname, 0, VL_E_BUFFER_TOO_SMALL, nullptr},
      {VlxGetUserFromname, -1, VL_E_BUFFER_TOO_SMALL, nullptr},
  };
  for (const auto& c : cases) {
    char buffer[16];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(c.getter(handle_, buffer, c.bufLen), c.code) << c.bufLen;
    EXPECT_EQ(std::string(buffer, std::strlen(c.text ? c.text : "") + 1),
              c.text ? std::string(c.text) + '\0' : "#")
        << c.bufLen;
  }
  EXPECT_TRUE(Reported::Texts().empty());
  EXPECT_EQ(VlxGetUserCoversheet(handle_, nullptr, 10), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: buffer is NULL");
  EXPECT_EQ(VlxGetUserFromname(0, nullptr, 10), VL_E_NOT_INIT);

  vltest::TraceInto(scratch_);
  char buffer[16];
  ASSERT_EQ(VlxGetUserCoversheet(handle_, buffer, sizeof buffer), VL_OK);
  ASSERT_EQ(VlxGetUserFromname(handle_, buffer, 2), VL_E_BUFFER_TOO_SMALL);
  ASSERT_EQ(VlxGetUserFromname(handle_, buffer, sizeof buffer), VL_OK);
  const std::string s = TraceField(handle_);
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (Lines{s + "VlxGetUserCoversheet", s + "...VlxGetUserCoversheet - return OK",
                   s + "VlxGetUserFromname", s + "VlxGetUserFromname",
                   s + "...VlxGetUserFromname - return OK"}));
}

class MailAddressTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JSMITH");
    tree_.UseAsExplicitAreas();
    handle_ = vltest::LogOn("JSMITH");
    Reported::Clear();
  }
  void TearDown() override {
    os::fault::Clear();
    VlxAPIClosedown(handle_);
  }

  void WriteMailList(const std::string& paragraphs) {
    vltest::WriteFile(tree_.System() + "V-DB\\MAILLIST.INI",
                      "[VELOMAR]\r\nType: MailList\r\nRevision: A\r\n\r\n" + paragraphs);
  }
  // Looks the address up into junk-filled outputs.
  VLRESULT Lookup(int capacity = sizeof address_) {
    kind_ = 0x5A5A;
    std::memset(address_, '#', sizeof address_);
    return vl::GetUserMailAddress(handle_, &kind_, address_, capacity);
  }

  Scratch scratch_;
  FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
  uint16_t kind_ = 0;
  char address_[32] = {};
};

TEST_F(MailAddressTest, ThePrefixGivesTheKind) {
  const struct {
    const char* value;
    uint16_t kind;
    const char* address;
  } cases[] = {
      {"   smtp:   a.b", 2, "a.b"},   {"ex:/o=Org/cn=js", 1, "/o=Org/cn=js"},
      {"NOT: Jane/Org", 3, "Jane/Org"}, {"grw:js.po", 4, "js.po"},
      {"x400:c=gb", 0xFFFF, "x400:c=gb"}, {"", 0xFFFF, ""},
  };
  for (const auto& c : cases) {
    WriteMailList(std::string("[USER]\r\nVeloname: JSMITH\r\nEmailname: ") + c.value + "\r\n");
    ASSERT_EQ(Lookup(), VL_OK) << c.value;
    EXPECT_EQ(kind_, c.kind) << c.value;
    EXPECT_STREQ(address_, c.address) << c.value;
  }
}

TEST_F(MailAddressTest, TheLastMatchingParagraphThatIsNoProfileWins) {
  WriteMailList(
      "[USER]\r\nVeloname: jsmith\r\nEmailname: smtp:first@example.com\r\n\r\n"
      "[USER]\r\nVeloname: OTHER\r\nEmailname: ex:other\r\n\r\n"
      "[USER]\r\nProfile: YES\r\nVeloname: JSMITH\r\nEmailname: ex:profile\r\n\r\n"
      "[USER]\r\nEmailname: not:last@example\r\nVeloname: JSmith\r\nProfile: no\r\n\r\n"
      "[USER]\r\nVeloname: JSMITH2\r\nEmailname: grw:prefix\r\n");
  ASSERT_EQ(Lookup(), VL_OK);
  EXPECT_EQ(kind_, 3);
  EXPECT_STREQ(address_, "last@example");
  ASSERT_EQ(Lookup(5), VL_OK);
  EXPECT_EQ(std::string(address_, 6), std::string("last\0#", 6)) << "cut to capacity - 1";
  EXPECT_EQ(vl::GetUserMailAddress(handle_, nullptr, address_, sizeof address_), VL_OK);
  EXPECT_STREQ(address_, "last@example");
  kind_ = 0;
  EXPECT_EQ(vl::GetUserMailAddress(handle_, &kind_, nullptr, 0), VL_OK);
  EXPECT_EQ(kind_, 3);

  WriteMailList("[USER]\r\nVeloname: OTHER\r\nEmailname: smtp:other@example.com\r\n");
  ASSERT_EQ(Lookup(), VL_OK);
  EXPECT_EQ(kind_, 0) << "cleared when no paragraph matches";
  EXPECT_STREQ(address_, "");
}

TEST_F(MailAddressTest, MissingOrUnreadableFileAndArguments) {
  ASSERT_EQ(Lookup(), VL_OK);
  EXPECT_EQ(kind_, 0);
  EXPECT_STREQ(address_, "");

  WriteMailList("[USER]\r\nVeloname: JSMITH\r\nEmailname: smtp:a.b\r\n");
  os::fault::Inject(os::fault::Op::OpenStream, 1, os::kAccessDenied, true);
  EXPECT_EQ(Lookup(), VL_E_FILE_ERROR);
  os::fault::Clear();

  EXPECT_EQ(vl::GetUserMailAddress(handle_, nullptr, nullptr, 10), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: address is NULL");
  EXPECT_EQ(vl::GetUserMailAddress(0, &kind_, address_, 10), VL_E_NOT_INIT);
  const VLHANDLE noUser = vltest::LogOn("");
  EXPECT_EQ(vl::GetUserMailAddress(noUser, &kind_, address_, 10), VL_E_USER_NOT_INIT);
  VlxAPIClosedown(noUser);
}

}  // namespace
