// The attachments of a message: at most 30, written as one "ATTACH:" line.
#include "automation/factories.h"
#include "automation/name_lists.h"

namespace vlauto {
namespace {

const NameListRules kAttachmentRules{30, false, "IVlAttachments::Add()",
                                     "IVlAttachments::get_Item()"};

}  // namespace

CAttachments::CAttachments() : NameList(kAttachmentRules) {}

HRESULT CreateAttachments(const std::vector<std::string>& names, IVlAttachments** out) {
  return CreateNameList<CAttachments>(names, out);
}

}  // namespace vlauto
