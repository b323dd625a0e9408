// One message of a folder (Message, IVlMsg): the server requests on it, its
// submission, deletion and read mark, and the objects that describe it.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "automation/dispatch_object.h"
#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

class CMessage final : public DispatchObject<IVlMsg> {
 public:
  // A message named body (1 to 8 characters) in a folder. record, when
  // given, is the message's entry as a folder listing read it: its
  // information is then taken from there instead of the list file.
  CMessage(VLHANDLE handle, uint16_t folder, const std::string& body,
           const VLMSGINFOEX* record = nullptr);

  STDMETHODIMP AbortMsg() override;
  STDMETHODIMP HoldMsg() override;
  STDMETHODIMP RushMsg() override;
  STDMETHODIMP ReleaseMsg() override;
  STDMETHODIMP SendMsg() override;
  STDMETHODIMP DeleteMsg(VARIANT_BOOL deleteFiles) override;
  STDMETHODIMP GetMsgInfo(IVlMsgInfo** out) override;
  STDMETHODIMP GetMsgHistories(IVlMsgHistories** out) override;
  STDMETHODIMP MarkMsgAsRead() override;
  STDMETHODIMP GetMsgRecipients(IVlRecipients** out) override;

 private:
  enum class Request { Abort, Hold, Rush, Release };
  HRESULT Control(Request request);

  VLHANDLE handle_;
  uint16_t folder_;
  char body_[9] = {};
  std::optional<VLMSGINFOEX> record_;
};

// message_history.cpp: the history events of a message, with routing
// events, read by IVlMessageHistories::Init().
HRESULT CreateMessageHistories(VLHANDLE handle, uint16_t folder, const char* body,
                               IVlMsgHistories** out);

}  // namespace vlauto
