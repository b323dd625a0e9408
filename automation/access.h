// The caller's rights on the shared directories, checked before a member
// touches them.
#pragma once

#include <cstdint>
#include <string>

#include "vlapi.h"

namespace vlauto {

enum AccessMask : uint32_t {
  kReadAccess = 0x120089,
  kReadWriteAccess = 0x12019F,
  kReadWriteDeleteAccess = 0x13019F,
};

// True when the caller's account is granted mask on the directory. An empty
// directory (that of a closed session) is not refused here: the call that
// follows reports the closed handle with its own code.
bool MayAccess(const std::string& directory, uint32_t mask);

// The session's request area and user directories ("" when the handle has
// none).
std::string RequestArea(VLHANDLE handle);
std::string UserOutDir(VLHANDLE handle);
// The user's in directory (selector 2) or out directory (any other).
std::string FolderDir(VLHANDLE handle, uint16_t folder);

}  // namespace vlauto
