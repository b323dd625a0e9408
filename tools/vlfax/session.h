// A logged-on session of the library, closed when it goes out of scope.
#pragma once

#include <string>

#include "vlapi.h"

namespace vlfax {

class Session {
 public:
  // Logs userName on (a fax user or a Windows account that USERLIST.INI
  // maps to one); throws LibraryError when the library refuses.
  explicit Session(const std::string& userName);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  VLHANDLE handle() const { return handle_; }

 private:
  VLHANDLE handle_ = 0;
};

// The current Windows account as DOMAIN\name, or the plain user name when
// the account name is not available; empty when neither is.
std::string CurrentAccount();

}  // namespace vlfax
