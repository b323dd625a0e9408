// Directory lookups over a stand-in for the directory services: the global
// catalogue and its fallback, the production paths of the default-domain
// bind, the lists written back, missing services and hostile values.
#include <gtest/gtest.h>

#include <algorithm>
#include <sstream>
#include <string>
#include <vector>

#include "api/config.h"
#include "directory/directory_api.h"
#include "directory/distinguished_name.h"
#include "lib/log_writer.h"
#include "platform/directory_service.h"
#include "platform/fault.h"
#include "tests/support/test_support.h"

namespace {

using os::ads::Result;
using os::ads::Row;
using Strings = std::vector<std::string>;

const std::string kParams = "VLServerADInfo::GetVLServerParams";

// Rows as a search returns them: distinguished name and binding values.
Row ServerRow(const std::string& dn, Strings binding) {
  return Row{{{"distinguishedname", {dn}}, {"serviceBindingInformation", std::move(binding)}}};
}

struct FakeSearch : os::ads::Search {
  FakeSearch(std::vector<Row> rows, Result result) : rows(std::move(rows)), result(result) {}
  Result Execute(const std::string&, const Strings&, std::vector<Row>* found) override {
    *found = rows;
    return result;
  }
  std::vector<Row> rows;
  Result result;
};

struct FakeDirectory : os::ads::Provider {
  Result catalogResult = os::ads::kFail;
  os::ads::CatalogStep catalogStep = os::ads::CatalogStep::Open;
  bool catalogSearch = true;
  Result searchResult = os::ads::kOk;
  Result replaceResult = os::ads::kOk;
  std::vector<Row> rows;
  Strings calls;  // paths asked for and values written

  bool Load() override { return true; }
  Result OpenGlobalCatalog(std::unique_ptr<os::ads::Search>* search,
                           os::ads::CatalogStep* step) override {
    *step = catalogStep;
    if (catalogResult == os::ads::kOk && catalogSearch)
      search->reset(new FakeSearch(rows, searchResult));
    return catalogResult;
  }
  Result ReadAttribute(const std::string& path, const std::string& name,
                       std::string* value) override {
    calls.push_back(path + " " + name);
    *value = "DC=corp,DC=example";
    return os::ads::kOk;
  }
  Result OpenSearch(const std::string& path, std::unique_ptr<os::ads::Search>* search) override {
    calls.push_back(path);
    search->reset(new FakeSearch(rows, searchResult));
    return os::ads::kOk;
  }
  Result ReplaceValues(const std::string& path, const std::string& attribute,
                       const Strings& values) override {
    std::string call = path + " " + attribute;
    for (const std::string& value : values) call += " [" + value + "]";
    calls.push_back(call);
    return replaceResult;
  }
};

class DirectoryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    directory_.rows = {ServerRow("CN=VelomarServer,CN=FAXEAST,DC=corp",
                                 {"SERVERAREA:S", "SYSTEMAREA:Y", "USERAREA:U", "REQUESTAREA:R"}),
                       ServerRow("CN=VelomarServer,OU=Lost", {}),
                       ServerRow("CN=VelomarServer,CN=FAX\\,WEST",
                                 {"COVLIST:A,B", "LETLIST:\xFF", "PROFILES:P", "DEFLET:L",
                                  "DEFCOV:C", "DEFMSGFORMAT:3", "USEDEFAULT:1"})};
    os::fault::UseDirectory(&directory_);
    vl::LogInit(stream_.get(), nullptr, 0, "VLAPI");
  }
  void TearDown() override {
    os::fault::UseDirectory(nullptr);
    os::fault::Clear();
    vl::ClearExplicitAreas();
    vl::Log() = vl::LogState{};
  }
  // The text of each logged line after its time and level.
  Strings Logged() {
    Strings lines;
    std::istringstream logged(vltest::Contents(stream_.get()));
    for (std::string line; std::getline(logged, line);)
      lines.push_back(line.substr(line.find(") - ") + 4));
    return lines;
  }

  FakeDirectory directory_;
  vl::directory::ServerAreas areas_;  // what a lookup found
  vl::directory::ServerLists lists_;
  os::UniqueFile stream_ = vltest::StreamOf("");
};

TEST(DistinguishedNameTest, TheComputerIsTheCommonNameOfTheSecondElement) {
  const struct { const char* dn; const char* computer; } cases[] = {  // null: no computer
      {"CN=VelomarServer,CN=FAXEAST,OU=Computers,DC=corp", "FAXEAST"},
      {"cn=VelomarServer,cn=faxeast", "faxeast"},
      {"CN=VelomarServer,CN=FAX\\,EAST,DC=corp", "FAX,EAST"},
      {"CN=VelomarServer,CN=FAX\\2cEAST", "FAX,EAST"}, {"CN=VelomarServer,CN=END\\", "END\\"},
      {"CN=VelomarServer,OU=Computers", nullptr}, {"CN=VelomarServer", nullptr}, {",,,", nullptr}};
  for (const auto& c : cases) {
    std::string computer;
    bool found = vl::directory::ComputerOf(c.dn, &computer);
    EXPECT_EQ(found, c.computer != nullptr) << c.dn;
    if (found) {
      EXPECT_EQ(computer, c.computer) << c.dn;
    }
  }
}

TEST_F(DirectoryTest, AWorkingGlobalCatalogueIsSearchedWithoutTheDefaultDomain) {
  directory_.catalogResult = os::ads::kOk;
  char list[32];
  ASSERT_EQ(vl::GetServersFromDirectory(list, sizeof list, 0), VL_OK);
  EXPECT_STREQ(list, "FAXEAST,FAX,WEST");
  EXPECT_TRUE(directory_.calls.empty());
  EXPECT_EQ(Logged(), (Strings{"VLADInfo::GetGCSearchPtr()",
                               "GetVelomarServersFromAD - Return from ExecuteSearch (0)"}));
}

TEST_F(DirectoryTest, AServerWithAreaKeysOnlyHasEmptyListsAndLogsTheSevenMissingSettings) {
  directory_.catalogResult = os::ads::kOk;
  ASSERT_EQ(vl::GetServerInfoFromDirectory("faxeast", &areas_, &lists_), VL_OK);
  EXPECT_EQ(areas_.server + areas_.system + areas_.user + areas_.request, "SYUR");
  EXPECT_EQ(lists_.coversheets + lists_.profiles + lists_.useDefault, "");
  Strings expected = {kParams, "VLADInfo::GetGCSearchPtr()",
                      kParams + " - Return from ExecuteSearch (0)",
                      kParams + " - Found match for faxeast"};
  for (const char* name : {"hrcov", "hrlet", "hrprofiles", "hrdeflet", "hrdefcov", "hrformat",
                           "hrusedefault"})
    expected.push_back(std::string("Failed in getting one of the AD props from "
                                   "serviceBindingInformation of faxeast (") +
                       name + " = 8000500d)");
  expected.push_back(kParams + "Ex() -  Returning (1)");
  EXPECT_EQ(Logged(), expected);
}

TEST_F(DirectoryTest, EachFailingStepOfTheCatalogueBindIsLoggedAndTheDefaultDomainTakesOver) {
  // line: what is logged beyond the fallback, if anything.
  const struct { Result rc; os::ads::CatalogStep step; bool search; const char* line; } cases[] = {
      {os::ads::kFail, os::ads::CatalogStep::Open, true,
       "VLADInfo::GetGCSearchPtr() - Unable to AdsOpenObject on GC (80004005)"},
      {os::ads::kNotImplemented, os::ads::CatalogStep::Enumerator, true,
       "VLADInfo::GetGCSearchPtr() - Failed to ADsBuildEnumerator (80004001)"},
      {os::ads::kFail, os::ads::CatalogStep::Element, true,
       "VLADInfo::GetGCSearchPtr() - Failed to get enum object (80004005)"},
      {os::ads::kOk, os::ads::CatalogStep::Element, false, nullptr}};  // no search interface
  for (const auto& c : cases) {
    directory_.catalogResult = c.rc;
    directory_.catalogStep = c.step;
    directory_.catalogSearch = c.search;
    directory_.calls.clear();
    ASSERT_EQ(vl::GetServerInfoFromDirectory("fax,west", &areas_, &lists_), VL_OK);
    EXPECT_EQ((Strings{lists_.coversheets, lists_.letterheads, lists_.profiles,
                       lists_.defaultLetterhead, lists_.defaultCoversheet, lists_.defaultFormat,
                       lists_.useDefault}),
              (Strings{"A,B", "", "P", "L", "C", "3", "1"}))
        << "the marker is an empty list";
    EXPECT_EQ(directory_.calls,
              (Strings{"LDAP://rootDSE defaultNamingContext", "LDAP://DC=corp,DC=example"}));
  }
  Strings lines = Logged();
  EXPECT_EQ(Strings(lines.end() - 7, lines.end() - 3),
            (Strings{kParams, "VLADInfo::GetGCSearchPtr()",
                     kParams + " - Failed to get GC Search Pointer (80004002)",
                     kParams + " - Result from getting default domain search pointer (0)"}));
  for (const auto& c : cases)
    if (c.line) {
      EXPECT_NE(std::find(lines.begin(), lines.end(), c.line), lines.end()) << c.line;
    }
}

TEST_F(DirectoryTest, FailuresOfTheDirectoryGiveTheirCodes) {
  char list[64];
  EXPECT_EQ(vl::GetServersFromDirectory(nullptr, 64, 0), VL_E_INVALID_PARAM);
  EXPECT_EQ(vl::GetServerInfoFromDirectory(nullptr, &areas_, &lists_), VL_E_INVALID_PARAM);
  EXPECT_EQ(vl::GetServersFromDirectory(list, 16, 0), VL_E_AD_ERROR) << "17 characters do not fit";
  EXPECT_EQ(vl::SetServerFromDirectory("FAX,WEST"), VL_E_AD_VALUE_NOT_SET);
  directory_.searchResult = os::ads::kFail;
  EXPECT_EQ(vl::GetServersFromDirectory(list, sizeof list, 0), VL_E_AD_ERROR);

  os::fault::Inject(os::fault::Op::LoadDirectory, 1, 126, true);
  EXPECT_EQ(vl::GetServersFromDirectory(list, sizeof list, 0), VL_E_AD_NOT_PRESENT);
  EXPECT_EQ(vl::GetServerInfoFromDirectory("FAXEAST", &areas_, &lists_), VL_E_AD_NOT_PRESENT);
  EXPECT_EQ(vl::SetServerFromDirectory("FAXEAST"), VL_E_AD_NOT_PRESENT);
  EXPECT_EQ(vl::SetServerFromDirectory(""), VL_OK) << "clearing needs no directory";
}

TEST_F(DirectoryTest, ValuesOfAnyLengthAndBytesAreCutToTheAreaSize) {
  std::string huge(10000, 'x');
  for (int b = 1; b < 256; ++b) huge[b] = static_cast<char>(b);
  std::string name(5000, 'N');
  directory_.rows = {ServerRow("CN=VelomarServer,CN=" + name,
                               {"SERVERAREA:" + huge, "SYSTEMAREA:" + huge, "USERAREA:" + huge,
                                "REQUESTAREA:" + huge})};
  ASSERT_EQ(vl::SetServerFromDirectory(name.c_str()), VL_OK);
  char server[261], system[261], user[261], request[261];
  ASSERT_EQ(vl::GetAreas(server, system, user, request), VL_OK);
  EXPECT_EQ(std::string(request), huge.substr(0, 256));
  char list[32767];
  directory_.rows = std::vector<Row>(7, directory_.rows[0]);
  EXPECT_EQ(vl::GetServersFromDirectory(list, 32767, 0), VL_E_AD_ERROR) << "35,006 characters";
}

TEST_F(DirectoryTest, ListsAreWrittenIntoEveryServersObjectWithTheOtherSettingsKeptOrRefused) {
  os::ads::Apartment apartment;
  vl::directory::VLServerADInfo info("FAXEAST");
  ASSERT_EQ(info.SetVLServerLists("Standard", "", ""), os::ads::kOk);
  EXPECT_EQ(Strings(directory_.calls.begin() + 2, directory_.calls.end()),
            (Strings{"LDAP://CN=VelomarServer,CN=FAXEAST,DC=corp serviceBindingInformation "
                     "[SERVERAREA:S] [SYSTEMAREA:Y] [USERAREA:U] [REQUESTAREA:R] "
                     "[COVLIST:Standard] [LETLIST:\xFF] [PROFILES:\xFF]",
                     "LDAP://CN=VelomarServer,CN=FAX\\,WEST serviceBindingInformation [DEFLET:L] "
                     "[DEFCOV:C] [DEFMSGFORMAT:3] [USEDEFAULT:1] [COVLIST:Standard] "
                     "[LETLIST:\xFF] [PROFILES:\xFF]"}));
  Strings lines = Logged();
  EXPECT_EQ(Strings(lines.end() - 3, lines.end()),
            (Strings{"Set on profileslist is empty and chr255 FAXEAST (0)",
                     "Placing in current server if chr255 (0)",
                     "Set on profileslist is empty and chr255 FAX,WEST (0)"}));
  // A refusal (Wine's provider writes nothing) is reported for each server and returned.
  directory_.replaceResult = os::ads::kNotImplemented;
  EXPECT_EQ(info.SetVLServerLists("Standard", "", "Sales"), os::ads::kNotImplemented);
  lines = Logged();
  EXPECT_EQ(Strings(lines.end() - 3, lines.end()),
            (Strings{"Set on profileslist is not empty and chr255 FAXEAST (80004001)",
                     "Placing in current server if chr255 (80004001)",
                     "Set on profileslist is not empty and chr255 FAX,WEST (80004001)"}));
}

TEST_F(DirectoryTest, AFaultAtAnyDirectoryCallGivesACode) {
  for (int nth = 1; nth <= 4; ++nth) {
    os::fault::Inject(os::fault::Op::Directory, nth, static_cast<int>(os::ads::kFail), true);
    EXPECT_EQ(vl::SetServerFromDirectory("FAXEAST"), nth <= 3 ? VL_E_AD_ERROR : VL_OK) << nth;
  }
}

}  // namespace
