// The running server as the library sees it: its lock file in the request
// area, held open for writing by another process. Where sharing modes are
// not enforced (the native build), the server check is switched off instead.
#pragma once

#include <memory>
#include <string>

namespace vltest {

class FileHolder;

class ServerStandIn {
 public:
  explicit ServerStandIn(const std::string& requestArea);
  ~ServerStandIn();
  // Stops the server: the lock file stays, but nobody holds it.
  void Stop();

 private:
  std::unique_ptr<FileHolder> holder_;
};

}  // namespace vltest
