// The running server's lock file "VELOMAR.LOK" in the request area: held
// open for writing while the server runs, which is how clients tell that
// it runs.
#pragma once

#include <cstdint>
#include <string>

#include "platform/raii.h"

namespace vlsim {

class ServerLock {
 public:
  explicit ServerLock(const std::string& requestArea)
      : path_(requestArea + "VELOMAR.LOK") {}
  // 0, or the system error number when another server holds it (after
  // trying for a few seconds).
  int Acquire();
  void Release() { file_.reset(); }
  bool held() const { return file_.valid(); }

 private:
  static constexpr int16_t kRetrySeconds = 3;
  std::string path_;
  os::UniqueFile file_;
};

}  // namespace vlsim
