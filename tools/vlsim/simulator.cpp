#include "tools/vlsim/simulator.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

#include "api/unique_file.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vlsim {

// Error codes written into "SentEr:" history lines.
inline constexpr uint16_t kErrorNoAnswer = 0x31;
inline constexpr uint16_t kErrorAborted = 0x0A;

enum class Phase { Waiting, Held, Sending, Done };

struct Simulator::Message {
  std::string user, body;  // upper case
  std::string directory;   // the user's out directory
  std::string id;          // "MessageID:" of its history
  std::vector<Addressee> addressees;
  Phase phase = Phase::Waiting;
  size_t next = 0;    // the addressee being sent, or the next one
  int device = -1;    // index into devices_ while sending
  bool rushed = false;
  int64_t dueMs = 0;  // when the next step may happen
  bool failed = false;

  std::string ControlPath() const { return directory + body + ".CTL"; }
  std::string ListPath() const { return directory + "MSGDIR.CTL"; }
};

struct Simulator::Device {
  std::string name;
  Message* message = nullptr;
  unsigned sentOk = 0, sendFails = 0;
};

struct Simulator::Request {
  std::string server, type, user, body, directory;
};

namespace {

std::string Upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 'a' + 'A');
  return text;
}

std::string Quoted(std::string text) {
  text.erase(std::remove(text.begin(), text.end(), '"'), text.end());
  return "\"" + text + "\"";
}

// The request in the lines of a request file; false when it is none.
bool ParseRequest(const Lines& lines, Simulator::Request* request) {
  size_t header = FindHeader(lines, "[REQUEST]");
  if (header == kNone) return false;
  const size_t end = ParagraphEnd(lines, header);
  auto value = [&](const char* keyword) {
    size_t at = FindKeyword(lines, header + 1, end, keyword);
    return at == kNone ? std::string() : ValueOf(lines[at]);
  };
  request->server = Upper(value("Server:"));
  request->type = Upper(value("Type:"));
  request->user = Upper(value("User:"));
  std::string file = value("File:");
  request->body = Upper(file.substr(0, file.find('.')));
  request->directory = Upper(value("Directory:"));
  return true;
}

// A user or body name that stays inside its directory and is not the
// message list's.
bool IsPlainName(const std::string& name, size_t longest) {
  if (name.empty() || name.size() > longest || name == "MSGDIR") return false;
  for (unsigned char c : name)
    if (c <= ' ' || c == 127 || std::strchr("\\/:*?\"<>|.", c)) return false;
  return true;
}

// Texts of a history line are cut to the fields the readers keep.
std::string Cut(const std::string& text, size_t longest) { return text.substr(0, longest); }

}  // namespace

Simulator::Simulator(Settings settings, LogSink log)
    : settings_(std::move(settings)), log_(std::move(log)) {
  settings_.devices = std::clamp(settings_.devices, 1, kMostDevices);
  for (int i = 0; i < settings_.devices; ++i) {
    Device device;
    device.name = "FAX" + std::to_string(i + 1);
    devices_.push_back(device);
  }
}

Simulator::~Simulator() = default;

void Simulator::Note(const std::string& text) const { log_({LogEntry::Kind::Note, text}); }
void Simulator::Warn(const std::string& text) const { log_({LogEntry::Kind::Warning, text}); }
void Simulator::Fail(const std::string& text) const { log_({LogEntry::Kind::Error, text}); }

void Simulator::Event(const std::string& user, const std::string& body, const std::string& text,
                      uint32_t addressee, int16_t pages, uint16_t error) const {
  log_({LogEntry::Kind::MessageEvent, text, user, body, addressee, pages, error});
}

int Simulator::TakeRequests() {
  std::vector<std::string> names;
  os::ListFiles((settings_.areas.request + "*.CTL").c_str(), &names);
  // In the order they were written, then by name.
  std::vector<std::pair<int64_t, std::string>> arrivals;
  for (const std::string& name : names) {
    os::FileInfo info;
    os::GetFileInfo((settings_.areas.request + name).c_str(), &info);
    arrivals.push_back({info.modifiedMs, name});
  }
  std::sort(arrivals.begin(), arrivals.end());
  std::vector<Request> requests;
  for (const auto& [time, name] : arrivals) {
    const std::string path = settings_.areas.request + name;
    Lines lines;
    Request request;
    if (ReadSharedFile(path, &lines) != 0) continue;  // taken next time
    bool parsed = ParseRequest(lines, &request);
    // A request is carried out once: only after its file is gone.
    if (os::RemoveFile(path.c_str()) != 0) continue;
    if (parsed)
      requests.push_back(request);
    else
      Warn("Ignored " + name + ": no [REQUEST] paragraph");
  }
  // New messages first, so that a request about one finds it.
  std::stable_sort(requests.begin(), requests.end(), [](const Request& a, const Request& b) {
    return (a.type == "SEND") > (b.type == "SEND");
  });
  for (const Request& request : requests) Carry(request);
  FlushEntries();
  return static_cast<int>(requests.size());
}

void Simulator::Carry(const Request& request) {
  const std::string what = request.type + " " + request.user + "\\" + request.body;
  if (request.server == "SYSMAN") {
    Note("Request " + request.type);
    if (request.type == "SHUTDOWN") stopRequested_ = true;
    if (request.type == "RESTART") restartRequested_ = true;
    return;
  }
  if (!IsPlainName(request.user, 8) || !IsPlainName(request.body, 8)) {
    Warn("Ignored " + what + ": not a user and message name");
    return;
  }
  if (request.type == "SEND") return Accept(request.user, request.body);
  if (request.type == "DELETE" && request.directory == "V-IN")
    return DeleteReceived(request.user, request.body);
  Message* message = Find(request.user, request.body);
  if (!message) {
    Warn("Ignored " + what + ": no such message in the queue");
    // A message this server does not hold cannot finish: an abort ends it.
    if (request.type == "DELETE")
      pendingEntries_[OutDirectory(request.user) + "MSGDIR.CTL"].push_back(
          {request.body, "Fa", "", true});
    return;
  }
  Note("Request " + what);
  if (request.type == "DELETE") return Abort(*message);
  if (request.type == "HOLD" || request.type == "RELEASE") return Hold(*message, request.type == "HOLD");
  if (request.type == "RUSH") {
    message->rushed = true;
    Event(message->user, message->body, "Rushed " + message->user + "\\" + message->body);
    return;
  }
  Warn("Ignored " + what + ": unknown request");
}

Simulator::Message* Simulator::Find(const std::string& user, const std::string& body) {
  for (auto& message : messages_)
    if (message->user == user && message->body == body && message->phase != Phase::Done)
      return message.get();
  return nullptr;
}

std::string Simulator::OutDirectory(const std::string& user) const {
  return settings_.areas.user + user + "\\V-OUT\\";
}

std::string Simulator::NewMessageId() {
  char id[32];
  std::snprintf(id, sizeof id, "SIM%08X%04X", static_cast<unsigned>(os::SecondsSince1970()),
                ++messageCount_ & 0xFFFF);
  return id;
}

void Simulator::Accept(const std::string& user, const std::string& body) {
  if (Find(user, body)) {
    Warn("Ignored SEND " + user + "\\" + body + ": already in the queue");
    return;
  }
  auto message = std::make_unique<Message>();
  message->user = user;
  message->body = body;
  message->directory = OutDirectory(user);
  SendOrder order;
  if (int error = ReadSendOrder(message->ControlPath(), &order)) {
    Event(user, body, "Failed SEND " + user + "\\" + body + ": cannot read its control file (error " +
          std::to_string(error) + ")", 0, 0, static_cast<uint16_t>(error));
    pendingEntries_[message->ListPath()].push_back({body, "Fa", "", true});
    return;
  }
  message->addressees = order.addressees;
  message->id = NewMessageId();
  message->phase = order.hold ? Phase::Held : Phase::Waiting;
  message->dueMs = os::WallClockMilliseconds() + settings_.stepDelayMs;
  Event(user, body, "Accepted " + user + "\\" + body + " with " +
                        std::to_string(order.addressees.size()) + " addressee(s)" +
                        (order.hold ? ", held" : ""));

  ControlChange change;
  change.accepted = TimeStamp();
  change.history.push_back("MessageID: " + message->id);
  if (order.hold)
    for (size_t i = 0; i < order.addressees.size(); ++i) change.addresseeStatus.push_back({i, "He"});
  Message& accepted = *message;
  messages_.push_back(std::move(message));
  if (accepted.addressees.empty()) {
    accepted.failed = true;
    return Finish(accepted, change);
  }
  Update(accepted, change, order.hold ? "He" : "Wa");
}

void Simulator::Update(Message& message, ControlChange& change, const char* status) {
  change.status = status;
  if (int error = ApplyControlChange(message.ControlPath(), change))
    Fail("Cannot update " + message.ControlPath() + " (error " + std::to_string(error) + ")");
  pendingEntries_[message.ListPath()].push_back({message.body, status, change.accepted});
}

void Simulator::FlushEntries() {
  for (auto it = pendingEntries_.begin(); it != pendingEntries_.end();) {
    const int error = ApplyEntryChanges(it->first, it->second);
    if (error && error != os::kFileNotFound && error != os::kPathNotFound) {
      // Kept for the next round: a client holds the list too long.
      Fail("Cannot update " + it->first + " (error " + std::to_string(error) + ")");
      ++it;
    } else {
      if (error) Warn("Dropped the changes of " + it->first + ": the list is gone");
      it = pendingEntries_.erase(it);
    }
  }
}

void Simulator::Hold(Message& message, bool hold) {
  if (message.phase != (hold ? Phase::Waiting : Phase::Held)) return;
  message.phase = hold ? Phase::Held : Phase::Waiting;
  Event(message.user, message.body,
        (hold ? "Held " : "Released ") + message.user + "\\" + message.body);
  message.dueMs = os::WallClockMilliseconds() + settings_.stepDelayMs;
  ControlChange change;
  change.hold = hold ? "YES" : "NO";
  for (size_t i = message.next; i < message.addressees.size(); ++i)
    change.addresseeStatus.push_back({i, hold ? "He" : "Wa"});
  Update(message, change, hold ? "He" : "Wa");
}

void Simulator::Abort(Message& message) {
  Event(message.user, message.body, "Aborted " + message.user + "\\" + message.body, 0, 0,
        kErrorAborted);
  ControlChange change;
  for (size_t i = message.next; i < message.addressees.size(); ++i) {
    change.addresseeStatus.push_back({i, "Ab"});
    change.history.push_back(HistoryLine("SentEr:", message, i, kErrorAborted, false));
  }
  message.failed = true;
  Finish(message, change);
}

void Simulator::DeleteReceived(const std::string& user, const std::string& body) {
  const std::string directory = settings_.areas.user + user + "\\V-IN\\";
  Note("Request DELETE " + user + "\\V-IN\\" + body);
  if (int error = RemoveEntry(directory + "MSGDIR.CTL", body)) {
    Fail("Cannot update " + directory + "MSGDIR.CTL (error " + std::to_string(error) + ")");
    return;  // the files stay with their entry
  }
  std::vector<std::string> names;
  os::ListFiles((directory + body + ".*").c_str(), &names);
  for (const std::string& name : names) os::RemoveFile((directory + name).c_str());
  Event(user, body, "Deleted " + user + "\\V-IN\\" + body);
}

int Simulator::Step(bool dueOnly) {
  const int64_t now = os::WallClockMilliseconds();
  // Rushed messages go first; the rest keep their order.
  std::vector<Message*> order;
  for (auto& message : messages_)
    if (message->rushed) order.push_back(message.get());
  for (auto& message : messages_)
    if (!message->rushed) order.push_back(message.get());
  int moved = 0;
  for (Message* message : order) {
    if (message->phase == Phase::Held || message->phase == Phase::Done) continue;
    if (dueOnly && message->dueMs > now) continue;
    const size_t before = message->next;
    const Phase phase = message->phase;
    Advance(*message);
    if (message->phase != phase || message->next != before) {
      message->dueMs = now + settings_.stepDelayMs;
      ++moved;
    }
  }
  messages_.erase(std::remove_if(messages_.begin(), messages_.end(),
                                 [](const auto& m) { return m->phase == Phase::Done; }),
                  messages_.end());
  FlushEntries();
  return moved;
}

bool Simulator::Idle() const {
  return std::none_of(messages_.begin(), messages_.end(), [](const auto& m) {
    return m->phase == Phase::Waiting || m->phase == Phase::Sending;
  });
}

void Simulator::Advance(Message& message) {
  if (message.phase == Phase::Sending) return FinishAddressee(message);
  for (Device& device : devices_)
    if (!device.message) return StartSending(message, device);
}

void Simulator::StartSending(Message& message, Device& device) {
  device.message = &message;
  message.device = static_cast<int>(&device - devices_.data());
  message.phase = Phase::Sending;
  Note("Sending " + message.user + "\\" + message.body + " on " + device.name);
  ControlChange change;
  change.addresseeStatus.push_back({message.next, "Se"});
  change.history.push_back(HistoryLine("Tried:", message, message.next, 0, false));
  Update(message, change, "Se");
}

void Simulator::FinishAddressee(Message& message) {
  Device& device = devices_[static_cast<size_t>(message.device)];
  const size_t index = message.next;
  const Addressee& addressee = message.addressees[index];
  const bool ok = std::find(settings_.failNumbers.begin(), settings_.failNumbers.end(),
                            addressee.number) == settings_.failNumbers.end();
  ++message.next;
  ++(ok ? device.sentOk : device.sendFails);
  if (!ok) message.failed = true;
  Event(message.user, message.body,
        (ok ? "Sent " : "Failed ") + message.user + "\\" + message.body + " to " + addressee.number,
        static_cast<uint32_t>(index + 1), ok ? 1 : 0, ok ? 0 : kErrorNoAnswer);
  ControlChange change;
  change.addresseeStatus.push_back({index, ok ? "OK" : "Fa"});
  change.history.push_back(HistoryLine(ok ? "SentOK:" : "SentEr:", message, index,
                                        ok ? 0 : kErrorNoAnswer, ok));
  if (message.next < message.addressees.size()) {
    change.addresseeStatus.push_back({message.next, "Se"});
    change.history.push_back(HistoryLine("Tried:", message, message.next, 0, false));
    Update(message, change, "Se");
    return;
  }
  Finish(message, change);
}

void Simulator::Finish(Message& message, ControlChange& change) {
  if (message.device >= 0) devices_[static_cast<size_t>(message.device)].message = nullptr;
  message.device = -1;
  message.phase = Phase::Done;
  const char* status = message.failed ? "Fa" : "OK";
  Event(message.user, message.body, "Completed " + message.user + "\\" + message.body + ": " + status);
  Update(message, change, status);
}

std::string Simulator::HistoryLine(const char* event, const Message& message, size_t index,
                                   uint16_t error, bool sent) const {
  const Addressee& addressee = message.addressees[index];
  const std::string device =
      message.device >= 0 ? devices_[static_cast<size_t>(message.device)].name : "";
  char line[512];
  std::snprintf(line, sizeof line, "%s %s, %u, %s, %s, %s, <%X>, %u, 0:00:%.2u, %s, \"\"",
                event, TimeStamp().c_str(), static_cast<unsigned>(index + 1),
                Quoted(Cut(addressee.name, 70)).c_str(), Cut(addressee.route, 20).c_str(),
                Quoted(Cut(addressee.number, 40)).c_str(), error, sent ? 1u : 0u,
                sent ? static_cast<unsigned>(10 + index % 50) : 0u, Quoted(device).c_str());
  return line;
}

int Simulator::WriteStatus() {
  unsigned held = 0, waiting = 0, sending = 0;
  for (const auto& message : messages_) {
    held += message->phase == Phase::Held;
    waiting += message->phase == Phase::Waiting;
    sending += message->phase == Phase::Sending;
  }
  Lines lines = {"[VELOMAR]", "Type: Status", "Revision: A", "", "[TOTALS]",
                 "Deferred: " + std::to_string(held), "WaitingResend: 0", "WaitingConvert: 0",
                 "Converting: 0", "WaitingDevice: " + std::to_string(waiting),
                 "Sending: " + std::to_string(sending), "Scanning: 0", "RouterSub: 0",
                 "RemoteAccept: 0", "", "[DEVICES]"};
  for (const Device& device : devices_) {
    const Message* message = device.message;
    lines.insert(lines.end(),
                 {"Device: " + device.name, std::string("StatusExt: ") + (message ? "Se" : "OK"),
                  message ? "User: " + message->user : "User:",
                  message ? "Message: " + message->body : "Message:",
                  std::string("TotalPages: ") + (message ? "1" : "0"),
                  std::string("CurrentPage: ") + (message ? "1" : "0"), "ConnectFails: 0",
                  "SendFails: " + std::to_string(device.sendFails),
                  "SentOK: " + std::to_string(device.sentOk)});
  }
  lines.insert(lines.end(), {"", "[LINKS]"});
  for (const std::string& link : settings_.links)
    lines.insert(lines.end(), {"RemoteServer: " + link, "RemoteLinkStatus: ONLINE",
                               "LocalLinkStatus: ONLINE", "ConnectionStatus: OK", "SentOK: 0",
                               "TimedOut: 0", "Rejected: 0", "DeviceError: 0",
                               "RemoteServerError: 0", "Unacknowledged: 0", "Acknowledged: 0",
                               "Received: 0"});
  return EditSharedFile(settings_.areas.system + "V-DB\\STATUS.LOG", true, [&](Lines& file) {
    file = lines;
    return true;
  });
}

int Simulator::WriteLists() {
  for (const char* folder : {"V-COVER\\", "V-LETTER\\"}) {
    const std::string directory = settings_.areas.system + folder;
    std::vector<std::string> names;
    os::ListFiles((directory + "*").c_str(), &names);
    std::sort(names.begin(), names.end());
    Lines lines = {"[VELOMAR]", "Type: FileDir", "Revision: A", "", "[DIRECTORY]"};
    for (const std::string& name : names) {
      std::string base = Upper(name.substr(0, name.find('.')));
      if (base == "MSGDIR" || base.empty()) continue;
      lines.push_back("FILE: " + base.substr(0, 8));
    }
    int error = EditSharedFile(directory + "MSGDIR.CTL", true, [&](Lines& file) {
      file = lines;
      return true;
    });
    if (error) return error;
  }
  return 0;
}

std::string Simulator::Deliver(const std::string& user, const std::string& subject) {
  const std::string directory = settings_.areas.user + Upper(user) + "\\V-IN\\";
  std::string name;
  if (vl::MakeUniqueFile("RECV", "CTL", directory.c_str(), &name) !=
      vl::UniqueFileResult::Created) {
    Fail("Cannot deliver to " + directory);
    return "";
  }
  const std::string body = name.substr(0, name.find('.'));
  const std::string stamp = TimeStamp();
  const std::string sender = "02015550199";
  const Lines message = {"[MESSAGE]", "AssocFile:", "Format: ASCII", "Accepted: " + stamp,
                         "Type: RECEIVE", "Status: OK", "UserStatus: Aw", "Subject: " + subject,
                         "MsgType: FAX", "Custom:"};
  Lines document = {"[DOCUMENT]", "File: " + body + ".TXT", "Comment: Fax from " + sender,
                    "Organisation:"};
  Lines control = {"[VELOMAR]", "Type: ReceiveControl", "Revision: A", ""};
  control.insert(control.end(), document.begin(), document.end());
  control.insert(control.end(), message.begin(), message.end());
  control.insert(control.end(),
                 {"[HISTORY]", "MessageID: " + NewMessageId(),
                  "RecdOK: " + stamp + ", 1, \"\", FAX-INCOMING, " + Quoted(sender) +
                      ", <0>, 1, 0:00:15, \"FAX1\", \"\""});
  int error = EditSharedFile(directory + name, false, [&](Lines& file) {
    file = control;
    return true;
  });
  if (!error) error = CreateNewFile(directory + body + ".TXT", {subject, "", "(received)"});
  document.insert(document.end(), message.begin(), message.end());
  if (!error) error = AppendEntry(directory + "MSGDIR.CTL", "ReceiveDir", document);
  if (error) {
    Fail("Cannot deliver to " + directory + " (error " + std::to_string(error) + ")");
    for (const char* extension : {".CTL", ".TXT"})
      os::RemoveFile((directory + body + extension).c_str());
    return "";
  }
  Event(Upper(user), body, "Delivered " + Upper(user) + "\\V-IN\\" + body, 0, 1);
  return body;
}

}  // namespace vlsim
