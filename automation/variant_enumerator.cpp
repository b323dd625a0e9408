// IEnumVARIANT over a shared snapshot: Next gives S_FALSE with the count it
// could fill past the end, Skip S_FALSE when it runs off the end, and a clone
// shares the items and starts where its original stands.
#include "automation/variant_enumerator.h"

#include <atomic>

#include "automation/module.h"

namespace vlauto {
namespace {

class VariantEnumerator final : public IEnumVARIANT {
 public:
  VariantEnumerator(std::shared_ptr<const VariantList> items, size_t position)
      : items_(std::move(items)), position_(position) {
    ObjectCreated();
  }
  ~VariantEnumerator() { ObjectDestroyed(); }

  STDMETHODIMP QueryInterface(REFIID iid, void** out) override {
    return QueryOneInterface<IEnumVARIANT>(this, iid, out);
  }
  STDMETHODIMP_(ULONG) AddRef() override { return ++references_; }
  STDMETHODIMP_(ULONG) Release() override {
    const ULONG left = --references_;
    if (left == 0) delete this;
    return left;
  }

  STDMETHODIMP Next(ULONG wanted, VARIANT* out, ULONG* fetched) override {
    if (!out || (!fetched && wanted > 1)) return E_POINTER;
    ULONG count = 0;
    for (; count < wanted && position_ < items_->size(); ++count, ++position_) {
      VariantInit(&out[count]);
      HRESULT hr = VariantCopy(&out[count], const_cast<VARIANT*>((*items_)[position_].get()));
      if (FAILED(hr)) {
        while (count > 0) VariantClear(&out[--count]);
        if (fetched) *fetched = 0;
        return hr;
      }
    }
    if (fetched) *fetched = count;
    return count == wanted ? S_OK : S_FALSE;
  }
  STDMETHODIMP Skip(ULONG count) override {
    const size_t left = items_->size() - position_;
    if (count > left) {
      position_ = items_->size();
      return S_FALSE;
    }
    position_ += count;
    return S_OK;
  }
  STDMETHODIMP Reset() override {
    position_ = 0;
    return S_OK;
  }
  STDMETHODIMP Clone(IEnumVARIANT** out) override {
    if (!out) return E_POINTER;
    *out = new (std::nothrow) VariantEnumerator(items_, position_);
    return *out ? S_OK : E_OUTOFMEMORY;
  }

 private:
  std::atomic<ULONG> references_{1};
  std::shared_ptr<const VariantList> items_;
  size_t position_;
};

}  // namespace

HRESULT MakeVariantEnumerator(std::shared_ptr<const VariantList> items, IUnknown** out) {
  *out = new (std::nothrow) VariantEnumerator(std::move(items), 0);
  return *out ? S_OK : E_OUTOFMEMORY;
}

}  // namespace vlauto
