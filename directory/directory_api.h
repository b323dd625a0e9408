// The directory lookups behind the automation root object's directory
// members: the list of fax servers, one server's areas and lists, and the
// selection of a server whose areas every later session of the process
// uses. Internal to the library; not exported.
#pragma once

#include <cstdint>

#include "directory/server_ad_info.h"
#include "vlapi.h"

namespace vl {

// The names of the servers registered in the directory, in the directory's
// order, joined with ",". A list that does not fit (length and terminator)
// in bufLen is 0xF72B, never cut. reserved is not used.
VLRESULT GetServersFromDirectory(char* buffer, int16_t bufLen, int32_t reserved);

// The areas and lists that the server called name publishes.
VLRESULT GetServerInfoFromDirectory(const char* name, directory::ServerAreas* areas,
                                    directory::ServerLists* lists);

// Makes the areas of the server called name the explicit areas of the
// process; an empty name clears them. A server without one of its server,
// system, user and request areas is 0xF72C.
VLRESULT SetServerFromDirectory(const char* name);

}  // namespace vl
