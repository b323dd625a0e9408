// Server, ServerInfo and the device, link, coversheet and letterhead
// collections over a status file and running-server stand-in.
#include <windows.h>

#include <gtest/gtest.h>

#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

#include "automation/factories.h"
#include "platform/os.h"
#include "platform/win32/raii_win.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/user_fixture.h"

namespace {

using os::ComPtr;

const char kStatusLog[] =
    "[TOTALS]\r\nDeferred: 1\r\nWaitingResend: 2\r\nWaitingConvert: 3\r\nConverting: 4\r\n"
    "WaitingDevice: 5\r\nSending: 6\r\nScanning: 7\r\nRouterSub: 8\r\nRemoteAccept: 9\r\n"
    "[DEVICES]\r\nDevice: fax1\r\nStatusExt: Se\r\nUser: jsmith\r\nMessage: msg1\r\n"
    "TotalPages: 10\r\nCurrentPage: 3\r\nConnectFails: 1\r\nSendFails: 2\r\nSentOK: 40\r\n"
    "Device: fax2\r\nStatusExt: In\r\nSentOK: 7\r\n"
    "[LINKS]\r\nRemoteServer: paris\r\nRemoteLinkStatus: ONLINE\r\nLocalLinkStatus: online\r\n"
    "ConnectionStatus: OK\r\nSentOK: 11\r\nTimedOut: 12\r\nRejected: 13\r\nDeviceError: 14\r\n"
    "RemoteServerError: 15\r\nUnacknowledged: 16\r\nAcknowledged: 17\r\nReceived: 18\r\n";

// What a getter gives (a text as a wide string); S_OK expected, the output
// junk-filled first.
template <typename I, typename T>
T Read(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(T*)) {
  T value;
  std::memset(&value, 0x5A, sizeof value);
  EXPECT_EQ((object->*getter)(&value), S_OK);
  return value;
}
template <typename I>
std::wstring Read(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(BSTR*)) {
  BSTR text = nullptr;
  EXPECT_EQ((object->*getter)(&text), S_OK);
  os::UniqueBstr owned(text);
  return text ? text : L"";
}
template <typename I, typename T>
auto Reads(I* object, std::initializer_list<HRESULT (STDMETHODCALLTYPE I::*)(T*)> getters) {
  std::vector<decltype(Read(object, *getters.begin()))> values;
  for (auto getter : getters) values.push_back(Read(object, getter));
  return values;
}
template <typename I, typename T>
ComPtr<T> Take(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(T**)) {
  ComPtr<T> taken;
  EXPECT_EQ((object->*getter)(taken.put()), S_OK);
  return taken;
}
VARIANT Index(long i) {
  VARIANT v = {};
  V_VT(&v) = VT_I4;
  V_I4(&v) = i;
  return v;
}
template <typename Item, typename Collection>
ComPtr<Item> At(Collection* collection, long i) {
  ComPtr<Item> item;
  EXPECT_EQ(collection->get_Item(Index(i), item.put()), S_OK);
  return item;
}
// The source of the thread's error information, taking it.
std::wstring ErrorSource() {
  ComPtr<IErrorInfo> info;
  if (GetErrorInfo(0, info.put()) != S_OK) return L"(none)";
  return Read(info.get(), &IErrorInfo::GetSource);
}

class ServerObjectsTest : public vltest::JsmithTest {
 protected:
  void SetUp() override {
    JsmithTest::SetUp();
    CoInitialize(nullptr);
    vltest::WriteFile(tree_.System() + "V-DB\\STATUS.LOG", kStatusLog);
    WriteList("V-COVER\\", "FILE: FORMAL\r\nFILE: memo\r\n");
    WriteList("V-LETTER\\", "FILE: HEAD1\r\n");
    ASSERT_EQ(vlauto::CreateServer(handle_, false, server_.put()), S_OK);
  }
  void TearDown() override {
    server_.reset();
    CoUninitialize();
    JsmithTest::TearDown();
  }
  void WriteList(const std::string& directory, const std::string& files) const {
    vltest::MakeDirectories(tree_.System() + directory);
    vltest::WriteFile(tree_.System() + directory + "MSGDIR.CTL", "[DIRECTORY]\r\n" + files);
  }
  ComPtr<IVlServerInfo> Info() { return Take(server_.get(), &IVlServer::GetServerInfo); }

  vltest::ServerStandIn running_{tree_.Request()};
  ComPtr<IVlServer> server_;
};

TEST_F(ServerObjectsTest, ServerInfoGivesTotalsAndEveryRecordByZeroBasedIndex) {
  using S = IVlServerInfo;
  ComPtr<S> info = Info();
  EXPECT_EQ(Reads(info.get(),
                  {&S::get_MaxDevices, &S::get_MaxLinks, &S::get_Deferred, &S::get_WaitingResend,
                   &S::get_WaitingConvert, &S::get_WaitingDevice, &S::get_Sending, &S::get_Scanning,
                   &S::get_RouterSub, &S::get_RemoteAccept}),
            (std::vector<short>{2, 1, 1, 2, 3, 5, 6, 7, 8, 9}));
  ComPtr<IVlDevices> devices = Take(info.get(), &S::get_Devices);
  ComPtr<IVlLinks> links = Take(info.get(), &S::get_Links);
  ComPtr<ICoversheets> coversheets = Take(info.get(), &S::get_Coversheets);
  ComPtr<ILetterheads> letterheads = Take(info.get(), &S::get_Letterheads);
  info.reset();  // the collections keep the snapshot

  using D = IVlDevice;
  const struct {
    std::vector<std::wstring> texts;  // name, user, message body
    DevStatusEnum status;
    std::vector<short> counts;  // connect fails, send fails, sent, pages, current page
  } rows[] = {{{L"FAX1", L"JSMITH", L"MSG1"}, vlDevStatusSending, {1, 2, 40, 10, 3}},
              {{L"FAX2", L"", L""}, vlDevStatusIncomingCall, {0, 0, 7, 0, 0}}};
  ASSERT_EQ(Read(devices.get(), &IVlDevices::get_Count), 2);
  for (long i = 0; i < 2; ++i) {
    ComPtr<D> d = At<D>(devices.get(), i);
    EXPECT_EQ(Reads(d.get(), {&D::get_Name, &D::get_User, &D::get_MsgBody}), rows[i].texts);
    EXPECT_EQ(Read(d.get(), &D::get_Status), rows[i].status);
    EXPECT_EQ(Reads(d.get(), {&D::get_NumConnectFails, &D::get_NumSendFails, &D::get_NumSendOK,
                              &D::get_NumPages, &D::get_CurrentPage}),
              rows[i].counts);
    EXPECT_NE(At<D>(devices.get(), i).get(), d.get());  // each Item makes a new object
  }
  os::UniqueVariant abc;  // Item(Count), Item(-1) and Item("abc") designate nothing
  V_VT(abc.get()) = VT_BSTR;
  V_BSTR(abc.get()) = SysAllocString(L"abc");
  for (VARIANT index : {Index(2), Index(-1), *abc.get()}) {
    ComPtr<D> none;
    EXPECT_EQ(devices->get_Item(index, none.put()), E_INVALIDARG);
    EXPECT_EQ(ErrorSource(), L"IVlDevices::get_Item()");
  }

  using L = IVlLink;
  ASSERT_EQ(Read(links.get(), &IVlLinks::get_Count), 1);
  ComPtr<L> l = At<L>(links.get(), 0);
  EXPECT_EQ(Read(l.get(), &L::get_RemoteServer), L"PARIS");
  EXPECT_EQ(Reads(l.get(), {&L::get_RemoteStatus, &L::get_LocalStatus}),
            (std::vector<LinkStatusEnum>{vlLinkOnline, vlLinkOnline}));
  EXPECT_EQ(Reads(l.get(), {&L::get_ConnectionOK, &L::get_LinkActive}),
            (std::vector<VARIANT_BOOL>{VARIANT_TRUE, VARIANT_TRUE}));
  EXPECT_EQ(
      Reads(l.get(), {&L::get_NumRejected, &L::get_NumSentOK, &L::get_NumDeviceError,
                      &L::get_NumRemoteServerError, &L::get_NumTimedOut, &L::get_NumUnAcknowledged,
                      &L::get_NumAcknowledged, &L::get_NumReceived}),
      (std::vector<short>{13, 11, 14, 15, 12, 16, 17, 18}));

  EXPECT_EQ(Read(coversheets.get(), &ICoversheets::get_Count), 2);
  EXPECT_EQ(Read(At<ICoversheet>(coversheets.get(), 1).get(), &ICoversheet::get_Name), L"memo");
  EXPECT_EQ(Read(letterheads.get(), &ILetterheads::get_Count), 1);
  EXPECT_EQ(Read(At<ILetterhead>(letterheads.get(), 0).get(), &ILetterhead::get_Name), L"HEAD1");
}

TEST_F(ServerObjectsTest, EmptyCoversheetListGivesEmptyCollection) {
  WriteList("V-COVER\\", "");
  ComPtr<ICoversheets> coversheets = Take(Info().get(), &IVlServerInfo::get_Coversheets);
  EXPECT_EQ(Read(coversheets.get(), &ICoversheets::get_Count), 0);
  ComPtr<ICoversheet> none;
  EXPECT_EQ(coversheets->get_Item(Index(0), none.put()), E_INVALIDARG);
  EXPECT_EQ(ErrorSource(), L"ICoversheets::get_Item()");
}

TEST_F(ServerObjectsTest, FailedFirstStatusReadStillGivesTotalsButNoRecords) {
  // The first stream opened is the server's lock file, the second STATUS.LOG.
  os::fault::Inject(os::fault::Op::OpenStream, 2, os::kFileNotFound);
  ComPtr<IVlServerInfo> info = Info();
  ASSERT_TRUE(info);
  EXPECT_EQ(ErrorSource(), L"IVlServerInfo::Init()");  // the first read's failure
  EXPECT_EQ(Read(info.get(), &IVlServerInfo::get_Sending), 6);
  EXPECT_EQ(Read(info.get(), &IVlServerInfo::get_MaxDevices), 0);
  EXPECT_EQ(Read(Take(info.get(), &IVlServerInfo::get_Devices).get(), &IVlDevices::get_Count), 0);
}

TEST_F(ServerObjectsTest, CheckIsTrueWhileRunningAndFalseWithSOkWhenStopped) {
  EXPECT_EQ(Read(server_.get(), &IVlServer::Check), VARIANT_TRUE);
  running_.Stop();
  EXPECT_EQ(Read(server_.get(), &IVlServer::Check), VARIANT_FALSE);
}

HRESULT CheckServer(IVlServer* server) {
  VARIANT_BOOL running;
  return server->Check(&running);
}

TEST_F(ServerObjectsTest, DeniedAccessToTheRequestAreaRefusesEveryAction) {
  const std::pair<HRESULT (*)(IVlServer*), const wchar_t*> actions[] = {
      {[](IVlServer* s) { return s->Start(); }, L"IVlServer::Start()"},
      {CheckServer, L"IVlServer::Check()"},
      {[](IVlServer* s) { return s->Stop(); }, L"IVlServer::Stop()"},
      {[](IVlServer* s) { return s->Restart(); }, L"IVlServer::Restart()"}};
  os::fault::Inject(os::fault::Op::AccessCheck, 1, os::kAccessDenied, true);
  for (const auto& [action, source] : actions) {
    EXPECT_EQ(action(server_.get()), E_ACCESSDENIED);
    EXPECT_EQ(ErrorSource(), source);
  }
  EXPECT_EQ(vltest::ListDirectory(tree_.Request()).size(), 1u);  // the lock file alone
}

TEST_F(ServerObjectsTest, DevicesEnumeratorYieldsEveryDeviceThenSFalse) {
  ComPtr<IUnknown> unknown =
      Take(Take(Info().get(), &IVlServerInfo::get_Devices).get(), &IVlDevices::get__NewEnum);
  ComPtr<IEnumVARIANT> items;
  ASSERT_EQ(unknown->QueryInterface(IID_IEnumVARIANT, items.put_void()), S_OK);
  os::UniqueVariant got[3];
  VARIANT raw[3] = {};
  ULONG fetched = 99;
  EXPECT_EQ(items->Next(3, raw, &fetched), S_FALSE);
  ASSERT_EQ(fetched, 2u);
  std::vector<std::wstring> names;
  for (ULONG i = 0; i < fetched; ++i) {
    *got[i].put() = raw[i];
    ComPtr<IVlDevice> device;
    ASSERT_EQ(V_DISPATCH(&raw[i])->QueryInterface(__uuidof(IVlDevice), device.put_void()), S_OK);
    names.push_back(Read(device.get(), &IVlDevice::get_Name));
  }
  EXPECT_EQ(names, (std::vector<std::wstring>{L"FAX1", L"FAX2"}));
  EXPECT_EQ(items->Next(1, raw, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0u);
}

TEST_F(ServerObjectsTest, ServerInfoWithoutSessionIsInvalidArgument) {
  ComPtr<IVlServer> unbound;
  ComPtr<IVlServerInfo> info;
  ASSERT_EQ(vlauto::CreateServer(0, false, unbound.put()), S_OK);
  EXPECT_EQ(unbound->GetServerInfo(info.put()), E_INVALIDARG);
  EXPECT_FALSE(info);
  EXPECT_EQ(ErrorSource(), L"IVlServerInfo::Init()");
}

TEST_F(ServerObjectsTest, NullOutPointersGivePointerErrorWithoutRecord) {
  ComPtr<IVlServerInfo> info = Info();
  SetErrorInfo(0, nullptr);
  EXPECT_EQ(server_->Check(nullptr), E_POINTER);
  EXPECT_EQ(server_->GetServerInfo(nullptr), E_POINTER);
  EXPECT_EQ(info->get_Devices(nullptr), E_POINTER);
  EXPECT_EQ(info->get_Sending(nullptr), E_POINTER);
  EXPECT_EQ(ErrorSource(), L"(none)");
}

}  // namespace
