// The process-wide explicit areas that replace the configuration file.
#include <gtest/gtest.h>

#include <string>

#include "api/config.h"
#include "vlapi.h"

namespace {

TEST(ExplicitAreas, KeepTheirLengthsAndEndInABackslash) {
  const std::string wide(300, 'W');
  const std::string narrow(70, 'n');
  ASSERT_EQ(vl::SetSelectedServerName("FAXSRV"), VL_OK);
  ASSERT_EQ(vl::SetAreas(wide.c_str(), "C:\\SYS", narrow.c_str(), "R:\\REQ\\"), VL_OK);
  char server[261], system[261], user[261], request[261];
  ASSERT_EQ(vl::GetAreas(server, system, user, request), VL_OK);
  EXPECT_EQ(std::string(server), std::string(255, 'W') + "\\");
  EXPECT_EQ(std::string(system), "C:\\SYS\\");
  EXPECT_EQ(std::string(user), std::string(63, 'n') + "\\");
  EXPECT_EQ(std::string(request), "R:\\REQ\\");  // no second backslash

  // Setting the areas empties the selected server name.
  char name[16] = "junk";
  EXPECT_EQ(vl::GetSelectedServerName(name, sizeof name), VL_OK);
  EXPECT_STREQ(name, "");
  ASSERT_EQ(vl::SetSelectedServerName("FAXSRV"), VL_OK);
  EXPECT_EQ(vl::GetSelectedServerName(name, 6), VL_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(vl::GetSelectedServerName(name, 7), VL_OK);
  EXPECT_STREQ(name, "FAXSRV");
}

TEST(ExplicitAreas, MissingArgumentsAreRefused) {
  char buffer[261];
  EXPECT_EQ(vl::SetAreas(nullptr, "S", "U", "R"), VL_E_INVALID_PARAM);
  EXPECT_EQ(vl::SetAreas("A", "S", "U", nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(vl::GetAreas(buffer, buffer, nullptr, buffer), VL_E_INVALID_PARAM);
  EXPECT_EQ(vl::GetSelectedServerName(nullptr, 10), VL_E_INVALID_PARAM);
}

}  // namespace
