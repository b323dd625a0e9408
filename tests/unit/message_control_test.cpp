// Request files for the server (message control, stop and restart), the
// checks made before one is written, and deleting messages.
#include <gtest/gtest.h>

#include <algorithm>

#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/message_files.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

using vltest::Reported;
using Names = std::vector<std::string>;

// The older calls pass no message ID to their Ex forms; rushing has only the Ex form.
using MessageCall = VLRESULT (*)(VLHANDLE, uint16_t, const char*);
VLRESULT Rush(VLHANDLE handle, uint16_t directory, const char* body) {
  return VlxRushMsgEx(handle, directory, body, nullptr);
}
// Deleting a message and its files, shaped as the calls above.
VLRESULT Delete(VLHANDLE handle, uint16_t directory, const char* body) {
  return VlxDeleteMsg(handle, directory, body, 1);
}

std::string RequestText(const std::string& request) {
  return "[VELOMAR]\r\nType: Request\r\nRevision: A\r\n\r\n[REQUEST]\r\n" + request;
}
std::string MessageRequest(const char* type, const char* body, const char* directory) {
  return RequestText(std::string("Server: QUEUEMAN\r\nType: ") + type + "\r\nUser: JOHN\r\nFile: " +
                     body + ".CTL\r\nDirectory: " + directory + "\r\n");
}

class ServerRequestTest : public ::testing::Test {
 protected:
  void SetUp() override {
    tree_.AddUser("JOHN");
    tree_.UseAsRelativeAreas();
    handle_ = vltest::LogOn("JOHN");
    noUser_ = vltest::LogOn("");
    Reported::Clear();
  }
  void TearDown() override {
    os::fault::Clear();
    server_.Stop();
    VlxAPIClosedown(noUser_);
    VlxAPIClosedown(handle_);
  }
  // The request area's files but the server's lock file.
  Names Requests() const {
    Names names = vltest::ListDirectory(tree_.Request());
    std::erase(names, "VELOMAR.LOK");
    return names;
  }
  // The text of the one request written since the last call; it is removed.
  std::string TakeRequest() const {
    EXPECT_EQ(Requests(), Names{"~RQST000.CTL"});
    const std::string text = vltest::ReadFile(tree_.Request() + "~RQST000.CTL");
    vltest::RemoveTree(tree_.Request() + "~RQST000.CTL");
    return text;
  }

  vltest::Scratch scratch_;
  vltest::FaxTree tree_{scratch_};
  vltest::ServerStandIn server_{tree_.Request()};
  VLHANDLE handle_ = 0;
  VLHANDLE noUser_ = 0;  // a session without a user
  const std::string out_ = tree_.Users() + "JOHN\\V-OUT\\";
  const std::string in_ = tree_.Users() + "JOHN\\V-IN\\";
};

using RequestFileTest = ServerRequestTest;
using MessageControlTest = ServerRequestTest;

TEST_F(RequestFileTest, EachOperationWritesItsRequest) {
  const struct { MessageCall call; uint16_t dir; const char *type, *word; } cases[] = {
      {VlxHoldMsg, 1, "HOLD", "V-OUT"},       {VlxAbortMsg, 2, "DELETE", "V-IN"},
      {VlxReleaseMsg, 1, "RELEASE", "V-OUT"}, {Rush, 1, "RUSH", "V-OUT"},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(c.call(handle_, c.dir, "M1"), VL_OK) << c.type << " " << Reported::Last();
    EXPECT_EQ(TakeRequest(), MessageRequest(c.type, "M1", c.word)) << c.type;
  }
  ASSERT_EQ(VlxStopServer(handle_, 0), VL_OK);
  EXPECT_EQ(TakeRequest(), RequestText("Server: SYSMAN\r\nType: SHUTDOWN\r\n"));
  ASSERT_EQ(VlxRestartServer(noUser_, 0), VL_OK) << "the system manager needs no user";
  EXPECT_EQ(TakeRequest(), RequestText("Server: SYSMAN\r\nType: RESTART\r\n"));
  EXPECT_EQ(VlxStopServer(handle_, 1), VL_E_INVALID_PARAM);
  EXPECT_EQ(VlxRestartServer(handle_, 0x100), VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Texts(), Names(2, "Reserved parameter must be set to 0"));
  EXPECT_TRUE(Requests().empty());
}

TEST_F(RequestFileTest, AFaultAnywhereLeavesNoPartialRequest) {
  const std::vector<VLRESULT> documented = {
      VL_OK, VL_E_CANNOT_SUBMIT, VL_E_ACCESS_DENIED, VL_E_FILE_NOT_FOUND, VL_E_FILE_ERROR,
      VL_E_INVALID_PARAM, VL_E_PATH_NOT_FOUND, VL_E_TOO_MANY_FILES, VL_E_FILE_CREATE_ERROR,
      VL_E_SERVER_NOT_RUNNING};
  for (int n = 1; n < 500; ++n) {
    os::fault::Inject(os::fault::Op::Any, n, os::kAccessDenied);
    const VLRESULT rc = VlxHoldMsgEx(handle_, VL_DIR_OUT, "ABC00001", nullptr);
    const int calls = os::fault::Calls(os::fault::Op::Any);
    os::fault::Clear();
    EXPECT_NE(std::ranges::find(documented, rc), documented.end())
        << "fault at call " << n << " gave " << std::hex << rc;
    if (rc == VL_OK)
      EXPECT_EQ(TakeRequest(), MessageRequest("HOLD", "ABC00001", "V-OUT")) << "fault " << n;
    else
      EXPECT_EQ(Requests(), Names{}) << "left by the fault at call " << n;
    if (calls < n) {
      EXPECT_EQ(rc, VL_OK);
      return;
    }
  }
  FAIL() << "the faults never ran out";
}

TEST_F(MessageControlTest, TheServerIsCheckedBeforeTheArguments) {
  server_.Stop();
  for (MessageCall call : {VlxHoldMsg, VlxAbortMsg, VlxReleaseMsg, Rush})
    for (auto [dir, body] : {std::pair{1, "ABC"}, {9, ""}, {1, "msgdir"}})
      EXPECT_EQ(call(handle_, dir, body), VL_E_SERVER_NOT_RUNNING) << dir << body;
  EXPECT_EQ(VlxStopServer(handle_, 1), VL_E_SERVER_NOT_RUNNING);
  // The session's user is checked before the server (closed sessions: SessionTest).
  EXPECT_EQ(VlxHoldMsg(noUser_, 9, ""), VL_E_USER_NOT_INIT);
  EXPECT_EQ(VlxDeleteMsg(noUser_, 1, "A", 1), VL_E_USER_NOT_INIT);
  EXPECT_TRUE(Reported::Texts().empty());
  EXPECT_TRUE(Requests().empty());
}

TEST_F(MessageControlTest, ArgumentsAreCheckedInOrder) {
  const std::string body = "Body name invalid", dir = "Message directory parameter invalid";
  const struct { MessageCall call; uint16_t dir; const char* body; std::string report; } cases[] = {
      // Names too long or with bad characters: BodyNameTest.
      {VlxHoldMsg, 1, "", body},      {Rush, 9, "", body},   {VlxHoldMsg, 2, "ABC", dir},
      {VlxReleaseMsg, 2, "ABC", dir}, {Rush, 2, "ABC", dir}, {VlxAbortMsg, 3, "ABC", dir},
      {VlxAbortMsg, 2, "MsgDir", "Message name MsgDir not valid"},
      {Delete, 3, "A", dir},          {Delete, 0, nullptr, dir}, {Delete, 1, "", body},
      {Delete, 1, "MsgDir", "Message name MsgDir not valid"},
  };
  for (const auto& c : cases) {
    Reported::Clear();
    EXPECT_EQ(c.call(handle_, c.dir, c.body), VL_E_INVALID_PARAM) << c.dir << " " << c.body;
    EXPECT_EQ(Reported::Texts(), Names{c.report}) << c.dir << " " << c.body;
  }
  EXPECT_TRUE(Requests().empty());
}

TEST_F(MessageControlTest, TheMessageIdMustMatchExactly) {
  const std::string mismatch = "Message ID does not match given control file";
  EXPECT_EQ(VlxHoldMsgEx(handle_, 1, "Gone", "Id-1"), VL_E_MSG_UNKNOWN);
  EXPECT_EQ(Reported::Texts(),
            (Names{"Control file USERS\\JOHN\\V-OUT\\GONE.CTL not found", mismatch}));
  vltest::WriteFile(out_ + "ABC.CTL",
                    "[MESSAGE]\r\nMessageID: Id-1\r\n\r\n[HISTORY]\r\nMessageID: Id-42\r\n");
  vltest::WriteFile(in_ + "ABC.CTL", "[HISTORY]\r\nMessageID: Id-7\r\n");
  vltest::WriteFile(out_ + "NOHIST.CTL", "[MESSAGE]\r\nMessageID: Id-42\r\n");
  vltest::WriteFile(out_ + "NOID.CTL",
                    "[HISTORY]\r\nStatus: OK\r\n\r\n[X]\r\nMessageID: Id-42\r\n");
  // match: the ID is the one in the control file's history paragraph.
  struct Case { decltype(&VlxHoldMsgEx) call; uint16_t dir; const char *body, *id; bool match; };
  const Case cases[] = {
      {VlxHoldMsgEx, 1, "ABC", "Id-42", true},     {VlxAbortMsgEx, 2, "abc", "Id-7", true},
      {VlxReleaseMsgEx, 1, "ABC", "ID-42", false}, {VlxRushMsgEx, 1, "ABC", "Id-4", false},
      {VlxAbortMsgEx, 1, "ABC", "Id-7", false},    {VlxHoldMsgEx, 1, "ABC", "Id-1", false},
      {VlxHoldMsgEx, 1, "NOID", "Id-42", false},   {VlxHoldMsgEx, 1, "NOHIST", "Id-42", false},
  };
  for (const auto& c : cases) {
    Reported::Clear();
    EXPECT_EQ(c.call(handle_, c.dir, c.body, c.id), c.match ? VL_OK : VL_E_MSG_UNKNOWN) << c.id;
    EXPECT_EQ(Reported::Texts(), c.match ? Names{} : Names{mismatch}) << c.id;
    EXPECT_EQ(Requests().size(), c.match ? 1u : 0u) << c.id;
    for (const std::string& name : Requests()) vltest::RemoveTree(tree_.Request() + name);
  }
}

// A completed message B and a waiting A in the out list, Z only as files;
// B also in the in list.
class DeleteMsgFiles : public ServerRequestTest {
 protected:
  void SetUp() override {
    ServerRequestTest::SetUp();
    vltest::WriteFile(out_ + "MSGDIR.CTL", vltest::ListHeader() + kA + kB);
    vltest::MakeDirectories(out_ + "TXT");
    vltest::MakeDirectories(out_ + "PREVIEW");
    for (const char* file : {"A.CTL", "A.TXT", "B.CTL", "B.TIF", "BB.TIF", "Z.CTL", "TXT\\B.TXT",
                             "TXT\\A.TXT", "PREVIEW\\B.001", "PREVIEW\\Z.001"})
      vltest::WriteFile(out_ + file, file);
    vltest::WriteFile(in_ + "MSGDIR.CTL", vltest::ListHeader(false) + kB);
    vltest::WriteFile(in_ + "B.CTL", "in");
  }
  Names Files(const char* sub = "") const { return vltest::ListDirectory(out_ + sub); }

  const std::string kA = vltest::ListEntryText(vltest::ListEntry{"A.TXT", "Su"});
  const std::string kB = vltest::ListEntryText(vltest::ListEntry{"B.TIF", "OK"});
};

TEST_F(DeleteMsgFiles, OneMessageGoesWithItsFilesWhileTheServerRuns) {
  // The list's changes are MsgDirUpdateTest's; here, the files.
  EXPECT_EQ(VlxDeleteMsg(handle_, 1, "A", 1), VL_E_MSG_NOT_COMPLETED);

  ASSERT_EQ(VlxDeleteMsg(handle_, 1, "b", 1), VL_OK) << Reported::Last();
  EXPECT_EQ(Files(), (Names{"A.CTL", "A.TXT", "BB.TIF", "MSGDIR.CTL", "PREVIEW", "TXT", "Z.CTL"}));
  EXPECT_EQ(Files("TXT"), Names{"A.TXT"});
  EXPECT_EQ(Files("PREVIEW"), Names{"Z.001"});

  EXPECT_EQ(VlxDeleteMsg(handle_, 1, "Z", 1), VL_OK) << "not in the list: its files still go";
  EXPECT_EQ(Files(), (Names{"A.CTL", "A.TXT", "BB.TIF", "MSGDIR.CTL", "PREVIEW", "TXT"}));
  EXPECT_TRUE(Files("PREVIEW").empty());
  EXPECT_EQ(VlxDeleteMsg(handle_, 2, "B", 0), VL_OK) << "the entry only";
  EXPECT_EQ(vltest::ReadFile(in_ + "MSGDIR.CTL"), vltest::ListHeader(false) + "\r\n");
  EXPECT_EQ(vltest::ReadFile(in_ + "B.CTL"), "in");
  EXPECT_TRUE(Requests().empty()) << "the server is not told";
}

TEST_F(DeleteMsgFiles, AllMessagesGoOnlyWhileTheServerIsStopped) {
  EXPECT_EQ(VlxDeleteMsg(handle_, 1, nullptr, 1), VL_E_SERVER_RUNNING);
  EXPECT_EQ(Reported::Texts(), Names{"Server not stopped"});
  EXPECT_EQ(Files().size(), 9u);

  server_.Stop();
  ASSERT_EQ(VlxDeleteMsg(handle_, 1, nullptr, 1), VL_OK) << Reported::Last();
  EXPECT_EQ(vltest::ReadFile(out_ + "MSGDIR.CTL"), vltest::ListHeader());
  EXPECT_EQ(Files(), (Names{"MSGDIR.CTL", "PREVIEW", "TXT"}));
  EXPECT_TRUE(Files("TXT").empty());
  EXPECT_TRUE(Files("PREVIEW").empty());
  ASSERT_EQ(VlxDeleteMsg(handle_, 2, nullptr, 0), VL_OK);
  EXPECT_EQ(vltest::ListDirectory(in_), (Names{"B.CTL", "MSGDIR.CTL"}));
  EXPECT_EQ(vltest::ReadFile(in_ + "MSGDIR.CTL"), vltest::ListHeader(false));
}

}  // namespace
