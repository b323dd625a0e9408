// The directory lookups over arbitrary directory answers: distinguished
// names and binding values of any bytes and length and any server name,
// through a stand-in for the directory services.
// Input: one byte (not used), server name line, then rows of
// "distinguished name" line + binding value lines, rows split by "====".
#include <cstring>
#include <string>
#include <vector>

#include "api/config.h"
#include "directory/directory_api.h"
#include "directory/distinguished_name.h"
#include "platform/directory_service.h"
#include "platform/fault.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

class AnswerSearch : public os::ads::Search {
 public:
  explicit AnswerSearch(const std::vector<os::ads::Row>& rows) : rows_(rows) {}
  os::ads::Result Execute(const std::string&, const std::vector<std::string>&,
                          std::vector<os::ads::Row>* rows) override {
    *rows = rows_;
    return os::ads::kOk;
  }

 private:
  const std::vector<os::ads::Row>& rows_;
};

// The global catalogue answers with the fuzzer's rows.
class Answers : public os::ads::Provider {
 public:
  std::vector<os::ads::Row> rows;
  bool Load() override { return true; }
  os::ads::Result OpenGlobalCatalog(std::unique_ptr<os::ads::Search>* search,
                                    os::ads::CatalogStep*) override {
    search->reset(new AnswerSearch(rows));
    return os::ads::kOk;
  }
  os::ads::Result ReadAttribute(const std::string&, const std::string&, std::string*) override {
    return os::ads::kFail;
  }
  os::ads::Result OpenSearch(const std::string&, std::unique_ptr<os::ads::Search>*) override {
    return os::ads::kFail;
  }
  os::ads::Result ReplaceValues(const std::string&, const std::string&,
                                const std::vector<std::string>&) override {
    return os::ads::kOk;
  }
};

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines(1);
  for (char c : text) {
    if (c == '\n')
      lines.emplace_back();
    else
      lines.back().push_back(c);
  }
  return lines;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vlfuzz::ResetProcess();
  static Answers answers;
  os::fault::UseDirectory(&answers);
  vl::ClearExplicitAreas();
  if (size < 1) return 0;
  const std::vector<std::string> sections = vlfuzz::Sections(data + 1, size - 1, 8);
  const std::vector<std::string> head = Lines(sections[0]);
  answers.rows.clear();
  for (size_t i = 1; i < sections.size(); ++i) {
    std::vector<std::string> lines = Lines(sections[i]);
    os::ads::Row row;
    row.columns.push_back({"distinguishedName", {lines[0]}});
    row.columns.push_back({"serviceBindingInformation", {lines.begin() + 1, lines.end()}});
    answers.rows.push_back(std::move(row));
  }

  // The lookups' own parts, on this thread so that the fuzzer sees them.
  vl::directory::VLADInfo ad;
  std::vector<os::ads::Row> rows;
  vl::directory::FindServerObjects(&ad, "fuzz", false, &rows);
  size_t listed = 0;
  for (const os::ads::Row& row : rows) {
    std::string computer;
    if (vl::directory::ComputerOf(row.Values("distinguishedName")->front(), &computer))
      listed += computer.size() + 1;
  }
  vlfuzz::Require(listed <= answers.rows.size() * (size + 1), "names come from the rows");
  vl::directory::ServerAreas areas;
  vl::directory::ServerLists lists;
  vl::directory::VLServerADInfo(head[0]).GetVLServerParamsEx(&areas, &lists);
  vl::SelectServerAreas(areas.server.c_str(), areas.system.c_str(), areas.user.c_str(),
                        areas.request.c_str(), head[0].c_str());
  char server[261], system[261], user[261], request[261];
  vl::GetAreas(server, system, user, request);
  vlfuzz::Require(std::strlen(server) <= 256 && std::strlen(request) <= 256, "areas cut to 256");
  os::fault::UseDirectory(nullptr);
  return 0;
}
