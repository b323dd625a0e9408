// The daily message log: one record per event in "V-yymmdd.LOG" of the
// server area's "V-DB\", and the parser that splits a record back.
#pragma once

#include <cstdint>
#include <cstdio>
#include <functional>
#include <ctime>
#include <string>

#include "platform/os.h"

namespace vl {

// The message log of day's date: "V-yymmdd.LOG" in the server area's
// "V-DB\" (in the current directory's "V-DB\" while no server area is
// known).
std::string MessageLogPath(const os::LocalTime& day);

// Appends one record: identifier, time stamp, source (10 characters),
// sub-source (8), number, count, code, event name and, when extraFormat is
// not empty, "," and the extra text.
void WriteMessageLogRecord(uint16_t eventId, const char* eventName, const char* source,
                           const char* subSource, uint32_t number, int16_t count, uint16_t code,
                           const char* extraFormat, ...) __attribute__((format(printf, 8, 9)));

// The fields of a record, each asked for or not (null). Text fields point
// into the record, which is cut in place.
struct MessageRecordFields {
  uint16_t* eventId = nullptr;
  std::tm* time = nullptr;  // year counts from 1900, month 1 to 12
  char** eventName = nullptr;
  char** source = nullptr;
  char** subSource = nullptr;
  uint32_t* number = nullptr;
  uint16_t* count = nullptr;
  uint16_t* code = nullptr;
  char** rest = nullptr;
};

// 1 for a valid record, 0 otherwise (with "Invalid message line (n)"
// logged at level 2, never as a record of its own).
int ParseMessageRecord(char* record, const MessageRecordFields& fields);

// Every field of one record; the texts point into the line read.
struct MessageRecord {
  uint16_t eventId = 0, count = 0, code = 0;
  uint32_t number = 0;
  std::tm time{};
  char *eventName = nullptr, *source = nullptr, *subSource = nullptr, *rest = nullptr;
};

// Reads an open message log line by line and hands each valid record to
// visit; invalid lines are passed over.
void ReadMessageRecords(FILE* log, const std::function<void(const MessageRecord&)>& visit);

}  // namespace vl
