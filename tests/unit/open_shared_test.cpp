// The shared opener: mode letters, the process default retry time and the
// sharing rules between processes (these need the Win32 platform layer; the
// POSIX one does not enforce sharing modes).
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>

#include "paragraph/open_shared.h"
#include "platform/os.h"
#include "tests/support/file_holder.h"
#include "tests/support/test_support.h"

namespace {

#ifndef _WIN32
constexpr const char* kNoSharing = "the POSIX platform layer does not enforce sharing modes";
#endif

// The rest of the stream from its start.
std::string ReadFromStart(FILE* f) {
  std::fseek(f, 0, SEEK_SET);
  std::string bytes;
  for (int c; (c = std::fgetc(f)) != EOF;) bytes.push_back(static_cast<char>(c));
  return bytes;
}

TEST(OpenShared, ModeLettersReadWriteAppendOrCreate) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("F.CTL");
  const struct {
    const char* mode;
    bool exists;      // the file holds "12345" before the open
    int error;        // 0: the open succeeds
    const char* put;  // written after the open, when not null
    bool readable;
    const char* after;  // the file's bytes afterwards; null: no file
  } cases[] = {
      {"r", true, 0, nullptr, true, "12345"},
      {"rb", true, 0, nullptr, true, "12345"},
      {"rt", true, 0, nullptr, true, "12345"},
      {"r", false, os::kFileNotFound, nullptr, false, nullptr},
      {"r+b", true, 0, "ab", true, "ab345"},
      {"rb+", true, 0, "ab", true, "ab345"},
      {"r+b", false, os::kFileNotFound, nullptr, false, nullptr},
      {"w", true, 0, "ab", false, "ab"},
      {"wb", false, 0, "ab", false, "ab"},
      {"w+b", true, 0, "ab", true, "ab"},
      {"a", true, 0, "ab", false, "12345ab"},
      {"ab", false, 0, "ab", false, "ab"},
      {"a+b", true, 0, "ab", true, "12345ab"},
      {"c", false, 0, "ab", false, "ab"},
      {"cb", false, 0, "ab", false, "ab"},
      {"ct", false, 0, "ab", false, "ab"},
      {"c+b", false, 0, "ab", true, "ab"},
      {"c", true, os::kFileExists, nullptr, false, "12345"},
      {"c+b", true, os::kFileExists, nullptr, false, "12345"},
      {"", false, os::kInvalidParameter, nullptr, false, nullptr},
      {"b", true, os::kInvalidParameter, nullptr, false, "12345"},
      {"+t", false, os::kInvalidParameter, nullptr, false, nullptr},
      {"x", false, os::kInvalidParameter, nullptr, false, nullptr},
  };
  for (const auto& c : cases) {
    const std::string what = std::string("\"") + c.mode + "\"" + (c.exists ? " existing" : " new");
    vltest::RemoveTree(path);
    if (c.exists) vltest::WriteFile(path, "12345");
    para::Opened opened = para::OpenShared(0, path.c_str(), c.mode);
    EXPECT_EQ(opened.error, c.error) << what;
    EXPECT_EQ(static_cast<bool>(opened), c.error == 0) << what;
    if (opened) {
      if (c.put) {
        EXPECT_GE(std::fputs(c.put, opened.get()), 0) << what;
        EXPECT_EQ(std::fflush(opened.get()), 0) << what;
      }
      if (c.readable) {
        EXPECT_EQ(ReadFromStart(opened.get()), c.after) << what;
      }
      opened.file.reset();
    }
    EXPECT_EQ(vltest::FileExists(path), c.after != nullptr) << what;
    if (c.after) {
      EXPECT_EQ(vltest::ReadFile(path), c.after) << what;
    }
  }
  EXPECT_FALSE(para::OpenShared(0, path.c_str(), nullptr));
}

TEST(OpenShared, PathlessCallSetsTheDefaultRetry) {
  EXPECT_EQ(para::DefaultRetrySeconds(), 5);
  EXPECT_FALSE(para::OpenShared(2, nullptr, "rb"));
  EXPECT_EQ(para::DefaultRetrySeconds(), 2);
  EXPECT_FALSE(para::OpenShared(0, nullptr, nullptr));
  EXPECT_EQ(para::DefaultRetrySeconds(), 0);
  para::OpenShared(5, nullptr, nullptr);
  EXPECT_EQ(para::DefaultRetrySeconds(), 5);

  // The convenience form opens with the default.
  vltest::Scratch scratch;
  vltest::WriteFile(scratch.Path("F.CTL"), "x");
  para::Opened opened = para::OpenShared(scratch.Path("F.CTL").c_str(), "rb");
  ASSERT_TRUE(opened);
  EXPECT_EQ(std::fgetc(opened.get()), 'x');
}

TEST(OpenShared, FailuresOtherThanSharingEndAtOnce) {
  vltest::Scratch scratch;
  const int64_t start = os::WallClockMilliseconds();
  para::Opened missing = para::OpenShared(5, scratch.Path("NONE.CTL").c_str(), "rb");
  para::Opened noDirectory = para::OpenShared(5, scratch.Path("NODIR\\F.CTL").c_str(), "wb");
  para::Opened badMode = para::OpenShared(5, scratch.Path("F.CTL").c_str(), "z");
  const int64_t elapsed = os::WallClockMilliseconds() - start;
  EXPECT_FALSE(missing);
  EXPECT_EQ(missing.error, os::kFileNotFound);
  EXPECT_FALSE(noDirectory);
  EXPECT_EQ(noDirectory.error, os::kPathNotFound);
  EXPECT_FALSE(badMode);
  EXPECT_EQ(badMode.error, os::kInvalidParameter);
  EXPECT_LT(elapsed, 950);
}

TEST(OpenShared, ReadWriteHolderDeniesOthersUntilTheRetryTimeEnds) {
#ifdef _WIN32
  vltest::Scratch scratch;
  const std::string path = scratch.Path("F.CTL");
  vltest::WriteFile(path, "12345");
  vltest::FileHolder holder(path, "r+b");
  ASSERT_TRUE(holder.opened());

  const int64_t start = os::WallClockMilliseconds();
  para::Opened reader = para::OpenShared(1, path.c_str(), "rb");
  const int64_t elapsed = os::WallClockMilliseconds() - start;
  EXPECT_FALSE(reader);
  EXPECT_EQ(reader.error, os::kSharingViolation);
  EXPECT_GE(elapsed, 950);
  EXPECT_LT(elapsed, 4000);

  for (const char* mode : {"r", "r+b", "w", "ab", "a+b"}) {
    para::Opened other = para::OpenShared(0, path.c_str(), mode);
    EXPECT_FALSE(other) << mode;
    EXPECT_EQ(other.error, os::kSharingViolation) << mode;
  }
  para::Opened create = para::OpenShared(0, path.c_str(), "c");
  EXPECT_FALSE(create);

  holder.Release();
  para::Opened after = para::OpenShared(0, path.c_str(), "rb");
  ASSERT_TRUE(after);
  EXPECT_EQ(std::fgetc(after.get()), '1');
#else
  GTEST_SKIP() << kNoSharing;
#endif
}

TEST(OpenShared, NegativeRetryAndTheConvenienceFormWaitTheDefault) {
#ifdef _WIN32
  vltest::Scratch scratch;
  const std::string path = scratch.Path("F.CTL");
  vltest::WriteFile(path, "12345");
  vltest::FileHolder holder(path, "r+b");
  ASSERT_TRUE(holder.opened());

  int64_t start = os::WallClockMilliseconds();
  para::Opened reader = para::OpenShared(-1, path.c_str(), "rb");
  int64_t elapsed = os::WallClockMilliseconds() - start;
  EXPECT_FALSE(reader);
  EXPECT_EQ(reader.error, os::kSharingViolation);
  EXPECT_GE(elapsed, 4900);
  EXPECT_LT(elapsed, 9000);

  para::OpenShared(1, nullptr, nullptr);
  start = os::WallClockMilliseconds();
  reader = para::OpenShared(path.c_str(), "rb");
  elapsed = os::WallClockMilliseconds() - start;
  para::OpenShared(5, nullptr, nullptr);
  EXPECT_FALSE(reader);
  EXPECT_EQ(reader.error, os::kSharingViolation);
  EXPECT_GE(elapsed, 950);
  EXPECT_LT(elapsed, 4000);
#else
  GTEST_SKIP() << kNoSharing;
#endif
}

TEST(OpenShared, AppendHolderLetsOthersReadButNotWrite) {
#ifdef _WIN32
  vltest::Scratch scratch;
  const std::string path = scratch.Path("F.CTL");
  vltest::WriteFile(path, "12345");
  vltest::FileHolder holder(path, "ab");
  ASSERT_TRUE(holder.opened());

  const int64_t start = os::WallClockMilliseconds();
  para::Opened reader = para::OpenShared(1, path.c_str(), "rb");
  EXPECT_LT(os::WallClockMilliseconds() - start, 950);
  ASSERT_TRUE(reader);
  EXPECT_EQ(std::fgetc(reader.get()), '1');

  for (const char* mode : {"ab", "a+b", "r+b", "w"}) {
    para::Opened writer = para::OpenShared(0, path.c_str(), mode);
    EXPECT_FALSE(writer) << mode;
    EXPECT_EQ(writer.error, os::kSharingViolation) << mode;
  }
  holder.Release();
  reader.file.reset();
  EXPECT_TRUE(para::OpenShared(0, path.c_str(), "ab"));
#else
  GTEST_SKIP() << kNoSharing;
#endif
}

TEST(OpenShared, ReadHolderSharesReadingAndWritingButNotExclusiveAccess) {
#ifdef _WIN32
  vltest::Scratch scratch;
  const std::string path = scratch.Path("F.CTL");
  vltest::WriteFile(path, "12345");
  vltest::FileHolder holder(path, "rb");
  ASSERT_TRUE(holder.opened());

  for (const char* mode : {"rb", "ab"}) {
    EXPECT_TRUE(para::OpenShared(0, path.c_str(), mode)) << mode;
  }
  for (const char* mode : {"r+b", "w+b"}) {
    para::Opened exclusive = para::OpenShared(0, path.c_str(), mode);
    EXPECT_FALSE(exclusive) << mode;
    EXPECT_EQ(exclusive.error, os::kSharingViolation) << mode;
  }
  holder.Release();
  EXPECT_TRUE(para::OpenShared(0, path.c_str(), "r+b"));
#else
  GTEST_SKIP() << kNoSharing;
#endif
}

TEST(OpenShared, RetrySucceedsOnceTheHolderLetsGo) {
#ifdef _WIN32
  vltest::Scratch scratch;
  const std::string path = scratch.Path("F.CTL");
  vltest::WriteFile(path, "12345");
  vltest::FileHolder holder(path, "r+b");
  ASSERT_TRUE(holder.opened());

  const int64_t start = os::WallClockMilliseconds();
  std::thread letGo([&holder] {
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    holder.Release();
  });
  para::Opened opened = para::OpenShared(5, path.c_str(), "r+b");
  const int64_t elapsed = os::WallClockMilliseconds() - start;
  letGo.join();
  ASSERT_TRUE(opened) << opened.error;
  EXPECT_EQ(opened.error, 0);
  EXPECT_GE(elapsed, 650);
  EXPECT_LT(elapsed, 4900);
#else
  GTEST_SKIP() << kNoSharing;
#endif
}

}  // namespace
