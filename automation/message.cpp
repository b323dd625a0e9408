// Message (IVlMsg): each member checks the caller's rights where the shared
// directories are touched, then calls one flat function.
#include "automation/message.h"

#include <cctype>
#include <string>
#include <vector>

#include "api/diagnostics.h"
#include "api/text.h"
#include "api/vlapi_internal.h"
#include "automation/access.h"
#include "automation/error_report.h"
#include "automation/factories.h"
#include "automation/message_info.h"
#include "platform/os.h"

namespace vlauto {
namespace {

using vl::ApiTraceHandle;
using vl::CopyBounded;

using ControlFunction = VLRESULT(VLAPI_CALL*)(VLHANDLE, uint16_t, const char*, const char*);

// The server requests on a message, in the order of CMessage::Request.
const struct {
  ControlFunction call;
  const char* source;
} kRequests[] = {
    {VlxAbortMsgEx, "IVlMsg::AbortMsg()"},
    {VlxHoldMsgEx, "IVlMsg::HoldMsg()"},
    {VlxRushMsgEx, "IVlMsg::RushMsg()"},
    {VlxReleaseMsgEx, "IVlMsg::ReleaseMsg()"},
};

// Whether a file name names a control file.
bool IsControlFile(std::string name) {
  for (char& c : name) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return name.find(".CTL") != std::string::npos;
}

}  // namespace

CMessage::CMessage(VLHANDLE handle, uint16_t folder, const std::string& body,
                   const VLMSGINFOEX* record)
    : handle_(handle), folder_(folder) {
  CopyBounded(body_, body);
  if (record) record_ = *record;
}

HRESULT CMessage::Control(Request request) {
  const auto& r = kRequests[static_cast<int>(request)];
  return Guarded([&] {
    if (!MayAccess(RequestArea(handle_), kReadWriteDeleteAccess))
      return ReportError(E_ACCESSDENIED, 0, __uuidof(IVlMsg), r.source);
    return ReportResult(r.call(handle_, folder_, body_, nullptr), __uuidof(IVlMsg), r.source);
  });
}

STDMETHODIMP CMessage::AbortMsg() { return Control(Request::Abort); }
STDMETHODIMP CMessage::HoldMsg() { return Control(Request::Hold); }
STDMETHODIMP CMessage::RushMsg() { return Control(Request::Rush); }
STDMETHODIMP CMessage::ReleaseMsg() { return Control(Request::Release); }

// Sends a message whose files lie in the out directory but which its list
// does not know yet; a message already listed is left alone.
STDMETHODIMP CMessage::SendMsg() {
  static constexpr char kSource[] = "IVlMsg::SendMsg()";
  return Guarded([&] {
    if (!MayAccess(RequestArea(handle_), kReadWriteDeleteAccess))
      return ReportError(E_ACCESSDENIED, 0, __uuidof(IVlMsg), kSource);
    char outDir[300] = {};
    if (VLRESULT rc = VlxGetUserOutDir(handle_, outDir, sizeof outDir))
      return ReportResult(rc, __uuidof(IVlMsg), kSource);
    std::vector<std::string> names;
    const int error = os::ListFiles((std::string(outDir) + body_ + ".*").c_str(), &names);
    std::string extension;
    for (const std::string& name : names) {
      if (IsControlFile(name)) continue;
      extension = name.substr(name.find('.') + 1);
      break;
    }
    if (extension.empty()) {
      ReportError(HRESULT_FROM_WIN32(error ? error : os::kFileNotFound), 0, __uuidof(IVlMsg),
                  kSource);
      return E_FAIL;
    }
    VLMSGINFOEX info{};
    if (VlxGetMsgInfoEx(handle_, VL_DIR_OUT, body_, sizeof info, &info) == VL_OK) return S_OK;
    info = VLMSGINFOEX{};
    CopyBounded(info.Body, body_);
    return ReportResult(VlxSendMsgEx(handle_, extension.c_str(), sizeof info, &info),
                        __uuidof(IVlMsg), kSource);
  });
}

STDMETHODIMP CMessage::DeleteMsg(VARIANT_BOOL deleteFiles) {
  return Guarded([&] {
    return ReportResult(VlxDeleteMsg(handle_, folder_, body_, deleteFiles != VARIANT_FALSE),
                        __uuidof(IVlMsg), "IVlMsg::DeleteMsg()");
  });
}

// A listed message's information is its record in the listing's snapshot,
// which GetMsgList read under the same check of the same directory; only a
// message asked for by name is checked (and its list read) here. That keeps
// a walk over a long listing linear, and free of a security check per item.
STDMETHODIMP CMessage::GetMsgInfo(IVlMsgInfo** out) {
  static constexpr char kSource[] = "IVlMsg::GetMsgInfo()";
  if (!out) {
    ApiTraceHandle(handle_, "CMessage::GetMsgInfo() - Provided MsgInfo pointer is NULL");
    return E_POINTER;
  }
  *out = nullptr;
  return Guarded([&] {
    if (!record_ && !MayAccess(FolderDir(handle_, folder_), kReadAccess)) {
      ApiTraceHandle(handle_, "CMessage::GetMsgInfo() - Access to Inbox-Outbox denied");
      return ReportError(E_ACCESSDENIED, 0, __uuidof(IVlMsg), kSource);
    }
    auto info = MakeObject<CMessageInfo>(handle_, folder_, body_);
    if (!info) return E_OUTOFMEMORY;
    if (HRESULT hr = info->Init(record_ ? &*record_ : nullptr); FAILED(hr))
      return ReportError(hr, 0, __uuidof(IVlMsg), kSource);
    return ReturnObject<IVlMsgInfo>(std::move(info), out);
  });
}

STDMETHODIMP CMessage::GetMsgHistories(IVlMsgHistories** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] { return CreateMessageHistories(handle_, folder_, body_, out); });
}

STDMETHODIMP CMessage::MarkMsgAsRead() {
  return Guarded([&] {
    return ReportResult(VlxMarkMsgAsRead(handle_, folder_, body_), __uuidof(IVlMsg),
                        "IVlMsg::MarkMsgAsRead()");
  });
}

STDMETHODIMP CMessage::GetMsgRecipients(IVlRecipients** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] { return CreateMessageRecipients(handle_, folder_, body_, out); });
}

}  // namespace vlauto
