#include "platform/fault.h"

#include <array>
#include <atomic>
#include <optional>

#include "platform/os.h"

namespace os::fault {
namespace {

struct Plan {
  bool armed = false;
  Op op = Op::Any;
  int nth = 0;
  int error = 0;
  bool fromThenOn = false;
  void (*action)(void*) = nullptr;
  void* context = nullptr;
};

Plan g_plan;
std::atomic<bool> g_armed{false};
std::array<std::atomic<int>, static_cast<size_t>(Op::Count)> g_calls{};
std::optional<LocalTime> g_clock;
std::vector<std::string>* g_eventLog = nullptr;
ads::Provider* g_directory = nullptr;
std::string g_directoryServer;

}  // namespace

void Inject(Op op, int nth, int error, bool fromThenOn) {
  Clear();
  g_plan = Plan{true, op, nth, error, fromThenOn};
  g_armed = true;
}

void Before(Op op, int nth, void (*action)(void* context), void* context) {
  Clear();
  g_plan = Plan{true, op, nth, 0, false, action, context};
  g_armed = true;
}

void RecordEventLog(std::vector<std::string>* calls) { g_eventLog = calls; }

std::vector<std::string>* EventLogRecorder() { return g_eventLog; }

void UseDirectory(ads::Provider* provider) { g_directory = provider; }

ads::Provider* DirectoryStandIn() { return g_directory; }

void PinDirectoryServer(const std::string& server) { g_directoryServer = server; }

const std::string& PinnedDirectoryServer() { return g_directoryServer; }

void PinClock(const LocalTime& time) { g_clock = time; }

const LocalTime* PinnedClock() { return g_clock ? &*g_clock : nullptr; }

void Clear() {
  g_armed = false;
  g_clock.reset();
  g_plan = Plan{};
  for (auto& count : g_calls) count = 0;
}

int Calls(Op op) { return g_calls[static_cast<size_t>(op)]; }

int Injected(Op op) {
  if (!g_armed) return 0;
  int own = ++g_calls[static_cast<size_t>(op)];
  int any = ++g_calls[static_cast<size_t>(Op::Any)];
  int call = g_plan.op == Op::Any ? any : (g_plan.op == op ? own : 0);
  if (call == 0) return 0;
  if (call == g_plan.nth && g_plan.action) {
    // The action's own platform calls are neither counted nor failed.
    g_armed = false;
    g_plan.action(g_plan.context);
    g_armed = true;
    return 0;
  }
  if (call == g_plan.nth || (g_plan.fromThenOn && call > g_plan.nth)) return g_plan.error;
  return 0;
}

}  // namespace os::fault
