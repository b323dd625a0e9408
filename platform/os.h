// The thin platform layer: every OS call the library makes goes through the
// functions declared here. Errors are Windows system error numbers on every
// platform (0 means success), so callers and traces see the same values.
//
// Each function that can fail is a fault point (platform/fault.h): tests can
// make its Nth call fail with a chosen error.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

#include "platform/raii.h"

namespace os {

// System error numbers used by the library's logic.
enum Error : int {
  kOk = 0,
  kFileNotFound = 2,
  kPathNotFound = 3,
  kTooManyOpenFiles = 4,
  kAccessDenied = 5,
  kNotEnoughMemory = 8,
  kSharingViolation = 32,
  kLockViolation = 33,
  kHandleDiskFull = 39,
  kFileExists = 80,
  kInvalidParameter = 87,
  kDiskFull = 112,
  kAlreadyExists = 183,
  kFilenameTooLong = 206,
  kMoreData = 234,
};

// Who else may open a file while this opener holds it.
enum class Share { All, ReadOnly, Nobody };

// What an open does when the file exists or does not.
enum class Disposition { OpenExisting, OpenAlways, CreateAlways, CreateNew };

struct OpenRequest {
  bool read = false;
  bool write = false;
  bool append = false;
  Disposition disposition = Disposition::OpenExisting;
  Share share = Share::All;
  const char* streamMode = "rb";  // the stdio mode the stream is used with
};

// A stream, or none with the system error read right after the failed call.
struct OpenedStream {
  UniqueFile file;
  int error = kOk;
};

OpenedStream OpenStream(const char* path, const OpenRequest& request);

// Sets the length of an open stream's file (the stream must be flushed).
int SetStreamLength(FILE* stream, int64_t length);

// Length of an open stream's file.
int64_t StreamLength(FILE* stream);

struct FileInfo {
  bool isDirectory = false;
  bool readOnly = false;
  int64_t size = 0;
  int64_t modified = 0;  // seconds since 1970
  int64_t modifiedMs = 0;  // the same in milliseconds, as finely as the file system keeps it
};
int GetFileInfo(const char* path, FileInfo* info);

// Tests whether the file exists and may be read (and written, when asked).
int CheckAccess(const char* path, bool write);

// Whether the caller is granted every right of desiredAccess (file rights,
// generic rights mapped to them) on a directory by its security descriptor:
// kOk, kAccessDenied, or the system error that kept the check from being
// made. The caller is the thread's impersonation token when it has one, else
// the process's own.
int CheckDirectoryAccess(const char* path, uint32_t desiredAccess);

// Creates a new empty file, failing when it exists; closes it at once.
int CreateExclusive(const char* path);

int MakeDirectory(const char* path);
int RemoveFile(const char* path);
int RenameFile(const char* from, const char* to);
int CopyFileReplacing(const char* from, const char* to);
int SetModifiedTime(const char* path, int64_t secondsSince1970);

// Names (without directory) of the ordinary files matching a wildcard
// pattern such as "C:\DIR\~FAXA000.*", and of the directories too when
// asked. No match is success with no names. Stops after maxNames names
// when maxNames is above 0.
enum class Listing { FilesOnly, FilesAndDirectories };
int ListFiles(const char* pattern, std::vector<std::string>* names, int maxNames = 0,
              Listing listing = Listing::FilesOnly);

// Opens a file for reading, denying all access to every other opener, and
// returns a descriptor: the per-user lock.
struct OpenedDescriptor {
  UniqueFd fd;
  int error = kOk;
};
OpenedDescriptor OpenLockFile(const char* path);

// Directories of the system, each ending in a backslash.
int TempDirectory(std::string* path);
int WindowsDirectory(std::string* path);
// The current user's application data folder (created when missing).
int AppDataFolder(std::string* path);

std::string ComputerName();
// The primary language of the system's default language: the low ten bits
// of its language identifier (9 English, 10 Spanish, 7 German, 12 French,
// 16 Italian).
int SystemPrimaryLanguage();

// The system event log: a source registered on this computer (none: null),
// entries of one string each, and the source let go. While a test records
// the event log (fault::RecordEventLog) the calls are recorded instead.
enum class EventType : uint16_t { Error = 1, Warning = 2, Information = 4 };
using EventLogSource = void*;
EventLogSource OpenEventLogSource(const char* name);
int WriteEventLogEntry(EventLogSource source, EventType type, uint32_t eventId, const char* text);
void CloseEventLogSource(EventLogSource source);
bool GetEnvironment(const char* name, std::string* value);
std::string SystemErrorText(int error);

enum class Hive { LocalMachine, CurrentUser, ClassesRoot };
// Reads a string value of at most capacity bytes (its NUL included); a
// longer value is not read (kMoreData).
int RegistryReadString(Hive hive, const char* key, const char* value, std::string* data,
                       size_t capacity);
// Writes a string value under an existing key (the key is never created).
int RegistryWriteString(Hive hive, const char* key, const char* value, const char* data);
// Creates a key with any missing parents; an existing key is success.
int RegistryCreateKey(Hive hive, const char* key);
// Sets a string value (an empty name: the key's default value), creating the
// key and any missing parents first.
int RegistrySetString(Hive hive, const char* key, const char* value, const char* data);
// Deletes a key with all its subkeys and values; a missing key is
// kFileNotFound.
int RegistryDeleteTree(Hive hive, const char* key);
// kOk when the key exists, kFileNotFound when it does not.
int RegistryCheckKey(Hive hive, const char* key);

// Starts a detached process without a console; handles are not kept.
int StartDetachedProcess(const char* application, const char* commandLine);

struct LocalTime {
  int year = 0, month = 0, day = 0, hour = 0, minute = 0, second = 0, millisecond = 0;
};
LocalTime Now();
int64_t WallClockMilliseconds();
int64_t SecondsSince1970();
uint32_t ProcessId();
uint32_t ThreadId();

void SleepMilliseconds(int milliseconds);
// The absolute form of a path.
std::string FullPath(const char* path);
// The full path of the running program.
std::string ExecutablePath();

// Keeps this module in the process until it ends, for work that may still
// run on a thread of its own.
void KeepModuleLoaded();

}  // namespace os
