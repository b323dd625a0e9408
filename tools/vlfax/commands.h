// The subcommands of vlfax. Each Add function registers its subcommand on
// the app; when the subcommand is chosen, parsing stores in action the work
// to run, which returns the exit code or throws (errors.h).
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <CLI/CLI.hpp>

#include "session.h"
#include "vlapi.h"

namespace vlfax {

// Options that apply to every subcommand.
struct Globals {
  std::string user;
  std::string server;  // a server found in the directory service, or empty
  bool trace = false;
};

using Action = std::function<int()>;

void AddSendCommand(CLI::App& app, const Globals& globals, Action& action);
void AddListingCommands(CLI::App& app, const Globals& globals, Action& action);
void AddControlCommands(CLI::App& app, const Globals& globals, Action& action);
void AddServerCommand(CLI::App& app, const Globals& globals, Action& action);
void AddWatchCommand(CLI::App& app, const Globals& globals, Action& action);
void AddLogCommand(CLI::App& app, const Globals& globals, Action& action);
void AddServersCommand(CLI::App& app, const Globals& globals, Action& action);

// Makes the server called name, found in the directory service, the one
// every later log-on of the process uses (through the automation root
// object, which shares this process's copy of the library).
void SelectServer(const std::string& name);

// Turns the library's trace on when asked, then logs the user on.
std::unique_ptr<Session> OpenSession(const Globals& globals);

// Throws UsageError unless body is a body name of 1 to 8 characters.
void CheckBodyName(const std::string& body);

// Every entry of a directory's list: the count first, then all entries.
std::vector<VLMSGINFOEX> ReadList(VLHANDLE handle, uint16_t directory);

// The history of a message, all events including routing ones.
std::vector<VLMSGHISTORYEX> ReadHistory(VLHANDLE handle, uint16_t directory,
                                        const std::string& body);

// One line describing a history event.
std::string EventLine(const VLMSGHISTORYEX& event);

}  // namespace vlfax
