// Resolving an account name to a fax user name through "USERLIST.INI".
#pragma once

#include "api/session.h"

namespace vl {

// Looks account up in the system's user list: the "Name:" of the first
// "[USER]" whose "Username:" equals it, else the first "[GROUP]" whose
// "Name:" equals it. userName receives at most 8 characters. wholeName is
// the name as the caller gave it, for the report.
VLRESULT ResolveAccountName(ApiSession& session, const char* account, const char* wholeName,
                            char (&userName)[kUserNameSize]);

}  // namespace vl
