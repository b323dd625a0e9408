// The common log of the fax system's server-side programs: one line per
// event to an optional stream and to a log file, serious events to the
// system event log, and, when the message log is on, one record per event
// in the day's message log.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace vl {

// Levels: 1 '.', 2 '-', 3 'I', 4 'W', 5 'E', 6 'S'.
inline constexpr int kLogError = 5;
inline constexpr int kLogSevere = 6;

// Event identifiers and names of the levels.
inline constexpr uint16_t kEventInfo = 0x5801;
inline constexpr uint16_t kEventWarning = 0x9802;
inline constexpr uint16_t kEventError = 0xD803;

inline constexpr size_t kLogFileNameChars = 268;
inline constexpr size_t kLogLineChars = 199;

// The process-wide log state.
struct LogState {
  FILE* stream = nullptr;      // extra destination of every line
  std::string fileName;        // log file; empty: none
  int16_t level = 0;           // lowest level written ...
  int16_t secondLevel = 3;     // ... unless at or above this one (the setup file's LogLevel)
  char identifier[11] = "          ";  // blank-padded to 10 characters
  int16_t lostCount = 0;       // lines that could not reach the file
  int16_t fileRetrySeconds = 15;
  bool eventLogOnce = false;   // the next message also goes to the event log
  int16_t messageLogSwitch = 0;  // the setup file's LogKeepDays: 1 or more turns records on
  bool messageLogGuard = true;   // cleared while the message log reports on itself
  // Copied into each message-log record.
  std::string source, subSource;
  uint32_t number = 0;
  int16_t count = 0;
  uint16_t code = 0;
  // The alert hook, called for errors; it does nothing in this library.
  bool alertSwitch = false;
  int alertArguments[2] = {880, 300};
};

LogState& Log();

// Sets the log up: level, identifier (cut to 10 characters with a warning),
// stream and file name. A file name of 269 characters or more ends the
// process with status 1.
void LogInit(FILE* stream, const char* fileName, int level, const char* identifier);

// Writes one event at level.
void LogWrite(int level, const char* format, ...) __attribute__((format(printf, 2, 3)));

// Writes "hh:mm:ss  IDENTIFIER - text" to standard output.
void LogConsole(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Writes one entry into the system event log under the source "Velomar
// Server"; the entry type follows the identifier's top two bits.
void ReportToEventLog(uint16_t eventId, const char* eventName, const char* format, ...)
    __attribute__((format(printf, 3, 4)));

// The event identifier and name of a level.
struct LevelEvent {
  char letter;
  uint16_t eventId;
  const char* eventName;
};
const LevelEvent& EventOfLevel(int level);

}  // namespace vl
