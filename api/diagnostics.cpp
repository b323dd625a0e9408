#include "api/diagnostics.h"

#include <cstdio>
#include <cstring>

#include "api/process_state.h"
#include "api/text.h"
#include "paragraph/open_shared.h"
#include "platform/os.h"

namespace vl {
namespace {

inline constexpr int kReportSize = 512;
inline constexpr int16_t kTraceRetrySeconds = 1;

// Drops the 'F' of each "%Fs" conversion; every other character is kept.
std::string PlainFormat(const char* format) {
  std::string plain;
  for (const char* p = format; *p; ++p) {
    plain.push_back(*p);
    if (*p != '%') continue;
    if (p[1] == '%') {
      plain.push_back(*++p);
      continue;
    }
    while (p[1] && std::strchr("-+ #0123456789.*lhLqjzt", p[1])) plain.push_back(*++p);
    if (p[1] == 'F' && p[2] == 's') ++p;
  }
  return plain;
}

void WriteTraceLine(VLHANDLE handle, const std::string& text) {
  os::LocalTime t = os::Now();
  char prefix[96];
  std::snprintf(prefix, sizeof prefix,
                "%.2d-%.2d-%.2d %.2d:%.2d:%.2d  (P=%.8lx,T=%.8lx,S=%.8lx)  ", t.year % 100,
                t.month, t.day, t.hour, t.minute, t.second,
                static_cast<unsigned long>(os::ProcessId()),
                static_cast<unsigned long>(os::ThreadId()), static_cast<unsigned long>(handle));
  std::string line = prefix + text + "\r\n";
  para::Opened log = para::OpenShared(kTraceRetrySeconds, TraceFilePath().c_str(), "ab");
  if (!log) return;
  std::fwrite(line.data(), 1, line.size(), log.get());
}

}  // namespace

std::string FormatApiText(const char* format, va_list args) {
  std::string plain = PlainFormat(format);
  va_list copy;
  va_copy(copy, args);
  char small[512];
  int needed = std::vsnprintf(small, sizeof small, plain.c_str(), copy);
  va_end(copy);
  if (needed < 0) return std::string();
  if (static_cast<size_t>(needed) < sizeof small) return std::string(small, needed);
  std::string text(static_cast<size_t>(needed) + 1, '\0');
  std::vsnprintf(text.data(), text.size(), plain.c_str(), args);
  text.resize(static_cast<size_t>(needed));
  return text;
}

bool TraceEnabled() {
  const ProcessState& p = Process();
  if (p.traceSwitch) return true;
  return p.applicationId == kMailApplicationId ? p.mailTraceSetting != 0 : p.traceSetting != 0;
}

std::string TraceFilePath() {
  const char* directory = Process().apiTempDirectory;
  if (!*directory) {
    // The system temporary directory, fetched on first use and kept.
    static const std::string temp = [] {
      std::string fetched;
      char bounded[257] = {};
      if (os::TempDirectory(&fetched) == os::kOk) CopyBounded(bounded, fetched);
      return std::string(bounded);
    }();
    directory = temp.c_str();
  }
  return std::string(directory) + "VLAPI.LOG";
}

void ApiTrace(const ApiSession* session, const char* format, ...) {
  if (!TraceEnabled()) return;
  va_list args;
  va_start(args, format);
  std::string text = FormatApiText(format, args);
  va_end(args);
  WriteTraceLine(session ? session->handle : 0, text);
}

void ApiTraceHandle(VLHANDLE handle, const char* format, ...) {
  if (!TraceEnabled()) return;
  va_list args;
  va_start(args, format);
  std::string text = FormatApiText(format, args);
  va_end(args);
  WriteTraceLine(handle, text);
}

void ApiReportError(const ApiSession* session, const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::string text = FormatApiText(format, args);
  va_end(args);
  if (text.size() > kReportSize - 1) text.resize(kReportSize - 1);
  ApiTrace(session, "%s", text.c_str());
  if (session && session->errorCallback) session->errorCallback(text.c_str());
}

VLRESULT ReportFailure(const ApiSession* session, VLRESULT code, const char* text) {
  ApiReportError(session, "%s", text);
  return code;
}

void ReportNullArgument(const ApiSession* session, const char* argument) {
  ApiReportError(session, "Invalid parameter supplied to API: %s is NULL", argument);
}

}  // namespace vl
