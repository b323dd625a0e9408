// Fault injection for the platform layer: a test makes the Nth call of one
// platform function (or of any) fail with a chosen error, once or from then
// on. Every fallible function of platform/os.h asks Injected() first.
#pragma once

#include <string>
#include <vector>

namespace os {
struct LocalTime;
namespace ads {
class Provider;
}
}

namespace os::fault {

enum class Op {
  Any,
  OpenStream,
  SetStreamLength,
  GetFileInfo,
  CheckAccess,
  CreateExclusive,
  MakeDirectory,
  RemoveFile,
  RenameFile,
  CopyFile,
  SetModifiedTime,
  ListFiles,
  OpenLockFile,
  TempDirectory,
  WindowsDirectory,
  AppDataFolder,
  RegistryRead,
  RegistryWrite,
  StartProcess,
  EventLog,
  LoadDirectory,
  Directory,
  AccessCheck,
  Count
};

// Arms one fault: the nth call (1-based) of op fails with error; with
// fromThenOn every later call fails too. Counting starts now.
void Inject(Op op, int nth, int error, bool fromThenOn = false);

// Runs action once, just before the nth call (1-based) of op goes ahead: a
// test's stand-in for another process acting at that moment. Counting
// starts now; a later Inject or Clear drops it.
void Before(Op op, int nth, void (*action)(void* context), void* context);

// Makes Now() report time from then on, as a test's fixed clock; a later
// Inject, Before or Clear lets the clock run again.
void PinClock(const LocalTime& time);

// The pinned time, or null while the clock runs.
const LocalTime* PinnedClock();

// Records every event-log call as one line in calls instead of making it:
// "open SOURCE", "write TYPE 0xID TEXT" (TYPE: error, warning or
// information), "close". Null stops recording.
void RecordEventLog(std::vector<std::string>* calls);
std::vector<std::string>* EventLogRecorder();

// Puts provider in the place of the system's directory services; null
// gives them back.
void UseDirectory(ads::Provider* provider);
ads::Provider* DirectoryStandIn();

// Names the directory server ("host:port") that the default-domain bind
// asks instead of the domain's own; empty (as in production) leaves the
// server to the directory services.
void PinDirectoryServer(const std::string& server);
const std::string& PinnedDirectoryServer();

// Disarms every fault and resets the counts.
void Clear();

// Number of calls of op since the last Inject or Clear.
int Calls(Op op);

// Called by each platform function: the error to fail with, or 0.
int Injected(Op op);

}  // namespace os::fault
