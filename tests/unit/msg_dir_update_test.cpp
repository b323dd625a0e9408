// Changing message directory files: entries added and removed, the list
// reset, a message marked as read, and the change notifications.
#include <gtest/gtest.h>

#include "api/session.h"
#include "api/vlapi_internal.h"
#include "msg/msg_dir.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/message_files.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/test_support.h"
#include "tests/support/user_fixture.h"
#include "vlapi.h"

namespace {

using vltest::FaxTree;
using vltest::ListEntry;
using vltest::Reported;
using vltest::Scratch;

class MsgDirUpdateTest : public vltest::JsmithTest {
 protected:
  void SetUp() override {
    JsmithTest::SetUp();
    session_ = vl::SessionFromHandle(handle_).get();
  }
  std::string List() const { return Out() + "MSGDIR.CTL"; }
  static std::string Entries(const std::vector<ListEntry>& entries) {
    std::string text = vltest::ListHeader();
    for (const ListEntry& e : entries) text += vltest::ListEntryText(e);
    return text;
  }

  const vl::ApiSession* session_ = nullptr;
};

const ListEntry kWaiting{"A.TXT", "Su"};
const ListEntry kSent{"B.TIF", "OK"};
const ListEntry kFailed{"C.TXT", "Fa"};
const ListEntry kPreviewed{"D.TXT", "OK", "Aw", "PREVIEW"};

TEST_F(MsgDirUpdateTest, NewEntriesAreAppendedLineByLine) {
  vltest::WriteFile(List(), vltest::ListHeader());
  vl::NewEntry sms{"MSG1", "hello", "the subject", 2, 3, "Org", "custom"};
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &sms), VL_OK);
  vl::NewEntry fax{"~FAXA000", nullptr, nullptr, 50, 2, nullptr, nullptr};
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &fax), VL_OK);
  EXPECT_EQ(vltest::ReadFile(List()),
            vltest::ListHeader() +
                "\r\n[DOCUMENT]\r\nFile: MSG1.TXT\r\nComment: hello\r\nOrganisation: Org\r\n"
                "[MESSAGE]\r\nAssocFile:\r\nFormat: ASCII\r\nAccepted: 00-00-00 00:00:00\r\n"
                "Type: SEND\r\nStatus: Su\r\nUserStatus: Aw\r\nSubject: the subject\r\n"
                "MsgType: SMS\r\nCustom: custom\r\n"
                "\r\n[DOCUMENT]\r\nFile: ~FAXA000.TIF\r\nComment: (submitted from API)\r\n"
                "Organisation: \r\n[MESSAGE]\r\nAssocFile:\r\nFormat: TIFF-UNCOMPRESSED\r\n"
                "Accepted: 00-00-00 00:00:00\r\nType: SEND\r\nStatus: Su\r\nUserStatus: Aw\r\n"
                "Subject: \r\nMsgType: FAX\r\nCustom: \r\n");
  // The new entry reads back as written.
  VLMSGINFOEX info;
  ASSERT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "MSG1", sizeof info, &info), VL_OK);
  EXPECT_EQ(info.Status, 1);
  EXPECT_EQ(info.UserStatus, 2);
  EXPECT_EQ(info.MsgType, 3);
  EXPECT_STREQ(info.Subject, "the subject");
}

TEST_F(MsgDirUpdateTest, OnlyCompletedEntriesAreRemovedAndTheRestStaysByteForByte) {
  const std::string all = Entries({kWaiting, kSent, kFailed, kPreviewed});
  vltest::WriteFile(List(), all);
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "B", nullptr), VL_OK);
  EXPECT_EQ(vltest::ReadFile(List()), Entries({kWaiting, kFailed, kPreviewed}));
  // The last entry: the empty line before its [DOCUMENT] line stays.
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "d", nullptr), VL_OK);
  EXPECT_EQ(vltest::ReadFile(List()), Entries({kWaiting, kFailed}) + "\r\n");

  const std::string before = vltest::ReadFile(List());
  EXPECT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "A", nullptr), VL_E_MSG_NOT_COMPLETED);
  EXPECT_EQ(Reported::Last(), "Message A not completed");
  EXPECT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "X", nullptr), VL_E_MSG_UNKNOWN);
  EXPECT_EQ(Reported::Last(), "Message X not found");
  EXPECT_EQ(vltest::ReadFile(List()), before);

  vl::NewEntry add{"E", "e", "", 2, 1, "", ""};
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "C", &add), VL_OK);
  std::string expected = Entries({kWaiting});
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "C", nullptr), VL_E_MSG_UNKNOWN);
  EXPECT_EQ(vltest::ReadFile(List()).substr(0, expected.size()), expected);
  EXPECT_FALSE(vltest::FileExists(Out() + "MSGDIR.TMP"));
}

TEST_F(MsgDirUpdateTest, AMissingListCannotBeUpdated) {
  vl::NewEntry add{"E", "e", "", 2, 1, "", ""};
  EXPECT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &add), VL_E_INFO_FILE_OPEN_ERROR);
  EXPECT_EQ(Reported::Last(), "Error opening file " + List());
  EXPECT_FALSE(vltest::FileExists(List()));
}

TEST_F(MsgDirUpdateTest, AFaultAnywhereLeavesTheOldOrTheNewList) {
  const std::string before = Entries({kWaiting, kSent, kFailed});
  vl::NewEntry add{"E", "e", "s", 2, 1, "o", "c"};
  std::string after;
  for (int n = 1;; ++n) {
    vltest::WriteFile(List(), before);
    os::fault::Inject(os::fault::Op::Any, n, os::kDiskFull);
    VLRESULT rc = vl::MsgDirUpdate(*session_, VL_DIR_OUT, "B", &add);
    const int calls = os::fault::Calls(os::fault::Op::Any);
    os::fault::Clear();
    const std::string now = vltest::ReadFile(List());
    if (n == 1 && rc == VL_OK) after = now;
    if (rc == VL_OK) EXPECT_NE(now, before) << "fault at call " << n;
    else EXPECT_EQ(now, before) << "fault at call " << n << " gave " << std::hex << rc;
    EXPECT_FALSE(vltest::FileExists(Out() + "MSGDIR.TMP")) << "fault at call " << n;
    if (calls < n) {
      EXPECT_EQ(rc, VL_OK);
      EXPECT_EQ(now, Entries({kWaiting, kFailed}) +
                         vltest::ReadFile(List()).substr(Entries({kWaiting, kFailed}).size()));
      break;
    }
  }
}

TEST_F(MsgDirUpdateTest, ResetLeavesTheHeaderOnly) {
  vltest::WriteFile(List(), Entries({kWaiting, kSent}));
  ASSERT_EQ(vl::MsgDirReset(*session_, VL_DIR_OUT), VL_OK);
  EXPECT_EQ(vltest::ReadFile(List()), "[VELOMAR]\r\nType: SendDir\r\nRevision: A\r\n");
  const std::string in = tree_.Users() + "JSMITH\\V-IN\\MSGDIR.CTL";
  ASSERT_EQ(vl::MsgDirReset(*session_, VL_DIR_IN), VL_OK);  // created when absent
  EXPECT_EQ(vltest::ReadFile(in), "[VELOMAR]\r\nType: ReceiveDir\r\nRevision: A\r\n");
  EXPECT_EQ(vltest::ListDirectory(Out()), std::vector<std::string>{"MSGDIR.CTL"});
}

TEST_F(MsgDirUpdateTest, MarkingAsReadWritesOverTheTwoLettersOnly) {
  vltest::ServerStandIn server(tree_.Request());
  ListEntry ten{"MSG10.TXT"}, one{"MSG1.TXT"};
  vltest::WriteFile(List(), Entries({ten, one}));
  ASSERT_EQ(VlxMarkMsgAsRead(handle_, VL_DIR_OUT, "MSG1"), VL_OK) << Reported::Last();
  ten.userStatus = "OK";  // the name is matched as a prefix: MSG10 comes first
  EXPECT_EQ(vltest::ReadFile(List()), Entries({ten, one}));

  EXPECT_EQ(VlxMarkMsgAsRead(handle_, VL_DIR_OUT, "msgdir"), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Message name msgdir not valid");
  EXPECT_EQ(VlxMarkMsgAsRead(handle_, VL_DIR_OUT, "ZZ"), VL_E_FILE_ERROR);
  EXPECT_EQ(Reported::Last(), "Unable to mark message 'ZZ' as read");
  vltest::WriteFile(List(), vltest::ListHeader() +
                                "\r\n[DOCUMENT]\r\nFile: Q.TXT\r\n[MESSAGE]\r\nStatus: OK\r\n"
                                "UserStatus:\r\n");
  EXPECT_EQ(VlxMarkMsgAsRead(handle_, VL_DIR_OUT, "Q"), VL_E_INFO_FILE_INVALID);

  server.Stop();
  EXPECT_EQ(VlxMarkMsgAsRead(handle_, 7, ""), VL_E_SERVER_NOT_RUNNING);  // before the arguments
}

TEST_F(MsgDirUpdateTest, AListThatDoesNotReadIsNeverChanged) {
  vltest::ServerStandIn server(tree_.Request());
  // The first entry has no [MESSAGE]: it must not take the next entry's.
  const std::string list = vltest::ListHeader() + "\r\n[DOCUMENT]\r\nFile: A.TXT\r\nComment: a\r\n" +
                           vltest::ListEntryText(kSent);
  vltest::WriteFile(List(), list);
  int16_t count = -1;
  VLMSGINFOEX info;
  EXPECT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 1, &count, sizeof info, &info), VL_E_INFO_FILE_INVALID);
  EXPECT_EQ(count, 0);
  EXPECT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "B", sizeof info, &info), VL_OK);
  const vl::NewEntry add{"E", "e", "", 2, 1, "", ""};
  const struct {
    const char* call;
    VLRESULT rc;
  } calls[] = {
      {"VlxDeleteMsg", VlxDeleteMsg(handle_, VL_DIR_OUT, "B", 0)},
      {"MsgDirUpdate", vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &add)},
      {"VlxMarkMsgAsRead", VlxMarkMsgAsRead(handle_, VL_DIR_OUT, "B")},
  };
  for (const auto& c : calls) EXPECT_EQ(c.rc, VL_E_INFO_FILE_INVALID) << c.call;
  // The listing, then each call, reports the list's own text.
  EXPECT_EQ(Reported::Texts(), (std::vector<std::string>{
                                   "[MESSAGE] paragraph missing", "[MESSAGE] paragraph missing",
                                   "[MESSAGE] paragraph missing", "[MESSAGE] paragraph missing",
                                   "Unable to mark message 'B' as read"}));
  EXPECT_EQ(vltest::ReadFile(List()), list);
}

TEST_F(MsgDirUpdateTest, MarkingSkipsExactlyTheBytesTheReaderBlanks) {
  vltest::ServerStandIn server(tree_.Request());
  const struct {
    std::string before, after;
    VLRESULT rc;
  } cases[] = {
      {"UserStatus:\x0b" "Aw", "UserStatus:\x0bOK", VL_OK},
      {"userstatus: \t\x01\r" "Aw  ", "userstatus: \t\x01\rOK  ", VL_OK},
      {"UserStatus: A", "UserStatus: A", VL_E_INFO_FILE_INVALID},
      {"UserStatus: \r", "UserStatus: \r", VL_E_INFO_FILE_INVALID},
  };
  for (const auto& c : cases) {
    auto text = [&](const std::string& line) {
      return vltest::ListHeader() + "\r\n[DOCUMENT]\r\nFile: Q.TXT\r\nComment: q\r\n[MESSAGE]\r\n" +
             "Accepted: 00-00-00 00:00:00\r\nType: SEND\r\nStatus: OK\r\n" + line + "\n[X]\r\n";
    };
    vltest::WriteFile(List(), text(c.before));
    EXPECT_EQ(VlxMarkMsgAsRead(handle_, VL_DIR_OUT, "Q"), c.rc) << c.before;
    EXPECT_EQ(vltest::ReadFile(List()), text(c.after));
  }
}

TEST_F(MsgDirUpdateTest, EntryTextsCannotBreakTheirLines) {
  vltest::WriteFile(List(), vltest::ListHeader());
  const vl::NewEntry add{"E", "c\n", "s\r\n[DOCUMENT]", 2, 1, "\x7fo", "x\ty"};
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &add), VL_OK);
  EXPECT_EQ(vltest::ReadFile(List()),
            vltest::ListHeader() +
                "\r\n[DOCUMENT]\r\nFile: E.TXT\r\nComment: c \r\nOrganisation:  o\r\n"
                "[MESSAGE]\r\nAssocFile:\r\nFormat: ASCII\r\nAccepted: 00-00-00 00:00:00\r\n"
                "Type: SEND\r\nStatus: Su\r\nUserStatus: Aw\r\nSubject: s  [DOCUMENT]\r\n"
                "MsgType: FAX\r\nCustom: x y\r\n");
  int16_t count = -1;
  VLMSGINFOEX info;
  EXPECT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 1, &count, sizeof info, &info), VL_OK);
  EXPECT_EQ(count, 1);
}

TEST_F(MsgDirUpdateTest, ChangesAreAnnouncedInTheInDirectory) {
  const std::string inList = tree_.Users() + "JSMITH\\V-IN\\MSGDIR.CTL";
  vltest::WriteFile(inList, vltest::ListHeader(false));
  const int64_t old = os::SecondsSince1970() - 1000;
  ASSERT_EQ(os::SetModifiedTime(inList.c_str(), old), os::kOk);
  vltest::WriteFile(List(), vltest::ListHeader());
  vl::NewEntry add{"E", "e", "", 2, 1, "", ""};
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &add), VL_OK);
  os::FileInfo info;
  ASSERT_EQ(os::GetFileInfo(inList.c_str(), &info), os::kOk);
  EXPECT_GE(info.modified, old + 900) << "the in list is touched";

  // A group's in directory gets a change file, moved on by 10 seconds a change.
  const std::string change = scratch_.Path("MSGCHG.CTL");
  vl::NotifyGroupChange(*session_, false, "@SALES", scratch_.Dir().c_str());
  EXPECT_EQ(vltest::ReadFile(change), "[VELOMAR]\r\nType: ReceiveChange\r\nRevision: A\r\n\r\n");
  const int64_t ahead = os::SecondsSince1970() + 100;
  ASSERT_EQ(os::SetModifiedTime(change.c_str(), ahead), os::kOk);
  vl::NotifyGroupChange(*session_, true, "@SALES", scratch_.Dir().c_str());
  ASSERT_EQ(os::GetFileInfo(change.c_str(), &info), os::kOk);
  EXPECT_EQ(info.modified, ahead + 10);
  EXPECT_TRUE(vltest::FileExists(scratch_.Path("MSGNEW.CTL")));
}

}  // namespace
