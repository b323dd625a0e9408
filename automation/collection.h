// The automation collection pattern, written once: Item (the default member,
// a 0-based index of any VARIANT type converted to a 32-bit integer),
// _NewEnum (an IEnumVARIANT over the items in order) and Count. A
// collection class says how many items it has and makes the item at an
// index; ItemList keeps its items itself.
#pragma once

#include <algorithm>
#include <memory>
#include <vector>

#include "automation/dispatch_object.h"
#include "automation/error_report.h"
#include "automation/variant_enumerator.h"

namespace vlauto {

// The 32-bit integer an Item index converts to; false when it converts to
// none.
bool IndexOf(const VARIANT& index, long* position);

template <typename Interface, typename Item>
class Collection : public DispatchObject<Interface> {
 public:
  STDMETHODIMP get_Item(VARIANT index, Item** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    return Guarded([&] {
      long position = 0;
      if (!IndexOf(index, &position) || position < 0 || position >= ItemCount())
        return IndexOutOfRange();
      return ItemAt(position, out);
    });
  }

  STDMETHODIMP get__NewEnum(IUnknown** out) override {
    if (!out) return E_POINTER;
    *out = nullptr;
    return Guarded([&] {
      auto items = std::make_shared<VariantList>(ItemCount());
      for (long i = 0; i < static_cast<long>(items->size()); ++i) {
        Item* item = nullptr;
        if (HRESULT hr = ItemAt(i, &item); FAILED(hr)) return hr;
        VARIANT* slot = (*items)[i].put();
        V_VT(slot) = VT_DISPATCH;
        V_DISPATCH(slot) = item;
      }
      return MakeVariantEnumerator(std::move(items), out);
    });
  }

  STDMETHODIMP get_Count(long* out) override {
    if (!out) return E_POINTER;
    *out = ItemCount();
    return S_OK;
  }

 protected:
  // itemSource names Item in error records, as "IVlDevices::get_Item()".
  explicit Collection(const char* itemSource) : itemSource_(itemSource) {}

  virtual long ItemCount() = 0;
  // The item at a valid index, with a reference for the caller.
  virtual HRESULT ItemAt(long index, Item** out) = 0;
  // What Item gives for an index that designates no item.
  virtual HRESULT IndexOutOfRange() {
    return ReportError(E_INVALIDARG, 0, __uuidof(Interface), itemSource_);
  }

 private:
  const char* itemSource_;
};

// A collection that holds one reference to each of its items, in the order
// they were added.
template <typename Interface, typename Item>
class ItemList : public Collection<Interface, Item> {
 public:
  using Collection<Interface, Item>::Collection;

  // Adds an item at the end, holding a reference of its own.
  void Append(Item* item) {
    items_.emplace_back();
    item->AddRef();
    items_.back().reset(item);
  }
  // Drops the collection's reference to an item; false when it holds none.
  bool Remove(IUnknown* item) {
    auto found = std::find_if(items_.begin(), items_.end(), [&](const os::ComPtr<Item>& held) {
      return static_cast<IUnknown*>(held.get()) == item;
    });
    if (found == items_.end()) return false;
    items_.erase(found);
    return true;
  }
  const std::vector<os::ComPtr<Item>>& Items() const { return items_; }

 protected:
  long ItemCount() override { return static_cast<long>(items_.size()); }
  HRESULT ItemAt(long index, Item** out) override {
    *out = items_[index].get();
    (*out)->AddRef();
    return S_OK;
  }

 private:
  std::vector<os::ComPtr<Item>> items_;
};

}  // namespace vlauto
