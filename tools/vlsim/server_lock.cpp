#include "tools/vlsim/server_lock.h"

#include "paragraph/open_shared.h"

namespace vlsim {

int ServerLock::Acquire() {
  // Appending denies other writers and lets readers in, as the server does.
  // A client testing the lock holds it for a moment: that is waited out.
  para::Opened lock = para::OpenShared(kRetrySeconds, path_.c_str(), "ab");
  if (!lock) return lock.error ? lock.error : 5;
  file_ = std::move(lock.file);
  return 0;
}

}  // namespace vlsim
