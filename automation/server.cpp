// Server: the four server actions, each behind an access check on the
// request area, and the snapshots of the server's state.
#include "automation/server.h"

#include <cstddef>
#include <utility>

#include "automation/access.h"
#include "automation/error_report.h"
#include "automation/factories.h"
#include "automation/server_info.h"

namespace vlauto {
namespace {

struct ActionRow {
  const char* source;
  uint32_t access;     // the rights the caller needs on the request area
  VLRESULT tolerated;  // a code that answers the question rather than fails
  VLRESULT (*call)(VLHANDLE handle, bool exclusive);
};

// Indexed by Server::Action. Stop hands the session's exclusive flag to the
// reserved argument, so an exclusive session's Stop is refused with 0xF700.
constexpr ActionRow kActions[] = {
    {"IVlServer::Start()", kReadWriteDeleteAccess, VL_OK,
     [](VLHANDLE handle, bool exclusive) { return VlxStartServer(handle, exclusive, nullptr); }},
    {"IVlServer::Check()", kReadAccess, VL_E_SERVER_NOT_RUNNING,
     [](VLHANDLE handle, bool) { return VlxCheckServer(handle); }},
    {"IVlServer::Stop()", kReadWriteDeleteAccess, VL_OK,
     [](VLHANDLE handle, bool exclusive) { return VlxStopServer(handle, exclusive); }},
    {"IVlServer::Restart()", kReadWriteDeleteAccess, VL_OK,
     [](VLHANDLE handle, bool) { return VlxRestartServer(handle, 0); }},
};

}  // namespace

HRESULT Server::Run(Action action, VLRESULT* code) {
  const ActionRow& row = kActions[static_cast<std::size_t>(action)];
  return Guarded([&] {
    if (!MayAccess(RequestArea(handle_), row.access))
      return ReportError(E_ACCESSDENIED, 0, __uuidof(IVlServer), row.source);
    *code = row.call(handle_, exclusive_);
    return *code == row.tolerated ? S_OK : ReportResult(*code, __uuidof(IVlServer), row.source);
  });
}

STDMETHODIMP Server::Start() {
  VLRESULT code = VL_OK;
  return Run(Action::kStart, &code);
}

STDMETHODIMP Server::Check(VARIANT_BOOL* out) {
  if (!out) return E_POINTER;
  *out = VARIANT_FALSE;
  VLRESULT code = VL_OK;
  const HRESULT hr = Run(Action::kCheck, &code);
  if (SUCCEEDED(hr) && code == VL_OK) *out = VARIANT_TRUE;
  return hr;
}

STDMETHODIMP Server::Stop() {
  VLRESULT code = VL_OK;
  return Run(Action::kStop, &code);
}

STDMETHODIMP Server::Restart() {
  VLRESULT code = VL_OK;
  return Run(Action::kRestart, &code);
}

STDMETHODIMP Server::GetServerInfo(IVlServerInfo** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    os::ComPtr<ServerInfo> info = MakeObject<ServerInfo>(handle_);
    if (!info)
      return ReportError(E_OUTOFMEMORY, 0, __uuidof(IVlServer), "IVlServer::GetServerInfo()");
    if (HRESULT hr = info->Init(); FAILED(hr)) return hr;
    return ReturnObject(std::move(info), out);
  });
}

HRESULT CreateServer(VLHANDLE handle, bool exclusive, IVlServer** out) {
  if (HRESULT hr = ReturnObject(MakeObject<Server>(handle, exclusive), out); FAILED(hr))
    return ReportError(hr, 0, __uuidof(IVlUserSession), "IVlUserSession::get_Server()");
  return S_OK;
}

}  // namespace vlauto
