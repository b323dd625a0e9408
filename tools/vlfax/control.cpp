// hold, release, rush, abort and delete: requests about queued messages.
#include <iostream>

#include "commands.h"
#include "errors.h"

namespace vlfax {
namespace {

struct ControlOptions {
  std::vector<std::string> bodies;
  bool in = false;
};

using RequestFn = VLRESULT (*)(VLHANDLE handle, uint16_t directory, const char* body);

struct Verb {
  const char* name;
  const char* help;
  const char* doing;  // for messages: "holding" ...
  const char* done;   // for the confirmation line: "held" ...
  RequestFn request;
};

constexpr Verb kVerbs[] = {
    {"hold", "hold queued messages", "holding", "held",
     [](VLHANDLE h, uint16_t d, const char* b) { return VlxHoldMsgEx(h, d, b, nullptr); }},
    {"release", "release held messages", "releasing", "released",
     [](VLHANDLE h, uint16_t d, const char* b) { return VlxReleaseMsgEx(h, d, b, nullptr); }},
    {"rush", "send queued messages at once", "rushing", "rushed",
     [](VLHANDLE h, uint16_t d, const char* b) { return VlxRushMsgEx(h, d, b, nullptr); }},
    {"abort", "abort messages", "aborting", "aborted",
     [](VLHANDLE h, uint16_t d, const char* b) { return VlxAbortMsgEx(h, d, b, nullptr); }},
    {"delete", "delete completed messages and their files", "deleting", "deleted",
     [](VLHANDLE h, uint16_t d, const char* b) { return VlxDeleteMsg(h, d, b, 1); }},
};

// Carries out the request for every body in turn; all names are checked
// before the first call. Stops at the first failure.
int RunControl(const Globals& globals, const Verb& verb, const ControlOptions& options) {
  for (const std::string& body : options.bodies) CheckBodyName(body);
  uint16_t directory = options.in ? VL_DIR_IN : VL_DIR_OUT;
  auto session = OpenSession(globals);
  for (const std::string& body : options.bodies) {
    Check(verb.request(session->handle(), directory, body.c_str()),
          std::string(verb.doing) + " " + body);
    std::cout << body << " " << verb.done << "\n";
  }
  return kExitOk;
}

}  // namespace

void AddControlCommands(CLI::App& app, const Globals& globals, Action& action) {
  for (const Verb& verb : kVerbs) {
    auto options = std::make_shared<ControlOptions>();
    CLI::App* command = app.add_subcommand(verb.name, verb.help);
    command->add_option("BODY", options->bodies, "body names of the messages")->required();
    command->add_flag("--in", options->in, "the messages are in the in directory");
    command->callback([&globals, &action, &verb, options] {
      action = [&globals, &verb, options] { return RunControl(globals, verb, *options); };
    });
  }
}

}  // namespace vlfax
