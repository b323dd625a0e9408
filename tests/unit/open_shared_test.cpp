// The shared opener: mode letters, the process default retry time and the
// sharing rules between processes.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdio>
#include <string>
#include <thread>
#include <vector>

#include "paragraph/open_shared.h"
#include "platform/os.h"
#include "tests/support/file_holder.h"
#include "tests/support/test_support.h"

namespace {

#ifndef _WIN32
constexpr const char* kNoSharing = "the POSIX platform layer does not enforce sharing modes";
#endif
constexpr const char* kNoFile = "(no file)";

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
    bool exists;        // the file holds "12345" before the open
    int error;          // 0: the open succeeds
    const char* put;    // written after the open
    bool readable;      // the stream reads back the file's bytes
    const char* after;  // the file's bytes afterwards
  } cases[] = {
      {"rt", true, 0, "", true, "12345"}, {"r", false, os::kFileNotFound, "", false, kNoFile},
      {"rb+", true, 0, "ab", true, "ab345"}, {"r+b", false, os::kFileNotFound, "", false, kNoFile},
      {"w", true, 0, "ab", false, "ab"}, {"wb", false, 0, "ab", false, "ab"},
      {"w+b", true, 0, "ab", true, "ab"},
      {"a", true, 0, "ab", false, "12345ab"}, {"ab", false, 0, "ab", false, "ab"},
      {"a+b", true, 0, "ab", true, "12345ab"},
      {"c", false, 0, "ab", false, "ab"}, {"cb", false, 0, "ab", false, "ab"},
      {"ct", false, 0, "ab", false, "ab"}, {"c+b", false, 0, "ab", true, "ab"},
      {"c+b", true, os::kFileExists, "", false, "12345"},
      {"", false, os::kInvalidParameter, "", false, kNoFile},
      {"b", true, os::kInvalidParameter, "", false, "12345"},
  };
  for (const auto& c : cases) {
    const std::string what = std::string("\"") + c.mode + "\"" + (c.exists ? " existing" : " new");
    vltest::RemoveTree(path);
    if (c.exists) vltest::WriteFile(path, "12345");
    para::Opened opened = para::OpenShared(0, path.c_str(), c.mode);
    EXPECT_EQ(opened.error, c.error) << what;
    EXPECT_EQ(static_cast<bool>(opened), c.error == 0) << what;
    if (opened && *c.put) {
      EXPECT_TRUE(std::fputs(c.put, opened.get()) >= 0 && std::fflush(opened.get()) == 0) << what;
    }
    if (opened && c.readable) {
      EXPECT_EQ(ReadFromStart(opened.get()), c.after) << what;
    }
    opened.file.reset();
    EXPECT_EQ(vltest::FileExists(path) ? vltest::ReadFile(path) : kNoFile, c.after) << what;
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
}

TEST(OpenShared, FailuresOtherThanSharingEndAtOnce) {
  vltest::Scratch scratch;
  const int64_t start = os::WallClockMilliseconds();
  EXPECT_EQ(para::OpenShared(5, scratch.Path("NONE.CTL").c_str(), "rb").error, os::kFileNotFound);
  EXPECT_EQ(para::OpenShared(5, scratch.Path("NO\\F.CTL").c_str(), "wb").error, os::kPathNotFound);
  EXPECT_LT(os::WallClockMilliseconds() - start, 950);
}

TEST(OpenShared, TheHolderModeDecidesWhatOthersMayOpen) {
#ifdef _WIN32
  vltest::Scratch scratch;
  const std::string path = scratch.Path("F.CTL");
  const struct {
    const char* held;
    std::vector<const char*> shared, denied;
  } cases[] = {
      {"r+b", {}, {"r", "r+b", "w", "ab", "a+b"}},
      {"ab", {"rb"}, {"ab", "a+b", "r+b", "w"}},
      {"rb", {"rb", "ab"}, {"r+b", "w+b"}},
  };
  for (const auto& c : cases) {
    vltest::WriteFile(path, "12345");
    vltest::FileHolder holder(path, c.held);
    ASSERT_TRUE(holder.opened()) << c.held;
    for (const char* mode : c.shared)
      EXPECT_TRUE(para::OpenShared(0, path.c_str(), mode)) << c.held << " held, " << mode;
    for (const char* mode : c.denied)
      EXPECT_EQ(para::OpenShared(0, path.c_str(), mode).error, os::kSharingViolation)
          << c.held << " held, " << mode;
  }
#else
  GTEST_SKIP() << kNoSharing;
#endif
}

TEST(OpenShared, SharingViolationsAreRetriedForTheRetryTimeOrUntilTheHolderLetsGo) {
#ifdef _WIN32
  vltest::Scratch scratch;
  const std::string path = scratch.Path("F.CTL");
  vltest::WriteFile(path, "12345");
  vltest::FileHolder holder(path, "r+b");
  ASSERT_TRUE(holder.opened());
  const auto expectDenied = [](const char* what, int64_t min, int64_t max, auto open) {
    const int64_t start = os::WallClockMilliseconds();
    para::Opened opened = open();
    const int64_t elapsed = os::WallClockMilliseconds() - start;
    EXPECT_EQ(opened.error, os::kSharingViolation) << what;
    EXPECT_GE(elapsed, min) << what;
    EXPECT_LT(elapsed, max) << what;
  };
  expectDenied("1 s", 950, 4000, [&] { return para::OpenShared(1, path.c_str(), "rb"); });
  expectDenied("negative: the default 5 s", 4900, 9000,
               [&] { return para::OpenShared(-1, path.c_str(), "rb"); });
  para::OpenShared(1, nullptr, nullptr);
  expectDenied("convenience form: the default 1 s", 950, 4000,
               [&] { return para::OpenShared(path.c_str(), "rb"); });
  para::OpenShared(5, nullptr, nullptr);

  const int64_t start = os::WallClockMilliseconds();
  std::thread letGo([&holder] {
    std::this_thread::sleep_for(std::chrono::milliseconds(700));
    holder.Release();
  });
  para::Opened opened = para::OpenShared(5, path.c_str(), "r+b");
  const int64_t elapsed = os::WallClockMilliseconds() - start;
  letGo.join();
  EXPECT_TRUE(opened) << opened.error;
  EXPECT_GE(elapsed, 650);
  EXPECT_LT(elapsed, 4900);
#else
  GTEST_SKIP() << kNoSharing;
#endif
}

}  // namespace
