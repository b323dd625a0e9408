#include "tools/vlsim/message_log_table.h"

#include <cstring>
#include <ctime>
#include <string>

#include "lib/message_log.h"
#include "paragraph/open_shared.h"
#include "platform/os.h"

namespace vlsim {
namespace {

// The log line a record carries, without its quotes and its head up to the
// level letter ("... - (I) - ").
const char* LogText(char* rest) {
  size_t length = std::strlen(rest);
  if (length >= 2 && rest[0] == '"' && rest[length - 1] == '"') {
    rest[length - 1] = '\0';
    ++rest;
  }
  const char* text = std::strstr(rest, ") - ");
  return text ? text + 4 : rest;
}

}  // namespace

int PrintMessageLog(FILE* out) {
  const std::string path = vl::MessageLogPath(os::Now());
  para::Opened file = para::OpenShared(15, path.c_str(), "rt");
  if (!file) {
    std::fprintf(out, "No message log %s (error %d)\n", path.c_str(), file.error);
    return 1;
  }
  std::fprintf(out, "Message log %s\n%-8s  %-13s  %-8s  %-8s  %4s  %5s  %4s  %s\n", path.c_str(),
               "time", "event", "source", "message", "addr", "pages", "code", "text");
  vl::ReadMessageRecords(file.get(), [&](const vl::MessageRecord& r) {
    std::fprintf(out, "%.2d:%.2d:%.2d  %-13s  %-8s  %-8s  %4u  %5u  %.4X  %s\n", r.time.tm_hour,
                 r.time.tm_min, r.time.tm_sec, r.eventName, r.source, r.subSource,
                 static_cast<unsigned>(r.number), static_cast<unsigned>(r.count),
                 static_cast<unsigned>(r.code), LogText(r.rest));
  });
  return 0;
}

}  // namespace vlsim
