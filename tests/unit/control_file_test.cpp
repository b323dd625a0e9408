// A message's options read from its submit file, and its control file:
// every line in its order, the wrapping of subject and cover text, and the
// translation of the addressing lines.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "api/process_state.h"
#include "api/session.h"
#include "msg/control_file.h"
#include "msg/submit_parser.h"
#include "msg/text_wrap.h"
#include "platform/raii.h"
#include "tests/support/test_support.h"

namespace {

using vltest::Contents;
using vltest::Lines;
using vltest::Reported;
using vltest::StreamOf;

// A session that reports into Reported, and a message's options.
class OptionsTest : public ::testing::Test {
 protected:
  void SetUp() override {
    session_.errorCallback = &Reported::Callback;
    Reported::Clear();
  }

  vl::ApiSession session_;
  vl::MessageOptions options_;
};

class SubmitParserTest : public OptionsTest {
 protected:
  // Parses the options lines of text; the stream must end at the To: line.
  VLRESULT Parse(const std::string& text) {
    options_ = vl::MessageOptions{};
    file_ = StreamOf(text);
    VLRESULT rc = vl::ParseMessageOptions(session_, file_.get(), &options_, &message_);
    if (rc == VL_OK) {
      EXPECT_EQ(std::ftell(file_.get()), message_.toPosition);
    }
    return rc;
  }

  vl::SubmitMessage message_;
  os::UniqueFile file_;
};

TEST_F(SubmitParserTest, OptionsLinesFillTheRecord) {
  using Check = std::function<bool(const vl::MessageOptions&)>;
  const struct {
    const char* line;
    Check check;
  } cases[] = {
      {"Format: tiff-fine", [](auto& o) { return o.Format == 6; }},
      {"Comment: " "12345678901234567890123456789012345678901234",
       [](auto& o) { return std::strlen(o.Comment) == 40; }},
      {"Coversheet: COVER.DOC", [](auto& o) { return !std::strcmp(o.Coversheet, "COVER"); }},
      {"Letterhead: .HEAD", [](auto& o) { return !std::strcmp(o.Letterhead, ".HEAD"); }},
      {"Charge: 42", [](auto& o) { return !std::strcmp(o.Chargecode, "42"); }},
      {"QSMessageIDX: q-1", [](auto& o) { return !std::strcmp(o.QSMessageID, "q-1"); }},
      {"Hold:", [](auto& o) { return o.Hold == 1; }},
      {"Hold: no", [](auto& o) { return o.Hold == 0; }},
      {"Preview: Nope", [](auto& o) { return o.Preview == 0; }},
      {"FaxBroadcast: yes", [](auto& o) { return o.FaxBroadcast == 1; }},
      {"Delete: YES", [](auto& o) { return o.DeleteFax && o.DeleteSMS && o.DeleteFaxIfOK && o.DeleteSMSIfOK; }},
      {"Delete: ok", [](auto& o) { return !o.DeleteFax && !o.DeleteSMS && o.DeleteFaxIfOK && o.DeleteSMSIfOK; }},
      {"After: OFFPEAK", [](auto& o) { return !std::strcmp(o.After, "OFFPEAK"); }},
      {"After: 2026-1-5 9:5:0", [](auto& o) { return !std::strcmp(o.After, "26-01-05 09:05:00"); }},
      {"After: 1999-12-31 23:59:59", [](auto& o) { return !std::strcmp(o.After, "99-12-31 23:59:59"); }},
      {"After: 120-1-1 0:0:0", [](auto& o) { return o.After[0] == '\0'; }},
      {"User: someone", [](auto& o) { return o.Hold == 0; }},
      {"SentItems: No", [](auto& o) { return o.SentItemsFax == 0; }},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(Parse(std::string(c.line) + "\r\nTo: Sales\r\nFax: 1\r\n"), VL_OK)
        << c.line << ": " << Reported::Last();
    EXPECT_TRUE(c.check(options_)) << c.line;
  }
  ASSERT_EQ(Parse("Attach: a.doc\r\nAttach: b.doc\r\nDOCUMENT: one\r\nDocument: two\r\nTo: S\r\n"),
            VL_OK);
  EXPECT_STREQ(options_.Attach, "b.doc");  // a later line replaces an earlier one
  EXPECT_STREQ(options_.Documents[0], "one");
  EXPECT_STREQ(options_.Documents[1], "two");
}

TEST_F(SubmitParserTest, TheFirstAddresseeGivesTypeAndOrganisation) {
  ASSERT_EQ(Parse("; options\r\n\r\nTo: Sales\r\nLan: JO\r\nOrganisation:\r\nOrganisation: Acme\r\n"
                  "To: B\r\nSMS: 07\r\n"),
            VL_OK);
  EXPECT_EQ(options_.MsgType, 1);  // a LAN addressee gives a fax message
  EXPECT_STREQ(options_.Organisation, "Acme");
  ASSERT_EQ(Parse("SentItems: no\r\nTo: Mo\r\nSMS: 07\r\n"), VL_OK);
  EXPECT_EQ(options_.SentItemsSMS, 1);  // only a capital N says no
}

// Positions taken from "Subject:" and "Note:" lines and from a cover text
// section are pinned by the submission tests' control files.
TEST_F(SubmitParserTest, TextSectionsAreFound) {
  ASSERT_EQ(Parse("To: A\r\nFax: 1\r\n%%[COVERTEXT]\r\nhello\r\n%%[SUBJECT]\r\nsubj\r\n"), VL_OK);
  EXPECT_EQ(vl::InfoSubject(file_.get(), message_.subject), "subj");

  ASSERT_EQ(Parse("To: A\r\n%%[SUBJECTFILE]\r\nNO-SUCH-FILE.TXT\r\n"), VL_OK);
  EXPECT_EQ(Reported::Last(), "Subject file not found");
  EXPECT_EQ(message_.subject.file, "");
}

TEST_F(SubmitParserTest, FormatErrorsAreReported) {
  const struct {
    const char* text;
    VLRESULT code;
    const char* report;
  } cases[] = {
      {"Priority: URGENT\r\n", VL_E_SUBMIT_FILE_INVALID, "To: line missing from SUBMIT file"},
      {"Hold: no\r\n%%[TEXT]\r\nTo: A\r\n", VL_E_SUBMIT_FILE_INVALID,
       "To: line missing from SUBMIT file"},
      {"Colour: all the colours of the rainbow\r\nTo: A\r\n", VL_E_SUBMIT_FILE_INVALID,
       "Unrecognised message options line 'Colour: all the colo...'"},
      {"Format: PNG\r\nTo: A\r\n", VL_E_SUBMIT_FILE_INVALID, "Invalid Format: line 'Format: PNG'"},
      {"To: A\r\n%%[SUBJECTFILE]\r\n", VL_E_SUBMIT_FILE_INVALID,
       "Subject file name missing from SUBMIT file"},
      {"To: A\r\n%%[COVERTEXTFILE]", VL_E_SUBMIT_FILE_INVALID,
       "Covertext file name missing from SUBMIT file"},
      // An invalid After time is reported and emptied, and parsing goes on.
      {"After: 26-02-30 10:00:00\r\nTo: A\r\n", VL_OK,
       "After time '26-02-30 10:00:00' invalid - reset to send immediately"},
  };
  for (const auto& c : cases) {
    Reported::Clear();
    EXPECT_EQ(Parse(c.text), c.code) << c.text;
    EXPECT_EQ(Reported::Last(), c.report) << c.text;
  }
  EXPECT_STREQ(options_.After, "");
}

TEST_F(SubmitParserTest, TheFromLineYieldsToTheOverrideSwitch) {
  vl::Process().overrideFrom = 1;
  ASSERT_EQ(Parse("From: Other\r\nTo: A\r\n"), VL_OK);
  EXPECT_STREQ(options_.From, "");
  vl::Process().overrideFrom = 0;
  ASSERT_EQ(Parse("From: Other\r\nTo: A\r\n"), VL_OK);
  EXPECT_STREQ(options_.From, "Other");
}

TEST_F(SubmitParserTest, TheInfoSubjectMarksMoreWithDots) {
  const std::string x59(59, 'x'), x57(57, 'x'), x70(70, 'x');
  const struct {
    std::string lines;
    std::string subject;
  } cases[] = {
      {"Subject: " + x57 + "\r\nSubject: more\r\n", x57 + "..."},
      {"Subject: " + x59 + "\r\nSubject: more\r\n", std::string(56, 'x') + "..."},
      {"Subject: " + x70 + "\r\n", std::string(57, 'x') + "..."},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(Parse(c.lines + "To: A\r\n"), VL_OK);
    EXPECT_EQ(vl::InfoSubject(file_.get(), message_.subject), c.subject) << c.lines;
  }
}

std::string Wrapped(const char* keyword, std::initializer_list<const char*> source) {
  auto out = StreamOf("");
  vl::TextWrapper wrapper(out.get(), keyword);
  for (const char* line : source) wrapper.Line(line);
  return Contents(out.get());
}

// A line without blanks is cut at 60 characters: ControlFileTest's text files.
TEST(TextWrapper, CutsAtABlankAndMarksNewSourceLinesButNotAfterBlankLines) {
  EXPECT_EQ(Wrapped("Covertext:", {"", "  ", "A"}),
            Lines({"Covertext:", "Covertext:", "Covertext: A"}));
  const std::string words = std::string(55, 'a') + " bbbbbbbbbb cc";
  EXPECT_EQ(Wrapped("Subject:", {"  lead", words.c_str()}),
            "Subject: lead\r\nSubject: \\n" + std::string(55, 'a') +
                "\r\nSubject: bbbbbbbbbb cc\r\n");
}

class ControlFileTest : public OptionsTest {
 protected:
  void SetUp() override {
    OptionsTest::SetUp();
    std::strcpy(options_.Priority, "NORMAL");
    std::strcpy(options_.Header, "NoToFrDaTi");
    std::strcpy(options_.Quality, "NORMAL");
    options_.Format = 2;
    options_.Preview = 1;
    options_.SentItemsFax = options_.SentItemsSMS = 1;
  }
  // Writes the control file from the addressing lines into text_.
  VLRESULT Write(const std::string& addressing, vl::TextSource subject = {},
                 vl::TextSource cover = {}) {
    submit_ = StreamOf(addressing);
    out_ = StreamOf("");
    VLRESULT rc = vl::WriteControlFile(session_, out_.get(), "MSG1", options_, submit_.get(),
                                       subject, cover);
    text_ = Contents(out_.get());
    return rc;
  }

  os::UniqueFile submit_, out_;
  std::string text_;
};

TEST_F(ControlFileTest, WritesEveryLineInItsOrder) {
  std::strcpy(options_.From, "Jo");
  std::strcpy(options_.Attach, "a.doc, ,  b.doc");
  std::strcpy(options_.Documents[0], "C:\\FIRST.TIF");
  std::strcpy(options_.Documents[2], "C:\\NOT.TIF");  // after an empty slot
  std::strcpy(options_.NotifyMail, "jo@example.org");
  options_.Hold = 1;
  options_.DeleteFaxIfOK = 1;
  options_.AbortAfterPreview = 1;
  // Comment and blank lines among the addressing lines are passed over; a
  // "Via:" line replaces the route that a number line gave.
  ASSERT_EQ(Write("; a comment\r\nTo: Sales\r\n\r\nfax: 123\r\nOrganisation: Acme\r\n"
                  "Field: Custom ref-1\r\nTo: Mo\r\nSMS: 0700\r\nVia: PRINTER-ANY P1\r\n"),
            VL_OK)
      << Reported::Last();
  // The head before "[OPTIONS]" is pinned byte for byte by the submission tests.
  EXPECT_EQ(text_.substr(text_.find("[OPTIONS]")),
            Lines({"[OPTIONS]", "From: Jo", "FromTelephone: ", "FromFax: ", "FromEmail: ",
                   "FromParam: ", "Coversheet: ", "Letterhead: ", "Priority: NORMAL", "After: ",
                   "Header: NoToFrDaTi", "Quality: NORMAL", "Chargecode: ", "CodeDescription:",
                   "Preview: YES", "FaxBroadcast: NO", "Hold: YES", "Delete: OK",
                   "ConvGraph: YES", "Attach: a.doc", "Attach: b.doc", "Document: C:\\FIRST.TIF",
                   "NotifyMail: jo@example.org", "AbortAfterPreview: YES", "SentItems: YES",
                   "[ADDRESSEES]", "Shortname:", "AddrStatus: Wa", "Name: Sales",
                   "Field: Name Sales", "Field: Fax 123", "Organisation: Acme",
                   "Field: Organisation Acme", "Field: Custom ref-1", "Via: FAX-ANY 123",
                   "Shortname:", "AddrStatus: Wa", "Name: Mo", "Field: Name Mo", "Field: SMS 0700",
                   "Organisation:", "Field: Organisation", "Via: PRINTER-ANY P1"}));
}

TEST_F(ControlFileTest, DeleteAndSentItemsFollowTheMessageType) {
  const struct {
    uint16_t type;
    int32_t deleteFax, deleteSms, sentFax, sentSms, mode;
    const char* deleteWord;
    const char* sentItems;  // none: no line
  } cases[] = {
      {1, 1, 0, 1, 0, -1, "YES", "YES"}, {1, 0, 1, 0, 1, -1, "", "NO"},
      {3, 0, 1, 0, 1, -1, "YES", "YES"}, {2, 1, 1, 1, 1, -1, "", "NO"},
      {1, 0, 0, 1, 1, 0, "", "NO"},      {2, 0, 0, 0, 0, 1, "", "YES"},
      {1, 0, 0, 1, 1, 7, "", nullptr},
  };
  for (const auto& c : cases) {
    options_.MsgType = c.type;
    options_.DeleteFax = c.deleteFax;
    options_.DeleteSMS = c.deleteSms;
    options_.SentItemsFax = c.sentFax;
    options_.SentItemsSMS = c.sentSms;
    vl::Process().sentItemsMode = c.mode;
    ASSERT_EQ(Write("To: A\r\nVia: X\r\n"), VL_OK);
    const std::string sent = c.sentItems ? std::string("SentItems: ") + c.sentItems + "\r\n" : "";
    EXPECT_NE(text_.find(std::string("\r\nDelete: ") + c.deleteWord + "\r\nConvGraph: YES\r\n" +
                         sent + "[ADDRESSEES]"),
              std::string::npos)
        << text_;
  }
  vl::Process().sentItemsMode = -1;
}

TEST_F(ControlFileTest, AddressingErrorsAreReported) {
  const struct {
    const char* lines;
    std::vector<std::string> reports;
  } cases[] = {
      {"", {"No addressees specified in SUBMIT file"}},
      {"; only a comment\r\n%%[TEXT]\r\n", {"No addressees specified in SUBMIT file"}},
      {"To: A\r\nFax: 1\r\nTo: B\r\n", {"Route missing from SUBMIT file"}},
      {"To: A\r\nNote: late\r\n", {"'Covertext' lines must be immediately before first 'To' line"}},
      {"To: A\r\nPriority: URGENT and some more text\r\n",
       {"Unrecognised addressing options line 'Priority: URGENT and...'",
        "Message options lines must be before 'To' and 'Covertext' lines"}},
      {"To: A\r\nHold: no\r\n",
       {"Unrecognised addressing options line 'Hold: no'",
        "Message options lines must be before 'To' and 'Covertext' lines"}},
  };
  for (const auto& c : cases) {
    Reported::Clear();
    EXPECT_EQ(Write(c.lines), VL_E_SUBMIT_FILE_INVALID) << c.lines;
    EXPECT_EQ(Reported::Texts(), c.reports) << c.lines;
  }
}

// Subject and cover text from the submit file's own lines and sections are
// pinned byte for byte by the submission tests; here, the text files.
TEST_F(ControlFileTest, SubjectAndCoverTextFilesAreWrappedAndCleaned) {
  vltest::Scratch scratch;
  const std::string file = scratch.Path("SUBJECT.TXT");
  vltest::WriteFile(file, std::string(270, 'w') + " tail-of-a-long-line\n\xe9t\xe9\x9c\n");
  ASSERT_EQ(Write("To: A\r\nVia: V\r\n", vl::TextSource{-1, file}), VL_OK);
  std::string expected;
  for (int i = 0; i < 4; ++i) expected += "Subject: " + std::string(60, 'w') + "\r\n";
  expected += "Subject: " + std::string(30, 'w') + "\r\nSubject: tail-of-a-long-line\r\n" +
              "Subject: \\nt \x9c\r\n";
  EXPECT_NE(text_.find(expected), std::string::npos) << text_;
  Reported::Clear();
  EXPECT_EQ(Write("To: A\r\nVia: V\r\n", vl::TextSource{-1, scratch.Path("NONE.TXT")}),
            VL_E_FILE_ERROR);
  EXPECT_EQ(Reported::Last(), "Error opening file - " + scratch.Path("NONE.TXT"));
}

}  // namespace
