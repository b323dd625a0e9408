#include "lib/message_log.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string>

#include "lib/log_writer.h"
#include "lib/server_config.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vl {
namespace {

// Logs a malformed record without making a record of the log line.
int Invalid(int step) {
  Log().messageLogGuard = false;
  LogWrite(2, "Invalid message line (%d)", step);
  return 0;
}

// Takes the item at *at, terminates it in place and moves *at to the next
// one (null at the end). False when there is no item.
bool TakeItem(char** at, char** item) {
  if (!*at) return false;
  const para::ListItem next = para::NextListItem(*at);
  *item = *at;
  *at = const_cast<char*>(next.next);
  (*item)[next.length] = '\0';
  return true;
}

// A hexadecimal or decimal item read with scanFormat; an empty item is 0.
template <typename T>
bool ReadNumberItem(const char* item, const char* scanFormat, T* out) {
  T value = 0;
  if (*item && std::sscanf(item, scanFormat, &value) != 1) return false;
  if (out) *out = value;
  return true;
}

}  // namespace

std::string MessageLogPath(const os::LocalTime& day) {
  char name[24];
  std::snprintf(name, sizeof name, "V-%.2d%.2d%.2d.LOG", day.year % 100, day.month, day.day);
  return ServerSettings().serverArea + "V-DB\\" + name;
}

void WriteMessageLogRecord(uint16_t eventId, const char* eventName, const char* source,
                           const char* subSource, uint32_t number, int16_t count, uint16_t code,
                           const char* extraFormat, ...) {
  // One reading of the clock names the file and stamps the record.
  const os::LocalTime t = os::Now();
  para::Opened file = para::OpenShared(15, MessageLogPath(t).c_str(), "at");
  if (!file) {
    Log().messageLogGuard = false;
    LogWrite(kLogError, "Error opening message log file");
    return;
  }
  char stamp[24];
  std::snprintf(stamp, sizeof stamp, "%.2d-%.2d-%.2d %.2d:%.2d:%.2d", t.year % 100, t.month, t.day,
                t.hour, t.minute, t.second);
  std::fprintf(file.get(), "%.4X: %s,%-10.10s,%-8.8s,%.8lX,%-3d,%.4X,%-20s", eventId, stamp,
               source ? source : "", subSource ? subSource : "",
               static_cast<unsigned long>(number), count, code, eventName ? eventName : "");
  if (extraFormat && *extraFormat) {
    std::fputc(',', file.get());
    va_list args;
    va_start(args, extraFormat);
    std::vfprintf(file.get(), extraFormat, args);
    va_end(args);
  }
  std::fputc('\n', file.get());
}

int ParseMessageRecord(char* record, const MessageRecordFields& fields) {
  if (!record) return Invalid(1);
  if (fields.eventId && std::sscanf(record, "%hx:", fields.eventId) != 1) return Invalid(1);
  const char* value = para::ValueOf(record);
  char* at = value && *value ? record + (value - record) : nullptr;

  char *date, *time;
  if (!TakeItem(&at, &date) || !TakeItem(&at, &time)) return Invalid(2);
  if (fields.time) {
    int year, month, day, hour, minute, second;
    if (std::sscanf(date, "%d-%d-%d", &year, &month, &day) != 3 ||
        std::sscanf(time, "%d:%d:%d", &hour, &minute, &second) != 3)
      return Invalid(2);
    *fields.time = std::tm{};
    fields.time->tm_year = year < 70 ? year + 100 : year;
    fields.time->tm_mon = month;
    fields.time->tm_mday = day;
    fields.time->tm_hour = hour;
    fields.time->tm_min = minute;
    fields.time->tm_sec = second;
  }
  char *source, *subSource, *number, *count, *code, *eventName;
  if (!TakeItem(&at, &source)) return Invalid(3);
  if (!TakeItem(&at, &subSource)) return Invalid(4);
  if (!TakeItem(&at, &number)) return Invalid(5);
  if (!ReadNumberItem(number, "%x", fields.number)) return Invalid(6);
  if (!TakeItem(&at, &count)) return Invalid(7);
  if (!ReadNumberItem(count, "%hu", fields.count)) return Invalid(8);
  if (!TakeItem(&at, &code)) return Invalid(9);
  if (!ReadNumberItem(code, "%hx", fields.code)) return Invalid(10);
  if (!TakeItem(&at, &eventName)) return Invalid(11);
  if (fields.source) *fields.source = source;
  if (fields.subSource) *fields.subSource = subSource;
  if (fields.eventName) *fields.eventName = eventName;
  if (fields.rest) *fields.rest = at ? at : eventName + std::strlen(eventName);
  return 1;
}

void ReadMessageRecords(FILE* log, const std::function<void(const MessageRecord&)>& visit) {
  char line[1024];
  while (std::fgets(line, sizeof line, log)) {
    line[std::strcspn(line, "\r\n")] = '\0';
    MessageRecord r;
    if (ParseMessageRecord(line, {&r.eventId, &r.time, &r.eventName, &r.source, &r.subSource,
                                  &r.number, &r.count, &r.code, &r.rest}))
      visit(r);
  }
}

}  // namespace vl
