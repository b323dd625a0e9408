// MessageHistories and MessageHistory: the events of a message's history,
// each with the organisation of the addressee it concerns.
#include <new>
#include <string>
#include <vector>

#include "api/vlapi_internal.h"
#include "automation/collection.h"
#include "automation/message.h"
#include "automation/message_info.h"
#include "automation/text.h"
#include "msg/addressees.h"

namespace vlauto {
namespace {

inline constexpr int16_t kLongRecord = sizeof(VLMSGHISTORYEX);

class CMessageHistory final : public DispatchObject<IVlMsgHistory> {
 public:
  CMessageHistory(const VLMSGHISTORYEX& record, std::string organisation)
      : record_(record), organisation_(std::move(organisation)) {}

  STDMETHODIMP get_Event(EventEnum* out) override {
    return Number(out, static_cast<EventEnum>(record_.Event));
  }
  STDMETHODIMP get_Date(DATE* out) override {
    return Number(out, DateOf(record_.Year, record_.Month, record_.Day, record_.Hour,
                              record_.Minute, record_.Second));
  }
  STDMETHODIMP get_Route(RouteEnum* out) override {
    return Number(out, static_cast<RouteEnum>(record_.Route));
  }
  STDMETHODIMP get_ErrorCode(LONG* out) override { return Number<LONG>(out, record_.ErrorCode); }
  STDMETHODIMP get_AddrNum(short* out) override { return Number<short>(out, record_.Addressee); }
  STDMETHODIMP get_Connection(short* out) override {
    return Number<short>(out, record_.ConnectTime);
  }
  STDMETHODIMP get_PagesSent(short* out) override { return Number<short>(out, record_.Pages); }
  STDMETHODIMP get_RouteParams(BSTR* out) override { return Text(out, record_.RouteParams); }
  STDMETHODIMP get_Device(BSTR* out) override { return Text(out, record_.Device); }
  STDMETHODIMP get_RemoteServer(BSTR* out) override { return Text(out, record_.RemoteServer); }
  // The addressee text of the history line.
  STDMETHODIMP get_Name(BSTR* out) override { return Text(out, record_.AddresseeText); }
  STDMETHODIMP get_Organisation(BSTR* out) override { return Text(out, organisation_.c_str()); }

 private:
  template <typename T>
  static HRESULT Number(T* out, T value) {
    if (!out) return E_POINTER;
    *out = value;
    return S_OK;
  }
  static HRESULT Text(BSTR* out, const char* text) {
    if (!out) return E_POINTER;
    *out = nullptr;
    return ReturnText(text, out);
  }

  VLMSGHISTORYEX record_;
  std::string organisation_;
};

class CMessageHistories final : public ItemList<IVlMsgHistories, IVlMsgHistory> {
 public:
  CMessageHistories() : ItemList("IVlMsgHistories::get_Item()") {}

  // Counts the message's events (routing events included), then reads that
  // many long records; failures are reported with the source
  // "IVlMessageHistories::Init()".
  HRESULT Init(VLHANDLE handle, uint16_t folder, const char* body) {
    static constexpr char kSource[] = "IVlMessageHistories::Init()";
    uint16_t count = 0;
    if (VLRESULT rc =
            VlxGetMsgHistoryEx(handle, folder, body, 0, 1, 0, &count, kLongRecord, nullptr))
      return ReportResult(rc, __uuidof(IVlMsgHistories), kSource);
    const int16_t wanted = count < INT16_MAX ? count : INT16_MAX;
    std::vector<VLMSGHISTORYEX> records(wanted);
    if (VLRESULT rc = VlxGetMsgHistoryEx(handle, folder, body, 0, 1, wanted, &count, kLongRecord,
                                         records.data()))
      return ReportResult(rc, __uuidof(IVlMsgHistories), kSource);
    records.resize(count < wanted ? count : wanted);
    const std::vector<std::string> organisations = Organisations(handle, folder, body);
    for (const VLMSGHISTORYEX& record : records) {
      const size_t addressee = record.Addressee;
      auto item = MakeObject<CMessageHistory>(
          record, addressee >= 1 && addressee <= organisations.size() ? organisations[addressee - 1]
                                                                      : std::string());
      if (!item) return ReportError(E_OUTOFMEMORY, 0, __uuidof(IVlMsgHistories), kSource);
      Append(item.get());
    }
    return S_OK;
  }

 private:
  // The organisation of each addressee, by addressee number from 1; none
  // when the addressees cannot be read, which leaves the events without.
  static std::vector<std::string> Organisations(VLHANDLE handle, uint16_t folder,
                                                const char* body) {
    uint16_t count = 0;
    if (VlxGetMsgAddrs(handle, folder, body, 0, &count, nullptr) != VL_OK || !count) return {};
    std::vector<MsgAddresseeRecord> addressees(count);
    if (VlxGetMsgAddrs(handle, folder, body, count, &count, addressees.data()) != VL_OK) return {};
    std::vector<std::string> organisations;
    for (size_t i = 0; i < count && i < addressees.size(); ++i)
      organisations.emplace_back(addressees[i].organisation);
    return organisations;
  }
};

}  // namespace

HRESULT CreateMessageHistories(VLHANDLE handle, uint16_t folder, const char* body,
                               IVlMsgHistories** out) {
  auto histories = MakeObject<CMessageHistories>();
  if (!histories) return E_OUTOFMEMORY;
  if (HRESULT hr = histories->Init(handle, folder, body); FAILED(hr)) return hr;
  return ReturnObject<IVlMsgHistories>(std::move(histories), out);
}

}  // namespace vlauto
