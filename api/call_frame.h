// The frame every exported function runs in: resolve the handle, trace the
// entry, refuse a missing session or user, run the work with no exception
// escaping, and trace the closing line on success.
#pragma once

#include <new>

#include "api/diagnostics.h"
#include "api/session.h"
#include "vlapi.h"

namespace vl {

enum class UserRule { NotNeeded, Needed };

// Runs work(), turning any exception into a result code and a report.
template <typename Work>
VLRESULT Guarded(const ApiSession* session, Work&& work) noexcept {
  try {
    return work();
  } catch (const std::bad_alloc&) {
    try {
      ApiReportError(session, "API memory error");
    } catch (...) {
    }
    return VL_E_MALLOC_FAILED;
  } catch (...) {
    try {
      ApiReportError(session, "API function aborted");
    } catch (...) {
    }
    return VL_E_FUNCTION_ABORT;
  }
}

class CallFrame {
 public:
  // name is the function's name as its closing trace line gives it.
  CallFrame(VLHANDLE handle, const char* name, UserRule rule) noexcept
      : name_(name), rule_(rule) {
    try {
      session_ = SessionFromHandle(handle);
    } catch (...) {
    }
  }

  // Writes the entry trace line, carrying the resolved session.
  template <typename... Args>
  CallFrame& Enter(const char* format, Args... args) noexcept {
    try {
      ApiTrace(session_.get(), format, args...);
    } catch (...) {
    }
    return *this;
  }

  // For work that succeeds without the closing trace line.
  void OmitClosingTrace() { quiet_ = true; }

  // Runs work(ApiSession&) and returns its result code.
  template <typename Work>
  VLRESULT Run(Work&& work) noexcept {
    if (!session_) return VL_E_NOT_INIT;
    if (rule_ == UserRule::Needed && !session_->HasUser()) return VL_E_USER_NOT_INIT;
    ApiSession& session = *session_;
    VLRESULT result = Guarded(&session, [&] { return work(session); });
    if (result == VL_OK && !quiet_) {
      try {
        ApiTrace(&session, "...%s - return OK", name_);
      } catch (...) {
      }
    }
    return result;
  }

 private:
  const char* name_;
  UserRule rule_;
  SessionPtr session_;
  bool quiet_ = false;
};

}  // namespace vl
