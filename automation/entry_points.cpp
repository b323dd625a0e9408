// The in-process server's entry points and the class factory of VlAPI, the
// one class that clients can create.
#include <windows.h>

#include <atomic>
#include <new>

#include "automation/dispatch_object.h"
#include "automation/module.h"
#include "automation/registration.h"
#include "automation/vl_api.h"
#include "vllib.h"

namespace vlauto {
namespace {

class VlApiFactory final : public IClassFactory {
 public:
  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    return QueryOneInterface<IClassFactory>(this, iid, out);
  }
  // The factory is static: its references keep nothing alive.
  STDMETHODIMP_(ULONG) AddRef() override { return 2; }
  STDMETHODIMP_(ULONG) Release() override { return 1; }

  STDMETHODIMP CreateInstance(IUnknown* outer, REFIID iid, void** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (outer) return CLASS_E_NOAGGREGATION;
    return CreateVlApi(iid, out);
  }
  STDMETHODIMP LockServer(BOOL lock) override {
    vlauto::LockServer(lock != FALSE);
    return S_OK;
  }
};

VlApiFactory factory;

}  // namespace
}  // namespace vlauto

extern "C" {

STDAPI DllGetClassObject(REFCLSID clsid, REFIID iid, void** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  if (!IsEqualCLSID(clsid, CLSID_VlAPI)) return CLASS_E_CLASSNOTAVAILABLE;
  return vlauto::factory.QueryInterface(iid, out);
}

// With nothing alive the type information is let go here, outside the
// loader lock; a later object loads it again.
STDAPI DllCanUnloadNow() {
  if (!vlauto::CanUnload()) return S_FALSE;
  vlauto::ReleaseTypeInformation();
  return S_OK;
}

STDAPI DllRegisterServer() {
  return vlauto::Guarded([] { return vlauto::RegisterServer(); });
}

STDAPI DllUnregisterServer() {
  return vlauto::Guarded([] { return vlauto::UnregisterServer(); });
}

}  // extern "C"
