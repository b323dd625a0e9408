// ServerInfo: the two-pass status read and the collections over its arrays.
#include "automation/server_info.h"

#include <algorithm>
#include <cstdint>
#include <new>
#include <utility>

#include "automation/collection.h"
#include "automation/error_report.h"

namespace vlauto {
namespace {

constexpr int16_t kStatusBlockSize = 144;
constexpr const char* kInitSource = "IVlServerInfo::Init()";

// Devices, links, coversheets and letterheads alike: a read-only collection
// over count records of a snapshot, making a new item for every request.
template <typename Interface, typename Item, typename Record>
class RecordCollection final : public Collection<Interface, Item> {
 public:
  RecordCollection(const char* itemSource, std::shared_ptr<const Record> records, long count)
      : Collection<Interface, Item>(itemSource),
        itemSource_(itemSource),
        records_(std::move(records)),
        count_(count) {}

 protected:
  long ItemCount() override { return count_; }
  HRESULT ItemAt(long index, Item** out) override {
    const HRESULT hr =
        MakeItem(std::shared_ptr<const Record>(records_, records_.get() + index), out);
    return FAILED(hr) ? ReportError(hr, 0, __uuidof(Interface), itemSource_) : hr;
  }

 private:
  const char* itemSource_;
  std::shared_ptr<const Record> records_;  // the first record; keeps the snapshot
  long count_;
};

// Makes room for count records (at most what the block's 16-bit maximum can
// say) and gives the array and its size to the block's group.
template <typename Record, typename Pointer>
void MakeRoom(std::vector<Record>& records, uint16_t count, int16_t& maximum, Pointer& array) {
  if (count == 0) return;
  records.resize(std::min<uint16_t>(count, INT16_MAX));
  maximum = static_cast<int16_t>(records.size());
  array = reinterpret_cast<Pointer>(records.data());
}

}  // namespace

ServerInfo::ServerInfo(VLHANDLE handle)
    : handle_(handle), snapshot_(std::make_shared<ServerSnapshot>()) {}

HRESULT ServerInfo::Init() {
  if (!handle_) return ReportError(E_INVALIDARG, 0, __uuidof(IVlServerInfo), kInitSource);
  return Guarded([&] {
    try {
      snapshot_ = std::make_shared<ServerSnapshot>();
      ServerSnapshot& s = *snapshot_;
      VLSERVERSTATUSEX& block = s.block;
      block.ServerInfoSize = sizeof s.totals;
      block.ServerInfo = &s.totals;
      block.DeviceCount = &s.deviceCount;
      block.DeviceInfoSize = sizeof(VLDEVICEINFOEX);
      block.LinkCount = &s.linkCount;
      block.LinkInfoSize = sizeof(VLLINKINFOEX);
      block.CoversheetCount = &s.coversheetCount;
      block.CoversheetEntrySize = sizeof(NameEntry);
      block.LetterheadCount = &s.letterheadCount;
      block.LetterheadEntrySize = sizeof(NameEntry);

      // The first read only learns the counts; its failure is reported but
      // does not stop the second.
      if (VLRESULT rc = VlxGetServerStatusEx(handle_, kStatusBlockSize, &block))
        ReportResult(rc, __uuidof(IVlServerInfo), kInitSource);
      MakeRoom(s.devices, s.deviceCount, block.MaxDevices, block.Devices);
      MakeRoom(s.links, s.linkCount, block.MaxLinks, block.Links);
      MakeRoom(s.coversheets, s.coversheetCount, block.MaxCoversheets, block.Coversheets);
      MakeRoom(s.letterheads, s.letterheadCount, block.MaxLetterheads, block.Letterheads);
    } catch (const std::bad_alloc&) {
      return ReportError(E_OUTOFMEMORY, 0, __uuidof(IVlServerInfo), kInitSource);
    }
    return ReportResult(VlxGetServerStatusEx(handle_, kStatusBlockSize, &snapshot_->block),
                        __uuidof(IVlServerInfo), kInitSource);
  });
}

template <typename Item, typename Interface, typename Record>
HRESULT ServerInfo::HandOut(const std::vector<Record>& records, uint16_t count, const char* source,
                            const char* itemSource, Interface** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  // A later read may find fewer entries than there is room for.
  const long stored = std::min<long>(count, static_cast<long>(records.size()));
  std::shared_ptr<const Record> first(snapshot_, records.data());
  const HRESULT hr = ReturnObject(
      MakeObject<RecordCollection<Interface, Item, Record>>(itemSource, std::move(first), stored),
      out);
  return FAILED(hr) ? ReportError(hr, 0, __uuidof(IVlServerInfo), source) : hr;
}

STDMETHODIMP ServerInfo::get_Devices(IVlDevices** out) {
  return HandOut<IVlDevice>(snapshot_->devices, snapshot_->deviceCount,
                            "IVlServerInfo::get_Devices()", "IVlDevices::get_Item()", out);
}
STDMETHODIMP ServerInfo::get_Links(IVlLinks** out) {
  return HandOut<IVlLink>(snapshot_->links, snapshot_->linkCount, "IVlServerInfo::get_Links()",
                          "IVlLinks::get_Item()", out);
}
STDMETHODIMP ServerInfo::get_Coversheets(ICoversheets** out) {
  return HandOut<ICoversheet>(snapshot_->coversheets, snapshot_->coversheetCount,
                              "IVlServerInfo::get_pCoversheets()", "ICoversheets::get_Item()", out);
}
STDMETHODIMP ServerInfo::get_Letterheads(ILetterheads** out) {
  return HandOut<ILetterhead>(snapshot_->letterheads, snapshot_->letterheadCount,
                              "IVlServerInfo::get_pLetterheads()", "ILetterheads::get_Item()", out);
}

// MaxDevices and MaxLinks are the room the snapshot made (the counts of the
// first read); the others are the queue totals.
STDMETHODIMP ServerInfo::get_MaxDevices(short* out) {
  return ReturnCount(static_cast<uint16_t>(snapshot_->block.MaxDevices), out);
}
STDMETHODIMP ServerInfo::get_MaxLinks(short* out) {
  return ReturnCount(static_cast<uint16_t>(snapshot_->block.MaxLinks), out);
}
STDMETHODIMP ServerInfo::get_Sending(short* out) {
  return ReturnCount(snapshot_->totals.Sending, out);
}
STDMETHODIMP ServerInfo::get_Deferred(short* out) {
  return ReturnCount(snapshot_->totals.Deferred, out);
}
STDMETHODIMP ServerInfo::get_WaitingResend(short* out) {
  return ReturnCount(snapshot_->totals.WaitingResend, out);
}
STDMETHODIMP ServerInfo::get_WaitingConvert(short* out) {
  return ReturnCount(snapshot_->totals.WaitingConvert, out);
}
STDMETHODIMP ServerInfo::get_WaitingDevice(short* out) {
  return ReturnCount(snapshot_->totals.WaitingDevice, out);
}
STDMETHODIMP ServerInfo::get_RemoteAccept(short* out) {
  return ReturnCount(snapshot_->totals.RemoteAccept, out);
}
STDMETHODIMP ServerInfo::get_Scanning(short* out) {
  return ReturnCount(snapshot_->totals.Scanning, out);
}
STDMETHODIMP ServerInfo::get_RouterSub(short* out) {
  return ReturnCount(snapshot_->totals.RouterSub, out);
}

}  // namespace vlauto
