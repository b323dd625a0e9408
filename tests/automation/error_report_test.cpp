// The descriptions of automation errors: the result code's text, else the
// HRESULT's, else the two fallback forms; and the record a failure leaves.
#include <gtest/gtest.h>

#include <string>

#include "automation/error_report.h"
#include "tests/automation/automation_test_support.h"
#include "vllib.h"

namespace {

TEST(ErrorReport, DescribesTheCodeElseTheResultElseAFallback) {
  const struct {
    uint32_t hr;
    uint16_t code;
    const char* text;
  } cases[] = {
      {0x8004F730, 0, "The collection is full"},
      {0x8004F704, 0, "This user account is invalid "},
      {0x80004005, 0xF70C, "Velomar Server is not currently running "},
      {0x8004F7FF, 0, "IDispatch error #62975"},
      {0x8004FE00, 0, "Unknown error 0x8004FE00"},
  };
  for (const auto& c : cases) {
    char text[512];
    vlauto::DescribeError(static_cast<HRESULT>(c.hr), c.code, text);
    EXPECT_STREQ(text, c.text) << std::hex << c.hr;
  }
}

TEST(ErrorReport, AFailureBecomesTheThreadsErrorInformation) {
  EXPECT_EQ(vlauto::ReportResult(static_cast<VLRESULT>(0xF730), __uuidof(IVlRecipients),
                                 "IVlRecipients::AddFaxRecipient()"),
            static_cast<HRESULT>(0x8004F730));
  GUID iid = {};
  EXPECT_EQ(vltest::ErrorRecord(&iid), L"IVlRecipients::AddFaxRecipient(): The collection is full");
  EXPECT_TRUE(IsEqualGUID(iid, __uuidof(IVlRecipients)));
  EXPECT_EQ(vlauto::ReportResult(0, __uuidof(IVlRecipients), "unused"), S_OK);
}

}  // namespace
