// Move-only owners for the OS resources the library holds, and scope_exit.
// Each resource type is one alias over UniqueResource; Windows-only aliases
// live in platform/win32/raii_win.h.
#pragma once

#include <cstdio>
#include <utility>

namespace os {

// Owns a value of Traits::Type that is released by Traits::Close unless it
// equals Traits::Invalid().
template <typename Traits>
class UniqueResource {
  using T = typename Traits::Type;

 public:
  UniqueResource() = default;
  explicit UniqueResource(T value) : value_(value) {}
  UniqueResource(UniqueResource&& other) noexcept : value_(other.release()) {}
  UniqueResource& operator=(UniqueResource&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  UniqueResource(const UniqueResource&) = delete;
  UniqueResource& operator=(const UniqueResource&) = delete;
  ~UniqueResource() { reset(); }

  T get() const { return value_; }
  bool valid() const { return value_ != Traits::Invalid(); }
  explicit operator bool() const { return valid(); }
  T release() { return std::exchange(value_, Traits::Invalid()); }
  void reset(T value = Traits::Invalid()) {
    T old = std::exchange(value_, value);
    if (old != Traits::Invalid()) Traits::Close(old);
  }

 private:
  T value_ = Traits::Invalid();
};

// Traits of one resource kind: its type, its empty value and its release.
#define OS_RESOURCE_TRAITS(Name, T, invalidValue, closeFunction) \
  struct Name {                                                  \
    using Type = T;                                              \
    static Type Invalid() { return invalidValue; }               \
    static void Close(Type v) { closeFunction(v); }              \
  }

void CloseStream(FILE* stream);
void CloseDescriptor(int fd);

OS_RESOURCE_TRAITS(StreamTraits, FILE*, nullptr, CloseStream);
OS_RESOURCE_TRAITS(DescriptorTraits, int, -1, CloseDescriptor);

using UniqueFile = UniqueResource<StreamTraits>;
using UniqueFd = UniqueResource<DescriptorTraits>;

// Runs a callable when the scope ends, unless dismissed.
template <typename F>
class ScopeExit {
 public:
  explicit ScopeExit(F f) : f_(std::move(f)) {}
  ScopeExit(const ScopeExit&) = delete;
  ScopeExit& operator=(const ScopeExit&) = delete;
  ~ScopeExit() {
    if (armed_) f_();
  }
  void dismiss() { armed_ = false; }

 private:
  F f_;
  bool armed_ = true;
};

template <typename F>
ScopeExit<F> scope_exit(F f) {
  return ScopeExit<F>(std::move(f));
}

}  // namespace os
