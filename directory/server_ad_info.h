// One fax server's object in the directory: a service connection point
// "VelomarServer" below the server's computer object, whose
// serviceBindingInformation values each begin with a key ("SERVERAREA:",
// "COVLIST:", ...) followed by the setting.
#pragma once

#include <string>
#include <vector>

#include "directory/ad_info.h"

namespace vl::directory {

// The areas a server publishes.
struct ServerAreas {
  std::string request, system, user, server, allUser;
};

// The lists and defaults a server publishes.
struct ServerLists {
  std::string coversheets, letterheads, profiles, defaultLetterhead, defaultCoversheet,
      defaultFormat, useDefault;
};

// A list value of the single character 255 stands for an empty list.
inline constexpr char kEmptyListMarker[] = "\xFF";

// Rows of every service connection point "VelomarServer" with their name,
// CN and distinguished name, and their serviceBindingInformation when
// withSettings; binds the search root first, logging under operation.
os::ads::Result FindServerObjects(VLADInfo* ad, const char* operation, bool withSettings,
                                  std::vector<os::ads::Row>* rows);

class VLServerADInfo {
 public:
  explicit VLServerADInfo(std::string serverName) : name_(std::move(serverName)) {}

  // Finds the server's object and takes its area keys into areas (a key
  // that is missing leaves its area empty).
  os::ads::Result GetVLServerParams(ServerAreas* areas);

  // GetVLServerParams, then the seven list settings; 1 (success with
  // nothing found) when none of the seven is set.
  os::ads::Result GetVLServerParamsEx(ServerAreas* areas, ServerLists* lists);

  // Writes the coversheet, letterhead and profile lists into every server's
  // object, an empty list as the marker.
  os::ads::Result SetVLServerLists(const std::string& coversheets, const std::string& letterheads,
                                   const std::string& profiles);

 private:
  std::string name_;
  VLADInfo ad_;
  const std::vector<std::string>* bindingInformation_ = nullptr;  // of the matched row
  std::vector<os::ads::Row> rows_;
};

}  // namespace vl::directory
