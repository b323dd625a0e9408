// The root object VlAPI, the one object clients create.
#pragma once

#include <windows.h>

namespace vlauto {

// A new VlAPI object, asked for interface iid.
HRESULT CreateVlApi(REFIID iid, void** out);

}  // namespace vlauto
