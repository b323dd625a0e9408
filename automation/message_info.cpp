// MessageInfo: the record's properties, the control file's names and cover
// text, and the image file.
#include "automation/message_info.h"

#include <objbase.h>

#include <climits>
#include <cstdio>

#include "api/diagnostics.h"
#include "api/session.h"
#include "automation/access.h"
#include "automation/error_report.h"
#include "automation/factories.h"
#include "automation/text.h"
#include "msg/addressees.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vlauto {
namespace {

using vl::ApiTraceHandle;

// Where a message's image may lie, below its folder's directory, in the
// order they are looked for: the preview, then the fax files by resolution.
const struct {
  const char* subdirectory;
  const char* extension;
} kImageFiles[] = {
    {"PREVIEW\\", ".TIF"},
    {"", ".G3F"},
    {"", ".G3N"},
    {"", ".G3S"},
};

// Joins the "Covertext:" lines of a control file back into the lines of the
// text: a piece beginning with a backslash and n starts a new line, a bare
// keyword stands for an empty line, and any other piece continues the line
// it was wrapped from.
class CoverText {
 public:
  void Add(const char* piece) {
    if (!*piece) {
      lines_.emplace_back();
      continued_ = false;
    } else if (piece[0] == '\\' && piece[1] == 'n') {
      lines_.emplace_back(piece + 2);
      continued_ = true;
    } else if (continued_) {
      lines_.back() += ' ';
      lines_.back() += piece;
    } else {
      lines_.emplace_back(piece);
      continued_ = true;
    }
  }
  std::string Text() const {
    std::string text;
    for (size_t i = 0; i < lines_.size(); ++i) text += (i ? "\r\n" : "") + lines_[i];
    return text;
  }

 private:
  std::vector<std::string> lines_;
  bool continued_ = false;
};

struct ControlFileNames {
  std::vector<std::string> documents;
  std::vector<std::string> attachments;
  CoverText cover;
};

// Every "Document:", "Attach:" and "Covertext:" line of the message's control
// file in its folder, in file order; the lines are read as VlxGetDocuments
// reads them, but every one is kept.
VLRESULT ReadControlFile(VLHANDLE handle, uint16_t folder, const char* body,
                         ControlFileNames* names) {
  const vl::SessionPtr session = vl::SessionFromHandle(handle);
  if (!session) return VL_E_NOT_INIT;
  if (!session->HasUser()) return VL_E_USER_NOT_INIT;
  if (VLRESULT rc = vl::CheckControlFileBody(*session, body)) return rc;
  para::Opened control;
  std::string path;
  if (VLRESULT rc = vl::OpenControlFile(*session, folder, body, &control, &path)) return rc;
  char line[para::kLineSize];
  while (para::ReadLine(control.get(), line, sizeof line)) {
    const char* value = para::ValueOf(line);
    if (!value) continue;
    if (para::StartsWithNoCase(line, "Covertext:"))
      names->cover.Add(value);
    else if (*value && para::StartsWithNoCase(line, "Document:"))
      names->documents.emplace_back(value);
    else if (*value && para::StartsWithNoCase(line, "Attach:"))
      names->attachments.emplace_back(value);
  }
  return VL_OK;
}

HRESULT ReturnRecordText(const char* text, BSTR* out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return ReturnText(text, out);
}

}  // namespace

DATE DateOf(uint16_t year, uint16_t month, uint16_t day, uint16_t hour, uint16_t minute,
            uint16_t second) {
  SYSTEMTIME time = {year, month, 0, day, hour, minute, second, 0};
  DATE date = 0;
  if (year == 0 || !SystemTimeToVariantTime(&time, &date)) return 0;
  return date;
}

CMessageInfo::CMessageInfo(VLHANDLE handle, uint16_t folder, const std::string& body)
    : handle_(handle), folder_(folder), body_(body) {}

HRESULT CMessageInfo::Init(const VLMSGINFOEX* record) {
  if (body_.empty()) {
    ApiTraceHandle(handle_, "CMessageInfo::Init() - Body is NULL");
    return E_INVALIDARG;
  }
  // A message of a listing describes the listing's snapshot: its record is
  // the one read then, and its file names are read when first asked for, so
  // that a walk over a long listing reads no file per message.
  if (record) {
    record_ = *record;
    return S_OK;
  }
  if (VLRESULT rc = VlxGetMsgInfoEx(handle_, folder_, body_.c_str(), sizeof record_, &record_))
    return FromResultCode(rc);
  return ReadFileNames("IVlMsg::GetMsgInfo()");
}

HRESULT CMessageInfo::ReadFileNames(const char* source) {
  if (namesRead_) return S_OK;
  ControlFileNames names;
  if (VLRESULT rc = ReadControlFile(handle_, folder_, body_.c_str(), &names)) {
    ApiTraceHandle(handle_,
                   "CMessageInfo::ReadFileNames() - failed to obtain 'Files' list with error: 0x%X",
                   static_cast<unsigned>(FromResultCode(rc)));
    return ReportResult(rc, __uuidof(IVlMsgInfo), source);
  }
  if (HRESULT hr = CreateFiles(names.documents, files_.put()); FAILED(hr)) {
    ApiTraceHandle(handle_,
                   "CMessageInfo::ReadFileNames() - failed to obtain 'Files' list with error: 0x%X",
                   static_cast<unsigned>(hr));
    return hr;
  }
  if (HRESULT hr = CreateAttachments(names.attachments, attachments_.put()); FAILED(hr)) {
    ApiTraceHandle(
        handle_,
        "CMessageInfo::ReadFileNames() - failed to obtain 'Attachments' list with error: 0x%X",
        static_cast<unsigned>(hr));
    return hr;
  }
  covertext_ = Widen(names.cover.Text().c_str());
  namesRead_ = true;
  return S_OK;
}

STDMETHODIMP CMessageInfo::get_Status(StatusEnum* out) {
  if (!out) return E_POINTER;
  *out = static_cast<StatusEnum>(record_.Status);
  return S_OK;
}

STDMETHODIMP CMessageInfo::get_UserStatus(UserStatusEnum* out) {
  if (!out) return E_POINTER;
  *out = static_cast<UserStatusEnum>(record_.UserStatus);
  return S_OK;
}

STDMETHODIMP CMessageInfo::get_Type(FaxTypeEnum* out) {
  if (!out) return E_POINTER;
  *out = static_cast<FaxTypeEnum>(record_.MsgType);
  return S_OK;
}

STDMETHODIMP CMessageInfo::get_Body(BSTR* out) { return ReturnRecordText(record_.Body, out); }
STDMETHODIMP CMessageInfo::get_Comment(BSTR* out) { return ReturnRecordText(record_.Comment, out); }
STDMETHODIMP CMessageInfo::get_Subject(BSTR* out) { return ReturnRecordText(record_.Subject, out); }
STDMETHODIMP CMessageInfo::get_Organisation(BSTR* out) {
  return ReturnRecordText(record_.Organisation, out);
}
STDMETHODIMP CMessageInfo::get_CustomField(BSTR* out) {
  return ReturnRecordText(record_.Custom, out);
}

STDMETHODIMP CMessageInfo::get_AcceptedDate(DATE* out) {
  if (!out) return E_POINTER;
  *out = DateOf(record_.AcceptedYear, record_.AcceptedMonth, record_.AcceptedDay,
                record_.AcceptedHour, record_.AcceptedMinute, record_.AcceptedSecond);
  return S_OK;
}

STDMETHODIMP CMessageInfo::get_Covertext(BSTR* out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    if (HRESULT hr = ReadFileNames("IVlMsgInfo::get_Covertext()"); FAILED(hr)) return hr;
    return ReturnText(covertext_, out);
  });
}

STDMETHODIMP CMessageInfo::get_Files(IVlFiles** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    if (HRESULT hr = ReadFileNames("IVlMsgInfo::get_Files()"); FAILED(hr)) return hr;
    files_->AddRef();
    *out = files_.get();
    return S_OK;
  });
}

STDMETHODIMP CMessageInfo::get_Attachments(IVlAttachments** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    if (HRESULT hr = ReadFileNames("IVlMsgInfo::get_Attachments()"); FAILED(hr)) return hr;
    attachments_->AddRef();
    *out = attachments_.get();
    return S_OK;
  });
}

VLRESULT CMessageInfo::FindImage(std::string* path, int64_t* size) const {
  const std::string directory = FolderDir(handle_, folder_);
  if (directory.empty()) return VL_E_NOT_INIT;
  for (const auto& image : kImageFiles) {
    *path = directory + image.subdirectory + body_ + image.extension;
    os::FileInfo info;
    if (os::GetFileInfo(path->c_str(), &info) == os::kOk && !info.isDirectory) {
      *size = info.size;
      return VL_OK;
    }
  }
  return VL_E_FILE_NOT_FOUND;
}

STDMETHODIMP CMessageInfo::get_ImageFilePath(BSTR* out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    std::string path;
    int64_t size = 0;
    if (VLRESULT rc = FindImage(&path, &size))
      return ReportResult(rc, __uuidof(IVlMsgInfo), "IVlMsgInfo::get_ImageFilePath()");
    return ReturnText(path.c_str(), out);
  });
}

STDMETHODIMP CMessageInfo::get_ImageSize(LONG* out) {
  if (!out) return E_POINTER;
  *out = 0;
  return Guarded([&] {
    static constexpr char kSource[] = "IVlMsgInfo::get_ImageSize()";
    std::string path;
    int64_t size = 0;
    if (VLRESULT rc = FindImage(&path, &size))
      return ReportResult(rc, __uuidof(IVlMsgInfo), kSource);
    if (size > LONG_MAX) return ReportError(E_FAIL, 0, __uuidof(IVlMsgInfo), kSource);
    *out = static_cast<LONG>(size);
    return S_OK;
  });
}

// A stream over a copy of the image file's bytes, taken now: the file may be
// rewritten or removed while the caller reads.
STDMETHODIMP CMessageInfo::get_ImageStream(IStream** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    static constexpr char kSource[] = "IVlMsgInfo::get_ImageStream()";
    std::string path;
    int64_t size = 0;
    if (VLRESULT rc = FindImage(&path, &size))
      return ReportResult(rc, __uuidof(IVlMsgInfo), kSource);
    if (size > LONG_MAX) return ReportError(E_FAIL, 0, __uuidof(IVlMsgInfo), kSource);
    para::Opened image = para::OpenShared(path.c_str(), "rb");
    if (!image) return ReportResult(VL_E_FILE_OPEN_ERROR, __uuidof(IVlMsgInfo), kSource);
    HGLOBAL memory = GlobalAlloc(GMEM_MOVEABLE, static_cast<SIZE_T>(size ? size : 1));
    if (!memory) return ReportError(E_OUTOFMEMORY, 0, __uuidof(IVlMsgInfo), kSource);
    void* bytes = GlobalLock(memory);
    const size_t read = bytes ? std::fread(bytes, 1, static_cast<size_t>(size), image.get()) : 0;
    GlobalUnlock(memory);
    os::ComPtr<IStream> stream;
    // The stream owns the memory from here on, also when the copy fails.
    if (HRESULT hr = CreateStreamOnHGlobal(memory, TRUE, stream.put()); FAILED(hr)) {
      GlobalFree(memory);
      return ReportError(hr, 0, __uuidof(IVlMsgInfo), kSource);
    }
    if (!bytes || read != static_cast<size_t>(size))
      return ReportResult(VL_E_FILE_ERROR, __uuidof(IVlMsgInfo), kSource);
    ULARGE_INTEGER length;
    length.QuadPart = read;
    stream->SetSize(length);
    *out = stream.detach();
    return S_OK;
  });
}

}  // namespace vlauto
