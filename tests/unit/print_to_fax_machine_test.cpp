// Print to fax: the "APIPrint" value under HKCU and the driver's output file.
#include <gtest/gtest.h>

#include <cstdio>

#ifdef _WIN32
#include <windows.h>
#endif

#include "paragraph/open_shared.h"
#include "tests/support/file_holder.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using Texts = std::vector<std::string>;
[[maybe_unused]] constexpr char kNoRegistry[] =
    "the native registry is an in-process map that creates keys on write";
[[maybe_unused]] constexpr char kNoSharing[] = "other processes' sharing needs Windows";
[[maybe_unused]] constexpr char kKey[] = "SOFTWARE\\Ornavex\\Velomar";

class PrintToFax : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.UseAsExplicitAreas();
    tree_.AddUser("JSMITH");
    handle_ = vltest::LogOn("JSMITH");
    vltest::Reported::Clear();
    vltest::TraceInto(scratch_);
  }
  void TearDown() override { VlxAPIClosedown(handle_); }
#ifdef _WIN32
  static std::string PrintValue() {
    char data[300] = "junk";
    DWORD size = sizeof data;
    EXPECT_EQ(RegGetValueA(HKEY_CURRENT_USER, kKey, "APIPrint", RRF_RT_REG_SZ, nullptr, data, &size),
              ERROR_SUCCESS);
    return data;
  }
  static void CreateKey() {
    HKEY key = nullptr;
    ASSERT_EQ(RegCreateKeyExA(HKEY_CURRENT_USER, kKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &key,
                              nullptr),
              ERROR_SUCCESS);
    RegCloseKey(key);
  }
#endif

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
  const std::string output_ = scratch_.Path("OUT.TIF");
};

TEST_F(PrintToFax, NullArgumentsAndSessionsWithoutUserAreRefusedWithoutTracingAReturn) {
  int32_t complete = 7;
  EXPECT_EQ(VlxStartPrint(handle_, nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxIsPrintComplete(handle_, nullptr, &complete), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxIsPrintComplete(handle_, output_.c_str(), nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(complete, 7);
  EXPECT_EQ(VlxCancelPrint(0), VL_E_NOT_INIT);
  EXPECT_EQ(vltest::TraceLines(scratch_), Texts{"S=00000000  VlxCancelPrint"});

  const VLHANDLE noUser = vltest::LogOn("");
  complete = 7;
  EXPECT_EQ(VlxStartPrint(noUser, output_.c_str()), VL_E_USER_NOT_INIT);
  EXPECT_EQ(VlxIsPrintComplete(noUser, output_.c_str(), &complete), VL_E_USER_NOT_INIT);
  EXPECT_EQ(complete, 0);
  EXPECT_EQ(VlxCancelPrint(noUser), VL_E_USER_NOT_INIT);
  VlxAPIClosedown(noUser);
}

TEST_F(PrintToFax, MissingOutputIsNotCompleteAndAFreeOneIs) {
  int32_t complete = 7;
  EXPECT_EQ(VlxIsPrintComplete(handle_, output_.c_str(), &complete), VL_OK);
  EXPECT_EQ(complete, 0);
  vltest::WriteFile(output_, "II*");
  EXPECT_EQ(VlxIsPrintComplete(handle_, output_.c_str(), &complete), VL_OK);
  EXPECT_EQ(complete, 1);
  EXPECT_EQ(vltest::TraceLines(scratch_),
            (Texts(2, "S=00000000  VlxIsPrintComplete - FileName = " + output_)))
      << "no success line";
}

TEST_F(PrintToFax, OutputHeldByTheDriverIsNotCompleteUntilReleased) {
#ifdef _WIN32
  vltest::WriteFile(output_, "II*");
  vltest::FileHolder driver(output_, "ab");
  ASSERT_TRUE(driver.opened());
  para::OpenShared(1, nullptr, "");
  int32_t complete = 7;
  EXPECT_EQ(VlxIsPrintComplete(handle_, output_.c_str(), &complete), VL_OK);
  EXPECT_EQ(complete, 0);
  driver.Release();
  EXPECT_EQ(VlxIsPrintComplete(handle_, output_.c_str(), &complete), VL_OK);
  EXPECT_EQ(complete, 1);
  para::OpenShared(5, nullptr, "");
#else
  GTEST_SKIP() << kNoSharing;
#endif
}

TEST_F(PrintToFax, StartRemovesStaleOutputAndSetsTheValueCancelClearsItBothNeedTheKey) {
#ifdef _WIN32
  CreateKey();
  vltest::WriteFile(output_, "stale");
  EXPECT_EQ(VlxStartPrint(handle_, output_.c_str()), VL_OK);
  EXPECT_FALSE(vltest::FileExists(output_));
  EXPECT_EQ(PrintValue(), output_);
  EXPECT_EQ(VlxStartPrint(handle_, output_.c_str()), VL_OK) << "no output yet is fine";
  EXPECT_EQ(VlxCancelPrint(handle_), VL_OK);
  EXPECT_EQ(PrintValue(), "");
  // Without the key both calls fail; the reason is traced, not reported.
  ASSERT_EQ(RegDeleteKeyA(HKEY_CURRENT_USER, kKey), ERROR_SUCCESS);
  EXPECT_EQ(VlxStartPrint(handle_, output_.c_str()), VL_E_REGISTRY_ERROR);
  EXPECT_EQ(VlxCancelPrint(handle_), VL_E_REGISTRY_ERROR);
  const std::string session = vltest::SessionField(handle_);
  const std::string start = "S=00000000  VlxStartPrint - FileName = " + output_,
                    cancel = "S=00000000  VlxCancelPrint",
                    open = session + "Can't open registry key '" + kKey +
                           "\\' under HKCU for writing - ErrorCode = 2";
  EXPECT_EQ(vltest::TraceLines(scratch_), (Texts{start, start, cancel, start, open, cancel, open}));
  EXPECT_TRUE(vltest::Reported::Texts().empty());
  CreateKey();
#else
  GTEST_SKIP() << kNoRegistry;
#endif
}

}  // namespace
