// server check|start|stop|restart|status: the fax server's liveness, its
// control and its status.
#include <windows.h>

#include <cstring>
#include <iostream>

#include "commands.h"
#include "errors.h"
#include "output.h"

namespace vlfax {
namespace {

constexpr DWORD kServerWaitMs = 30000;  // for the server to come up or go down
constexpr DWORD kServerPollMs = 100;
constexpr int16_t kNameEntrySize = 10;  // one coversheet or letterhead name

struct ServerOptions {
  bool json = false;
};

// True when the server runs; throws for results other than "not running".
bool Running(VLHANDLE handle) {
  VLRESULT rc = VlxCheckServer(handle);
  if (rc == VL_OK) return true;
  if (rc == VL_E_SERVER_NOT_RUNNING) return false;
  throw LibraryError("checking the server", rc);
}

// Polls until the server's state is the one wanted; throws after the wait.
void WaitFor(VLHANDLE handle, bool running) {
  DWORD start = GetTickCount();
  while (Running(handle) != running) {
    if (GetTickCount() - start >= kServerWaitMs)
      throw LibraryError(
          running ? "waiting for the server to start" : "waiting for the server to stop",
          running ? VL_E_SERVER_NOT_RUNNING : VL_E_SERVER_RUNNING);
    Sleep(kServerPollMs);
  }
}

// The server's status as the library reads it: totals, devices, links,
// coversheet and letterhead names.
struct ServerStatus {
  VLSERVERINFOEX totals{};
  std::vector<VLDEVICEINFOEX> devices;
  std::vector<VLLINKINFOEX> links;
  std::vector<std::string> coversheets;
  std::vector<std::string> letterheads;
};

std::vector<std::string> Names(const std::vector<char>& entries, uint16_t count) {
  std::vector<std::string> names;
  for (size_t i = 0; i < count && (i + 1) * kNameEntrySize <= entries.size(); ++i) {
    const char* entry = &entries[i * kNameEntrySize];
    names.emplace_back(entry, strnlen(entry, kNameEntrySize));
  }
  return names;
}

// A first call learns the counts; the second fills arrays of those sizes.
ServerStatus ReadStatus(VLHANDLE handle) {
  uint16_t deviceCount = 0, linkCount = 0, coversheetCount = 0, letterheadCount = 0;
  ServerStatus status;
  std::vector<char> coversheets, letterheads;
  for (int pass = 0; pass < 2; ++pass) {
    status.devices.resize(deviceCount);
    status.links.resize(linkCount);
    coversheets.assign(static_cast<size_t>(coversheetCount) * kNameEntrySize, '\0');
    letterheads.assign(static_cast<size_t>(letterheadCount) * kNameEntrySize, '\0');
    VLSERVERSTATUSEX block{};
    block.ServerInfoSize = sizeof status.totals;
    block.ServerInfo = &status.totals;
    block.MaxDevices = static_cast<int16_t>(status.devices.size());
    block.DeviceCount = &deviceCount;
    block.DeviceInfoSize = sizeof(VLDEVICEINFOEX);
    block.Devices = status.devices.empty() ? nullptr : status.devices.data();
    block.MaxLinks = static_cast<int16_t>(status.links.size());
    block.LinkCount = &linkCount;
    block.LinkInfoSize = sizeof(VLLINKINFOEX);
    block.Links = status.links.empty() ? nullptr : status.links.data();
    block.MaxCoversheets = static_cast<int16_t>(coversheetCount);
    block.CoversheetCount = &coversheetCount;
    block.CoversheetEntrySize = kNameEntrySize;
    block.Coversheets = coversheets.empty() ? nullptr : coversheets.data();
    block.MaxLetterheads = static_cast<int16_t>(letterheadCount);
    block.LetterheadCount = &letterheadCount;
    block.LetterheadEntrySize = kNameEntrySize;
    block.Letterheads = letterheads.empty() ? nullptr : letterheads.data();
    Check(VlxGetServerStatusEx(handle, sizeof block, &block), "reading the server status");
  }
  // Counts may have grown between the calls; only what was stored is kept.
  status.devices.resize(std::min<size_t>(deviceCount, status.devices.size()));
  status.links.resize(std::min<size_t>(linkCount, status.links.size()));
  status.coversheets = Names(coversheets, coversheetCount);
  status.letterheads = Names(letterheads, letterheadCount);
  return status;
}

const char* Tristate(int value, const char* yes, const char* no) {
  return value < 0 ? "unknown" : value ? yes : no;
}

void PrintStatusText(const ServerStatus& s) {
  const VLSERVERINFOEX& t = s.totals;
  std::cout << "Queue: deferred " << t.Deferred << ", waiting to resend " << t.WaitingResend
            << ", waiting to convert " << t.WaitingConvert << ", converting " << t.Converting
            << ", waiting for a device " << t.WaitingDevice << ", sending " << t.Sending
            << ", scanning " << t.Scanning << ", router submissions " << t.RouterSub
            << ", remote accepts " << t.RemoteAccept << "\n\n";
  Table devices{
      {"DEVICE", "STATUS", "USER", "MESSAGE", "PAGES", "CONNECT FAILS", "SEND FAILS", "SENT OK"},
      {},
      {}};
  for (const auto& d : s.devices)
    devices.rows.push_back(
        {Field(d.Name), DeviceStatusWord(d.Status), Field(d.User), Field(d.Message),
         std::to_string(d.CurrentPage) + "/" + std::to_string(d.TotalPages),
         std::to_string(d.ConnectFails), std::to_string(d.SendFails), std::to_string(d.SentOK)});
  PrintTable(devices, Format::kText);
  if (!s.links.empty()) {
    std::cout << "\n";
    Table links{{"LINK", "REMOTE", "LOCAL", "CONNECTION", "ACTIVE", "SENT OK", "TIMED OUT",
                 "REJECTED", "DEVICE ERR", "REMOTE ERR", "UNACK", "ACK", "RECEIVED"},
                {},
                {}};
    for (const auto& l : s.links)
      links.rows.push_back(
          {Field(l.RemoteServer), LinkStatusWord(l.RemoteLinkStatus),
           LinkStatusWord(l.LocalLinkStatus), Tristate(l.ConnectionStatus, "OK", "down"),
           Tristate(l.LinkActive, "active", "idle"), std::to_string(l.SentOK),
           std::to_string(l.TimedOut), std::to_string(l.Rejected), std::to_string(l.DeviceError),
           std::to_string(l.RemoteServerError), std::to_string(l.Unacknowledged),
           std::to_string(l.Acknowledged), std::to_string(l.Received)});
    PrintTable(links, Format::kText);
  }
  auto names = [](const char* title, const std::vector<std::string>& list) {
    std::cout << title << " (" << list.size() << "):";
    for (const auto& name : list) std::cout << " " << name;
    std::cout << "\n";
  };
  std::cout << "\n";
  names("Coversheets", s.coversheets);
  names("Letterheads", s.letterheads);
}

void PrintStatusJson(const ServerStatus& s) {
  const VLSERVERINFOEX& t = s.totals;
  Json devices = Json::array(), links = Json::array();
  for (const auto& d : s.devices)
    devices.push_back({{"name", Field(d.Name)},
                       {"status", DeviceStatusWord(d.Status)},
                       {"status_code", d.Status},
                       {"user", Field(d.User)},
                       {"message", Field(d.Message)},
                       {"total_pages", d.TotalPages},
                       {"current_page", d.CurrentPage},
                       {"connect_fails", d.ConnectFails},
                       {"send_fails", d.SendFails},
                       {"sent_ok", d.SentOK}});
  for (const auto& l : s.links)
    links.push_back({{"remote_server", Field(l.RemoteServer)},
                     {"remote_link_status", LinkStatusWord(l.RemoteLinkStatus)},
                     {"local_link_status", LinkStatusWord(l.LocalLinkStatus)},
                     {"connection_status", l.ConnectionStatus},
                     {"link_active", l.LinkActive},
                     {"sent_ok", l.SentOK},
                     {"timed_out", l.TimedOut},
                     {"rejected", l.Rejected},
                     {"device_error", l.DeviceError},
                     {"remote_server_error", l.RemoteServerError},
                     {"unacknowledged", l.Unacknowledged},
                     {"acknowledged", l.Acknowledged},
                     {"received", l.Received}});
  PrintJson({{"totals",
              {{"deferred", t.Deferred},
               {"waiting_resend", t.WaitingResend},
               {"waiting_convert", t.WaitingConvert},
               {"converting", t.Converting},
               {"waiting_device", t.WaitingDevice},
               {"sending", t.Sending},
               {"scanning", t.Scanning},
               {"router_sub", t.RouterSub},
               {"remote_accept", t.RemoteAccept}}},
             {"devices", devices},
             {"links", links},
             {"coversheets", s.coversheets},
             {"letterheads", s.letterheads}});
}

int RunServer(const Globals& globals, const std::string& verb, const ServerOptions& options) {
  auto session = OpenSession(globals);
  VLHANDLE handle = session->handle();
  if (verb == "check") {
    bool running = Running(handle);
    if (options.json)
      PrintJson({{"running", running}});
    else
      std::cout << (running ? "running" : "not running") << "\n";
    return running ? kExitOk : kExitFailure;
  }
  if (verb == "start") {
    Check(VlxStartServer(handle, 0, nullptr), "starting the server");
    WaitFor(handle, true);
    std::cout << "server started\n";
  } else if (verb == "stop") {
    Check(VlxStopServer(handle, 0), "stopping the server");
    WaitFor(handle, false);
    std::cout << "server stopped\n";
  } else if (verb == "restart") {
    Check(VlxRestartServer(handle, 0), "restarting the server");
    std::cout << "server restart requested\n";
  } else {
    ServerStatus status = ReadStatus(handle);
    if (options.json)
      PrintStatusJson(status);
    else
      PrintStatusText(status);
  }
  return kExitOk;
}

}  // namespace

void AddServerCommand(CLI::App& app, const Globals& globals, Action& action) {
  CLI::App* server = app.add_subcommand("server", "the fax server");
  server->require_subcommand(1);
  static const std::pair<const char*, const char*> kVerbs[] = {
      {"check", "exit 0 when the server runs, 1 when it does not"},
      {"start", "start the server and wait until it runs"},
      {"stop", "stop the server and wait until it has stopped"},
      {"restart", "ask the server to restart"},
      {"status", "queue totals, devices, links, coversheets and letterheads"},
  };
  for (const auto& [name, help] : kVerbs) {
    auto options = std::make_shared<ServerOptions>();
    CLI::App* command = server->add_subcommand(name, help);
    if (std::string(name) == "check" || std::string(name) == "status")
      command->add_flag("--json", options->json, "JSON output");
    std::string verb = name;
    command->callback([&globals, &action, verb, options] {
      action = [&globals, verb, options] { return RunServer(globals, verb, *options); };
    });
  }
}

}  // namespace vlfax
