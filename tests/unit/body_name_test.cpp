// The body name rule: every function that takes a body name refuses a name
// that could not be written into a list and read back unchanged, with
// 0xF700 and its text, and leaves no file.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "api/session.h"
#include "api/vlapi_internal.h"
#include "msg/msg_dir.h"
#include "paragraph/paragraph_reader.h"
#include "tests/support/message_files.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/test_support.h"
#include "tests/support/user_fixture.h"
#include "vlapi.h"

namespace {

using vltest::Reported;

class BodyNameTest : public vltest::JsmithTest {};

TEST_F(BodyNameTest, EveryFunctionTakingANameRefusesNamesOutsideTheRule) {
  vltest::ServerStandIn server(tree_.Request());
  const std::string list = vltest::ListHeader() + vltest::ListEntryText(vltest::ListEntry{"A.TXT", "OK"});
  vltest::WriteFile(Out() + "MSGDIR.CTL", list);
  vltest::WriteFile(scratch_.Path("SUBMIT.TXT"), "%%[MESSAGE]\r\nFax: 1\r\n");
  const std::string submit = scratch_.Path("SUBMIT.TXT"), control = Out() + "X.CTL";
  const vl::ApiSession& session = *vl::SessionFromHandle(handle_);
  const VLHANDLE h = handle_;
  auto record = [](const std::string& name) {
    VLMSGINFOEX info{};
    std::memcpy(info.Body, name.c_str(), std::min(name.size() + 1, sizeof info.Body));
    return info;
  };
  const std::vector<std::pair<const char*, std::function<VLRESULT(const std::string&)>>> calls = {
      {"VlxSendMsg", [&](auto& n) { return VlxSendMsg(h, n.c_str(), "TXT", ""); }},
      {"VlxSendMsgEx", [&](auto& n) { VLMSGINFOEX i = record(n); return VlxSendMsgEx(h, "TXT", 272, &i); }},
      {"VlxCreateCtlFileEx", [&](auto& n) {
         VLMSGINFOEX i = record(n);
         char ext[4];
         return VlxCreateCtlFileEx(h, submit.c_str(), control.c_str(), nullptr, ext, 272, &i);
       }},
      {"VlxGetMsgInfoEx", [&](auto& n) { VLMSGINFOEX i; return VlxGetMsgInfoEx(h, VL_DIR_OUT, n.c_str(), 272, &i); }},
      {"VlxMarkMsgAsRead", [&](auto& n) { return VlxMarkMsgAsRead(h, VL_DIR_OUT, n.c_str()); }},
      {"VlxDeleteMsg", [&](auto& n) { return VlxDeleteMsg(h, VL_DIR_OUT, n.c_str(), 1); }},
      {"VlxHoldMsg", [&](auto& n) { return VlxHoldMsg(h, VL_DIR_OUT, n.c_str()); }},
      {"VlxGetMsgHistoryEx", [&](auto& n) {
         uint16_t count;
         VLMSGHISTORYEX r;
         return VlxGetMsgHistoryEx(h, VL_DIR_OUT, n.c_str(), 0, 0, 1, &count, sizeof r, &r);
       }},
      {"VlxGetDocuments", [&](auto& n) {
         VLMSGINFOEX i = record(n);
         std::vector<char> slots(2 * VL_DOCUMENT_SLOTS * VL_DOCUMENT_SLOT_SIZE);
         return VlxGetDocuments(h, &i, slots.data(), slots.data() + slots.size() / 2);
       }},
      {"MsgDirUpdate", [&](auto& n) {
         const vl::NewEntry add{n.c_str(), "", "", 2, 1, "", ""};
         return vl::MsgDirUpdate(session, VL_DIR_OUT, nullptr, &add);
       }},
  };
  const struct {
    std::string name;
    const char* report;
  } names[] = {
      {"A:B", "Body name invalid: character 0x3A not allowed"},
      {"A\x03", "Body name invalid: character 0x03 not allowed"},
      {"A\x7f", "Body name invalid: character 0x7F not allowed"},
      {"A\tB", "Body name invalid: character 0x09 not allowed"},
      {"A\\..", "Body name invalid: character 0x5C not allowed"},
      {"A/B", "Body name invalid: character 0x2F not allowed"},
      {"*?\"<>|", "Body name invalid: character 0x2A not allowed"},
      {"|", "Body name invalid: character 0x7C not allowed"},
      {"A.B", "Body name invalid: character 0x2E not allowed"},
      {" AB", "Body name invalid: leading blank"},
      {"NINECHARS", "Body name invalid"},
  };
  for (const auto& [function, call] : calls)
    for (const auto& n : names) {
      Reported::Clear();
      EXPECT_EQ(call(n.name), VL_E_INVALID_PARAM) << function << " " << n.report;
      EXPECT_EQ(Reported::Last(), n.report) << function;
      EXPECT_EQ(vltest::ListDirectory(Out()), std::vector<std::string>{"MSGDIR.CTL"}) << function;
      EXPECT_TRUE(vltest::ListDirectory(tree_.Request()).size() <= 1) << function;
    }
  EXPECT_EQ(vltest::ReadFile(Out() + "MSGDIR.CTL"), list);

  // The list's own name: refused as a body, and as a file to write.
  VLMSGINFOEX info = record("msgdir");
  char ext[4];
  EXPECT_EQ(VlxCreateCtlFileEx(h, submit.c_str(), control.c_str(), nullptr, ext, 272, &info),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Message name msgdir not valid");
  info = record("A");
  EXPECT_EQ(VlxCreateCtlFileEx(h, submit.c_str(), (Out() + "msgdir.ctl").c_str(), nullptr, ext,
                               272, &info),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Control file name invalid");
  EXPECT_EQ(VlxCreateDataFile(h, submit.c_str(), (Out() + "MSGDIR.TMP").c_str(), "TXT"),
            VL_E_INVALID_PARAM);
  EXPECT_EQ(Reported::Last(), "Data file name invalid");
  EXPECT_EQ(vltest::ReadFile(Out() + "MSGDIR.CTL"), list);
  EXPECT_EQ(vltest::ListDirectory(Out()), std::vector<std::string>{"MSGDIR.CTL"});
}

TEST_F(BodyNameTest, NamesWithinTheRuleAreWrittenAndReadBack) {
  vltest::WriteFile(Out() + "MSGDIR.CTL", vltest::ListHeader());
  const vl::ApiSession& session = *vl::SessionFromHandle(handle_);
  for (const char* name : {"~FAXA000", "x y", "\xe9t\xe9", "A-B_9"}) {
    const vl::NewEntry add{name, "", "", 2, 1, "", ""};
    ASSERT_EQ(vl::MsgDirUpdate(session, VL_DIR_OUT, nullptr, &add), VL_OK) << name;
    VLMSGINFOEX info;
    ASSERT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, name, sizeof info, &info), VL_OK) << name;
    EXPECT_TRUE(para::EqualNoCase(info.Body, name)) << name;
  }
}

}  // namespace
