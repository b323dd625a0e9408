// Server: the fax server as a session's script sees it. It checks, starts,
// stops and restarts the server after checking the caller's rights on the
// request area, and takes snapshots of the server's state.
#pragma once

#include <cstdint>

#include "automation/dispatch_object.h"
#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

class Server final : public DispatchObject<IVlServer> {
 public:
  // Copies the session's handle and exclusive flag; holds no reference to
  // the session.
  Server(VLHANDLE handle, bool exclusive) : handle_(handle), exclusive_(exclusive) {}

  STDMETHODIMP Start() override;
  // True while the server runs; a stopped server is an answer, not an error.
  STDMETHODIMP Check(VARIANT_BOOL* out) override;
  STDMETHODIMP Stop() override;
  STDMETHODIMP Restart() override;
  // A new ServerInfo holding a snapshot of the server's status.
  STDMETHODIMP GetServerInfo(IVlServerInfo** out) override;
  // A retired slot: does nothing.
  STDMETHODIMP Id6() override { return S_OK; }

 private:
  enum class Action { kStart, kCheck, kStop, kRestart };

  // Runs one action after its access check. The action's result code goes to
  // *code; S_OK when it is 0 or the action's tolerated code, else the code's
  // automation error, reported.
  HRESULT Run(Action action, VLRESULT* code);

  VLHANDLE handle_;
  bool exclusive_;
};

}  // namespace vlauto
