// Win32 implementation of the platform layer.
#include <windows.h>
#include <fcntl.h>
#include <io.h>

#include <cstring>
#include <vector>

#include "platform/fault.h"
#include "platform/native_event_log.h"
#include "platform/os.h"
#include "platform/win32/raii_win.h"

namespace os {
namespace {

using fault::Injected;
using fault::Op;

DWORD ShareMode(Share share) {
  switch (share) {
    case Share::All: return FILE_SHARE_READ | FILE_SHARE_WRITE;
    case Share::ReadOnly: return FILE_SHARE_READ;
    case Share::Nobody: return 0;
  }
  return 0;
}

DWORD CreationDisposition(Disposition disposition) {
  switch (disposition) {
    case Disposition::OpenExisting: return OPEN_EXISTING;
    case Disposition::OpenAlways: return OPEN_ALWAYS;
    case Disposition::CreateAlways: return CREATE_ALWAYS;
    case Disposition::CreateNew: return CREATE_NEW;
  }
  return OPEN_EXISTING;
}

// Descriptor flags matching an open request and its stdio mode.
int DescriptorFlags(const OpenRequest& request) {
  int flags = request.read && request.write ? _O_RDWR : (request.write ? _O_WRONLY : _O_RDONLY);
  if (request.append) flags |= _O_APPEND;
  if (std::strchr(request.streamMode, 'b')) flags |= _O_BINARY;
  else if (std::strchr(request.streamMode, 't')) flags |= _O_TEXT;
  return flags;
}

int64_t FileTimeToUnixSeconds(const FILETIME& ft) {
  ULARGE_INTEGER v;
  v.LowPart = ft.dwLowDateTime;
  v.HighPart = ft.dwHighDateTime;
  return static_cast<int64_t>(v.QuadPart / 10000000ULL) - 11644473600LL;
}

FILETIME UnixSecondsToFileTime(int64_t seconds) {
  ULARGE_INTEGER v;
  v.QuadPart = static_cast<ULONGLONG>(seconds + 11644473600LL) * 10000000ULL;
  FILETIME ft;
  ft.dwLowDateTime = v.LowPart;
  ft.dwHighDateTime = v.HighPart;
  return ft;
}

HANDLE StreamHandle(FILE* stream) {
  return reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(stream)));
}

HKEY HiveKey(Hive hive) {
  switch (hive) {
    case Hive::LocalMachine: return HKEY_LOCAL_MACHINE;
    case Hive::CurrentUser: return HKEY_CURRENT_USER;
    case Hive::ClassesRoot: return HKEY_CLASSES_ROOT;
  }
  return HKEY_CURRENT_USER;
}

int LastError() { return static_cast<int>(GetLastError()); }

// An impersonation copy of the process token (the access check takes
// impersonation tokens only), or the system error of making one.
int CopyProcessToken(UniqueHandle* token) {
  HANDLE raw = nullptr;
  if (!OpenProcessToken(GetCurrentProcess(), TOKEN_QUERY | TOKEN_DUPLICATE, &raw))
    return LastError();
  UniqueHandle processToken(raw);
  if (!DuplicateToken(processToken.get(), SecurityImpersonation, &raw)) return LastError();
  token->reset(raw);
  return kOk;
}

// The token that access is checked for: the thread's impersonation token
// when it has one (held in threadToken), else the copy of the process token,
// made once since the process's identity does not change.
int CallerToken(UniqueHandle* threadToken, HANDLE* token) {
  HANDLE raw = nullptr;
  if (OpenThreadToken(GetCurrentThread(), TOKEN_QUERY | TOKEN_DUPLICATE, TRUE, &raw)) {
    threadToken->reset(raw);
    *token = raw;
    return kOk;
  }
  if (GetLastError() != ERROR_NO_TOKEN) return LastError();
  static UniqueHandle processCopy;
  static const int made = CopyProcessToken(&processCopy);
  if (made != kOk) return made;
  *token = processCopy.get();
  return kOk;
}

int WithTrailingBackslash(const char* text, DWORD length, std::string* path) {
  path->assign(text, length);
  if (path->empty() || path->back() != '\\') path->push_back('\\');
  return kOk;
}

}  // namespace

void CloseStream(FILE* stream) { std::fclose(stream); }
void CloseDescriptor(int fd) { _close(fd); }

OpenedStream OpenStream(const char* path, const OpenRequest& request) {
  OpenedStream result;
  if (int e = Injected(Op::OpenStream)) {
    result.error = e;
    return result;
  }
  DWORD access = (request.read ? GENERIC_READ : 0) | (request.write ? GENERIC_WRITE : 0);
  UniqueFileHandle handle(CreateFileA(path, access, ShareMode(request.share), nullptr,
                                      CreationDisposition(request.disposition),
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!handle) {
    result.error = static_cast<int>(GetLastError());
    return result;
  }
  int fd = _open_osfhandle(reinterpret_cast<intptr_t>(handle.get()), DescriptorFlags(request));
  if (fd == -1) {
    result.error = kTooManyOpenFiles;
    return result;
  }
  handle.release();  // the descriptor owns the handle now
  UniqueFd descriptor(fd);
  FILE* stream = _fdopen(fd, request.streamMode);
  if (!stream) {
    result.error = kTooManyOpenFiles;
    return result;
  }
  descriptor.release();  // the stream owns the descriptor now
  result.file.reset(stream);
  return result;
}

int SetStreamLength(FILE* stream, int64_t length) {
  if (int e = Injected(Op::SetStreamLength)) return e;
  HANDLE h = StreamHandle(stream);
  LARGE_INTEGER position;
  position.QuadPart = length;
  if (!SetFilePointerEx(h, position, nullptr, FILE_BEGIN) || !SetEndOfFile(h))
    return static_cast<int>(GetLastError());
  return kOk;
}

int64_t StreamLength(FILE* stream) {
  LARGE_INTEGER size;
  if (!GetFileSizeEx(StreamHandle(stream), &size)) return -1;
  return size.QuadPart;
}

int GetFileInfo(const char* path, FileInfo* info) {
  if (int e = Injected(Op::GetFileInfo)) return e;
  WIN32_FILE_ATTRIBUTE_DATA data;
  if (!GetFileAttributesExA(path, GetFileExInfoStandard, &data))
    return static_cast<int>(GetLastError());
  info->isDirectory = (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
  info->readOnly = (data.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
  info->size = (static_cast<int64_t>(data.nFileSizeHigh) << 32) | data.nFileSizeLow;
  info->modified = FileTimeToUnixSeconds(data.ftLastWriteTime);
  ULARGE_INTEGER written;
  written.LowPart = data.ftLastWriteTime.dwLowDateTime;
  written.HighPart = data.ftLastWriteTime.dwHighDateTime;
  info->modifiedMs = static_cast<int64_t>(written.QuadPart / 10000ULL) - 11644473600000LL;
  return kOk;
}

int CheckAccess(const char* path, bool write) {
  if (int e = Injected(Op::CheckAccess)) return e;
  DWORD attributes = GetFileAttributesA(path);
  if (attributes == INVALID_FILE_ATTRIBUTES) return static_cast<int>(GetLastError());
  if (write && (attributes & FILE_ATTRIBUTE_READONLY) && !(attributes & FILE_ATTRIBUTE_DIRECTORY))
    return kAccessDenied;
  return kOk;
}

int CheckDirectoryAccess(const char* path, uint32_t desiredAccess) {
  if (int e = Injected(Op::AccessCheck)) return e;
  const SECURITY_INFORMATION parts =
      OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;
  // Most descriptors fit the first buffer; a larger one is asked for again.
  std::vector<unsigned char> descriptor(1024);
  DWORD needed = 0;
  while (!GetFileSecurityA(path, parts, descriptor.data(), static_cast<DWORD>(descriptor.size()),
                           &needed)) {
    if (GetLastError() != ERROR_INSUFFICIENT_BUFFER || needed <= descriptor.size())
      return LastError();
    descriptor.resize(needed);
  }
  UniqueHandle threadToken;
  HANDLE token = nullptr;
  if (int e = CallerToken(&threadToken, &token)) return e;
  GENERIC_MAPPING mapping = {FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE,
                             FILE_ALL_ACCESS};
  DWORD desired = desiredAccess;
  MapGenericMask(&desired, &mapping);
  // Room for the privileges the check may report using.
  union {
    PRIVILEGE_SET set;
    unsigned char room[sizeof(PRIVILEGE_SET) + 8 * sizeof(LUID_AND_ATTRIBUTES)];
  } privileges;
  DWORD privilegesLength = sizeof privileges;
  DWORD granted = 0;
  BOOL allowed = FALSE;
  if (!AccessCheck(descriptor.data(), token, desired, &mapping, &privileges.set,
                   &privilegesLength, &granted, &allowed))
    return LastError();
  return allowed ? kOk : kAccessDenied;
}

int CreateExclusive(const char* path) {
  if (int e = Injected(Op::CreateExclusive)) return e;
  UniqueFileHandle handle(CreateFileA(path, GENERIC_READ | GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, CREATE_NEW,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
  return handle ? kOk : static_cast<int>(GetLastError());
}

int MakeDirectory(const char* path) {
  if (int e = Injected(Op::MakeDirectory)) return e;
  return CreateDirectoryA(path, nullptr) ? kOk : static_cast<int>(GetLastError());
}

int RemoveFile(const char* path) {
  if (int e = Injected(Op::RemoveFile)) return e;
  return DeleteFileA(path) ? kOk : static_cast<int>(GetLastError());
}

int RenameFile(const char* from, const char* to) {
  if (int e = Injected(Op::RenameFile)) return e;
  return MoveFileA(from, to) ? kOk : static_cast<int>(GetLastError());
}

int CopyFileReplacing(const char* from, const char* to) {
  if (int e = Injected(Op::CopyFile)) return e;
  return CopyFileA(from, to, FALSE) ? kOk : static_cast<int>(GetLastError());
}

int SetModifiedTime(const char* path, int64_t secondsSince1970) {
  if (int e = Injected(Op::SetModifiedTime)) return e;
  UniqueFileHandle handle(CreateFileA(path, FILE_WRITE_ATTRIBUTES,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                      nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!handle) return static_cast<int>(GetLastError());
  FILETIME ft = UnixSecondsToFileTime(secondsSince1970);
  return SetFileTime(handle.get(), nullptr, nullptr, &ft) ? kOk : static_cast<int>(GetLastError());
}

int ListFiles(const char* pattern, std::vector<std::string>* names, int maxNames,
              Listing listing) {
  names->clear();
  if (int e = Injected(Op::ListFiles)) return e;
  WIN32_FIND_DATAA data;
  UniqueFindHandle find(FindFirstFileA(pattern, &data));
  if (!find) {
    DWORD error = GetLastError();
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_NO_MORE_FILES ? kOk
                                                                         : static_cast<int>(error);
  }
  do {
    if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) {
      if (listing == Listing::FilesOnly || !std::strcmp(data.cFileName, ".") ||
          !std::strcmp(data.cFileName, ".."))
        continue;
    }
    names->push_back(data.cFileName);
    if (maxNames > 0 && static_cast<int>(names->size()) >= maxNames) break;
  } while (FindNextFileA(find.get(), &data));
  return kOk;
}

OpenedDescriptor OpenLockFile(const char* path) {
  OpenedDescriptor result;
  if (int e = Injected(Op::OpenLockFile)) {
    result.error = e;
    return result;
  }
  UniqueFileHandle handle(CreateFileA(path, GENERIC_READ, 0, nullptr, OPEN_EXISTING,
                                      FILE_ATTRIBUTE_NORMAL, nullptr));
  if (!handle) {
    result.error = static_cast<int>(GetLastError());
    return result;
  }
  int fd = _open_osfhandle(reinterpret_cast<intptr_t>(handle.get()), _O_RDONLY | _O_BINARY);
  if (fd == -1) {
    result.error = kTooManyOpenFiles;
    return result;
  }
  handle.release();
  result.fd.reset(fd);
  return result;
}

int TempDirectory(std::string* path) {
  if (int e = Injected(Op::TempDirectory)) return e;
  char buffer[MAX_PATH + 1];
  DWORD length = GetTempPathA(sizeof buffer, buffer);
  if (length == 0 || length >= sizeof buffer) return static_cast<int>(GetLastError());
  return WithTrailingBackslash(buffer, length, path);
}

int WindowsDirectory(std::string* path) {
  if (int e = Injected(Op::WindowsDirectory)) return e;
  char buffer[MAX_PATH + 1];
  UINT length = GetWindowsDirectoryA(buffer, sizeof buffer);
  if (length == 0 || length >= sizeof buffer) return static_cast<int>(GetLastError());
  return WithTrailingBackslash(buffer, length, path);
}

namespace {

// The user's application data folder as the shell records it, read without
// loading the shell (which costs a client process more than all the rest of
// its log-on): the "AppData" value of the user shell folders, expanded, and
// created when missing as the shell would. False when any step fails.
bool AppDataFromRegistry(std::string* path) {
  HKEY raw = nullptr;
  if (RegOpenKeyExA(HKEY_CURRENT_USER,
                    "Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders", 0,
                    KEY_READ, &raw) != ERROR_SUCCESS)
    return false;
  UniqueRegistryKey key(raw);
  char value[MAX_PATH + 1] = {};
  DWORD type = 0;
  DWORD size = MAX_PATH;
  if (RegQueryValueExA(key.get(), "AppData", nullptr, &type, reinterpret_cast<BYTE*>(value),
                       &size) != ERROR_SUCCESS ||
      (type != REG_SZ && type != REG_EXPAND_SZ))
    return false;
  char expanded[MAX_PATH + 1] = {};
  const DWORD length = ExpandEnvironmentStringsA(value, expanded, sizeof expanded);
  if (length == 0 || length > sizeof expanded || !expanded[0] || std::strchr(expanded, '%'))
    return false;
  if (!CreateDirectoryA(expanded, nullptr) && GetLastError() != ERROR_ALREADY_EXISTS) return false;
  WithTrailingBackslash(expanded, static_cast<DWORD>(std::strlen(expanded)), path);
  return true;
}

}  // namespace

int AppDataFolder(std::string* path) {
  if (int e = Injected(Op::AppDataFolder)) return e;
  if (AppDataFromRegistry(path)) return kOk;
  using GetFolderPath = HRESULT(WINAPI*)(HWND, int, HANDLE, DWORD, LPSTR);
  // The shell folder library is loaded on first use and kept for the process.
  static HMODULE shfolder = LoadLibraryA("shfolder.dll");
  if (!shfolder) return static_cast<int>(GetLastError());
  auto get = reinterpret_cast<GetFolderPath>(
      reinterpret_cast<void*>(GetProcAddress(shfolder, "SHGetFolderPathA")));
  if (!get) return static_cast<int>(GetLastError());
  char buffer[MAX_PATH + 1] = {};
  const int kAppDataCreate = 0x801A;  // CSIDL_APPDATA | CSIDL_FLAG_CREATE
  HRESULT hr = get(nullptr, kAppDataCreate, nullptr, 0, buffer);
  if (FAILED(hr)) return HRESULT_CODE(hr) ? static_cast<int>(HRESULT_CODE(hr)) : static_cast<int>(kFileNotFound);
  return WithTrailingBackslash(buffer, static_cast<DWORD>(std::strlen(buffer)), path);
}

std::string ComputerName() {
  char buffer[MAX_COMPUTERNAME_LENGTH + 1];
  DWORD size = sizeof buffer;
  return GetComputerNameA(buffer, &size) ? std::string(buffer, size) : std::string();
}

int SystemPrimaryLanguage() { return PRIMARYLANGID(GetSystemDefaultLangID()); }

namespace native {

EventLogSource OpenEventLogSource(const char* name) { return RegisterEventSourceA(nullptr, name); }

int WriteEventLogEntry(EventLogSource source, EventType type, uint32_t eventId, const char* text) {
  const char* strings[] = {text};
  return ReportEventA(static_cast<HANDLE>(source), static_cast<WORD>(type), 0, eventId, nullptr, 1,
                      0, strings, nullptr)
             ? kOk
             : static_cast<int>(GetLastError());
}

void CloseEventLogSource(EventLogSource source) {
  if (source) DeregisterEventSource(static_cast<HANDLE>(source));
}

}  // namespace native

bool GetEnvironment(const char* name, std::string* value) {
  DWORD needed = GetEnvironmentVariableA(name, nullptr, 0);
  if (needed == 0) return false;
  std::string text(needed, '\0');
  DWORD length = GetEnvironmentVariableA(name, text.data(), needed);
  if (length == 0 || length >= needed) return false;
  text.resize(length);
  *value = std::move(text);
  return true;
}

std::string SystemErrorText(int error) {
  char buffer[512];
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                nullptr, static_cast<DWORD>(error), 0, buffer, sizeof buffer,
                                nullptr);
  while (length > 0 && (buffer[length - 1] == '\r' || buffer[length - 1] == '\n')) --length;
  return std::string(buffer, length);
}

int RegistryReadString(Hive hive, const char* key, const char* value, std::string* data,
                       size_t capacity) {
  if (int e = Injected(Op::RegistryRead)) return e;
  HKEY raw = nullptr;
  LONG status = RegOpenKeyExA(HiveKey(hive), key, 0, KEY_READ, &raw);
  if (status != ERROR_SUCCESS) return static_cast<int>(status);
  UniqueRegistryKey opened(raw);
  std::string buffer(capacity + 1, '\0');
  DWORD type = 0;
  DWORD size = static_cast<DWORD>(capacity);
  status = RegQueryValueExA(opened.get(), value, nullptr, &type,
                            reinterpret_cast<BYTE*>(buffer.data()), &size);
  if (status != ERROR_SUCCESS) return static_cast<int>(status);
  if (type != REG_SZ && type != REG_EXPAND_SZ) return kFileNotFound;
  data->assign(buffer.c_str());
  return kOk;
}

int RegistryWriteString(Hive hive, const char* key, const char* value, const char* data) {
  if (int e = Injected(Op::RegistryWrite)) return e;
  HKEY raw = nullptr;
  LONG status = RegOpenKeyExA(HiveKey(hive), key, 0, KEY_WRITE, &raw);
  if (status != ERROR_SUCCESS) return static_cast<int>(status);
  UniqueRegistryKey opened(raw);
  status = RegSetValueExA(opened.get(), value, 0, REG_SZ, reinterpret_cast<const BYTE*>(data),
                          static_cast<DWORD>(std::strlen(data) + 1));
  return static_cast<int>(status);
}

int RegistryCreateKey(Hive hive, const char* key) {
  if (int e = Injected(Op::RegistryWrite)) return e;
  HKEY raw = nullptr;
  LONG status = RegCreateKeyExA(HiveKey(hive), key, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                KEY_WRITE, nullptr, &raw, nullptr);
  UniqueRegistryKey created(raw);
  return static_cast<int>(status);
}

int RegistrySetString(Hive hive, const char* key, const char* value, const char* data) {
  if (int e = Injected(Op::RegistryWrite)) return e;
  HKEY raw = nullptr;
  LONG status = RegCreateKeyExA(HiveKey(hive), key, 0, nullptr, REG_OPTION_NON_VOLATILE,
                                KEY_WRITE, nullptr, &raw, nullptr);
  if (status != ERROR_SUCCESS) return static_cast<int>(status);
  UniqueRegistryKey created(raw);
  status = RegSetValueExA(created.get(), value, 0, REG_SZ, reinterpret_cast<const BYTE*>(data),
                          static_cast<DWORD>(std::strlen(data) + 1));
  return static_cast<int>(status);
}

int RegistryDeleteTree(Hive hive, const char* key) {
  if (int e = Injected(Op::RegistryWrite)) return e;
  return static_cast<int>(RegDeleteTreeA(HiveKey(hive), key));
}

int RegistryCheckKey(Hive hive, const char* key) {
  if (int e = Injected(Op::RegistryRead)) return e;
  HKEY raw = nullptr;
  LONG status = RegOpenKeyExA(HiveKey(hive), key, 0, KEY_READ, &raw);
  UniqueRegistryKey opened(raw);
  return static_cast<int>(status);
}

int StartDetachedProcess(const char* application, const char* commandLine) {
  if (int e = Injected(Op::StartProcess)) return e;
  std::string line(commandLine);  // CreateProcessA may write into its command line
  STARTUPINFOA startup;
  std::memset(&startup, 0, sizeof startup);
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process;
  if (!CreateProcessA(application, line.data(), nullptr, nullptr, FALSE, DETACHED_PROCESS,
                      nullptr, nullptr, &startup, &process))
    return static_cast<int>(GetLastError());
  UniqueHandle processHandle(process.hProcess);
  UniqueHandle threadHandle(process.hThread);
  return kOk;
}

LocalTime Now() {
  if (const LocalTime* pinned = fault::PinnedClock()) return *pinned;
  SYSTEMTIME st;
  GetLocalTime(&st);
  return LocalTime{st.wYear, st.wMonth, st.wDay, st.wHour, st.wMinute, st.wSecond,
                   st.wMilliseconds};
}

int64_t WallClockMilliseconds() {
  FILETIME ft;
  GetSystemTimeAsFileTime(&ft);
  ULARGE_INTEGER v;
  v.LowPart = ft.dwLowDateTime;
  v.HighPart = ft.dwHighDateTime;
  return static_cast<int64_t>(v.QuadPart / 10000ULL);
}

int64_t SecondsSince1970() {
  FILETIME ft;
  GetSystemTimeAsFileTime(&ft);
  return FileTimeToUnixSeconds(ft);
}

uint32_t ProcessId() { return GetCurrentProcessId(); }
uint32_t ThreadId() { return GetCurrentThreadId(); }

void SleepMilliseconds(int milliseconds) { Sleep(static_cast<DWORD>(milliseconds)); }

std::string FullPath(const char* path) {
  char full[MAX_PATH + 1];
  DWORD length = GetFullPathNameA(path, sizeof full, full, nullptr);
  return length > 0 && length < sizeof full ? std::string(full, length) : std::string(path);
}

std::string ExecutablePath() {
  char path[MAX_PATH + 1];
  DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
  return length > 0 && length < sizeof path ? std::string(path, length) : std::string();
}

void KeepModuleLoaded() {
  HMODULE module = nullptr;
  GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_PIN,
                     reinterpret_cast<LPCSTR>(&KeepModuleLoaded), &module);
}

}  // namespace os
