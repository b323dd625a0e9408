// Finding the configuration files and the server's name.
#pragma once

#include <string>

namespace vl {

// The server's "VELOMAR.INI" named by the registry, upper-cased; 0 or
// kInternalNotFound.
int FindServerIni(std::string* path);

// The per-user "VLCLIENT.INI" in the application data folder, copied there
// from the path the registry names when missing; 0 or kInternalNotFound.
int FindClientIni(std::string* path);

// The first "VELOMAR.INI" in the user profile's WINDOWS folder, the Windows
// directory and the directories of WINDIR, VLAXINIT, INIT and PATH; 0 or
// kInternalNotFound.
int SearchIniPath(std::string* path);

// The fax server's computer name: the "[FAILOVER]" primary server of the
// system's "SETUP.INI", else the computer part of a UNC system area, else
// this computer. 0 or an internal code.
int GetServerName(std::string* name);

}  // namespace vl
