// UserSession: one logged-on user (or an anonymous session), its
// directories and defaults, and the objects that work on its messages.
#include <cstring>
#include <string>

#include "api/process_state.h"
#include "api/text.h"
#include "automation/dispatch_object.h"
#include "automation/error_report.h"
#include "automation/factories.h"
#include "automation/text.h"
#include "vllib.h"

namespace vlauto {
namespace {

// Bytes of the buffers the text getters fetch into.
constexpr int16_t kTextBuffer = 300;

using TextGetter = VLRESULT(VLAPI_CALL*)(VLHANDLE, char*, int16_t);

class UserSession final : public DispatchObject<IVlUserSession> {
 public:
  ~UserSession() override { CloseHandle(); }

  HRESULT Logon(BSTR userName, VARIANT_BOOL exclusive, VARIANT_BOOL autoTempDirectory,
                const char* source) {
    if (!userName) return ReportError(E_INVALIDARG, 0, __uuidof(IVlAPI), source);
    exclusive_ = exclusive;
    anonymous_ = IsEmpty(userName);
    VLHANDLE handle = 0;
    const uint16_t lock = exclusive ? 1 : 0;
    if (VLRESULT rc = VlxAPIInit(&handle, Narrow(userName).c_str(), lock, nullptr))
      return ReportResult(rc, __uuidof(IVlAPI), source);
    handle_ = handle;
    char area[260] = {};
    if (autoTempDirectory == VARIANT_TRUE && VlxGetUserArea(handle_, area, sizeof area) == VL_OK)
      vl::CopyBounded(vl::Process().apiTempDirectory, area);
    return S_OK;
  }

  STDMETHODIMP CreateNewMsg(IVlNewMsg** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (HRESULT hr = NeedUser("IVlUserSession::CreateNewMsg()"); FAILED(hr)) return hr;
    return CreateNewMessage(handle_, out);
  }
  STDMETHODIMP get_Server(IVlServer** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (HRESULT hr = NeedHandle("IVlUserSession::get_Server()"); FAILED(hr)) return hr;
    return CreateServer(handle_, exclusive_ != VARIANT_FALSE, out);
  }
  STDMETHODIMP get_UserArea(BSTR* out) override {
    return UserText(VlxGetUserArea, "IVlUserSession::get_UserArea()", out);
  }
  STDMETHODIMP get_UserOutDir(BSTR* out) override {
    return UserText(VlxGetUserOutDir, "IVlUserSession::get_UserOutDir()", out);
  }
  STDMETHODIMP get_UserInDir(BSTR* out) override {
    return UserText(VlxGetUserInDir, "IVlUserSession::get_UserInDir()", out);
  }
  STDMETHODIMP get_FromName(BSTR* out) override {
    return UserText(VlxGetUserFromname, "IVlUserSession::get_FromName()", out);
  }
  STDMETHODIMP get_CoverSheet(BSTR* out) override {
    return UserText(VlxGetUserCoversheet, "IVlUserSession::get_Coversheet()", out);
  }
  STDMETHODIMP get_Inbox(IVlInbox** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (HRESULT hr = NeedUser("IVlUserSession::get_Inbox()"); FAILED(hr)) return hr;
    return CreateInbox(handle_, out);
  }
  STDMETHODIMP get_Outbox(IVlOutbox** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (HRESULT hr = NeedUser("IVlUserSession::get_Outbox()"); FAILED(hr)) return hr;
    return CreateOutbox(handle_, out);
  }
  STDMETHODIMP get_SystemArea(BSTR* out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (HRESULT hr = NeedHandle("IVlUserSession::get_SystemArea()"); FAILED(hr)) return hr;
    return Text(VlxGetSystemArea, "IVlUserSession::get_SystemArea()", out);
  }
  STDMETHODIMP SendSubmitFile(BSTR submitFile, BSTR prefix, BSTR* out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    constexpr const char* kSource = "IVlUserSession::SendSubmitFile()";
    if (HRESULT hr = NeedUser(kSource); FAILED(hr)) return hr;
    if (IsEmpty(submitFile) || IsEmpty(prefix))
      return ReportError(E_INVALIDARG, 0, __uuidof(IVlUserSession), kSource);
    return Guarded([&] {
      char body[9] = {};
      if (VLRESULT rc = VlxSendSubmitFile(handle_, Narrow(submitFile).c_str(),
                                          Narrow(prefix).c_str(), body))
        return ReportResult(rc, __uuidof(IVlUserSession), kSource);
      return ReturnText(body, out);
    });
  }
  STDMETHODIMP Logoff() override {
    CloseHandle();
    return S_OK;
  }
  STDMETHODIMP get_MailInfo(IVlMailInfo** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (HRESULT hr = NeedUser("IVlUserSession::get_MailInfo()"); FAILED(hr)) return hr;
    return CreateMailInfo(handle_, out);
  }
  STDMETHODIMP get_APIPrint(IAPIPrint** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    return CreateApiPrint(handle_, out);
  }

 private:
  void CloseHandle() {
    if (handle_) VlxAPIClosedown(handle_);
    handle_ = 0;
  }

  // 0xF727 while the session has no handle.
  HRESULT NeedHandle(const char* source) {
    return handle_ ? S_OK : ReportResult(VL_E_USER_NOT_INIT, __uuidof(IVlUserSession), source);
  }
  // 0xF727 while the session has no handle or no user.
  HRESULT NeedUser(const char* source) {
    return handle_ && !anonymous_
               ? S_OK
               : ReportResult(VL_E_USER_NOT_INIT, __uuidof(IVlUserSession), source);
  }

  HRESULT UserText(TextGetter getter, const char* source, BSTR* out) {
    if (!out) return E_POINTER;
    *out = nullptr;
    if (HRESULT hr = NeedUser(source); FAILED(hr)) return hr;
    return Text(getter, source, out);
  }
  HRESULT Text(TextGetter getter, const char* source, BSTR* out) {
    char text[kTextBuffer] = {};
    if (VLRESULT rc = getter(handle_, text, kTextBuffer))
      return ReportResult(rc, __uuidof(IVlUserSession), source);
    return ReturnText(text, out);
  }

  VLHANDLE handle_ = 0;
  VARIANT_BOOL exclusive_ = VARIANT_FALSE;
  bool anonymous_ = false;
};

}  // namespace

HRESULT LogonUserSession(BSTR userName, VARIANT_BOOL exclusive, VARIANT_BOOL autoTempDirectory,
                         const char* source, IVlUserSession** out) {
  os::ComPtr<UserSession> session = MakeObject<UserSession>();
  if (!session) return E_OUTOFMEMORY;
  if (HRESULT hr = session->Logon(userName, exclusive, autoTempDirectory, source); FAILED(hr))
    return hr;
  return ReturnObject(std::move(session), out);
}

}  // namespace vlauto
