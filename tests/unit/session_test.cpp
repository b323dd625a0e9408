// Opening and closing sessions: user names, account names, the user's
// directories, the user lock and handle resolution.
#include <gtest/gtest.h>

#include "api/vlapi_internal.h"
#include "tests/support/file_holder.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Texts = std::vector<std::string>;
using Getter = VLRESULT(VLAPI_CALL*)(VLHANDLE, char*, int16_t);

class SessionTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.UseAsExplicitAreas();
    tree_.AddUser("JSMITH");
    Reported::Clear();
  }
  // Opens a session; the handle stays 0 on failure.
  VLRESULT Init(const char* user, uint16_t lock = 0) {
    handle_ = 0;
    return VlxAPIInit(&handle_, user, lock, &Reported::Callback);
  }
  // Each user logs on with its result code; then its out directory is the
  // text, or on failure the text is the one report and no handle is given.
  struct LogOn { const char* user; VLRESULT rc; std::string text; };
  void ExpectLogOns(std::initializer_list<LogOn> logOns) {
    for (const LogOn& l : logOns) {
      Reported::Clear();
      EXPECT_EQ(Init(l.user), l.rc) << l.user << " " << Reported::Last();
      if (l.rc != VL_OK) {
        EXPECT_EQ(handle_, 0u) << l.user;
        EXPECT_EQ(Reported::Texts(), Texts{l.text}) << l.user;
        continue;
      }
      char text[300] = "junk";
      EXPECT_EQ(VlxGetUserOutDir(handle_, text, sizeof text), VL_OK) << l.user;
      EXPECT_EQ(text, l.text) << l.user;
      EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK) << l.user;
    }
  }

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  VLHANDLE handle_ = 0;
  const std::string lock_ = tree_.Users() + "JSMITH\\V-DB\\VELOMAR.LOK";
};

TEST_F(SessionTest, UserNamesAreCheckedAndUpperCased) {
  vltest::MakeDirectories(tree_.Users() + "@FAX\\V-DB");  // a group needs no out directory
  const std::string characters = "Invalid characters in user name";
  ExpectLogOns({{"jsmith", VL_OK, tree_.Users() + "JSMITH\\V-OUT\\"},
                {"@fax", VL_OK, tree_.Users() + "@FAX\\V-OUT\\"},
                {"AB CD", VL_E_INVALID_PARAM, characters},
                {"x@y", VL_E_INVALID_PARAM, characters},
                {"NINECHARS", VL_E_INVALID_PARAM, "Invalid Velomar user name 'NINECHARS'"}});
}

TEST_F(SessionTest, AccountNamesResolveThroughTheUserList) {
  ExpectLogOns({{"DOMAIN\\jsmith", VL_E_FILE_ERROR,
                 "Unable to open file '" + tree_.System() + "V-DB\\USERLIST.INI'"}});
  tree_.AddUser("JS");
  tree_.AddUser("@SALES");
  vltest::WriteFile(tree_.System() + "V-DB\\USERLIST.INI",
                    vltest::Lines({"[VELOMAR]", "Type: UserList", "", "[USER]", "Name: NOBODY", "",
                                   "[USER]", "Username: JSMITH", "", "[USERS]", "Username: jsmith",
                                   "Name: WRONG", "", "[USER]", "Username: jsmith", "Name: JS", "",
                                   "[GROUP]", "Comment: none", "", "[GROUP]", "Name: @Sales"}));
  vltest::TraceInto(scratch_);
  ExpectLogOns({{"DOMAIN\\jsmith", VL_OK, tree_.Users() + "JS\\V-OUT\\"},
                {"OTHER\\@SALES", VL_OK, tree_.Users() + "@SALES\\V-OUT\\"}});
  Texts traced;
  for (const std::string& line : vltest::TraceLines(scratch_))
    if (line.find("missing") != std::string::npos) traced.push_back(line.substr(12));
  EXPECT_EQ(traced, (Texts{"'[USER]' paragraph found missing 'Username:' field - ignore",
                           "User paragraph found missing 'Name:' field - ignore",
                           "'[USER]' paragraph found missing 'Username:' field - ignore",
                           "'[GROUP]' paragraph found missing 'Name:' field - ignore"}));
  ExpectLogOns({{"DOMAIN\\nobody", VL_E_INVALID_USER,
                 "No Velomar user name found for user 'DOMAIN\\nobody'"},
                {"DOMAIN\\", VL_E_INVALID_PARAM, "Invalid user name 'DOMAIN\\'"}});
}

TEST_F(SessionTest, MissingUserDirectoriesMakeAnInvalidUser) {
  const std::string user = tree_.Users() + "JSMITH";
  vltest::RemoveTree(user);
  EXPECT_EQ(Init("JSMITH"), VL_E_INVALID_USER);
  EXPECT_EQ(Reported::Last().rfind("Error accessing " + user + ": ", 0), 0u) << Reported::Last();
  vltest::MakeDirectories(user);
  EXPECT_EQ(Init("JSMITH"), VL_E_INVALID_USER);
  EXPECT_EQ(Reported::Last().rfind("Error accessing " + user + "\\V-DB: ", 0), 0u);
  vltest::MakeDirectories(user + "\\V-DB");
  vltest::WriteFile(user + "\\V-OUT", "not a directory");
  EXPECT_EQ(Init("JSMITH"), VL_E_FILE_ERROR);
  EXPECT_EQ(Reported::Last(), "Directory expected, file found: " + user + "\\V-OUT");
}

// The area getters that need no user are directories_test's.
TEST_F(SessionTest, SessionWithoutUserRefusesTheUsersDirectories) {
  ASSERT_EQ(Init(""), VL_OK);
  char text[300];
  for (Getter get : {VlxGetUserOutDir, VlxGetUserInDir, VlxGetUserArea})
    EXPECT_EQ(get(handle_, text, sizeof text), VL_E_USER_NOT_INIT);
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);
  EXPECT_TRUE(Reported::Texts().empty());
}

TEST_F(SessionTest, TheUserLockKeepsOutEveryOtherOpenerUntilItsSessionCloses) {
#ifndef _WIN32
  GTEST_SKIP() << "the user lock rests on Windows sharing modes, which this platform lacks";
#else
  ASSERT_EQ(Init("JSMITH", 1), VL_OK);
  const VLHANDLE first = handle_;
  EXPECT_TRUE(vltest::FileExists(lock_));
  EXPECT_EQ(vltest::ReadFile(lock_), "");
  EXPECT_EQ(Init("JSMITH", 1), VL_E_CANNOT_LOG_ON);
  EXPECT_EQ(Reported::Last(), "User already logged on - cannot open " + lock_);
  EXPECT_EQ(handle_, 0u);
  EXPECT_FALSE(vltest::FileHolder(lock_, "rb").opened()) << "not even a reader of another process";
  ASSERT_EQ(Init("JSMITH", 0), VL_OK) << "without the lock flag";
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);
  EXPECT_EQ(VlxAPIClosedown(first), VL_OK);
  EXPECT_TRUE(vltest::FileHolder(lock_, "rb").opened()) << "released by the close";
  {
    vltest::FileHolder other(lock_, "r+b");
    ASSERT_TRUE(other.opened());
    Reported::Clear();
    EXPECT_EQ(Init("JSMITH", 1), VL_E_CANNOT_LOG_ON) << "held by another process";
    EXPECT_EQ(Reported::Last(), "User already logged on - cannot open " + lock_);
  }
  ASSERT_EQ(Init("JSMITH", 1), VL_OK);
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);
#endif
}

TEST_F(SessionTest, HandlesOfNoLiveSessionAndANullHandlePlaceAreRefused) {
  ASSERT_EQ(Init("JSMITH"), VL_OK);
  const VLHANDLE closed = handle_;
  ASSERT_EQ(VlxAPIClosedown(closed), VL_OK);
  ASSERT_EQ(Init("JSMITH"), VL_OK);
  EXPECT_NE(handle_, closed) << "handle values are not reused";
  char text[300];
  for (VLHANDLE bad : {VLHANDLE{0}, closed, handle_ + 1}) {
    EXPECT_EQ(VlxAPIClosedown(bad), VL_E_NOT_INIT) << bad;
    for (Getter get : {VlxGetUserOutDir, VlxGetUserInDir, VlxGetUserArea, VlxGetSystemArea,
                       VlxGetServerArea})
      EXPECT_EQ(get(bad, text, sizeof text), VL_E_NOT_INIT) << bad;
    EXPECT_EQ(VlxCreateAutoFile(bad, "FAXA", "TIF", scratch_.Dir().c_str(), text), VL_E_NOT_INIT)
        << bad;
  }
  EXPECT_TRUE(Reported::Texts().empty());
  EXPECT_EQ(VlxAPIClosedown(handle_), VL_OK);
  // Nor is a null place for the handle.
  EXPECT_EQ(VlxAPIInit(nullptr, "JSMITH", 0, &Reported::Callback), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Invalid parameter supplied to API: handle is NULL");
  EXPECT_EQ(VlxAPIInit(nullptr, "JSMITH", 0, nullptr), VL_E_INVALID_PARAM) << "no callback";
}

}  // namespace
