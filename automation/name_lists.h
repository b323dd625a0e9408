// Attachments and document files: collections whose items are each one name
// as given to Add (an attachment's Name, a file's FileName).
#pragma once

#include <string>
#include <vector>

#include "automation/held_items.h"
#include "automation/properties.h"
#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

template <typename Interface>
class NamedItem : public HeldItem<Interface> {
 public:
  std::wstring name;

 protected:
  HRESULT GetName(BSTR* out) { return GetText(name, out); }
  HRESULT PutName(BSTR value) { return PutText(name, value); }
};

// What sets one name list apart from the other.
struct NameListRules {
  size_t most;        // Add refuses a further item (0xF730) beyond this; 0: no limit
  bool refusesEmpty;  // Add refuses an empty name with E_INVALIDARG
  const char* addSource;
  const char* itemSource;
};

template <typename Interface, typename Item, typename Concrete>
class NameList : public HoldingList<Interface, Item, Concrete> {
 public:
  explicit NameList(const NameListRules& rules)
      : HoldingList<Interface, Item, Concrete>(rules.itemSource), rules_(rules) {}

  STDMETHODIMP Add(BSTR name, Item** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    return Guarded([&] {
      if (rules_.refusesEmpty && IsEmpty(name))
        return ReportError(E_INVALIDARG, 0, __uuidof(Interface), rules_.addSource);
      if (rules_.most && this->Items().size() >= rules_.most)
        return ReportResult(VL_E_COLLECTION_FULL, __uuidof(Interface), rules_.addSource);
      os::ComPtr<Concrete> item;
      if (HRESULT hr = Append(name ? name : L"", &item); FAILED(hr)) return hr;
      return ReturnObject<Item>(std::move(item), out);
    });
  }

  // Appends the names, without the limit (the names of an existing message).
  HRESULT Fill(const std::vector<std::string>& names) {
    for (const std::string& name : names) {
      os::ComPtr<Concrete> item;
      if (HRESULT hr = Append(Widen(name.c_str()), &item); FAILED(hr)) return hr;
    }
    return S_OK;
  }

  // The names in 8-bit text, in order.
  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    this->ForEach([&](const Concrete& item) { names.push_back(Narrow(item.name.c_str())); });
    return names;
  }

 private:
  HRESULT Append(const std::wstring& name, os::ComPtr<Concrete>* item) {
    *item = MakeObject<Concrete>();
    if (!*item) return ReportError(E_OUTOFMEMORY, 0, __uuidof(Interface), rules_.addSource);
    (*item)->name = name;
    this->Hold(item->get());
    return S_OK;
  }

  const NameListRules& rules_;
};

// A new list of type List filled with names, for the caller.
template <typename List, typename Interface>
HRESULT CreateNameList(const std::vector<std::string>& names, Interface** out) {
  if (!out) return E_POINTER;
  *out = nullptr;
  return Guarded([&] {
    os::ComPtr<List> list = MakeObject<List>();
    if (!list) return E_OUTOFMEMORY;
    if (HRESULT hr = list->Fill(names); FAILED(hr)) return hr;
    return ReturnObject<Interface>(std::move(list), out);
  });
}

class CAttachment : public NamedItem<IVlAttachment> {
 public:
  STDMETHODIMP get_Name(BSTR* out) override { return GetName(out); }
  STDMETHODIMP put_Name(BSTR value) override { return PutName(value); }
};

class CAttachments : public NameList<IVlAttachments, IVlAttachment, CAttachment> {
 public:
  CAttachments();
};

class CFile : public NamedItem<IVlFile> {
 public:
  STDMETHODIMP get_FileName(BSTR* out) override { return GetName(out); }
  STDMETHODIMP put_FileName(BSTR value) override { return PutName(value); }
};

class CFiles : public NameList<IVlFiles, IVlFile, CFile> {
 public:
  CFiles();
};

}  // namespace vlauto
