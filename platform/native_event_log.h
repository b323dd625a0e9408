// The system's own event-log calls, one set per platform.
#pragma once

#include "platform/os.h"

namespace os::native {

EventLogSource OpenEventLogSource(const char* name);
int WriteEventLogEntry(EventLogSource source, EventType type, uint32_t eventId, const char* text);
void CloseEventLogSource(EventLogSource source);

}  // namespace os::native
