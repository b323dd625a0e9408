// Rewriting paragraph files in place, each rewrite checked against the whole
// file's bytes and the directory's contents.
#include <gtest/gtest.h>

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

// The text with every '|' replaced by CR LF.
std::string Lines(std::string text) {
  for (size_t at; (at = text.find('|')) != std::string::npos;) text.replace(at, 1, "\r\n");
  return text;
}

// The file rewritten, MSGDIR.CTL, in a scratch directory.
class InScratch : public ::testing::Test {
 protected:
  Names Listing() const { return vltest::ListDirectory(scratch_.Dir()); }
  vltest::Scratch scratch_;
  const std::string path_ = scratch_.Path("MSGDIR.CTL");
};
class SetParagraphValue : public InScratch {};
class SetGroupValues : public InScratch {};
class CopyBack : public InScratch {};

TEST_F(SetParagraphValue, RewritesTheParagraphToExactlyTheExpectedBytes) {
  const struct {
    const char *what, *before, *header, *keyword, *value;
    bool addAnother;
    const char* after;
  } cases[] = {
      {"replaces in the last paragraph", "[A]|X: 1|[B]|Y: 2|", "[B]", "Y:", "3", false,
       "[A]|X: 1|[B]|Y: 3|"},
      {"replaces in the first paragraph", "[A]|W: 0|X: 1|Z: 2||[B]|X: 5|", "[A]", "X:", "9",
       false, "[A]|W: 0|X: 9|Z: 2||[B]|X: 5|"},
      {"header and keyword match in any case", "[user] old|userNAME: a|", "[USER]", "Username:",
       "JSMITH", false, "[user] old|Username: JSMITH|"},
      {"replaces only the first of several lines", "[A]|To: a|To: b|To: c|", "[A]", "To:", "x",
       false, "[A]|To: x|To: b|To: c|"},
      {"a longer keyword, a comment or an indented line is no match",
       "[A]|Names: n|; Name: c| Name: i|name: old|", "[A]", "Name:", "new", false,
       "[A]|Names: n|; Name: c| Name: i|Name: new|"},
      {"equals sign as separator", "[A]|Area=C:\\OLD|", "[A]", "Area=", "D:\\NEW", false,
       "[A]|Area= D:\\NEW|"},
      {"missing paragraph appended after one empty line", "[A]|X: 1|", "[B]", "Y:", "2", false,
       "[A]|X: 1||[B]|Y: 2|"},
      {"missing paragraph after an empty last line", "[A]|X: 1||", "[B]", "Y:", "2", false,
       "[A]|X: 1||[B]|Y: 2|"},
      {"missing paragraph in an empty file", "", "[B]", "Y:", "2", false, "[B]|Y: 2|"},
      {"a longer header is another paragraph", "[USERS]|Y: 1|", "[USER]", "Y:", "2", false,
       "[USERS]|Y: 1||[USER]|Y: 2|"},
      {"missing paragraph without value: the header alone", "[A]|", "[B]", "Y:", nullptr, false,
       "[A]||[B]|"},
      {"missing keyword before the next header", "[A]|X: 1|[B]|Y: 2|", "[A]", "Z:", "3", false,
       "[A]|X: 1|Z: 3||[B]|Y: 2|"},
      {"missing keyword at the end of the file", "[A]|X: 1|", "[A]", "Z:", "3", false,
       "[A]|X: 1|Z: 3|"},
      {"missing keyword in an empty paragraph", "[A]|[B]|", "[A]", "Z:", "3", false,
       "[A]|Z: 3||[B]|"},
      {"a keyword of the next paragraph does not count", "[A]|[B]|Z: 1|", "[A]", "Z:", "3", false,
       "[A]|Z: 3||[B]|Z: 1|"},
      {"drops empty lines of the target paragraph only", "|[A]||X: 1||W: 2|||[B]||Y: 2||", "[A]",
       "X:", "5", false, "|[A]|X: 5|W: 2||[B]||Y: 2||"},
      {"drops empty lines at the end of the file", "[A]|X: 1|||", "[A]", "X:", "5", false,
       "[A]|X: 5|"},
      {"add another before the next header", "[A]|To: a|To: b|[B]|", "[A]", "To:", "c", true,
       "[A]|To: a|To: b|To: c||[B]|"},
      {"add another at the end of the file", "[A]|To: a|", "[A]", "To:", "b", true,
       "[A]|To: a|To: b|"},
      {"add another in a missing paragraph", "[A]|", "[B]", "To:", "a", true, "[A]||[B]|To: a|"},
      {"empty value replaces with the bare keyword", "[A]|Trace: YES|X: 1|", "[A]", "Trace:", "",
       false, "[A]|Trace:|X: 1|"},
      {"empty value adds the bare keyword", "[A]|X: 1|", "[A]", "Trace:", "", false,
       "[A]|X: 1|Trace:|"},
      {"null value removes the first match", "[A]|X: 1|X: 2|W: 3|[B]|", "[A]", "X:", nullptr,
       false, "[A]|X: 2|W: 3||[B]|"},
      {"null value without a match", "[A]|W: 3|", "[A]", "X:", nullptr, false, "[A]|W: 3|"},
      {"null keyword removes content lines, keeps ignored ones",
       "[A]|X: 1|; note| indented|W: 2||[B]|Y: 1|", "[A]", nullptr, nullptr, false,
       "[A]|; note| indented||[B]|Y: 1|"},
      {"null keyword in the last paragraph", "[B]|Y: 1|[A]|X: 1|W: 2|", "[A]", nullptr,
       "ignored", false, "[B]|Y: 1|[A]|"},
      {"LF line ends, trailing blanks and control bytes cleaned",
       "; head  \n[A]\t\nX: 1\nW:\ta\x01" "b \r\n[B]\nY: 2", "[A]", "X:", "2", false,
       "; head|[A]|X: 2|W: a b||[B]|Y: 2|"},
  };
  for (const auto& c : cases) {
    vltest::WriteFile(path_, Lines(c.before));
    EXPECT_TRUE(para::SetParagraphValue(path_.c_str(), c.header, c.keyword, c.value, c.addAnother))
        << c.what;
    EXPECT_EQ(vltest::ReadFile(path_), Lines(c.after)) << c.what;
    EXPECT_EQ(Listing(), Names{"MSGDIR.CTL"}) << c.what;
  }
}

TEST_F(SetGroupValues, RewritesTheFirstLineAndSetsStateInItsGroup) {
  const struct {
    const char *what, *before, *keyword1, *value1;
    bool keepFirst;
    const char* state;
    char stopChar;
    const char* after;
  } cases[] = {
      {"first group", "[Q]|Job: 1|State: new|#|Job: 2|State: new|", "Job:", "7", false, "sent",
       '#', "[Q]|Job: 7|State: sent|#|Job: 2|State: new|"},
      {"empty lines of the paragraph dropped, one before the next header",
       "[Q]||Job: 1||State: new|[R]|State: x|", "Job:", "1", false, "done", '#',
       "[Q]|Job: 1|State: done||[R]|State: x|"},
      {"a State before the first line is not in the group", "[Q]|State: old|Job: 1|State: new|",
       "Job:", "2", false, "sent", 0, "[Q]|State: old|Job: 2|State: sent|"},
      {"only the first State of the group", "[Q]|Job: 1|State: a|State: b|", "Job:", "1", false,
       "c", 0, "[Q]|Job: 1|State: c|State: b|"},
      {"empty first value keeps the blank", "[Q]|Job: 1|State: a|", "Job:", "", false, "", 0,
       "[Q]|Job: |State:|"},
      {"keep first selects the second group", "[Q]|Job: 1|State: new|#|Job: 2|State: new|#|[R]|",
       "Job: 2", "ignored", true, "sent", '#',
       "[Q]|Job: 1|State: new|#|Job: 2|State: sent|#||[R]|"},
      {"keep first selects only the first matching group",
       "[Q]|Job: 1|State: a|#|Job: 1|State: b|", "Job: 1", nullptr, true, "c", '#',
       "[Q]|Job: 1|State: c|#|Job: 1|State: b|"},
      {"absent State written before the stop line", "[Q]|Job: 1|Pages: 2|#|Job: 2|State: a|",
       "Job: 1", nullptr, true, "sent", '#', "[Q]|Job: 1|Pages: 2|State: sent|#|Job: 2|State: a|"},
      {"absent State written before the next header", "[Q]|Job: 1|[R]|State: a|", "Job: 1",
       nullptr, true, "sent", '#', "[Q]|Job: 1|State: sent||[R]|State: a|"},
      {"absent State written at the end of the file", "[Q]|Job: 1|Pages: 2|", "Job: 1", nullptr,
       true, "sent", '#', "[Q]|Job: 1|Pages: 2|State: sent|"},
      {"no stop character: the group runs to the paragraph end", "[Q]|Job: 1|#|Job: 2|",
       "Job: 1", nullptr, true, "sent", 0, "[Q]|Job: 1|#|Job: 2|State: sent|"},
      {"empty State value writes the bare keyword", "[Q]|Job: 1|#|", "Job: 1", nullptr, true, "",
       '#', "[Q]|Job: 1|State:|#|"},
      {"null State value writes nothing", "[Q]|Job: 1|#|", "Job: 1", nullptr, true, nullptr, '#',
       "[Q]|Job: 1|#|"},
      {"null State value removes the line", "[Q]|Job: 1|State: a|#|", "Job: 1", nullptr, true,
       nullptr, '#', "[Q]|Job: 1|#|"},
      {"no first line: no line changes", "[Q]|Job: 1|State: a|#|[R]|", "Job: 9", nullptr, true,
       "sent", '#', "[Q]|Job: 1|State: a|#||[R]|"},
      {"missing paragraph after a content line: its header alone", "[R]|Job: 1|", "Job:", "1",
       false, "sent", '#', "[R]|Job: 1||[Q]|"},
      {"missing paragraph after an empty line", "[R]|Job: 1||", "Job:", "1", false, "sent", '#',
       "[R]|Job: 1||[Q]|"},
      {"missing paragraph in an empty file", "", "Job:", "1", false, "sent", '#', "[Q]|"},
  };
  for (const auto& c : cases) {
    vltest::WriteFile(path_, Lines(c.before));
    EXPECT_TRUE(para::SetGroupValues(path_.c_str(), "[Q]", c.keyword1, c.value1, c.keepFirst,
                                     "State:", c.state, c.stopChar))
        << c.what;
    EXPECT_EQ(vltest::ReadFile(path_), Lines(c.after)) << c.what;
    EXPECT_EQ(Listing(), Names{"MSGDIR.CTL"}) << c.what;
  }
}

TEST(RewriteWorkFile, NameReplacesTheExtensionWithin268Characters) {
  const std::string fax = "C:\\FAX\\";
  const std::string dir = "C:\\" + std::string(250, 'D') + "\\";  // 254 characters
  const struct {
    std::string path, work;  // no work name: refused
  } cases[] = {
      {fax + "MSGDIR.CTL", fax + "MSGDIR.TMP"}, {fax + "MSGDIR.TMP", fax + "MSGDIR.TM2"},
      {fax + "msgdir.tmp", fax + "msgdir.TM2"}, {fax + "MSGDIR.TM2", fax + "MSGDIR.TMP"},
      {fax + "MSGDIR", fax + "MSGDIR.TMP"},     {fax + "A.B.INI", fax + "A.B.TMP"},
      {"C:\\FAX.D\\MSGDIR", "C:\\FAX.D\\MSGDIR.TMP"},  {"MSGDIR.CTL", "MSGDIR.TMP"},
      {"C:MSGDIR", "C:MSGDIR.TMP"},
      {dir + "ABCDEFXY.CTL", dir + "ABCDEFXY.TMP"},      // 266
      {dir + "ABCDEFGHXY.CTL", dir + "ABCDEFGHXY.TMP"},  // 268
      {dir + "ABCDEFGHXYZ.CTL", ""},                     // 269
      {dir + "ABCDEFGHXY.TMP", dir + "ABCDEFGHXY.TM2"},  // 268
      {dir + "ABCDEFGHXY", dir + "ABCDEFGHXY.TMP"},      // 264, work name 268
      {dir + "ABCDEFGHXYZ", ""},                         // 265, work name 269
  };
  for (const auto& c : cases) {
    std::string work = "junk";
    const bool accepted = para::WorkFileName(c.path.c_str(), &work);
    EXPECT_EQ(accepted ? work : "", c.work) << c.path;
  }
}

TEST_F(SetParagraphValue, RefusesTooLongPathsBeforeTouchingAnyFile) {
  const std::string base = scratch_.Path(std::string(264 - scratch_.Dir().size(), 'N') + ".CTL");
  ASSERT_EQ(base.size(), 268u);
  const std::string noExtension = base.substr(0, 264) + "N";  // work name 269
  os::fault::Inject(os::fault::Op::Any, 1000, os::kAccessDenied);  // counts, never fails
  EXPECT_FALSE(para::SetParagraphValue((base + "X").c_str(), "[A]", "X:", "1", false));
  EXPECT_FALSE(para::SetParagraphValue(noExtension.c_str(), "[A]", "X:", "1", false));
  EXPECT_FALSE(para::SetGroupValues((base + "X").c_str(), "[A]", "X:", "1", false, "Y:", "2", 0));
  EXPECT_EQ(os::fault::Calls(os::fault::Op::Any), 0);
  // 268 characters are not refused: the file is looked for (and missing).
  EXPECT_FALSE(para::SetParagraphValue(base.c_str(), "[A]", "X:", "1", false));
  EXPECT_GE(os::fault::Calls(os::fault::Op::OpenStream), 1);
  os::fault::Clear();
  EXPECT_EQ(Listing(), Names{});
}

TEST_F(SetParagraphValue, NeverLeavesTheWorkFile) {
  EXPECT_FALSE(para::SetParagraphValue(path_.c_str(), "[A]", "X:", "1", false));  // no file
  EXPECT_EQ(Listing(), Names{});
  vltest::WriteFile(path_, Lines("[A]|"));
  EXPECT_FALSE(para::SetParagraphValue(path_.c_str(), nullptr, "X:", "1", false));
  EXPECT_FALSE(para::SetGroupValues(path_.c_str(), nullptr, "X:", "1", false, "Y:", "2", 0));
  EXPECT_FALSE(para::SetParagraphValue(nullptr, "[A]", "X:", "1", false));
  EXPECT_EQ(Listing(), Names{"MSGDIR.CTL"});
  // A work file left over from before is overwritten and removed.
  vltest::WriteFile(scratch_.Path("MSGDIR.TMP"), std::string(2000, 'j'));
  EXPECT_TRUE(para::SetParagraphValue(path_.c_str(), "[A]", "X:", "1", false));
  EXPECT_EQ(vltest::ReadFile(path_), Lines("[A]|X: 1|"));
  EXPECT_EQ(Listing(), Names{"MSGDIR.CTL"});
  // A .TMP file is rewritten through .TM2.
  const std::string tmp = scratch_.Path("MSGDIR.TMP");
  vltest::WriteFile(tmp, Lines("[MSG]|State: 1|"));
  EXPECT_TRUE(para::SetParagraphValue(tmp.c_str(), "[MSG]", "State:", "2", false));
  EXPECT_EQ(vltest::ReadFile(tmp), Lines("[MSG]|State: 2|"));
  EXPECT_EQ(Listing(), (Names{"MSGDIR.CTL", "MSGDIR.TMP"}));
}

TEST_F(SetParagraphValue, DiskFullWhileGrowingLeavesTheFileUnchanged) {
  const std::string before = Lines("[A]|X: 1|[B]|Y: 2|");
  for (int error : {os::kDiskFull, os::kHandleDiskFull}) {
    vltest::WriteFile(path_, before);
    os::fault::Inject(os::fault::Op::SetStreamLength, 1, error);
    EXPECT_FALSE(para::SetParagraphValue(path_.c_str(), "[A]", "X:", "a longer value", false))
        << error;
    EXPECT_GE(os::fault::Calls(os::fault::Op::SetStreamLength), 1) << error;
    os::fault::Clear();
    EXPECT_EQ(vltest::ReadFile(path_), before) << error;
    EXPECT_EQ(Listing(), Names{"MSGDIR.CTL"}) << error;
  }
}

TEST_F(SetParagraphValue, FailsWhenTheWorkFileCannotBeDeleted) {
  vltest::WriteFile(path_, Lines("[A]|X: 1|"));
  os::fault::Inject(os::fault::Op::RemoveFile, 1, os::kAccessDenied);  // tried again
  EXPECT_TRUE(para::SetParagraphValue(path_.c_str(), "[A]", "X:", "2", false));
  EXPECT_EQ(os::fault::Calls(os::fault::Op::RemoveFile), 2);
  os::fault::Clear();
  EXPECT_EQ(vltest::ReadFile(path_), Lines("[A]|X: 2|"));
  EXPECT_EQ(Listing(), Names{"MSGDIR.CTL"});
  // A work file that stays is a failure, although the file was rewritten.
  os::fault::Inject(os::fault::Op::RemoveFile, 1, os::kAccessDenied, true);
  EXPECT_FALSE(para::SetParagraphValue(path_.c_str(), "[A]", "X:", "3", false));
  os::fault::Clear();
  EXPECT_EQ(vltest::ReadFile(path_), Lines("[A]|X: 3|"));
  EXPECT_EQ(Listing(), (Names{"MSGDIR.CTL", "MSGDIR.TMP"}));
}

TEST_F(SetParagraphValue, EveryInjectedFaultEndsWithTheOldOrTheNewContent) {
  const struct {
    const char *what, *before, *value, *after;
  } cases[] = {
      {"growing", "[A]|X: 1||[B]|Y: 2|", "a much longer value",
       "[A]|X: a much longer value||[B]|Y: 2|"},
      {"shrinking", "[A]|X: a much longer value|||[B]|Y: 2|", "1", "[A]|X: 1||[B]|Y: 2|"},
  };
  for (const auto& c : cases) {
    int n = 1;
    for (;; ++n) {
      vltest::WriteFile(path_, Lines(c.before));
      os::fault::Inject(os::fault::Op::Any, n, os::kAccessDenied);
      bool done = para::SetParagraphValue(path_.c_str(), "[A]", "X:", c.value, false);
      int calls = os::fault::Calls(os::fault::Op::Any);
      os::fault::Clear();
      EXPECT_EQ(vltest::ReadFile(path_), Lines(done ? c.after : c.before))
          << c.what << ", fault at call " << n << (done ? ", succeeded" : ", failed");
      EXPECT_EQ(Listing(), Names{"MSGDIR.CTL"}) << c.what << ", fault at call " << n;
      if (calls < n) {
        EXPECT_TRUE(done) << c.what << ": the run without a fault";
        break;
      }
    }
    EXPECT_GE(n - 1, 4) << c.what << ": two opens, the new length and the removal";
  }
}

TEST_F(SetParagraphValue, FailsWhileAnotherProcessHoldsTheFile) {
#ifdef _WIN32
  vltest::WriteFile(path_, Lines("[A]|X: 1|"));
  para::OpenShared(1, nullptr, nullptr);
  {
    vltest::FileHolder holder(path_, "rb");
    ASSERT_TRUE(holder.opened());
    EXPECT_FALSE(para::SetParagraphValue(path_.c_str(), "[A]", "X:", "2", false));
  }
  para::OpenShared(5, nullptr, nullptr);
  EXPECT_EQ(vltest::ReadFile(path_), Lines("[A]|X: 1|"));
  EXPECT_EQ(Listing(), Names{"MSGDIR.CTL"});
  EXPECT_TRUE(para::SetParagraphValue(path_.c_str(), "[A]", "X:", "2", false));
  EXPECT_EQ(vltest::ReadFile(path_), Lines("[A]|X: 2|"));
#else
  GTEST_SKIP() << "the POSIX platform layer does not enforce sharing modes";
#endif
}

// Writes bytes to path and opens it as a rewrite opens the file or its work file.
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

TEST_F(CopyBack, GivesTheTargetExactlyTheSourceBytesOrKeepsItWhenTheDiskIsFull) {
  const struct {
    const char* what;
    size_t target, source;
    int fault;  // of setting the target's length
  } cases[] = {
      {"shrinking", 3000, 700, 0},    {"growing", 100, 1500, 0},  {"same length", 512, 512, 0},
      {"to empty", 1200, 0, 0},       {"from empty", 0, 1025, 0}, {"both empty", 0, 0, 0},
      {"one byte less", 1024, 1023, 0}, {"disk full while growing", 600, 1600, os::kDiskFull},
  };
  for (const auto& c : cases) {
    const std::string before = Pattern(c.target, 'A'), source = Pattern(c.source, '0');
    os::UniqueFile target = OpenWith(path_, before, "r+b");
    os::UniqueFile work = OpenWith(scratch_.Path("MSGDIR.TMP"), "", "w+b");
    ASSERT_TRUE(target && work) << c.what;
    // As in a rewrite: the target was read to its end, the work file just written.
    char block[4096];
    EXPECT_EQ(std::fread(block, 1, sizeof block, target.get()), c.target) << c.what;
    EXPECT_EQ(std::fwrite(source.data(), 1, source.size(), work.get()), source.size());
    if (c.fault) os::fault::Inject(os::fault::Op::SetStreamLength, 1, c.fault);
    EXPECT_EQ(para::CopyBack(work.get(), target.get()), c.fault ? para::kCopyBackFailed : 0)
        << c.what;
    os::fault::Clear();
    target.reset();
    work.reset();
    EXPECT_EQ(vltest::ReadFile(path_), c.fault ? before : source) << c.what;
  }
}

}  // namespace
