// vlsim: a fax server simulator for clients of the library.
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <sstream>
#include <string>

#include "lib/log_writer.h"
#include "platform/os.h"
#include "tools/vlsim/message_log_table.h"
#include "tools/vlsim/sample_tree.h"
#include "tools/vlsim/server_lock.h"
#include "tools/vlsim/simulator.h"

namespace {

const char kHelp[] =
    "vlsim - a fax server simulator for clients of Vlapi64.dll\n"
    "\n"
    "  vlsim --make-tree DIR [--users NAME,...] [--client-ini]\n"
    "      Creates a sample fax tree in DIR: SYSTEM (with V-DB\\SETUP.INI, USERLIST.INI,\n"
    "      coversheets and letterheads), SERVER (holding a copy of vlsim.exe, which\n"
    "      SETUP.INI names in its Sysman: line, so that VlxStartServer starts it),\n"
    "      REQUEST and USERS (default user JSMITH, account jsmith), and DIR\\VELOMAR.INI\n"
    "      naming them. SETUP.INI turns the daily message log on (LogKeepDays: 7).\n"
    "      --client-ini also writes the current user's VLCLIENT.INI naming the tree.\n"
    "\n"
    "  vlsim [--tree DIR] [--step] [--delay MS] [--poll MS] [--devices N]\n"
    "        [--fail NUMBER,...] [--links NAME,...] [--log FILE] [--deliver USER]\n"
    "        [[PARAGRAPH]]\n"
    "      Runs the server. It holds REQUEST\\VELOMAR.LOK while it runs, takes the\n"
    "      request files (*.CTL) from the request area and carries them out:\n"
    "        SEND      the message goes Wa (waiting), Se (sending, one step per\n"
    "                  addressee) and ends OK, or Fa when an addressee's number is\n"
    "                  a failing one; Accepted:, AddrStatus: and [HISTORY] lines\n"
    "                  (MessageID:, Tried:, SentOK:, SentEr:) are written back\n"
    "        HOLD, RELEASE, RUSH   hold (He), release, or move to the front\n"
    "        DELETE    aborts a queued message (Fa, addressees Ab), or removes a\n"
    "                  received one from V-IN\n"
    "        SHUTDOWN  releases the lock and exits; RESTART releases and retakes it\n"
    "      It writes SYSTEM\\V-DB\\STATUS.LOG (totals, devices, links) and the\n"
    "      coversheet and letterhead lists. Shared files are changed in place, as\n"
    "      the library changes them.\n"
    "\n"
    "      The areas come from DIR\\VELOMAR.INI with --tree, else from this machine's\n"
    "      configuration as the server finds it (the server's VELOMAR.INI, else the\n"
    "      user's VLCLIENT.INI); the log file, log level and message log from the\n"
    "      [OPTIONS] of SETUP.INI. Settings come from the Sim... lines of the [SERVER]\n"
    "      paragraph (or PARAGRAPH) of SETUP.INI, then from the options:\n"
    "        --delay MS      real-time mode: pause between two steps of a message\n"
    "                        (SimStepDelayMS:, default 1000)\n"
    "        --poll MS       how often the request area is read (SimPollMS:, 100)\n"
    "        --devices N     fax devices (SimDevices:, 2)\n"
    "        --fail LIST     fax numbers that fail (SimFailNumbers:)\n"
    "        --links LIST    remote servers shown as links (SimLinks:)\n"
    "        --log FILE      log file (default: LogFile: of SETUP.INI, else SERVER.LOG\n"
    "                        in SYSTEM\\V-DB)\n"
    "        --deliver USER  delivers a received fax to USER at start-up\n"
    "\n"
    "      --step runs the step mode for deterministic tests: commands are read\n"
    "      from standard input, one per line, each answered by one line:\n"
    "        take              take the waiting requests     -> \"took N\"\n"
    "        step              move every message one step   -> \"moved N\"\n"
    "        run               take and step until idle      -> \"idle\"\n"
    "        status            rewrite STATUS.LOG            -> \"ok\" or \"error N\"\n"
    "        deliver USER TEXT deliver a received fax        -> \"delivered BODY\"\n"
    "        quit              release the lock and exit     -> \"bye\"\n"
    "      Requests SHUTDOWN and RESTART are answered \"stopped\" and \"restarted\".\n"
    "\n"
    "  vlsim [--tree DIR] --message-log\n"
    "      Prints today's message-log records (SERVER\\V-DB\\V-yymmdd.LOG) as a table.\n";

struct Options {
  std::string tree, paragraph = "[SERVER]", logFile, deliver;
  std::string delay, poll, devices, fail, links;
  bool step = false;
  bool messageLog = false;
};

// Writes one line of the simulator's log through the log writer: notes at
// level 2, message events at level 3 with their message's fields for the
// day's message log, warnings at 4 and errors at 5.
void WriteLogEntry(const vlsim::LogEntry& entry) {
  using Kind = vlsim::LogEntry::Kind;
  vl::LogState& log = vl::Log();
  log.source = entry.user;
  log.subSource = entry.body;
  log.number = entry.addressee;
  log.count = entry.pages;
  log.code = entry.error;
  const int level = entry.kind == Kind::MessageEvent ? 3
                    : entry.kind == Kind::Warning    ? 4
                    : entry.kind == Kind::Error      ? vl::kLogError
                                                     : 2;
  vl::LogWrite(level, "%s", entry.text.c_str());
  log.source.clear();
  log.subSource.clear();
  log.number = 0;
  log.count = 0;
  log.code = 0;
}

void Note(const std::string& text) { WriteLogEntry({vlsim::LogEntry::Kind::Note, text}); }

int Usage(const char* problem) {
  std::fprintf(stderr, "vlsim: %s (vlsim --help explains the options)\n", problem);
  return 2;
}

int MakeTree(int argc, char** argv) {
  std::string root, users = "JSMITH";
  bool clientIni = false;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--make-tree" && i + 1 < argc) root = argv[++i];
    else if (arg == "--users" && i + 1 < argc) users = argv[++i];
    else if (arg == "--client-ini") clientIni = true;
    else return Usage(("unknown argument " + arg).c_str());
  }
  root = os::FullPath(root.c_str());
  std::vector<std::string> names = vlsim::SplitWords(users);
  for (std::string& name : names)
    for (char& c : name)
      if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  std::string problem = vlsim::MakeSampleTree(root, names);
  if (!problem.empty()) {
    std::fprintf(stderr, "vlsim: %s\n", problem.c_str());
    return 1;
  }
  std::printf("Sample fax tree: %s\n", root.c_str());
  if (clientIni) {
    std::string path = vlsim::WriteClientConfig(root);
    if (path.empty()) {
      std::fprintf(stderr, "vlsim: cannot write the client configuration file\n");
      return 1;
    }
    std::printf("Client configuration: %s\n", path.c_str());
  }
  return 0;
}

bool ParseOptions(int argc, char** argv, Options* options, std::string* problem) {
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    std::string* value = arg == "--tree"      ? &options->tree
                         : arg == "--delay"   ? &options->delay
                         : arg == "--poll"    ? &options->poll
                         : arg == "--devices" ? &options->devices
                         : arg == "--fail"    ? &options->fail
                         : arg == "--links"   ? &options->links
                         : arg == "--log"     ? &options->logFile
                         : arg == "--deliver" ? &options->deliver
                                              : nullptr;
    if (value) {
      if (i + 1 >= argc) {
        *problem = arg + " needs a value";
        return false;
      }
      *value = argv[++i];
    } else if (arg == "--step") {
      options->step = true;
    } else if (arg == "--message-log") {
      options->messageLog = true;
    } else if (arg.size() > 2 && arg.front() == '[' && arg.back() == ']') {
      options->paragraph = arg;
    } else {
      *problem = "unknown argument " + arg;
      return false;
    }
  }
  return true;
}

void ApplyOptions(const Options& options, vlsim::Settings* settings) {
  using vlsim::NumberIn;
  if (!options.delay.empty())
    settings->stepDelayMs = NumberIn(options.delay, 0, vlsim::kLongestPause, settings->stepDelayMs);
  if (!options.poll.empty())
    settings->pollMs = NumberIn(options.poll, 1, vlsim::kLongestPause, settings->pollMs);
  if (!options.devices.empty())
    settings->devices = NumberIn(options.devices, 1, vlsim::kMostDevices, settings->devices);
  if (!options.fail.empty()) settings->failNumbers = vlsim::SplitWords(options.fail);
  if (!options.links.empty()) settings->links = vlsim::SplitWords(options.links);
}

// Carries out SHUTDOWN and RESTART requests; false once the server stops.
bool ServeSystemRequests(vlsim::Simulator& server, vlsim::ServerLock& lock) {
  if (server.stopRequested()) return false;
  if (server.restartRequested()) {
    server.ClearRestart();
    lock.Release();
    Note("Restarting");
    os::SleepMilliseconds(200);
    if (int error = lock.Acquire()) {
      WriteLogEntry({vlsim::LogEntry::Kind::Error,
                     "Cannot take the lock again (error " + std::to_string(error) + ")"});
      return false;
    }
  }
  return true;
}

void RunRealTime(vlsim::Simulator& server, vlsim::ServerLock& lock, int pollMs) {
  for (;;) {
    int changed = server.TakeRequests();
    if (!ServeSystemRequests(server, lock)) return;
    changed += server.Step(true);
    if (changed) server.WriteStatus();
    os::SleepMilliseconds(pollMs);
  }
}

void RunStepMode(vlsim::Simulator& server, vlsim::ServerLock& lock) {
  std::string line;
  auto answer = [](const std::string& text) {
    std::printf("%s\n", text.c_str());
    std::fflush(stdout);
  };
  while (std::getline(std::cin, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    std::istringstream words(line);
    std::string command;
    words >> command;
    if (command == "take") {
      answer("took " + std::to_string(server.TakeRequests()));
    } else if (command == "step") {
      answer("moved " + std::to_string(server.Step(false)));
    } else if (command == "run") {
      do server.TakeRequests();
      while (server.Step(false) > 0 || !server.Idle());
      answer("idle");
    } else if (command == "status") {
      int error = server.WriteStatus();
      answer(error ? "error " + std::to_string(error) : "ok");
    } else if (command == "deliver") {
      std::string user, subject;
      words >> user;
      std::getline(words >> std::ws, subject);
      answer("delivered " + server.Deliver(user, subject));
    } else if (command == "quit") {
      break;
    } else if (!command.empty()) {
      answer("unknown command " + command);
    }
    const bool restart = server.restartRequested();
    if (!ServeSystemRequests(server, lock)) {
      answer("stopped");
      return;
    }
    if (restart) answer("restarted");
  }
  answer("bye");
}

}  // namespace

int main(int argc, char** argv) {
  for (int i = 1; i < argc; ++i) {
    if (!std::strcmp(argv[i], "--help") || !std::strcmp(argv[i], "-h")) {
      std::fputs(kHelp, stdout);
      return 0;
    }
    if (!std::strcmp(argv[i], "--make-tree")) return MakeTree(argc, argv);
  }
  Options options;
  std::string problem;
  if (!ParseOptions(argc, argv, &options, &problem)) return Usage(problem.c_str());

  vl::LogInit(stderr, nullptr, 2, "VLSIM");
  vlsim::Settings settings;
  if (int rc = vlsim::ReadServerAreas(options.tree, &settings.areas)) {
    std::fprintf(stderr, "vlsim: no fax tree configured (0x%04X)\n", static_cast<unsigned>(rc));
    return 1;
  }
  if (!options.logFile.empty()) vl::Log().fileName = os::FullPath(options.logFile.c_str());
  if (options.messageLog) return vlsim::PrintMessageLog(stdout);
  for (char& c : options.paragraph)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  vlsim::ReadSetupSettings(options.paragraph, &settings);
  ApplyOptions(options, &settings);

  vlsim::ServerLock lock(settings.areas.request);
  if (int error = lock.Acquire()) {
    WriteLogEntry({vlsim::LogEntry::Kind::Error,
                   "Cannot take " + settings.areas.request + "VELOMAR.LOK (error " +
                       std::to_string(error) + "): is another server running?"});
    return 1;
  }
  Note("Started on " + settings.areas.request + " with " + std::to_string(settings.devices) +
       " device(s), " + (options.step ? std::string("step mode")
                                      : std::to_string(settings.stepDelayMs) + " ms a step"));
  vlsim::Simulator server(settings, WriteLogEntry);
  server.WriteLists();
  server.WriteStatus();
  if (!options.deliver.empty()) server.Deliver(options.deliver, "Welcome to the fax simulator");
  if (options.step)
    RunStepMode(server, lock);
  else
    RunRealTime(server, lock, settings.pollMs);
  lock.Release();
  Note("Stopped");
  return 0;
}
