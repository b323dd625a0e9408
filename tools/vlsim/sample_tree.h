// A sample fax tree for trying clients out without a fax server.
#pragma once

#include <string>
#include <vector>

namespace vlsim {

// Creates the tree under root: the system area with "SETUP.INI" (whose
// "Sysman:" names this program, copied into the server area),
// "USERLIST.INI", sample coversheets and letterheads; the request and
// server areas; and the users, each with empty out and in lists. Returns
// "" or what went wrong.
std::string MakeSampleTree(const std::string& root, const std::vector<std::string>& users);

// Writes the current user's client configuration file naming the tree;
// returns its path, or "" on failure.
std::string WriteClientConfig(const std::string& root);

}  // namespace vlsim
