// What the server reads from and writes into a user's message files: the
// addressees of a control file, the progress it writes back into the
// control file, and the state of entries in "MSGDIR.CTL".
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "tools/vlsim/text_lines.h"

namespace vlsim {

struct Addressee {
  std::string name;
  std::string organisation;
  std::string route;   // the first word of "Via:", e.g. FAX-ANY
  std::string number;  // the rest of "Via:"
};

struct SendOrder {
  bool hold = false;
  std::vector<Addressee> addressees;
};

// Reads the "Hold:" option and the addressees of a control file. 0 or a
// system error number.
int ReadSendOrder(const std::string& controlPath, SendOrder* order);

// Changes written into a control file at once.
struct ControlChange {
  std::string status;    // "Status:" of [MESSAGE], when not empty
  std::string accepted;  // "Accepted:" of [MESSAGE], when not empty
  std::string hold;      // "Hold:" of [OPTIONS], when not empty
  std::vector<std::pair<size_t, std::string>> addresseeStatus;  // index, word
  Lines history;  // lines appended to [HISTORY], which is added when missing
};
int ApplyControlChange(const std::string& controlPath, const ControlChange& change);

// A new state of one entry of a message list.
struct EntryChange {
  std::string body;
  std::string status;
  std::string accepted;  // unchanged when empty
  bool unlessComplete = false;  // leaves an entry whose status is OK or Fa
};
// Applies the changes in one rewrite; entries not in the list are skipped.
int ApplyEntryChanges(const std::string& listPath, const std::vector<EntryChange>& changes);

// Removes the entry of body from a list; a missing entry changes nothing.
int RemoveEntry(const std::string& listPath, const std::string& body);

// Appends an entry to a list, which is made with header type when missing.
int AppendEntry(const std::string& listPath, const char* type, const Lines& entry);

// "yy-mm-dd hh:mm:ss" of the local time.
std::string TimeStamp();

}  // namespace vlsim
