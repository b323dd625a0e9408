// The one rule for message body names, shared by every function that takes
// a body name and by the reader of the message list's "File:" values: a
// name that passes it is written and read back unchanged.
#pragma once

#include <cstddef>

#include "api/session.h"
#include "vlapi.h"

namespace vl {

inline constexpr size_t kMaxBodyChars = 8;

enum class BodyNameFault {
  None,
  Length,        // empty or longer than 8 characters
  Character,     // a character no file name can hold, one the line reader blanks, or '.',
                 // which would begin the extension
  LeadingBlank,  // lost when the name is read back as a keyword value
  Reserved,      // "MSGDIR", the name of the list itself
};

// Checks the length characters at name against the rule.
BodyNameFault BodyNameFaultOf(const char* name, size_t length);

// The argument check of functions that take a body name: reports its text
// and returns 0xF700, or returns 0. The reserved name is left to
// CheckNotReserved, which each function makes at its own point.
VLRESULT CheckBodyName(const ApiSession& session, const char* body);
// The same for a record's Body field, which may lack its terminator,
// refusing the reserved name too.
VLRESULT CheckRecordBody(const ApiSession& session, const char (&body)[kMaxBodyChars + 1]);

// Whether path names a message list or its work file, which no caller's
// control or data file may replace.
bool NamesListFile(const char* path);

}  // namespace vl
