// The per-user lock: the file "VELOMAR.LOK" in the user's "V-DB"
// directory, held open with all sharing denied for the session's life.
#pragma once

#include "api/session.h"

namespace vl {

// Takes (take) or releases the lock of the session's user. Taking fails,
// reported, when the file cannot be read or another session holds it;
// releasing always succeeds.
bool LockUser(ApiSession& session, bool take);

}  // namespace vl
