// Fax server discovery against a real directory: the private slapd that the
// ctest fixture starts (tests/directory), asked through the system's own
// directory services. "GC:" does not bind under Wine, so every lookup here
// also goes through the fallback to the default domain.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <sstream>
#include <string>
#include <vector>

#include "api/config.h"
#include "directory/bounded_lookup.h"
#include "directory/directory_api.h"
#include "lib/log_writer.h"
#include "platform/fault.h"
#include "tests/support/test_support.h"

namespace {

// The lines logged since the test began, each as "(level letter) text".
class LoggedLines {
 public:
  LoggedLines() { vl::LogInit(stream_.get(), nullptr, 0, "VLAPI"); }
  ~LoggedLines() { vl::Log() = vl::LogState{}; }
  std::vector<std::string> Lines() {
    std::vector<std::string> lines;
    std::istringstream logged(vltest::Contents(stream_.get()));
    for (std::string line; std::getline(logged, line);) {
      const size_t level = line.find('(');
      lines.push_back(line.substr(level, 3) + " " + line.substr(level + 6));
    }
    return lines;
  }

 private:
  os::UniqueFile stream_ = vltest::StreamOf("");
};

class DirectorySlapdTest : public ::testing::Test {
 protected:
  void SetUp() override {
    const char* dir = std::getenv("VLAPI_SLAPD_DIR");
    if (!dir) GTEST_SKIP() << "VLAPI_SLAPD_DIR is not set: run through ctest, which starts slapd";
    // A missing file reads as empty.
    std::string skip = vltest::ReadFile(std::string(dir) + "\\skip");
    if (!skip.empty()) GTEST_SKIP() << skip;
    std::string port = vltest::ReadFile(std::string(dir) + "\\port");
    ASSERT_FALSE(port.empty()) << "the slapd fixture left no port in " << dir;
    os::fault::PinDirectoryServer("127.0.0.1:" + port.substr(0, port.find('\n')));
    silentPort_ = vltest::ReadFile(std::string(dir) + "\\silent-port");
  }
  void TearDown() override {
    vl::directory::SetLookupDeadlineForTests(0);
    os::fault::PinDirectoryServer("");
    vl::ClearExplicitAreas();
  }
  std::string silentPort_;
};

TEST_F(DirectorySlapdTest, ServersAreListedInDirectoryOrderAndAListThatDoesNotFitIsAnError) {
  LoggedLines log;
  const char kList[] = "FAXEAST,FAXWEST,FAXNORTH";  // the stray point has no computer
  char buffer[64];
  ASSERT_EQ(vl::GetServersFromDirectory(buffer, sizeof kList, 0), VL_OK);
  EXPECT_STREQ(buffer, kList);
  const std::string op = "GetVelomarServersFromAD";
  EXPECT_EQ(log.Lines(),
            (std::vector<std::string>{
                "(.) VLADInfo::GetGCSearchPtr()",
                "(W) VLADInfo::GetGCSearchPtr() - Unable to AdsOpenObject on GC (80004005)",
                "(-) " + op + " - Failed to get GC Search Pointer (80004005)",
                "(-) " + op + " - Result from getting default domain search pointer (0)",
                "(.) " + op + " - Return from ExecuteSearch (0)"}));
  std::strcpy(buffer, "untouched");
  EXPECT_EQ(vl::GetServersFromDirectory(buffer, sizeof kList - 1, 0), VL_E_AD_ERROR);
  EXPECT_STREQ(buffer, "untouched");
}

TEST_F(DirectorySlapdTest, ASelectedServerGivesEveryLaterSessionItsAreasUntilAnEmptyName) {
  vltest::Scratch scratch;
  vltest::FaxTree tree(scratch);
  tree.AddUser("JSMITH");
  tree.UseAsRelativeAreas();  // the working directory; FAXWEST's areas are relative
  vl::ClearExplicitAreas();

  const struct { const char* name; VLRESULT result; } refused[] = {{nullptr, VL_E_INVALID_PARAM},
                 {"FAXSOUTH", VL_E_AD_ERROR},          // no such server
                 {"FAXNORTH", VL_E_AD_VALUE_NOT_SET}};  // no system area
  for (const auto& c : refused)
    EXPECT_EQ(vl::SetServerFromDirectory(c.name), c.result) << (c.name ? c.name : "null");

  ASSERT_EQ(vl::SetServerFromDirectory("FAXWEST"), VL_OK);
  char server[261], system[261], user[261], request[261];
  ASSERT_EQ(vl::GetAreas(server, system, user, request), VL_OK);
  EXPECT_EQ(std::string(server) + system + user + request, "SERVER\\SYSTEM\\USERS\\REQUEST\\");
  char name[16];
  ASSERT_EQ(vl::GetSelectedServerName(name, sizeof name), VL_OK);
  EXPECT_STREQ(name, "FAXWEST");
  VLHANDLE handle = 0;
  ASSERT_EQ(VlxAPIInit(&handle, "JSMITH", 0, &vltest::Reported::Callback), VL_OK);
  EXPECT_EQ(VlxAPIClosedown(handle), VL_OK);

  ASSERT_EQ(vl::SetServerFromDirectory(""), VL_OK);
  ASSERT_EQ(vl::GetAreas(server, system, user, request), VL_OK);
  EXPECT_STREQ(server, "") << "the configuration file decides again";
}

TEST_F(DirectorySlapdTest, ADirectoryThatNeverAnswersIsAnErrorAtTheDeadline) {
  ASSERT_FALSE(silentPort_.empty()) << "the fixture's silent server did not start";
  os::fault::PinDirectoryServer("127.0.0.1:" + silentPort_);
  vl::directory::SetLookupDeadlineForTests(2);
  char list[64] = "untouched";
  EXPECT_EQ(vl::GetServersFromDirectory(list, sizeof list, 0), VL_E_AD_ERROR);
  EXPECT_STREQ(list, "untouched");
  EXPECT_EQ(vl::SetServerFromDirectory("FAXWEST"), VL_E_AD_ERROR);
}

}  // namespace
