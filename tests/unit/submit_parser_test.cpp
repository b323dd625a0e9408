// Reading a message's options from a submit file.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>

#include "api/process_state.h"
#include "api/session.h"
#include "msg/submit_parser.h"
#include "platform/raii.h"
#include "tests/support/test_support.h"

namespace {

using vltest::Reported;

class SubmitParserTest : public ::testing::Test {
 protected:
  void SetUp() override {
    session_.errorCallback = &Reported::Callback;
    Reported::Clear();
  }
  // Parses the options lines of text; the stream must end at the To: line.
  VLRESULT Parse(const std::string& text) {
    options_ = vl::MessageOptions{};
    file_.reset(std::tmpfile());
    std::fwrite(text.data(), 1, text.size(), file_.get());
    std::rewind(file_.get());
    VLRESULT rc = vl::ParseMessageOptions(session_, file_.get(), &options_, &message_);
    if (rc == VL_OK) {
      EXPECT_EQ(std::ftell(file_.get()), message_.toPosition);
    }
    return rc;
  }

  vl::ApiSession session_;
  vl::MessageOptions options_;
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
      {"From: Jo Bloggs", [](auto& o) { return !std::strcmp(o.From, "Jo Bloggs"); }},
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

TEST_F(SubmitParserTest, TheFirstAddresseeGivesCommentTypeAndOrganisation) {
  ASSERT_EQ(Parse("; options\r\n\r\nTo: Sales\r\nLan: JO\r\nOrganisation:\r\nOrganisation: Acme\r\n"
                  "To: B\r\nSMS: 07\r\n"),
            VL_OK);
  EXPECT_STREQ(options_.Comment, "To: Sales");
  EXPECT_EQ(options_.MsgType, 1);  // a LAN addressee gives a fax message
  EXPECT_STREQ(options_.Organisation, "Acme");
  ASSERT_EQ(Parse("Comment: mine\r\nSentItems: no\r\nTo: Mo\r\nSMS: 07\r\n"), VL_OK);
  EXPECT_STREQ(options_.Comment, "mine");
  EXPECT_EQ(options_.MsgType, 3);
  EXPECT_EQ(options_.SentItemsSMS, 1);  // only a capital N says no
}

TEST_F(SubmitParserTest, TextPositionsAndSectionsAreFound) {
  const std::string text =
      "Subject: one\r\nSubject: two\r\nNote: dear\r\nTo: A\r\nFax: 1\r\n%%[TEXT]\r\nbody\r\n"
      "%%[SUBJECT]\r\nignored\r\n%%[MESSAGE]\r\n%%[COVERTEXT]\r\n";
  ASSERT_EQ(Parse(text), VL_OK);
  EXPECT_EQ(message_.subject.position, 0);
  EXPECT_EQ(message_.cover.position, static_cast<long>(text.find("Note:")));

  const std::string sections = "To: A\r\nFax: 1\r\n%%[COVERTEXT]\r\nhello\r\n%%[SUBJECT]\r\nsubj\r\n";
  ASSERT_EQ(Parse(sections), VL_OK);
  EXPECT_EQ(message_.cover.position, static_cast<long>(sections.find("%%[COVERTEXT]")));
  EXPECT_EQ(message_.subject.position, static_cast<long>(sections.find("%%[SUBJECT]")));
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
  };
  for (const auto& c : cases) {
    Reported::Clear();
    EXPECT_EQ(Parse(c.text), c.code) << c.text;
    EXPECT_EQ(Reported::Last(), c.report) << c.text;
  }
  // An invalid After time is reported and emptied, and parsing goes on.
  Reported::Clear();
  ASSERT_EQ(Parse("After: 26-02-30 10:00:00\r\nTo: A\r\n"), VL_OK);
  EXPECT_STREQ(options_.After, "");
  EXPECT_EQ(Reported::Last(), "After time '26-02-30 10:00:00' invalid - reset to send immediately");
}

TEST_F(SubmitParserTest, TheFromLineYieldsToTheOverrideSwitch) {
  std::strcpy(options_.From, "default");
  vl::Process().overrideFrom = 1;
  ASSERT_EQ(Parse("From: Other\r\nTo: A\r\n"), VL_OK);
  EXPECT_STREQ(options_.From, "");  // the record was reset by Parse; the line was not used
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
      {"Subject: short\r\n", "short"},
      {"Subject: short\r\nSubject: more\r\n", "short..."},
      {"Subject: " + x57 + "\r\nSubject: more\r\n", x57 + "..."},
      {"Subject: " + x59 + "\r\nSubject: more\r\n", std::string(56, 'x') + "..."},
      {"Subject: " + x70 + "\r\n", std::string(57, 'x') + "..."},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(Parse(c.lines + "To: A\r\n"), VL_OK);
    EXPECT_EQ(vl::InfoSubject(file_.get(), message_.subject), c.subject) << c.lines;
  }
}

}  // namespace
