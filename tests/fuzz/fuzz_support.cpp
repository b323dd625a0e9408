#include "tests/fuzz/fuzz_support.h"

#include <dirent.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "api/config.h"
#include "api/process_state.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/fault.h"

namespace vlfuzz {
namespace {

std::string Native(std::string path) {
  std::replace(path.begin(), path.end(), '\\', '/');
  return path;
}

void MakeDirectory(const std::string& path) { mkdir(Native(path).c_str(), 0700); }

// Removes every file of a directory but name.
void EmptyDirectory(const std::string& directory, const char* keep) {
  for (const std::string& name : FilesIn(directory))
    if (!keep || name != keep) std::remove(Native(directory + name).c_str());
}

// The directory that holds the tree; removed when the process ends.
const std::string& SandboxDirectory() {
  static const std::string directory = [] {
    // Memory-backed where the machine has it: every run writes files.
    const char* base = access("/dev/shm", W_OK) == 0 ? "/dev/shm" : std::getenv("TMPDIR");
    std::string pattern = std::string(base ? base : "/tmp") + "/vlfuzz.XXXXXX";
    if (!mkdtemp(pattern.data())) Fail("no temporary directory");
    return pattern;
  }();
  return directory;
}

}  // namespace

const Tree& TheTree() {
  static const Tree tree = [] {
    // The areas are relative to the sandbox, which becomes the working
    // directory: paths the library upper-cases resolve on this file system.
    if (chdir(SandboxDirectory().c_str()) != 0) Fail("cannot enter the sandbox");
    Tree made{""};
    for (const std::string& dir :
         {made.Server(), made.System(), made.System() + "V-DB\\", made.System() + "V-COVER\\",
          made.System() + "V-LETTER\\", made.Request(), made.Users(), made.Users() + "JSMITH\\",
          made.Users() + "JSMITH\\V-DB\\", made.Out(), made.In()})
      MakeDirectory(dir);
    // The trace log and the configuration searches stay inside the sandbox.
    setenv("TMPDIR", SandboxDirectory().c_str(), 1);
    setenv("VLAPI_WINDIR", SandboxDirectory().c_str(), 1);
    setenv("VLAPI_APPDATA", SandboxDirectory().c_str(), 1);
    std::atexit([] { std::system(("rm -rf '" + SandboxDirectory() + "'").c_str()); });
    return made;
  }();
  return tree;
}

void ResetProcess() {
  const Tree& tree = TheTree();
  vl::Process() = vl::ProcessState{};
  vl::Process().checkServerDisabled = 1;
  para::SetEightBitText(true);
  para::OpenShared(5, nullptr, nullptr);
  os::fault::Clear();
  vl::SetAreas(tree.Server().c_str(), tree.System().c_str(), tree.Users().c_str(),
               tree.Request().c_str());
  std::remove("VLAPI.LOG");  // the trace log, which a configuration may switch on
  EmptyDirectory(tree.Request(), nullptr);
  EmptyDirectory(tree.Out(), "MSGDIR.CTL");
  EmptyDirectory(tree.In(), "MSGDIR.CTL");
  EmptyDirectory(tree.Users() + "JSMITH\\V-DB\\", nullptr);
}

Session::Session() {
  if (VlxAPIInit(&handle_, "JSMITH", 0, nullptr) != VL_OK) Fail("JSMITH cannot log on");
}

Session::~Session() { VlxAPIClosedown(handle_); }

std::vector<std::string> Sections(const uint8_t* data, size_t size, size_t count) {
  std::vector<std::string> sections(count);
  const std::string input(reinterpret_cast<const char*>(data), size);
  static const std::string kMark = "\n====\n";
  size_t from = 0;
  for (size_t i = 0; i < count; ++i) {
    const size_t mark = i + 1 < count ? input.find(kMark, from) : std::string::npos;
    if (mark == std::string::npos) {
      sections[i] = input.substr(from);
      break;
    }
    sections[i] = input.substr(from, mark - from + 1);  // the line end stays with the section
    from = mark + kMark.size();
  }
  return sections;
}

std::vector<std::string> Fields(const std::string& text) {
  std::vector<std::string> fields(1);
  for (char c : text) {
    if (c == '|') fields.emplace_back();
    else fields.back().push_back(c);
  }
  return fields;
}

std::vector<std::string> Arguments(const std::string& section, size_t count) {
  std::string line = section;
  if (!line.empty() && line.back() == '\n') line.pop_back();
  std::vector<std::string> fields = Fields(line);
  fields.resize(count);
  return fields;
}

void WriteFile(const std::string& path, const std::string& bytes) {
  FILE* file = std::fopen(Native(path).c_str(), "wb");
  if (!file) Fail("cannot write a file of the tree");
  std::fwrite(bytes.data(), 1, bytes.size(), file);
  std::fclose(file);
}

std::string ReadFile(const std::string& path) {
  std::string bytes;
  if (FILE* file = std::fopen(Native(path).c_str(), "rb")) {
    char block[4096];
    size_t got;
    while ((got = std::fread(block, 1, sizeof block, file)) > 0) bytes.append(block, got);
    std::fclose(file);
  }
  return bytes;
}

std::vector<std::string> FilesIn(const std::string& directory) {
  std::vector<std::string> names;
  if (DIR* dir = opendir(Native(directory).c_str())) {
    while (dirent* entry = readdir(dir))
      if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
        names.push_back(entry->d_name);
    closedir(dir);
  }
  std::sort(names.begin(), names.end());
  return names;
}

bool IsResult(VLRESULT rc) {
  const auto code = static_cast<uint16_t>(rc);
  return code == 0 || (code >= 0xF700 && code <= 0xF730);
}

void Fail(const char* what) {
  std::fprintf(stderr, "property broken: %s\n", what);
  std::system(("rm -rf '" + SandboxDirectory() + "'").c_str());
  std::abort();
}

}  // namespace vlfuzz
