// Submitting messages: the files a submission writes, byte for byte, and
// what stays behind when it fails.
#include <gtest/gtest.h>

#include <cstring>
#include <regex>
#include <string>

#include "api/vlapi_internal.h"
#include "platform/fault.h"
#include "tests/support/message_files.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::FaxTree;
using vltest::Reported;
using vltest::Scratch;

using vltest::Lines;

std::string Masked(const std::string& control) {
  return std::regex_replace(control,
                            std::regex("Submitted: \\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"),
                            "Submitted: <time>");
}

// The platform file-information call with which a submission checks that
// its control file exists.
constexpr int kCheckOfTheControlFile = 8;

class SubmissionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JSMITH");
    tree_.UseAsRelativeAreas();
    tree_.PrepareSender("JSMITH");
    handle_ = vltest::LogOn("JSMITH");
    Reported::Clear();
  }
  void TearDown() override { VlxAPIClosedown(handle_); }
  std::string Out() const { return tree_.Users() + "JSMITH\\V-OUT\\"; }
  VLRESULT Submit(const std::string& text) {
    vltest::WriteFile(scratch_.Path("SUBMIT.TXT"), text);
    std::memset(body_, '#', sizeof body_);
    return VlxSendSubmitFile(handle_, scratch_.Path("SUBMIT.TXT").c_str(), "FAXA", body_);
  }

  Scratch scratch_;
  FaxTree tree_{scratch_};
  vltest::ServerStandIn server_{scratch_.Path("REQUEST\\")};
  VLHANDLE handle_ = 0;
  char body_[9] = {};
};

TEST_F(SubmissionTest, ASubmitFileBecomesControlFileDataFilesListEntryAndRequest) {
  ASSERT_EQ(Submit("; a fax to two recipients\r\n%%[MESSAGE]\r\nComment: quarterly report\r\n"
                   "Subject: Report\r\nSubject: for Q3\r\nPriority: URGENT\r\nHold: no\r\n"
                   "Note: Dear all,\r\nTo: Sales\r\nOrganisation: Acme\r\nFax: 0123 456\r\n"
                   "To: Jo\r\nLan: JO\r\n%%[TEXT]\r\nFirst page.\r\n%%[TEXT]\r\nSecond part.\r\n"),
            VL_OK)
      << Reported::Last();
  EXPECT_STREQ(body_, "~FAXA000");
  EXPECT_EQ(Masked(vltest::ReadFile(Out() + "~FAXA000.CTL")),
            Lines({"[VELOMAR]", "Type: SendControl", "Revision: A", "", "[DOCUMENT]",
                   "File: ~FAXA000.TXT", "Comment: quarterly report", "Organisation: Acme",
                   "[MESSAGE]", "AssocFile:", "Format: ASCII", "Submitted: <time> [xxxxxxxxxx]",
                   "Accepted: 00-00-00 00:00:00", "Type: SEND", "Status: Su", "UserStatus: Aw",
                   "MsgType: FAX", "Custom: ", "[OPTIONS]", "From: ", "FromTelephone: ",
                   "FromFax: ", "FromEmail: ", "FromParam: ", "Coversheet: ", "Letterhead: ",
                   "Priority: URGENT", "After: ", "Header: NoToFrDaTi", "Quality: NORMAL",
                   "Chargecode: ", "CodeDescription:", "Preview: YES", "FaxBroadcast: NO",
                   "Hold: NO", "Delete: ", "ConvGraph: YES", "Subject: Report",
                   "Subject: \\nfor Q3", "Covertext: Dear all,", "SentItems: YES",
                   "[ADDRESSEES]", "Shortname:", "AddrStatus: Wa", "Name: Sales",
                   "Field: Name Sales", "Organisation: Acme", "Field: Organisation Acme",
                   "Field: Fax 0123 456", "Via: FAX-ANY 0123 456", "Shortname:",
                   "AddrStatus: Wa", "Name: Jo", "Field: Name Jo", "Organisation:",
                   "Field: Organisation", "Via: LAN-ANY JO"}));
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.TXT"), "First page.\r\n");
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.001"), "Second part.\r\n");
  EXPECT_EQ(vltest::ReadFile(Out() + "MSGDIR.CTL"),
            vltest::ListHeader() +
                Lines({"", "[DOCUMENT]", "File: ~FAXA000.TXT", "Comment: quarterly report",
                       "Organisation: Acme", "[MESSAGE]", "AssocFile:", "Format: ASCII",
                       "Accepted: 00-00-00 00:00:00", "Type: SEND", "Status: Su",
                       "UserStatus: Aw", "Subject: Report...", "MsgType: FAX", "Custom: "}));
  EXPECT_EQ(vltest::ReadFile(tree_.Request() + "~RQST000.CTL"),
            Lines({"[VELOMAR]", "Type: Request", "Revision: A", "", "[REQUEST]",
                   "Server: QUEUEMAN", "Type: SEND", "User: JSMITH", "File: ~FAXA000.CTL"}));
}

TEST_F(SubmissionTest, AnEpsonMessageWithTextFromFilesAndSections) {
  vltest::WriteFile("SUBJECT.TXT", "From a file\n");
  vltest::WriteFile("BODY.TXT", "x%%[PAGE]y\r\n");
  ASSERT_EQ(Submit("%%[MESSAGE]\r\nFormat: EPSON\r\nComment: printer text\r\n"
                   "DOCUMENT: C:\\DOCS\\A.DOC\r\nAttach: a.doc,b.doc\r\nDelete: OK\r\n"
                   "To: Mo\r\nSMS: 0700 1\r\nField: Custom ref-9\r\nTo: Jo\r\nVia: LAN-ANY JO\r\n"
                   "%%[SUBJECTFILE]\r\nSUBJECT.TXT\r\n%%[COVERTEXT]\r\nHello,\r\n\r\nsee below\r\n"
                   "%%[TEXT]\r\n%%[BOLD:ON]Bold%%[BOLD:OFF]\r\n%%[FILE]\r\nBODY.TXT\r\n"),
            VL_OK)
      << Reported::Last();
  const std::string control = Masked(vltest::ReadFile(Out() + "~FAXA000.CTL"));
  // The subject file and the cover text section reach the options (the
  // other lines are the control file writer's).
  EXPECT_NE(control.find(Lines({"Delete: OK", "ConvGraph: YES", "Attach: a.doc", "Attach: b.doc",
                                "Document: C:\\DOCS\\A.DOC", "Subject: From a file",
                                "Covertext: Hello,", "Covertext:", "Covertext: see below",
                                "SentItems: YES", "[ADDRESSEES]"})),
            std::string::npos)
      << control;
  for (const char* line : {"File: ~FAXA000.EPN\r\nComment: printer text\r\n", "Format: EPSON\r\n",
                           "MsgType: SMS\r\n"})
    EXPECT_NE(control.find(line), std::string::npos) << line;
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.EPN"), "\x1b" "EBold\x1b" "F\r\n");
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.001"), "x\fy\r\n");
  EXPECT_EQ(vltest::ReadFile(Out() + "MSGDIR.CTL"),
            vltest::ListHeader() +
                Lines({"", "[DOCUMENT]", "File: ~FAXA000.EPN", "Comment: printer text",
                       "Organisation: ", "[MESSAGE]", "AssocFile:", "Format: EPSON",
                       "Accepted: 00-00-00 00:00:00", "Type: SEND", "Status: Su",
                       "UserStatus: Aw", "Subject: From a file", "MsgType: SMS", "Custom: "}));
}

TEST_F(SubmissionTest, TheOneCallFormOpensAndClosesItsOwnSession) {
  vltest::WriteFile(scratch_.Path("SUBMIT.TXT"),
                    "%%[MESSAGE]\r\nTo: A\r\nFax: 1\r\n%%[TEXT]\r\nx\r\n");
  ASSERT_EQ(VlxVBSendSubmitFile("jsmith", scratch_.Path("SUBMIT.TXT").c_str(), "FAXA"), VL_OK);
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.TXT"), "x\r\n");
  EXPECT_EQ(VlxVBSendSubmitFile("NO SUCH", scratch_.Path("SUBMIT.TXT").c_str(), "FAXA"),
            VL_E_INVALID_PARAM);
}

TEST_F(SubmissionTest, AFailedSubmissionLeavesNoFileOfTheMessage) {
  const struct { const char* text; VLRESULT code; } cases[] = {
      {"%%[MESSAGE]\r\nPriority: URGENT\r\n", VL_E_SUBMIT_FILE_INVALID},
      {"%%[MESSAGE]\r\nColour: red\r\nTo: A\r\nFax: 1\r\n%%[TEXT]\r\nx\r\n", VL_E_SUBMIT_FILE_INVALID},
      {"%%[MESSAGE]\r\nTo: A\r\n%%[TEXT]\r\nx\r\n", VL_E_SUBMIT_FILE_INVALID},
      {"%%[MESSAGE]\r\nTo: A\r\nFax: 1\r\nCovertext: late\r\n%%[TEXT]\r\nx\r\n", VL_E_SUBMIT_FILE_INVALID},
      {"%%[MESSAGE]\r\nTo: A\r\nFax: 1\r\n%%[FILE]\r\nC:\\NO\\SUCH.FILE\r\n", VL_E_FILE_NOT_FOUND},
      {"no message at all\r\n", VL_E_SUBMIT_FILE_INVALID},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Submit(c.text), c.code) << c.text;
    EXPECT_EQ(vltest::ListDirectory(Out()), std::vector<std::string>{"MSGDIR.CTL"}) << c.text;
    EXPECT_EQ(vltest::ReadFile(Out() + "MSGDIR.CTL"), vltest::ListHeader());
    EXPECT_TRUE(vltest::ListDirectory(tree_.Request()).size() <= 1) << "the lock file only";
  }
  EXPECT_EQ(VlxSendSubmitFile(handle_, scratch_.Path("SUBMIT.TXT").c_str(), "FAX", body_),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Prefix name must be 4 characters");
  server_.Stop();
  EXPECT_EQ(Submit("%%[MESSAGE]\r\nTo: A\r\nFax: 1\r\n%%[TEXT]\r\nx\r\n"), VL_E_SERVER_NOT_RUNNING);
  EXPECT_EQ(vltest::ListDirectory(Out()), std::vector<std::string>{"MSGDIR.CTL"});
}

TEST_F(SubmissionTest, ANameListedMeanwhileIsMarkedAsTaken) {
  // Another client lists ~FAXA000 once its name is chosen (the first file
  // information asked for comes after): the message's files go, and a
  // marker keeps the name from coming back.
  static std::string list;
  list = Out() + "MSGDIR.CTL";
  os::fault::Before(os::fault::Op::GetFileInfo, 1, [](void*) {
    vltest::WriteFile(list, vltest::ReadFile(list) +
                                vltest::ListEntryText(vltest::ListEntry{"~FAXA000.TXT"}));
  }, nullptr);
  EXPECT_EQ(Submit("%%[MESSAGE]\r\nTo: A\r\nFax: 1\r\n%%[TEXT]\r\nx\r\n"), VL_E_MSG_EXISTS);
  os::fault::Clear();
  EXPECT_EQ(Reported::Last(), "Message ~FAXA000 already in info file");
  EXPECT_EQ(vltest::ListDirectory(Out()), (std::vector<std::string>{"MSGDIR.CTL", "~FAXA000.TMP"}));
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.TMP"),
            "(created by VlxSendSubmitFile() because files ~FAXA000.*\r\n"
            "deleted previously without deleting references\r\nin MSGDIR.CTL)\r\n");
  ASSERT_EQ(Submit("%%[MESSAGE]\r\nTo: A\r\nFax: 1\r\n%%[TEXT]\r\nx\r\n"), VL_OK);
  EXPECT_STREQ(body_, "~FAXA001");
}

TEST_F(SubmissionTest, SendMsgTakesFilesAlreadyInTheOutDirectoryAndChecksItsArguments) {
  vltest::WriteFile(Out() + "MSG1.CTL", "control");
  vltest::WriteFile(Out() + "MSG1.TIF", "image");
  ASSERT_EQ(VlxSendMsg(handle_, "MSG1", "tif", nullptr), VL_OK) << Reported::Last();
  VLMSGINFOEX info;
  ASSERT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "MSG1", sizeof info, &info), VL_OK);
  EXPECT_STREQ(info.Comment, "(submitted from API)");
  EXPECT_NE(vltest::ReadFile(Out() + "MSGDIR.CTL").find("Format: TIFF-UNCOMPRESSED"),
            std::string::npos);

  EXPECT_EQ(VlxSendMsgEx(handle_, "tif", 272, &info), VL_E_MSG_EXISTS);
  EXPECT_EQ(Reported::Last(), "Message MSG1 already in info file");
  const struct { const char *body, *extension; VLRESULT code; std::string report; } cases[] = {
      {"MSG2", "TXT", VL_E_FILE_NOT_FOUND, "File not found " + Out() + "MSG2.CTL"},
      {"MSG1", "TIFF", VL_E_INVALID_PARAM, "Extension name invalid"},
      {"MSG1", "XYZ", VL_E_INVALID_PARAM, "Data extension unknown"},
      {"msgdir", "TXT", VL_E_INVALID_PARAM, "Message name msgdir not valid"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(VlxSendMsg(handle_, c.body, c.extension, "c"), c.code) << c.report;
    EXPECT_EQ(Reported::Last(), c.report);
  }
}

TEST_F(SubmissionTest, ControlFilesAreWrittenOnTheirOwn) {
  vltest::WriteFile(scratch_.Path("S.TXT"),
                    "%%[MESSAGE]\r\nFormat: EPSON\r\nCustom: c-1\r\nTo: Mo\r\nSMS: 0700\r\n"
                    "Organisation: Org\r\n%%[COVERTEXT]\r\nhi\r\n%%[TEXT]\r\nbody\r\n");
  VLMSGINFOEX info;
  std::memset(&info, 0x5A, sizeof info);
  std::strcpy(info.Body, "CTL1");
  char extension[4] = "###";
  const std::string control = scratch_.Path("CTL1.CTL");
  ASSERT_EQ(VlxCreateCtlFileEx(handle_, scratch_.Path("S.TXT").c_str(), control.c_str(), "TXT",
                               extension, 272, &info),
            VL_E_SUBMIT_FILE_INVALID);
  EXPECT_EQ(Reported::Last(), "Format specified disagrees with SUBMIT file");
  EXPECT_FALSE(vltest::FileExists(control));
  ASSERT_EQ(VlxCreateCtlFileEx(handle_, scratch_.Path("S.TXT").c_str(), control.c_str(), "EPN",
                               extension, 272, &info),
            VL_OK)
      << Reported::Last();
  EXPECT_STREQ(extension, "EPN");
  EXPECT_EQ(info.MsgType, 3);
  EXPECT_STREQ(info.Organisation, "Org");
  EXPECT_STREQ(info.Custom, "c-1");
  EXPECT_STREQ(info.Comment, "To: Mo");
  EXPECT_NE(vltest::ReadFile(control).find("Covertext: hi\r\nSentItems: YES\r\n"), std::string::npos);
}

}  // namespace
