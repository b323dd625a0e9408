// ServerInfo: one snapshot of the server's status (queue totals, devices,
// links, coversheet and letterhead names) and the read-only collections over
// it. The snapshot is shared: collections and items keep it alive after the
// script lets the ServerInfo go.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "automation/dispatch_object.h"
#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

// One coversheet or letterhead name as the status read stores it: at most 8
// characters and a NUL in a 10-byte entry.
struct NameEntry {
  char text[10];
};
static_assert(sizeof(NameEntry) == 10);

// A status request block together with everything it points at. The block
// holds pointers into this very object, so a snapshot never moves.
struct ServerSnapshot {
  ServerSnapshot() = default;
  ServerSnapshot(const ServerSnapshot&) = delete;
  ServerSnapshot& operator=(const ServerSnapshot&) = delete;

  VLSERVERSTATUSEX block{};
  VLSERVERINFOEX totals{};
  uint16_t deviceCount = 0, linkCount = 0, coversheetCount = 0, letterheadCount = 0;
  std::vector<VLDEVICEINFOEX> devices;
  std::vector<VLLINKINFOEX> links;
  std::vector<NameEntry> coversheets, letterheads;
};

class ServerInfo final : public DispatchObject<IVlServerInfo> {
 public:
  // Copies the session handle; the snapshot stays empty until Init.
  explicit ServerInfo(VLHANDLE handle);

  // Takes a new snapshot, dropping this object's hold on any earlier one:
  // reads the status once to learn the counts, makes room for them and reads
  // it again. A failing first read is reported and the second still made;
  // the result is the second read's.
  HRESULT Init();

  STDMETHODIMP get_Devices(IVlDevices** out) override;
  STDMETHODIMP get_Links(IVlLinks** out) override;
  STDMETHODIMP get_MaxDevices(short* out) override;
  STDMETHODIMP get_MaxLinks(short* out) override;
  STDMETHODIMP get_Sending(short* out) override;
  STDMETHODIMP get_Deferred(short* out) override;
  STDMETHODIMP get_WaitingResend(short* out) override;
  STDMETHODIMP get_WaitingConvert(short* out) override;
  STDMETHODIMP get_WaitingDevice(short* out) override;
  STDMETHODIMP get_RemoteAccept(short* out) override;
  STDMETHODIMP get_Scanning(short* out) override;
  STDMETHODIMP get_RouterSub(short* out) override;
  STDMETHODIMP get_Coversheets(ICoversheets** out) override;
  STDMETHODIMP get_Letterheads(ILetterheads** out) override;

 private:
  // A new collection over records[0, count) of the snapshot.
  template <typename Item, typename Interface, typename Record>
  HRESULT HandOut(const std::vector<Record>& records, uint16_t count, const char* source,
                  const char* itemSource, Interface** out);

  VLHANDLE handle_;
  std::shared_ptr<ServerSnapshot> snapshot_;
};

// A 16-bit count as an automation short.
inline HRESULT ReturnCount(uint16_t value, short* out) {
  if (!out) return E_POINTER;
  *out = static_cast<short>(value);
  return S_OK;
}

// server_items.cpp: a new view of one record, which it keeps alive, with one
// reference for the caller.
HRESULT MakeItem(std::shared_ptr<const VLDEVICEINFOEX> record, IVlDevice** out);
HRESULT MakeItem(std::shared_ptr<const VLLINKINFOEX> record, IVlLink** out);
HRESULT MakeItem(std::shared_ptr<const NameEntry> record, ICoversheet** out);
HRESULT MakeItem(std::shared_ptr<const NameEntry> record, ILetterhead** out);

}  // namespace vlauto
