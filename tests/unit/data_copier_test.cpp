// Copying data sections of a submit file, the EPSON text commands and their
// printer bytes, and VlxCreateDataFile.
#include <gtest/gtest.h>

#include <cstdio>

#include "api/session.h"
#include "msg/data_copier.h"
#include "tests/support/test_support.h"
#include "tests/support/user_fixture.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Texts = std::vector<std::string>;

// Every byte value, several times over: more than two blocks.
std::string AllBytes() {
  std::string bytes;
  for (int i = 0; i < 1300; ++i) bytes.push_back(static_cast<char>(i * 7 % 256));
  return bytes;
}

// ESC, the command letter and its argument bytes.
std::string Esc(const char* command, std::initializer_list<int> arguments = {}) {
  std::string bytes = std::string("\x1b") + command;
  for (int b : arguments) bytes.push_back(static_cast<char>(b));
  return bytes;
}
// The font commands: typeface k, then the print mode.
std::string Font(int typeface, int mode) { return Esc("k", {typeface}) + Esc("!", {mode}); }

class DataCopierTest : public ::testing::Test {
 protected:
  void SetUp() override { session_.errorCallback = &Reported::Callback; }
  // Copies the section at the start of submit with a fresh report list: out_
  // holds what was written, rest_ what the submit stream has left.
  VLRESULT Copy(const std::string& submit, const char* extension, FILE* out = nullptr) {
    Reported::Clear();
    auto submitStream = vltest::StreamOf(submit), outStream = vltest::StreamOf("");
    const VLRESULT rc = vl::CopyDataSection(session_, submitStream.get(),
                                            out ? out : outStream.get(), extension);
    const long at = std::ftell(submitStream.get());
    rest_ = vltest::Contents(submitStream.get()).substr(at);
    out_ = vltest::Contents(outStream.get());
    return rc;
  }
  // The data written from EPSON body lines, without the closing CR LF.
  std::string Epson(const std::string& body) {
    EXPECT_EQ(Copy("%%[TEXT]\r\n" + body + "\r\n", "epn"), VL_OK) << body;
    EXPECT_TRUE(out_.ends_with("\r\n")) << body;
    return out_.substr(0, out_.size() - 2);
  }

  vl::ApiSession session_;
  vltest::Scratch scratch_;
  std::string out_, rest_;
};

TEST_F(DataCopierTest, TextStopsAtTheNextSectionAndLeavesTheStreamThere) {
  for (auto [end, stops] : {std::pair{"%%[file]  ", true}, {"%%[TEXT]x", false}}) {
    const std::string tail = std::string(end) + "\r\nafter\r\n";
    ASSERT_EQ(Copy("%%[text]\r\none\r\n" + tail, "TXT"), VL_OK);
    EXPECT_EQ(out_, stops ? "one\r\n" : "one\r\n" + tail) << end;
    EXPECT_EQ(rest_, stops ? tail : "") << end;
  }
}

TEST_F(DataCopierTest, AsciiKeepsPercentRunsButRefusesCommands) {
  ASSERT_EQ(Copy("%%[TEXT]\nA %%%[PAGE] %%[NOTE] %%%%%[x]\r\nlast", "txt"), VL_OK);
  EXPECT_EQ(out_, "A %%%[PAGE] %%[NOTE] %%%%%[x]\r\nlast");  // line ends as CR LF
  EXPECT_EQ(Copy("%%[TEXT]\r\nok\r\nA %%%%[bold:on]\r\n", "txt"), VL_E_SUBMIT_FILE_INVALID);
  EXPECT_EQ(Reported::Texts(), Texts{"%%[BOLD] command only valid with Epson format"});
}

TEST_F(DataCopierTest, BodyFilesAndBinaryFormats) {
  // A binary body is copied byte for byte, to its end.
  const std::string body = scratch_.Path("BODY");
  vltest::WriteFile(body, AllBytes());
  ASSERT_EQ(Copy("%%[FILE]\r\n" + body + "\r\n%%[TEXT]\r\nnext\r\n", "tif"), VL_OK);
  EXPECT_EQ(out_, AllBytes());
  EXPECT_EQ(rest_, "%%[TEXT]\r\nnext\r\n");
  const std::string rest = AllBytes() + "\r\n%%[TEXT]\r\n%%[PAGE]";
  ASSERT_EQ(Copy("%%[TEXT]\r\n" + rest, "EPS"), VL_OK);
  EXPECT_EQ(out_, rest);
  // A text body file is translated and ends at its own section line.
  vltest::WriteFile(body, "x%%[PAGE]y\r\n%%[TEXT]\r\nnot copied\r\n");
  ASSERT_EQ(Copy("%%[file]\r\n" + body + "  \r\n%%[TEXT]\r\n", "EPN"), VL_OK);
  EXPECT_EQ(out_, "x\fy\r\n");
}

TEST_F(DataCopierTest, ErrorsAreReported) {
  const std::string missing = scratch_.Path("MISSING.TXT"), readOnly = scratch_.Path("READONLY");
  vltest::WriteFile(readOnly, "");
  os::UniqueFile unwritable(std::fopen(vltest::NativePath(readOnly).c_str(), "rb"));
  const std::string text = "%%[TEXT]\r\n", name = "Extension name invalid";
  const std::string unknown = "Data extension unknown";
  struct Case { std::string submit; const char* extension; VLRESULT code; std::string report; };
  const Case cases[] = {
      {text, "", VL_E_INVALID_PARAM, name},       {text, "TIFF", VL_E_INVALID_PARAM, name},
      {text, "???", VL_E_INVALID_PARAM, unknown}, {text, "XYZ", VL_E_INVALID_PARAM, unknown},
      {text, nullptr, VL_E_INVALID_PARAM, "Invalid parameter supplied to API: extension is NULL"},
      {"%%[FILE]\r\n", "TXT", VL_E_SUBMIT_FILE_INVALID,
       "File name missing from %%[FILE] section in submit file"},
      {"%%[FILE]\r\n" + missing + "\r\n", "TIF", VL_E_FILE_NOT_FOUND,
       "Unable to open file " + missing},
      {"%%[MESSAGE]\r\n", "TXT", VL_E_SUBMIT_FILE_INVALID,
       "%%[TEXT] or %%[FILE] section not found in submit file"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(Copy(c.submit, c.extension), c.code) << c.submit;
    EXPECT_EQ(Reported::Texts(), Texts{c.report}) << c.submit;
  }
  EXPECT_EQ(Copy("%%[TEXT]\r\ntext\r\n", "TXT", unwritable.get()), VL_E_FILE_ERROR);
  EXPECT_EQ(Reported::Texts(), Texts{"Error writing to data file"});
}

using EpsonCommand = DataCopierTest;

TEST_F(EpsonCommand, EveryCommandGivesItsPrinterBytes) {
  const std::string arg90 = std::string(88, '0') + "10", j200 = Esc("J", {200});
  const struct { std::string body, bytes; } cases[] = {
      {"a%%[PAGE]b", "a\fb"}, {"%%[BOLD:ON]%%[bold:off]", Esc("E") + Esc("F")},
      {"%%[UL:on]%%[UNDERLINE:OFF]", Esc("-", {1}) + Esc("-", {0})}, {"%%[page:x]", "\f"},
      {"%%[DOWN:100]", j200},                 {"%%[DOWN:101]", j200 + Esc("J", {2})},
      {"%%[DOWN:250]", j200 + j200 + Esc("J", {100})}, {"%%[DOWN:" + arg90 + "]", Esc("J", {20})},
      {"%%[RIGHT:1]", Esc("\\", {1, 0})},     {"%%[RIGHT:2000]", Esc("\\", {0x6A, 0x0A})},
      {"%%[XPOS:0]", Esc("$", {0, 0})},       {"%%[XPOS:2000]", Esc("$", {0x35, 0x05})},
      {"%%[XPOSR:0]", Esc("$", {0, 0x80})},   {"%%[LMARGIN:0]", Esc("l", {0})},
      {"%%[LMARGIN:255]", Esc("l", {255})},   {"%%[FONT:ROMAN]", Font(0, 0)},
      {"%%[FONT:roman12]", Font(0, 1)},       {"%%[FONT:SSERIF]", Font(255, 0)},
      {"%%[FONT:SSERIF16]", Font(255, 1)},    {"%%[FONT:ROMANPS]", Font(0, 2)},
      {"%%[FONT:SSERIF20]", Font(255, 4)},    {"%%[FONT:SSERIF32]", Font(255, 5)},
      {"%%[FONT:ROMAN5]", Font(0, 32)},       {"%%[FONT:SSERIF8]", Font(255, 33)},
      // Out of range, or not ON or OFF: removed, no bytes.
      {"<%%[DOWN:0]%%[DOWN:2001]%%[DOWN]%%[RIGHT:0]%%[RIGHT:2001]%%[XPOS:2001]%%[XPOSR:-1]>", "<>"},
      {"<%%[LMARGIN:256]%%[LMARGIN:-1]%%[BOLD:YES]%%[UL]>", "<>"},
      // Runs of percent signs: an even run shrinks to (n - 1) / 2.
      {"%%%%[PAGE]", "%\f"}, {"%%[X %%[PAGE] %%[PAGE", "%%[X \f %%[PAGE"},
  };
  for (const auto& c : cases) EXPECT_EQ(Epson(c.body), c.bytes) << c.body;
  // Not commands: they stay in the text (odd runs of percent signs: the ASCII test).
  for (const std::string& text : {"%%[DOWN:" + arg90 + "1]", "%%[" + std::string(91, 'A') + "]",
                                  std::string("%%[FONT:COURIER]%%[FONT]%%[HELLO]%%[]%%[ PAGE]")})
    EXPECT_EQ(Epson(text), text);
}

TEST_F(EpsonCommand, BoldAndUnderlineSetTheFontByteAndAMessageHeadIsRefused) {
  EXPECT_EQ(Epson("%%[BOLD:ON]%%[UL:ON]\r\n%%[FONT:ROMAN12]%%[BOLD:OFF]%%[FONT:ROMAN12]"),
            Esc("E") + Esc("-", {1}) + "\r\n" + Font(0, 1 + 8 + 128) + Esc("F") +
                Font(0, 1 + 128));
  // A removed command leaves the state alone; every section starts plain.
  EXPECT_EQ(Epson("%%[BOLD:MAYBE]%%[FONT:ROMAN12]"), Font(0, 1));
  EXPECT_EQ(Copy("%%[TEXT]\r\nx %%[message] y\r\n", "epn"), VL_E_SUBMIT_FILE_INVALID);
  EXPECT_EQ(Reported::Texts(), Texts{"message text contains %%[MESSAGE]"});
}

class CreateDataFileTest : public vltest::JsmithTest {
 protected:
  std::string Submit(const std::string& text) const {
    vltest::WriteFile(scratch_.Path("SUBMIT.SUB"), text);
    return scratch_.Path("SUBMIT.SUB");
  }

  std::string data_ = scratch_.Path("MSG1.TXT");
};

TEST_F(CreateDataFileTest, WritesTheFirstSectionAndTracesItsOwnClosingLines) {
  vltest::TraceInto(scratch_);
  const std::string submit = Submit("%%[text]\r\nHello\r\n%%[MESSAGE]\r\nTo: A\r\n");
  ASSERT_EQ(VlxCreateDataFile(handle_, submit.c_str(), data_.c_str(), "txt"), VL_OK)
      << Reported::Last();
  EXPECT_EQ(vltest::ReadFile(data_), "Hello\r\n");
  ASSERT_EQ(VlxCreateDataFile(handle_, submit.c_str(), data_.c_str(), "BAD"), VL_E_INVALID_PARAM);
  const std::string s = vltest::SessionField(handle_);
  const std::string entry =
      s + "VlxCreateDataFile - Submit = '" + submit + "', Data = '" + data_ + "', Extn = '";
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (Texts{entry + "txt'", s + "...VlxCreateDataFile - returned OK", entry + "BAD'",
                   s + "Data extension unknown",
                   s + "...VlxCreateDataFile - returned error 0xF700"}));
}

TEST_F(CreateDataFileTest, FailuresAreReportedAndLeaveNoDataFile) {
  const std::string dir = scratch_.Dir();
  const std::string long268 = dir + std::string(268 - dir.size(), 'n');
  const std::string noSection = "%%[TEXT] or %%[FILE] section not found in submit file";
  // submitText: written as the submit file unless submitPath names another.
  struct Case { std::string submitText, submitPath, dataPath; VLRESULT code; std::string report; };
  const Case cases[] = {
      {"", "", "", VL_E_SUBMIT_FILE_INVALID, noSection},
      {"", dir + "NONE.SUB", "", VL_E_FILE_OPEN_ERROR, "Unable to open file '" + dir + "NONE.SUB'"},
      {"", long268, "", VL_E_FILE_OPEN_ERROR, "Unable to open file '" + long268 + "'"},
      {"", long268 + "n", "", VL_E_INVALID_PARAM, "Submit file name too long"},
      {"%%[TEXT]\r\n", "", long268 + "n", VL_E_INVALID_PARAM, "Data file name too long"},
      {"%%[TEXT]\r\n", "", dir + "NODIR\\MSG1.TXT", VL_E_FILE_CREATE_ERROR,
       "Unable to create file '" + dir + "NODIR\\MSG1.TXT'"},
  };
  for (const auto& c : cases) {
    const std::string submit = c.submitPath.empty() ? Submit(c.submitText) : c.submitPath;
    const std::string data = c.dataPath.empty() ? data_ : c.dataPath;
    Reported::Clear();
    EXPECT_EQ(VlxCreateDataFile(handle_, submit.c_str(), data.c_str(), "TIF"), c.code)
        << c.report;
    EXPECT_EQ(Reported::Texts(), Texts{c.report});
    EXPECT_FALSE(vltest::FileExists(data)) << c.report;
  }
  EXPECT_EQ(VlxCreateDataFile(handle_, nullptr, data_.c_str(), "TIF"), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: submitFile is NULL");
  const std::string submit = Submit("%%[TEXT]\r\n");
  const VLHANDLE noUser = vltest::LogOn(nullptr);
  EXPECT_EQ(VlxCreateDataFile(noUser, submit.c_str(), data_.c_str(), "TXT"), VL_E_USER_NOT_INIT);
  VlxAPIClosedown(noUser);
}

}  // namespace
