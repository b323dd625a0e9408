// Device, Link, CoverSheet and Letterhead: read-only views of one record of a
// server snapshot, converted to automation types on every read.
#include <cstring>
#include <string>
#include <utility>

#include "automation/server_info.h"
#include "automation/text.h"

namespace vlauto {
namespace {

template <typename Interface, typename Record>
class RecordView : public DispatchObject<Interface> {
 public:
  explicit RecordView(std::shared_ptr<const Record> record) : record_(std::move(record)) {}

 protected:
  const Record& record() const { return *record_; }

 private:
  std::shared_ptr<const Record> record_;  // keeps the whole snapshot
};

// A character field as a string, read no further than the field's end.
template <std::size_t N>
HRESULT ReturnField(const char (&field)[N], BSTR* out) {
  if (!out) return E_POINTER;
  return ReturnText(std::string(field, strnlen(field, N)).c_str(), out);
}

// A state number as the enumeration's value of the same number.
template <typename Enum>
HRESULT ReturnState(uint16_t value, Enum* out) {
  if (!out) return E_POINTER;
  *out = static_cast<Enum>(value);
  return S_OK;
}

// A tri-state flag (1 yes, 0 no, -1 unknown): true only when it is known to
// be set.
HRESULT ReturnFlag(int16_t value, VARIANT_BOOL* out) {
  if (!out) return E_POINTER;
  *out = value > 0 ? VARIANT_TRUE : VARIANT_FALSE;
  return S_OK;
}

class Device final : public RecordView<IVlDevice, VLDEVICEINFOEX> {
 public:
  using RecordView::RecordView;
  STDMETHODIMP get_Name(BSTR* out) override { return ReturnField(record().Name, out); }
  STDMETHODIMP get_Status(DevStatusEnum* out) override { return ReturnState(record().Status, out); }
  STDMETHODIMP get_User(BSTR* out) override { return ReturnField(record().User, out); }
  STDMETHODIMP get_MsgBody(BSTR* out) override { return ReturnField(record().Message, out); }
  STDMETHODIMP get_NumConnectFails(short* out) override {
    return ReturnCount(record().ConnectFails, out);
  }
  STDMETHODIMP get_NumSendFails(short* out) override {
    return ReturnCount(record().SendFails, out);
  }
  STDMETHODIMP get_NumSendOK(short* out) override { return ReturnCount(record().SentOK, out); }
  STDMETHODIMP get_NumPages(short* out) override { return ReturnCount(record().TotalPages, out); }
  STDMETHODIMP get_CurrentPage(short* out) override {
    return ReturnCount(record().CurrentPage, out);
  }
};

class Link final : public RecordView<IVlLink, VLLINKINFOEX> {
 public:
  using RecordView::RecordView;
  STDMETHODIMP get_RemoteStatus(LinkStatusEnum* out) override {
    return ReturnState(record().RemoteLinkStatus, out);
  }
  STDMETHODIMP get_LocalStatus(LinkStatusEnum* out) override {
    return ReturnState(record().LocalLinkStatus, out);
  }
  STDMETHODIMP get_RemoteServer(BSTR* out) override {
    return ReturnField(record().RemoteServer, out);
  }
  STDMETHODIMP get_NumRejected(short* out) override { return ReturnCount(record().Rejected, out); }
  STDMETHODIMP get_NumSentOK(short* out) override { return ReturnCount(record().SentOK, out); }
  STDMETHODIMP get_NumDeviceError(short* out) override {
    return ReturnCount(record().DeviceError, out);
  }
  STDMETHODIMP get_NumRemoteServerError(short* out) override {
    return ReturnCount(record().RemoteServerError, out);
  }
  STDMETHODIMP get_NumTimedOut(short* out) override { return ReturnCount(record().TimedOut, out); }
  STDMETHODIMP get_NumUnAcknowledged(short* out) override {
    return ReturnCount(record().Unacknowledged, out);
  }
  STDMETHODIMP get_NumAcknowledged(short* out) override {
    return ReturnCount(record().Acknowledged, out);
  }
  STDMETHODIMP get_NumReceived(short* out) override { return ReturnCount(record().Received, out); }
  STDMETHODIMP get_ConnectionOK(VARIANT_BOOL* out) override {
    return ReturnFlag(record().ConnectionStatus, out);
  }
  STDMETHODIMP get_LinkActive(VARIANT_BOOL* out) override {
    return ReturnFlag(record().LinkActive, out);
  }
};

// CoverSheet and Letterhead: a name and nothing else.
template <typename Interface>
class NameView final : public RecordView<Interface, NameEntry> {
 public:
  using RecordView<Interface, NameEntry>::RecordView;
  STDMETHODIMP get_Name(BSTR* out) override { return ReturnField(this->record().text, out); }
};

}  // namespace

HRESULT MakeItem(std::shared_ptr<const VLDEVICEINFOEX> record, IVlDevice** out) {
  return ReturnObject(MakeObject<Device>(std::move(record)), out);
}
HRESULT MakeItem(std::shared_ptr<const VLLINKINFOEX> record, IVlLink** out) {
  return ReturnObject(MakeObject<Link>(std::move(record)), out);
}
HRESULT MakeItem(std::shared_ptr<const NameEntry> record, ICoversheet** out) {
  return ReturnObject(MakeObject<NameView<ICoversheet>>(std::move(record)), out);
}
HRESULT MakeItem(std::shared_ptr<const NameEntry> record, ILetterhead** out) {
  return ReturnObject(MakeObject<NameView<ILetterhead>>(std::move(record)), out);
}

}  // namespace vlauto
