// The automation server's module state: live objects and server locks (for
// DllCanUnloadNow), the module's own handle and path, and the type
// information of each interface, loaded once from the module's type library.
#pragma once

#include <windows.h>
#include <oaidl.h>

#include <string>

namespace vlauto {

// Counts an automation object alive; every object calls these once, from its
// constructor and destructor.
void ObjectCreated();
void ObjectDestroyed();
void LockServer(bool lock);
// True when no object and no server lock is alive.
bool CanUnload();

// The module that holds this code (the DLL, or a program that links it).
HMODULE ThisModule();
std::wstring ThisModulePath();

// The type information of one interface of the type library, loaded on first
// use and kept until ReleaseTypeInformation. Returns an added reference.
HRESULT GetInterfaceTypeInfo(REFIID iid, ITypeInfo** info);
// Lets go the type library and every cached type information.
void ReleaseTypeInformation();

// QueryInterface of an object that offers IUnknown and the one interface I.
template <typename I>
HRESULT QueryOneInterface(I* self, REFIID iid, void** out) {
  if (!out) return E_POINTER;
  if (!IsEqualIID(iid, IID_IUnknown) && !IsEqualIID(iid, __uuidof(I))) {
    *out = nullptr;
    return E_NOINTERFACE;
  }
  self->AddRef();
  *out = self;
  return S_OK;
}

}  // namespace vlauto
