// Server, ServerInfo and the device, link, coversheet and letterhead
// collections over a status file and running-server stand-in.
#include <string>
#include <vector>

#include "automation/factories.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/automation/automation_test_support.h"

namespace {

using namespace vltest;

const char kStatusLog[] =
    "[TOTALS]\r\nDeferred: 1\r\nWaitingResend: 2\r\nWaitingConvert: 3\r\nConverting: 4\r\n"
    "WaitingDevice: 5\r\nSending: 6\r\nScanning: 7\r\nRouterSub: 8\r\nRemoteAccept: 9\r\n"
    "[DEVICES]\r\nDevice: fax1\r\nStatusExt: Se\r\nUser: jsmith\r\nMessage: msg1\r\n"
    "TotalPages: 10\r\nCurrentPage: 3\r\nConnectFails: 1\r\nSendFails: 2\r\nSentOK: 40\r\n"
    "Device: fax2\r\nStatusExt: In\r\nSentOK: 7\r\n"
    "[LINKS]\r\nRemoteServer: paris\r\nRemoteLinkStatus: ONLINE\r\nLocalLinkStatus: online\r\n"
    "ConnectionStatus: OK\r\nSentOK: 11\r\nTimedOut: 12\r\nRejected: 13\r\nDeviceError: 14\r\n"
    "RemoteServerError: 15\r\nUnacknowledged: 16\r\nAcknowledged: 17\r\nReceived: 18\r\n";

class ServerObjectsTest : public AutomationTest {
 protected:
  void SetUp() override {
    AutomationTest::SetUp();
    WriteFile(tree_.System() + "V-DB\\STATUS.LOG", kStatusLog);
    WriteList("V-COVER\\", "FILE: FORMAL\r\nFILE: memo\r\n");
    WriteList("V-LETTER\\", "FILE: HEAD1\r\n");
    ASSERT_EQ(vlauto::CreateServer(handle_, false, server_.put()), S_OK);
  }
  void WriteList(const std::string& directory, const std::string& files) const {
    MakeDirectories(tree_.System() + directory);
    WriteFile(tree_.System() + directory + "MSGDIR.CTL", "[DIRECTORY]\r\n" + files);
  }
  ComPtr<IVlServerInfo> Info() { return Get(server_.get(), &IVlServer::GetServerInfo); }

  ComPtr<IVlServer> server_;
};

// The collections' For Each and names, and Item past the last, are followed
// by the script clients.
TEST_F(ServerObjectsTest, ServerInfoGivesTotalsAndEveryRecordByZeroBasedIndex) {
  using S = IVlServerInfo;
  ComPtr<S> info = Info();
  EXPECT_EQ(Gets(info.get(),
                 {&S::get_MaxDevices, &S::get_MaxLinks, &S::get_Deferred, &S::get_WaitingResend,
                  &S::get_WaitingConvert, &S::get_WaitingDevice, &S::get_Sending, &S::get_Scanning,
                  &S::get_RouterSub, &S::get_RemoteAccept}),
            (std::vector<short>{2, 1, 1, 2, 3, 5, 6, 7, 8, 9}));
  ComPtr<IVlDevices> devices = Get(info.get(), &S::get_Devices);
  ComPtr<IVlLinks> links = Get(info.get(), &S::get_Links);
  ComPtr<ICoversheets> coversheets = Get(info.get(), &S::get_Coversheets);
  info.reset();  // the collections keep the snapshot

  using D = IVlDevice;
  ASSERT_EQ(Get(devices.get(), &IVlDevices::get_Count), 2);
  ComPtr<D> d = At<D>(devices.get(), 0);
  EXPECT_EQ(Gets(d.get(), {&D::get_Name, &D::get_User, &D::get_MsgBody}),
            (Texts{L"FAX1", L"JSMITH", L"MSG1"}));
  EXPECT_EQ(Get(d.get(), &D::get_Status), vlDevStatusSending);
  EXPECT_EQ(Gets(d.get(), {&D::get_NumConnectFails, &D::get_NumSendFails, &D::get_NumSendOK,
                           &D::get_NumPages, &D::get_CurrentPage}),
            (std::vector<short>{1, 2, 40, 10, 3}));
  d = At<D>(devices.get(), 1);
  EXPECT_EQ(Get(d.get(), &D::get_Name), L"FAX2");
  EXPECT_EQ(Get(d.get(), &D::get_Status), vlDevStatusIncomingCall);

  using L = IVlLink;
  ASSERT_EQ(Get(links.get(), &IVlLinks::get_Count), 1);
  ComPtr<L> l = At<L>(links.get(), 0);
  EXPECT_EQ(Get(l.get(), &L::get_RemoteServer), L"PARIS");
  EXPECT_EQ(Gets(l.get(), {&L::get_RemoteStatus, &L::get_LocalStatus}),
            (std::vector<LinkStatusEnum>{vlLinkOnline, vlLinkOnline}));
  EXPECT_EQ(Gets(l.get(), {&L::get_ConnectionOK, &L::get_LinkActive}),
            (std::vector<VARIANT_BOOL>{VARIANT_TRUE, VARIANT_TRUE}));
  EXPECT_EQ(
      Gets(l.get(), {&L::get_NumRejected, &L::get_NumSentOK, &L::get_NumDeviceError,
                     &L::get_NumRemoteServerError, &L::get_NumTimedOut, &L::get_NumUnAcknowledged,
                     &L::get_NumAcknowledged, &L::get_NumReceived}),
      (std::vector<short>{13, 11, 14, 15, 12, 16, 17, 18}));
  // A new ServerInfo reads again; the names are followed by the script clients.
  WriteList("V-COVER\\", "");
  coversheets = Get(Info().get(), &S::get_Coversheets);
  EXPECT_EQ(Get(coversheets.get(), &ICoversheets::get_Count), 0);
}

TEST_F(ServerObjectsTest, FailedStatusReadsGiveTotalsButNoRecordsAndNoSessionNoInfo) {
  // The first stream opened is the server's lock file, the second STATUS.LOG.
  os::fault::Inject(os::fault::Op::OpenStream, 2, os::kFileNotFound);
  ComPtr<IVlServerInfo> info = Info();
  ASSERT_TRUE(info);
  EXPECT_EQ(ErrorSource(), L"IVlServerInfo::Init()");  // the first read's failure
  EXPECT_EQ(Get(info.get(), &IVlServerInfo::get_Sending), 6);
  EXPECT_EQ(Get(info.get(), &IVlServerInfo::get_MaxDevices), 0);
  EXPECT_EQ(Get(Get(info.get(), &IVlServerInfo::get_Devices).get(), &IVlDevices::get_Count), 0);

  ASSERT_EQ(vlauto::CreateServer(0, false, server_.put()), S_OK);
  EXPECT_EQ(server_->GetServerInfo(info.put()), E_INVALIDARG);
  EXPECT_FALSE(info);
  EXPECT_EQ(ErrorSource(), L"IVlServerInfo::Init()");
}

TEST_F(ServerObjectsTest, DeniedAccessToTheRequestAreaRefusesEveryAction) {
  const std::pair<HRESULT (*)(IVlServer*), const wchar_t*> actions[] = {
      {[](IVlServer* s) { return s->Start(); }, L"IVlServer::Start()"},
      {[](IVlServer* s) { VARIANT_BOOL on; return s->Check(&on); }, L"IVlServer::Check()"},
      {[](IVlServer* s) { return s->Stop(); }, L"IVlServer::Stop()"},
      {[](IVlServer* s) { return s->Restart(); }, L"IVlServer::Restart()"}};
  os::fault::Inject(os::fault::Op::AccessCheck, 1, os::kAccessDenied, true);
  for (const auto& [action, source] : actions) {
    EXPECT_EQ(action(server_.get()), E_ACCESSDENIED);
    EXPECT_EQ(ErrorSource(), source);
  }
  EXPECT_EQ(ListDirectory(tree_.Request()).size(), 1u);  // the lock file alone
}

// The order of the items is followed by the script clients' For Each over
// collections of the same template.
TEST_F(ServerObjectsTest, DevicesEnumeratorGivesThePartialCountWithSFalse) {
  ComPtr<IUnknown> unknown =
      Get(Get(Info().get(), &IVlServerInfo::get_Devices).get(), &IVlDevices::get__NewEnum);
  ComPtr<IEnumVARIANT> items;
  ASSERT_EQ(unknown->QueryInterface(IID_IEnumVARIANT, items.put_void()), S_OK);
  os::UniqueVariant got[3];
  VARIANT raw[3] = {};
  ULONG fetched = 99;
  EXPECT_EQ(items->Next(3, raw, &fetched), S_FALSE);
  for (ULONG i = 0; i < fetched && i < 3; ++i) *got[i].put() = raw[i];
  EXPECT_EQ(fetched, 2u);
  EXPECT_EQ(V_VT(got[1].get()), VT_DISPATCH);
  EXPECT_EQ(items->Next(1, raw, &fetched), S_FALSE);
  EXPECT_EQ(fetched, 0u);
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
