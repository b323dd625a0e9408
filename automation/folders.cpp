// Inbox, Outbox and the Messages collection.
#include "automation/folders.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "automation/access.h"
#include "automation/error_report.h"
#include "automation/factories.h"
#include "automation/message.h"
#include "automation/text.h"

namespace vlauto {

inline constexpr uint16_t kRecordSize = sizeof(VLMSGINFOEX);
inline constexpr size_t kBodySize = 8;

CMessages::CMessages(VLHANDLE handle, uint16_t folder)
    : Collection("IVlMsgs::get_Item()"), handle_(handle), folder_(folder) {}

HRESULT CMessages::Init() {
  static constexpr char kSource[] = "IVlMessages::Init()";
  if (!handle_) return ReportError(E_INVALIDARG, 0, __uuidof(IVlMsgs), kSource);
  int16_t count = 0;
  if (VLRESULT rc = VlxGetMsgListEx(handle_, folder_, 0, &count, kRecordSize, nullptr))
    return ReportResult(rc, __uuidof(IVlMsgs), kSource);
  count = std::max<int16_t>(count, 0);
  try {
    records_.resize(count);
    items_.resize(count);
  } catch (const std::bad_alloc&) {
    return ReportError(E_OUTOFMEMORY, 0, __uuidof(IVlMsgs), kSource);
  }
  int16_t listed = 0;
  if (VLRESULT rc = VlxGetMsgListEx(handle_, folder_, count, &listed, kRecordSize, records_.data()))
    return ReportResult(rc, __uuidof(IVlMsgs), kSource);
  // The list may have changed between the readings: keep what the second filled.
  const size_t kept = std::clamp<int16_t>(listed, 0, count);
  records_.resize(kept);
  items_.resize(kept);
  directory_ = FolderDir(handle_, folder_);
  return S_OK;
}

STDMETHODIMP CMessages::get_MsgDir(BSTR* out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return ReturnText(directory_.c_str(), out);
}

HRESULT CMessages::ItemAt(long index, IVlMsg** out) {
  os::ComPtr<IVlMsg>& item = items_[index];
  if (!item) {
    const VLMSGINFOEX& record = records_[index];
    const std::string body(record.Body, strnlen(record.Body, sizeof record.Body));
    item.reset(MakeObject<CMessage>(handle_, folder_, body, &record).detach());
    if (!item) return E_OUTOFMEMORY;
  }
  item->AddRef();
  *out = item.get();
  return S_OK;
}

template <typename Interface, uint16_t Folder, const char* Name>
STDMETHODIMP MessageFolder<Interface, Folder, Name>::GetMsgList(IVlMsgs** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    if (!MayAccess(FolderDir(handle_, Folder), kReadAccess))
      return ReportError(E_ACCESSDENIED, 0, __uuidof(Interface), Source("GetMsgList()").c_str());
    auto messages = MakeObject<CMessages>(handle_, Folder);
    if (!messages) return E_OUTOFMEMORY;
    if (HRESULT hr = messages->Init(); FAILED(hr)) return hr;
    return ReturnObject<IVlMsgs>(std::move(messages), out);
  });
}

template <typename Interface, uint16_t Folder, const char* Name>
STDMETHODIMP MessageFolder<Interface, Folder, Name>::CheckNewMsgStatus(VARIANT_BOOL* out) {
  if (!out) return E_POINTER;
  *out = VARIANT_FALSE;
  return Guarded([&] {
    if (!MayAccess(FolderDir(handle_, Folder), kReadAccess)) {
      // The inbox reports a refused check under this source and the identity
      // of IVlNewMsg; clients may test for either.
      if constexpr (Folder == VL_DIR_IN)
        return ReportError(E_ACCESSDENIED, 0, __uuidof(IVlNewMsg), "VlInbox::CheckNewMsgStatus()");
      return ReportError(E_ACCESSDENIED, 0, __uuidof(Interface),
                         Source("CheckNewMsgStatus()").c_str());
    }
    uint16_t isNew = 0;
    if (VLRESULT rc = VlxCheckNewMsgStatus(handle_, Folder, &isNew))
      return ReportResult(rc, __uuidof(Interface), Source("CheckNewMsgStatus()").c_str());
    *out = isNew > 0 ? VARIANT_TRUE : VARIANT_FALSE;
    return S_OK;
  });
}

template <typename Interface, uint16_t Folder, const char* Name>
STDMETHODIMP MessageFolder<Interface, Folder, Name>::GetMsg(BSTR body, IVlMsg** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    const std::string name = Narrow(body);
    // A longer name would name another message once cut to its 8 characters.
    if (name.empty() || name.size() > kBodySize)
      return ReportError(E_INVALIDARG, 0, __uuidof(Interface), Source("GetMsg()").c_str());
    return ReturnObject<IVlMsg>(MakeObject<CMessage>(handle_, Folder, name), out);
  });
}

HRESULT CreateInbox(VLHANDLE handle, IVlInbox** out) {
  return ReturnObject<IVlInbox>(MakeObject<CInbox>(handle), out);
}

HRESULT CreateOutbox(VLHANDLE handle, IVlOutbox** out) {
  return ReturnObject<IVlOutbox>(MakeObject<COutbox>(handle), out);
}

}  // namespace vlauto
