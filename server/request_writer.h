// Request files: the small paragraph files through which the client asks
// the server's queue manager or system manager to act.
#pragma once

#include <cstdint>

#include "api/session.h"

namespace vl {

enum RequestCode : int16_t {
  kRequestSend = 1,
  kRequestDelete = 2,
  kRequestHold = 3,
  kRequestRelease = 4,
  kRequestRush = 5,
  kRequestShutdown = 10,
  kRequestRestart = 11,
};

// Writes one request into the request area under a unique ".TMP" name and
// renames it to ".CTL" once complete, so that the server never sees half a
// request. 0, the directory check's or the unique-name creator's code, or
// 0xF714.
VLRESULT WriteRequest(const ApiSession& session, int16_t code, uint16_t selector, const char* body);

}  // namespace vl
