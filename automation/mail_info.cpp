// MailInfo: the user's mail address as the system's MAILLIST.INI gives it,
// read afresh on every request.
#include "automation/dispatch_object.h"
#include "automation/error_report.h"
#include "automation/factories.h"
#include "automation/text.h"
#include "msg/defaults.h"

namespace vlauto {
namespace {

class CMailInfo final : public DispatchObject<IVlMailInfo> {
 public:
  explicit CMailInfo(VLHANDLE handle) : handle_(handle) {}

  // The kind of address, from its prefix: 1 "ex:", 2 "smtp:", 3 "not:",
  // 4 "grw:", -1 none of them, 0 when the system keeps no mail list.
  STDMETHODIMP get_Type(short* out) override {
    if (!out) return E_POINTER;
    *out = 0;
    return Guarded([&] {
      uint16_t kind = 0;
      if (VLRESULT rc = vl::GetUserMailAddress(handle_, &kind, nullptr, 0))
        return ReportResult(rc, __uuidof(IVlMailInfo), "IVlMailInfo::get_Type()");
      *out = static_cast<short>(kind);
      return S_OK;
    });
  }

  // The address without its prefix; empty when the user has none.
  STDMETHODIMP get_Address(BSTR* out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    return Guarded([&] {
      char address[512] = {};
      if (VLRESULT rc = vl::GetUserMailAddress(handle_, nullptr, address, sizeof address))
        return ReportResult(rc, __uuidof(IVlMailInfo), "IVlMailInfo::get_Address()");
      return ReturnText(address, out);
    });
  }

 private:
  VLHANDLE handle_;
};

}  // namespace

HRESULT CreateMailInfo(VLHANDLE handle, IVlMailInfo** out) {
  return ReturnObject<IVlMailInfo>(MakeObject<CMailInfo>(handle), out);
}

}  // namespace vlauto
