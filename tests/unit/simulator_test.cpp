// The fax server simulator driven step by step in-process: what a client
// of the library sees of each request it hands over, and the simulator's
// changes to the shared message files.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "api/process_state.h"
#include "api/vlapi_internal.h"
#include "msg/addressees.h"
#include "platform/os.h"
#include "tests/support/message_files.h"
#include "tests/support/test_support.h"
#include "tools/vlsim/message_files.h"
#include "tools/vlsim/server_lock.h"
#include "tools/vlsim/simulator.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Ints = std::vector<int>;
using Names = std::vector<std::string>;

class SimulatorTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JSMITH");
    tree_.UseAsRelativeAreas();
    tree_.PrepareSender("JSMITH");
    vltest::MakeDirectories(tree_.System() + "V-COVER");
    vltest::MakeDirectories(tree_.System() + "V-LETTER");
    vltest::WriteFile(tree_.System() + "V-COVER\\STANDARD.CVR", "cover");
    vltest::WriteFile(tree_.System() + "V-COVER\\URGENTLONGNAME.CVR", "cover");
    vltest::WriteFile(In() + "MSGDIR.CTL", vltest::ListHeader(false));
#ifdef _WIN32
    // Held by this process: the library sees the server running all the same.
    ASSERT_EQ(lock_.Acquire(), 0);
#else
    vl::Process().checkServerDisabled = 1;  // sharing modes are not enforced here
#endif
    handle_ = vltest::LogOn("JSMITH");
    Reported::Clear();
  }
  void TearDown() override {
    vl::Process().checkServerDisabled = 0;
    VlxAPIClosedown(handle_);
  }

  std::string Out() const { return tree_.Users() + "JSMITH\\V-OUT\\"; }
  std::string In() const { return tree_.Users() + "JSMITH\\V-IN\\"; }

  // Submits a fax to the given numbers; returns its body name.
  std::string Submit(const std::vector<std::string>& numbers, const char* options = "") {
    std::string text = std::string("%%[MESSAGE]\r\nSubject: Figures\r\n") + options;
    for (size_t i = 0; i < numbers.size(); ++i)
      text += "To: Person " + std::to_string(i + 1) + "\r\nFax: " + numbers[i] + "\r\n";
    text += "%%[TEXT]\r\nQ1 1200\r\n";
    vltest::WriteFile(scratch_.Path("SUBMIT.TXT"), text);
    char body[9] = {};
    EXPECT_EQ(VlxSendSubmitFile(handle_, scratch_.Path("SUBMIT.TXT").c_str(), "FAXA", body),
              VL_OK)
        << Reported::Last();
    return body;
  }
  VLMSGINFOEX Info(const std::string& body, uint16_t directory = 1) {
    VLMSGINFOEX info{};
    EXPECT_EQ(VlxGetMsgInfoEx(handle_, directory, body.c_str(), sizeof info, &info), VL_OK);
    return info;
  }
  std::vector<VLMSGHISTORYEX> History(const std::string& body) {
    std::vector<VLMSGHISTORYEX> events(16);
    uint16_t count = 0;
    EXPECT_EQ(VlxGetMsgHistoryEx(handle_, 1, body.c_str(), 0, 1, 16, &count,
                                 sizeof(VLMSGHISTORYEX), events.data()),
              VL_OK);
    events.resize(count);
    return events;
  }
  Ints AddresseeStates(const std::string& body) {
    std::vector<MsgAddresseeRecord> records(8);
    uint16_t count = 0;
    EXPECT_EQ(VlxGetMsgAddrs(handle_, 1, body.c_str(), 8, &count, records.data()), VL_OK);
    Ints states;
    for (uint16_t i = 0; i < count; ++i) states.push_back(records[i].status);
    return states;
  }
  // The request area's files but the server's lock file.
  Names Requests() {
    Names names = vltest::ListDirectory(tree_.Request());
    std::erase(names, "VELOMAR.LOK");
    return names;
  }

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  vlsim::Settings settings_{{"USERS\\", "REQUEST\\", "SYSTEM\\", "SERVER\\"}, 1, 0, 1,
                            {"0999"}, {"PARIS"}, ""};
  // The message events it logs are vlfax_test's, which reads them back.
  vlsim::Simulator sim_{settings_, [](const vlsim::LogEntry&) {}};
  vlsim::ServerLock lock_{"REQUEST\\"};
  VLHANDLE handle_ = 0;
};

// A failing number does not stop the others: the message ends failed once
// every addressee has been tried.
TEST_F(SimulatorTest, AFaxGoesThroughWaitingAndSendingToItsFinalStateWithItsHistory) {
  const std::string body = Submit({"0999", "0102"});
  EXPECT_EQ(sim_.TakeRequests(), 1);
  VLMSGINFOEX info = Info(body);
  EXPECT_GE(info.AcceptedYear, 2026);
  // Waiting; the server leaves the user's status alone.
  EXPECT_EQ((Ints{info.Status, info.UserStatus}), (Ints{4, 2}));

  // One step takes the device and tries the first addressee, the next
  // finishes it and tries the second, the last completes the message.
  for (int status : {8, 8, 31}) {
    EXPECT_EQ(sim_.Step(false), 1);
    EXPECT_EQ(Info(body).Status, status);
  }
  EXPECT_TRUE(sim_.Idle());

  // Each addressee is tried (event 7) over FAX-ANY (route 100), then fails
  // (4) with the simulated error and no pages, or is sent (1) with one page
  // in 10 seconds and one more for each addressee before.
  std::vector<VLMSGHISTORYEX> events = History(body);
  ASSERT_EQ(events.size(), 4u);
  for (int i = 0; i < 4; ++i) {
    const VLMSGHISTORYEX& e = events[i];
    const bool first = i < 2;
    EXPECT_EQ((Ints{e.Event, e.Addressee, e.Route}),
              (Ints{i % 2 ? (first ? 4 : 1) : 7, i / 2 + 1, 100})) << i;
    EXPECT_EQ((Names{e.RouteParams, e.Device, e.AddresseeText}),
              (Names{first ? "0999" : "0102", "FAX1", first ? "Person 1" : "Person 2"})) << i;
    EXPECT_GE(e.Year, 2026) << i;
  }
  EXPECT_EQ((Ints{events[1].ErrorCode, events[1].Pages, events[3].ErrorCode, events[3].Pages,
                  events[3].ConnectTime}),
            (Ints{0x31, 0, 0, 1, 11}));
  EXPECT_EQ(AddresseeStates(body), (Ints{31, 30}));

  // The message ID the simulator keeps in the history opens the Ex forms' check.
  const std::string control = vltest::ReadFile(Out() + body + ".CTL");
  const size_t id = control.find("MessageID: ");
  ASSERT_NE(id, std::string::npos);
  const std::string messageId = control.substr(id + 11, control.find('\r', id) - id - 11);
  EXPECT_EQ(VlxAbortMsgEx(handle_, 1, body.c_str(), messageId.c_str()), VL_OK);
  EXPECT_NE(control.find("Status: Fa\r\n"), std::string::npos);
  EXPECT_NE(control.find("Accepted: 2"), std::string::npos);
  // Once complete, the client may remove it.
  EXPECT_EQ(VlxDeleteMsg(handle_, 1, body.c_str(), 1), VL_OK);
  EXPECT_EQ(vltest::ListDirectory(Out()), Names{"MSGDIR.CTL"});
}

TEST_F(SimulatorTest, HoldReleaseRushAndAbortActOnQueuedMessages) {
  const std::string held = Submit({"0101"}, "Hold: yes\r\n");
  const std::string first = Submit({"0102"});
  const std::string second = Submit({"0103"});
  sim_.TakeRequests();
  EXPECT_EQ(Info(held).Status, 2);
  EXPECT_EQ(AddresseeStates(held), Ints{2});

  // With one device, the rushed message is sent first.
  EXPECT_EQ(VlxRushMsgEx(handle_, 1, second.c_str(), nullptr), VL_OK);
  sim_.TakeRequests();
  sim_.Step(false);
  EXPECT_EQ((Ints{Info(second).Status, Info(first).Status}), (Ints{8, 4}));

  EXPECT_EQ(VlxAbortMsg(handle_, 1, first.c_str()), VL_OK);
  EXPECT_EQ(VlxReleaseMsg(handle_, 1, held.c_str()), VL_OK);
  sim_.TakeRequests();
  EXPECT_EQ(Info(first).Status, 31);
  EXPECT_EQ(AddresseeStates(first), Ints{10});
  EXPECT_EQ(History(first).at(0).ErrorCode, 0x0A);
  EXPECT_EQ(Info(held).Status, 4);
  EXPECT_NE(vltest::ReadFile(Out() + held + ".CTL").find("Hold: NO\r\n"), std::string::npos);

  // Requests taken together are carried out in the order they were written:
  // the release finds the message waiting already, the hold holds it again.
  EXPECT_EQ(VlxReleaseMsg(handle_, 1, held.c_str()), VL_OK);
  EXPECT_EQ(VlxHoldMsg(handle_, 1, held.c_str()), VL_OK);
  EXPECT_EQ(sim_.TakeRequests(), 2);
  while (sim_.Step(false) > 0) {
  }
  EXPECT_EQ((Ints{Info(second).Status, Info(held).Status}), (Ints{30, 2}));
  EXPECT_TRUE(sim_.Idle());
  // An abort once the message is complete is too late: it stays sent.
  EXPECT_EQ(VlxAbortMsg(handle_, 1, second.c_str()), VL_OK);
  EXPECT_EQ(sim_.TakeRequests(), 1);
  EXPECT_EQ(Info(second).Status, 30);
}

TEST_F(SimulatorTest, StatusLogAndListsReadBackThroughTheServerStatus) {
  const std::string body = Submit({"0101"});
  Submit({"0102"});
  sim_.TakeRequests();
  sim_.Step(false);
  ASSERT_EQ(sim_.WriteStatus(), 0);
  ASSERT_EQ(sim_.WriteLists(), 0);

  VLSERVERINFOEX totals{};
  VLDEVICEINFOEX devices[2]{};
  VLLINKINFOEX links[2]{};
  char covers[4][10] = {}, letters[4][10];
  uint16_t deviceCount = 0, linkCount = 0, coverCount = 0, letterCount = 9;
  VLSERVERSTATUSEX block{18, &totals, 2, &deviceCount, 44, devices, 2, &linkCount,
                         38, links, 4, &coverCount, 10, covers[0], 4, &letterCount,
                         10, letters[0]};
  ASSERT_EQ(VlxGetServerStatusEx(handle_, 144, &block), VL_OK) << Reported::Last();
  EXPECT_EQ((Ints{totals.Sending, totals.WaitingDevice, deviceCount, devices[0].Status, linkCount,
                  links[0].LinkActive, coverCount, letterCount}),
            (Ints{1, 1, 1, 7, 1, 1, 2, 0}));
  EXPECT_EQ((Names{devices[0].Name, devices[0].User, devices[0].Message, links[0].RemoteServer,
                   covers[0], covers[1]}),
            (Names{"FAX1", "JSMITH", body, "PARIS", "STANDARD", "URGENTLO"}));
}

TEST_F(SimulatorTest, ReceivedFaxesAreListedAndAnAbortRemovesThem) {
  const std::string body = sim_.Deliver("jsmith", "Order 17");
  ASSERT_FALSE(body.empty());
  VLMSGINFOEX info = Info(body, 2);
  EXPECT_EQ((Ints{info.Status, info.UserStatus}), (Ints{30, 2}));
  EXPECT_STREQ(info.Subject, "Order 17");
  EXPECT_TRUE(vltest::FileExists(In() + body + ".TXT"));

  EXPECT_EQ(VlxAbortMsg(handle_, 2, body.c_str()), VL_OK);
  sim_.TakeRequests();
  EXPECT_EQ(vltest::ReadFile(In() + "MSGDIR.CTL"), vltest::ListHeader(false));
  EXPECT_EQ(vltest::ListDirectory(In()), Names{"MSGDIR.CTL"});
}

TEST_F(SimulatorTest, MalformedRequestsAreTakenAndIgnored) {
  const std::string body = Submit({"0101"});
  for (const std::string& name : Requests()) os::RemoveFile((tree_.Request() + name).c_str());
  const std::string request = "[VELOMAR]\r\nType: Request\r\n\r\n[REQUEST]\r\nServer: QUEUEMAN\r\n";
  const std::string cases[] = {
      std::string("\0\xff\x01[REQUEST\r\n\0", 10),
      request + "Type: SEND\r\n",
      request + "Type: SEND\r\nUser: ..\\..\r\nFile: " + body + ".CTL\r\n",
      request + "Type: SEND\r\nUser: JSMITH\r\nFile: NOSUCH.CTL\r\n",
      request + "Type: HOLD\r\nUser: JSMITH\r\nFile: " + body + ".CTL\r\nDirectory: V-OUT\r\n",
      request + "Type: DELETE\r\nUser: JSMITH\r\nFile: MSGDIR.CTL\r\nDirectory: V-IN\r\n",
      request + "Type: SEND\r\nUser: JS\x01TH\r\nFile: " + body + ".CTL\r\n",
  };
  int n = 0;
  for (const std::string& text : cases)
    vltest::WriteFile(tree_.Request() + "~BAD" + std::to_string(n++) + ".CTL", text);
  EXPECT_EQ(sim_.TakeRequests(), n - 1);  // the first has no [REQUEST] paragraph
  EXPECT_TRUE(Requests().empty());
  EXPECT_EQ(sim_.Step(false), 0);
  EXPECT_EQ(Info(body).Status, 1);  // its own request went; nothing else touched it
  EXPECT_EQ(vltest::ReadFile(In() + "MSGDIR.CTL"), vltest::ListHeader(false));

  // An abort of a message the server does not hold ends it, so that the
  // client may remove it.
  EXPECT_EQ(VlxAbortMsg(handle_, 1, body.c_str()), VL_OK);
  sim_.TakeRequests();
  EXPECT_EQ(Info(body).Status, 31);
  EXPECT_EQ(VlxDeleteMsg(handle_, 1, body.c_str(), 1), VL_OK);
}

// The simulator's changes to shared message files: only the lines it
// means to change differ afterwards, byte for byte.

// A name is matched whole (msg1 is not MSG10); a middle or last entry goes
// with its lines only, and a missing one changes nothing.
TEST(SimMessageFilesTest, ListEntriesGoWithoutTouchingTheOthers) {
  vltest::Scratch scratch;
  const std::string list = scratch.Path("MSGDIR.CTL");
  auto entry = [](const char* file) { return vltest::ListEntryText(vltest::ListEntry{file}); };
  vltest::WriteFile(list, vltest::ListHeader() + entry("MSG10.TXT") + entry("MSG1.TXT") +
                              entry("MSG2.TIF"));
  ASSERT_EQ(vlsim::RemoveEntry(list, "msg1"), 0);
  ASSERT_EQ(vlsim::RemoveEntry(list, "MSG2"), 0);
  ASSERT_EQ(vlsim::RemoveEntry(list, "NONE"), 0);
  EXPECT_EQ(vltest::ReadFile(list), vltest::ListHeader() + entry("MSG10.TXT"));
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), Names{"MSGDIR.CTL"});
}

TEST(SimMessageFilesTest, ControlFileProgressLandsInItsParagraphs) {
  vltest::Scratch scratch;
  const std::string control = scratch.Path("MSG1.CTL");
  vltest::WriteFile(control, vltest::Lines({"[VELOMAR]", "Type: SendControl", "Revision: A", "",
                                            "[MESSAGE]", "Accepted: 00-00-00 00:00:00",
                                            "Status: Su", "[OPTIONS]", "Hold: YES",
                                            "[ADDRESSEES]", "Shortname:", "AddrStatus: Wa",
                                            "Name: A", "Via: FAX-ANY 01", "ShortName:",
                                            "AddrStatus: Wa", "Name: B", "Via: FAX-ANY 02"}));
  // Two changes: the first adds the history paragraph, the second extends it.
  ASSERT_EQ(vlsim::ApplyControlChange(control, {.status = "Wa", .accepted = "26-11-21 10:00:00",
                                                .hold = "NO", .addresseeStatus = {{1, "Se"}},
                                                .history = {"MessageID: X1"}}),
            0);
  ASSERT_EQ(vlsim::ApplyControlChange(control, {.status = "OK", .history = {"SentOK: 1"}}), 0);
  EXPECT_EQ(vltest::ReadFile(control),
            vltest::Lines({"[VELOMAR]", "Type: SendControl", "Revision: A", "", "[MESSAGE]",
                           "Accepted: 26-11-21 10:00:00", "Status: OK", "[OPTIONS]", "Hold: NO",
                           "[ADDRESSEES]", "Shortname:", "AddrStatus: Wa", "Name: A",
                           "Via: FAX-ANY 01", "ShortName:", "AddrStatus: Se", "Name: B",
                           "Via: FAX-ANY 02", "[HISTORY]", "MessageID: X1", "SentOK: 1"}));
}

}  // namespace
