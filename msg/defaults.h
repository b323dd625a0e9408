// A user's message defaults (fixed values, then the "[OPTIONS]" paragraphs of
// the system's and of the user's own USER.INI) and the user's mail address
// from MAILLIST.INI.
#pragma once

#include <cstdint>

#include "api/session.h"
#include "msg/message_options.h"
#include "vlapi.h"

namespace vl {

// Fills options with the fixed defaults for format, then applies the
// "[OPTIONS]" keys of SYSTEM\V-DB\USER.INI and then of USERS\name\V-DB\USER.INI.
// 0; 0xF715 when the system area leaves no room for the file name; 0xF717
// when the user's directory cannot be had or a file cannot be opened, the
// latter reported as "Cannot open file %s".
VLRESULT LoadMessageDefaults(const ApiSession& session, uint16_t format, MessageOptions* options);

// The exported defaults record made from loaded options: priority, header,
// quality and send time as numbers, names copied only when they fit.
void FillDefaultsRecord(const MessageOptions& options, VLMSGDEFAULTSEX* record);

// Kinds of mail address, from the prefix of the "Emailname:" value.
inline constexpr uint16_t kMailKindNone = 0;  // no MAILLIST.INI
inline constexpr uint16_t kMailKindEx = 1;    // "ex:"
inline constexpr uint16_t kMailKindSmtp = 2;  // "smtp:"
inline constexpr uint16_t kMailKindNot = 3;   // "not:"
inline constexpr uint16_t kMailKindGrw = 4;   // "grw:"
inline constexpr uint16_t kMailKindOther = 0xFFFF;  // no known prefix: both bytes 255

// The session user's mail address from the "[USER]" paragraphs of
// SYSTEM\V-DB\MAILLIST.INI: the last one naming the user ("Veloname:") that
// is not a profile gives kind and address (cut to capacity - 1). Either
// output may be null, not both (0xF700). Without the file: kind 0, empty
// address, 0. A file that cannot be opened: 0xF70A.
VLRESULT GetUserMailAddress(VLHANDLE handle, uint16_t* kind, char* address, int capacity);

}  // namespace vl
