// Module state of the automation server.
#include "automation/module.h"

#include <atomic>
#include <map>

#include "platform/win32/raii_win.h"

namespace vlauto {
namespace {

std::atomic<long> liveObjects{0};
std::atomic<long> serverLocks{0};

// Objects are apartment-threaded, but different apartments of one process
// may load type information at the same time.
struct TypeInformation {
  CRITICAL_SECTION lock;
  os::ComPtr<ITypeLib> library;
  std::map<GUID, os::ComPtr<ITypeInfo>, bool (*)(const GUID&, const GUID&)> byInterface{
      [](const GUID& a, const GUID& b) { return memcmp(&a, &b, sizeof a) < 0; }};
  TypeInformation() { InitializeCriticalSection(&lock); }
};

TypeInformation& Types() {
  static TypeInformation* types = new TypeInformation;  // kept past static destruction
  return *types;
}

}  // namespace

void ObjectCreated() { ++liveObjects; }
void ObjectDestroyed() { --liveObjects; }
void LockServer(bool lock) { lock ? ++serverLocks : --serverLocks; }
bool CanUnload() { return liveObjects == 0 && serverLocks == 0; }

HMODULE ThisModule() {
  HMODULE module = nullptr;
  GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                         GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                     reinterpret_cast<LPCWSTR>(&ThisModule), &module);
  return module;
}

std::wstring ThisModulePath() {
  wchar_t path[MAX_PATH + 1];
  DWORD length = GetModuleFileNameW(ThisModule(), path, MAX_PATH + 1);
  return length > 0 && length <= MAX_PATH ? std::wstring(path, length) : std::wstring();
}

HRESULT GetInterfaceTypeInfo(REFIID iid, ITypeInfo** info) {
  *info = nullptr;
  TypeInformation& types = Types();
  EnterCriticalSection(&types.lock);
  auto leave = os::scope_exit([&] { LeaveCriticalSection(&types.lock); });
  auto found = types.byInterface.find(iid);
  if (found == types.byInterface.end()) {
    if (!types.library) {
      HRESULT hr = LoadTypeLibEx(ThisModulePath().c_str(), REGKIND_NONE, types.library.put());
      if (FAILED(hr)) return hr;
    }
    os::ComPtr<ITypeInfo> loaded;
    HRESULT hr = types.library->GetTypeInfoOfGuid(iid, loaded.put());
    if (FAILED(hr)) return hr;
    found = types.byInterface.emplace(iid, std::move(loaded)).first;
  }
  *info = found->second.get();
  (*info)->AddRef();
  return S_OK;
}

void ReleaseTypeInformation() {
  TypeInformation& types = Types();
  EnterCriticalSection(&types.lock);
  types.byInterface.clear();
  types.library.reset();
  LeaveCriticalSection(&types.lock);
}

}  // namespace vlauto
