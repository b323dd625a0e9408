// Listing and looking up messages in a message directory file.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "api/vlapi_internal.h"
#include "platform/os.h"
#include "tests/support/message_files.h"
#include "tests/support/test_support.h"
#include "tests/support/user_fixture.h"
#include "vlapi.h"

namespace {

using vltest::FaxTree;
using vltest::ListEntry;
using vltest::Reported;
using vltest::Scratch;

class MsgDirTest : public vltest::JsmithTest {
 protected:
  void WriteList(const std::string& directory, const std::vector<ListEntry>& entries) {
    std::string text = vltest::ListHeader(directory == Out());
    for (const ListEntry& e : entries) text += vltest::ListEntryText(e);
    vltest::WriteFile(directory + "MSGDIR.CTL", text);
  }
  VLMSGINFOEX Info(const char* body, uint16_t directory = VL_DIR_OUT) {
    VLMSGINFOEX info;
    std::memset(&info, 0x5A, sizeof info);
    EXPECT_EQ(VlxGetMsgInfoEx(handle_, directory, body, sizeof info, &info), VL_OK)
        << body << ": " << Reported::Last();
    return info;
  }
};

TEST_F(MsgDirTest, EntriesFillTheWholeRecord) {
  ListEntry e{"msg1.txt", "Se", "Wa", "SEND", "79-12-31 23:59:58",
              "MsgType: sms\r\nCustom: custom text\r\n"};
  WriteList(Out(), {e});
  VLMSGINFOEX info = Info("MSG1");
  EXPECT_EQ(info.Status, 8);
  EXPECT_STREQ(info.Body, "MSG1");
  EXPECT_STREQ(info.Comment, "comment of msg1");
  EXPECT_STREQ(info.Subject, "subject of msg1");
  EXPECT_EQ(info.UserStatus, 3);
  EXPECT_EQ(info.MsgType, 3);
  EXPECT_STREQ(info.Organisation, "Org msg1");
  EXPECT_STREQ(info.Custom, "custom text");
  EXPECT_EQ(info.AcceptedYear, 2079);
  EXPECT_EQ(info.AcceptedMonth, 12);
  EXPECT_EQ(info.AcceptedDay, 31);
  EXPECT_EQ(info.AcceptedHour, 23);
  EXPECT_EQ(info.AcceptedMinute, 59);
  EXPECT_EQ(info.AcceptedSecond, 58);
}

TEST_F(MsgDirTest, WordsBecomeNumbersByTheirTables) {
  const struct {
    ListEntry entry;
    uint16_t status, userStatus, msgType, year, month, hour;
  } cases[] = {
      {{"A.TXT", "OK", "OK", "PREVIEW"}, 32, 1, 1, 2026, 11, 10},
      {{"A.TXT", "fa", "aw", "preview"}, 33, 2, 1, 2026, 11, 10},
      {{"A.TXT", "OK", "Aw", "SEND"}, 30, 2, 1, 2026, 11, 10},
      {{"A.TXT", "XY", "Zz", "SEND"}, 0, 0, 1, 2026, 11, 10},
      {{"A.TXT", "Ad", "Aw", "SEND", "80-01-01 00:00:00"}, 1, 2, 1, 1980, 1, 0},
      {{"A.TXT", "Sr", "Aw", "SEND", "00-00-00 00:00:00"}, 13, 2, 1, 0, 0, 0},
      {{"A.TXT", "Ar", "Aw", "SEND", "26-13-01 24:00:00"}, 14, 2, 1, 0, 0, 0},
      {{"A.TXT", "WD", "Aw", "SEND", "26-11-21 10:20:30", "MsgType: Er\r\n"}, 12, 2, 2, 2026, 11,
       10},
      {{"A.TXT", "He", "Aw", "SEND", "26-11-21 10:20:30", "MsgType: LAN\r\n"}, 2, 2, 2, 2026, 11,
       10},
      {{"A.TXT", "Wa", "Aw", "SEND", "26-11-21 10:20:30", "MsgType: In\r\n"}, 4, 2, 13, 2026, 11,
       10},
      {{"A.TXT", "Co", "Aw", "SEND", "26-11-21 10:20:30", "MsgType: Telex\r\n"}, 7, 2, 1, 2026,
       11, 10},
  };
  for (const auto& c : cases) {
    WriteList(Out(), {c.entry});
    VLMSGINFOEX info = Info("A");
    const std::string what = c.entry.status + "/" + c.entry.type + "/" + c.entry.extra;
    EXPECT_EQ(info.Status, c.status) << what;
    EXPECT_EQ(info.UserStatus, c.userStatus) << what;
    EXPECT_EQ(info.MsgType, c.msgType) << what;
    EXPECT_EQ(info.AcceptedYear, c.year) << what;
    EXPECT_EQ(info.AcceptedMonth, c.month) << what;
    EXPECT_EQ(info.AcceptedHour, c.hour) << what;
  }
}

TEST_F(MsgDirTest, SmallerRecordsLeaveTheFieldsTheyDoNotFillAlone) {
  WriteList(Out(), {ListEntry{"A.TXT", "OK", "Aw", "SEND", "99-01-01 10:11:12"},
                    ListEntry{"B.TXT", "OK", "Aw", "SEND", "79"}});
  for (uint16_t size : {160, 260}) {
    VLMSGINFOEX info;
    std::memset(&info, 0x5A, sizeof info);
    ASSERT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "A", size, &info), VL_OK);
    EXPECT_EQ(info.UserStatus, 2);
    EXPECT_EQ(info.MsgType, 0x5A5A) << size;
    EXPECT_EQ(info.AcceptedSecond, 0x5A5A) << size;
  }
  // A date that ends early leaves both date and time at zero.
  VLMSGINFOEX b = Info("B");
  EXPECT_EQ(b.AcceptedYear + b.AcceptedHour + b.AcceptedMinute + b.AcceptedSecond, 0);
}

TEST_F(MsgDirTest, LinesOfAParagraphMayComeInAnyOrderAndCase) {
  vltest::WriteFile(Out() + "MSGDIR.CTL",
                    vltest::ListHeader() +
                        "\r\n[document]\r\ncomment: reordered\r\nfile: B.TIF\r\n"
                        "[Message]\r\nstatus: OK\r\nSubject: first\r\nSubject: second\r\n"
                        "userstatus: OK\r\ntype: SEND\r\naccepted: 26-01-02 03:04:05\r\n");
  VLMSGINFOEX info = Info("b");
  EXPECT_EQ(info.Status, 30);
  EXPECT_STREQ(info.Comment, "reordered");
  EXPECT_STREQ(info.Subject, "first");
  EXPECT_EQ(info.AcceptedDay, 2);
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
  EXPECT_STREQ(old[1].Body, "M2");
  EXPECT_STREQ(old[1].Comment, "comment of M2");
  EXPECT_EQ(old[1].Status, 1);
}

TEST_F(MsgDirTest, AMalformedEntryStopsTheListWithTheCountSoFar) {
  // An entry never takes a paragraph of the next one.
  const struct {
    std::string bad;
    const char* report;
  } cases[] = {
      {"\r\n[DOCUMENT]\r\nComment: c\r\n", "[DOCUMENT] File: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: NOEXT\r\nComment: c\r\n", "[DOCUMENT] File: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: .TXT\r\nComment: c\r\n", "[DOCUMENT] File: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: NINECHARS.TXT\r\n", "[DOCUMENT] File: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: C:X.TXT\r\n", "[DOCUMENT] File: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: A.B:C.TXT\r\n", "[DOCUMENT] File: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: A*B.TXT\r\n", "[DOCUMENT] File: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: msgdir.TXT\r\n", "[DOCUMENT] File: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: X.TXT\r\n", "[DOCUMENT] Comment: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: X.TXT\r\nComment: c\r\n[OTHER]\r\n", "[MESSAGE] paragraph missing"},
      {"\r\n[DOCUMENT]\r\nFile: X.TXT\r\nComment: c\r\n[MESSAGE]\r\nType: SEND\r\n",
       "[MESSAGE] Accepted: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: X.TXT\r\nComment: c\r\n[MESSAGE]\r\nAccepted: x\r\n",
       "[MESSAGE] Type: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: X.TXT\r\nComment: c\r\n[MESSAGE]\r\nAccepted: x\r\nType: SEND\r\n"
       "Status: O\r\n",
       "[MESSAGE] Status: line missing or invalid"},
      {"\r\n[DOCUMENT]\r\nFile: X.TXT\r\nComment: c\r\n[MESSAGE]\r\nAccepted: x\r\nType: SEND\r\n"
       "Status: OK\r\nUserStatus: OKK\r\n",
       "[MESSAGE] UserStatus: line missing or invalid"},
  };
  for (const auto& c : cases) {
    vltest::WriteFile(Out() + "MSGDIR.CTL", vltest::ListHeader() +
                                                vltest::ListEntryText(ListEntry{"GOOD.TXT"}) +
                                                c.bad + vltest::ListEntryText(ListEntry{"LAST.TXT"}));
    Reported::Clear();
    VLMSGINFOEX records[4];
    int16_t count = -1;
    EXPECT_EQ(VlxGetMsgListEx(handle_, VL_DIR_OUT, 4, &count, 272, records),
              VL_E_INFO_FILE_INVALID)
        << c.report;
    EXPECT_EQ(count, 1) << c.report;
    EXPECT_EQ(Reported::Texts(), std::vector<std::string>{c.report});
  }
}

TEST_F(MsgDirTest, ArgumentsAndMissingMessages) {
  WriteList(Out(), {ListEntry{"MSG1.TXT"}});
  VLMSGINFOEX info;
  int16_t count = 0;
  const struct {
    VLRESULT code;
    const char* report;
  } expected[] = {
      {VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "MSG1", 100, &info), "VLMSGINFOEX size invalid"},
      {VlxGetMsgListEx(handle_, VL_DIR_OUT, 1, &count, 273, &info), "VLMSGINFOEX size invalid"},
      {VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "", 272, &info), "Body name invalid"},
      {VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "NINECHARS", 272, &info), "Body name invalid"},
      {VlxGetMsgInfoEx(handle_, 3, "MSG1", 272, &info), "Message directory parameter invalid"},
      {VlxGetMsgListEx(handle_, 0, 1, &count, 272, &info), "Message directory parameter invalid"},
  };
  for (const auto& e : expected) EXPECT_EQ(e.code, VL_E_INVALID_PARAM) << e.report;
  ASSERT_EQ(Reported::Texts().size(), std::size(expected));
  for (size_t i = 0; i < std::size(expected); ++i)
    EXPECT_EQ(Reported::Texts()[i], expected[i].report);

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
  EXPECT_EQ(Reported::Last(), "Unable to access file " + Out() + "MSGDIR.CTL");
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

}  // namespace
