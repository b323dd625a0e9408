// The per-logon session record and the table that maps handle values to
// live records.
#pragma once

#include <cstdint>
#include <memory>

#include "platform/raii.h"
#include "vlapi.h"

namespace vl {

inline constexpr int32_t kSessionMagic = 123456;
inline constexpr int kAreaSize = 257;  // 256 characters and the NUL
inline constexpr int kUserNameSize = 9;

struct ApiSession {
  int32_t magic = 0;
  VLERRORPROC errorCallback = nullptr;
  os::UniqueFd lockFile;  // the user lock; -1 (invalid) when none is held
  char userArea[kAreaSize] = {};
  char requestArea[kAreaSize] = {};
  char systemArea[kAreaSize] = {};
  char serverArea[kAreaSize] = {};
  char userName[kUserNameSize] = {};
  char userOutDir[kAreaSize] = {};
  char userInDir[kAreaSize] = {};
  int32_t lockRequested = 0;
  int32_t active = 0;
  int32_t configRead = 0;
  // Change memory of each message directory (out, in): the time of the last
  // reported change and the list file's modification time seen then.
  int64_t lastChangeTime[2] = {};
  int64_t lastListTime[2] = {};
  // The handle value that designates this record; 0 for a temporary record.
  VLHANDLE handle = 0;

  bool HasUser() const { return userName[0] != '\0'; }
};

using SessionPtr = std::shared_ptr<ApiSession>;

// A new zero-filled record marked live, with a handle value reserved for it
// (the record is not yet found by that value). Throws std::bad_alloc.
SessionPtr NewSession(VLERRORPROC errorCallback);

// Makes the record findable by its handle value.
void RegisterSession(const SessionPtr& session);

// The live record designated by handle, or none: 0, a value never handed
// out and the value of a closed session all give none. No memory is read
// through the value itself.
SessionPtr SessionFromHandle(VLHANDLE handle);

// Forgets the record designated by handle; the record is freed when the
// last caller holding it lets go.
void UnregisterSession(VLHANDLE handle);

}  // namespace vl
