// The descriptions of automation errors: the result code's text, else the
// HRESULT's, else the two fallback forms. The texts of codes an HRESULT
// carries, and the records failures leave, are checked with the objects.
#include <gtest/gtest.h>

#include <string>

#include "automation/error_report.h"
#include "vllib.h"

namespace {

TEST(ErrorReport, DescribesTheCodeElseTheResultElseAFallback) {
  const struct {
    uint32_t hr;
    uint16_t code;
    const char* text;
  } cases[] = {
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

}  // namespace
