// The check that a path is an existing, writable directory.
#pragma once

#include "api/session.h"

namespace vl {

// 0, or: 0xF70B when the path does not exist, 0xF728 when it cannot be read
// or is read-only, 0xF70A when it is a file; each reported.
VLRESULT CheckDirectory(const ApiSession* session, const char* path);

}  // namespace vl
