// The whole loop with real processes: the simulator started through the
// library, four client processes submitting at once for two users, and the
// same clients refused while the simulator is stopped.
#include <gtest/gtest.h>

#include <chrono>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "platform/os.h"
#include "platform/raii.h"
#include "tests/support/child_process.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::ChildProcess;

constexpr int kClients = 4;
constexpr int kMessagesEach = 50;
const char* const kUsers[] = {"USERA", "USERB"};  // two clients each

double SecondsSince(std::chrono::steady_clock::time_point start) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// Waits until the server check gives want; false after timeoutSeconds.
bool WaitForServer(VLHANDLE session, VLRESULT want, int timeoutSeconds) {
  const auto start = std::chrono::steady_clock::now();
  while (VlxCheckServer(session) != want) {
    if (SecondsSince(start) > timeoutSeconds) return false;
    os::SleepMilliseconds(50);
  }
  return true;
}

struct ClientRun {
  std::string output;
  std::unique_ptr<ChildProcess> process;
};

class EndToEndTest : public ::testing::Test {
 protected:
  std::string Out(const char* user) const { return root_ + "\\USERS\\" + user + "\\V-OUT\\"; }

  // Runs the four clients at once; each output's lines, "index result body".
  std::vector<std::vector<std::string>> RunClients(const char* round) {
    std::vector<ClientRun> runs(kClients);
    for (int i = 0; i < kClients; ++i) {
      runs[i].output = scratch_.Path(std::string(round) + std::to_string(i) + ".OUT");
      runs[i].process = std::make_unique<ChildProcess>(
          "submit_many.exe", std::string(kUsers[i % 2]) + " " + std::to_string(kMessagesEach) +
                                 " \"" + scratch_.Path("EVEN.SUB") + "\" \"" +
                                 scratch_.Path("ODD.SUB") + "\" \"" + runs[i].output + "\"");
      EXPECT_TRUE(runs[i].process->started());
    }
    std::vector<std::vector<std::string>> outputs;
    for (ClientRun& run : runs) {
      EXPECT_EQ(run.process->Wait(300000), 0) << run.output;
      std::istringstream lines(vltest::ReadFile(run.output));
      outputs.emplace_back();
      for (std::string line; std::getline(lines, line);) outputs.back().push_back(line);
    }
    return outputs;
  }

  vltest::Scratch scratch_;
  std::string root_ = scratch_.Path("tree");
};

TEST_F(EndToEndTest, FourClientsSubmitAtOnceWhileTheSimulatorRunsAndAreRefusedWhenStopped) {
#ifndef _WIN32
  GTEST_SKIP() << "needs the simulator and client programs and enforced sharing modes (Windows)";
#endif
  ChildProcess make("vlsim.exe", "--make-tree \"" + root_ + "\" --users USERA,USERB --client-ini");
  ASSERT_EQ(make.Wait(60000), 0);
  vltest::WriteFile(root_ + "\\SYSTEM\\V-DB\\SETUP.INI",
                    vltest::Lines({"[VELOMAR]", "Type: Setup", "Revision: A", "", "[SERVER]",
                                   "Sysman: VLSIM, vlsim.exe", "SimDevices: 8",
                                   "SimStepDelayMS: 0", "SimPollMS: 20",
                                   "SimFailNumbers: 0999"}));
  vltest::WriteFile(scratch_.Path("EVEN.SUB"),
                    vltest::Lines({"%%[MESSAGE]", "Subject: even", "To: Ann", "Fax: 0101",
                                   "%%[TEXT]", "Sent."}));
  vltest::WriteFile(scratch_.Path("ODD.SUB"),
                    vltest::Lines({"%%[MESSAGE]", "Subject: odd", "To: Ann", "Fax: 0101",
                                   "To: Nobody", "Fax: 0999", "%%[TEXT]", "Half sent."}));
  std::map<std::string, VLHANDLE> sessions;
  for (const char* user : kUsers) {
    ASSERT_EQ(VlxAPIInit(&sessions[user], user, 0, vltest::Reported::Callback), VL_OK)
        << vltest::Reported::Last();
  }
  const VLHANDLE session = sessions["USERA"];
  auto closeAll = os::scope_exit([&] {
    if (VlxCheckServer(session) == VL_OK) {
      VlxStopServer(session, 0);
      WaitForServer(session, VL_E_SERVER_NOT_RUNNING, 30);
    }
    for (auto& [user, handle] : sessions) VlxAPIClosedown(handle);
  });

  // With the simulator stopped every submission is refused and leaves nothing.
  ASSERT_EQ(VlxCheckServer(session), VL_E_SERVER_NOT_RUNNING);
  for (const auto& output : RunClients("STOPPED")) {
    ASSERT_EQ(output.size(), kMessagesEach + 1u);
    for (int i = 0; i < kMessagesEach; ++i)
      EXPECT_EQ(output[i].substr(0, output[i].find(" -") + 2), std::to_string(i) + " F70C -");
  }
  for (const char* user : kUsers)
    EXPECT_EQ(vltest::ListDirectory(Out(user)), (std::vector<std::string>{"MSGDIR.CTL"}));
  EXPECT_TRUE(vltest::ListDirectory(root_ + "\\REQUEST\\").empty());

  // Started through the library, the simulator takes everything.
  ASSERT_EQ(VlxStartServer(session, 0, nullptr), VL_OK) << vltest::Reported::Last();
  ASSERT_TRUE(WaitForServer(session, VL_OK, 30));
  const auto start = std::chrono::steady_clock::now();
  std::map<std::string, std::map<std::string, uint16_t>> expected;  // user, body: final status
  const auto outputs = RunClients("RUNNING");
  for (int client = 0; client < kClients; ++client) {
    const auto& output = outputs[client];
    ASSERT_EQ(output.size(), kMessagesEach + 1u);
    for (int i = 0; i < kMessagesEach; ++i) {
      std::istringstream line(output[i]);
      int index = -1;
      std::string result, body;
      line >> index >> result >> body;
      ASSERT_EQ(result, "0000") << output[i];
      const bool fresh = expected[kUsers[client % 2]].emplace(body, i % 2 ? 31 : 30).second;
      EXPECT_TRUE(fresh) << body << " handed out twice";
    }
  }

  // Every message reaches its final state, and each list holds exactly them.
  std::vector<VLMSGINFOEX> entries(256);
  for (const char* user : kUsers) {
    SCOPED_TRACE(user);
    int16_t count = 0;
    bool done = false;
    while (!done && SecondsSince(start) < 240) {
      ASSERT_EQ(VlxGetMsgListEx(sessions[user], 1, 256, &count, sizeof(VLMSGINFOEX),
                                entries.data()),
                VL_OK)
          << vltest::Reported::Last();
      done = true;
      for (int i = 0; i < count; ++i) done = done && entries[i].Status >= 30;
      if (!done) os::SleepMilliseconds(100);
    }
    ASSERT_EQ(count, 2 * kMessagesEach);
    for (int i = 0; i < count; ++i) {
      auto it = expected[user].find(entries[i].Body);
      ASSERT_NE(it, expected[user].end()) << entries[i].Body;
      EXPECT_EQ(entries[i].Status, it->second) << entries[i].Body;
      EXPECT_GE(entries[i].AcceptedYear, 2026);
    }
    // The control and data file of each message, nothing half done.
    EXPECT_EQ(vltest::ListDirectory(Out(user)).size(), 1u + 2 * count);
  }
  EXPECT_EQ(vltest::ListDirectory(root_ + "\\REQUEST\\"),
            (std::vector<std::string>{"VELOMAR.LOK"}));

  // A restart lets the lock go and takes it again while clients poll it;
  // work goes on afterwards.
  ASSERT_EQ(VlxRestartServer(session, 0), VL_OK);
  const auto restart = std::chrono::steady_clock::now();
  while (vltest::ReadFile(root_ + "\\SERVER\\VLSIM.LOG").find("Restarting") ==
             std::string::npos &&
         SecondsSince(restart) < 30)
    VlxCheckServer(session);
  ASSERT_TRUE(WaitForServer(session, VL_OK, 30));
  char body[9] = {};
  ASSERT_EQ(VlxSendSubmitFile(session, scratch_.Path("EVEN.SUB").c_str(), "LAST", body), VL_OK);
  VLMSGINFOEX info{};
  while (VlxGetMsgInfoEx(session, 1, body, sizeof info, &info) == VL_OK && info.Status != 30 &&
         SecondsSince(restart) < 60)
    os::SleepMilliseconds(50);
  EXPECT_EQ(info.Status, 30);

  ASSERT_EQ(VlxStopServer(session, 0), VL_OK);
  EXPECT_TRUE(WaitForServer(session, VL_E_SERVER_NOT_RUNNING, 30));
}

}  // namespace
