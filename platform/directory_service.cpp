// The directory calls of the platform layer: fault injection first, then
// the test's stand-in or the system's directory services.
#include "platform/directory_service.h"

#include <strings.h>

#include "platform/fault.h"

namespace os::ads {
namespace {

Provider& InUse() {
  Provider* standIn = fault::DirectoryStandIn();
  return standIn ? *standIn : SystemDirectory();
}

}  // namespace

const std::vector<std::string>* Row::Values(std::string_view name) const {
  for (const Column& column : columns) {
    if (column.name.size() == name.size() &&
        strncasecmp(column.name.c_str(), name.data(), name.size()) == 0)
      return &column.values;
  }
  return nullptr;
}

bool Load() {
  if (fault::Injected(fault::Op::LoadDirectory)) return false;
  return InUse().Load();
}

Result OpenGlobalCatalog(std::unique_ptr<Search>* search, CatalogStep* failedStep) {
  if (int e = fault::Injected(fault::Op::Directory)) {
    *failedStep = CatalogStep::Open;
    return e;
  }
  return InUse().OpenGlobalCatalog(search, failedStep);
}

Result ReadAttribute(const std::string& path, const std::string& name, std::string* value) {
  if (int e = fault::Injected(fault::Op::Directory)) return e;
  return InUse().ReadAttribute(path, name, value);
}

Result OpenSearch(const std::string& path, std::unique_ptr<Search>* search) {
  if (int e = fault::Injected(fault::Op::Directory)) return e;
  return InUse().OpenSearch(path, search);
}

Result ReplaceValues(const std::string& path, const std::string& attribute,
                     const std::vector<std::string>& values) {
  if (int e = fault::Injected(fault::Op::Directory)) return e;
  return InUse().ReplaceValues(path, attribute, values);
}

}  // namespace os::ads
