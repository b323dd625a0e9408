// Item indices of the collections.
#include "automation/collection.h"

namespace vlauto {

bool IndexOf(const VARIANT& index, long* position) {
  os::UniqueVariant value;
  if (FAILED(VariantCopyInd(value.get(), const_cast<VARIANT*>(&index)))) return false;
  os::UniqueVariant converted;
  if (FAILED(VariantChangeType(converted.get(), value.get(), 0, VT_I4))) return false;
  *position = V_I4(converted.get());
  return true;
}

}  // namespace vlauto
