#include "lib/log_writer.h"

#include <cstdarg>
#include <cstdlib>
#include <cstring>

#include "lib/message_log.h"
#include "paragraph/open_shared.h"
#include "platform/os.h"

namespace vl {
namespace {

const LevelEvent kLevels[] = {
    {'?', kEventInfo, "LIB_I_INFO"},     // any level outside 1 to 6
    {'.', kEventInfo, "LIB_I_INFO"},    {'-', kEventInfo, "LIB_I_INFO"},
    {'I', kEventInfo, "LIB_I_INFO"},    {'W', kEventWarning, "LIB_W_WARNING"},
    {'E', kEventError, "LIB_E_ERROR"},  {'S', kEventError, "LIB_E_ERROR"},
};

// Where a server with a display shows its lines; this library has none.
void DisplayHook(const char*) {}

// Where a server raises its alerts; this library raises none.
void AlertHook(int, int) {}

// "yy-mm-dd hh:mm:ss  IDENTIFIER - " of now.
void Prefix(char (&prefix)[40]) {
  const os::LocalTime t = os::Now();
  std::snprintf(prefix, sizeof prefix, "%.2d-%.2d-%.2d %.2d:%.2d:%.2d  %s - ", t.year % 100,
                t.month, t.day, t.hour, t.minute, t.second, Log().identifier);
}

void WriteToFile(LogState& log, const char* prefix, const char* line) {
  para::Opened file = para::OpenShared(log.fileRetrySeconds, log.fileName.c_str(), "at");
  if (!file) {
    ++log.lostCount;
    LogConsole("ERROR opening file '%s' (%d)", log.fileName.c_str(), file.error);
    return;
  }
  if (log.lostCount > 0) {
    std::fprintf(file.get(), "%s(E) - (%d system message%s lost)\n", prefix, log.lostCount,
                 log.lostCount == 1 ? "" : "s");
    log.lostCount = 0;
  }
  std::fprintf(file.get(), "%s\n", line);
}

}  // namespace

LogState& Log() {
  static LogState state;
  return state;
}

const LevelEvent& EventOfLevel(int level) {
  return level >= 1 && level <= 6 ? kLevels[level] : kLevels[0];
}

void LogInit(FILE* stream, const char* fileName, int level, const char* identifier) {
  LogState& log = Log();
  log.level = static_cast<int16_t>(level);
  std::string id = identifier ? identifier : "";
  if (id.size() > 10) {
    std::printf("LogInit() - warning: szID too long\n");
    id.resize(10);
  }
  std::snprintf(log.identifier, sizeof log.identifier, "%-10s", id.c_str());
  log.stream = stream;
  if (fileName && std::strlen(fileName) > kLogFileNameChars) {
    std::printf("LogInit() - invalid filename '%s'\n", fileName);
    std::fflush(stdout);
    std::exit(1);
  }
  log.fileName = fileName ? fileName : "";
  if (!stream && log.fileName.empty()) std::printf("LogInit() - szFileName and fp both NULL\n");
}

void LogWrite(int level, const char* format, ...) {
  LogState& log = Log();
  const bool guard = log.messageLogGuard;
  const bool once = log.eventLogOnce;
  log.messageLogGuard = true;
  log.eventLogOnce = false;
  if (level < log.level && level < log.secondLevel) return;

  const LevelEvent& event = EventOfLevel(level);
  char prefix[40];
  Prefix(prefix);
  char line[kLogLineChars + 1];
  int head = std::snprintf(line, sizeof line, "%s(%c) - ", prefix, event.letter);
  va_list args;
  va_start(args, format);
  va_list again;
  va_copy(again, args);
  if (head >= 0 && static_cast<size_t>(head) < sizeof line)
    std::vsnprintf(line + head, sizeof line - head, format, args);
  va_end(args);

  if (log.stream == stdout) {
    DisplayHook(line);
  } else if (log.stream) {
    std::fprintf(log.stream, "%s\n", line);
    std::fflush(log.stream);
  }
  if (!log.fileName.empty()) WriteToFile(log, prefix, line);
  if (level >= kLogError && !log.alertSwitch)
    AlertHook(log.alertArguments[0], log.alertArguments[1]);

  // The event log gets the caller's text on its own, double quotes made single.
  char text[kLogLineChars + 1];
  std::vsnprintf(text, sizeof text, format, again);
  va_end(again);
  for (char* quote = std::strchr(text, '"'); quote; quote = std::strchr(quote, '"')) *quote = '\'';
  if (once || level >= kLogSevere) ReportToEventLog(event.eventId, event.eventName, "%s", text);

  if (log.messageLogSwitch >= 1 && level >= 3 && guard && !log.fileName.empty()) {
    const char* source = log.source.empty() ? log.identifier : log.source.c_str();
    WriteMessageLogRecord(event.eventId, event.eventName, source, log.subSource.c_str(),
                          log.number, log.count, log.code, "\"%s\"", line);
  }
}

void LogConsole(const char* format, ...) {
  char text[1024];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  const os::LocalTime t = os::Now();
  std::printf("%.2d:%.2d:%.2d  %s - %s\n", t.hour, t.minute, t.second, Log().identifier, text);
}

void ReportToEventLog(uint16_t eventId, const char*, const char* format, ...) {
  char text[1024];
  va_list args;
  va_start(args, format);
  std::vsnprintf(text, sizeof text, format, args);
  va_end(args);
  os::EventLogSource source = os::OpenEventLogSource("Velomar Server");
  if (!source) return;
  const unsigned kind = eventId >> 14;  // the identifier's top two bits
  const os::EventType type = kind == 2   ? os::EventType::Warning
                             : kind == 3 ? os::EventType::Error
                                         : os::EventType::Information;
  os::WriteEventLogEntry(source, type, eventId, text);
  os::CloseEventLogSource(source);
}

}  // namespace vl
