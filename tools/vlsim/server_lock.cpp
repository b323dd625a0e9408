#include "tools/vlsim/server_lock.h"

#include "paragraph/open_shared.h"

namespace vlsim {

int ServerLock::Acquire() {
  // Appending denies other writers and lets readers in, as the server does.
  para::Opened lock = para::OpenShared(0, path_.c_str(), "ab");
  if (!lock) return lock.error ? lock.error : 5;
  file_ = std::move(lock.file);
  return 0;
}

}  // namespace vlsim
