// APIPrint: the print-to-fax handshake for scripts. The object remembers the
// output file of the print it started, which IsComplete then watches.
#include <string>

#include "automation/dispatch_object.h"
#include "automation/error_report.h"
#include "automation/factories.h"
#include "automation/text.h"

namespace vlauto {
namespace {

class CApiPrint final : public DispatchObject<IAPIPrint> {
 public:
  explicit CApiPrint(VLHANDLE handle) : handle_(handle) {}

  STDMETHODIMP StartPrint(BSTR fileName) override {
    return Guarded([&] {
      static constexpr char kSource[] = "IAPIPrint::StartPrint()";
      if (IsEmpty(fileName)) return ReportError(E_INVALIDARG, 0, __uuidof(IAPIPrint), kSource);
      if (VLRESULT rc = VlxStartPrint(handle_, Narrow(fileName).c_str()))
        return ReportResult(rc, __uuidof(IAPIPrint), kSource);
      fileName_ = fileName;
      return S_OK;
    });
  }

  // Leaves print mode; there is no output file to wait for any more.
  STDMETHODIMP CancelPrint() override {
    return Guarded([&] {
      if (VLRESULT rc = VlxCancelPrint(handle_))
        return ReportResult(rc, __uuidof(IAPIPrint), "IAPIPrint::CancelPrint()");
      fileName_.clear();
      return S_OK;
    });
  }

  // True once the printer has written and closed the output file; false
  // while it writes, and when no print was started.
  STDMETHODIMP IsComplete(VARIANT_BOOL* out) override {
    if (!out) return E_POINTER;
    *out = VARIANT_FALSE;
    return Guarded([&] {
      if (fileName_.empty()) return S_OK;
      int32_t complete = 0;
      if (VLRESULT rc = VlxIsPrintComplete(handle_, Narrow(fileName_.c_str()).c_str(), &complete))
        return ReportResult(rc, __uuidof(IAPIPrint), "IAPIPrint::IsComplete()");
      *out = complete ? VARIANT_TRUE : VARIANT_FALSE;
      return S_OK;
    });
  }

  STDMETHODIMP get_FileName(BSTR* out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    return ReturnText(fileName_, out);
  }

 private:
  VLHANDLE handle_;
  std::wstring fileName_;
};

}  // namespace

HRESULT CreateApiPrint(VLHANDLE handle, IAPIPrint** out) {
  return ReturnObject<IAPIPrint>(MakeObject<CApiPrint>(handle), out);
}

}  // namespace vlauto
