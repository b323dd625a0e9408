// The directory getters, the explicit areas, the version and the escapes.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "api/config.h"
#include "api/process_state.h"
#include "api/vlapi_internal.h"
#include "tests/support/test_support.h"
#include "tests/support/user_fixture.h"
#include "vlapi.h"

namespace {

using vltest::Reported;

using Getter = VLRESULT(VLAPI_CALL*)(VLHANDLE, char*, int16_t);
using DirectoryGetters = vltest::JsmithTest;

// Each getter needs room for its text and the NUL, and leaves the buffer
// alone when it is short; the unexported area getters then append a
// backslash that they do not count.
TEST_F(DirectoryGetters, CopyTheirTextWhenItFitsBufLen) {
  const VLHANDLE noUser = vltest::LogOn(nullptr);  // the areas need no user
  const struct { Getter get; VLHANDLE handle; std::string text; const char* extra; } getters[] = {
      {&VlxGetUserOutDir, handle_, Out(), ""},
      {&VlxGetUserInDir, handle_, In(), ""},
      {&VlxGetUserArea, handle_, tree_.Users() + "JSMITH\\", ""},
      {&VlxGetSystemArea, noUser, tree_.System(), ""},
      {&VlxGetServerArea, noUser, tree_.Server(), "\\"},
      {&VlxGetRequestArea, noUser, tree_.Request(), "\\"},
      {&VlxGetUsersArea, noUser, tree_.Users(), "\\"},
  };
  for (const auto& g : getters) {
    const auto length = static_cast<int16_t>(g.text.size());
    char buffer[400];
    std::memset(buffer, '#', sizeof buffer);
    for (int16_t tooSmall : {length, int16_t{0}, int16_t{-1}})
      EXPECT_EQ(g.get(g.handle, buffer, tooSmall), VL_E_BUFFER_TOO_SMALL) << g.text << tooSmall;
    EXPECT_EQ(buffer[0], '#') << g.text;
    ASSERT_EQ(g.get(g.handle, buffer, static_cast<int16_t>(length + 1)), VL_OK) << g.text;
    EXPECT_EQ(std::string(buffer), g.text + g.extra);
    Reported::Clear();
    EXPECT_EQ(g.get(g.handle, nullptr, 300), VL_E_INVALID_PARAM) << g.text;
    EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: buffer is NULL");
  }
  VlxAPIClosedown(noUser);
}

TEST(ExplicitAreas, KeepTheirLengthsEndInABackslashAndEmptyTheSelectedServer) {
  const std::string wide(300, 'W'), narrow(70, 'n');
  ASSERT_EQ(vl::SetSelectedServerName("FAXSRV"), VL_OK);
  ASSERT_EQ(vl::SetAreas(wide.c_str(), "C:\\SYS", narrow.c_str(), "R:\\REQ\\"), VL_OK);
  char server[261], system[261], user[261], request[261];
  ASSERT_EQ(vl::GetAreas(server, system, user, request), VL_OK);
  EXPECT_EQ(std::string(server), std::string(255, 'W') + "\\");
  EXPECT_EQ(std::string(system), "C:\\SYS\\");
  EXPECT_EQ(std::string(user), std::string(63, 'n') + "\\");
  EXPECT_EQ(std::string(request), "R:\\REQ\\");  // no second backslash
  char name[16] = "junk";
  EXPECT_EQ(vl::GetSelectedServerName(name, sizeof name), VL_OK);
  EXPECT_STREQ(name, "");
  ASSERT_EQ(vl::SetSelectedServerName("FAXSRV"), VL_OK);
  EXPECT_EQ(vl::GetSelectedServerName(name, 6), VL_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(vl::GetSelectedServerName(name, 7), VL_OK);
  EXPECT_STREQ(name, "FAXSRV");
  // Missing arguments are refused.
  EXPECT_EQ(vl::SetAreas(nullptr, "S", "U", "R"), VL_E_INVALID_PARAM);
  EXPECT_EQ(vl::SetAreas("A", "S", "U", nullptr), VL_E_INVALID_PARAM);
  EXPECT_EQ(vl::GetAreas(server, system, nullptr, request), VL_E_INVALID_PARAM);
  EXPECT_EQ(vl::GetSelectedServerName(nullptr, 10), VL_E_INVALID_PARAM);
}

TEST(Version, TextAndNumber) {
  char text[16];
  std::memset(text, '#', sizeof text);
  uint16_t number = 0;
  EXPECT_EQ(VlxGetAPIVersion(text, 9, &number), VL_E_BUFFER_TOO_SMALL);
  EXPECT_EQ(text[0], '#');
  EXPECT_EQ(VlxGetAPIVersion(text, 10, &number), VL_OK);
  EXPECT_STREQ(text, "16.1.1002");
  EXPECT_EQ(number, 0x0600);
  EXPECT_EQ(VlxGetAPIVersion(nullptr, 0, nullptr), VL_OK);
}

// DISABLECHECKSERVER is ServerCheckTest's and TRACE is Trace's: each shows its switch at work.
TEST(Escape, SetsTheProcessSwitches) {
  vl::ProcessState& p = vl::Process();
  const struct { const char* name; int32_t value; const int32_t* field; int32_t want; } cases[] = {
      {"Application", 13398, &p.applicationId, 13398},
      {"ENABLESENTITEMS", 2, &p.sentItemsMode, 0},
      {"enablesentitems", 1, &p.sentItemsMode, 1},
      {"DELETEFAILEDFAXES", 2, &p.deleteFailedFaxes, 1},
      {"DELETEFAILEDFAXES", -3, &p.deleteFailedFaxes, -3},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(VlxEscape(0x9999, c.name, c.value), VL_OK) << c.name;
    EXPECT_EQ(*c.field, c.want) << c.name << " " << c.value;
  }
  for (const char* unknown : {"TRACEX", "", static_cast<const char*>(nullptr)})
    EXPECT_EQ(VlxEscape(0, unknown, 1), VL_E_INVALID_PARAM);
}

}  // namespace
