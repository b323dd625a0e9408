// Failures of vlfax and how they become exit codes and messages.
#pragma once

#include <stdexcept>
#include <string>

#include "vlapi.h"

namespace vlfax {

// Exit codes of the program.
enum ExitCode : int {
  kExitOk = 0,
  kExitFailure = 1,     // a failure reported by the library or the system
  kExitSendFailed = 2,  // send --wait: the message reached a failed state
  kExitUsage = 64,      // bad command line
};

// A library call that returned a non-zero result.
class LibraryError : public std::runtime_error {
 public:
  LibraryError(const std::string& what, VLRESULT code);
  uint16_t code() const { return code_; }

 private:
  uint16_t code_;
};

// A system call that failed with a Windows error code.
class SystemError : public std::runtime_error {
 public:
  SystemError(const std::string& what, unsigned long error);
};

// A command line that names something impossible; usage is printed with it.
class UsageError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

// Throws LibraryError for a non-zero result of the call described by what.
void Check(VLRESULT result, const std::string& what);

// The library's own text for a result code, from Vlapi64.dll's message
// table; empty when the module has none.
std::string ResultText(uint16_t code);

// The system's text for a Windows error code, without the trailing line end.
std::string SystemText(unsigned long error);

}  // namespace vlfax
