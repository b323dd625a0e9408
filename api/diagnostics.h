// The trace log "VLAPI.LOG" and the error report to a session's callback.
#pragma once

#include <cstdarg>
#include <string>

#include "api/session.h"

#ifdef __clang__
#define VL_PRINTF(fmt, args) __attribute__((format(printf, fmt, args)))
#else
#define VL_PRINTF(fmt, args) __attribute__((format(gnu_printf, fmt, args)))
#endif

namespace vl {

// Formats text as printf does, the conversion "%Fs" printing as "%s".
std::string FormatApiText(const char* format, va_list args);

// Whether trace lines are written: the trace switch, else the mail setting
// for the mail application, else the "Trace:" setting.
bool TraceEnabled();

// Appends one line to the trace log when tracing is on, carrying the value
// of the session's handle (0 for none). Never fails visibly.
void ApiTrace(const ApiSession* session, const char* format, ...) VL_PRINTF(2, 3);
void ApiTraceHandle(VLHANDLE handle, const char* format, ...) VL_PRINTF(2, 3);

// Formats a failure text (cut to 511 characters), traces it and hands it to
// the session's error callback.
void ApiReportError(const ApiSession* session, const char* format, ...) VL_PRINTF(2, 3);

// Reports text as it stands (it is not a format) and returns code.
VLRESULT ReportFailure(const ApiSession* session, VLRESULT code, const char* text);

// The one text reported for a missing pointer argument.
void ReportNullArgument(const ApiSession* session, const char* argument);

// The trace file's path: the API temporary directory, else the system
// temporary directory (fetched once), with "VLAPI.LOG" appended.
std::string TraceFilePath();

}  // namespace vl
