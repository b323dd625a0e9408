// list and show: the messages of a directory and one message in detail.
#include <algorithm>
#include <cstdio>
#include <iostream>

#include "automation_client.h"
#include "commands.h"
#include "errors.h"
#include "output.h"

namespace vlfax {
namespace {

struct ListOptions {
  bool in = false;
  bool out = false;
  std::string status;
  bool json = false;
  bool csv = false;
};

struct ShowOptions {
  std::string body;
  bool in = false;
  bool json = false;
};

const char* DirectoryName(uint16_t directory) { return directory == VL_DIR_IN ? "in" : "out"; }

std::string Accepted(const VLMSGINFOEX& info) {
  return DateTime(info.AcceptedYear, info.AcceptedMonth, info.AcceptedDay, info.AcceptedHour,
                  info.AcceptedMinute, info.AcceptedSecond);
}

int RunList(const Globals& globals, const ListOptions& options) {
  std::vector<unsigned> statuses;
  if (!options.status.empty()) {
    statuses = MessageStatusesOf(options.status);
    if (statuses.empty()) throw UsageError("unknown status word '" + options.status + "'");
  }
  uint16_t directory = options.in ? VL_DIR_IN : VL_DIR_OUT;
  auto session = OpenSession(globals);
  Table table{{"BODY", "STATUS", "USER", "ACCEPTED", "TYPE", "SUBJECT", "COMMENT"},
              {"body", "status", "user_status", "accepted", "type", "subject", "comment"},
              {}};
  for (const VLMSGINFOEX& info : ReadList(session->handle(), directory)) {
    if (!statuses.empty() &&
        std::find(statuses.begin(), statuses.end(), info.Status) == statuses.end())
      continue;
    table.rows.push_back({Field(info.Body), MessageStatusWord(info.Status),
                          UserStatusWord(info.UserStatus), Accepted(info),
                          MessageTypeWord(info.MsgType), Field(info.Subject), Field(info.Comment)});
  }
  PrintTable(table, options.json ? Format::kJson : options.csv ? Format::kCsv : Format::kText);
  return kExitOk;
}

Json EventJson(const VLMSGHISTORYEX& e) {
  return {{"event", HistoryEventWord(e.Event)},
          {"time", DateTime(e.Year, e.Month, e.Day, e.Hour, e.Minute, e.Second)},
          {"addressee", e.Addressee},
          {"addressee_text", Field(e.AddresseeText)},
          {"route", RouteWord(e.Route)},
          {"route_params", Field(e.RouteParams)},
          {"error_code", e.ErrorCode},
          {"pages", e.Pages},
          {"connect_time", e.ConnectTime},
          {"device", Field(e.Device)},
          {"remote_server", Field(e.RemoteServer)}};
}

// One addressee of a message and how far it has got.
struct Recipient {
  std::string name;
  std::string organisation;
  std::string address;
  long type = 0;
  long status = 0;
};

// The addressees of a message, which the flat interface does not list, read
// through the automation objects of a second log-on of the same user.
std::vector<Recipient> ReadRecipients(const std::string& user, uint16_t directory,
                                      const std::string& body) {
  AutomationObject session =
      RootObject("reading the recipients of " + body).Object("Logon", {user, false});
  AutomationObject list = session.Object(directory == VL_DIR_IN ? "Inbox" : "Outbox")
                              .Object("GetMsg", {body})
                              .Object("GetMsgRecipients");
  std::vector<Recipient> recipients;
  for (long i = 0, count = list.Number("Count"); i < count; ++i) {
    AutomationObject item = list.Object("Item", {i});
    recipients.push_back({item.Text("To"), item.Text("Organisation"), item.Text("Fax"),
                          item.Number("Type"), item.Number("Status")});
  }
  session.Invoke("Logoff");
  return recipients;
}

int RunShow(const Globals& globals, const ShowOptions& options) {
  CheckBodyName(options.body);
  uint16_t directory = options.in ? VL_DIR_IN : VL_DIR_OUT;
  auto session = OpenSession(globals);
  VLMSGINFOEX info{};
  Check(VlxGetMsgInfoEx(session->handle(), directory, options.body.c_str(), sizeof info, &info),
        "reading message " + options.body);
  std::vector<VLMSGHISTORYEX> history = ReadHistory(session->handle(), directory, options.body);
  std::vector<Recipient> recipients = ReadRecipients(globals.user, directory, options.body);

  if (options.json) {
    Json addressees = Json::array();
    for (const auto& r : recipients)
      addressees.push_back({{"name", r.name},
                            {"organisation", r.organisation},
                            {"type", MessageTypeWord(static_cast<unsigned>(r.type))},
                            {"address", r.address},
                            {"status", MessageStatusWord(static_cast<unsigned>(r.status))},
                            {"status_code", r.status}});
    Json events = Json::array();
    for (const auto& e : history) events.push_back(EventJson(e));
    PrintJson({{"body", Field(info.Body)},
               {"directory", DirectoryName(directory)},
               {"status", MessageStatusWord(info.Status)},
               {"status_code", info.Status},
               {"user_status", UserStatusWord(info.UserStatus)},
               {"type", MessageTypeWord(info.MsgType)},
               {"accepted", Accepted(info)},
               {"subject", Field(info.Subject)},
               {"comment", Field(info.Comment)},
               {"organisation", Field(info.Organisation)},
               {"custom", Field(info.Custom)},
               {"recipients", addressees},
               {"history", events}});
    return kExitOk;
  }
  std::cout << "Body:         " << Field(info.Body) << " (" << DirectoryName(directory) << ")\n"
            << "Status:       " << MessageStatusWord(info.Status) << " ("
            << MessageStatusMeaning(info.Status) << ")\n"
            << "User status:  " << UserStatusWord(info.UserStatus) << "\n"
            << "Type:         " << MessageTypeWord(info.MsgType) << "\n"
            << "Accepted:     " << Accepted(info) << "\n"
            << "Subject:      " << Field(info.Subject) << "\n"
            << "Comment:      " << Field(info.Comment) << "\n"
            << "Organisation: " << Field(info.Organisation) << "\n";
  if (info.Custom[0]) std::cout << "Custom:       " << Field(info.Custom) << "\n";
  std::cout << "Recipients (" << recipients.size() << "):\n";
  for (const auto& r : recipients) {
    std::cout << "  " << MessageStatusWord(static_cast<unsigned>(r.status)) << "  "
              << MessageTypeWord(static_cast<unsigned>(r.type)) << " " << r.address << "  "
              << r.name;
    if (!r.organisation.empty()) std::cout << ", " << r.organisation;
    std::cout << "\n";
  }
  std::cout << "History (" << history.size() << " events):\n";
  for (const auto& e : history) std::cout << "  " << EventLine(e) << "\n";
  return kExitOk;
}

}  // namespace

// Every entry of a directory: the count first, then all entries.
std::vector<VLMSGINFOEX> ReadList(VLHANDLE handle, uint16_t directory) {
  std::string what = std::string("listing the ") + DirectoryName(directory) + " directory";
  for (;;) {
    int16_t count = 0;
    VLMSGINFOEX probe{};
    Check(VlxGetMsgListEx(handle, directory, 0, &count, sizeof probe, &probe), what);
    if (count <= 0) return {};
    std::vector<VLMSGINFOEX> entries(static_cast<size_t>(count));
    int16_t read = 0;
    Check(VlxGetMsgListEx(handle, directory, count, &read, sizeof entries[0], entries.data()),
          what);
    if (read <= count) {
      entries.resize(static_cast<size_t>(read < 0 ? 0 : read));
      return entries;
    }
    // The list grew between the two calls: count again.
  }
}

std::vector<VLMSGHISTORYEX> ReadHistory(VLHANDLE handle, uint16_t directory,
                                        const std::string& body) {
  std::vector<VLMSGHISTORYEX> events(32);
  for (;;) {
    uint16_t count = 0;
    int16_t capacity = static_cast<int16_t>(events.size());
    Check(VlxGetMsgHistoryEx(handle, directory, body.c_str(), 0, 1, capacity, &count,
                             sizeof events[0], events.data()),
          "reading the history of " + body);
    if (count <= events.size() || events.size() >= 0x7FFF) {
      events.resize(std::min<size_t>(count, events.size()));
      return events;
    }
    events.resize(std::min<size_t>(count, 0x7FFF));
  }
}

std::string EventLine(const VLMSGHISTORYEX& e) {
  std::string line = std::string("history ") + HistoryEventWord(e.Event) + " " +
                     DateTime(e.Year, e.Month, e.Day, e.Hour, e.Minute, e.Second) + " addressee " +
                     std::to_string(e.Addressee);
  if (e.AddresseeText[0]) line += " \"" + Field(e.AddresseeText) + "\"";
  line += std::string(" route ") + RouteWord(e.Route);
  if (e.RouteParams[0]) line += " " + Field(e.RouteParams);
  char tail[96];
  std::snprintf(tail, sizeof tail, " error 0x%X pages %u connected %u:%02u", e.ErrorCode, e.Pages,
                e.ConnectTime / 60u, e.ConnectTime % 60u);
  line += tail;
  if (e.Device[0]) line += " device " + Field(e.Device);
  if (e.RemoteServer[0]) line += " remote " + Field(e.RemoteServer);
  return line;
}

void AddListingCommands(CLI::App& app, const Globals& globals, Action& action) {
  auto list = std::make_shared<ListOptions>();
  CLI::App* listCommand = app.add_subcommand("list", "list the messages of a directory");
  auto* in = listCommand->add_flag("--in", list->in, "the in directory");
  auto* out = listCommand->add_flag("--out", list->out, "the out directory (default)");
  in->excludes(out);
  listCommand->add_option("--status", list->status,
                          "only messages of this status word (Wa, OK...)");
  auto* json = listCommand->add_flag("--json", list->json, "JSON output");
  auto* csv = listCommand->add_flag("--csv", list->csv, "CSV output");
  json->excludes(csv);
  listCommand->callback(
      [&globals, &action, list] { action = [&globals, list] { return RunList(globals, *list); }; });

  auto show = std::make_shared<ShowOptions>();
  CLI::App* showCommand = app.add_subcommand("show", "show a message and its history");
  showCommand->add_option("BODY", show->body, "body name of the message")->required();
  showCommand->add_flag("--in", show->in, "the message is in the in directory");
  showCommand->add_flag("--json", show->json, "JSON output");
  showCommand->callback(
      [&globals, &action, show] { action = [&globals, show] { return RunShow(globals, *show); }; });
}

}  // namespace vlfax
