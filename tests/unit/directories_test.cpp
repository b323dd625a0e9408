// The directory getters, the version and the escapes.
#include <gtest/gtest.h>

#include <cstring>

#include "api/process_state.h"
#include "api/vlapi_internal.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::FaxTree;
using vltest::Reported;
using vltest::Scratch;

using Getter = VLRESULT(VLAPI_CALL*)(VLHANDLE, char*, int16_t);

TEST(DirectoryGetters, CopyTheirTextWhenItFitsBufLen) {
  Scratch scratch;
  FaxTree tree(scratch);
  tree.AddUser("JSMITH");
  tree.UseAsExplicitAreas();
  VLHANDLE handle = vltest::LogOn("JSMITH");
  const struct {
    const char* name;
    Getter get;
    std::string text;
  } getters[] = {
      {"VlxGetUserOutDir", &VlxGetUserOutDir, tree.Users() + "JSMITH\\V-OUT\\"},
      {"VlxGetUserInDir", &VlxGetUserInDir, tree.Users() + "JSMITH\\V-IN\\"},
      {"VlxGetUserArea", &VlxGetUserArea, tree.Users() + "JSMITH\\"},
      {"VlxGetSystemArea", &VlxGetSystemArea, tree.System()},
  };
  for (const auto& g : getters) {
    const auto length = static_cast<int16_t>(g.text.size());
    char buffer[400];
    std::memset(buffer, '#', sizeof buffer);
    EXPECT_EQ(g.get(handle, buffer, length), VL_E_BUFFER_TOO_SMALL) << g.name;
    EXPECT_EQ(buffer[0], '#') << g.name;
    EXPECT_EQ(g.get(handle, buffer, 0), VL_E_BUFFER_TOO_SMALL) << g.name;
    EXPECT_EQ(g.get(handle, buffer, -1), VL_E_BUFFER_TOO_SMALL) << g.name;
    ASSERT_EQ(g.get(handle, buffer, static_cast<int16_t>(length + 1)), VL_OK) << g.name;
    EXPECT_EQ(std::string(buffer), g.text) << g.name;
    Reported::Clear();
    EXPECT_EQ(g.get(handle, nullptr, 300), VL_E_INVALID_PARAM) << g.name;
    EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: buffer is NULL");
  }
  VlxAPIClosedown(handle);
}

TEST(DirectoryGetters, UnexportedAreaGettersAppendAnUncountedBackslash) {
  Scratch scratch;
  FaxTree tree(scratch);
  tree.UseAsExplicitAreas();
  VLHANDLE handle = vltest::LogOn(nullptr);  // these need no user
  const struct {
    Getter get;
    std::string area;
  } getters[] = {{&VlxGetServerArea, tree.Server()},
                 {&VlxGetRequestArea, tree.Request()},
                 {&VlxGetUsersArea, tree.Users()}};
  for (const auto& g : getters) {
    const auto length = static_cast<int16_t>(g.area.size());
    char buffer[400];
    EXPECT_EQ(g.get(handle, buffer, length), VL_E_BUFFER_TOO_SMALL) << g.area;
    std::memset(buffer, '#', sizeof buffer);
    ASSERT_EQ(g.get(handle, buffer, static_cast<int16_t>(length + 1)), VL_OK) << g.area;
    EXPECT_EQ(std::string(buffer), g.area + "\\");  // length + 2 bytes written
  }
  VlxAPIClosedown(handle);
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
  number = 0;
  EXPECT_EQ(VlxGetAPIVersion(nullptr, 0, &number), VL_OK);
  EXPECT_EQ(number, 0x0600);
}

TEST(Escape, SetsTheProcessSwitches) {
  vl::ProcessState& p = vl::Process();
  const struct {
    const char* name;
    int32_t value;
    const int32_t* setting;
    int32_t expected;
  } cases[] = {
      {"DISABLECHECKSERVER", 5, &p.checkServerDisabled, 1},
      {"disablecheckserver", 0, &p.checkServerDisabled, 0},
      {"Application", 13398, &p.applicationId, 13398},
      {"ENABLESENTITEMS", 2, &p.sentItemsMode, 0},
      {"ENABLESENTITEMS", 1, &p.sentItemsMode, 1},
      {"DELETEFAILEDFAXES", 7, &p.deleteFailedFaxes, 1},
      {"DELETEFAILEDFAXES", -3, &p.deleteFailedFaxes, -3},
      {"DELETEFAILEDFAXES", 0, &p.deleteFailedFaxes, 0},
      {"trace", 1, &p.traceSwitch, 1},
      {"TRACE", 0, &p.traceSwitch, 0},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(VlxEscape(0x9999, c.name, c.value), VL_OK) << c.name;
    EXPECT_EQ(*c.setting, c.expected) << c.name << " " << c.value;
  }
  EXPECT_EQ(VlxEscape(0, "TRACEX", 1), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxEscape(0, "", 1), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxEscape(0, nullptr, 1), VL_E_INVALID_PARAM);
}

}  // namespace
