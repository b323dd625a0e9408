// The simulated fax server: takes the request files that clients drop into
// the request area and carries them out on the clients' message files, as
// the real server's queue manager does, and publishes its state in
// "STATUS.LOG" and the coversheet and letterhead lists.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tools/vlsim/message_files.h"
#include "tools/vlsim/settings.h"

namespace vlsim {

// One line of the simulator's log. A message event names its user and
// message and carries the addressee's number, the page count and the error
// code, which the day's message log records.
struct LogEntry {
  enum class Kind { Note, MessageEvent, Warning, Error };
  Kind kind = Kind::Note;
  std::string text;
  std::string user, body;
  uint32_t addressee = 0;
  int16_t pages = 0;
  uint16_t error = 0;
};
using LogSink = std::function<void(const LogEntry&)>;

class Simulator {
 public:
  Simulator(Settings settings, LogSink log);
  ~Simulator();

  // Takes every complete request from the request area and carries it out;
  // returns how many were taken.
  int TakeRequests();
  // Moves messages on by one step each: every active message when dueOnly
  // is false, else those whose step delay has passed. Returns how many moved.
  int Step(bool dueOnly);
  // No message waits for a device or is being sent (held ones may remain).
  bool Idle() const;

  // Rewrites "STATUS.LOG": totals, devices and links.
  int WriteStatus();
  // Rewrites the coversheet and letterhead lists from the files in the
  // system area's "V-COVER" and "V-LETTER".
  int WriteLists();
  // Delivers a received fax with subject into the in directory of user;
  // returns its body name, or "" on failure.
  std::string Deliver(const std::string& user, const std::string& subject);

  // Set by a SHUTDOWN or RESTART request.
  bool stopRequested() const { return stopRequested_; }
  bool restartRequested() const { return restartRequested_; }
  void ClearRestart() { restartRequested_ = false; }

  struct Message;
  struct Device;
  struct Request;

 private:
  void Note(const std::string& text) const;
  void Warn(const std::string& text) const;
  void Fail(const std::string& text) const;
  void Event(const std::string& user, const std::string& body, const std::string& text,
             uint32_t addressee = 0, int16_t pages = 0, uint16_t error = 0) const;
  void Carry(const Request& request);
  void Accept(const std::string& user, const std::string& body);
  void Hold(Message& message, bool hold);
  void Abort(Message& message);
  void DeleteReceived(const std::string& user, const std::string& body);
  void Advance(Message& message);
  void StartSending(Message& message, Device& device);
  void FinishAddressee(Message& message);
  void Finish(Message& message, ControlChange& change);
  std::string HistoryLine(const char* event, const Message& message, size_t index,
                          uint16_t error, bool sent) const;
  void Update(Message& message, ControlChange& change, const char* status);
  void FlushEntries();
  // The queued message, not yet complete, or none.
  Message* Find(const std::string& user, const std::string& body);
  std::string OutDirectory(const std::string& user) const;
  std::string NewMessageId();

  Settings settings_;
  LogSink log_;
  std::vector<std::unique_ptr<Message>> messages_;  // queue order
  std::vector<Device> devices_;
  std::map<std::string, std::vector<EntryChange>> pendingEntries_;  // by list path
  bool stopRequested_ = false;
  bool restartRequested_ = false;
  uint32_t messageCount_ = 0;
};

}  // namespace vlsim
