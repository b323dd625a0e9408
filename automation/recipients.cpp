// Recipients and the recipient list.
#include "automation/recipients.h"

#include <vector>

#include "api/diagnostics.h"
#include "api/vlapi_internal.h"
#include "automation/factories.h"
#include "automation/properties.h"
#include "msg/addressees.h"

namespace vlauto {
namespace {

constexpr size_t kMostRecipients = 999;

}  // namespace

HRESULT CRecipient::get_To(BSTR* out) { return GetText(to, out); }
HRESULT CRecipient::put_To(BSTR value) { return PutText(to, value); }
HRESULT CRecipient::get_Organisation(BSTR* out) { return GetText(organisation, out); }
HRESULT CRecipient::put_Organisation(BSTR value) { return PutText(organisation, value); }
HRESULT CRecipient::get_Fax(BSTR* out) { return GetText(address, out); }
HRESULT CRecipient::put_Fax(BSTR value) { return PutText(address, value); }
HRESULT CRecipient::get_Type(FaxTypeEnum* out) { return GetValue(type, out); }
HRESULT CRecipient::put_Type(FaxTypeEnum value) { return PutValue(type, value); }
HRESULT CRecipient::get_Custom(BSTR* out) { return GetText(custom, out); }
HRESULT CRecipient::put_Custom(BSTR value) { return PutText(custom, value); }
HRESULT CRecipient::get_Status(StatusEnum* out) { return GetValue(status, out); }
HRESULT CRecipient::put_Status(StatusEnum value) { return PutValue(status, value); }

CRecipients::CRecipients(VLHANDLE handle)
    : HoldingList("IVlRecipients::get_Item()"), handle_(handle) {}

HRESULT CRecipients::Init(uint16_t folder, const char* body) {
  const char* const source = "IVlRecipients::Init()";
  uint16_t count = 0;
  if (VLRESULT rc = VlxGetMsgAddrs(handle_, folder, body, 0, &count, nullptr))
    return ReportResult(rc, __uuidof(IVlRecipients), source);
  std::vector<MsgAddresseeRecord> records(count);
  if (count > 0) {
    uint16_t listed = 0;
    if (VLRESULT rc = VlxGetMsgAddrs(handle_, folder, body, count, &listed, records.data()))
      return ReportResult(rc, __uuidof(IVlRecipients), source);
    if (listed < count) records.resize(listed);
  }
  for (const MsgAddresseeRecord& record : records) {
    os::ComPtr<CRecipient> recipient = MakeObject<CRecipient>();
    if (!recipient) return ReportError(E_OUTOFMEMORY, 0, __uuidof(IVlRecipients), source);
    recipient->to = Widen(record.name);
    recipient->organisation = Widen(record.organisation);
    recipient->address = Widen(record.number);
    recipient->custom = Widen(record.custom);
    recipient->type = record.type;
    recipient->status = record.status;
    Hold(recipient.get());
  }
  return S_OK;
}

HRESULT CRecipients::AddFaxRecipient(BSTR to, BSTR organisation, BSTR fax, IVlRecipient** out) {
  return Add(vlFaxTypeFax, "IVlRecipients::AddFaxRecipient()", to, organisation, fax, out);
}

HRESULT CRecipients::AddLANRecipient(BSTR to, BSTR organisation, BSTR user, IVlRecipient** out) {
  return Add(vlFaxTypeLAN, "IVlRecipients::AddLANRecipient()", to, organisation, user, out);
}

HRESULT CRecipients::AddSMSRecipient(BSTR to, BSTR organisation, BSTR sms, IVlRecipient** out) {
  return Add(vlFaxTypeSMS, "IVlRecipients::AddSMSRecipient()", to, organisation, sms, out);
}

HRESULT CRecipients::Add(long type, const char* source, BSTR to, BSTR organisation, BSTR address,
                         IVlRecipient** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    if (IsEmpty(to) && IsEmpty(address))
      return ReportError(E_INVALIDARG, 0, __uuidof(IVlRecipients), source);
    if (Items().size() >= kMostRecipients)
      return ReportResult(VL_E_COLLECTION_FULL, __uuidof(IVlRecipients), source);
    os::ComPtr<CRecipient> recipient = MakeObject<CRecipient>();
    if (!recipient) return ReportError(E_OUTOFMEMORY, 0, __uuidof(IVlRecipients), source);
    recipient->to = to ? to : L"";
    recipient->type = type;
    recipient->organisation = organisation ? organisation : L"";
    recipient->address = address ? address : L"";
    Hold(recipient.get());
    return ReturnObject<IVlRecipient>(std::move(recipient), out);
  });
}

HRESULT CRecipients::IndexOutOfRange() {
  vl::ApiTraceHandle(handle_, "CRecipients::GetItem: Index out of range");
  return HoldingList::IndexOutOfRange();
}

HRESULT CreateMessageRecipients(VLHANDLE handle, uint16_t folder, const char* body,
                                IVlRecipients** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    os::ComPtr<CRecipients> list = MakeObject<CRecipients>(handle);
    if (!list)
      return ReportError(E_OUTOFMEMORY, 0, __uuidof(IVlRecipients), "IVlRecipients::Init()");
    if (HRESULT hr = list->Init(folder, body); FAILED(hr)) return hr;
    return ReturnObject<IVlRecipients>(std::move(list), out);
  });
}

}  // namespace vlauto
