// servers and --server: the fax servers of the directory service, reached
// through the automation root object of the Vlapi64.dll loaded in this
// process.
#include <iostream>

#include "automation_client.h"
#include "commands.h"
#include "errors.h"
#include "output.h"

namespace vlfax {
namespace {

struct ServersOptions {
  bool json = false;
};

int RunServers(const Globals& globals, const ServersOptions& options) {
  if (globals.trace) Check(VlxEscape(0, "TRACE", 1), "turning the trace on");
  const std::string what = "listing the servers of the directory service";
  Variant result = RootObject(what).Invoke("GetVelomarServersFromAD");
  std::vector<std::string> names = ArrayStrings(*result, what);
  if (options.json) {
    PrintJson(Json(names));
  } else {
    for (const auto& name : names) std::cout << name << "\n";
  }
  return kExitOk;
}

}  // namespace

void SelectServer(const std::string& name) {
  RootObject("selecting server " + name).Invoke("SetVelomarServerFromAD", {name});
}

void AddServersCommand(CLI::App& app, const Globals& globals, Action& action) {
  auto options = std::make_shared<ServersOptions>();
  CLI::App* command =
      app.add_subcommand("servers", "list the fax servers registered in the directory service");
  command->add_flag("--json", options->json, "JSON output");
  command->callback([&globals, &action, options] {
    action = [&globals, options] { return RunServers(globals, *options); };
  });
}

}  // namespace vlfax
