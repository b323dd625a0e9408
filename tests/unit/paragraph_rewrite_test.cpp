// Rewriting paragraph files in place: the whole file's bytes after each
// rewrite, and no work file left behind whatever fails.
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
    const char *before, *header, *keyword, *value, *after;
    bool addAnother = false;
  } cases[] = {
      // Header and keyword match in any case; only the first of several lines changes.
      {"[user] old|userNAME: a|", "[USER]", "Username:", "JSMITH", "[user] old|Username: JSMITH|"},
      {"[A]|To: a|To: b|To: c|", "[A]", "To:", "x", "[A]|To: x|To: b|To: c|"},
      // A longer keyword, a comment or an indented line is no match.
      {"[A]|Names: n|; Name: c| Name: i|name: old|", "[A]", "Name:", "new",
       "[A]|Names: n|; Name: c| Name: i|Name: new|"},
      // A missing paragraph is appended after one empty line.
      {"[A]|X: 1|", "[B]", "Y:", "2", "[A]|X: 1||[B]|Y: 2|"},
      {"[A]|X: 1||", "[B]", "Y:", "2", "[A]|X: 1||[B]|Y: 2|"},
      // A missing keyword goes to the paragraph's end; the next paragraph's does not count.
      {"[A]|X: 1|[B]|Z: 2|", "[A]", "Z:", "3", "[A]|X: 1|Z: 3||[B]|Z: 2|"},
      {"[A]|X: 1|", "[A]", "Z:", "3", "[A]|X: 1|Z: 3|"},
      // Empty lines of the target paragraph only are dropped.
      {"|[A]||X: 1||W: 2|||[B]||Y: 2||", "[A]", "X:", "5", "|[A]|X: 5|W: 2||[B]||Y: 2||"},
      // Add another: at the paragraph's end.
      {"[A]|To: a|To: b|[B]|", "[A]", "To:", "c", "[A]|To: a|To: b|To: c||[B]|", true},
      // An empty value writes the bare keyword; no value removes the first match.
      {"[A]|Trace: YES|X: 1|", "[A]", "Trace:", "", "[A]|Trace:|X: 1|"},
      {"[A]|X: 1|X: 2|W: 3|[B]|", "[A]", "X:", nullptr, "[A]|X: 2|W: 3||[B]|"},
      // No keyword removes the content lines, keeping ignored ones, and ignores the value.
      {"[A]|X: 1|; note| indented|W: 2||[B]|Y: 1|", "[A]", nullptr, "ignored",
       "[A]|; note| indented||[B]|Y: 1|"},
      // LF line ends, trailing blanks and control bytes are cleaned.
      {"; head  \n[A]\t\nX: 1\nW:\ta\x01" "b \r\n[B]\nY: 2", "[A]", "X:", "2",
       "; head|[A]|X: 2|W: a b||[B]|Y: 2|"},
  };
  for (const auto& c : cases) {
    vltest::WriteFile(path_, Lines(c.before));
    EXPECT_TRUE(para::SetParagraphValue(path_.c_str(), c.header, c.keyword, c.value, c.addAnother))
        << c.before;
    EXPECT_EQ(vltest::ReadFile(path_), Lines(c.after)) << c.before;
  }
}

TEST_F(SetGroupValues, RewritesTheFirstLineAndSetsStateInItsGroup) {
  const struct {
    const char *before, *keyword1, *value1, *state;
    bool keepFirst;
    char stopChar;
    const char* after;
  } cases[] = {
      // Empty lines of the paragraph are dropped, one stays before the next header.
      {"[Q]||Job: 1||State: new|[R]|State: x|", "Job:", "1", "done", false, '#',
       "[Q]|Job: 1|State: done||[R]|State: x|"},
      // A State before the first line is not in the group; only the first State of it is.
      {"[Q]|State: old|Job: 1|State: new|", "Job:", "2", "sent", false, 0,
       "[Q]|State: old|Job: 2|State: sent|"},
      {"[Q]|Job: 1|State: a|State: b|", "Job:", "1", "c", false, 0,
       "[Q]|Job: 1|State: c|State: b|"},
      // Keep first: the first group whose line matches.
      {"[Q]|Job: 1|State: new|#|Job: 2|State: new|#|[R]|", "Job: 2", "ignored", "sent", true, '#',
       "[Q]|Job: 1|State: new|#|Job: 2|State: sent|#||[R]|"},
      {"[Q]|Job: 1|State: a|#|Job: 1|State: b|", "Job: 1", nullptr, "c", true, '#',
       "[Q]|Job: 1|State: c|#|Job: 1|State: b|"},
      // An absent State goes before the stop line or the next header.
      {"[Q]|Job: 1|Pages: 2|#|Job: 2|State: a|", "Job: 1", nullptr, "sent", true, '#',
       "[Q]|Job: 1|Pages: 2|State: sent|#|Job: 2|State: a|"},
      {"[Q]|Job: 1|[R]|State: a|", "Job: 1", nullptr, "sent", true, '#',
       "[Q]|Job: 1|State: sent||[R]|State: a|"},
      // Without a stop character the group runs to the paragraph's (here the file's) end.
      {"[Q]|Job: 1|#|Job: 2|", "Job: 1", nullptr, "sent", true, 0,
       "[Q]|Job: 1|#|Job: 2|State: sent|"},
      // Without a first line nothing changes.
      {"[Q]|Job: 1|State: a|#|[R]|", "Job: 9", nullptr, "sent", true, '#',
       "[Q]|Job: 1|State: a|#||[R]|"},
      // A missing paragraph gets its header alone.
      {"[R]|Job: 1|", "Job:", "1", "sent", false, '#', "[R]|Job: 1||[Q]|"},
      {"[R]|Job: 1||", "Job:", "1", "sent", false, '#', "[R]|Job: 1||[Q]|"},
  };
  for (const auto& c : cases) {
    vltest::WriteFile(path_, Lines(c.before));
    EXPECT_TRUE(para::SetGroupValues(path_.c_str(), "[Q]", c.keyword1, c.value1, c.keepFirst,
                                     "State:", c.state, c.stopChar))
        << c.before;
    EXPECT_EQ(vltest::ReadFile(path_), Lines(c.after)) << c.before;
  }
}

TEST(RewriteWorkFile, NameReplacesTheExtensionWithin268Characters) {
  const std::string fax = "C:\\FAX\\";
  const std::string dir = "C:\\" + std::string(250, 'D') + "\\";  // 254 characters
  const struct {
    std::string path, work;  // no work name: refused
  } cases[] = {
      {fax + "MSGDIR.CTL", fax + "MSGDIR.TMP"}, {fax + "msgdir.tmp", fax + "msgdir.TM2"},
      {fax + "A.B.INI", fax + "A.B.TMP"},       {"C:\\FAX.D\\MSGDIR", "C:\\FAX.D\\MSGDIR.TMP"},
      {"C:MSGDIR", "C:MSGDIR.TMP"},
      {dir + "ABCDEFGHXY.CTL", dir + "ABCDEFGHXY.TMP"},  // 268
      {dir + "ABCDEFGHXYZ.CTL", ""},                     // 269
      {dir + "ABCDEFGHXY", dir + "ABCDEFGHXY.TMP"},      // 264, work name 268
      {dir + "ABCDEFGHXYZ", ""},                         // 265, work name 269
  };
  for (const auto& c : cases) {
    std::string work = "junk";
    const bool accepted = para::WorkFileName(c.path.c_str(), &work);
    EXPECT_EQ(accepted ? work : "", c.work) << c.path;
  }
}

TEST_F(SetParagraphValue, RefusesBadArgumentsBeforeTouchingAnyFile) {
  // Which paths are too long is RewriteWorkFile's; here a refused one is never opened.
  const std::string tooLong = scratch_.Path(std::string(300, 'N') + ".CTL");
  os::fault::Inject(os::fault::Op::Any, 1000, os::kAccessDenied);  // counts, never fails
  EXPECT_FALSE(para::SetParagraphValue(tooLong.c_str(), "[A]", "X:", "1", false));
  EXPECT_FALSE(para::SetParagraphValue(path_.c_str(), nullptr, "X:", "1", false));
  EXPECT_FALSE(para::SetGroupValues(path_.c_str(), nullptr, "X:", "1", false, "Y:", "2", 0));
  EXPECT_FALSE(para::SetParagraphValue(nullptr, "[A]", "X:", "1", false));
  EXPECT_EQ(os::fault::Calls(os::fault::Op::Any), 0);
  os::fault::Clear();
}

// A failed removal is tried again (the fault walk below fails each call once).
TEST_F(SetParagraphValue, OverwritesAnOldWorkFileAndFailsWhenItsOwnCannotBeDeleted) {
  vltest::WriteFile(path_, Lines("[A]|X: 1|"));
  vltest::WriteFile(scratch_.Path("MSGDIR.TMP"), std::string(2000, 'j'));
  EXPECT_TRUE(para::SetParagraphValue(path_.c_str(), "[A]", "X:", "2", false));
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
#else
  GTEST_SKIP() << "the POSIX platform layer does not enforce sharing modes";
#endif
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
      {"shrinking", 3000, 700, 0}, {"growing", 100, 1500, 0}, {"to empty", 1200, 0, 0},
      {"from empty", 0, 1025, 0},  {"disk full while growing", 600, 1600, os::kDiskFull},
      {"handle disk full while growing", 10, 5000, os::kHandleDiskFull},
  };
  for (const auto& c : cases) {
    const std::string before = Pattern(c.target, 'A'), source = Pattern(c.source, '0');
    // As in a rewrite: the target opened and read to its end, the work file made and written.
    vltest::WriteFile(path_, before);
    os::UniqueFile target = para::OpenShared(path_.c_str(), "r+b").file;
    os::UniqueFile work = para::OpenShared(scratch_.Path("MSGDIR.TMP").c_str(), "w+b").file;
    ASSERT_TRUE(target && work) << c.what;
    char block[4096];
    EXPECT_EQ(std::fread(block, 1, sizeof block, target.get()), c.target) << c.what;
    EXPECT_EQ(std::fwrite(source.data(), 1, source.size(), work.get()), source.size());
    if (c.fault) os::fault::Inject(os::fault::Op::SetStreamLength, 1, c.fault);
    EXPECT_EQ(para::CopyBack(work.get(), target.get()), c.fault ? para::kCopyBackFailed : 0)
        << c.what;
    // After a disk full while growing, the old length is set again.
    if (c.fault) {
      EXPECT_EQ(os::fault::Calls(os::fault::Op::SetStreamLength), 2) << c.what;
    }
    os::fault::Clear();
    target.reset();
    work.reset();
    EXPECT_EQ(vltest::ReadFile(path_), c.fault ? before : source) << c.what;
  }
}

}  // namespace
