// How the simulator is set up: the fax tree's areas and the behaviour of
// the simulated server.
#pragma once

#include <string>
#include <vector>

namespace vlsim {

struct Areas {
  std::string user, request, system, server;  // each ends in a backslash
};

inline constexpr int kMostDevices = 64;
inline constexpr int kLongestPause = 3600000;  // milliseconds

struct Settings {
  Areas areas;
  int devices = 2;         // fax devices shown in STATUS.LOG, 1 to kMostDevices
  int stepDelayMs = 1000;  // real-time mode: pause between two steps of a message
  int pollMs = 100;        // real-time mode: how often the request area is read
  std::vector<std::string> failNumbers;  // fax numbers whose sending fails
  std::vector<std::string> links;        // remote servers shown as links
  std::string logFile;                   // empty: VLSIM.LOG in the server area
};

// The areas of the sample tree layout under root: USERS, REQUEST, SYSTEM
// and SERVER.
Areas TreeAreas(const std::string& root);

// The areas as clients of this machine find them (server configuration,
// else the per-user client configuration). 0 or a result code, with the
// reason in why.
int DiscoverAreas(Areas* areas, std::string* why);

// Overrides settings from the "Sim..." keys of paragraph in the system's
// "SETUP.INI"; a missing file or paragraph changes nothing.
void ReadSetupSettings(const std::string& paragraph, Settings* settings);

// A decimal number kept within [low, high]; fallback when it is none.
int NumberIn(const std::string& text, int low, int high, int fallback);

// Splits a list of words separated by blanks or commas.
std::vector<std::string> SplitWords(const std::string& text);

}  // namespace vlsim
