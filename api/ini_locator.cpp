#include "api/ini_locator.h"

#include "api/internal_codes.h"
#include "api/text.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vl {
namespace {

const char kServerKey[] = "SOFTWARE\\Ornavex\\Velomar Server\\";
const char kClientKey[] = "SOFTWARE\\Ornavex\\Velomar\\";
const char kServerIni[] = "VELOMAR.INI";
const char kClientIni[] = "VLCLIENT.INI";
const size_t kRegistryValueBytes = 256;
const size_t kSearchListChars = 512;
const size_t kSearchElementChars = 255;

bool FileExists(const std::string& path) {
  os::FileInfo info;
  return os::GetFileInfo(path.c_str(), &info) == os::kOk && !info.isDirectory;
}

// The registry value naming a directory, as "DIRECTORY\" + file name.
bool RegistryFilePath(const char* key, const char* value, const char* file, std::string* path) {
  std::string directory;
  if (os::RegistryReadString(os::Hive::LocalMachine, key, value, &directory,
                             kRegistryValueBytes) != os::kOk)
    return false;
  directory = UpperCase(directory);
  EnsureBackslash(directory);
  *path = directory + file;
  return true;
}

}  // namespace

int FindServerIni(std::string* path) {
  std::string candidate;
  if (RegistryFilePath(kServerKey, "VelomarIniPath", kServerIni, &candidate) &&
      FileExists(candidate)) {
    *path = UpperCase(candidate);
    return 0;
  }
  path->clear();
  return kInternalNotFound;
}

int FindClientIni(std::string* path) {
  std::string perUser;
  const bool haveFolder = os::AppDataFolder(&perUser) == os::kOk;
  if (haveFolder) {
    EnsureBackslash(perUser);
    perUser += "Ornavex\\";
    os::MakeDirectory(perUser.c_str());
    perUser += "Velomar Client\\";
    os::MakeDirectory(perUser.c_str());
    perUser += kClientIni;
    if (os::CheckAccess(perUser.c_str(), true) == os::kOk) {
      *path = perUser;
      return 0;
    }
  }
  std::string source;
  if (RegistryFilePath(kClientKey, "VelomarClientIniPath", kClientIni, &source) &&
      FileExists(source)) {
    if (!haveFolder) {
      *path = source;
      return 0;
    }
    if (os::CopyFileReplacing(source.c_str(), perUser.c_str()) == os::kOk) {
      *path = perUser;
      return 0;
    }
    path->clear();
    return kInternalNotFound;
  }
  // The per-user path is handed back even though it cannot be used; the
  // caller's open of it then fails.
  if (haveFolder) {
    *path = perUser;
    return 0;
  }
  path->clear();
  return kInternalNotFound;
}

int SearchIniPath(std::string* path) {
  std::string list, value;
  if (os::GetEnvironment("USERPROFILE", &value)) list += value + "\\WINDOWS;";
  if (os::WindowsDirectory(&value) == os::kOk) list += value + ";";
  for (const char* variable : {"WINDIR", "VLAXINIT", "INIT", "PATH"})
    if (os::GetEnvironment(variable, &value)) list += value + ";";
  if (list.size() > kSearchListChars) list.resize(kSearchListChars);

  size_t start = 0;
  while (start < list.size()) {
    size_t end = list.find(';', start);
    if (end == std::string::npos) end = list.size();
    std::string directory = list.substr(start, std::min(end - start, kSearchElementChars));
    start = end + 1;
    if (directory.empty()) continue;
    EnsureBackslash(directory);
    std::string candidate = directory + kServerIni;
    if (FileExists(candidate)) {
      *path = candidate;
      return 0;
    }
  }
  path->clear();
  return kInternalNotFound;
}

int GetServerName(std::string* name) {
  std::string client;
  if (FindClientIni(&client) != 0) return kInternalNotFound;
  para::Opened file = para::OpenShared(10, client.c_str(), "rb");
  if (!file) return kInternalFileError;
  char line[para::kLineSize];
  char systemArea[280];
  if (!para::FindParagraph(file.get(), "[WORKSTATION]", line, sizeof line) ||
      !para::ReadText(file.get(), "SystemArea:", systemArea, sizeof systemArea))
    return kInternalNoParagraph;
  file.file.reset();

  char setupPath[600];
  std::snprintf(setupPath, sizeof setupPath, "%s\\%s\\SETUP.INI", systemArea, "V-DB");
  para::Opened setup = para::OpenShared(10, setupPath, "rb");
  if (!setup) return kInternalFileError;
  char primary[para::kLineSize];
  if (para::FindParagraph(setup.get(), "[FAILOVER]", line, sizeof line) &&
      para::ReadText(setup.get(), "PrimaryServer:", primary, sizeof primary)) {
    para::ListItem first = para::NextListItem(primary);
    if (first.length > 0) {
      name->assign(first.item, first.length);
      return 0;
    }
  }
  if (systemArea[0] == '\\' && systemArea[1] == '\\') {
    const char* computer = systemArea + 2;
    const char* end = std::strchr(computer, '\\');
    name->assign(computer, end ? static_cast<size_t>(end - computer) : std::strlen(computer));
  } else {
    *name = os::ComputerName();
  }
  return 0;
}

}  // namespace vl
