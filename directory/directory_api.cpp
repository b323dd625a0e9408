#include "directory/directory_api.h"

#include <cstring>
#include <memory>
#include <string>

#include "api/config.h"
#include "directory/bounded_lookup.h"
#include "directory/distinguished_name.h"

namespace vl {
namespace {

// The directory services library is loaded on first use: without it the
// lookups fail and the rest of the library works.
VLRESULT Unavailable() { return os::ads::Load() ? VL_OK : VL_E_AD_NOT_PRESENT; }

// One lookup's question and answer, shared with the thread that runs it.
struct Lookup {
  std::string name;
  os::ads::Result result = os::ads::kFail;
  std::string list;
  directory::ServerAreas areas;
  directory::ServerLists lists;
};

// Runs fill on a thread of its own, in a COM apartment of that thread; a
// lookup that fails or outlives the deadline is a directory error.
bool Ask(const std::shared_ptr<Lookup>& lookup, void (*fill)(Lookup&)) {
  bool finished = directory::RunWithinDeadline([lookup, fill] {
    os::ads::Apartment apartment;
    fill(*lookup);
  });
  return finished && !os::ads::Failed(lookup->result);
}

void ListServers(Lookup& lookup) {
  directory::VLADInfo ad;
  std::vector<os::ads::Row> rows;
  lookup.result = directory::FindServerObjects(&ad, "GetVelomarServersFromAD", false, &rows);
  for (const os::ads::Row& row : rows) {
    const std::vector<std::string>* dn = row.Values("distinguishedName");
    std::string computer;
    if (!dn || dn->empty() || !directory::ComputerOf(dn->front(), &computer)) continue;
    if (!lookup.list.empty()) lookup.list += ',';
    lookup.list += computer;
  }
}

void ReadServerInfo(Lookup& lookup) {
  lookup.result = directory::VLServerADInfo(lookup.name).GetVLServerParamsEx(&lookup.areas,
                                                                              &lookup.lists);
}

void ReadServerAreas(Lookup& lookup) {
  lookup.result = directory::VLServerADInfo(lookup.name).GetVLServerParams(&lookup.areas);
}

}  // namespace

VLRESULT GetServersFromDirectory(char* buffer, int16_t bufLen, int32_t /*reserved*/) {
  if (!buffer) return VL_E_INVALID_PARAM;
  if (VLRESULT rc = Unavailable()) return rc;
  auto lookup = std::make_shared<Lookup>();
  if (!Ask(lookup, ListServers)) return VL_E_AD_ERROR;
  if (static_cast<int>(lookup->list.size()) + 1 > bufLen) return VL_E_AD_ERROR;
  std::memcpy(buffer, lookup->list.c_str(), lookup->list.size() + 1);
  return VL_OK;
}

VLRESULT GetServerInfoFromDirectory(const char* name, directory::ServerAreas* areas,
                                    directory::ServerLists* lists) {
  if (!name || !areas || !lists) return VL_E_INVALID_PARAM;
  if (VLRESULT rc = Unavailable()) return rc;
  auto lookup = std::make_shared<Lookup>();
  lookup->name = name;
  if (!Ask(lookup, ReadServerInfo)) return VL_E_AD_ERROR;
  *areas = lookup->areas;
  *lists = lookup->lists;
  return VL_OK;
}

VLRESULT SetServerFromDirectory(const char* name) {
  if (!name) return VL_E_INVALID_PARAM;
  if (!*name) {
    ClearExplicitAreas();
    return VL_OK;
  }
  if (VLRESULT rc = Unavailable()) return rc;
  auto lookup = std::make_shared<Lookup>();
  lookup->name = name;
  if (!Ask(lookup, ReadServerAreas)) return VL_E_AD_ERROR;
  const directory::ServerAreas& areas = lookup->areas;
  if (areas.server.empty() || areas.system.empty() || areas.user.empty() ||
      areas.request.empty())
    return VL_E_AD_VALUE_NOT_SET;
  SelectServerAreas(areas.server.c_str(), areas.system.c_str(), areas.user.c_str(),
                    areas.request.c_str(), name);
  return VL_OK;
}

}  // namespace vl
