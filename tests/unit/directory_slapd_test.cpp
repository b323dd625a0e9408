// Fax server discovery against a real directory: the private slapd that the
// ctest fixture starts (tests/directory), asked through the system's own
// directory services. "GC:" does not bind under Wine, so every lookup here
// also goes through the fallback to the default domain.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
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
    std::string all = vltest::Contents(stream_.get()), line;
    for (char c : all) {
      if (c != '\n') {
        line += c;
        continue;
      }
      size_t level = line.find('(');
      lines.push_back(line.substr(level, 3) + " " + line.substr(level + 6));
      line.clear();
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
    std::string skip = ReadOr(std::string(dir) + "\\skip");
    if (!skip.empty()) GTEST_SKIP() << skip;
    std::string port = ReadOr(std::string(dir) + "\\port");
    ASSERT_FALSE(port.empty()) << "the slapd fixture left no port in " << dir;
    os::fault::PinDirectoryServer("127.0.0.1:" + port.substr(0, port.find('\n')));
    silentPort_ = ReadOr(std::string(dir) + "\\silent-port");
  }
  void TearDown() override {
    vl::directory::SetLookupDeadlineForTests(0);
    os::fault::PinDirectoryServer("");
    vl::ClearExplicitAreas();
  }
  static std::string ReadOr(const std::string& path) {
    FILE* file = std::fopen(path.c_str(), "rb");
    if (!file) return "";
    char text[512] = {};
    size_t n = std::fread(text, 1, sizeof text - 1, file);
    std::fclose(file);
    return std::string(text, n);
  }
  std::string silentPort_;
};

// What every lookup logs before it searches, named after its operation.
std::vector<std::string> FallbackLines(const char* operation) {
  return {"(.) VLADInfo::GetGCSearchPtr()",
          "(W) VLADInfo::GetGCSearchPtr() - Unable to AdsOpenObject on GC (80004005)",
          std::string("(-) ") + operation + " - Failed to get GC Search Pointer (80004005)",
          std::string("(-) ") + operation + " - Result from getting default domain search pointer (0)",
          std::string("(.) ") + operation + " - Return from ExecuteSearch (0)"};
}

TEST_F(DirectorySlapdTest, ServersAreListedInDirectoryOrderAndAListThatDoesNotFitIsAnError) {
  LoggedLines log;
  const char kList[] = "FAXEAST,FAXWEST,FAXNORTH";  // the stray point has no computer
  char buffer[64];
  ASSERT_EQ(vl::GetServersFromDirectory(buffer, sizeof kList, 0), VL_OK);
  EXPECT_STREQ(buffer, kList);
  EXPECT_EQ(log.Lines(), FallbackLines("GetVelomarServersFromAD"));
  std::strcpy(buffer, "untouched");
  EXPECT_EQ(vl::GetServersFromDirectory(buffer, sizeof kList - 1, 0), VL_E_AD_ERROR);
  EXPECT_STREQ(buffer, "untouched");
}

TEST_F(DirectorySlapdTest, AServerWithAreaKeysOnlyHasEmptyListsAndLogsTheSevenMissingSettings) {
  LoggedLines log;
  vl::directory::ServerAreas areas;
  vl::directory::ServerLists lists;
  ASSERT_EQ(vl::GetServerInfoFromDirectory("faxeast", &areas, &lists), VL_OK);
  EXPECT_EQ(areas.server, "\\\\FAXEAST\\VELOMAR\\SERVER");
  EXPECT_EQ(areas.allUser, "\\\\FAXEAST\\VELOMAR\\USERS");
  EXPECT_EQ(lists.coversheets + lists.profiles + lists.useDefault, "");

  std::vector<std::string> expected = {"(.) VLServerADInfo::GetVLServerParams"};
  for (const std::string& line : FallbackLines("VLServerADInfo::GetVLServerParams"))
    expected.push_back(line);
  expected.push_back("(.) VLServerADInfo::GetVLServerParams - Found match for faxeast");
  for (const char* name : {"hrcov", "hrlet", "hrprofiles", "hrdeflet", "hrdefcov", "hrformat",
                           "hrusedefault"})
    expected.push_back(std::string("(-) Failed in getting one of the AD props from "
                                   "serviceBindingInformation of faxeast (") +
                       name + " = 8000500d)");
  expected.push_back("(.) VLServerADInfo::GetVLServerParamsEx() -  Returning (1)");
  EXPECT_EQ(log.Lines(), expected);
}

TEST_F(DirectorySlapdTest, AServerWithListsHandsThemAllOut) {
  vl::directory::ServerAreas areas;
  vl::directory::ServerLists lists;
  ASSERT_EQ(vl::GetServerInfoFromDirectory("FAXWEST", &areas, &lists), VL_OK);
  EXPECT_EQ(areas.request, "REQUEST");
  const std::vector<std::string> got = {lists.coversheets,       lists.letterheads,
                                        lists.profiles,          lists.defaultLetterhead,
                                        lists.defaultCoversheet, lists.defaultFormat,
                                        lists.useDefault};
  EXPECT_EQ(got, (std::vector<std::string>{"Standard,Urgent", "Plain", "Sales", "Plain",
                                            "Standard", "3", "1"}));
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

TEST_F(DirectorySlapdTest, ListsAreWrittenWhereTheDirectoryAllowsIt) {
  // Wine's directory provider writes nothing (E_NOTIMPL): the lookup still
  // reaches every server's object and reports the refusal for each.
  LoggedLines log;
  os::ads::Apartment apartment;
  vl::directory::VLServerADInfo info("FAXWEST");
  os::ads::Result hr = info.SetVLServerLists("Standard", "", "Sales");
  std::vector<std::string> lines = log.Lines();
  if (hr == os::ads::kNotImplemented) {
    EXPECT_EQ(std::vector<std::string>(lines.end() - 4, lines.end()),
              (std::vector<std::string>{
                  "(-) Set on profileslist is not empty and chr255 FAXEAST (80004001)",
                  "(-) Set on profileslist is not empty and chr255 FAXWEST (80004001)",
                  "(.) Placing in current server if chr255 (80004001)",
                  "(-) Set on profileslist is not empty and chr255 FAXNORTH (80004001)"}));
    GTEST_SKIP() << "the directory provider cannot write (Wine): the refusal is reported";
  }
  EXPECT_EQ(hr, os::ads::kOk);
}

}  // namespace
