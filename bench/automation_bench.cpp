// Automation benchmark: the automation objects driven through IDispatch, as
// a late-bound client drives them, each against the flat function it wraps,
// in the same run:
//   - NewMessage.Send of a one-page message against VlxSendSubmitFile of the
//     same message (goal: at most 1.3 times);
//   - Outbox.GetMsgList of a 10,000-message outbox, then GetMsgInfo, Body and
//     Status of every item, against one VlxGetMsgListEx (goal: at most 2
//     times).
// The tree is left in DIRECTORY for the script listing (outbox_listing.vbs).
//
//   automation_bench [DIRECTORY] [LISTED]
#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "automation/vl_api.h"
#include "bench/bench_support.h"
#include "platform/os.h"
#include "vlapi.h"

namespace {

const int kRuns = 40;

[[noreturn]] void Fail(const char* what, long code) {
  std::fprintf(stderr, "%s failed: 0x%08lX\n", what, static_cast<unsigned long>(code));
  std::exit(1);
}

// Invokes a member by dispatch identifier; arguments in declared order.
VARIANT Invoke(IDispatch* object, DISPID id, WORD flags, std::vector<VARIANT> arguments = {}) {
  std::vector<VARIANT> reversed(arguments.rbegin(), arguments.rend());
  DISPPARAMS parameters = {reversed.data(), nullptr, static_cast<UINT>(reversed.size()), 0};
  DISPID named = DISPID_PROPERTYPUT;
  if (flags == DISPATCH_PROPERTYPUT) {
    parameters.rgdispidNamedArgs = &named;
    parameters.cNamedArgs = 1;
  }
  VARIANT result;
  VariantInit(&result);
  if (HRESULT hr = object->Invoke(id, IID_NULL, 0, flags, &parameters, &result, nullptr, nullptr))
    Fail("Invoke", hr);
  for (VARIANT& argument : arguments) VariantClear(&argument);
  return result;
}

// The object a call returned, its reference handed to the caller.
IDispatch* ObjectOf(VARIANT result) {
  if (V_VT(&result) != VT_DISPATCH) Fail("object result", V_VT(&result));
  return V_DISPATCH(&result);
}

VARIANT Text(const wchar_t* text) {
  VARIANT value;
  V_VT(&value) = VT_BSTR;
  V_BSTR(&value) = SysAllocString(text);
  return value;
}

void ClearOutbox(const std::string& root, const std::string& list) {
  for (const char* dir : {"USERS\\BENCH\\V-OUT\\", "REQUEST\\"}) {
    std::vector<std::string> names;
    os::ListFiles((root + dir + "*").c_str(), &names);
    for (const std::string& name : names)
      if (name != "VELOMAR.LOK") os::RemoveFile((root + dir + name).c_str());
  }
  bench::WriteText(root + "USERS\\BENCH\\V-OUT\\MSGDIR.CTL", list);
}

}  // namespace

int main(int argc, char** argv) {
  std::string temp;
  os::TempDirectory(&temp);
  const std::string root = argc > 1 ? std::string(argv[1]) + "\\" : temp + "vlautobench\\";
  const int listed = argc > 2 ? std::atoi(argv[2]) : 10000;
  bench::MakeTree(root);
  for (const char* ini : {"SYSTEM\\V-DB\\USER.INI", "USERS\\BENCH\\V-DB\\USER.INI"})
    bench::WriteText(root + ini, "[OPTIONS]\r\nFrom: Bench\r\n");
  bench::WriteText(root + "SUBMIT.TXT",
                   "%%[MESSAGE]\r\nSUBJECT: Benchmark\r\nCOMMENT: one page\r\nTo: Sales\r\n"
                   "Organisation: \r\nFax: 0123 456789\r\n\r\n%%[TEXT]\r\nA one-page text message.\r\n");
  os::OpenRequest lock;  // the server's lock, held here
  lock.read = lock.write = true;
  lock.disposition = os::Disposition::OpenAlways;
  lock.share = os::Share::ReadOnly;
  os::OpenedStream server = os::OpenStream((root + "REQUEST\\VELOMAR.LOK").c_str(), lock);
  CoInitialize(nullptr);
  IDispatch* api = nullptr;
  if (!server.file || vlauto::CreateVlApi(IID_IDispatch, reinterpret_cast<void**>(&api)) != S_OK)
    Fail("set-up", 0);
  const std::wstring wroot(root.begin(), root.end());
  Invoke(api, 7, DISPATCH_METHOD,
         {Text((wroot + L"SERVER").c_str()), Text((wroot + L"SYSTEM").c_str()),
          Text((wroot + L"USERS").c_str()), Text((wroot + L"REQUEST").c_str())});
  VARIANT no;
  V_VT(&no) = VT_BOOL;
  V_BOOL(&no) = VARIANT_FALSE;
  IDispatch* session = ObjectOf(Invoke(api, 1, DISPATCH_METHOD, {Text(L"BENCH"), no}));
  VLHANDLE handle = 0;
  if (VlxAPIInit(&handle, "BENCH", 0, nullptr) != VL_OK) Fail("VlxAPIInit", 0);

  // One message composed once, sent again each run.
  IDispatch* message = ObjectOf(Invoke(session, 1, DISPATCH_METHOD));
  Invoke(message, 17, DISPATCH_PROPERTYPUT, {Text(L"Benchmark")});
  Invoke(message, 8, DISPATCH_PROPERTYPUT, {Text(L"one page")});
  Invoke(message, 9, DISPATCH_PROPERTYPUT, {Text(L"A one-page text message.")});
  IDispatch* recipients = ObjectOf(Invoke(message, 2, DISPATCH_PROPERTYGET));
  Invoke(recipients, 2, DISPATCH_METHOD, {Text(L"Sales"), Text(L""), Text(L"0123 456789")});
  const std::string empty = bench::MessageList(0);
  const double send = bench::Median(
      kRuns, [&] { Invoke(message, 1, DISPATCH_METHOD); }, [&] { ClearOutbox(root, empty); });
  const std::string submit = root + "SUBMIT.TXT";
  const double flatSend = bench::Median(
      kRuns,
      [&] {
        char body[9];
        if (VLRESULT rc = VlxSendSubmitFile(handle, submit.c_str(), "VAPI", body))
          Fail("VlxSendSubmitFile", static_cast<uint16_t>(rc));
      },
      [&] { ClearOutbox(root, empty); });

  // The listing of a full outbox.
  ClearOutbox(root, bench::MessageList(listed));
  IDispatch* outbox = ObjectOf(Invoke(session, 9, DISPATCH_PROPERTYGET));
  const int listingRuns = 5;
  long items = 0;
  const double listing = bench::Median(listingRuns, [&] {
    IDispatch* messages = ObjectOf(Invoke(outbox, 1, DISPATCH_METHOD));
    VARIANT count = Invoke(messages, 1, DISPATCH_PROPERTYGET);
    items = V_I4(&count);
    for (long i = 0; i < items; ++i) {
      VARIANT index;
      V_VT(&index) = VT_I4;
      V_I4(&index) = i;
      IDispatch* item = ObjectOf(Invoke(messages, 0, DISPATCH_PROPERTYGET, {index}));
      IDispatch* info = ObjectOf(Invoke(item, 7, DISPATCH_METHOD));
      VARIANT body = Invoke(info, 2, DISPATCH_PROPERTYGET);
      Invoke(info, 1, DISPATCH_PROPERTYGET);
      VariantClear(&body);
      info->Release();
      item->Release();
    }
    messages->Release();
  });
  const double listOnly = bench::Median(listingRuns, [&] {
    ObjectOf(Invoke(outbox, 1, DISPATCH_METHOD))->Release();
  });
  std::vector<VLMSGINFOEX> records(listed);
  const double flatListing = bench::Median(listingRuns, [&] {
    int16_t count = 0;
    if (VLRESULT rc = VlxGetMsgListEx(handle, VL_DIR_OUT, static_cast<int16_t>(listed), &count,
                                      sizeof(VLMSGINFOEX), records.data()))
      Fail("VlxGetMsgListEx", static_cast<uint16_t>(rc));
  });

  std::printf("Automation objects through IDispatch against the flat functions; medians\n");
  std::printf("  NewMessage.Send           %7.2f ms   VlxSendSubmitFile %7.2f ms   ratio %.2f"
              " (goal <= 1.3)\n",
              send, flatSend, send / flatSend);
  std::printf("  Outbox listing of %ld      %7.1f ms   VlxGetMsgListEx   %7.1f ms   ratio %.2f"
              " (goal <= 2)\n",
              items, listing, flatListing, listing / flatListing);
  std::printf("    of which GetMsgList    %7.1f ms (it reads the list twice: count, then records)"
              "\n",
              listOnly);
  VlxAPIClosedown(handle);
  outbox->Release();
  recipients->Release();
  message->Release();
  session->Release();
  api->Release();
  return 0;
}
