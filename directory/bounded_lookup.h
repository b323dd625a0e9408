// Directory lookups with a deadline: a directory that accepts the
// connection and never answers must not hang the caller.
#pragma once

#include <functional>

namespace vl::directory {

// Seconds a lookup may take in all before it counts as failed.
inline constexpr int kLookupSeconds = 40;

// Runs lookup on a thread of its own and waits for it at most seconds
// (kLookupSeconds unless a test set another deadline). False when it did not
// finish in time: it then runs on by itself, and everything it touches must
// be its own (captured by value or shared).
bool RunWithinDeadline(std::function<void()> lookup);

// A test's shorter deadline; 0 restores kLookupSeconds.
void SetLookupDeadlineForTests(int seconds);

}  // namespace vl::directory
