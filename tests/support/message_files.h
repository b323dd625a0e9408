// Message directory files for tests, written as the server writes them.
#pragma once

#include <string>

namespace vltest {

struct ListEntry {
  std::string file = "MSG1.TXT";
  std::string status = "Su";
  std::string userStatus = "Aw";
  std::string type = "SEND";
  std::string accepted = "26-11-21 10:20:30";
  std::string extra;  // further lines of the [MESSAGE] paragraph, CR LF ended
};

// The three header lines of a list of the out ("SendDir") or in directory.
std::string ListHeader(bool out = true);
// One entry: an empty line, its [DOCUMENT] and [MESSAGE] paragraphs.
std::string ListEntryText(const ListEntry& entry);

}  // namespace vltest
