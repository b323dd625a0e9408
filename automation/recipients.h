// The recipients of a new message, and the recipient list of an existing
// one (read from its control file, with each recipient's status).
#pragma once

#include <string>

#include "automation/held_items.h"
#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

// One recipient; Fax holds its address whatever its type.
class CRecipient : public HeldItem<IVlRecipient> {
 public:
  std::wstring to, organisation, address, custom;
  long type = 0;
  long status = 0;

  STDMETHODIMP get_To(BSTR* out) override;
  STDMETHODIMP put_To(BSTR value) override;
  STDMETHODIMP get_Organisation(BSTR* out) override;
  STDMETHODIMP put_Organisation(BSTR value) override;
  STDMETHODIMP get_Fax(BSTR* out) override;
  STDMETHODIMP put_Fax(BSTR value) override;
  STDMETHODIMP get_Type(FaxTypeEnum* out) override;
  STDMETHODIMP put_Type(FaxTypeEnum value) override;
  STDMETHODIMP get_Custom(BSTR* out) override;
  STDMETHODIMP put_Custom(BSTR value) override;
  STDMETHODIMP get_Status(StatusEnum* out) override;
  STDMETHODIMP put_Status(StatusEnum value) override;
};

class CRecipients : public HoldingList<IVlRecipients, IVlRecipient, CRecipient> {
 public:
  explicit CRecipients(VLHANDLE handle);

  // Fills the list with the addressees of a message in a folder (no item
  // limit applies); a failing result code is reported as its HRESULT.
  HRESULT Init(uint16_t folder, const char* body);

  STDMETHODIMP AddFaxRecipient(BSTR to, BSTR organisation, BSTR fax, IVlRecipient** out) override;
  STDMETHODIMP AddLANRecipient(BSTR to, BSTR organisation, BSTR user, IVlRecipient** out) override;
  STDMETHODIMP AddSMSRecipient(BSTR to, BSTR organisation, BSTR sms, IVlRecipient** out) override;

 protected:
  HRESULT IndexOutOfRange() override;

 private:
  // The three Add methods: they differ only in the type and error source.
  HRESULT Add(long type, const char* source, BSTR to, BSTR organisation, BSTR address,
              IVlRecipient** out);

  VLHANDLE handle_;
};

}  // namespace vlauto
