// Message directory files: listing and looking up messages; entries added
// and removed, a message marked as read and the change notifications; the
// body name rule. Arbitrary lists and calls are the fuzz target's.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "api/session.h"
#include "api/vlapi_internal.h"
#include "msg/msg_dir.h"
#include "paragraph/paragraph_reader.h"
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
using BodyNameTest = MsgDirTest;

const ListEntry kWaiting{"A.TXT", "Su"};
const ListEntry kSent{"B.TIF", "OK"};
const ListEntry kFailed{"C.TXT", "Fa"};
const ListEntry kPreviewed{"D.TXT", "OK", "Aw", "PREVIEW"};
const vl::NewEntry kAdd{"E", "e", "", 2, 1, "", ""};

// The lines of a paragraph may come in any order and case; of two equal
// lines the first counts.
TEST_F(MsgDirTest, EntriesFillTheWholeRecordFromLinesInAnyOrderAndCase) {
  vltest::WriteFile(List(),
                    Entries({ListEntry{"msg1.txt", "Se", "Wa", "SEND", "79-12-31 23:59:58",
                                       "MsgType: sms\r\nCustom: custom text\r\n"}}) +
                        "\r\n[document]\r\ncomment: reordered\r\nfile: B.TIF\r\n"
                        "[Message]\r\nstatus: OK\r\nSubject: first\r\nSubject: second\r\n"
                        "userstatus: OK\r\ntype: SEND\r\naccepted: 26-01-02 03:04:05\r\n");
  const VLMSGINFOEX i = Info("MSG1");
  EXPECT_EQ((Lines{i.Body, i.Comment, i.Subject, i.Organisation, i.Custom}),
            (Lines{"MSG1", "comment of msg1", "subject of msg1", "Org msg1", "custom text"}));
  EXPECT_EQ((Ints{i.Status, i.UserStatus, i.MsgType, i.AcceptedYear, i.AcceptedMonth,
                  i.AcceptedDay, i.AcceptedHour, i.AcceptedMinute, i.AcceptedSecond}),
            (Ints{8, 3, 3, 2079, 12, 31, 23, 59, 58}));
  const VLMSGINFOEX b = Info("b");
  EXPECT_EQ((Ints{b.Status, b.AcceptedDay}), (Ints{30, 2}));
  EXPECT_EQ((Lines{b.Comment, b.Subject}), (Lines{"reordered", "first"}));
}

TEST_F(MsgDirTest, WordsBecomeNumbersByTheirTables) {
  const std::string a = "26-11-21 10:20:30";
  const struct {
    ListEntry entry;
    Ints want;  // status, user status, message type, year, month, hour
  } cases[] = {
      {{"A.TXT", "OK", "OK", "PREVIEW"}, {32, 1, 1, 2026, 11, 10}},
      {{"A.TXT", "fa", "aw", "preview"}, {33, 2, 1, 2026, 11, 10}},
      {{"A.TXT", "XY", "Zz", "SEND"}, {0, 0, 1, 2026, 11, 10}},
      {{"A.TXT", "Ad", "Aw", "SEND", "80-01-01 00:00:00"}, {1, 2, 1, 1980, 1, 0}},
      {{"A.TXT", "Sr", "Aw", "SEND", "00-00-00 00:00:00"}, {13, 2, 1, 0, 0, 0}},
      {{"A.TXT", "Sr", "Aw", "SEND", "79"}, {13, 2, 1, 0, 0, 0}},  // date and time both 0
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

TEST_F(MsgDirTest, ListsPlaceRecordsAFullRecordApartAndCountEveryEntry) {
  WriteList(Out(), {ListEntry{"M1.TXT"}, ListEntry{"M2.TIF"}, ListEntry{"M3.PDF"},
                    ListEntry{"M4.TXT"}, ListEntry{"M5.TXT"}});
  std::vector<VLMSGINFOEX> records(5);
  std::memset(records.data(), 0x5A, records.size() * sizeof records[0]);
  int16_t count = -1;
  ASSERT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 3, &count, 116, records.data()), VL_OK);
  EXPECT_EQ(count, 5);
  for (int i = 0; i < 3; ++i) {
    EXPECT_EQ(records[i].Body, "M" + std::to_string(i + 1));
    EXPECT_EQ(records[i].UserStatus, 2);
    EXPECT_EQ((Ints{records[i].MsgType, records[i].AcceptedSecond}), (Ints{0x5A5A, 0x5A5A}))
        << "not filled below the full size";
  }
  EXPECT_EQ(records[3].Status, 0x5A5A) << "beyond MaxEntries nothing is stored";

  std::vector<VLMSGINFO> old(2);
  ASSERT_EQ(VlxGetMsgList(handle_, VL_DIR_OUT, 2, &count, old.data()), VL_OK);
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
      {"File: A.B:C.TXT\r\n", file},      {"File: msgdir.TXT\r\n", file},
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
    // A lookup passes over an entry of another name unless the name is at fault.
    if (report != file) {
      EXPECT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "LAST", 272, records), VL_OK) << report;
    }
  }
}

TEST_F(MsgDirTest, ArgumentsMissingMessagesAndMissingLists) {
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

  EXPECT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_IN, "MSG1", 272, &info), VL_E_INFO_FILE_OPEN_ERROR);
  EXPECT_EQ(Reported::Last(), "Unable to open file " + In() + "MSGDIR.CTL");
  EXPECT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_IN, nullptr, &kAdd), VL_E_INFO_FILE_OPEN_ERROR);
  EXPECT_EQ(Reported::Last(), "Error opening file " + In() + "MSGDIR.CTL");
  EXPECT_FALSE(vltest::FileExists(In() + "MSGDIR.CTL")) << "a missing list is not made";

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
  VLMSGINFOEX info{};
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

// Control bytes in the texts become blanks: no text can end its line or
// begin another. A missing text is an empty one.
TEST_F(MsgDirUpdateTest, NewEntriesAreAppendedLineByLine) {
  vltest::WriteFile(List(), vltest::ListHeader());
  vl::NewEntry sms{"MSG1", "hel\nlo", "the subject\r\n[DOCUMENT]", 2, 3, "\x7f\tOrg", nullptr};
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &sms), VL_OK);
  EXPECT_EQ(vltest::ReadFile(List()),
            vltest::ListHeader() +
                "\r\n[DOCUMENT]\r\nFile: MSG1.TXT\r\nComment: hel lo\r\nOrganisation:   Org\r\n"
                "[MESSAGE]\r\nAssocFile:\r\nFormat: ASCII\r\nAccepted: 00-00-00 00:00:00\r\n"
                "Type: SEND\r\nStatus: Su\r\nUserStatus: Aw\r\n"
                "Subject: the subject  [DOCUMENT]\r\nMsgType: SMS\r\nCustom: \r\n");
}

TEST_F(MsgDirUpdateTest, OnlyCompletedEntriesAreRemovedAndTheRestStaysByteForByte) {
  vltest::WriteFile(List(), Entries({kWaiting, kSent, kFailed, kPreviewed}));
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "B", nullptr), VL_OK);
  ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "d", nullptr), VL_OK);
  EXPECT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "A", nullptr), VL_E_MSG_NOT_COMPLETED);
  EXPECT_EQ(Reported::Last(), "Message A not completed");
  EXPECT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, "X", nullptr), VL_E_MSG_UNKNOWN);
  EXPECT_EQ(Reported::Last(), "Message X not found");
  // Removing the last entry leaves the empty line before its [DOCUMENT] line.
  EXPECT_EQ(vltest::ReadFile(List()), Entries({kWaiting, kFailed}) + "\r\n");
}

TEST_F(MsgDirUpdateTest, AFaultAnywhereLeavesTheOldOrTheNewList) {
  const std::string before = Entries({kWaiting, kSent, kFailed});
  for (int n = 1;; ++n) {
    vltest::WriteFile(List(), before);
    os::fault::Inject(os::fault::Op::Any, n, os::kDiskFull);
    VLRESULT rc = vl::MsgDirUpdate(*session_, VL_DIR_OUT, "B", &kAdd);
    const int calls = os::fault::Calls(os::fault::Op::Any);
    os::fault::Clear();
    const std::string now = vltest::ReadFile(List());
    if (rc == VL_OK) {
      EXPECT_NE(now, before) << "fault at call " << n;
    }
    else EXPECT_EQ(now, before) << "fault at call " << n << " gave " << std::hex << rc;
    EXPECT_FALSE(vltest::FileExists(Out() + "MSGDIR.TMP")) << "fault at call " << n;
    if (calls < n) {
      EXPECT_EQ(rc, VL_OK);
      EXPECT_TRUE(now.starts_with(Entries({kWaiting, kFailed}))) << now;
      break;
    }
  }
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

  // Past the colon exactly the bytes the reader takes for blanks are passed
  // over; a value the reader refuses leaves the list as it was.
  const struct {
    std::string before, after;
    VLRESULT rc;
  } cases[] = {
      {"UserStatus:\x0b" "Aw", "UserStatus:\x0bOK", VL_OK},
      {"userstatus: \t\x01\r" "Aw  ", "userstatus: \t\x01\rOK  ", VL_OK},
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

  server.Stop();
  EXPECT_EQ(VlxMarkMsgAsRead(handle_, 7, ""), VL_E_SERVER_NOT_RUNNING);  // before the arguments
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

TEST_F(MsgDirTest, CountsBeyondSixteenBitsSaturate) {
  std::string text = vltest::ListHeader();
  const std::string entry = vltest::ListEntryText(ListEntry{"M.TXT"});
  for (int i = 0; i < 32770; ++i) text += entry;
  vltest::WriteFile(List(), text);
  VLMSGINFOEX record;
  int16_t count = 0;
  EXPECT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 1, &count, 272, &record), VL_OK);
  EXPECT_EQ(count, 32767);
}

// The body name rule: every function that takes a body name refuses a name
// that could not be written into a list and read back unchanged, with
// 0xF700 and its text, and leaves no file.
TEST_F(BodyNameTest, EveryFunctionTakingANameRefusesNamesOutsideTheRule) {
  vltest::ServerStandIn server(tree_.Request());
  const std::string list = Entries({ListEntry{"A.TXT", "OK"}});
  vltest::WriteFile(List(), list);
  vltest::WriteFile(scratch_.Path("SUBMIT.TXT"), "%%[MESSAGE]\r\nFax: 1\r\n");
  const std::string submit = scratch_.Path("SUBMIT.TXT"), control = Out() + "X.CTL";
  const VLHANDLE h = handle_;
  // The calls' outputs; record() gives info with the name as its body.
  VLMSGINFOEX info;
  VLMSGHISTORYEX history;
  uint16_t count;
  char ext[4];
  std::vector<char> slots(2 * VL_DOCUMENT_SLOTS * VL_DOCUMENT_SLOT_SIZE);
  auto record = [&](const std::string& name) {
    info = VLMSGINFOEX{};
    std::memcpy(info.Body, name.c_str(), std::min(name.size() + 1, sizeof info.Body));
    return &info;
  };
  const std::vector<std::pair<const char*, std::function<VLRESULT(const std::string&)>>> calls = {
      {"VlxSendMsg", [&](auto& n) { return VlxSendMsg(h, n.c_str(), "TXT", ""); }},
      {"VlxSendMsgEx", [&](auto& n) { return VlxSendMsgEx(h, "TXT", 272, record(n)); }},
      {"VlxCreateCtlFileEx",
       [&](auto& n) {
         return VlxCreateCtlFileEx(h, submit.c_str(), control.c_str(), nullptr, ext, 272,
                                   record(n));
       }},
      {"VlxGetMsgInfoEx",
       [&](auto& n) { return VlxGetMsgInfoEx(h, VL_DIR_OUT, n.c_str(), 272, &info); }},
      {"VlxMarkMsgAsRead", [&](auto& n) { return VlxMarkMsgAsRead(h, VL_DIR_OUT, n.c_str()); }},
      {"VlxDeleteMsg", [&](auto& n) { return VlxDeleteMsg(h, VL_DIR_OUT, n.c_str(), 1); }},
      {"VlxHoldMsg", [&](auto& n) { return VlxHoldMsg(h, VL_DIR_OUT, n.c_str()); }},
      {"VlxGetMsgHistoryEx",
       [&](auto& n) {
         return VlxGetMsgHistoryEx(h, VL_DIR_OUT, n.c_str(), 0, 0, 1, &count, 166, &history);
       }},
      {"VlxGetDocuments",
       [&](auto& n) { return VlxGetDocuments(h, record(n), &slots[0], &slots[slots.size() / 2]); }},
      {"MsgDirUpdate",
       [&](auto& n) {
         const vl::NewEntry add{n.c_str(), "", "", 2, 1, "", ""};
         return vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &add);
       }},
  };
  const struct {
    std::string name;
    const char* report;
  } names[] = {
      {"A\x7f", "Body name invalid: character 0x7F not allowed"},
      {"A\tB", "Body name invalid: character 0x09 not allowed"},
      {"A\\..", "Body name invalid: character 0x5C not allowed"},
      {"*?\"<>|", "Body name invalid: character 0x2A not allowed"},
      {" AB", "Body name invalid: leading blank"},
      {"NINECHARS", "Body name invalid"},
  };
  for (const auto& [function, call] : calls)
    for (const auto& n : names) {
      Reported::Clear();
      EXPECT_EQ(call(n.name), VL_E_INVALID_PARAM) << function << " " << n.report;
      EXPECT_EQ(Reported::Last(), n.report) << function;
      EXPECT_EQ(vltest::ListDirectory(Out()), std::vector<std::string>{"MSGDIR.CTL"}) << function;
      EXPECT_TRUE(vltest::ListDirectory(tree_.Request()).size() <= 1) << function;
    }

  // The list's own name as a file to write (as a body: SubmissionTest).
  EXPECT_EQ(VlxCreateCtlFileEx(h, submit.c_str(), (Out() + "msgdir.ctl").c_str(), nullptr, ext,
                               272, record("A")),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Control file name invalid");
  EXPECT_EQ(VlxCreateDataFile(h, submit.c_str(), (Out() + "MSGDIR.TMP").c_str(), "TXT"),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Data file name invalid");
  EXPECT_EQ(vltest::ReadFile(List()), list);
  EXPECT_EQ(vltest::ListDirectory(Out()), std::vector<std::string>{"MSGDIR.CTL"});
}

TEST_F(BodyNameTest, NamesWithinTheRuleAreWrittenAndReadBack) {
  vltest::WriteFile(List(), vltest::ListHeader());
  for (const char* name : {"~FAXA000", "x y", "\xe9t\xe9", "A-B_9"}) {
    const vl::NewEntry add{name, "", "", 2, 1, "", ""};
    ASSERT_EQ(vl::MsgDirUpdate(*session_, VL_DIR_OUT, nullptr, &add), VL_OK) << name;
    EXPECT_TRUE(para::EqualNoCase(Info(name).Body, name)) << name;
  }
}

}  // namespace
