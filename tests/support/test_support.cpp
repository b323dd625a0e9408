#include "tests/support/test_support.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <functional>
#include <regex>
#include <sstream>

#include "api/config.h"
#include "api/process_state.h"
#include "platform/os.h"
#include "tests/support/message_files.h"

namespace fs = std::filesystem;

namespace vltest {

os::UniqueFile StreamOf(const std::string& bytes) {
  FILE* f = std::tmpfile();
  std::fwrite(bytes.data(), 1, bytes.size(), f);
  std::rewind(f);
  return os::UniqueFile(f);
}

std::string Contents(FILE* stream) {
  std::fflush(stream);
  std::rewind(stream);
  std::string text;
  for (int c; (c = std::fgetc(stream)) != EOF;) text.push_back(static_cast<char>(c));
  return text;
}

std::string Lines(std::initializer_list<const char*> lines) {
  std::string text;
  for (const char* line : lines) text += std::string(line) + "\r\n";
  return text;
}

std::string NativePath(const std::string& path) {
#ifdef _WIN32
  return path;
#else
  std::string p = path;
  for (char& c : p)
    if (c == '\\') c = '/';
  return p;
#endif
}

void WriteFile(const std::string& path, const std::string& bytes) {
  std::ofstream out(NativePath(path), std::ios::binary | std::ios::trunc);
  out.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
  ASSERT_TRUE(out.good()) << "cannot write " << path;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(NativePath(path), std::ios::binary);
  std::ostringstream content;
  content << in.rdbuf();
  return content.str();
}

bool FileExists(const std::string& path) {
  std::error_code ec;
  return fs::exists(NativePath(path), ec);
}

void MakeDirectories(const std::string& path) {
  std::error_code ec;
  fs::create_directories(NativePath(path), ec);
}

void RemoveTree(const std::string& path) {
  std::error_code ec;
  fs::remove_all(NativePath(path), ec);
}

std::vector<std::string> ListDirectory(const std::string& directory) {
  std::vector<std::string> names;
  std::error_code ec;
  for (const auto& entry : fs::directory_iterator(NativePath(directory), ec))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

Scratch::Scratch() {
  const auto* info = ::testing::UnitTest::GetInstance()->current_test_info();
  std::string name = std::string(info->test_suite_name()) + "." + info->name();
  char suffix[16];
  std::snprintf(suffix, sizeof suffix, "vlt%08zx",
                std::hash<std::string>()(name) & static_cast<size_t>(0xFFFFFFFF));
  std::string temp;
  os::TempDirectory(&temp);
  dir_ = temp + suffix + "\\";
  RemoveTree(dir_);
  MakeDirectories(dir_);
}

Scratch::~Scratch() {
  if (!::testing::Test::HasFailure()) RemoveTree(dir_);
}

FaxTree::FaxTree(const Scratch& scratch) : root_(scratch.Dir()) {
  for (const std::string& dir : {Server(), System() + "V-DB\\", Request(), Users()})
    MakeDirectories(dir);
}

void FaxTree::AddUser(const std::string& name) const {
  for (const char* sub : {"V-DB", "V-OUT", "V-IN"}) MakeDirectories(Users() + name + "\\" + sub);
}

void FaxTree::PrepareSender(const std::string& name) const {
  for (const std::string& file : {System() + "V-DB\\USER.INI", Users() + name + "\\V-DB\\USER.INI"})
    WriteFile(file, "[OPTIONS]\r\n");
  WriteFile(Users() + name + "\\V-OUT\\MSGDIR.CTL", ListHeader());
}

void FaxTree::UseAsRelativeAreas() {
  home_ = fs::current_path().string();
  fs::current_path(NativePath(root_));
  root_.clear();
  ASSERT_EQ(vl::SetAreas(Server().c_str(), System().c_str(), Users().c_str(), Request().c_str()),
            VL_OK);
}

FaxTree::~FaxTree() {
  if (!home_.empty()) fs::current_path(home_);
}

void FaxTree::UseAsExplicitAreas() const {
  ASSERT_LE(Users().size(), 63u) << "the users area must keep to 63 characters";
  ASSERT_EQ(vl::SetAreas(Server().c_str(), System().c_str(), Users().c_str(), Request().c_str()),
            VL_OK);
}

std::string FaxTree::ConfigText(const char* paragraph) const {
  return std::string(paragraph) + "\r\nAllUserArea: " + Users() + "\r\nRequestArea: " +
         Request() + "\r\nSystemArea: " + System() + "\r\nServerArea: " + Server() + "\r\n";
}

void VLAPI_CALL Reported::Callback(const char* text) { Texts().push_back(text); }

std::vector<std::string>& Reported::Texts() {
  static std::vector<std::string> texts;
  return texts;
}

void TraceInto(const Scratch& scratch) {
  std::snprintf(vl::Process().apiTempDirectory, sizeof vl::Process().apiTempDirectory, "%s",
                scratch.Dir().c_str());
  vl::Process().traceSwitch = 1;
}

std::string SessionField(VLHANDLE handle) {
  char field[16];
  std::snprintf(field, sizeof field, "S=%.8lx  ", static_cast<unsigned long>(handle));
  return field;
}

std::vector<std::string> TraceLines(const Scratch& scratch) {
  static const std::regex prefix(
      R"(^\d\d-\d\d-\d\d \d\d:\d\d:\d\d  \(P=[0-9a-f]{8},T=[0-9a-f]{8},(S=[0-9a-f]{8})\)  (.*)$)");
  std::vector<std::string> lines;
  std::istringstream log(ReadFile(scratch.Path("VLAPI.LOG")));
  std::string line;
  while (std::getline(log, line)) {
    EXPECT_FALSE(line.empty() || line.back() != '\r') << "trace lines end in CR LF";
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::smatch m;
    if (std::regex_match(line, m, prefix)) lines.push_back(m[1].str() + "  " + m[2].str());
    else ADD_FAILURE() << "malformed trace line: " << line;
  }
  return lines;
}

VLHANDLE LogOn(const char* user, uint16_t lock) {
  VLHANDLE handle = 0;
  EXPECT_EQ(VlxAPIInit(&handle, user, lock, &Reported::Callback), VL_OK) << Reported::Last();
  return handle;
}

}  // namespace vltest
