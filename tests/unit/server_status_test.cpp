// Reading the server's totals, devices, links, coversheets and letterheads.
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <string>

#include "tests/support/server_stand_in.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Ints = std::vector<int>;
using Names = std::vector<std::string>;

const char* const kStatusLog =
    "[TOTALS]\r\nDeferred: 1\r\nWaitingResend: 2\r\nWaitingConvert: 3\r\nConverting: 4\r\n"
    "WaitingDevice: 5\r\nSending: 6\r\nScanning: 7\r\nRouterSub: 8\r\nRemoteAccept: 9\r\n"
    "[DEVICES]\r\nDevice: fax1\r\nStatusExt: Se\r\nUser: jsmith\r\nMessage: msg1\r\n"
    "TotalPages: 10\r\nCurrentPage: 3\r\nConnectFails: 1\r\nSendFails: 2\r\nSentOK: 40\r\n"
    "Device: fax2\r\n[LINKS]\r\nRemoteServer: paris\r\nRemoteLinkStatus: ONLINE\r\n"
    "LocalLinkStatus: ONLINE\r\nConnectionStatus: OK\r\nSentOK: 5\r\nReceived: 6\r\n";

class ServerStatusTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JOHN");
    tree_.UseAsRelativeAreas();
    handle_ = vltest::LogOn("JOHN");
    vltest::MakeDirectories(tree_.System() + "V-COVER\\");
    WriteStatus(kStatusLog);
    Reported::Clear();
    std::memset(&totals_, 0x5A, sizeof totals_);
    std::memset(devices_, 0x5A, sizeof devices_);
    std::memset(links_, 0x5A, sizeof links_);
    std::memset(names_, 0x5A, sizeof names_);
    block_ = {18, &totals_, 3, &deviceCount_, 44, devices_, 2, &linkCount_, 38, links_,
              2, &coverCount_, 10, names_, 0, nullptr, 10, nullptr};
  }
  void TearDown() override {
    server_.Stop();
    VlxAPIClosedown(handle_);
  }
  void WriteStatus(const std::string& text) {
    vltest::WriteFile(tree_.System() + "V-DB\\STATUS.LOG", text);
  }
  VLRESULT Get(int16_t size = 144) { return VlxGetServerStatusEx(handle_, size, &block_); }

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  vltest::ServerStandIn server_{tree_.Request()};
  VLHANDLE handle_ = 0;
  VLSERVERSTATUSEX block_;
  VLSERVERINFOEX totals_;
  VLDEVICEINFOEX devices_[3];
  VLLINKINFOEX links_[2];
  char names_[20];
  uint16_t deviceCount_ = 0xAAAA, linkCount_ = 0xAAAA, coverCount_ = 0xAAAA;
};

TEST_F(ServerStatusTest, FillsTotalsDevicesLinksAndCoversheets) {
  vltest::WriteFile(
      tree_.System() + "V-COVER\\MSGDIR.CTL",
      "[DIRECTORY]\r\nFILE: FORMAL01\r\nFILE:\r\nFILE: LONGNAME12\r\nFILE: THIRD\r\n");
  ASSERT_EQ(Get(), VL_OK) << Reported::Last();
  const uint16_t expected[] = {1, 2, 3, 4, 5, 6, 7, 8, 9};
  EXPECT_EQ(std::memcmp(&totals_, expected, sizeof expected), 0);
  const VLDEVICEINFOEX& d = devices_[0];
  EXPECT_EQ((Ints{deviceCount_, d.Status, d.TotalPages, d.CurrentPage, d.ConnectFails, d.SendFails,
                  d.SentOK, devices_[1].SentOK}),
            (Ints{2, 7, 10, 3, 1, 2, 40, 0}));
  const VLLINKINFOEX& l = links_[0];
  EXPECT_EQ((Ints{linkCount_, l.LinkActive, l.SentOK, l.Received, coverCount_}),
            (Ints{1, 1, 5, 6, 3}));
  EXPECT_EQ((Names{d.Name, d.User, d.Message, devices_[1].Name, l.RemoteServer, names_,
                   names_ + 10}),
            (Names{"FAX1", "JSMITH", "MSG1", "FAX2", "PARIS", "FORMAL01", "LONGNAME"}));
}

TEST_F(ServerStatusTest, BadSizesAreRefusedInOrder) {
  const struct { int16_t blockSize, totals; uint16_t device, link; const char* text; } cases[] = {
      {100, 18, 44, 38, "VLSERVERSTATUSEX size invalid"},
      {144, 14, 44, 38, "VLSERVERINFOEX size invalid"},
      {144, 18, 43, 0, "VLDEVICEINFOEX size invalid"},
      {80, 18, 44, 37, "VLLINKINFOEX size invalid"},
  };
  for (const auto& c : cases) {
    block_.ServerInfoSize = c.totals;
    block_.DeviceInfoSize = c.device;
    block_.LinkInfoSize = c.link;
    EXPECT_EQ(Get(c.blockSize), VL_E_INVALID_PARAM) << c.text;
    EXPECT_EQ(Reported::Last(), c.text);
  }
  EXPECT_EQ(VlxGetServerStatusEx(handle_, 144, nullptr), VL_E_INVALID_PARAM);
  block_ = {18, nullptr, 3, &deviceCount_, 44, devices_, 0, nullptr, 38, nullptr};
  EXPECT_EQ(Get(), VL_E_INVALID_PARAM);
}

TEST_F(ServerStatusTest, CountsEveryDeviceButStoresMaxDevices) {
  WriteStatus(
      "[DEVICES]\r\nDevice: a\r\nStatusExt: bu\r\nDevice: b\r\nStatusExt: Se\r\n"
      "Device: c\r\nStatusExt: XY\r\nDevice: d\r\nDevice: averyverylongname\r\n");
  ASSERT_EQ(Get(80), VL_OK);
  EXPECT_EQ(deviceCount_, 5);
  EXPECT_EQ((Names{devices_[0].Name, devices_[1].Name, devices_[2].Name}), (Names{"A", "B", "C"}));
  EXPECT_EQ((Ints{devices_[0].Status, devices_[1].Status, devices_[2].Status}), (Ints{0, 7, 0}));
  // A long line is cut; binary bytes, an empty count and one past 16 bits do no harm.
  block_.MaxDevices = 1;
  const char tail[] =
      "\r\nUser: \x01\xff\x7f\0\0junk\r\n[TOTALS]\r\nSending:\r\nDeferred: 99999\r\n";
  WriteStatus("[DEVICES]\r\nDevice: " + std::string(600, 'x') + std::string(tail, sizeof tail - 1));
  ASSERT_EQ(Get(80), VL_OK);
  EXPECT_EQ(std::string(devices_[0].Name), std::string(12, 'X'));
  EXPECT_EQ((Ints{totals_.Sending, totals_.Deferred}), (Ints{0, static_cast<uint16_t>(99999)}));
  // Without a count cell the library allocates one, which the caller owns.
  block_.DeviceCount = nullptr;
  ASSERT_EQ(Get(80), VL_OK);
  ASSERT_NE(block_.DeviceCount, nullptr);
  EXPECT_EQ(*block_.DeviceCount, 1);
  std::free(block_.DeviceCount);
}

TEST_F(ServerStatusTest, LinkStatesFollowTheirWords) {
  const std::string online = "RemoteLinkStatus: ONLINE\r\n", connected = "ConnectionStatus: OK\r\n";
  const struct { std::string lines; Ints states; } cases[] = {  // remote, local, connection, active
      {online + "LocalLinkStatus: OFFLINE\r\nConnectionStatus: on\r\n", {1, 2, 1, 0}},
      {online + "LocalLinkStatus: ONLINE\r\n", {1, 1, -1, -1}},
      {"RemoteLinkStatus: LINKUNKNOWN\r\nLocalLinkStatus: BOGUS\r\nConnectionStatus: x\r\n",
       {6, 0, 0, -1}},
      {connected + online + "LocalLinkStatus: online\r\nLocalLinkStatus: OFFLINE\r\n",
       {1, 2, 1, 1}},
  };
  for (const auto& c : cases) {
    WriteStatus("[LINKS]\r\nRemoteServer: r\r\n" + c.lines);
    ASSERT_EQ(Get(80), VL_OK);
    const VLLINKINFOEX& l = links_[0];
    EXPECT_EQ((Ints{l.RemoteLinkStatus, l.LocalLinkStatus, l.ConnectionStatus, l.LinkActive}),
              c.states) << c.lines;
  }
}

TEST_F(ServerStatusTest, MissingFilesAndStoppedServer) {
  EXPECT_EQ(Get(), VL_E_FILE_NOT_FOUND);
  EXPECT_EQ(Reported::Last(), "Coversheet list file SYSTEM\\V-COVER\\MSGDIR.CTL not found");
  vltest::RemoveTree(tree_.System() + "V-DB\\STATUS.LOG");
  EXPECT_EQ(Get(), VL_E_FILE_NOT_FOUND);
  EXPECT_EQ(Reported::Last(), "Statistics file SYSTEM\\V-DB\\STATUS.LOG not found");
  server_.Stop();
  EXPECT_EQ(Get(), VL_E_SERVER_NOT_RUNNING);
}

TEST_F(ServerStatusTest, OlderFormCopiesSevenTotalsAndDevices) {
  VLSERVERINFO info;
  std::memset(&info, 0x5A, sizeof info);
  VLDEVICEINFO devices[1];
  std::memset(devices, 0x5A, sizeof devices);
  int16_t count = -1;
  EXPECT_EQ(VlxGetServerStatus(handle_, 18, &info, 1, &count, nullptr, devices),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "VLSERVERINFO size invalid");
  ASSERT_EQ(VlxGetServerStatus(handle_, 14, &info, 1, &count, nullptr, devices), VL_OK);
  const uint16_t expected[] = {1, 2, 3, 4, 5, 6, 7};
  EXPECT_EQ(std::memcmp(&info, expected, sizeof expected), 0);
  EXPECT_EQ((Ints{count, devices[0].SentOK}), (Ints{2, 40}));
  EXPECT_EQ((Names{devices[0].Name, devices[0].User}), (Names{"FAX1", "JSMITH"}));
  EXPECT_EQ(VlxGetServerStatus(handle_, 14, &info, 1, nullptr, nullptr, devices), VL_OK);
}

}  // namespace
