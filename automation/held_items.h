// Collections whose items can take themselves out (the items' Delete).
// An item knows the collection that holds it without holding a reference to
// it, so there is no reference cycle; the collection forgets its items'
// pointers when it drops them or dies, after which Delete does nothing.
#pragma once

#include <utility>

#include "automation/collection.h"

namespace vlauto {

class ItemHolder {
 public:
  // Drops the holder's reference to item.
  virtual void Drop(IUnknown* item) = 0;

 protected:
  ~ItemHolder() = default;
};

template <typename Interface>
class HeldItem : public DispatchObject<Interface> {
 public:
  // Removes the item from the collection that holds it; S_OK also when none
  // does.
  STDMETHODIMP Delete() override {
    if (ItemHolder* holder = std::exchange(holder_, nullptr))
      holder->Drop(static_cast<Interface*>(this));
    return S_OK;
  }
  void HeldBy(ItemHolder* holder) { holder_ = holder; }

 private:
  ItemHolder* holder_ = nullptr;
};

// An ItemList of Concrete items (each a HeldItem of Item).
template <typename Interface, typename Item, typename Concrete>
class HoldingList : public ItemList<Interface, Item>, private ItemHolder {
 public:
  using ItemList<Interface, Item>::ItemList;
  ~HoldingList() {
    for (const os::ComPtr<Item>& item : this->Items())
      static_cast<Concrete*>(item.get())->HeldBy(nullptr);
  }
  void Hold(Concrete* item) {
    item->HeldBy(this);
    this->Append(item);
  }
  // The items as their own class, in order.
  template <typename F>
  void ForEach(F&& visit) const {
    for (const os::ComPtr<Item>& item : this->Items())
      visit(*static_cast<const Concrete*>(item.get()));
  }

 private:
  void Drop(IUnknown* item) override { this->Remove(item); }
};

}  // namespace vlauto
