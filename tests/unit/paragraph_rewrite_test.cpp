// Rewriting paragraph files in place: one keyword, a group of two keywords,
// the work file and the copy back into the open file. Every rewrite is
// checked against the whole file's bytes and the directory's contents.
#include <gtest/gtest.h>

#include <initializer_list>
#include <string>
#include <vector>

#include "paragraph/open_shared.h"
#include "paragraph/rewrite.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/file_holder.h"
#include "tests/support/test_support.h"

namespace {

using Names = std::vector<std::string>;

// The lines, each ended by CR LF.
std::string Crlf(std::initializer_list<const char*> lines) {
  std::string text;
  for (const char* line : lines) text.append(line).append("\r\n");
  return text;
}

struct ValueCase {
  const char* what;
  std::string before;
  const char* header;
  const char* keyword;
  const char* value;
  bool addAnother;
  std::string after;
};

// Runs each case on a fresh X.INI: the rewrite succeeds, gives exactly the
// expected bytes and leaves no work file behind.
void ExpectValueRewrites(const std::vector<ValueCase>& cases) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("X.INI");
  for (const ValueCase& c : cases) {
    vltest::WriteFile(path, c.before);
    EXPECT_TRUE(para::SetParagraphValue(path.c_str(), c.header, c.keyword, c.value, c.addAnother))
        << c.what;
    EXPECT_EQ(vltest::ReadFile(path), c.after) << c.what;
    EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"X.INI"}) << c.what;
  }
}

struct GroupCase {
  const char* what;
  std::string before;
  const char* keyword1;
  const char* value1;
  bool keepFirst;
  const char* keyword2;
  const char* value2;
  char stopChar;
  std::string after;
};

// As ExpectValueRewrites, for SetGroupValues in paragraph [Q].
void ExpectGroupRewrites(const std::vector<GroupCase>& cases) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("Q.CTL");
  for (const GroupCase& c : cases) {
    vltest::WriteFile(path, c.before);
    EXPECT_TRUE(para::SetGroupValues(path.c_str(), "[Q]", c.keyword1, c.value1, c.keepFirst,
                                     c.keyword2, c.value2, c.stopChar))
        << c.what;
    EXPECT_EQ(vltest::ReadFile(path), c.after) << c.what;
    EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"Q.CTL"}) << c.what;
  }
}

TEST(SetParagraphValue, ReplacesTheFirstMatchingLineOfTheParagraph) {
  ExpectValueRewrites({
      {"last paragraph", Crlf({"[A]", "X: 1", "[B]", "Y: 2"}), "[B]", "Y:", "3", false,
       Crlf({"[A]", "X: 1", "[B]", "Y: 3"})},
      {"first paragraph, followed by an empty line and a header",
       Crlf({"[A]", "W: 0", "X: 1", "Z: 2", "", "[B]", "X: 5"}), "[A]", "X:", "9", false,
       Crlf({"[A]", "W: 0", "X: 9", "Z: 2", "", "[B]", "X: 5"})},
      {"header and keyword compared without regard to case",
       Crlf({"[user] old", "userNAME: a"}), "[USER]", "Username:", "JSMITH", false,
       Crlf({"[user] old", "Username: JSMITH"})},
      {"later lines beginning with the keyword are kept",
       Crlf({"[A]", "To: a", "To: b", "To: c"}), "[A]", "To:", "x", false,
       Crlf({"[A]", "To: x", "To: b", "To: c"})},
      {"a longer keyword, a comment and an indented line do not match",
       Crlf({"[A]", "Names: n", "; Name: c", " Name: i", "name: old"}), "[A]", "Name:", "new",
       false, Crlf({"[A]", "Names: n", "; Name: c", " Name: i", "Name: new"})},
      {"equals sign as separator", Crlf({"[A]", "Area=C:\\OLD"}), "[A]", "Area=", "D:\\NEW",
       false, Crlf({"[A]", "Area= D:\\NEW"})},
  });
}

TEST(SetParagraphValue, AppendsAMissingParagraphAfterOneEmptyLine) {
  ExpectValueRewrites({
      {"after a content line", Crlf({"[A]", "X: 1"}), "[B]", "Y:", "2", false,
       Crlf({"[A]", "X: 1", "", "[B]", "Y: 2"})},
      {"after an empty last line", Crlf({"[A]", "X: 1", ""}), "[B]", "Y:", "2", false,
       Crlf({"[A]", "X: 1", "", "[B]", "Y: 2"})},
      {"an empty file", "", "[B]", "Y:", "2", false, Crlf({"[B]", "Y: 2"})},
      {"a longer header is another paragraph", Crlf({"[USERS]", "Y: 1"}), "[USER]", "Y:", "2",
       false, Crlf({"[USERS]", "Y: 1", "", "[USER]", "Y: 2"})},
      {"no value: the header alone", Crlf({"[A]"}), "[B]", "Y:", nullptr, false,
       Crlf({"[A]", "", "[B]"})},
  });
}

TEST(SetParagraphValue, WritesAMissingKeywordAtTheParagraphEnd) {
  ExpectValueRewrites({
      {"before the next header, then an empty line", Crlf({"[A]", "X: 1", "[B]", "Y: 2"}),
       "[A]", "Z:", "3", false, Crlf({"[A]", "X: 1", "Z: 3", "", "[B]", "Y: 2"})},
      {"at the end of the file", Crlf({"[A]", "X: 1"}), "[A]", "Z:", "3", false,
       Crlf({"[A]", "X: 1", "Z: 3"})},
      {"in an empty paragraph", Crlf({"[A]", "[B]"}), "[A]", "Z:", "3", false,
       Crlf({"[A]", "Z: 3", "", "[B]"})},
      {"a keyword of the next paragraph does not count", Crlf({"[A]", "[B]", "Z: 1"}), "[A]",
       "Z:", "3", false, Crlf({"[A]", "Z: 3", "", "[B]", "Z: 1"})},
  });
}

TEST(SetParagraphValue, DropsEmptyLinesOfTheTargetParagraphOnly) {
  ExpectValueRewrites({
      {"inside and after the target", Crlf({"", "[A]", "", "X: 1", "", "W: 2", "", "", "[B]",
                                            "", "Y: 2", ""}),
       "[A]", "X:", "5", false, Crlf({"", "[A]", "X: 5", "W: 2", "", "[B]", "", "Y: 2", ""})},
      {"at the end of the file", Crlf({"[A]", "X: 1", "", ""}), "[A]", "X:", "5", false,
       Crlf({"[A]", "X: 5"})},
  });
}

TEST(SetParagraphValue, AddAnotherKeepsTheExistingLines) {
  ExpectValueRewrites({
      {"before the next header", Crlf({"[A]", "To: a", "To: b", "[B]"}), "[A]", "To:", "c", true,
       Crlf({"[A]", "To: a", "To: b", "To: c", "", "[B]"})},
      {"at the end of the file", Crlf({"[A]", "To: a"}), "[A]", "To:", "b", true,
       Crlf({"[A]", "To: a", "To: b"})},
      {"in a missing paragraph", Crlf({"[A]"}), "[B]", "To:", "a", true,
       Crlf({"[A]", "", "[B]", "To: a"})},
  });
}

TEST(SetParagraphValue, EmptyValueWritesTheBareKeyword) {
  ExpectValueRewrites({
      {"replacing", Crlf({"[A]", "Trace: YES", "X: 1"}), "[A]", "Trace:", "", false,
       Crlf({"[A]", "Trace:", "X: 1"})},
      {"adding", Crlf({"[A]", "X: 1"}), "[A]", "Trace:", "", false,
       Crlf({"[A]", "X: 1", "Trace:"})},
  });
}

TEST(SetParagraphValue, NullValueRemovesTheFirstMatchingLine) {
  ExpectValueRewrites({
      {"the first of two", Crlf({"[A]", "X: 1", "X: 2", "W: 3", "[B]"}), "[A]", "X:", nullptr,
       false, Crlf({"[A]", "X: 2", "W: 3", "", "[B]"})},
      {"none there", Crlf({"[A]", "W: 3"}), "[A]", "X:", nullptr, false, Crlf({"[A]", "W: 3"})},
  });
}

TEST(SetParagraphValue, NullKeywordEmptiesTheParagraph) {
  ExpectValueRewrites({
      {"content lines go, ignored lines stay",
       Crlf({"[A]", "X: 1", "; note", " indented", "W: 2", "", "[B]", "Y: 1"}), "[A]", nullptr,
       nullptr, false, Crlf({"[A]", "; note", " indented", "", "[B]", "Y: 1"})},
      {"the last paragraph", Crlf({"[B]", "Y: 1", "[A]", "X: 1", "W: 2"}), "[A]", nullptr,
       "ignored", false, Crlf({"[B]", "Y: 1", "[A]"})},
  });
}

TEST(SetParagraphValue, WritesEveryLineCleanedAndEndedByCrLf) {
  ExpectValueRewrites({
      {"LF line ends, trailing blanks and control bytes",
       "; head  \n[A]\t\nX: 1\nW:\ta\x01" "b \r\n[B]\nY: 2", "[A]", "X:", "2", false,
       Crlf({"; head", "[A]", "X: 2", "W: a b", "", "[B]", "Y: 2"})},
  });
}

TEST(RewriteWorkFile, NameReplacesTheExtension) {
  const struct {
    const char* path;
    const char* work;
  } cases[] = {
      {"C:\\FAX\\MSGDIR.CTL", "C:\\FAX\\MSGDIR.TMP"},
      {"C:\\FAX\\MSGDIR.TMP", "C:\\FAX\\MSGDIR.TM2"},
      {"C:\\FAX\\msgdir.tmp", "C:\\FAX\\msgdir.TM2"},
      {"C:\\FAX\\MSGDIR.TM2", "C:\\FAX\\MSGDIR.TMP"},
      {"C:\\FAX\\MSGDIR", "C:\\FAX\\MSGDIR.TMP"},
      {"C:\\FAX.D\\MSGDIR", "C:\\FAX.D\\MSGDIR.TMP"},
      {"C:\\FAX\\A.B.INI", "C:\\FAX\\A.B.TMP"},
      {"MSGDIR.CTL", "MSGDIR.TMP"},
      {"C:MSGDIR", "C:MSGDIR.TMP"},
  };
  for (const auto& c : cases) {
    std::string work = "junk";
    EXPECT_TRUE(para::WorkFileName(c.path, &work)) << c.path;
    EXPECT_EQ(work, c.work) << c.path;
  }
}

TEST(RewriteWorkFile, PathsAndWorkNamesAreLimitedTo268Characters) {
  const std::string dir = "C:\\" + std::string(250, 'D') + "\\";  // 254 characters
  const struct {
    std::string path;
    bool accepted;
  } cases[] = {
      {dir + "ABCDEFXY.CTL", true},      // 266, work name 266
      {dir + "ABCDEFGHXY.CTL", true},    // 268, work name 268
      {dir + "ABCDEFGHXYZ.CTL", false},  // 269
      {dir + "ABCDEFGHXY.TMP", true},    // 268, work name .TM2 268
      {dir + "ABCDEFGHXY", true},        // 264, work name 268
      {dir + "ABCDEFGHXYZ", false},      // 265, work name 269
  };
  for (const auto& c : cases) {
    std::string work;
    EXPECT_EQ(para::WorkFileName(c.path.c_str(), &work), c.accepted) << c.path.size();
    if (c.accepted) {
      EXPECT_LE(work.size(), para::kMaxRewritePath);
    }
  }
}

TEST(SetParagraphValue, RefusesTooLongPathsBeforeTouchingAnyFile) {
  vltest::Scratch scratch;
  const std::string base = scratch.Path(std::string(264 - scratch.Dir().size(), 'N') + ".CTL");
  ASSERT_EQ(base.size(), 268u);
  // Counts the platform calls without making any of them fail.
  os::fault::Inject(os::fault::Op::Any, 1000, os::kAccessDenied);
  EXPECT_FALSE(para::SetParagraphValue((base + "X").c_str(), "[A]", "X:", "1", false));
  EXPECT_EQ(os::fault::Calls(os::fault::Op::Any), 0);
  // 265 characters without extension: the work name would have 269.
  const std::string noExtension = base.substr(0, 264) + "N";
  EXPECT_FALSE(para::SetParagraphValue(noExtension.c_str(), "[A]", "X:", "1", false));
  EXPECT_EQ(os::fault::Calls(os::fault::Op::Any), 0);
  EXPECT_FALSE(para::SetGroupValues((base + "X").c_str(), "[A]", "X:", "1", false, "Y:", "2", 0));
  EXPECT_EQ(os::fault::Calls(os::fault::Op::Any), 0);
  // 268 characters are not refused: the file is looked for (and missing).
  EXPECT_FALSE(para::SetParagraphValue(base.c_str(), "[A]", "X:", "1", false));
  EXPECT_GE(os::fault::Calls(os::fault::Op::OpenStream), 1);
  os::fault::Clear();
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{});
}

TEST(SetParagraphValue, RewritesATmpFileThroughTm2) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("MSGDIR.TMP");
  vltest::WriteFile(path, Crlf({"[MSG]", "State: 1"}));
  EXPECT_TRUE(para::SetParagraphValue(path.c_str(), "[MSG]", "State:", "2", false));
  EXPECT_EQ(vltest::ReadFile(path), Crlf({"[MSG]", "State: 2"}));
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"MSGDIR.TMP"});
}

TEST(SetParagraphValue, NeverLeavesTheWorkFile) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("MSGDIR.CTL");
  // A missing file fails before the work file is made.
  EXPECT_FALSE(para::SetParagraphValue(path.c_str(), "[A]", "X:", "1", false));
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{});
  // No header: nothing to do.
  vltest::WriteFile(path, Crlf({"[A]"}));
  EXPECT_FALSE(para::SetParagraphValue(path.c_str(), nullptr, "X:", "1", false));
  EXPECT_FALSE(para::SetGroupValues(path.c_str(), nullptr, "X:", "1", false, "Y:", "2", 0));
  EXPECT_FALSE(para::SetParagraphValue(nullptr, "[A]", "X:", "1", false));
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"MSGDIR.CTL"});
  // A work file left over from before is overwritten and removed.
  vltest::WriteFile(scratch.Path("MSGDIR.TMP"), std::string(2000, 'j'));
  EXPECT_TRUE(para::SetParagraphValue(path.c_str(), "[A]", "X:", "1", false));
  EXPECT_EQ(vltest::ReadFile(path), Crlf({"[A]", "X: 1"}));
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"MSGDIR.CTL"});
}

TEST(SetParagraphValue, DiskFullWhileGrowingLeavesTheFileUnchanged) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("MSGDIR.CTL");
  const std::string before = Crlf({"[A]", "X: 1", "[B]", "Y: 2"});
  for (int error : {os::kDiskFull, os::kHandleDiskFull}) {
    vltest::WriteFile(path, before);
    os::fault::Inject(os::fault::Op::SetStreamLength, 1, error);
    EXPECT_FALSE(para::SetParagraphValue(path.c_str(), "[A]", "X:", "a longer value", false))
        << error;
    EXPECT_GE(os::fault::Calls(os::fault::Op::SetStreamLength), 1) << error;
    os::fault::Clear();
    EXPECT_EQ(vltest::ReadFile(path), before) << error;
    EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"MSGDIR.CTL"}) << error;
  }
}

TEST(SetParagraphValue, FailsWhenTheWorkFileCannotBeDeleted) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("MSGDIR.CTL");
  vltest::WriteFile(path, Crlf({"[A]", "X: 1"}));
  // One failed deletion is tried again.
  os::fault::Inject(os::fault::Op::RemoveFile, 1, os::kAccessDenied);
  EXPECT_TRUE(para::SetParagraphValue(path.c_str(), "[A]", "X:", "2", false));
  EXPECT_EQ(os::fault::Calls(os::fault::Op::RemoveFile), 2);
  os::fault::Clear();
  EXPECT_EQ(vltest::ReadFile(path), Crlf({"[A]", "X: 2"}));
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"MSGDIR.CTL"});
  // A work file that stays is a failure, although the file was rewritten.
  os::fault::Inject(os::fault::Op::RemoveFile, 1, os::kAccessDenied, true);
  EXPECT_FALSE(para::SetParagraphValue(path.c_str(), "[A]", "X:", "3", false));
  os::fault::Clear();
  EXPECT_EQ(vltest::ReadFile(path), Crlf({"[A]", "X: 3"}));
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), (Names{"MSGDIR.CTL", "MSGDIR.TMP"}));
}

TEST(SetParagraphValue, EveryInjectedFaultEndsWithTheOldOrTheNewContent) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("MSGDIR.CTL");
  const struct {
    const char* what;
    std::string before;
    const char* value;
    std::string after;
  } cases[] = {
      {"growing", Crlf({"[A]", "X: 1", "", "[B]", "Y: 2"}), "a much longer value",
       Crlf({"[A]", "X: a much longer value", "", "[B]", "Y: 2"})},
      {"shrinking", Crlf({"[A]", "X: a much longer value", "", "", "[B]", "Y: 2"}), "1",
       Crlf({"[A]", "X: 1", "", "[B]", "Y: 2"})},
  };
  for (const auto& c : cases) {
    int n = 1;
    for (;; ++n) {
      vltest::WriteFile(path, c.before);
      os::fault::Inject(os::fault::Op::Any, n, os::kAccessDenied);
      bool done = para::SetParagraphValue(path.c_str(), "[A]", "X:", c.value, false);
      int calls = os::fault::Calls(os::fault::Op::Any);
      os::fault::Clear();
      EXPECT_EQ(vltest::ReadFile(path), done ? c.after : c.before)
          << c.what << ", fault at call " << n << (done ? ", succeeded" : ", failed");
      EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"MSGDIR.CTL"})
          << c.what << ", fault at call " << n;
      if (calls < n) {
        EXPECT_TRUE(done) << c.what << ": the run without a fault";
        break;
      }
    }
    EXPECT_GE(n - 1, 4) << c.what << ": two opens, the new length and the removal";
  }
}

TEST(SetParagraphValue, FailsWhileAnotherProcessHoldsTheFile) {
#ifdef _WIN32
  vltest::Scratch scratch;
  const std::string path = scratch.Path("MSGDIR.CTL");
  const std::string before = Crlf({"[A]", "X: 1"});
  vltest::WriteFile(path, before);
  para::OpenShared(1, nullptr, nullptr);
  {
    vltest::FileHolder holder(path, "rb");
    ASSERT_TRUE(holder.opened());
    EXPECT_FALSE(para::SetParagraphValue(path.c_str(), "[A]", "X:", "2", false));
  }
  para::OpenShared(5, nullptr, nullptr);
  EXPECT_EQ(vltest::ReadFile(path), before);
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"MSGDIR.CTL"});
  EXPECT_TRUE(para::SetParagraphValue(path.c_str(), "[A]", "X:", "2", false));
  EXPECT_EQ(vltest::ReadFile(path), Crlf({"[A]", "X: 2"}));
#else
  GTEST_SKIP() << "the POSIX platform layer does not enforce sharing modes";
#endif
}

TEST(SetGroupValues, RewritesTheFirstLineAndSetsTheSecondKeywordInItsGroup) {
  ExpectGroupRewrites({
      {"first group", Crlf({"[Q]", "Job: 1", "State: new", "#", "Job: 2", "State: new"}),
       "Job:", "7", false, "State:", "sent", '#',
       Crlf({"[Q]", "Job: 7", "State: sent", "#", "Job: 2", "State: new"})},
      {"empty lines of the paragraph dropped, an empty line before the next header",
       Crlf({"[Q]", "", "Job: 1", "", "State: new", "[R]", "State: x"}), "Job:", "1", false,
       "State:", "done", '#', Crlf({"[Q]", "Job: 1", "State: done", "", "[R]", "State: x"})},
      {"the second keyword before the first is not in the group",
       Crlf({"[Q]", "State: old", "Job: 1", "State: new"}), "Job:", "2", false, "State:", "sent",
       0, Crlf({"[Q]", "State: old", "Job: 2", "State: sent"})},
      {"only the first occurrence in the group",
       Crlf({"[Q]", "Job: 1", "State: a", "State: b"}), "Job:", "1", false, "State:", "c", 0,
       Crlf({"[Q]", "Job: 1", "State: c", "State: b"})},
      {"empty first value keeps the blank", Crlf({"[Q]", "Job: 1", "State: a"}), "Job:", "",
       false, "State:", "", 0, Crlf({"[Q]", "Job: ", "State:"})},
  });
}

TEST(SetGroupValues, KeepFirstLeavesTheFirstLineAndSelectsItsGroup) {
  ExpectGroupRewrites({
      {"second group",
       Crlf({"[Q]", "Job: 1", "State: new", "#", "Job: 2", "State: new", "#", "[R]"}),
       "Job: 2", "ignored", true, "State:", "sent", '#',
       Crlf({"[Q]", "Job: 1", "State: new", "#", "Job: 2", "State: sent", "#", "", "[R]"})},
      {"only the first group that matches",
       Crlf({"[Q]", "Job: 1", "State: a", "#", "Job: 1", "State: b"}), "Job: 1", nullptr, true,
       "State:", "c", '#', Crlf({"[Q]", "Job: 1", "State: c", "#", "Job: 1", "State: b"})},
  });
}

TEST(SetGroupValues, WritesAnAbsentSecondKeywordAtTheGroupEnd) {
  ExpectGroupRewrites({
      {"before the stop line", Crlf({"[Q]", "Job: 1", "Pages: 2", "#", "Job: 2", "State: a"}),
       "Job: 1", nullptr, true, "State:", "sent", '#',
       Crlf({"[Q]", "Job: 1", "Pages: 2", "State: sent", "#", "Job: 2", "State: a"})},
      {"before the next header", Crlf({"[Q]", "Job: 1", "[R]", "State: a"}), "Job: 1", nullptr,
       true, "State:", "sent", '#', Crlf({"[Q]", "Job: 1", "State: sent", "", "[R]", "State: a"})},
      {"at the end of the file", Crlf({"[Q]", "Job: 1", "Pages: 2"}), "Job: 1", nullptr, true,
       "State:", "sent", '#', Crlf({"[Q]", "Job: 1", "Pages: 2", "State: sent"})},
      {"no stop character: the group runs to the paragraph end",
       Crlf({"[Q]", "Job: 1", "#", "Job: 2"}), "Job: 1", nullptr, true, "State:", "sent", 0,
       Crlf({"[Q]", "Job: 1", "#", "Job: 2", "State: sent"})},
      {"an empty value writes the bare keyword", Crlf({"[Q]", "Job: 1", "#"}), "Job: 1", nullptr,
       true, "State:", "", '#', Crlf({"[Q]", "Job: 1", "State:", "#"})},
      {"a null value writes nothing", Crlf({"[Q]", "Job: 1", "#"}), "Job: 1", nullptr, true,
       "State:", nullptr, '#', Crlf({"[Q]", "Job: 1", "#"})},
      {"a null value removes the line", Crlf({"[Q]", "Job: 1", "State: a", "#"}), "Job: 1",
       nullptr, true, "State:", nullptr, '#', Crlf({"[Q]", "Job: 1", "#"})},
  });
}

TEST(SetGroupValues, WithoutTheFirstKeywordChangesNoLine) {
  ExpectGroupRewrites({
      {"the paragraph stays", Crlf({"[Q]", "Job: 1", "State: a", "#", "[R]"}), "Job: 9", nullptr,
       true, "State:", "sent", '#', Crlf({"[Q]", "Job: 1", "State: a", "#", "", "[R]"})},
      {"missing paragraph after a content line", Crlf({"[R]", "Job: 1"}), "Job:", "1", false,
       "State:", "sent", '#', Crlf({"[R]", "Job: 1", "", "[Q]"})},
      {"missing paragraph after an empty line", Crlf({"[R]", "Job: 1", ""}), "Job:", "1", false,
       "State:", "sent", '#', Crlf({"[R]", "Job: 1", "", "[Q]"})},
      {"missing paragraph in an empty file", "", "Job:", "1", false, "State:", "sent", '#',
       Crlf({"[Q]"})},
  });
}

// A file of the given bytes opened as a rewrite opens it, or the work file.
os::UniqueFile OpenWith(const std::string& path, const std::string& bytes, const char* mode) {
  vltest::WriteFile(path, bytes);
  para::Opened opened = para::OpenShared(path.c_str(), mode);
  EXPECT_TRUE(opened) << path << " " << opened.error;
  return std::move(opened.file);
}

std::string Pattern(size_t size, char first) {
  std::string bytes(size, '\0');
  for (size_t i = 0; i < size; ++i) bytes[i] = static_cast<char>(first + i % 61);
  return bytes;
}

TEST(CopyBack, GivesTheTargetExactlyTheSourceBytes) {
  vltest::Scratch scratch;
  const struct {
    const char* what;
    size_t target;
    size_t source;
  } cases[] = {
      {"shrinking", 3000, 700},    {"growing", 100, 1500}, {"same length", 512, 512},
      {"to empty", 1200, 0},       {"from empty", 0, 1025}, {"both empty", 0, 0},
      {"one byte less", 1024, 1023},
  };
  const std::string targetPath = scratch.Path("T.CTL"), sourcePath = scratch.Path("T.TMP");
  for (const auto& c : cases) {
    const std::string source = Pattern(c.source, '0');
    os::UniqueFile target = OpenWith(targetPath, Pattern(c.target, 'A'), "r+b");
    os::UniqueFile work = OpenWith(sourcePath, "", "w+b");
    ASSERT_TRUE(target && work) << c.what;
    // As in a rewrite: the target was read to its end, the work file just written.
    char block[4096];
    EXPECT_EQ(std::fread(block, 1, sizeof block, target.get()), c.target) << c.what;
    EXPECT_EQ(std::fwrite(source.data(), 1, source.size(), work.get()), source.size());
    EXPECT_EQ(para::CopyBack(work.get(), target.get()), 0) << c.what;
    target.reset();
    work.reset();
    EXPECT_EQ(vltest::ReadFile(targetPath), source) << c.what;
  }
}

TEST(CopyBack, DiskFullWhileGrowingKeepsTheTarget) {
  vltest::Scratch scratch;
  const std::string targetPath = scratch.Path("T.CTL");
  const std::string before = Pattern(600, 'A');
  os::UniqueFile target = OpenWith(targetPath, before, "r+b");
  os::UniqueFile work = OpenWith(scratch.Path("T.TMP"), Pattern(1600, '0'), "r+b");
  ASSERT_TRUE(target && work);
  os::fault::Inject(os::fault::Op::SetStreamLength, 1, os::kDiskFull);
  EXPECT_EQ(para::CopyBack(work.get(), target.get()), para::kCopyBackFailed);
  os::fault::Clear();
  target.reset();
  EXPECT_EQ(vltest::ReadFile(targetPath), before);
}

}  // namespace
