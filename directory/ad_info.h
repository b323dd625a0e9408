// The search root of directory lookups: the global catalogue, else the
// default domain of the machine.
#pragma once

#include <memory>
#include <string>

#include "platform/directory_service.h"

namespace vl::directory {

// "LDAP://" + object, asked of the default domain's server (or of the
// server a test named, fault::PinDirectoryServer).
std::string LdapPath(const std::string& object);

class VLADInfo {
 public:
  // Binds the global catalogue and keeps the search interface of its first
  // element (the holder stays empty when that element has none).
  os::ads::Result GetGCSearchPtr();

  // Binds the default domain: "LDAP://rootDSE", its defaultNamingContext,
  // then "LDAP://" + that name.
  os::ads::Result GetDefaultDomainSearchPtr();

  // The global catalogue, else the default domain, each failure logged with
  // the operation's name at its head.
  os::ads::Result Bind(const char* operation);

  os::ads::Search* SearchPtr() const { return search_.get(); }

 private:
  std::unique_ptr<os::ads::Search> search_;
};

}  // namespace vl::directory
