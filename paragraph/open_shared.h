// The shared opener: opens a file with the sharing rules of its mode and
// retries while another opener holds it.
#pragma once

#include <cstdint>
#include <cstdio>

#include "platform/raii.h"

namespace para {

// A stream, or none with the system error of the last attempt.
struct Opened {
  os::UniqueFile file;
  int error = 0;

  FILE* get() const { return file.get(); }
  explicit operator bool() const { return file.valid(); }
};

// Opens path with a stdio-like mode: r, w, a or c (create a new file only),
// each optionally with + and t or b. "r" shares reading and writing; "a"
// denies other writers; every other mode denies all access. While the open
// fails with a sharing violation it is retried at once, again and again,
// until retrySeconds have passed; a negative retrySeconds selects the
// process default (initially 5). With no path, the call sets the default to
// retrySeconds and opens nothing.
Opened OpenShared(int16_t retrySeconds, const char* path, const char* mode);

// The same with the process default retry time.
Opened OpenShared(const char* path, const char* mode);

int16_t DefaultRetrySeconds();

}  // namespace para
