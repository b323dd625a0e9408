// The user's two message folders, Inbox and Outbox, and the Messages
// collection that lists one of them.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "automation/collection.h"
#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

// A snapshot of a folder's message list: the 272-byte records read once by
// Init, in the order the list gives them. Each Message item keeps its record,
// so that its information needs no second reading of the list.
class CMessages final : public Collection<IVlMsgs, IVlMsg> {
 public:
  CMessages(VLHANDLE handle, uint16_t folder);

  // Counts the folder's messages, then reads that many records. Failures are
  // reported with the source "IVlMessages::Init()".
  HRESULT Init();

  STDMETHODIMP get_MsgDir(BSTR* out) override;

 protected:
  long ItemCount() override { return static_cast<long>(records_.size()); }
  HRESULT ItemAt(long index, IVlMsg** out) override;

 private:
  VLHANDLE handle_;
  uint16_t folder_;
  std::string directory_;
  std::vector<VLMSGINFOEX> records_;
  std::vector<os::ComPtr<IVlMsg>> items_;  // each made when first asked for
};

// Inbox and Outbox: one class over the interface, the folder selector and the
// interface name that prefixes the error sources.
template <typename Interface, uint16_t Folder, const char* Name>
class MessageFolder final : public DispatchObject<Interface> {
 public:
  explicit MessageFolder(VLHANDLE handle) : handle_(handle) {}

  STDMETHODIMP GetMsgList(IVlMsgs** out) override;
  STDMETHODIMP CheckNewMsgStatus(VARIANT_BOOL* out) override;
  STDMETHODIMP GetMsg(BSTR body, IVlMsg** out) override;

 private:
  static std::string Source(const char* member) { return std::string(Name) + "::" + member; }

  VLHANDLE handle_;
};

inline constexpr char kInboxName[] = "IVlInbox";
inline constexpr char kOutboxName[] = "IVlOutbox";
using CInbox = MessageFolder<IVlInbox, VL_DIR_IN, kInboxName>;
using COutbox = MessageFolder<IVlOutbox, VL_DIR_OUT, kOutboxName>;

}  // namespace vlauto
