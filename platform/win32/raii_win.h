// Owners of the Windows resources the library holds, one line each.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include "platform/raii.h"

namespace os {

inline void CloseFileHandle(HANDLE h) { ::CloseHandle(h); }
inline void CloseFindHandle(HANDLE h) { ::FindClose(h); }
inline void CloseRegistryKey(HKEY k) { ::RegCloseKey(k); }
inline void UnloadModule(HMODULE m) { ::FreeLibrary(m); }
inline void ReleaseBstr(BSTR s) { ::SysFreeString(s); }

OS_RESOURCE_TRAITS(FileHandleTraits, HANDLE, INVALID_HANDLE_VALUE, CloseFileHandle);
OS_RESOURCE_TRAITS(KernelHandleTraits, HANDLE, nullptr, CloseFileHandle);
OS_RESOURCE_TRAITS(FindHandleTraits, HANDLE, INVALID_HANDLE_VALUE, CloseFindHandle);
OS_RESOURCE_TRAITS(RegistryKeyTraits, HKEY, nullptr, CloseRegistryKey);
OS_RESOURCE_TRAITS(ModuleTraits, HMODULE, nullptr, UnloadModule);
OS_RESOURCE_TRAITS(BstrTraits, BSTR, nullptr, ReleaseBstr);

using UniqueFileHandle = UniqueResource<FileHandleTraits>;
using UniqueHandle = UniqueResource<KernelHandleTraits>;
using UniqueFindHandle = UniqueResource<FindHandleTraits>;
using UniqueRegistryKey = UniqueResource<RegistryKeyTraits>;
using UniqueModule = UniqueResource<ModuleTraits>;
using UniqueBstr = UniqueResource<BstrTraits>;

}  // namespace os
