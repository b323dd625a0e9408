// Minimal POSIX implementation of the platform layer, for the native build
// that runs the format-level tests under the sanitizers. Backslashes in
// paths are taken as slashes; sharing modes are not enforced; the registry
// is a map held in the process; the Windows and application data folders
// come from VLAPI_WINDIR and VLAPI_APPDATA (default: the temporary folder).
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/types.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstring>
#include <ctime>
#include <map>
#include <set>
#include <thread>

#include "platform/fault.h"
#include "platform/native_event_log.h"
#include "platform/os.h"

namespace os {
namespace {

using fault::Injected;
using fault::Op;

std::string NativePath(const char* path) {
  std::string p(path);
  for (char& c : p)
    if (c == '\\') c = '/';
  return p;
}

int ParentMissing(const std::string& path) {
  auto slash = path.find_last_of('/');
  if (slash == std::string::npos || slash == 0) return false;
  struct stat st;
  return stat(path.substr(0, slash).c_str(), &st) != 0;
}

int ErrorFromErrno(int e, const std::string& path) {
  switch (e) {
    case ENOENT: return ParentMissing(path) ? kPathNotFound : kFileNotFound;
    case ENOTDIR: return kPathNotFound;
    case EACCES:
    case EPERM:
    case EISDIR: return kAccessDenied;
    case EEXIST: return kFileExists;
    case EMFILE:
    case ENFILE: return kTooManyOpenFiles;
    case ENOSPC: return kDiskFull;
    case ENAMETOOLONG: return kFilenameTooLong;
    default: return kInvalidParameter;
  }
}

char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

// Wildcard match without regard to case; '*' any run, '?' one character.
bool Matches(const char* pattern, const char* name) {
  if (*pattern == '\0') return *name == '\0';
  if (*pattern == '*') return Matches(pattern + 1, name) || (*name && Matches(pattern, name + 1));
  if (*name == '\0') return false;
  if (*pattern != '?' && Lower(*pattern) != Lower(*name)) return false;
  return Matches(pattern + 1, name + 1);
}

// As on Windows, a pattern ending in ".*" also matches a name with no extension.
bool MatchesFileName(const std::string& pattern, const char* name) {
  if (Matches(pattern.c_str(), name)) return true;
  if (pattern.size() >= 2 && pattern.compare(pattern.size() - 2, 2, ".*") == 0 &&
      !std::strchr(name, '.'))
    return Matches(pattern.substr(0, pattern.size() - 2).c_str(), name);
  return false;
}

int DirectoryFromEnvironment(const char* variable, std::string* path) {
  std::string value;
  if (!GetEnvironment(variable, &value) && !GetEnvironment("TMPDIR", &value)) value = "/tmp";
  if (value.empty() || (value.back() != '/' && value.back() != '\\')) value.push_back('\\');
  *path = value;
  return kOk;
}

std::map<std::string, std::string>& Registry() {
  static std::map<std::string, std::string> values;
  return values;
}

// The keys made by RegistryCreateKey and RegistrySetString, by the names of
// RegistryKeyName.
std::set<std::string>& RegistryKeys() {
  static std::set<std::string> keys;
  return keys;
}

std::string RegistryKeyName(Hive hive, const char* key) {
  std::string name = hive == Hive::LocalMachine ? "HKLM\\"
                     : hive == Hive::CurrentUser ? "HKCU\\"
                                                 : "HKCR\\";
  for (const char* p = key; *p; ++p) name.push_back(Lower(*p));
  return name;
}

bool StartsWith(const std::string& text, const std::string& prefix) {
  return text.compare(0, prefix.size(), prefix) == 0;
}

std::string RegistryName(Hive hive, const char* key, const char* value) {
  std::string name = RegistryKeyName(hive, key);
  name += "|";
  for (const char* p = value; *p; ++p) name.push_back(Lower(*p));
  return name;
}

}  // namespace

void CloseStream(FILE* stream) { std::fclose(stream); }
void CloseDescriptor(int fd) { close(fd); }

OpenedStream OpenStream(const char* path, const OpenRequest& request) {
  OpenedStream result;
  if (int e = Injected(Op::OpenStream)) {
    result.error = e;
    return result;
  }
  std::string native = NativePath(path);
  int flags = request.read && request.write ? O_RDWR : (request.write ? O_WRONLY : O_RDONLY);
  if (request.append) flags |= O_APPEND;
  switch (request.disposition) {
    case Disposition::OpenExisting: break;
    case Disposition::OpenAlways: flags |= O_CREAT; break;
    case Disposition::CreateAlways: flags |= O_CREAT | O_TRUNC; break;
    case Disposition::CreateNew: flags |= O_CREAT | O_EXCL; break;
  }
  int fd = open(native.c_str(), flags, 0600);
  if (fd < 0) {
    result.error = ErrorFromErrno(errno, native);
    return result;
  }
  std::string mode;
  for (const char* m = request.streamMode; *m; ++m)
    if (*m != 't') mode.push_back(*m);
  FILE* stream = fdopen(fd, mode.c_str());
  if (!stream) {
    close(fd);
    result.error = kTooManyOpenFiles;
    return result;
  }
  result.file.reset(stream);
  return result;
}

int SetStreamLength(FILE* stream, int64_t length) {
  if (int e = Injected(Op::SetStreamLength)) return e;
  return ftruncate(fileno(stream), static_cast<off_t>(length)) == 0 ? kOk
                                                                    : ErrorFromErrno(errno, "");
}

int64_t StreamLength(FILE* stream) {
  struct stat st;
  return fstat(fileno(stream), &st) == 0 ? static_cast<int64_t>(st.st_size) : -1;
}

int GetFileInfo(const char* path, FileInfo* info) {
  if (int e = Injected(Op::GetFileInfo)) return e;
  std::string native = NativePath(path);
  struct stat st;
  if (stat(native.c_str(), &st) != 0) return ErrorFromErrno(errno, native);
  info->isDirectory = S_ISDIR(st.st_mode);
  info->readOnly = (st.st_mode & S_IWUSR) == 0;
  info->size = st.st_size;
  info->modified = st.st_mtime;
  info->modifiedMs = static_cast<int64_t>(st.st_mtim.tv_sec) * 1000 + st.st_mtim.tv_nsec / 1000000;
  return kOk;
}

int CheckAccess(const char* path, bool write) {
  if (int e = Injected(Op::CheckAccess)) return e;
  std::string native = NativePath(path);
  return access(native.c_str(), write ? (R_OK | W_OK) : R_OK) == 0 ? kOk
                                                                   : ErrorFromErrno(errno, native);
}

int CheckDirectoryAccess(const char* path, uint32_t desiredAccess) {
  if (int e = Injected(Op::AccessCheck)) return e;
  // Rights that need reading, writing (changing or deleting anything) and
  // traversing, generic ones included.
  const uint32_t kRead = 0x1 | 0x8 | 0x80000000u | 0x10000000u;
  const uint32_t kWrite = 0x2 | 0x4 | 0x10 | 0x40 | 0x100 | 0x10000 | 0x40000 | 0x80000 |
                          0x40000000u | 0x10000000u;
  const uint32_t kExecute = 0x20 | 0x20000000u | 0x10000000u;
  int mode = ((desiredAccess & kRead) ? R_OK : 0) | ((desiredAccess & kWrite) ? W_OK : 0) |
             ((desiredAccess & kExecute) ? X_OK : 0);
  std::string native = NativePath(path);
  return access(native.c_str(), mode ? mode : F_OK) == 0 ? kOk : ErrorFromErrno(errno, native);
}

int CreateExclusive(const char* path) {
  if (int e = Injected(Op::CreateExclusive)) return e;
  std::string native = NativePath(path);
  int fd = open(native.c_str(), O_RDWR | O_CREAT | O_EXCL, 0600);
  if (fd < 0) return ErrorFromErrno(errno, native);
  close(fd);
  return kOk;
}

int MakeDirectory(const char* path) {
  if (int e = Injected(Op::MakeDirectory)) return e;
  std::string native = NativePath(path);
  if (mkdir(native.c_str(), 0700) == 0) return kOk;
  return errno == EEXIST ? kAlreadyExists : ErrorFromErrno(errno, native);
}

int RemoveFile(const char* path) {
  if (int e = Injected(Op::RemoveFile)) return e;
  std::string native = NativePath(path);
  return unlink(native.c_str()) == 0 ? kOk : ErrorFromErrno(errno, native);
}

int RenameFile(const char* from, const char* to) {
  if (int e = Injected(Op::RenameFile)) return e;
  std::string source = NativePath(from), target = NativePath(to);
  struct stat st;
  if (stat(target.c_str(), &st) == 0) return kAlreadyExists;  // as MoveFile
  return rename(source.c_str(), target.c_str()) == 0 ? kOk : ErrorFromErrno(errno, source);
}

int CopyFileReplacing(const char* from, const char* to) {
  if (int e = Injected(Op::CopyFile)) return e;
  std::string source = NativePath(from), target = NativePath(to);
  UniqueFile in(std::fopen(source.c_str(), "rb"));
  if (!in) return ErrorFromErrno(errno, source);
  UniqueFile out(std::fopen(target.c_str(), "wb"));
  if (!out) return ErrorFromErrno(errno, target);
  char block[4096];
  size_t n;
  while ((n = std::fread(block, 1, sizeof block, in.get())) > 0)
    if (std::fwrite(block, 1, n, out.get()) != n) return kDiskFull;
  return std::ferror(in.get()) ? kInvalidParameter : kOk;
}

int SetModifiedTime(const char* path, int64_t secondsSince1970) {
  if (int e = Injected(Op::SetModifiedTime)) return e;
  std::string native = NativePath(path);
  struct timeval times[2];
  times[0].tv_sec = times[1].tv_sec = static_cast<time_t>(secondsSince1970);
  times[0].tv_usec = times[1].tv_usec = 0;
  return utimes(native.c_str(), times) == 0 ? kOk : ErrorFromErrno(errno, native);
}

int ListFiles(const char* pattern, std::vector<std::string>* names, int maxNames,
              Listing listing) {
  names->clear();
  if (int e = Injected(Op::ListFiles)) return e;
  std::string native = NativePath(pattern);
  auto slash = native.find_last_of('/');
  std::string directory = slash == std::string::npos ? "." : native.substr(0, slash + 1);
  std::string wildcard = slash == std::string::npos ? native : native.substr(slash + 1);
  DIR* dir = opendir(directory.c_str());
  if (!dir) return errno == ENOENT ? kPathNotFound : ErrorFromErrno(errno, directory);
  while (struct dirent* entry = readdir(dir)) {
    if (!MatchesFileName(wildcard, entry->d_name)) continue;
    struct stat st;
    if (stat((directory + entry->d_name).c_str(), &st) != 0) continue;
    if (S_ISDIR(st.st_mode) && (listing == Listing::FilesOnly || !std::strcmp(entry->d_name, ".") ||
                                !std::strcmp(entry->d_name, "..")))
      continue;
    names->push_back(entry->d_name);
    if (maxNames > 0 && static_cast<int>(names->size()) >= maxNames) break;
  }
  closedir(dir);
  return kOk;
}

OpenedDescriptor OpenLockFile(const char* path) {
  OpenedDescriptor result;
  if (int e = Injected(Op::OpenLockFile)) {
    result.error = e;
    return result;
  }
  std::string native = NativePath(path);
  int fd = open(native.c_str(), O_RDONLY);
  if (fd < 0) result.error = ErrorFromErrno(errno, native);
  else result.fd.reset(fd);
  return result;
}

int TempDirectory(std::string* path) {
  if (int e = Injected(Op::TempDirectory)) return e;
  return DirectoryFromEnvironment("TMPDIR", path);
}

int WindowsDirectory(std::string* path) {
  if (int e = Injected(Op::WindowsDirectory)) return e;
  return DirectoryFromEnvironment("VLAPI_WINDIR", path);
}

int AppDataFolder(std::string* path) {
  if (int e = Injected(Op::AppDataFolder)) return e;
  return DirectoryFromEnvironment("VLAPI_APPDATA", path);
}

int SystemPrimaryLanguage() { return 9; }  // English

// No system event log here: every source fails to open, and is given up.
namespace native {
EventLogSource OpenEventLogSource(const char*) { return nullptr; }
int WriteEventLogEntry(EventLogSource, EventType, uint32_t, const char*) { return kInvalidParameter; }
void CloseEventLogSource(EventLogSource) {}
}  // namespace native

std::string ComputerName() {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0) return std::string();
  std::string upper(name);
  for (char& c : upper)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  return upper;
}

bool GetEnvironment(const char* name, std::string* value) {
  const char* v = std::getenv(name);
  if (!v) return false;
  *value = v;
  return true;
}

std::string SystemErrorText(int error) {
  static const std::map<int, const char*> texts = {
      {kFileNotFound, "The system cannot find the file specified."},
      {kPathNotFound, "The system cannot find the path specified."},
      {kTooManyOpenFiles, "The system cannot open the file."},
      {kAccessDenied, "Access is denied."},
      {kSharingViolation,
       "The process cannot access the file because it is being used by another process."},
      {kFileExists, "The file exists."},
      {kDiskFull, "There is not enough space on the disk."},
  };
  auto it = texts.find(error);
  return it == texts.end() ? std::string() : std::string(it->second);
}

int RegistryReadString(Hive hive, const char* key, const char* value, std::string* data,
                       size_t capacity) {
  if (int e = Injected(Op::RegistryRead)) return e;
  auto it = Registry().find(RegistryName(hive, key, value));
  if (it == Registry().end()) return kFileNotFound;
  if (it->second.size() + 1 > capacity) return kMoreData;
  *data = it->second;
  return kOk;
}

int RegistryWriteString(Hive hive, const char* key, const char* value, const char* data) {
  if (int e = Injected(Op::RegistryWrite)) return e;
  Registry()[RegistryName(hive, key, value)] = data;
  return kOk;
}

int RegistryCreateKey(Hive hive, const char* key) {
  if (int e = Injected(Op::RegistryWrite)) return e;
  const std::string name = RegistryKeyName(hive, key);
  for (size_t end = name.find('\\', 5); end != std::string::npos; end = name.find('\\', end + 1))
    RegistryKeys().insert(name.substr(0, end));
  RegistryKeys().insert(name);
  return kOk;
}

int RegistrySetString(Hive hive, const char* key, const char* value, const char* data) {
  if (int e = RegistryCreateKey(hive, key)) return e;
  Registry()[RegistryName(hive, key, value)] = data;
  return kOk;
}

int RegistryDeleteTree(Hive hive, const char* key) {
  if (int e = Injected(Op::RegistryWrite)) return e;
  const std::string name = RegistryKeyName(hive, key);
  bool found = RegistryKeys().erase(name) > 0;
  for (auto it = RegistryKeys().begin(); it != RegistryKeys().end();)
    it = StartsWith(*it, name + "\\") ? (found = true, RegistryKeys().erase(it)) : std::next(it);
  for (auto it = Registry().begin(); it != Registry().end();)
    it = StartsWith(it->first, name + "\\") || StartsWith(it->first, name + "|")
             ? (found = true, Registry().erase(it))
             : std::next(it);
  return found ? kOk : kFileNotFound;
}

int RegistryCheckKey(Hive hive, const char* key) {
  if (int e = Injected(Op::RegistryRead)) return e;
  const std::string name = RegistryKeyName(hive, key);
  if (RegistryKeys().count(name)) return kOk;
  auto value = Registry().lower_bound(name + "|");
  return value != Registry().end() && StartsWith(value->first, name + "|") ? kOk : kFileNotFound;
}

int StartDetachedProcess(const char*, const char*) {
  if (int e = Injected(Op::StartProcess)) return e;
  return 50;  // not supported by the native build
}

LocalTime Now() {
  if (const LocalTime* pinned = fault::PinnedClock()) return *pinned;
  auto now = std::chrono::system_clock::now();
  std::time_t t = std::chrono::system_clock::to_time_t(now);
  std::tm tm{};
  localtime_r(&t, &tm);
  auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(now.time_since_epoch()) % 1000;
  return LocalTime{tm.tm_year + 1900, tm.tm_mon + 1, tm.tm_mday, tm.tm_hour,
                   tm.tm_min, tm.tm_sec, static_cast<int>(ms.count())};
}

int64_t WallClockMilliseconds() {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
             std::chrono::system_clock::now().time_since_epoch())
      .count();
}

int64_t SecondsSince1970() { return static_cast<int64_t>(std::time(nullptr)); }

uint32_t ProcessId() { return static_cast<uint32_t>(getpid()); }

uint32_t ThreadId() {
  return static_cast<uint32_t>(std::hash<std::thread::id>()(std::this_thread::get_id()));
}

void SleepMilliseconds(int milliseconds) {
  std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds));
}

std::string FullPath(const char* path) {
  if (path[0] == '/' || path[0] == '\\') return path;
  char cwd[4096];
  return getcwd(cwd, sizeof cwd) ? std::string(cwd) + "/" + path : std::string(path);
}

std::string ExecutablePath() {
  char path[4096];
  ssize_t length = readlink("/proc/self/exe", path, sizeof path - 1);
  return length > 0 ? std::string(path, static_cast<size_t>(length)) : std::string();
}

void KeepModuleLoaded() {}

}  // namespace os
