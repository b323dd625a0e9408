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
  char line[1024];
  while (std::fgets(line, sizeof line, file.get())) {
    line[std::strcspn(line, "\r\n")] = '\0';
    uint16_t id = 0, count = 0, code = 0;
    uint32_t number = 0;
    std::tm time{};
    char *event, *source, *subSource, *rest;
    if (!vl::ParseMessageRecord(line, {&id, &time, &event, &source, &subSource, &number, &count,
                                       &code, &rest}))
      continue;
    std::fprintf(out, "%.2d:%.2d:%.2d  %-13s  %-8s  %-8s  %4u  %5u  %.4X  %s\n", time.tm_hour,
                 time.tm_min, time.tm_sec, event, source, subSource,
                 static_cast<unsigned>(number), static_cast<unsigned>(count),
                 static_cast<unsigned>(code), LogText(rest));
  }
  return 0;
}

}  // namespace vlsim
