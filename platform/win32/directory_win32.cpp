// The system's directory services: ACTIVEDS.dll, loaded on first use so
// that the library loads and works on machines without it, and the search
// and object interfaces of its providers.
#include <windows.h>
#include <objbase.h>
#include <oleauto.h>
#include <iads.h>
#include <adserr.h>

#include <vector>

#include "platform/directory_service.h"
#include "platform/win32/raii_win.h"

namespace os::ads {
namespace {

// The entry points taken from ACTIVEDS.dll.
struct ActiveDs {
  HRESULT(WINAPI* openObject)(LPCWSTR, LPCWSTR, LPCWSTR, DWORD, REFIID, void**) = nullptr;
  HRESULT(WINAPI* getObject)(LPCWSTR, REFIID, void**) = nullptr;
  HRESULT(WINAPI* buildEnumerator)(IADsContainer*, IEnumVARIANT**) = nullptr;
  HRESULT(WINAPI* enumerateNext)(IEnumVARIANT*, ULONG, VARIANT*, ULONG*) = nullptr;
  HRESULT(WINAPI* freeEnumerator)(IEnumVARIANT*) = nullptr;
  BOOL(WINAPI* freeMemory)(LPVOID) = nullptr;
};

template <typename F>
bool Take(HMODULE module, const char* name, F* function) {
  *function = reinterpret_cast<F>(reinterpret_cast<void*>(GetProcAddress(module, name)));
  return *function != nullptr;
}

// Loads the library once it is asked for; a failed load is tried again on
// the next use.
const ActiveDs* Library() {
  static ActiveDs entries;
  static bool loaded = false;
  if (loaded) return &entries;
  HMODULE module = LoadLibraryA("ACTIVEDS.dll");
  if (!module) return nullptr;
  if (!Take(module, "ADsOpenObject", &entries.openObject) ||
      !Take(module, "ADsGetObject", &entries.getObject) ||
      !Take(module, "ADsBuildEnumerator", &entries.buildEnumerator) ||
      !Take(module, "ADsEnumerateNext", &entries.enumerateNext) ||
      !Take(module, "ADsFreeEnumerator", &entries.freeEnumerator) ||
      !Take(module, "FreeADsMem", &entries.freeMemory)) {
    FreeLibrary(module);
    return nullptr;
  }
  loaded = true;  // kept for the process
  return &entries;
}

std::wstring Wide(const std::string& text) {
  int size = MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, nullptr, 0);
  std::wstring wide(size > 0 ? size - 1 : 0, L'\0');
  if (size > 1) MultiByteToWideChar(CP_ACP, 0, text.c_str(), -1, wide.data(), size);
  return wide;
}

std::string Narrow(const wchar_t* text) {
  if (!text) return {};
  int size = WideCharToMultiByte(CP_ACP, 0, text, -1, nullptr, 0, nullptr, nullptr);
  std::string narrow(size > 0 ? size - 1 : 0, '\0');
  if (size > 1) WideCharToMultiByte(CP_ACP, 0, text, -1, narrow.data(), size, nullptr, nullptr);
  return narrow;
}

// The text of one value of a search column, or nothing for kinds that are
// not text.
bool ValueText(const ADSVALUE& value, std::string* text) {
  switch (value.dwType) {
    case ADSTYPE_DN_STRING:
    case ADSTYPE_CASE_EXACT_STRING:
    case ADSTYPE_CASE_IGNORE_STRING:
    case ADSTYPE_PRINTABLE_STRING:
    case ADSTYPE_NUMERIC_STRING:
      *text = Narrow(value.CaseIgnoreString);
      return true;
    default:
      return false;
  }
}

// Seconds a search may take, on the server and on the client; rows come in
// pages so that large directories are not cut at the server's size limit.
constexpr int kSearchSeconds = 30;
constexpr int kPageSize = 256;

class SystemSearch : public Search {
 public:
  explicit SystemSearch(ComPtr<IDirectorySearch> search) : search_(std::move(search)) {}

  Result Execute(const std::string& filter, const std::vector<std::string>& attributes,
                 std::vector<Row>* rows) override {
    SetPreferences();
    std::wstring wideFilter = Wide(filter);
    std::vector<std::wstring> names;
    for (const std::string& attribute : attributes) names.push_back(Wide(attribute));
    std::vector<LPWSTR> namePointers;
    for (std::wstring& name : names) namePointers.push_back(name.data());
    ADS_SEARCH_HANDLE handle = nullptr;
    HRESULT hr = search_->ExecuteSearch(wideFilter.data(), namePointers.data(),
                                        static_cast<DWORD>(namePointers.size()), &handle);
    if (FAILED(hr)) return hr;
    while ((hr = search_->GetNextRow(handle)) == S_OK) {
      Row row;
      for (size_t i = 0; i < names.size(); ++i) {
        ADS_SEARCH_COLUMN column;
        if (FAILED(search_->GetColumn(handle, namePointers[i], &column))) continue;
        Column values{attributes[i], {}};
        for (DWORD v = 0; v < column.dwNumValues; ++v) {
          std::string text;
          if (ValueText(column.pADsValues[v], &text)) values.values.push_back(std::move(text));
        }
        search_->FreeColumn(&column);
        row.columns.push_back(std::move(values));
      }
      rows->push_back(std::move(row));
    }
    search_->CloseSearchHandle(handle);
    return hr == S_ADS_NOMORE_ROWS ? S_OK : hr;
  }

 private:
  void SetPreferences() {
    ADS_SEARCHPREF_INFO preferences[4] = {};
    const struct {
      ADS_SEARCHPREF_ENUM preference;
      LONG value;
    } wanted[] = {{ADS_SEARCHPREF_SEARCH_SCOPE, ADS_SCOPE_SUBTREE},
                  {ADS_SEARCHPREF_PAGESIZE, kPageSize},
                  {ADS_SEARCHPREF_TIME_LIMIT, kSearchSeconds},
                  {ADS_SEARCHPREF_TIMEOUT, kSearchSeconds}};
    for (size_t i = 0; i < 4; ++i) {
      preferences[i].dwSearchPref = wanted[i].preference;
      preferences[i].vValue.dwType = ADSTYPE_INTEGER;
      preferences[i].vValue.Integer = wanted[i].value;
    }
    // A provider that does not know a preference still searches.
    search_->SetSearchPreference(preferences, 4);
  }

  ComPtr<IDirectorySearch> search_;
};

class SystemProvider : public Provider {
 public:
  bool Load() override { return Library() != nullptr; }

  Result OpenGlobalCatalog(std::unique_ptr<Search>* search, CatalogStep* failedStep) override {
    const ActiveDs* ads = Library();
    *failedStep = CatalogStep::Open;
    if (!ads) return kFail;
    ComPtr<IADsContainer> container;
    HRESULT hr = ads->openObject(L"GC:", nullptr, nullptr, ADS_SECURE_AUTHENTICATION,
                                 IID_IADsContainer, container.put_void());
    if (FAILED(hr)) return hr;
    *failedStep = CatalogStep::Enumerator;
    IEnumVARIANT* enumerator = nullptr;
    hr = ads->buildEnumerator(container.get(), &enumerator);
    if (FAILED(hr)) return hr;
    *failedStep = CatalogStep::Element;
    VARIANT element;
    VariantInit(&element);
    ULONG fetched = 0;
    hr = ads->enumerateNext(enumerator, 1, &element, &fetched);
    ads->freeEnumerator(enumerator);
    if (FAILED(hr)) return hr;
    if (hr != S_OK || fetched != 1) return kFail;
    ComPtr<IDirectorySearch> found;
    if (element.vt == VT_DISPATCH && element.pdispVal &&
        SUCCEEDED(element.pdispVal->QueryInterface(IID_IDirectorySearch, found.put_void())))
      search->reset(new SystemSearch(std::move(found)));
    else
      search->reset();  // no search interface: the holder stays empty
    VariantClear(&element);
    return S_OK;
  }

  Result ReadAttribute(const std::string& path, const std::string& name,
                       std::string* value) override {
    const ActiveDs* ads = Library();
    if (!ads) return kFail;
    ComPtr<IADs> object;
    HRESULT hr = ads->getObject(Wide(path).c_str(), IID_IADs, object.put_void());
    if (FAILED(hr)) return hr;
    UniqueBstr attribute(SysAllocString(Wide(name).c_str()));
    VARIANT read;
    VariantInit(&read);
    hr = object->Get(attribute.get(), &read);
    if (FAILED(hr)) return hr;
    if (read.vt == VT_BSTR)
      *value = Narrow(read.bstrVal);
    else
      hr = kPropertyNotFound;
    VariantClear(&read);
    return hr;
  }

  Result OpenSearch(const std::string& path, std::unique_ptr<Search>* search) override {
    const ActiveDs* ads = Library();
    if (!ads) return kFail;
    ComPtr<IDirectorySearch> found;
    HRESULT hr = ads->getObject(Wide(path).c_str(), IID_IDirectorySearch, found.put_void());
    if (FAILED(hr)) return hr;
    search->reset(new SystemSearch(std::move(found)));
    return S_OK;
  }

  Result ReplaceValues(const std::string& path, const std::string& attribute,
                       const std::vector<std::string>& values) override {
    const ActiveDs* ads = Library();
    if (!ads) return kFail;
    ComPtr<IDirectoryObject> object;
    HRESULT hr = ads->getObject(Wide(path).c_str(), IID_IDirectoryObject, object.put_void());
    if (FAILED(hr)) return hr;
    std::vector<std::wstring> wide;
    for (const std::string& value : values) wide.push_back(Wide(value));
    std::vector<ADSVALUE> adsValues(wide.size());
    for (size_t i = 0; i < wide.size(); ++i) {
      adsValues[i].dwType = ADSTYPE_CASE_IGNORE_STRING;
      adsValues[i].CaseIgnoreString = wide[i].data();
    }
    std::wstring name = Wide(attribute);
    ADS_ATTR_INFO info = {};
    info.pszAttrName = name.data();
    info.dwControlCode = ADS_ATTR_UPDATE;
    info.dwADsType = ADSTYPE_CASE_IGNORE_STRING;
    info.pADsValues = adsValues.data();
    info.dwNumValues = static_cast<DWORD>(adsValues.size());
    DWORD written = 0;
    hr = object->SetObjectAttributes(&info, 1, &written);
    if (SUCCEEDED(hr) && written != 1) hr = kFail;
    return hr;
  }
};

}  // namespace

Provider& SystemDirectory() {
  static SystemProvider provider;
  return provider;
}

Apartment::Apartment() {
  HRESULT hr = CoInitializeEx(nullptr, COINIT_APARTMENTTHREADED);
  entered_ = hr == S_OK || hr == S_FALSE;
}

Apartment::~Apartment() {
  if (entered_) CoUninitialize();
}

}  // namespace os::ads
