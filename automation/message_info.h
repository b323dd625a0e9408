// What is known of one message (MessageInfo, IVlMsgInfo): its message
// directory record, the document and attachment names and cover text of its
// control file, and its image file.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "automation/dispatch_object.h"
#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

class CMessageInfo final : public DispatchObject<IVlMsgInfo> {
 public:
  CMessageInfo(VLHANDLE handle, uint16_t folder, const std::string& body);

  // Takes the message's record when the caller has it, else reads it with
  // VlxGetMsgInfoEx. Returns the automation error of a failure, unreported.
  // The control file is read later, when Files, Attachments or Covertext is
  // first asked for.
  HRESULT Init(const VLMSGINFOEX* record);

  STDMETHODIMP get_Status(StatusEnum* out) override;
  STDMETHODIMP get_Body(BSTR* out) override;
  STDMETHODIMP get_Comment(BSTR* out) override;
  STDMETHODIMP get_Subject(BSTR* out) override;
  STDMETHODIMP get_UserStatus(UserStatusEnum* out) override;
  STDMETHODIMP get_Type(FaxTypeEnum* out) override;
  STDMETHODIMP get_Organisation(BSTR* out) override;
  STDMETHODIMP get_CustomField(BSTR* out) override;
  STDMETHODIMP get_ImageStream(IStream** out) override;
  STDMETHODIMP get_ImageSize(LONG* out) override;
  STDMETHODIMP get_ImageFilePath(BSTR* out) override;
  STDMETHODIMP get_AcceptedDate(DATE* out) override;
  STDMETHODIMP get_Covertext(BSTR* out) override;
  STDMETHODIMP get_Files(IVlFiles** out) override;
  STDMETHODIMP get_Attachments(IVlAttachments** out) override;

 private:
  // Fills Files, Attachments and the cover text from the control file in the
  // message's folder, once; a failure is reported under source and tried
  // again on the next request.
  HRESULT ReadFileNames(const char* source);
  // The message's image file and its size; 0xF70B when there is none.
  VLRESULT FindImage(std::string* path, int64_t* size) const;

  VLHANDLE handle_;
  uint16_t folder_;
  std::string body_;
  VLMSGINFOEX record_{};
  bool namesRead_ = false;
  std::wstring covertext_;
  os::ComPtr<IVlFiles> files_;
  os::ComPtr<IVlAttachments> attachments_;
};

// The automation date of a time given in its parts; 0 when the date is not
// valid (as the placeholder 00-00-00 of a message not yet accepted).
DATE DateOf(uint16_t year, uint16_t month, uint16_t day, uint16_t hour, uint16_t minute,
            uint16_t second);

}  // namespace vlauto
