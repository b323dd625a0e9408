// A late-bound client compiled against the dispatch identifiers alone: it
// creates the registered server by its ProgID and never reads the type
// library or asks for a name.
#include <string>
#include <vector>

#include "tests/automation/automation_test_support.h"

namespace {

VARIANT Text(const std::string& text) {
  VARIANT value;
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = SysAllocString(vltest::Wide(text).c_str());
  return value;
}

// Invokes member id with arguments in their declared order; the result, or
// the error's code, in *result.
HRESULT Call(IDispatch* object, DISPID id, WORD flags, std::vector<VARIANT> arguments,
             VARIANT* result, SCODE* error = nullptr) {
  std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
  DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  EXCEPINFO exception = {};
  VariantInit(result);
  HRESULT hr = object->Invoke(id, IID_NULL, 0, flags, &parameters, result, &exception, nullptr);
  if (error) *error = exception.scode;
  SysFreeString(exception.bstrSource);
  SysFreeString(exception.bstrDescription);
  SysFreeString(exception.bstrHelpFile);
  for (VARIANT& argument : arguments) VariantClear(&argument);
  return hr;
}

using DispatchClientTest = vltest::JsmithTest;

TEST_F(DispatchClientTest, ReachesMembersByIdentifierAndMayUnloadOnceAllIsReleased) {
  tree_.PrepareSender("JSMITH");
  vltest::ComApartment apartment;
  CLSID clsid;
  ASSERT_EQ(CLSIDFromProgID(L"Vlapi32.VlAPI", &clsid), S_OK);
  IDispatch* api = nullptr;
  ASSERT_EQ(CoCreateInstance(clsid, nullptr, CLSCTX_INPROC_SERVER, IID_IDispatch,
                             reinterpret_cast<void**>(&api)),
            S_OK);

  VARIANT result;
  ASSERT_EQ(Call(api, 7, DISPATCH_METHOD,
                 {Text(tree_.Server()), Text(tree_.System()), Text(tree_.Users()),
                  Text(tree_.Request())},
                 &result),
            S_OK);  // SetVelomarDirs
  VARIANT no = {};
  V_VT(&no) = VT_BOOL;
  V_BOOL(&no) = VARIANT_FALSE;
  ASSERT_EQ(Call(api, 1, DISPATCH_METHOD, {Text("JSMITH"), no}, &result), S_OK);  // Logon
  ASSERT_EQ(V_VT(&result), VT_DISPATCH);
  IDispatch* session = V_DISPATCH(&result);
  ASSERT_EQ(Call(session, 1, DISPATCH_METHOD, {}, &result), S_OK);  // CreateNewMsg
  IDispatch* message = V_DISPATCH(&result);

  // GetVelomarServerInfoFromAD with four strings by reference: without a
  // directory service it fails with the directory's own code.
  BSTR dirs[4] = {};
  std::vector<VARIANT> arguments(5);
  arguments[0] = Text("FAXEAST");
  for (int i = 0; i < 4; ++i) {
    V_VT(&arguments[i + 1]) = VT_BSTR | VT_BYREF;
    V_BSTRREF(&arguments[i + 1]) = &dirs[i];
  }
  SCODE error = 0;
  HRESULT hr = Call(api, 16, DISPATCH_METHOD, arguments, &result, &error);
  EXPECT_EQ(hr, DISP_E_EXCEPTION);
  EXPECT_TRUE(error == static_cast<SCODE>(0x8004F72A) || error == static_cast<SCODE>(0x8004F72B))
      << std::hex << error;
  for (BSTR dir : dirs) SysFreeString(dir);

  // Every object let go, the server may be unloaded; not before.
  using CanUnloadNow = HRESULT(STDAPICALLTYPE*)();
  auto canUnloadNow = reinterpret_cast<CanUnloadNow>(reinterpret_cast<void*>(
      GetProcAddress(GetModuleHandleA("Vlapi64.dll"), "DllCanUnloadNow")));
  ASSERT_NE(canUnloadNow, nullptr);
  ASSERT_EQ(Call(message, 2, DISPATCH_PROPERTYGET, {}, &result), S_OK);  // Recipients
  IDispatch* recipients = V_DISPATCH(&result);
  ASSERT_EQ(Call(recipients, DISPID_NEWENUM, DISPATCH_PROPERTYGET, {}, &result), S_OK);
  IUnknown* enumerator = V_UNKNOWN(&result);
  recipients->Release();
  message->Release();
  session->Release();
  api->Release();
  EXPECT_EQ(canUnloadNow(), S_FALSE);
  enumerator->Release();
  EXPECT_EQ(canUnloadNow(), S_OK);
}

}  // namespace
