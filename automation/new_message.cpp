// The new message: Init from the user's defaults, the properties, and Send.
#include "automation/new_message.h"

#include <cstring>

#include "api/diagnostics.h"
#include "api/process_state.h"
#include "api/vlapi_internal.h"
#include "automation/access.h"
#include "automation/factories.h"
#include "automation/properties.h"
#include "msg/submission.h"
#include "paragraph/open_shared.h"
#include "platform/os.h"

namespace vlauto {
namespace {

const char kInitSource[] = "IVlNewMsg::Init()";
const char kSendSource[] = "IVlNewMsg::SubmitMessage()";
const char kSubmitPrefix[] = "VAPI";

HRESULT Fail(const char* source, HRESULT hr, VLRESULT code = 0) {
  return ReportError(hr, static_cast<uint16_t>(code), __uuidof(IVlNewMsg), source);
}

// The API temporary directory: the process's own, else the system's,
// fetched once; the trace log lies there too.
std::string ApiTempDirectory() {
  std::string path = vl::TraceFilePath();
  return path.substr(0, path.size() - std::strlen("VLAPI.LOG"));
}

template <typename I, typename T>
HRESULT GetCollection(const os::ComPtr<T>& held, I** out) {
  if (!out) return E_POINTER;
  *out = held.get();
  if (!*out) return E_FAIL;
  (*out)->AddRef();
  return S_OK;
}

}  // namespace

HRESULT CNewMessage::Init(VLHANDLE handle) {
  handle_ = handle;
  VLMSGDEFAULTSEX defaults;
  std::memset(&defaults, 0, sizeof defaults);
  if (VLRESULT rc = VlxGetMsgDefaultsEx(handle, sizeof defaults, &defaults))
    return Fail(kInitSource, FromResultCode(rc), rc);
  priority_ = defaults.Priority;
  header_ = defaults.Header;
  quality_ = defaults.Quality;
  sendTime_ = defaults.SendTime;
  from_ = Widen(defaults.From);
  coverSheet_ = Widen(defaults.Coversheet);
  letterhead_ = Widen(defaults.Letterhead);
  sentItemsFax_ = vl::Process().userSentItemsFax;
  sentItemsSms_ = vl::Process().userSentItemsSMS;
  if (sendTime_ == vlSendTimeAfter && defaults.SendYear != 0) {
    SYSTEMTIME time = {};
    time.wYear = defaults.SendYear;
    time.wMonth = defaults.SendMonth;
    time.wDay = defaults.SendDay;
    time.wHour = defaults.SendHour;
    time.wMinute = defaults.SendMinute;
    time.wSecond = defaults.SendSecond;
    if (!SystemTimeToVariantTime(&time, &after_)) return Fail(kInitSource, E_FAIL);
  }
  if (!(recipients_ = MakeObject<CRecipients>(handle)) ||
      !(attachments_ = MakeObject<CAttachments>()) || !(files_ = MakeObject<CFiles>()))
    return Fail(kInitSource, E_OUTOFMEMORY);
  return S_OK;
}

SubmitValues CNewMessage::Values() const {
  SubmitValues v;
  v.from = Narrow(from_.c_str());
  v.subject = Narrow(subject_.c_str());
  v.comment = Narrow(comment_.c_str());
  v.customField = Narrow(customField_.c_str());
  v.charge = Narrow(charge_.c_str());
  v.user = Narrow(user_.c_str());
  v.coverSheet = Narrow(coverSheet_.c_str());
  v.letterhead = Narrow(letterhead_.c_str());
  v.covertext = Narrow(covertext_.c_str());
  v.text = Narrow(text_.c_str());
  v.format = format_;
  v.priority = priority_;
  v.quality = quality_;
  v.sendTime = sendTime_;
  v.header = header_;
  v.deleteAfterSend = delete_ != VARIANT_FALSE;
  v.hold = hold_ != VARIANT_FALSE;
  v.preview = preview_ != VARIANT_FALSE;
  v.broadcast = broadcast_ != VARIANT_FALSE;
  v.sentItemsFax = sentItemsFax_;
  v.sentItemsSms = sentItemsSms_;
  v.after = after_;
  if (recipients_)
    recipients_->ForEach([&](const CRecipient& r) {
      v.recipients.push_back({r.type, Narrow(r.to.c_str()), Narrow(r.organisation.c_str()),
                              Narrow(r.address.c_str()), Narrow(r.custom.c_str())});
    });
  if (attachments_) v.attachments = attachments_->Names();
  if (files_) v.files = files_->Names();
  return v;
}

HRESULT CNewMessage::Send() {
  return Guarded([&] {
    const int32_t sentItems = vl::Process().sentItemsMode;
    if (sentItems == 0 || sentItems == 1) sentItemsFax_ = sentItemsSms_ = sentItems;
    vl::ApiTraceHandle(handle_, "NewMessage.Send: Checking permissions");
    const std::string requestArea = RequestArea(handle_);
    // A closed session has no areas: nothing is written for it.
    if (requestArea.empty()) return Fail(kSendSource, FromResultCode(VL_E_NOT_INIT), VL_E_NOT_INIT);
    if (!MayAccess(requestArea, kReadWriteDeleteAccess) ||
        !MayAccess(UserOutDir(handle_), kReadWriteAccess)) {
      vl::ApiTraceHandle(handle_,
                         "NewMessage.Send: Access denied to the request area or out directory");
      return Fail(kSendSource, E_ACCESSDENIED);
    }
    return SubmitMessage();
  });
}

// Submits the open file. A message list that another process holds at that
// moment refuses the submission (0xF711) with nothing left behind; the
// submission is made again until the shared files' retry time has passed.
VLRESULT CNewMessage::SubmitWhileListBusy(FILE* subfile, const char* path, char* body) {
  const int64_t start = os::WallClockMilliseconds();
  const int64_t limit = int64_t{para::DefaultRetrySeconds()} * 1000;
  for (;;) {
    const VLRESULT rc = vl::SendOpenSubmitFile(handle_, subfile, path, kSubmitPrefix, body);
    const int64_t now = os::WallClockMilliseconds();
    if (rc != VL_E_INFO_FILE_OPEN_ERROR || now < start || now - start >= limit) return rc;
    vl::ApiTraceHandle(handle_, "NewMessage.Send: Message list busy, submitting again");
    os::SleepMilliseconds(static_cast<int>(10 + now % 20));
  }
}

HRESULT CNewMessage::SubmitMessage() {
  const std::string directory = ApiTempDirectory();
  vl::ApiTraceHandle(handle_, "NewMessage.Send: Getting temp file in %s", directory.c_str());
  if (!MayAccess(directory, kReadWriteAccess)) {
    vl::ApiTraceHandle(handle_, "NewMessage.Send: Access denied to %s", directory.c_str());
    return Fail(kSendSource, E_ACCESSDENIED);
  }
  // The system's temporary-name service creates the file; the platform
  // layer has no such call.
  char path[MAX_PATH + 1] = {};
  if (!GetTempFileNameA(directory.c_str(), "VAP", 0, path)) {
    vl::ApiTraceHandle(handle_, "Error getting temp file: 0x%8.8x",
                       static_cast<unsigned>(GetLastError()));
    return Fail(kSendSource, E_FAIL);
  }
  vl::ApiTraceHandle(handle_, "NewMessage.Send: Opening subfile: %s", path);
  os::OpenRequest request;
  request.read = request.write = true;
  request.disposition = os::Disposition::CreateAlways;
  request.streamMode = "w+b";
  os::OpenedStream subfile = os::OpenStream(path, request);
  // The file goes unless a submission failed: then it stays for whoever
  // looks into the failure.
  bool keepFile = false;
  auto closeFile = os::scope_exit([&] {
    subfile.file.reset();
    if (!keepFile) os::RemoveFile(path);
  });
  if (!subfile.file) {
    vl::ApiTraceHandle(handle_, "Error opening sub file %s: 0x%8.8x", path,
                       static_cast<unsigned>(subfile.error));
    return Fail(kSendSource, E_FAIL);
  }
  vl::ApiTraceHandle(handle_, "NewMessage.Send: Writing subfile");
  const SubmitSwitches switches{vl::Process().sentItemsMode, vl::Process().deleteFailedFaxes};
  if (HRESULT hr = WriteSubmitFile(Values(), switches, subfile.file.get()); FAILED(hr)) {
    vl::ApiTraceHandle(handle_, "Error writing sub file %s: 0x%8.8x", path,
                       static_cast<unsigned>(hr));
    return Fail(kSendSource, hr);
  }
  vl::ApiTraceHandle(handle_, "NewMessage.Send: Now start submitting. Body: %s", body_.c_str());
  char body[9] = {};
  const VLRESULT rc = SubmitWhileListBusy(subfile.file.get(), path, body);
  if (rc != VL_OK) {
    keepFile = true;
    const HRESULT hr = FromResultCode(rc);
    vl::ApiTraceHandle(handle_, "Error submitting file %s: 0x%8.8x", path,
                       static_cast<unsigned>(hr));
    return Fail(kSendSource, hr, rc);
  }
  body_ = body;
  vl::ApiTraceHandle(handle_, "...NewMessage.Send - return OK");
  return S_OK;
}

HRESULT CNewMessage::get_Recipients(IVlRecipients** out) { return GetCollection(recipients_, out); }
HRESULT CNewMessage::get_Attachments(IVlAttachments** out) {
  return GetCollection(attachments_, out);
}
HRESULT CNewMessage::get_Files(IVlFiles** out) { return GetCollection(files_, out); }

HRESULT CNewMessage::get_Priority(PriorityEnum* out) { return GetValue(priority_, out); }
HRESULT CNewMessage::put_Priority(PriorityEnum value) { return PutValue(priority_, value); }
HRESULT CNewMessage::get_Format(FormatEnum* out) { return GetValue(format_, out); }
HRESULT CNewMessage::put_Format(FormatEnum value) { return PutValue(format_, value); }
HRESULT CNewMessage::get_Quality(QualityEnum* out) { return GetValue(quality_, out); }
HRESULT CNewMessage::put_Quality(QualityEnum value) { return PutValue(quality_, value); }
HRESULT CNewMessage::get_SendTime(SendTimeEnum* out) { return GetValue(sendTime_, out); }
HRESULT CNewMessage::put_SendTime(SendTimeEnum value) { return PutValue(sendTime_, value); }
HRESULT CNewMessage::get_Header(HeaderEnum* out) { return GetValue(header_, out); }
HRESULT CNewMessage::put_Header(HeaderEnum value) { return PutValue(header_, value); }
HRESULT CNewMessage::get_After(DATE* out) { return GetValue(after_, out); }
HRESULT CNewMessage::put_After(DATE value) { return PutValue(after_, value); }

HRESULT CNewMessage::get_Delete(VARIANT_BOOL* out) { return GetValue(delete_, out); }
HRESULT CNewMessage::put_Delete(VARIANT_BOOL value) { return PutValue(delete_, value); }
HRESULT CNewMessage::get_Preview(VARIANT_BOOL* out) { return GetValue(preview_, out); }
HRESULT CNewMessage::put_Preview(VARIANT_BOOL value) { return PutValue(preview_, value); }
HRESULT CNewMessage::get_Hold(VARIANT_BOOL* out) { return GetValue(hold_, out); }
HRESULT CNewMessage::put_Hold(VARIANT_BOOL value) { return PutValue(hold_, value); }
HRESULT CNewMessage::get_Broadcast(VARIANT_BOOL* out) { return GetValue(broadcast_, out); }
HRESULT CNewMessage::put_Broadcast(VARIANT_BOOL value) { return PutValue(broadcast_, value); }

HRESULT CNewMessage::get_Covertext(BSTR* out) { return GetText(covertext_, out); }
HRESULT CNewMessage::put_Covertext(BSTR value) { return PutText(covertext_, value); }
HRESULT CNewMessage::get_Comment(BSTR* out) { return GetText(comment_, out); }
HRESULT CNewMessage::put_Comment(BSTR value) { return PutText(comment_, value); }
HRESULT CNewMessage::get_Text(BSTR* out) { return GetText(text_, out); }
HRESULT CNewMessage::put_Text(BSTR value) { return PutText(text_, value); }
HRESULT CNewMessage::get_From(BSTR* out) { return GetText(from_, out); }
HRESULT CNewMessage::put_From(BSTR value) { return PutText(from_, value); }
HRESULT CNewMessage::get_Charge(BSTR* out) { return GetText(charge_, out); }
HRESULT CNewMessage::put_Charge(BSTR value) { return PutText(charge_, value); }
HRESULT CNewMessage::get_Letterhead(BSTR* out) { return GetText(letterhead_, out); }
HRESULT CNewMessage::put_Letterhead(BSTR value) { return PutText(letterhead_, value); }
HRESULT CNewMessage::get_Subject(BSTR* out) { return GetText(subject_, out); }
HRESULT CNewMessage::put_Subject(BSTR value) { return PutText(subject_, value); }
HRESULT CNewMessage::get_User(BSTR* out) { return GetText(user_, out); }
HRESULT CNewMessage::put_User(BSTR value) { return PutText(user_, value); }
HRESULT CNewMessage::get_CoverSheet(BSTR* out) { return GetText(coverSheet_, out); }
HRESULT CNewMessage::put_CoverSheet(BSTR value) { return PutText(coverSheet_, value); }
HRESULT CNewMessage::get_CustomField(BSTR* out) { return GetText(customField_, out); }
HRESULT CNewMessage::put_CustomField(BSTR value) { return PutText(customField_, value); }

HRESULT CNewMessage::get_Body(BSTR* out) {
  if (!out) return E_POINTER;
  return ReturnText(body_.c_str(), out);
}

HRESULT CreateNewMessage(VLHANDLE handle, IVlNewMsg** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    os::ComPtr<CNewMessage> message = MakeObject<CNewMessage>();
    if (!message) return E_OUTOFMEMORY;
    if (HRESULT hr = message->Init(handle); FAILED(hr)) return hr;
    return ReturnObject<IVlNewMsg>(std::move(message), out);
  });
}

}  // namespace vlauto
