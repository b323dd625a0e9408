// A message being composed by a script: its properties, its recipients,
// attachments and document files, and Send, which writes them into a submit
// file and submits it.
#pragma once

#include <string>

#include "automation/dispatch_object.h"
#include "automation/name_lists.h"
#include "automation/recipients.h"
#include "automation/submit_file_writer.h"
#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

class CNewMessage : public DispatchObject<IVlNewMsg> {
 public:
  // Takes the user's message defaults and makes the three collections.
  HRESULT Init(VLHANDLE handle);

  // The message's values as the submit file writer takes them.
  SubmitValues Values() const;

  STDMETHODIMP Send() override;
  STDMETHODIMP get_Recipients(IVlRecipients** out) override;
  STDMETHODIMP get_Attachments(IVlAttachments** out) override;
  STDMETHODIMP get_Files(IVlFiles** out) override;
  STDMETHODIMP get_Priority(PriorityEnum* out) override;
  STDMETHODIMP put_Priority(PriorityEnum value) override;
  STDMETHODIMP get_Format(FormatEnum* out) override;
  STDMETHODIMP put_Format(FormatEnum value) override;
  STDMETHODIMP get_Covertext(BSTR* out) override;
  STDMETHODIMP put_Covertext(BSTR value) override;
  STDMETHODIMP get_Comment(BSTR* out) override;
  STDMETHODIMP put_Comment(BSTR value) override;
  STDMETHODIMP get_Text(BSTR* out) override;
  STDMETHODIMP put_Text(BSTR value) override;
  STDMETHODIMP get_From(BSTR* out) override;
  STDMETHODIMP put_From(BSTR value) override;
  STDMETHODIMP get_Quality(QualityEnum* out) override;
  STDMETHODIMP put_Quality(QualityEnum value) override;
  STDMETHODIMP get_After(DATE* out) override;
  STDMETHODIMP put_After(DATE value) override;
  STDMETHODIMP get_Charge(BSTR* out) override;
  STDMETHODIMP put_Charge(BSTR value) override;
  STDMETHODIMP get_Delete(VARIANT_BOOL* out) override;
  STDMETHODIMP put_Delete(VARIANT_BOOL value) override;
  STDMETHODIMP get_Preview(VARIANT_BOOL* out) override;
  STDMETHODIMP put_Preview(VARIANT_BOOL value) override;
  STDMETHODIMP get_Letterhead(BSTR* out) override;
  STDMETHODIMP put_Letterhead(BSTR value) override;
  STDMETHODIMP get_Subject(BSTR* out) override;
  STDMETHODIMP put_Subject(BSTR value) override;
  STDMETHODIMP get_Hold(VARIANT_BOOL* out) override;
  STDMETHODIMP put_Hold(VARIANT_BOOL value) override;
  STDMETHODIMP get_User(BSTR* out) override;
  STDMETHODIMP put_User(BSTR value) override;
  STDMETHODIMP get_Header(HeaderEnum* out) override;
  STDMETHODIMP put_Header(HeaderEnum value) override;
  STDMETHODIMP get_CoverSheet(BSTR* out) override;
  STDMETHODIMP put_CoverSheet(BSTR value) override;
  STDMETHODIMP get_SendTime(SendTimeEnum* out) override;
  STDMETHODIMP put_SendTime(SendTimeEnum value) override;
  STDMETHODIMP get_Body(BSTR* out) override;
  STDMETHODIMP get_CustomField(BSTR* out) override;
  STDMETHODIMP put_CustomField(BSTR value) override;
  STDMETHODIMP get_Broadcast(VARIANT_BOOL* out) override;
  STDMETHODIMP put_Broadcast(VARIANT_BOOL value) override;

 private:
  // Send's work after the permission checks, reporting its own failures.
  HRESULT SubmitMessage();
  VLRESULT SubmitWhileListBusy(FILE* subfile, const char* path, char* body);

  VLHANDLE handle_ = 0;
  std::wstring from_, text_, charge_, comment_, customField_, covertext_, letterhead_, subject_,
      user_, coverSheet_;
  long sendTime_ = 0, quality_ = 0, priority_ = 0, format_ = 0;
  uint16_t header_ = 0;
  VARIANT_BOOL delete_ = VARIANT_FALSE, hold_ = VARIANT_FALSE, broadcast_ = VARIANT_FALSE,
               preview_ = VARIANT_FALSE;
  int32_t sentItemsFax_ = 0, sentItemsSms_ = 0;
  DATE after_ = 0;
  std::string body_;
  os::ComPtr<CRecipients> recipients_;
  os::ComPtr<CAttachments> attachments_;
  os::ComPtr<CFiles> files_;
};

}  // namespace vlauto
