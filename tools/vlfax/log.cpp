// vlfax log: the server's message log of one day, found through the server
// configuration and read record by record with the logging library.
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>

#include "commands.h"
#include "errors.h"
#include "lib/message_log.h"
#include "lib/server_config.h"
#include "output.h"
#include "paragraph/open_shared.h"

namespace vlfax {
namespace {

struct LogOptions {
  std::string date;  // YYYY-MM-DD; empty: today
  bool json = false;
  bool csv = false;
};

os::LocalTime DayOf(const std::string& date) {
  if (date.empty()) return os::Now();
  os::LocalTime day;
  std::tm check{};
  char end = 0;
  if (std::sscanf(date.c_str(), "%4d-%2d-%2d%c", &day.year, &day.month, &day.day, &end) != 3)
    throw UsageError("--date '" + date + "' is not YYYY-MM-DD");
  check.tm_year = day.year - 1900;
  check.tm_mon = day.month - 1;
  check.tm_mday = day.day;
  check.tm_hour = 12;
  std::tm normal = check;
  if (std::mktime(&normal) == -1 || normal.tm_mday != check.tm_mday ||
      normal.tm_mon != check.tm_mon)
    throw UsageError("--date '" + date + "' is not a day of the calendar");
  return day;
}

int RunLog(const LogOptions& options) {
  const os::LocalTime day = DayOf(options.date);
  if (int rc = vl::ReadServerConfig())
    throw SystemError("reading the server configuration", static_cast<unsigned long>(rc));
  const std::string path = vl::MessageLogPath(day);
  para::Opened file = para::OpenShared(15, path.c_str(), "rt");
  if (!file) throw SystemError("opening " + path, static_cast<unsigned long>(file.error));
  Table table{{"TIME", "EVENT", "SOURCE", "MESSAGE", "ADDR", "PAGES", "CODE", "TEXT"},
              {"time", "event", "source", "message", "addressee", "pages", "code", "text"},
              {}};
  vl::ReadMessageRecords(file.get(), [&](const vl::MessageRecord& r) {
    char stamp[32], hex[8];
    std::snprintf(stamp, sizeof stamp, "%04d-%02d-%02d %02d:%02d:%02d", r.time.tm_year + 1900,
                  r.time.tm_mon, r.time.tm_mday, r.time.tm_hour, r.time.tm_min, r.time.tm_sec);
    std::snprintf(hex, sizeof hex, "%04X", static_cast<unsigned>(r.code));
    table.rows.push_back({stamp, r.eventName, r.source, r.subSource, std::to_string(r.number),
                          std::to_string(r.count), hex, r.rest});
  });
  PrintTable(table, options.json ? Format::kJson : options.csv ? Format::kCsv : Format::kText);
  return kExitOk;
}

}  // namespace

void AddLogCommand(CLI::App& app, const Globals&, Action& action) {
  auto options = std::make_shared<LogOptions>();
  CLI::App* command = app.add_subcommand("log", "the server's message log of a day");
  command->add_option("--date", options->date, "the day, YYYY-MM-DD (default: today)");
  auto* json = command->add_flag("--json", options->json, "JSON output");
  auto* csv = command->add_flag("--csv", options->csv, "CSV output");
  json->excludes(csv);
  command->callback([&action, options] { action = [options] { return RunLog(*options); }; });
}

}  // namespace vlfax
