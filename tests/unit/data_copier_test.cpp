// Copying data sections of a submit file, and VlxCreateDataFile.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "api/session.h"
#include "msg/data_copier.h"
#include "platform/raii.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using vltest::Scratch;
using Texts = std::vector<std::string>;

using vltest::StreamOf;

std::string Rest(FILE* f) {
  std::string text;
  for (int c; (c = std::fgetc(f)) != EOF;) text.push_back(static_cast<char>(c));
  return text;
}

// Every byte value, several times over: more than two blocks.
std::string AllBytes() {
  std::string bytes;
  for (int i = 0; i < 1300; ++i) bytes.push_back(static_cast<char>(i * 7 % 256));
  return bytes;
}

class DataCopierTest : public ::testing::Test {
 protected:
  void SetUp() override {
    session_.errorCallback = &Reported::Callback;
    Reported::Clear();
  }
  // Copies the section at the start of submit; out_ holds what was written.
  VLRESULT Copy(const std::string& submit, const char* extension) {
    submit_ = StreamOf(submit);
    auto out = StreamOf("");
    VLRESULT rc = vl::CopyDataSection(session_, submit_.get(), out.get(), extension);
    std::rewind(out.get());
    out_ = Rest(out.get());
    return rc;
  }

  vl::ApiSession session_;
  Scratch scratch_;
  os::UniqueFile submit_;
  std::string out_;
};

TEST_F(DataCopierTest, TextStopsAtTheNextSectionAndLeavesTheStreamThere) {
  const struct {
    const char* end;
    bool stops;
  } cases[] = {
      {"%%[TEXT]", true},   {"%%[file]  ", true}, {"%%[Message]", true}, {"%%[TEXT] more", false},
      {"%%%[TEXT]", false}, {" %%[FILE]", false}, {"%%[SUBJECT]", false},
  };
  for (const auto& c : cases) {
    const std::string tail = std::string(c.end) + "\r\nafter\r\n";
    ASSERT_EQ(Copy("%%[text]\r\none\r\n" + tail, "TXT"), VL_OK);
    if (c.stops) {
      EXPECT_EQ(out_, "one\r\n") << c.end;
      EXPECT_EQ(Rest(submit_.get()), tail) << c.end;
    } else {
      EXPECT_EQ(out_, "one\r\n" + tail) << c.end;
    }
  }
}

TEST_F(DataCopierTest, AsciiKeepsCommandsAsTextAndReportsThem) {
  ASSERT_EQ(Copy("%%[TEXT]\nA %%[PAGE] %%%%[bold:on] %%%[PAGE] %%[NOTE]\r\nlast", "txt"), VL_OK);
  EXPECT_EQ(out_, "A %%[PAGE] %%%%[bold:on] %%%[PAGE] %%[NOTE]\r\nlast");  // line ends as CR LF
  EXPECT_EQ(Reported::Texts(), (Texts{"%%[PAGE] command only valid with Epson format",
                                      "%%[BOLD] command only valid with Epson format"}));
}

TEST_F(DataCopierTest, BodyFilesAndBinaryFormats) {
  // A binary body is copied byte for byte, to its end.
  const std::string body = scratch_.Path("BODY");
  vltest::WriteFile(body, AllBytes());
  ASSERT_EQ(Copy("%%[FILE]\r\n" + body + "\r\n%%[TEXT]\r\nnext\r\n", "tif"), VL_OK);
  EXPECT_EQ(out_, AllBytes());
  EXPECT_EQ(Rest(submit_.get()), "%%[TEXT]\r\nnext\r\n");
  const std::string rest = AllBytes() + "\r\n%%[TEXT]\r\n%%[PAGE]";
  ASSERT_EQ(Copy("%%[TEXT]\r\n" + rest, "EPS"), VL_OK);
  EXPECT_EQ(out_, rest);
  // A text body file is translated and ends at its own section line.
  vltest::WriteFile(body, "x%%[PAGE]y\r\n%%[TEXT]\r\nnot copied\r\n");
  ASSERT_EQ(Copy("%%[file]\r\n" + body + "  \r\n%%[TEXT]\r\n", "EPN"), VL_OK);
  EXPECT_EQ(out_, "x\fy\r\n");
}

TEST_F(DataCopierTest, ErrorsAreReported) {
  const std::string missing = scratch_.Path("MISSING.TXT");
  const struct {
    std::string submit;
    const char* extension;
    VLRESULT code;
    std::string report;
  } cases[] = {
      {"%%[TEXT]\r\n", "", VL_E_INVALID_PARAM, "Extension name invalid"},
      {"%%[TEXT]\r\n", "TIFF", VL_E_INVALID_PARAM, "Extension name invalid"},
      {"%%[TEXT]\r\n", "???", VL_E_INVALID_PARAM, "Data extension unknown"},
      {"%%[TEXT]\r\n", "XYZ", VL_E_INVALID_PARAM, "Data extension unknown"},
      {"%%[TEXT]\r\n", nullptr, VL_E_INVALID_PARAM,
       "Invalid parameter supplied to API: extension is NULL"},
      {"%%[FILE]\r\n", "TXT", VL_E_SUBMIT_FILE_INVALID,
       "File name missing from %%[FILE] section in submit file"},
      {"%%[FILE]\r\n" + missing + "\r\n", "TIF", VL_E_FILE_NOT_FOUND,
       "Unable to open file " + missing},
      {"%%[MESSAGE]\r\n", "TXT", VL_E_SUBMIT_FILE_INVALID,
       "%%[TEXT] or %%[FILE] section not found in submit file"},
  };
  for (const auto& c : cases) {
    Reported::Clear();
    EXPECT_EQ(Copy(c.submit, c.extension), c.code) << c.submit;
    EXPECT_EQ(Reported::Texts(), Texts{c.report}) << c.submit;
  }
  // A stream that cannot be written.
  const std::string path = scratch_.Path("READONLY");
  vltest::WriteFile(path, "");
  os::UniqueFile readOnly(std::fopen(vltest::NativePath(path).c_str(), "rb"));
  submit_ = StreamOf("%%[TEXT]\r\ntext\r\n");
  Reported::Clear();
  EXPECT_EQ(vl::CopyDataSection(session_, submit_.get(), readOnly.get(), "TXT"), VL_E_FILE_ERROR);
  EXPECT_EQ(Reported::Texts(), Texts{"Error writing to data file"});
}

class CreateDataFileTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JSMITH");
    tree_.UseAsExplicitAreas();
    handle_ = vltest::LogOn("JSMITH");
    Reported::Clear();
  }
  void TearDown() override { VlxAPIClosedown(handle_); }

  std::string Submit(const std::string& text) const {
    vltest::WriteFile(scratch_.Path("SUBMIT.SUB"), text);
    return scratch_.Path("SUBMIT.SUB");
  }

  Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
  std::string data_ = scratch_.Path("MSG1.TXT");
};

TEST_F(CreateDataFileTest, WritesTheFirstSectionAndTracesItsOwnClosingLines) {
  vltest::TraceInto(scratch_);
  const std::string submit = Submit("%%[text]\r\nHello\r\n%%[MESSAGE]\r\nTo: A\r\n");
  ASSERT_EQ(VlxCreateDataFile(handle_, submit.c_str(), data_.c_str(), "txt"), VL_OK)
      << Reported::Last();
  EXPECT_EQ(vltest::ReadFile(data_), "Hello\r\n");
  ASSERT_EQ(VlxCreateDataFile(handle_, submit.c_str(), data_.c_str(), "BAD"), VL_E_INVALID_PARAM);
  char s[32];
  std::snprintf(s, sizeof s, "S=%.8lx  ", static_cast<unsigned long>(handle_));
  const std::string entry = std::string(s) + "VlxCreateDataFile - Submit = '" + submit +
                            "', Data = '" + data_ + "', Extn = '";
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (Texts{entry + "txt'", s + std::string("...VlxCreateDataFile - returned OK"),
                   entry + "BAD'", s + std::string("Data extension unknown"),
                   s + std::string("...VlxCreateDataFile - returned error 0xF700")}));
}

TEST_F(CreateDataFileTest, FailuresAreReportedAndLeaveNoDataFile) {
  const std::string dir = scratch_.Dir();
  const std::string long268 = dir + std::string(268 - dir.size(), 'n');
  const std::string missingBody = dir + "NOBODY.TIF";
  const struct {
    std::string submitText;  // none: the submit file is not written
    std::string submitPath;
    std::string dataPath;
    VLRESULT code;
    std::string report;
  } cases[] = {
      {"%%[MESSAGE]\r\n%%[TEXT]\r\n", "", "", VL_E_SUBMIT_FILE_INVALID,
       "%%[TEXT] or %%[FILE] section not found in submit file"},
      {"", "", "", VL_E_SUBMIT_FILE_INVALID,
       "%%[TEXT] or %%[FILE] section not found in submit file"},
      {"%%[FILE]\r\n" + missingBody + "\r\n", "", "", VL_E_FILE_NOT_FOUND,
       "Unable to open file " + missingBody},
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
  EXPECT_EQ(VlxCreateDataFile(0, submit.c_str(), data_.c_str(), "TXT"), VL_E_NOT_INIT);
  const VLHANDLE noUser = vltest::LogOn(nullptr);
  EXPECT_EQ(VlxCreateDataFile(noUser, submit.c_str(), data_.c_str(), "TXT"), VL_E_USER_NOT_INIT);
  VlxAPIClosedown(noUser);
  EXPECT_FALSE(vltest::FileExists(data_));
}

}  // namespace
