// Arbitrary list contents never crash the message functions, and a failed
// removal never changes the list.
#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include "api/session.h"
#include "api/vlapi_internal.h"
#include "msg/msg_dir.h"
#include "tests/support/message_files.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/test_support.h"
#include "vlapi.h"

namespace {

std::string RandomList(std::mt19937& random) {
  static const char* const pieces[] = {
      "[DOCUMENT]", "[MESSAGE]", "File: A.TXT", "File: B", "File: \\x.y", "Comment: c",
      "Accepted: 79-12-31 23:59:59", "Accepted: 1-2", "Type: PREVIEW", "Status: OK",
      "Status: Se", "Status: X", "UserStatus: Aw", "UserStatus:", "MsgType: Er", "Subject:",
      "\r\n", "\n", "\r", ":", "=", "[", " "};
  std::string text;
  const int parts = static_cast<int>(random() % 120);
  for (int i = 0; i < parts; ++i) {
    switch (random() % 5) {
      case 0: text.push_back(static_cast<char>(random() % 256)); break;
      case 1: text.append(random() % 500, static_cast<char>('A' + random() % 26)); break;
      default: text += pieces[random() % (sizeof pieces / sizeof pieces[0])]; text += "\r\n";
    }
  }
  return text;
}

TEST(MsgDirRobustness, RandomListsAreReadAndRefusedWithoutHarm) {
  vltest::Scratch scratch;
  vltest::FaxTree tree(scratch);
  tree.AddUser("JSMITH");
  tree.UseAsExplicitAreas();
  vltest::ServerStandIn server(tree.Request());
  VLHANDLE handle = vltest::LogOn("JSMITH");
  const vl::ApiSession& session = *vl::SessionFromHandle(handle);
  const std::string list = tree.Users() + "JSMITH\\V-OUT\\MSGDIR.CTL";
  std::mt19937 random(11);
  std::vector<VLMSGINFOEX> records(8);
  for (int round = 0; round < 300; ++round) {
    const std::string text = RandomList(random);
    vltest::WriteFile(list, text);
    int16_t count = 0;
    for (uint16_t size : {272, 114, 116, 160, 260}) {
      VLRESULT rc = VlxGetMsgListEx(handle, VL_DIR_OUT, 8, &count, size, records.data());
      EXPECT_TRUE(rc == VL_OK || rc == VL_E_INFO_FILE_INVALID) << round;
      EXPECT_GE(count, 0);
    }
    VLMSGINFOEX info;
    VLRESULT rc = VlxGetMsgInfoEx(handle, VL_DIR_OUT, "A", 272, &info);
    EXPECT_TRUE(rc == VL_OK || rc == VL_E_MSG_UNKNOWN || rc == VL_E_INFO_FILE_INVALID) << round;
    // A removal either succeeds on a completed entry or leaves the list as it was.
    rc = vl::MsgDirUpdate(session, VL_DIR_OUT, "A", nullptr);
    if (rc != VL_OK) {
      EXPECT_EQ(vltest::ReadFile(list), text) << round;
    }
    vltest::WriteFile(list, text);
    VlxMarkMsgAsRead(handle, VL_DIR_OUT, "A");
    EXPECT_EQ(vltest::ReadFile(list).size(), text.size()) << "marking keeps the length";
  }
  VlxAPIClosedown(handle);
}

TEST(MsgDirRobustness, CountsBeyondSixteenBitsSaturate) {
  vltest::Scratch scratch;
  vltest::FaxTree tree(scratch);
  tree.AddUser("JSMITH");
  tree.UseAsExplicitAreas();
  VLHANDLE handle = vltest::LogOn("JSMITH");
  std::string text = vltest::ListHeader();
  const std::string entry = vltest::ListEntryText(vltest::ListEntry{"M.TXT"});
  for (int i = 0; i < 32770; ++i) text += entry;
  vltest::WriteFile(tree.Users() + "JSMITH\\V-OUT\\MSGDIR.CTL", text);
  VLMSGINFOEX record;
  int16_t count = 0;
  EXPECT_EQ(VlxGetMsgListEx(handle, VL_DIR_OUT, 1, &count, 272, &record), VL_OK);
  EXPECT_EQ(count, 32767);
  EXPECT_EQ(VlxGetMsgListEx(handle, VL_DIR_OUT, -5, &count, 272, nullptr), VL_OK);
  EXPECT_EQ(count, 32767);
  VlxAPIClosedown(handle);
}

}  // namespace
