// Locating and reading the configuration: the four area directories of a
// session, from the process's explicit areas or from the configuration
// file, and the "[API]" settings of that file.
#pragma once

#include <string>

#include "api/session.h"
#include "vlapi.h"

namespace vl {

// Stores the process-wide explicit areas (server, system and user, request
// areas keep 255, 255, 63 and 63 characters, each with a backslash added)
// and empties the selected server name. Any argument missing: 0xF700.
VLRESULT SetAreas(const char* server, const char* system, const char* user, const char* request);

// Copies the explicit areas out, each cut to 260 characters (buffers of at
// least 261 bytes). Any buffer missing: 0xF700.
VLRESULT GetAreas(char* server, char* system, char* user, char* request);

// The selected server name that SetAreas empties; 0xF715 when the buffer is
// too small.
VLRESULT SetSelectedServerName(const char* name);
VLRESULT GetSelectedServerName(char* buffer, int16_t bufLen);

// Makes a server's areas found in the directory the explicit areas, each
// cut to 256 characters (with a backslash added when there is room), and
// name the selected server.
void SelectServerAreas(const char* server, const char* system, const char* user,
                       const char* request, const char* name);

// Empties the explicit areas and the selected server name, so that sessions
// read the configuration file again.
void ClearExplicitAreas();

// Fills the session's areas once: from the explicit areas when set, else
// from the configuration file found by the search order, reading the
// "[API]" settings once per process.
VLRESULT ReadSessionConfig(ApiSession& session);

}  // namespace vl
