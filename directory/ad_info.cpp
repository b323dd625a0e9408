#include "directory/ad_info.h"

#include "lib/log_writer.h"
#include "platform/fault.h"

namespace vl::directory {

std::string LdapPath(const std::string& object) {
  const std::string& server = os::fault::PinnedDirectoryServer();
  return "LDAP://" + (server.empty() ? object : server + "/" + object);
}

os::ads::Result VLADInfo::GetGCSearchPtr() {
  LogWrite(1, "VLADInfo::GetGCSearchPtr()");
  std::unique_ptr<os::ads::Search> found;
  os::ads::CatalogStep step;
  os::ads::Result hr = os::ads::OpenGlobalCatalog(&found, &step);
  if (os::ads::Failed(hr)) {
    static const char* const kFailures[] = {
        "VLADInfo::GetGCSearchPtr() - Unable to AdsOpenObject on GC (%x)",
        "VLADInfo::GetGCSearchPtr() - Failed to ADsBuildEnumerator (%x)",
        "VLADInfo::GetGCSearchPtr() - Failed to get enum object (%x)"};
    LogWrite(4, kFailures[static_cast<int>(step)], static_cast<unsigned>(hr));
    return hr;
  }
  search_ = std::move(found);
  return hr;
}

os::ads::Result VLADInfo::GetDefaultDomainSearchPtr() {
  std::string namingContext;
  os::ads::Result hr =
      os::ads::ReadAttribute(LdapPath("rootDSE"), "defaultNamingContext", &namingContext);
  if (os::ads::Failed(hr)) return hr;
  std::unique_ptr<os::ads::Search> found;
  hr = os::ads::OpenSearch(LdapPath(namingContext), &found);
  if (!os::ads::Failed(hr)) search_ = std::move(found);
  return hr;
}

os::ads::Result VLADInfo::Bind(const char* operation) {
  os::ads::Result hr = GetGCSearchPtr();
  // A catalogue element without a search interface is no search root either.
  if (!os::ads::Failed(hr) && !search_) hr = os::ads::kNoInterface;
  if (!os::ads::Failed(hr)) return hr;
  LogWrite(2, "%s - Failed to get GC Search Pointer (%x)", operation, static_cast<unsigned>(hr));
  hr = GetDefaultDomainSearchPtr();
  LogWrite(2, "%s - Result from getting default domain search pointer (%x)", operation,
           static_cast<unsigned>(hr));
  return hr;
}

}  // namespace vl::directory
