// Submitting messages: the files a submission writes, byte for byte, and
// what stays behind when it fails; the unique names the files are given
// (VlxCreateAutoFile and the generator behind it).
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <regex>
#include <string>
#include <vector>

#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/message_files.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::FaxTree;
using vltest::Reported;
using vltest::Scratch;

using vltest::Lines;
using Strings = std::vector<std::string>;

std::string Masked(const std::string& control) {
  return std::regex_replace(control,
                            std::regex("Submitted: \\d\\d-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d"),
                            "Submitted: <time>");
}

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
  ASSERT_EQ(Submit("%%[MESSAGE]\r\nFormat: EPSON\r\nComment: printer text\r\nDelete: OK\r\n"
                   "To: Mo\r\nSMS: 0700 1\r\n%%[SUBJECTFILE]\r\nSUBJECT.TXT\r\n"
                   "%%[COVERTEXT]\r\nHello,\r\n\r\nsee below\r\n"
                   "%%[TEXT]\r\n%%[BOLD:ON]Bold%%[BOLD:OFF]\r\n%%[FILE]\r\nBODY.TXT\r\n"),
            VL_OK)
      << Reported::Last();
  // The files' lines are pinned by the first test; here, this message's values.
  const std::string control = vltest::ReadFile(Out() + "~FAXA000.CTL");
  EXPECT_NE(control.find(Lines({"Delete: OK", "ConvGraph: YES", "Subject: From a file",
                                "Covertext: Hello,", "Covertext:", "Covertext: see below",
                                "SentItems: YES", "[ADDRESSEES]"})),
            std::string::npos)
      << control;
  const std::string list = vltest::ReadFile(Out() + "MSGDIR.CTL");
  for (const char* line : {"File: ~FAXA000.EPN\r\nComment: printer text\r\n", "Format: EPSON\r\n",
                           "MsgType: SMS\r\n"}) {
    EXPECT_NE(control.find(line), std::string::npos) << line;
    EXPECT_NE(list.find(line), std::string::npos) << line;
  }
  EXPECT_NE(list.find("Subject: From a file\r\n"), std::string::npos) << list;
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.EPN"), "\x1b" "EBold\x1b" "F\r\n");
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.001"), "x\fy\r\n");
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
  // Each fault of a message section: SubmitParserTest and ControlFileTest.
  const struct { const char* text; VLRESULT code; } cases[] = {
      {"%%[MESSAGE]\r\nPriority: URGENT\r\n", VL_E_SUBMIT_FILE_INVALID},
      {"%%[MESSAGE]\r\nTo: A\r\nFax: 1\r\n%%[FILE]\r\nC:\\NO\\SUCH.FILE\r\n", VL_E_FILE_NOT_FOUND},
      {"no message at all\r\n", VL_E_SUBMIT_FILE_INVALID},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Submit(c.text), c.code) << c.text;
    EXPECT_EQ(vltest::ListDirectory(Out()), Strings{"MSGDIR.CTL"}) << c.text;
    EXPECT_TRUE(vltest::ListDirectory(tree_.Request()).size() <= 1) << "the lock file only";
  }
  EXPECT_EQ(VlxSendSubmitFile(handle_, scratch_.Path("SUBMIT.TXT").c_str(), "FAX", body_),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Prefix name must be 4 characters");
  server_.Stop();
  EXPECT_EQ(Submit("%%[MESSAGE]\r\nTo: A\r\nFax: 1\r\n%%[TEXT]\r\nx\r\n"), VL_E_SERVER_NOT_RUNNING);
  EXPECT_EQ(vltest::ListDirectory(Out()), Strings{"MSGDIR.CTL"});
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
  EXPECT_EQ(vltest::ListDirectory(Out()), (Strings{"MSGDIR.CTL", "~FAXA000.TMP"}));
  EXPECT_EQ(vltest::ReadFile(Out() + "~FAXA000.TMP"),
            "(created by VlxSendSubmitFile() because files ~FAXA000.*\r\n"
            "deleted previously without deleting references\r\nin MSGDIR.CTL)\r\n");
}

TEST_F(SubmissionTest, SendMsgTakesFilesAlreadyInTheOutDirectoryAndChecksItsArguments) {
  vltest::WriteFile(Out() + "MSG1.CTL", "control");
  vltest::WriteFile(Out() + "MSG1.TIF", "image");
  ASSERT_EQ(VlxSendMsg(handle_, "MSG1", "tif", nullptr), VL_OK) << Reported::Last();
  const std::string list = vltest::ReadFile(Out() + "MSGDIR.CTL");
  EXPECT_NE(list.find("File: MSG1.TIF\r\nComment: (submitted from API)\r\n"), std::string::npos);
  EXPECT_NE(list.find("Format: TIFF-UNCOMPRESSED\r\n"), std::string::npos) << list;

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
                    "%%[MESSAGE]\r\nFormat: EPSON\r\nCustom: c-1\r\nTo: Mo\r\nSMS: 0700\r\n");
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
  // The type and the organisation reach the list entries of the submissions above.
  EXPECT_EQ((Strings{info.Custom, info.Comment}), (Strings{"c-1", "To: Mo"}));
  EXPECT_NE(vltest::ReadFile(control).find("MsgType: SMS\r\nCustom: c-1\r\n"), std::string::npos);
}

class AutoFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.UseAsExplicitAreas();
    handle_ = vltest::LogOn(nullptr);  // the function needs no user
    dir_ = scratch_.Path("OUT\\");
    vltest::MakeDirectories(dir_);
    Reported::Clear();
  }
  void TearDown() override {
    os::fault::Clear();
    VlxAPIClosedown(handle_);
  }

  VLRESULT Create(const char* prefix, const char* extension, const std::string& path) {
    std::snprintf(name_, sizeof name_, "junk");
    return VlxCreateAutoFile(handle_, prefix, extension, path.c_str(), name_);
  }

  Scratch scratch_;
  FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
  std::string dir_;
  char name_[16] = {};
};

TEST_F(AutoFileTest, NamesCountUpFromZeroSkippingTakenBaseNames) {
  ASSERT_EQ(Create("FAXA", "TIF", dir_), VL_OK) << Reported::Last();
  EXPECT_STREQ(name_, "~FAXA000");
  vltest::WriteFile(dir_ + "~FAXA001", "no extension");
  vltest::MakeDirectories(dir_ + "~FAXA002.DIR");  // a directory takes a name too
  ASSERT_EQ(Create("FAXA", "TIF", scratch_.Path("OUT")), VL_OK);  // backslash appended
  EXPECT_STREQ(name_, "~FAXA003");
  ASSERT_EQ(Create("FAXB", "C", dir_), VL_OK);
  EXPECT_STREQ(name_, "~FAXB000");
  EXPECT_EQ(vltest::ListDirectory(dir_),
            (Strings{"~FAXA000.TIF", "~FAXA001", "~FAXA002.DIR", "~FAXA003.TIF", "~FAXB000.C"}));
}

TEST_F(AutoFileTest, CandidatesFollowTheThreePhasesInOrder) {
  // At second 4, millisecond 955 the decimal phase starts at 999 and wraps
  // to 040; the base-36 phase starts at (955 * 53 + 4) % 46646 + 10 = 3983,
  // "32N". Counters taken with another extension and the names made before
  // are passed over; 060 stays free: the budget ends at 059.
  os::fault::PinClock(os::LocalTime{2026, 11, 23, 10, 20, 4, 955});
  auto takeThrough = [&](int last) {  // ~FAXA000.DOC to the last counter
    for (int i = 0; i <= last; ++i)
      vltest::WriteFile(dir_ + "~FAXA" + std::to_string(1000 + i).substr(1) + ".DOC", "");
  };
  auto next = [&] {
    EXPECT_EQ(Create("FAXA", "TIF", dir_), VL_OK);
    return std::string(name_);
  };
  takeThrough(39);
  EXPECT_EQ(next(), "~FAXA999");
  takeThrough(58);
  EXPECT_EQ(next(), "~FAXA059");
  EXPECT_EQ(next(), "~FAXA32N");
  // A base-36 name taken in lower case.
  vltest::RemoveTree(dir_ + "~FAXA32N.TIF");
  vltest::WriteFile(dir_ + "~faxa32n", "");
  EXPECT_EQ(next(), "~FAXA32O");
}

TEST_F(AutoFileTest, ArgumentsAreCheckedBeforeAnyFileIsMade) {
  const std::string path256 = scratch_.Dir() + std::string(256 - scratch_.Dir().size(), 'p');
  const std::string length = "Prefix name must be 4 characters", ext = "Extension name invalid";
  const std::string path = "Path name invalid", prefix = "Prefix name invalid";
  const struct {
    const char *prefix, *extension;
    std::string path, report;
  } cases[] = {
      {"FAX", "TIF", dir_, length},  {"FAXAB", "TIF", dir_, length}, {nullptr, "TIF", dir_, length},
      {"FAXA", "", dir_, ext},       {"FAXA", "TIFF", dir_, ext},    {"FAXA", nullptr, dir_, ext},
      {"FAXA", "TIF", "", path},     {"FAXA", "TIF", path256, path},
      {"FAXA", "TIF", path256 + "\\", path},
      // Only characters that message lists keep.
      {"A:BC", "TIF", dir_, prefix}, {"A.BC", "TIF", dir_, prefix}, {"FAXA", "C\x01", dir_, ext},
  };
  for (const auto& c : cases) {
    Reported::Clear();
    EXPECT_EQ(Create(c.prefix, c.extension, c.path), VL_E_INVALID_PARAM) << c.report;
    EXPECT_EQ(Reported::Texts(), Strings{c.report});
    EXPECT_STREQ(name_, "junk");
  }
  EXPECT_EQ(VlxCreateAutoFile(handle_, "FAXA", "TIF", nullptr, name_), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxCreateAutoFile(handle_, "FAXA", "TIF", dir_.c_str(), nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: name is NULL");
  EXPECT_EQ(VlxCreateAutoFile(handle_, "FAX", "TIF", dir_.c_str(), nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Prefix name must be 4 characters");  // the arguments come first
  EXPECT_TRUE(vltest::ListDirectory(dir_).empty());
}

TEST_F(AutoFileTest, AListedNameThatCannotBeSetAsideFailsTheCall) {
  vltest::WriteFile(dir_ + "MSGDIR.CTL", "[DOCUMENT]\r\nFile: ~FAXA000.TIF\r\n");
  os::fault::Inject(os::fault::Op::RenameFile, 1, os::kAccessDenied, true);
  EXPECT_EQ(Create("FAXA", "TIF", dir_), VL_E_FILE_CREATE_ERROR);
  EXPECT_EQ(Reported::Last(), "Unable to create file");
  EXPECT_EQ(vltest::ListDirectory(dir_), Strings{"MSGDIR.CTL"});
}

TEST_F(AutoFileTest, GeneratorFailuresMapToResultCodes) {
  using os::fault::Op;
  const struct { Op op; int error; VLRESULT code; const char* report; } cases[] = {
      {Op::CreateExclusive, os::kTooManyOpenFiles, VL_E_FILE_CREATE_ERROR, "Unable to create file"},
      {Op::CreateExclusive, os::kAccessDenied, VL_E_INVALID_PARAM, "Invalid parameters"},
      {Op::ListFiles, os::kAccessDenied, VL_E_INVALID_PARAM, "Invalid parameters"},
  };
  for (const auto& c : cases) {
    os::fault::Inject(c.op, 1, c.error);
    EXPECT_EQ(Create("FAXA", "TIF", dir_), c.code) << c.error;
    EXPECT_EQ(Reported::Last(), c.report);
  }
  EXPECT_TRUE(vltest::ListDirectory(dir_).empty());
  EXPECT_EQ(Create("FAXA", "TIF", scratch_.Path("MISSING\\")), VL_E_PATH_NOT_FOUND);
  EXPECT_EQ(Reported::Last(), "Path not found");
}

TEST_F(AutoFileTest, EveryCounterTakenMeansAllFilesExist) {
  os::fault::Inject(os::fault::Op::CreateExclusive, 1, os::kFileExists, true);
  EXPECT_EQ(Create("FAXA", "TIF", dir_), VL_E_TOO_MANY_FILES);
  EXPECT_EQ(Reported::Last(), "All possible files already exist");
  // 40 low counters, 21 random decimal ones and every base-36 value 00A-ZZZ.
  EXPECT_EQ(os::fault::Calls(os::fault::Op::CreateExclusive), 40 + 21 + 46646);
}

TEST_F(AutoFileTest, ARaceForTheSameBaseNameGivesTheNameUp) {
  // Another process creates ~FAXA000.DOC between the look and the creation:
  // the count after the creation finds two files and the next counter is taken.
  os::fault::Before(
      os::fault::Op::CreateExclusive, 1,
      [](void* dir) { vltest::WriteFile(*static_cast<std::string*>(dir) + "~FAXA000.DOC", ""); },
      &dir_);
  ASSERT_EQ(Create("FAXA", "TIF", dir_), VL_OK);
  EXPECT_STREQ(name_, "~FAXA001");
  EXPECT_EQ(vltest::ListDirectory(dir_), (Strings{"~FAXA000.DOC", "~FAXA001.TIF"}));
}

// Names the message list still references are skipped, whatever their case
// and extension, and stay taken under the extension TMP; a fault at any
// platform call on the way ends in success or a documented code.
TEST_F(AutoFileTest, FaultAtAnyPlatformCallEndsInSuccessOrADocumentedCode) {
  for (int n = 1;; ++n) {
    vltest::RemoveTree(dir_);
    vltest::MakeDirectories(dir_);
    vltest::WriteFile(dir_ + "MSGDIR.CTL", vltest::ListHeader() +
                                               vltest::ListEntryText({"~faxa000.TXT"}) +
                                               vltest::ListEntryText({"~FAXA001.TIF"}));
    os::fault::Inject(os::fault::Op::Any, n, os::kAccessDenied);
    VLRESULT rc = Create("FAXA", "TIF", dir_);
    const int calls = os::fault::Calls(os::fault::Op::Any);
    os::fault::Clear();
    EXPECT_TRUE(rc == VL_OK || rc == VL_E_INVALID_PARAM || rc == VL_E_FILE_CREATE_ERROR)
        << "fault at call " << n << " gave " << std::hex << rc;
    for (const std::string& file : vltest::ListDirectory(dir_)) {
      const bool kept = file == "MSGDIR.CTL" || file == "~FAXA000.TMP" || file == "~FAXA001.TMP";
      EXPECT_TRUE(kept || (rc == VL_OK && file == std::string(name_) + ".TIF"))
          << "fault at call " << n << " left " << file;
    }
    if (calls < n) {
      EXPECT_STREQ(name_, "~FAXA002");
      EXPECT_EQ(vltest::ListDirectory(dir_),
                (Strings{"MSGDIR.CTL", "~FAXA000.TMP", "~FAXA001.TMP", "~FAXA002.TIF"}));
      break;
    }
  }
}

}  // namespace
