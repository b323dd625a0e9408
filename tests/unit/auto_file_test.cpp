// Unique file names: VlxCreateAutoFile and the generator behind it.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "api/unique_file.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::FaxTree;
using vltest::Reported;
using vltest::Scratch;

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
  EXPECT_EQ(vltest::ReadFile(dir_ + "~FAXA000.TIF"), "");
  vltest::WriteFile(dir_ + "~FAXA001.DOC", "other extension");
  vltest::WriteFile(dir_ + "~FAXA002", "no extension");
  vltest::MakeDirectories(dir_ + "~FAXA003.DIR");  // a directory takes a name too
  ASSERT_EQ(Create("FAXA", "TIF", scratch_.Path("OUT")), VL_OK);  // backslash appended
  EXPECT_STREQ(name_, "~FAXA004");
  ASSERT_EQ(Create("FAXB", "C", dir_), VL_OK);
  EXPECT_STREQ(name_, "~FAXB000");
  EXPECT_EQ(vltest::ListDirectory(dir_),
            (std::vector<std::string>{"~FAXA000.TIF", "~FAXA001.DOC", "~FAXA002",
                                      "~FAXA003.DIR", "~FAXA004.TIF", "~FAXB000.C"}));
}

TEST_F(AutoFileTest, CandidatesFollowTheThreePhasesInOrder) {
  // At second 4, millisecond 955 the decimal phase starts at 999 and wraps
  // to 040; the base-36 phase starts at (955 * 53 + 4) % 46646 + 10 = 3983,
  // "32N". Each case takes the counters listed (with some other extension)
  // and expects the next candidate; 060 stays free: the budget ends at 059.
  const struct {
    std::vector<std::string> taken;
    const char* expected;
  } cases[] = {
      {{}, "~FAXA999"},
      {{"999", "040", "041"}, "~FAXA042"},
      {{"999", "040-058"}, "~FAXA059"},
      {{"999", "040-059"}, "~FAXA32N"},
      {{"999", "040-059", "32N"}, "~FAXA32O"},
  };
  auto take = [&](int counter) {
    char name[32];
    std::snprintf(name, sizeof name, "~FAXA%03d.DOC", counter);
    vltest::WriteFile(dir_ + name, "");
  };
  for (const auto& c : cases) {
    vltest::RemoveTree(dir_);
    vltest::MakeDirectories(dir_);
    for (int i = 0; i <= 39; ++i) take(i);
    for (const std::string& range : c.taken) {
      if (range == "32N") vltest::WriteFile(dir_ + "~faxa32n", "");
      else if (range.size() == 3) take(std::stoi(range));
      else for (int i = std::stoi(range); i <= std::stoi(range.substr(4)); ++i) take(i);
    }
    os::fault::PinClock(os::LocalTime{2026, 11, 23, 10, 20, 4, 955});
    ASSERT_EQ(Create("FAXA", "TIF", dir_), VL_OK) << c.expected;
    EXPECT_STREQ(name_, c.expected);
  }
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
    EXPECT_EQ(Reported::Texts(), std::vector<std::string>{c.report});
    EXPECT_STREQ(name_, "junk");
  }
  EXPECT_EQ(VlxCreateAutoFile(handle_, "FAXA", "TIF", nullptr, name_), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxCreateAutoFile(handle_, "FAXA", "TIF", dir_.c_str(), nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: name is NULL");
  EXPECT_EQ(VlxCreateAutoFile(handle_, "FAX", "TIF", dir_.c_str(), nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Prefix name must be 4 characters");  // the arguments come first
  EXPECT_TRUE(vltest::ListDirectory(dir_).empty());
}

TEST_F(AutoFileTest, NamesStillReferencedByTheMessageListAreSkipped) {
  vltest::WriteFile(dir_ + "MSGDIR.CTL",
                    "[VELOMAR]\r\nType: SendDir\r\nRevision: A\r\n\r\n"
                    "[DOCUMENT]\r\nFile: ~faxa000.TXT\r\nComment: gone\r\n\r\n"
                    "[MESSAGE]\r\nStatus: OK\r\n\r\n"
                    "[DOCUMENT]\r\nFile: ~FAXA001.TIF\r\nComment: gone too\r\n");
  vltest::TraceInto(scratch_);
  ASSERT_EQ(Create("FAXA", "TIF", dir_), VL_OK);
  EXPECT_STREQ(name_, "~FAXA002");
  // The referenced names stay taken, under the extension TMP.
  EXPECT_EQ(vltest::ListDirectory(dir_),
            (std::vector<std::string>{"MSGDIR.CTL", "~FAXA000.TMP", "~FAXA001.TMP",
                                      "~FAXA002.TIF"}));
  int referenced = 0;
  for (const std::string& line : vltest::TraceLines(scratch_))
    if (line.find("already referenced") != std::string::npos) {
      EXPECT_EQ(line.substr(12), "VlxCreateAutoFile - New file '" + dir_ + "~FAXA00" +
                                     std::to_string(referenced) +
                                     ".*' already referenced in MSGDIR file");
      ++referenced;
    }
  EXPECT_EQ(referenced, 2);
}

TEST_F(AutoFileTest, AListedNameThatCannotBeSetAsideFailsTheCall) {
  vltest::WriteFile(dir_ + "MSGDIR.CTL", "[DOCUMENT]\r\nFile: ~FAXA000.TIF\r\n");
  os::fault::Inject(os::fault::Op::RenameFile, 1, os::kAccessDenied, true);
  EXPECT_EQ(Create("FAXA", "TIF", dir_), VL_E_FILE_CREATE_ERROR);
  EXPECT_EQ(Reported::Last(), "Unable to create file");
  EXPECT_EQ(vltest::ListDirectory(dir_), std::vector<std::string>{"MSGDIR.CTL"});
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
  os::fault::Before(os::fault::Op::CreateExclusive, 1,
                    [](void* dir) { vltest::WriteFile(*static_cast<std::string*>(dir) + "~FAXA000.DOC", ""); },
                    &dir_);
  ASSERT_EQ(Create("FAXA", "TIF", dir_), VL_OK);
  EXPECT_STREQ(name_, "~FAXA001");
  EXPECT_EQ(vltest::ListDirectory(dir_),
            (std::vector<std::string>{"~FAXA000.DOC", "~FAXA001.TIF"}));
  // A name taken with the same extension in that moment fails the creation.
  os::fault::Inject(os::fault::Op::CreateExclusive, 1, os::kFileExists);
  ASSERT_EQ(Create("FAXA", "TIF", dir_), VL_OK);
  EXPECT_STREQ(name_, "~FAXA003");
}

TEST_F(AutoFileTest, OneSearchOfTheDirectoryServesABlockOfCandidates) {
  // Every decimal counter taken, in any case and with any extension: the
  // name comes from the base-36 phase, after one search for each first
  // counter character met (the low reserve, at most two for the decimal
  // phase, one for the base-36 start) and the count after the creation.
  for (int i = 0; i <= 999; ++i) {
    char name[32];
    std::snprintf(name, sizeof name, i % 2 ? "~faxa%03d.doc" : "~FAXA%03d", i);
    vltest::WriteFile(dir_ + name, "");
  }
  os::fault::Inject(os::fault::Op::Any, 1 << 30, 0);  // counts only
  ASSERT_EQ(Create("FAXA", "TIF", dir_), VL_OK);
  EXPECT_GE(os::fault::Calls(os::fault::Op::ListFiles), 2);
  EXPECT_LE(os::fault::Calls(os::fault::Op::ListFiles), 5);
  EXPECT_EQ(os::fault::Calls(os::fault::Op::CreateExclusive), 1);
  EXPECT_NE(std::string(name_).find_first_of("ABCDEFGHIJKLMNOPQRSTUVWXYZ", 5), std::string::npos)
      << name_;
}

TEST_F(AutoFileTest, FaultAtAnyPlatformCallEndsInSuccessOrADocumentedCode) {
  for (int n = 1;; ++n) {
    vltest::RemoveTree(dir_);
    vltest::MakeDirectories(dir_);
    vltest::WriteFile(dir_ + "MSGDIR.CTL", "[DOCUMENT]\r\nFile: ~FAXA000.TIF\r\n");
    os::fault::Inject(os::fault::Op::Any, n, os::kAccessDenied);
    VLRESULT rc = Create("FAXA", "TIF", dir_);
    const int calls = os::fault::Calls(os::fault::Op::Any);
    os::fault::Clear();
    EXPECT_TRUE(rc == VL_OK || rc == VL_E_INVALID_PARAM || rc == VL_E_FILE_CREATE_ERROR)
        << "fault at call " << n << " gave " << std::hex << rc;
    for (const std::string& file : vltest::ListDirectory(dir_)) {
      bool expected = file == "MSGDIR.CTL" || file == "~FAXA000.TMP" ||
                      (rc == VL_OK && file == std::string(name_) + ".TIF");
      EXPECT_TRUE(expected) << "fault at call " << n << " left " << file;
    }
    if (calls < n) break;
  }
}

}  // namespace
