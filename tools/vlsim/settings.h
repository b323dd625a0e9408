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
// The tree's own server configuration file, "VELOMAR.INI" in root.
std::string TreeConfigPath(const std::string& root);

// Reads the server configuration, from tree's "VELOMAR.INI" when a tree is
// given, else as the server finds it, which also sets up the log writer;
// takes the areas from it. 0 or the reader's code (logged).
int ReadServerAreas(const std::string& tree, Areas* areas);

// Overrides settings from the "Sim..." keys of paragraph in the system's
// "SETUP.INI"; a missing file or paragraph changes nothing.
void ReadSetupSettings(const std::string& paragraph, Settings* settings);

// A decimal number kept within [low, high]; fallback when it is none.
int NumberIn(const std::string& text, int low, int high, int fallback);

// Splits a list of words separated by blanks or commas.
std::vector<std::string> SplitWords(const std::string& text);

}  // namespace vlsim
