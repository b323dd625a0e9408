// The server side's readers under arbitrary files and records: the server
// configuration reader on a configuration and a setup file, and the
// message-log record parser.
// Input: VELOMAR.INI, "====", SETUP.INI, "====", message-log records, one a line.
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "lib/log_writer.h"
#include "lib/message_log.h"
#include "lib/server_config.h"
#include "platform/fault.h"
#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vlfuzz::ResetProcess();
  vl::Log() = vl::LogState{};
  vl::ServerSettings() = vl::ServerConfig{};
  static std::vector<std::string> events;
  events.clear();
  os::fault::RecordEventLog(&events);  // severe lines never reach a real event log
  const std::vector<std::string> sections = vlfuzz::Sections(data, size, 3);
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  vlfuzz::WriteFile(tree.root + "VELOMAR.INI", sections[0]);
  vlfuzz::WriteFile(tree.System() + "V-DB\\SETUP.INI", sections[1]);

  FILE* setup = nullptr;
  const int rc = vl::ReadServerConfigFrom(tree.root + "VELOMAR.INI", &setup);
  vlfuzz::Require(rc == 0 || rc == 0xF018 || rc == 0xF019 || rc == 0xF00C || rc == 0xF025 ||
                      rc == 0xF026,
                  "the configuration reader returns one of its codes");
  vlfuzz::Require((rc == 0) == (setup != nullptr), "the setup file is handed over on success");
  if (setup) std::fclose(setup);
  vlfuzz::Require(vl::Log().fileName.size() <= vl::kLogFileNameChars, "the log file name fits");
  vl::Log().fileName.clear();  // the parser's lines would grow the log file run after run

  // Each record as its own exactly sized text, so that reading past its end shows.
  const std::string& records = sections[2];
  for (size_t start = 0; start <= records.size();) {
    size_t end = records.find('\n', start);
    if (end == std::string::npos) end = records.size();
    std::vector<char> record(records.begin() + start, records.begin() + end);
    record.push_back('\0');
    uint16_t id, count, code;
    uint32_t number;
    std::tm time;
    char *name, *source, *subSource, *rest;
    const int parsed = vl::ParseMessageRecord(
        record.data(), {&id, &time, &name, &source, &subSource, &number, &count, &code, &rest});
    vlfuzz::Require(parsed == 0 || parsed == 1, "the record parser returns 0 or 1");
    start = end + 1;
  }
  os::fault::RecordEventLog(nullptr);
  return 0;
}
