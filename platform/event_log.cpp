// The event-log calls of the platform layer: recorded while a test asks for
// it, else made through the system's own calls (native_event_log.h).
#include <cstdio>

#include "platform/fault.h"
#include "platform/native_event_log.h"
#include "platform/os.h"

namespace os {
namespace {

// Stands for a source while calls are recorded.
char g_recordedSource;

const char* TypeWord(EventType type) {
  switch (type) {
    case EventType::Error: return "error";
    case EventType::Warning: return "warning";
    default: return "information";
  }
}

}  // namespace

EventLogSource OpenEventLogSource(const char* name) {
  if (fault::Injected(fault::Op::EventLog)) return nullptr;
  if (auto* calls = fault::EventLogRecorder()) {
    calls->push_back(std::string("open ") + name);
    return &g_recordedSource;
  }
  return native::OpenEventLogSource(name);
}

int WriteEventLogEntry(EventLogSource source, EventType type, uint32_t eventId, const char* text) {
  if (int e = fault::Injected(fault::Op::EventLog)) return e;
  if (auto* calls = fault::EventLogRecorder()) {
    char head[48];
    std::snprintf(head, sizeof head, "write %s 0x%04X ", TypeWord(type), static_cast<unsigned>(eventId));
    calls->push_back(head + std::string(text));
    return kOk;
  }
  return native::WriteEventLogEntry(source, type, eventId, text);
}

void CloseEventLogSource(EventLogSource source) {
  if (source == &g_recordedSource) {
    if (auto* calls = fault::EventLogRecorder()) calls->push_back("close");
    return;
  }
  native::CloseEventLogSource(source);
}

}  // namespace os
