// Opening and closing sessions: user names, account names, the user's
// directories, the user lock and handle resolution.
#include <gtest/gtest.h>

#include "api/vlapi_internal.h"
#include "tests/support/file_holder.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::FaxTree;
using vltest::Reported;
using vltest::Scratch;

class SessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.UseAsExplicitAreas();
    Reported::Clear();
  }

  // Opens a session; the handle stays 0 on failure.
  VLRESULT Init(const char* user, uint16_t lock = 0) {
    handle_ = 0;
    return VlxAPIInit(&handle_, user, lock, &Reported::Callback);
  }

  std::string OutDir(VLHANDLE handle) {
    char text[300] = "junk";
    EXPECT_EQ(VlxGetUserOutDir(handle, text, sizeof text), VL_OK);
    return text;
  }

  Scratch scratch_;
  FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
};

TEST_F(SessionTest, UserNamesAreCheckedAndUpperCased) {
  tree_.AddUser("JSMITH");
  ASSERT_EQ(Init("jsmith"), VL_OK);
  EXPECT_NE(handle_, 0u);
  EXPECT_EQ(OutDir(handle_), tree_.Users() + "JSMITH\\V-OUT\\");
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);

  const struct {
    const char* name;
    const char* report;
  } refused[] = {
      {"AB CD", "Invalid characters in user name"},
      {"a*b", "Invalid characters in user name"},
      {"x@y", "Invalid characters in user name"},
      {"NINECHARS", "Invalid Velomar user name 'NINECHARS'"},
  };
  for (const auto& r : refused) {
    Reported::Clear();
    EXPECT_EQ(Init(r.name), VL_E_INVALID_PARAM) << r.name;
    EXPECT_EQ(handle_, 0u);
    EXPECT_EQ(Reported::Texts(), std::vector<std::string>{r.report}) << r.name;
  }
}

TEST_F(SessionTest, GroupUserNeedsNoOutDirectory) {
  vltest::MakeDirectories(tree_.Users() + "@FAX\\V-DB");
  ASSERT_EQ(Init("@fax"), VL_OK) << Reported::Last();
  EXPECT_EQ(OutDir(handle_), tree_.Users() + "@FAX\\V-OUT\\");
  VlxAPIClosedown(handle_);
}

TEST_F(SessionTest, AccountNamesResolveThroughTheUserList) {
  tree_.AddUser("JS");
  tree_.AddUser("@SALES");
  vltest::WriteFile(tree_.System() + "V-DB\\USERLIST.INI",
                    "[VELOMAR]\r\nType: UserList\r\n\r\n"
                    "[USER]\r\nName: NOBODY\r\n\r\n"
                    "[USER]\r\nUsername: JSMITH\r\n\r\n"
                    "[USERS]\r\nUsername: jsmith\r\nName: WRONG\r\n\r\n"
                    "[USER]\r\nUsername: jsmith\r\nName: JS\r\n\r\n"
                    "[GROUP]\r\nComment: none\r\n\r\n"
                    "[GROUP]\r\nName: @Sales\r\n");
  vltest::TraceInto(scratch_);
  ASSERT_EQ(Init("DOMAIN\\jsmith"), VL_OK) << Reported::Last();
  EXPECT_EQ(OutDir(handle_), tree_.Users() + "JS\\V-OUT\\");
  VlxAPIClosedown(handle_);

  ASSERT_EQ(Init("OTHER\\@SALES"), VL_OK) << Reported::Last();
  EXPECT_EQ(OutDir(handle_), tree_.Users() + "@SALES\\V-OUT\\");
  VlxAPIClosedown(handle_);

  std::vector<std::string> traced;
  for (const std::string& line : vltest::TraceLines(scratch_))
    if (line.find("missing") != std::string::npos) traced.push_back(line.substr(12));
  EXPECT_EQ(traced, (std::vector<std::string>{
                        "'[USER]' paragraph found missing 'Username:' field - ignore",
                        "User paragraph found missing 'Name:' field - ignore",
                        "'[USER]' paragraph found missing 'Username:' field - ignore",
                        "'[GROUP]' paragraph found missing 'Name:' field - ignore"}));

  Reported::Clear();
  EXPECT_EQ(Init("DOMAIN\\nobody"), VL_E_INVALID_USER);
  EXPECT_EQ(Reported::Last(), "No Velomar user name found for user 'DOMAIN\\nobody'");
  EXPECT_EQ(Init("DOMAIN\\"), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid user name 'DOMAIN\\'");
}

TEST_F(SessionTest, MissingUserListIsAFileError) {
  EXPECT_EQ(Init("DOMAIN\\jsmith"), VL_E_FILE_ERROR);
  EXPECT_EQ(Reported::Last(),
            "Unable to open file '" + tree_.System() + "V-DB\\USERLIST.INI'");
}

TEST_F(SessionTest, MissingUserDirectoriesMakeAnInvalidUser) {
  const std::string user = tree_.Users() + "JSMITH";
  EXPECT_EQ(Init("JSMITH"), VL_E_INVALID_USER);
  EXPECT_EQ(Reported::Last().rfind("Error accessing " + user + ": ", 0), 0u) << Reported::Last();

  vltest::MakeDirectories(user);
  EXPECT_EQ(Init("JSMITH"), VL_E_INVALID_USER);
  EXPECT_EQ(Reported::Last().rfind("Error accessing " + user + "\\V-DB: ", 0), 0u);

  vltest::MakeDirectories(user + "\\V-DB");
  vltest::WriteFile(user + "\\V-OUT", "not a directory");
  EXPECT_EQ(Init("JSMITH"), VL_E_FILE_ERROR);
  EXPECT_EQ(Reported::Last(), "Directory expected, file found: " + user + "\\V-OUT");
  EXPECT_EQ(handle_, 0u);
}

TEST_F(SessionTest, SessionWithoutUserServesOnlyUserlessFunctions) {
  for (const char* none : {static_cast<const char*>(nullptr), ""}) {
    ASSERT_EQ(Init(none), VL_OK);
    char text[300];
    EXPECT_EQ(VlxGetUserOutDir(handle_, text, sizeof text), VL_E_USER_NOT_INIT);
    EXPECT_EQ(VlxGetUserInDir(handle_, text, sizeof text), VL_E_USER_NOT_INIT);
    EXPECT_EQ(VlxGetUserArea(handle_, text, sizeof text), VL_E_USER_NOT_INIT);
    EXPECT_EQ(VlxGetSystemArea(handle_, text, sizeof text), VL_OK);
    EXPECT_EQ(text, tree_.System());
    EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);
  }
  EXPECT_TRUE(Reported::Texts().empty());
}

TEST_F(SessionTest, LockedUserCannotLogOnTwice) {
#ifndef _WIN32
  GTEST_SKIP() << "the user lock rests on Windows sharing modes, which this platform lacks";
#endif
  tree_.AddUser("JSMITH");
  const std::string lock = tree_.Users() + "JSMITH\\V-DB\\VELOMAR.LOK";
  ASSERT_EQ(Init("JSMITH", 1), VL_OK);
  const VLHANDLE first = handle_;
  EXPECT_TRUE(vltest::FileExists(lock));
  EXPECT_EQ(vltest::ReadFile(lock), "");

  EXPECT_EQ(Init("JSMITH", 1), VL_E_CANNOT_LOG_ON);
  EXPECT_EQ(Reported::Last(), "User already logged on - cannot open " + lock);
  EXPECT_EQ(handle_, 0u);

  ASSERT_EQ(Init("JSMITH", 0), VL_OK);  // without the lock flag
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);

  EXPECT_EQ(VlxAPIClosedown(first), VL_OK);
  ASSERT_EQ(Init("JSMITH", 1), VL_OK);  // released by the close
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);
}

TEST_F(SessionTest, LockIsSharedWithOtherProcesses) {
#ifndef _WIN32
  GTEST_SKIP() << "the user lock rests on Windows sharing modes, which this platform lacks";
#else
  tree_.AddUser("JSMITH");
  const std::string lock = tree_.Users() + "JSMITH\\V-DB\\VELOMAR.LOK";
  vltest::WriteFile(lock, "");
  {
    vltest::FileHolder other(lock, "r+b");  // another process holds the lock file
    ASSERT_TRUE(other.opened());
    EXPECT_EQ(Init("JSMITH", 1), VL_E_CANNOT_LOG_ON);
    EXPECT_EQ(Reported::Last(), "User already logged on - cannot open " + lock);
  }
  ASSERT_EQ(Init("JSMITH", 1), VL_OK);
  vltest::FileHolder reader(lock, "rb");
  EXPECT_FALSE(reader.opened());  // the session denies every other opener
  reader.Release();
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);
  vltest::FileHolder after(lock, "rb");
  EXPECT_TRUE(after.opened());
#endif
}

TEST_F(SessionTest, HandlesOfNoLiveSessionAreRefused) {
  tree_.AddUser("JSMITH");
  ASSERT_EQ(Init("JSMITH"), VL_OK);
  const VLHANDLE closed = handle_;
  ASSERT_EQ(VlxAPIClosedown(closed), VL_OK);
  ASSERT_EQ(Init("JSMITH"), VL_OK);
  EXPECT_NE(handle_, closed);  // handle values are not reused

  char text[300];
  for (VLHANDLE bad : {VLHANDLE{0}, closed, VLHANDLE{0x12345678}, VLHANDLE{0xFFFFFFFF},
                       handle_ + 1}) {
    EXPECT_EQ(VlxAPIClosedown(bad), VL_E_NOT_INIT) << bad;
    EXPECT_EQ(VlxGetUserOutDir(bad, text, sizeof text), VL_E_NOT_INIT) << bad;
    EXPECT_EQ(VlxGetUserInDir(bad, text, sizeof text), VL_E_NOT_INIT) << bad;
    EXPECT_EQ(VlxGetUserArea(bad, text, sizeof text), VL_E_NOT_INIT) << bad;
    EXPECT_EQ(VlxGetSystemArea(bad, text, sizeof text), VL_E_NOT_INIT) << bad;
    EXPECT_EQ(VlxGetServerArea(bad, text, sizeof text), VL_E_NOT_INIT) << bad;
    EXPECT_EQ(VlxCreateAutoFile(bad, "FAXA", "TIF", scratch_.Dir().c_str(), text),
              VL_E_NOT_INIT)
        << bad;
  }
  EXPECT_TRUE(Reported::Texts().empty());
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);
}

TEST_F(SessionTest, NullHandlePlaceIsRefused) {
  tree_.AddUser("JSMITH");
  EXPECT_EQ(VlxAPIInit(nullptr, "JSMITH", 0, &Reported::Callback), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: handle is NULL");
  EXPECT_EQ(VlxAPIInit(nullptr, "JSMITH", 0, nullptr), VL_E_INVALID_PARAM);  // no callback
}

}  // namespace
