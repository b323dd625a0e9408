// watch: follows a message directory and prints each new message and each
// change of a message's status as it happens.
#include <windows.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <map>
#include <utility>

#include "commands.h"
#include "errors.h"
#include "output.h"

namespace vlfax {
namespace {

// The longest wait between two readings of the list, so that a share whose
// change notifications never arrive is still watched.
constexpr DWORD kMaxWaitMs = 2000;
constexpr int16_t kDirectoryBufferSize = 1024;

struct WatchOptions {
  bool in = false;
  bool out = false;
  int timeout = -1;  // seconds; negative: until Ctrl+C
};

// Owns a directory change notification handle.
class ChangeNotification {
 public:
  explicit ChangeNotification(HANDLE handle) : handle_(handle) {}
  ~ChangeNotification() { Reset(); }
  ChangeNotification(const ChangeNotification&) = delete;
  ChangeNotification& operator=(const ChangeNotification&) = delete;

  HANDLE get() const { return handle_; }
  explicit operator bool() const { return handle_ != INVALID_HANDLE_VALUE && handle_ != nullptr; }
  void Reset() {
    if (*this) FindCloseChangeNotification(std::exchange(handle_, INVALID_HANDLE_VALUE));
  }

 private:
  HANDLE handle_;
};

// Owns an event handle.
class Event {
 public:
  Event() : handle_(CreateEventA(nullptr, TRUE, FALSE, nullptr)) {
    if (!handle_) throw SystemError("creating an event", GetLastError());
  }
  ~Event() { CloseHandle(handle_); }
  Event(const Event&) = delete;
  Event& operator=(const Event&) = delete;
  HANDLE get() const { return handle_; }

 private:
  HANDLE handle_;
};

// While it lives, Ctrl+C and Ctrl+Break set the event instead of ending the
// process, so the session is closed properly.
class StopOnCtrlC {
 public:
  explicit StopOnCtrlC(HANDLE event) {
    stopEvent_ = event;
    installed_ = SetConsoleCtrlHandler(Handler, TRUE) != FALSE;
  }
  ~StopOnCtrlC() {
    if (installed_) SetConsoleCtrlHandler(Handler, FALSE);
    stopEvent_ = nullptr;
  }
  StopOnCtrlC(const StopOnCtrlC&) = delete;
  StopOnCtrlC& operator=(const StopOnCtrlC&) = delete;

 private:
  static BOOL WINAPI Handler(DWORD type) {
    if ((type != CTRL_C_EVENT && type != CTRL_BREAK_EVENT) || !stopEvent_) return FALSE;
    SetEvent(stopEvent_);
    return TRUE;
  }
  static inline HANDLE stopEvent_ = nullptr;
  bool installed_ = false;
};

// The statuses of the messages last seen, by body name.
using Statuses = std::map<std::string, unsigned>;

// Prints a line for each body not in seen and each status that differs from
// the one seen, then makes seen the list's current statuses.
void Report(const std::vector<VLMSGINFOEX>& list, Statuses& seen) {
  Statuses now;
  for (const VLMSGINFOEX& info : list) {
    std::string body = Field(info.Body);
    now[body] = info.Status;
    auto previous = seen.find(body);
    if (previous == seen.end()) {
      std::string subject = Field(info.Subject);
      std::cout << "new " << body << " " << MessageStatusWord(info.Status)
                << (subject.empty() ? "" : " " + subject) << std::endl;
    } else if (previous->second != info.Status) {
      std::cout << body << " " << MessageStatusWord(info.Status) << std::endl;
    }
  }
  seen = std::move(now);
}

std::string Directory(VLHANDLE handle, uint16_t directory) {
  char buffer[kDirectoryBufferSize] = {};
  if (directory == VL_DIR_IN)
    Check(VlxGetUserInDir(handle, buffer, sizeof buffer), "reading the in directory's path");
  else
    Check(VlxGetUserOutDir(handle, buffer, sizeof buffer), "reading the out directory's path");
  return Field(buffer);
}

int RunWatch(const Globals& globals, const WatchOptions& options) {
  uint16_t directory = options.in ? VL_DIR_IN : VL_DIR_OUT;
  auto session = OpenSession(globals);
  VLHANDLE handle = session->handle();
  std::string path = Directory(handle, directory);

  // Watching starts before the first reading so no change is missed.
  ChangeNotification change(FindFirstChangeNotificationA(
      path.c_str(), FALSE,
      FILE_NOTIFY_CHANGE_LAST_WRITE | FILE_NOTIFY_CHANGE_FILE_NAME | FILE_NOTIFY_CHANGE_SIZE));
  if (!change) throw SystemError("watching " + path, GetLastError());

  Statuses seen;
  for (const VLMSGINFOEX& info : ReadList(handle, directory)) seen[Field(info.Body)] = info.Status;

  Event stop;
  StopOnCtrlC ctrlC(stop.get());
  const bool endless = options.timeout < 0;
  const ULONGLONG deadline =
      endless ? 0 : GetTickCount64() + static_cast<ULONGLONG>(options.timeout) * 1000u;
  for (;;) {
    DWORD wait = kMaxWaitMs;
    if (!endless) {
      ULONGLONG now = GetTickCount64();
      if (now >= deadline) return kExitOk;
      wait = static_cast<DWORD>(std::min<ULONGLONG>(deadline - now, kMaxWaitMs));
    }
    HANDLE handles[] = {stop.get(), change.get()};
    DWORD woken = WaitForMultipleObjects(2, handles, FALSE, wait);
    if (woken == WAIT_OBJECT_0) return kExitOk;
    if (woken == WAIT_OBJECT_0 + 1) {
      if (!FindNextChangeNotification(change.get()))
        throw SystemError("watching " + path, GetLastError());
    } else if (woken != WAIT_TIMEOUT) {
      throw SystemError("waiting for changes in " + path, GetLastError());
    }
    Report(ReadList(handle, directory), seen);
  }
}

}  // namespace

void AddWatchCommand(CLI::App& app, const Globals& globals, Action& action) {
  auto options = std::make_shared<WatchOptions>();
  CLI::App* command = app.add_subcommand(
      "watch", "print new messages and status changes of a directory as they happen");
  auto* in = command->add_flag("--in", options->in, "the in directory");
  auto* out = command->add_flag("--out", options->out, "the out directory (default)");
  in->excludes(out);
  command
      ->add_option("--timeout", options->timeout,
                   "stop after this many seconds (default: until Ctrl+C)")
      ->check(CLI::Range(0, std::numeric_limits<int>::max()));
  command->callback([&globals, &action, options] {
    action = [&globals, options] { return RunWatch(globals, *options); };
  });
}

}  // namespace vlfax
