// What the automation object tests share: string arguments and results,
// getters called through member pointers with junk-filled outputs, items by
// index, the thread's error record, and user JSMITH logged on over a fax
// tree with COM started and the server running.
#pragma once

#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "platform/win32/raii_win.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/user_fixture.h"
#include "vllib.h"

namespace vltest {

using os::ComPtr;
using Texts = std::vector<std::wstring>;

// An automation string argument, freed at the end of the full expression.
struct B {
  explicit B(const std::wstring& text) : owned(SysAllocStringLen(text.data(), text.size())) {}
  operator BSTR() const { return owned.get(); }
  os::UniqueBstr owned;
};

inline std::wstring Wide(const std::string& text) { return {text.begin(), text.end()}; }

// The text of a BSTR the caller owns, freed; null reads as empty.
inline std::wstring Take(BSTR text) {
  os::UniqueBstr owned(text);
  return text ? text : L"";
}

// What a getter gives, S_OK expected, its output junk-filled first to show
// that it is written. A text comes back as a wide string, an object owned.
template <typename I, typename T>
T Get(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(T*)) {
  T value;
  std::memset(&value, 0x5A, sizeof value);
  EXPECT_EQ((object->*getter)(&value), S_OK);
  return value;
}
template <typename I>
std::wstring Get(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(BSTR*)) {
  BSTR text = reinterpret_cast<BSTR>(0x5A5A);
  HRESULT hr = (object->*getter)(&text);
  EXPECT_EQ(hr, S_OK);
  return hr == S_OK ? Take(text) : L"(failed)";
}
template <typename I, typename T>
ComPtr<T> Get(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(T**)) {
  ComPtr<T> taken;
  EXPECT_EQ((object->*getter)(taken.put()), S_OK);
  return taken;
}
// What each getter gives, in order.
template <typename I, typename T>
auto Gets(I* object, std::initializer_list<HRESULT (STDMETHODCALLTYPE I::*)(T*)> getters) {
  std::vector<decltype(Get(object, *getters.begin()))> values;
  for (auto getter : getters) values.push_back(Get(object, getter));
  return values;
}

inline VARIANT Index(long i) {
  VARIANT v = {};
  V_VT(&v) = VT_I4;
  V_I4(&v) = i;
  return v;
}
// The date and time as automation passes them.
inline DATE Date(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second) {
  SYSTEMTIME time = {year, month, 0, day, hour, minute, second, 0};
  DATE date = 0;
  EXPECT_TRUE(SystemTimeToVariantTime(&time, &date));
  return date;
}
// Item i of a collection, S_OK expected.
template <typename Item, typename C>
ComPtr<Item> At(C* collection, long i) {
  ComPtr<Item> item;
  EXPECT_EQ(collection->get_Item(Index(i), item.put()), S_OK);
  return item;
}
// What describe makes of each item of a collection, in order.
template <typename Item, typename C, typename Describe>
Texts Items(C* collection, Describe describe) {
  Texts texts;
  for (long i = 0, count = Get(collection, &C::get_Count); i < count; ++i)
    texts.push_back(describe(At<Item>(collection, i).get()));
  return texts;
}

// The thread's error information, taken, as "source: description", or
// "(none)"; *iid receives the interface it names.
inline std::wstring ErrorRecord(GUID* iid = nullptr) {
  ComPtr<IErrorInfo> info;
  if (GetErrorInfo(0, info.put()) != S_OK) return L"(none)";
  if (iid) info->GetGUID(iid);
  return Get(info.get(), &IErrorInfo::GetSource) + L": " +
         Get(info.get(), &IErrorInfo::GetDescription);
}
// Its source alone (descriptions of system codes differ between systems).
inline std::wstring ErrorSource(GUID* iid = nullptr) {
  std::wstring record = ErrorRecord(iid);
  return record.substr(0, record.find(L": "));
}

struct ComApartment {
  ComApartment() { CoInitialize(nullptr); }
  ~ComApartment() { CoUninitialize(); }
};

// JSMITH logged on, COM started for the objects the test holds, and the
// server running until running_.Stop().
class AutomationTest : public JsmithTest {
 protected:
  ComApartment com_;
  ServerStandIn running_{tree_.Request()};
};

}  // namespace vltest
