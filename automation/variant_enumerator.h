// The enumerator that every collection's _NewEnum returns: IEnumVARIANT over
// a snapshot of the collection's items, taken when it is made.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <memory>
#include <vector>

#include "platform/win32/raii_win.h"

namespace vlauto {

using VariantList = std::vector<os::UniqueVariant>;

// A new enumerator over items, from the first; its IUnknown with one
// reference, or E_OUTOFMEMORY.
HRESULT MakeVariantEnumerator(std::shared_ptr<const VariantList> items, IUnknown** out);

}  // namespace vlauto
