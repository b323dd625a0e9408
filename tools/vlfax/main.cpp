// vlfax: sends faxes and looks after messages and the fax server through
// Vlapi64.dll.
#include <iostream>

#include <CLI/CLI.hpp>

#include "commands.h"
#include "errors.h"

namespace vlfax {

std::unique_ptr<Session> OpenSession(const Globals& globals) {
  if (globals.trace) Check(VlxEscape(0, "TRACE", 1), "turning the trace on");
  if (!globals.server.empty()) SelectServer(globals.server);
  return std::make_unique<Session>(globals.user);
}

void CheckBodyName(const std::string& body) {
  if (body.empty() || body.size() > 8)
    throw UsageError("body name '" + body + "' invalid: 1 to 8 characters");
}

namespace {

// Prints why the command line is wrong and the usage of the deepest
// subcommand that was named; returns the usage exit code.
int Usage(CLI::App& app, const std::string& why) {
  std::cerr << "vlfax: " << why << "\n";
  CLI::App* chosen = &app;
  while (!chosen->get_subcommands().empty()) chosen = chosen->get_subcommands().front();
  std::cerr << chosen->help();
  return kExitUsage;
}

int Run(int argc, char** argv) {
  Globals globals;
  Action action;
  CLI::App app{"vlfax - send faxes and manage messages and the fax server", "vlfax"};
  app.require_subcommand(1);
  app.footer(
      "Exit codes:\n"
      "  0   success\n"
      "  1   failure reported by the library or the system\n"
      "  2   send --wait: the message failed\n"
      "  64  usage error\n");
  app.add_option("--user", globals.user,
                 "fax user or Windows account to log on as (default: the current account)");
  app.add_option("--server", globals.server,
                 "log on to this fax server, found in the directory service");
  app.add_flag("--trace", globals.trace, "write the library's trace");

  AddSendCommand(app, globals, action);
  AddListingCommands(app, globals, action);
  AddControlCommands(app, globals, action);
  AddServerCommand(app, globals, action);
  AddWatchCommand(app, globals, action);
  AddLogCommand(app, globals, action);
  AddServersCommand(app, globals, action);

  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    // --help is a parse "error" of exit code 0: CLI11 prints the help.
    if (e.get_exit_code() == 0) return app.exit(e);
    return Usage(app, e.what());
  }
  if (globals.user.empty()) globals.user = CurrentAccount();
  try {
    return action ? action() : kExitUsage;
  } catch (const UsageError& e) {
    return Usage(app, e.what());
  } catch (const std::exception& e) {
    std::cerr << "vlfax: " << e.what() << "\n";
    return kExitFailure;
  }
}

}  // namespace
}  // namespace vlfax

int main(int argc, char** argv) {
  std::ios::sync_with_stdio(true);
  return vlfax::Run(argc, argv);
}
