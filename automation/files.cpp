// The document files of a message: any number, each a path that must not be
// empty.
#include "automation/factories.h"
#include "automation/name_lists.h"

namespace vlauto {
namespace {

const NameListRules kFileRules{0, true, "IVlFiles::Add()", "IVlFiles::get_Item()"};

}  // namespace

CFiles::CFiles() : NameList(kFileRules) {}

HRESULT CreateFiles(const std::vector<std::string>& names, IVlFiles** out) {
  return CreateNameList<CFiles>(names, out);
}

}  // namespace vlauto
