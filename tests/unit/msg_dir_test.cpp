// Message directory files: listing and looking up messages; entries added
// and removed, the list reset, a message marked as read and the change
// notifications; random lists that must never do harm.
#include <gtest/gtest.h>

#include <cstring>
#include <random>
#include <vector>

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

using vltest::ListEntry;
using vltest::Reported;
using Ints = std::vector<int>;
using Lines = std::vector<std::string>;

class MsgDirTest : public vltest::JsmithTest {
 protected:
  void SetUp() override {
    JsmithTest::SetUp();
    session_ = vl::SessionFromHandle(handle_).get();
  }
  std::string List() const { return Out() + "MSGDIR.CTL"; }
  // A list of the out (or in) directory holding the entries.
  static std::string Entries(const std::vector<ListEntry>& entries, bool out = true) {
    std::string text = vltest::ListHeader(out);
    for (const ListEntry& e : entries) text += vltest::ListEntryText(e);
    return text;
  }
  void WriteList(const std::string& directory, const std::vector<ListEntry>& entries) {
    vltest::WriteFile(directory + "MSGDIR.CTL", Entries(entries, directory == Out()));
  }
  VLMSGINFOEX Info(const char* body, uint16_t directory = VL_DIR_OUT) {
    VLMSGINFOEX info;
    std::memset(&info, 0x5A, sizeof info);
    EXPECT_EQ(VlxGetMsgInfoEx(handle_, directory, body, sizeof info, &info), VL_OK)
        << body << ": " << Reported::Last();
    return info;
  }

  const vl::ApiSession* session_ = nullptr;
};
using MsgDirUpdateTest = MsgDirTest;

TEST_F(MsgDirTest, EntriesFillTheWholeRecord) {
  WriteList(Out(), {ListEntry{"msg1.txt", "Se", "Wa", "SEND", "79-12-31 23:59:58",
                              "MsgType: sms\r\nCustom: custom text\r\n"}});
  const VLMSGINFOEX i = Info("MSG1");
  EXPECT_EQ((Lines{i.Body, i.Comment, i.Subject, i.Organisation, i.Custom}),
            (Lines{"MSG1", "comment of msg1", "subject of msg1", "Org msg1", "custom text"}));
  EXPECT_EQ((Ints{i.Status, i.UserStatus, i.MsgType, i.AcceptedYear, i.AcceptedMonth,
                  i.AcceptedDay, i.AcceptedHour, i.AcceptedMinute, i.AcceptedSecond}),
            (Ints{8, 3, 3, 2079, 12, 31, 23, 59, 58}));
}

TEST_F(MsgDirTest, WordsBecomeNumbersByTheirTables) {
  const std::string a = "26-11-21 10:20:30";
  const struct {
    ListEntry entry;
    Ints want;  // status, user status, message type, year, month, hour
  } cases[] = {
      {{"A.TXT", "OK", "OK", "PREVIEW"}, {32, 1, 1, 2026, 11, 10}},
      {{"A.TXT", "fa", "aw", "preview"}, {33, 2, 1, 2026, 11, 10}},
      {{"A.TXT", "OK", "Aw", "SEND"}, {30, 2, 1, 2026, 11, 10}},
      {{"A.TXT", "XY", "Zz", "SEND"}, {0, 0, 1, 2026, 11, 10}},
      {{"A.TXT", "Ad", "Aw", "SEND", "80-01-01 00:00:00"}, {1, 2, 1, 1980, 1, 0}},
      {{"A.TXT", "Sr", "Aw", "SEND", "00-00-00 00:00:00"}, {13, 2, 1, 0, 0, 0}},
      {{"A.TXT", "Ar", "Aw", "SEND", "26-13-01 24:00:00"}, {14, 2, 1, 0, 0, 0}},
      {{"A.TXT", "WD", "Aw", "SEND", a, "MsgType: Er\r\n"}, {12, 2, 2, 2026, 11, 10}},
      {{"A.TXT", "He", "Aw", "SEND", a, "MsgType: LAN\r\n"}, {2, 2, 2, 2026, 11, 10}},
      {{"A.TXT", "Wa", "Aw", "SEND", a, "MsgType: In\r\n"}, {4, 2, 13, 2026, 11, 10}},
      {{"A.TXT", "Co", "Aw", "SEND", a, "MsgType: Telex\r\n"}, {7, 2, 1, 2026, 11, 10}},
  };
  for (const auto& c : cases) {
    WriteList(Out(), {c.entry});
    const VLMSGINFOEX i = Info("A");
    EXPECT_EQ((Ints{i.Status, i.UserStatus, i.MsgType, i.AcceptedYear, i.AcceptedMonth,
                    i.AcceptedHour}),
              c.want)
        << c.entry.status << "/" << c.entry.type << "/" << c.entry.extra;
  }
}

TEST_F(MsgDirTest, SmallerRecordsLeaveTheFieldsTheyDoNotFillAlone) {
  WriteList(Out(), {ListEntry{"A.TXT", "OK", "Aw", "SEND", "99-01-01 10:11:12"},
                    ListEntry{"B.TXT", "OK", "Aw", "SEND", "79"}});
  for (uint16_t size : {160, 260}) {
    VLMSGINFOEX info;
    std::memset(&info, 0x5A, sizeof info);
    ASSERT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "A", size, &info), VL_OK);
    EXPECT_EQ((Ints{info.UserStatus, info.MsgType, info.AcceptedSecond}),
              (Ints{2, 0x5A5A, 0x5A5A}))
        << size;
  }
  // A date that ends early leaves both date and time at zero.
  VLMSGINFOEX b = Info("B");
  EXPECT_EQ(b.AcceptedYear + b.AcceptedHour + b.AcceptedMinute + b.AcceptedSecond, 0);
}

TEST_F(MsgDirTest, LinesOfAParagraphMayComeInAnyOrderAndCase) {
  vltest::WriteFile(List(),
                    vltest::ListHeader() +
                        "\r\n[document]\r\ncomment: reordered\r\nfile: B.TIF\r\n"
                        "[Message]\r\nstatus: OK\r\nSubject: first\r\nSubject: second\r\n"
                        "userstatus: OK\r\ntype: SEND\r\naccepted: 26-01-02 03:04:05\r\n");
  VLMSGINFOEX info = Info("b");
  EXPECT_EQ((Ints{info.Status, info.AcceptedDay}), (Ints{30, 2}));
  EXPECT_EQ((Lines{info.Comment, info.Subject}), (Lines{"reordered", "first"}));
}

TEST_F(MsgDirTest, ListsPlaceRecordsAFullRecordApartAndCountEveryEntry) {
  std::vector<ListEntry> entries;
  for (const char* name : {"M1.TXT", "M2.TIF", "M3.PDF", "M4.TXT", "M5.TXT"})
    entries.push_back(ListEntry{name});
  WriteList(Out(), entries);
  std::vector<VLMSGINFOEX> records(5);
  std::memset(records.data(), 0x5A, records.size() * sizeof records[0]);
  int16_t count = -1;
  ASSERT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 3, &count, 116, records.data()), VL_OK);
  EXPECT_EQ(count, 5);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(records[i].Body, "M" + std::to_string(i + 1));
    EXPECT_EQ(records[i].UserStatus, 2);
    EXPECT_EQ(records[i].MsgType, 0x5A5A) << "not filled below the full size";
  }
  EXPECT_EQ(records[3].Status, 0x5A5A) << "beyond MaxEntries nothing is stored";

  count = -1;
  ASSERT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 0, &count, 272, nullptr), VL_OK);
  EXPECT_EQ(count, 5);

  std::vector<VLMSGINFO> old(2);
  ASSERT_EQ(VlxGetMsgList(handle_, VL_DIR_OUT, 2, &count, old.data()), VL_OK);
  EXPECT_EQ(count, 5);
  EXPECT_EQ((Lines{old[1].Body, old[1].Comment}), (Lines{"M2", "comment of M2"}));
  EXPECT_EQ(old[1].Status, 1);
}

TEST_F(MsgDirTest, AMalformedEntryStopsTheListWithTheCountSoFar) {
  // Each bad entry follows a good one and stands before another: an entry
  // never takes a paragraph of the next one.
  const std::string file = "[DOCUMENT] File: line missing or invalid";
  const std::string message = "File: X.TXT\r\nComment: c\r\n[MESSAGE]\r\n";
  const std::pair<std::string, std::string> cases[] = {
      {"Comment: c\r\n", file},           {"File: NOEXT\r\nComment: c\r\n", file},
      {"File: .TXT\r\nComment: c\r\n", file}, {"File: NINECHARS.TXT\r\n", file},
      {"File: C:X.TXT\r\n", file},        {"File: A.B:C.TXT\r\n", file},
      {"File: A*B.TXT\r\n", file},        {"File: msgdir.TXT\r\n", file},
      {"File: X.TXT\r\n", "[DOCUMENT] Comment: line missing or invalid"},
      {"File: X.TXT\r\nComment: c\r\n[OTHER]\r\n", "[MESSAGE] paragraph missing"},
      {message + "Type: SEND\r\n", "[MESSAGE] Accepted: line missing or invalid"},
      {message + "Accepted: x\r\n", "[MESSAGE] Type: line missing or invalid"},
      {message + "Accepted: x\r\nType: SEND\r\nStatus: O\r\n",
       "[MESSAGE] Status: line missing or invalid"},
      {message + "Accepted: x\r\nType: SEND\r\nStatus: OK\r\nUserStatus: OKK\r\n",
       "[MESSAGE] UserStatus: line missing or invalid"},
  };
  for (const auto& [bad, report] : cases) {
    vltest::WriteFile(List(),
                      vltest::ListHeader() + vltest::ListEntryText(ListEntry{"GOOD.TXT"}) +
                          "\r\n[DOCUMENT]\r\n" + bad +
                          vltest::ListEntryText(ListEntry{"LAST.TXT"}));
    Reported::Clear();
    VLMSGINFOEX records[4];
    int16_t count = -1;
    EXPECT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 4, &count, 272, records),
              VL_E_INFO_FILE_INVALID)
        << report;
    EXPECT_EQ(count, 1) << report;
    EXPECT_EQ(Reported::Texts(), Lines{report});
  }
}

TEST_F(MsgDirTest, ArgumentsAndMissingMessages) {
  WriteList(Out(), {ListEntry{"MSG1.TXT"}});
  VLMSGINFOEX info;
  int16_t count = 0;
  const VLRESULT codes[] = {
      VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "MSG1", 100, &info),
      VlxGetMsgListEx(handle_, VL_DIR_OUT, 1, &count, 273, &info),
      VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "", 272, &info),
      VlxGetMsgInfoEx(handle_, 3, "MSG1", 272, &info),
      VlxGetMsgListEx(handle_, 0, 1, &count, 272, &info),
  };
  EXPECT_EQ(Ints(std::begin(codes), std::end(codes)), Ints(5, VL_E_INVALID_PARAM));
  EXPECT_EQ(Reported::Texts(),
            (Lines{"VLMSGINFOEX size invalid", "VLMSGINFOEX size invalid", "Body name invalid",
                   "Message directory parameter invalid", "Message directory parameter invalid"}));

  EXPECT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "MSG2", 272, &info), VL_E_MSG_UNKNOWN);
  Reported::Clear();
  EXPECT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_IN, "MSG1", 272, &info), VL_E_INFO_FILE_OPEN_ERROR);
  EXPECT_EQ(Reported::Last(), "Unable to open file " + In() + "MSGDIR.CTL");

  VLMSGINFO old;
  std::memset(&old, 0x5A, sizeof old);
  EXPECT_EQ(VlxGetMsgInfo(handle_, VL_DIR_OUT, "MSG2", &old), VL_E_MSG_UNKNOWN);
  EXPECT_EQ(old.Status, 0) << "copied whatever the result";
  EXPECT_EQ(VlxGetMsgInfo(handle_, VL_DIR_OUT, "msg1", &old), VL_OK);
  EXPECT_STREQ(old.Body, "MSG1");
}

TEST_F(MsgDirTest, GroupUsersHaveNoOutList) {
  vltest::MakeDirectories(tree_.Users() + "@SALES\\V-DB");
  VLHANDLE group = vltest::LogOn("@SALES");
  int16_t count = 77;
  VLMSGINFOEX info;
  EXPECT_EQ(VlxGetMsgListEx(group, VL_DIR_OUT, 1, &count, 272, &info), VL_OK);
  EXPECT_EQ(count, 77);
  VLMSGINFO old[2];
  std::memset(old, 0x5A, sizeof old);
  count = 2;
  EXPECT_EQ(VlxGetMsgList(group, VL_DIR_OUT, 2, &count, old), VL_OK);
  EXPECT_STREQ(old[1].Body, "") << "nothing read is nothing copied";
  VlxAPIClosedown(group);
}

TEST_F(MsgDirTest, NewMessagesAreReportedWhenTheListChanges) {
  WriteList(In(), {ListEntry{"IN1.TXT"}});
  const std::string list = In() + "MSGDIR.CTL";
  uint16_t isNew = 9;
  ASSERT_EQ(VlxCheckNewMsgStatus(handle_, VL_DIR_IN, &isNew), VL_OK);
  EXPECT_EQ(isNew, 1);
  ASSERT_EQ(VlxCheckNewMsgStatus(handle_, VL_DIR_IN, &isNew), VL_OK);
  EXPECT_EQ(isNew, 0);
  ASSERT_EQ(os::SetModifiedTime(list.c_str(), os::SecondsSince1970() - 100), os::kOk);
  ASSERT_EQ(VlxCheckNewMsgStatus(handle_, VL_DIR_IN, &isNew), VL_OK);
  EXPECT_EQ(isNew, 1);
  // A null flag clears the memory: the next poll says "new".
  ASSERT_EQ(VlxCheckNewMsgStatus(handle_, VL_DIR_IN, nullptr), VL_OK);
  ASSERT_EQ(VlxCheckNewMsgStatus(handle_, VL_DIR_IN, &isNew), VL_OK);
  EXPECT_EQ(isNew, 1);
  EXPECT_EQ(VlxCheckNewMsgStatus(handle_, VL_DIR_OUT, &isNew), VL_E_INFO_FILE_ERROR);
  EXPECT_EQ(Reported::Last(), "Unable to access file " + List());
}

TEST_F(MsgDirTest, DocumentsComeFromTheControlFile) {
  vltest::WriteFile(Out() + "MSG1.CTL",
                    "[OPTIONS]\r\nAttach: a.doc\r\ndocument: first.tif\r\nAttach: b.doc\r\n"
                    "Document:  second.tif\r\n");
  std::vector<char> documents(30 * 1024, '#'), attachments(30 * 1024, '#');
  VLMSGINFOEX info;
  std::memset(&info, 0, sizeof info);
  std::strcpy(info.Body, "MSG1");
  ASSERT_EQ(VlxGetDocuments(handle_, &info, documents.data(), attachments.data()), VL_OK);
  EXPECT_STREQ(documents.data(), "second.tif");  // the last line wins
  EXPECT_STREQ(attachments.data(), "b.doc");
  for (int slot = 1; slot < 30; ++slot) {
    EXPECT_EQ(documents[slot * 1024], '\0');
    EXPECT_EQ(attachments[slot * 1024], '\0');
  }
  std::strcpy(info.Body, "MSG2");
  EXPECT_EQ(VlxGetDocuments(handle_, &info, documents.data(), attachments.data()),
            VL_E_INFO_FILE_OPEN_ERROR);
  EXPECT_EQ(VlxGetDocuments(handle_, nullptr, documents.data(), attachments.data()),
            VL_E_INVALID_PARAM);
}

const ListEntry kWaiting{"A.TXT", "Su"};
const ListEntry kSent{"B.TIF", "OK"};
const ListEntry kFailed{"C.TXT", "Fa"};
const ListEntry kPreviewed{"D.TXT", "OK", "Aw", "PREVIEW"};
const vl::NewEntry kAdd{"E", "e", "", 2, 1, "", ""};

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

  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "C", &kAdd), VL_OK);
  std::string expected = Entries({kWaiting});
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "C", nullptr), VL_E_MSG_UNKNOWN);
  EXPECT_EQ(vltest::ReadFile(List()).substr(0, expected.size()), expected);
  EXPECT_FALSE(vltest::FileExists(Out() + "MSGDIR.TMP"));
}

TEST_F(MsgDirUpdateTest, AMissingListCannotBeUpdated) {
  EXPECT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &kAdd), VL_E_INFO_FILE_OPEN_ERROR);
  EXPECT_EQ(Reported::Last(), "Error opening file " + List());
  EXPECT_FALSE(vltest::FileExists(List()));
}

TEST_F(MsgDirUpdateTest, AFaultAnywhereLeavesTheOldOrTheNewList) {
  const std::string before = Entries({kWaiting, kSent, kFailed});
  vl::NewEntry add{"E", "e", "s", 2, 1, "o", "c"};
  for (int n = 1;; ++n) {
    vltest::WriteFile(List(), before);
    os::fault::Inject(os::fault::Op::Any, n, os::kDiskFull);
    VLRESULT rc = vl::MsgDirUpdate(*session_, VL_DIR_OUT, "B", &add);
    const int calls = os::fault::Calls(os::fault::Op::Any);
    os::fault::Clear();
    const std::string now = vltest::ReadFile(List());
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
  ASSERT_EQ(vl::MsgDirReset(*session_, VL_DIR_IN), VL_OK);  // created when absent
  EXPECT_EQ(vltest::ReadFile(In() + "MSGDIR.CTL"), vltest::ListHeader(false));
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
  const std::string list = vltest::ListHeader() +
                           "\r\n[DOCUMENT]\r\nFile: A.TXT\r\nComment: a\r\n" +
                           vltest::ListEntryText(kSent);
  vltest::WriteFile(List(), list);
  VLMSGINFOEX info;
  EXPECT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "B", sizeof info, &info), VL_OK);  // A passed over
  const struct {
    const char* call;
    VLRESULT rc;
  } calls[] = {
      {"VlxDeleteMsg", VlxDeleteMsg(handle_, VL_DIR_OUT, "B", 0)},
      {"MsgDirUpdate", vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &kAdd)},
      {"VlxMarkMsgAsRead", VlxMarkMsgAsRead(handle_, VL_DIR_OUT, "B")},
  };
  for (const auto& c : calls) EXPECT_EQ(c.rc, VL_E_INFO_FILE_INVALID) << c.call;
  // Each call reports the list's own text.
  EXPECT_EQ(Reported::Texts(), (std::vector<std::string>{
                                   "[MESSAGE] paragraph missing", "[MESSAGE] paragraph missing",
                                   "[MESSAGE] paragraph missing",
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
}

TEST_F(MsgDirUpdateTest, ChangesAreAnnouncedInTheInDirectory) {
  const std::string inList = In() + "MSGDIR.CTL";
  vltest::WriteFile(inList, vltest::ListHeader(false));
  const int64_t old = os::SecondsSince1970() - 1000;
  ASSERT_EQ(os::SetModifiedTime(inList.c_str(), old), os::kOk);
  vltest::WriteFile(List(), vltest::ListHeader());
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &kAdd), VL_OK);
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

std::string RandomList(std::mt19937& random) {
  static const char* const pieces[] = {
      "[DOCUMENT]", "[MESSAGE]", "File: A.TXT", "File: B", "File: \\x.y", "Comment: c",
      "Accepted: 79-12-31 23:59:59", "Accepted: 1-2", "Type: PREVIEW", "Status: OK",
      "Status: Se", "Status: X", "UserStatus: Aw", "UserStatus:", "MsgType: Er", "Subject:",
      "\r\n", "\n", "\r", ":", "=", "[", " "};
  std::string text;
  const int parts = static_cast<int>(random() % 120);
  for (int i = 0; i < parts; ++i) {
    switch (random() % 5) {
      case 0: text.push_back(static_cast<char>(random() % 256)); break;
      case 1: text.append(random() % 500, static_cast<char>('A' + random() % 26)); break;
      default: text += pieces[random() % (sizeof pieces / sizeof pieces[0])]; text += "\r\n";
    }
  }
  return text;
}

// Arbitrary lists never crash the message functions, and a failed removal
// never changes the list.
TEST_F(MsgDirTest, RandomListsAreReadAndRefusedWithoutHarm) {
  vltest::ServerStandIn server(tree_.Request());
  const std::string list = List();
  std::mt19937 random(11);
  std::vector<VLMSGINFOEX> records(8);
  for (int round = 0; round < 300; ++round) {
    const std::string text = RandomList(random);
    vltest::WriteFile(list, text);
    int16_t count = 0;
    for (uint16_t size : {272, 114, 116, 160, 260}) {
      VLRESULT rc = VlxGetMsgListEx(handle_, VL_DIR_OUT, 8, &count, size, records.data());
      EXPECT_TRUE(rc == VL_OK || rc == VL_E_INFO_FILE_INVALID) << round;
      EXPECT_GE(count, 0);
    }
    VLMSGINFOEX info;
    VLRESULT rc = VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "A", 272, &info);
    EXPECT_TRUE(rc == VL_OK || rc == VL_E_MSG_UNKNOWN || rc == VL_E_INFO_FILE_INVALID) << round;
    // A removal either succeeds on a completed entry or leaves the list as it was.
    if (vl::MsgDirUpdate(*session_, VL_DIR_OUT, "A", nullptr) != VL_OK) {
      EXPECT_EQ(vltest::ReadFile(list), text) << round;
    }
    vltest::WriteFile(list, text);
    VlxMarkMsgAsRead(handle_, VL_DIR_OUT, "A");
    EXPECT_EQ(vltest::ReadFile(list).size(), text.size()) << "marking keeps the length";
  }
}

TEST_F(MsgDirTest, CountsBeyondSixteenBitsSaturate) {
  std::string text = vltest::ListHeader();
  const std::string entry = vltest::ListEntryText(ListEntry{"M.TXT"});
  for (int i = 0; i < 32770; ++i) text += entry;
  vltest::WriteFile(List(), text);
  VLMSGINFOEX record;
  int16_t count = 0;
  EXPECT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 1, &count, 272, &record), VL_OK);
  EXPECT_EQ(count, 32767);
  EXPECT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, -5, &count, 272, nullptr), VL_OK);
  EXPECT_EQ(count, 32767);
}

}  // namespace
