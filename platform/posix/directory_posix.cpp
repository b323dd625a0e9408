// No directory services on this platform: every lookup finds the library
// missing, as on a Windows machine without ACTIVEDS.dll.
#include "platform/directory_service.h"

namespace os::ads {
namespace {

class MissingProvider : public Provider {
 public:
  bool Load() override { return false; }
  Result OpenGlobalCatalog(std::unique_ptr<Search>*, CatalogStep* failedStep) override {
    *failedStep = CatalogStep::Open;
    return kFail;
  }
  Result ReadAttribute(const std::string&, const std::string&, std::string*) override {
    return kFail;
  }
  Result OpenSearch(const std::string&, std::unique_ptr<Search>*) override { return kFail; }
  Result ReplaceValues(const std::string&, const std::string&,
                       const std::vector<std::string>&) override {
    return kFail;
  }
};

}  // namespace

Provider& SystemDirectory() {
  static MissingProvider provider;
  return provider;
}

Apartment::Apartment() { entered_ = false; }
Apartment::~Apartment() = default;

}  // namespace os::ads
