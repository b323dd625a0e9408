// VlAPI: logs users on and holds the process-wide settings that sessions
// made later read: the API temporary directory, the explicit areas and the
// server selected from the directory service.
#include "automation/vl_api.h"

#include <cstring>
#include <string>
#include <vector>

#include "api/config.h"
#include "api/process_state.h"
#include "api/text.h"
#include "automation/dispatch_object.h"
#include "automation/error_report.h"
#include "automation/factories.h"
#include "automation/text.h"
#include "directory/directory_api.h"
#include "vllib.h"

namespace vlauto {
namespace {

// Bytes of the buffers the directory getters fetch into.
constexpr int kDirectoryBuffer = 261;

class VlApi final : public DispatchObject<IVlAPI> {
 public:
  STDMETHODIMP Logon(BSTR userName, VARIANT_BOOL exclusive, IVlUserSession** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    loggedOn_ = 1;
    return Guarded([&] {
      return LogonUserSession(userName, exclusive, autoTempDirectory_, "IVlAPI::Logon()", out);
    });
  }

  STDMETHODIMP LogonAnonymous(IVlUserSession** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    loggedOn_ = 1;
    os::UniqueBstr empty(SysAllocString(L""));
    if (!empty) return E_OUTOFMEMORY;
    return Guarded([&] {
      return LogonUserSession(empty.get(), VARIANT_FALSE, autoTempDirectory_,
                              "IVlAPI::LogonAnonymous()", out);
    });
  }

  STDMETHODIMP get_Version(BSTR* out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    char version[32] = {};
    if (VLRESULT rc = VlxGetAPIVersion(version, sizeof version, nullptr))
      return ReportResult(rc, __uuidof(IVlAPI), "IVlAPI::Version()");
    return ReturnText(version, out);
  }

  STDMETHODIMP get_AutoTempDirectory(VARIANT_BOOL* out) override {
    if (!out) return E_POINTER;
    *out = autoTempDirectory_;
    return S_OK;
  }
  STDMETHODIMP put_AutoTempDirectory(VARIANT_BOOL value) override {
    if (value == autoTempDirectory_) return S_OK;
    if (loggedOn_)
      return ReportError(E_FAIL, 0, __uuidof(IVlAPI), "IVlAPI::put_AutoTempDirectory()");
    autoTempDirectory_ = value;
    return S_OK;
  }

  STDMETHODIMP Escape(BSTR command, long value) override {
    if (IsEmpty(command)) return E_INVALIDARG;
    return Guarded([&] {
      return ReportResult(VlxEscape(0, Narrow(command).c_str(), value), __uuidof(IVlAPI),
                          "IVlServer::Escape()");
    });
  }

  STDMETHODIMP SetTempDir(BSTR directory) override {
    if (!directory) return E_INVALIDARG;
    return Guarded([&] {
      char (&store)[257] = vl::Process().apiTempDirectory;
      vl::CopyBounded(store, sizeof store, Narrow(directory).c_str());
      return S_OK;
    });
  }

  STDMETHODIMP SetVelomarDirs(BSTR server, BSTR system, BSTR users, BSTR request) override {
    if (loggedOn_) return ReportError(E_FAIL, 0, __uuidof(IVlAPI), "IVlAPI::SetVelomarDirs()");
    if (!server || !system || !users || !request) return E_INVALIDARG;
    return Guarded([&] {
      return ReportResult(vl::SetAreas(Narrow(server).c_str(), Narrow(system).c_str(),
                                       Narrow(users).c_str(), Narrow(request).c_str()),
                          __uuidof(IVlAPI), "IVlAPI::SetVelomarDirs()");
    });
  }

  STDMETHODIMP get_EnableImpersonation(VARIANT_BOOL* out) override {
    if (!out) return E_POINTER;
    *out = enableImpersonation_;
    return S_OK;
  }
  STDMETHODIMP put_EnableImpersonation(VARIANT_BOOL value) override {
    enableImpersonation_ = value;
    return S_OK;
  }

  STDMETHODIMP get_ServerDir(BSTR* out) override { return Area(0, "IVlAPI::get_ServerDir()", out); }
  STDMETHODIMP get_SystemDir(BSTR* out) override { return Area(1, "IVlAPI::get_SystemDir()", out); }
  STDMETHODIMP get_UsersDir(BSTR* out) override { return Area(2, "IVlAPI::get_UsersDir()", out); }
  STDMETHODIMP get_RequestDir(BSTR* out) override {
    return Area(3, "IVlAPI::get_RequestDir()", out);
  }

  STDMETHODIMP SetVelomarServerFromAD(BSTR name) override {
    if (!name) return E_INVALIDARG;
    return Guarded([&] {
      return ReportResult(vl::SetServerFromDirectory(Narrow(name).c_str()), __uuidof(IVlAPI),
                          "IVlAPI::SetVelomarServerFromAD()");
    });
  }

  STDMETHODIMP get_VelomarServer(BSTR* out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    char name[kDirectoryBuffer] = {};
    if (VLRESULT rc = vl::GetSelectedServerName(name, sizeof name))
      return ReportResult(rc, __uuidof(IVlAPI), "IVlAPI::get_VelomarServer()");
    return ReturnText(name, out);
  }

  STDMETHODIMP GetVelomarServersFromAD(VARIANT* out) override;
  STDMETHODIMP GetVelomarServerInfoFromAD(BSTR name, BSTR* server, BSTR* system, BSTR* users,
                                          BSTR* request) override;

 private:
  // One of the explicit areas: 0 server, 1 system, 2 users, 3 request.
  HRESULT Area(int which, const char* source, BSTR* out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    char areas[4][kDirectoryBuffer] = {};
    if (VLRESULT rc = vl::GetAreas(areas[0], areas[1], areas[2], areas[3]))
      return ReportResult(rc, __uuidof(IVlAPI), source);
    return ReturnText(areas[which], out);
  }

  int32_t loggedOn_ = 0;
  VARIANT_BOOL autoTempDirectory_ = VARIANT_FALSE;
  VARIANT_BOOL enableImpersonation_ = VARIANT_FALSE;
};

// The names of a ","-joined list as a SAFEARRAY of VARIANT strings.
HRESULT NameArray(const std::string& joined, VARIANT* out) {
  std::vector<std::string> names;
  for (size_t start = 0; start < joined.size();) {
    size_t end = joined.find(',', start);
    if (end == std::string::npos) end = joined.size();
    names.push_back(joined.substr(start, end - start));
    start = end + 1;
  }
  os::UniqueSafeArray array(SafeArrayCreateVector(VT_VARIANT, 0, static_cast<ULONG>(names.size())));
  if (!array) return E_OUTOFMEMORY;
  for (LONG i = 0; i < static_cast<LONG>(names.size()); ++i) {
    os::UniqueVariant item;
    V_VT(item.get()) = VT_BSTR;
    if (HRESULT hr = ReturnText(names[i].c_str(), &V_BSTR(item.get())); FAILED(hr)) return hr;
    if (HRESULT hr = SafeArrayPutElement(array.get(), &i, item.get()); FAILED(hr)) return hr;
  }
  V_VT(out) = VT_ARRAY | VT_VARIANT;
  V_ARRAY(out) = array.release();
  return S_OK;
}

STDMETHODIMP VlApi::GetVelomarServersFromAD(VARIANT* out) {
  if (!out) return E_POINTER;
  VariantInit(out);
  return Guarded([&] {
    constexpr int16_t kListBytes = 1000;
    std::string names(kListBytes, '\0');
    if (VLRESULT rc = vl::GetServersFromDirectory(names.data(), kListBytes, 0))
      return ReportResult(rc, __uuidof(IVlAPI), "IVlAPI::GetVelomarServersFromAD()");
    names.resize(std::strlen(names.c_str()));
    return NameArray(names, out);
  });
}

STDMETHODIMP VlApi::GetVelomarServerInfoFromAD(BSTR name, BSTR* server, BSTR* system,
                                               BSTR* users, BSTR* request) {
  if (!server || !system || !users || !request) return E_POINTER;
  *server = *system = *users = *request = nullptr;
  if (IsEmpty(name)) return E_INVALIDARG;
  return Guarded([&] {
    vl::directory::ServerAreas areas;
    vl::directory::ServerLists lists;
    if (VLRESULT rc = vl::GetServerInfoFromDirectory(Narrow(name).c_str(), &areas, &lists))
      return ReportResult(rc, __uuidof(IVlAPI), "IVlAPI::GetVelomarServerInfoFromAD()");
    os::UniqueBstr texts[4];
    const std::string* values[4] = {&areas.server, &areas.system, &areas.user, &areas.request};
    for (int i = 0; i < 4; ++i) {
      BSTR text = nullptr;
      if (HRESULT hr = ReturnText(values[i]->c_str(), &text); FAILED(hr)) return hr;
      texts[i].reset(text);
    }
    *server = texts[0].release();
    *system = texts[1].release();
    *users = texts[2].release();
    *request = texts[3].release();
    return S_OK;
  });
}

}  // namespace

HRESULT CreateVlApi(REFIID iid, void** out) {
  os::ComPtr<VlApi> api = MakeObject<VlApi>();
  if (!api) return E_OUTOFMEMORY;
  return api->QueryInterface(iid, out);
}

}  // namespace vlauto
