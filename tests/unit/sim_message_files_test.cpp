// The simulator's changes to shared message files: only the lines it
// means to change differ afterwards, byte for byte.
#include <gtest/gtest.h>

#include <string>

#include "tests/support/message_files.h"
#include "tests/support/test_support.h"
#include "tools/vlsim/message_files.h"

namespace {

using vltest::ListEntry;
using vltest::ListEntryText;
using vltest::ListHeader;

ListEntry Entry(const char* file, const char* status = "Su",
                const char* accepted = "00-00-00 00:00:00") {
  return ListEntry{file, status, "Aw", "SEND", accepted};
}

TEST(SimMessageFilesTest, ListEntriesChangeAndGoWithoutTouchingTheOthers) {
  vltest::Scratch scratch;
  const std::string list = scratch.Path("MSGDIR.CTL");
  vltest::WriteFile(list, ListHeader() + ListEntryText(Entry("MSG1.TXT")) +
                              ListEntryText(Entry("MSG10.TXT")) + ListEntryText(Entry("MSG2.TIF")));

  ASSERT_EQ(vlsim::ApplyEntryChanges(list, {{"msg1", "Wa", "26-11-21 10:00:00"},
                                            {"MSG2", "Se", ""},
                                            {"MSG3", "OK", ""}}),
            0);
  EXPECT_EQ(vltest::ReadFile(list),
            ListHeader() + ListEntryText(Entry("MSG1.TXT", "Wa", "26-11-21 10:00:00")) +
                ListEntryText(Entry("MSG10.TXT")) + ListEntryText(Entry("MSG2.TIF", "Se")));

  ASSERT_EQ(vlsim::RemoveEntry(list, "MSG10"), 0);
  ASSERT_EQ(vlsim::RemoveEntry(list, "MSG2"), 0);
  ASSERT_EQ(vlsim::RemoveEntry(list, "NONE"), 0);
  EXPECT_EQ(vltest::ReadFile(list),
            ListHeader() + ListEntryText(Entry("MSG1.TXT", "Wa", "26-11-21 10:00:00")));
  EXPECT_EQ(vltest::ListDirectory(scratch.Dir()), (std::vector<std::string>{"MSGDIR.CTL"}));
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
  vlsim::SendOrder order;
  ASSERT_EQ(vlsim::ReadSendOrder(control, &order), 0);
  EXPECT_TRUE(order.hold);
  ASSERT_EQ(order.addressees.size(), 2u);
  EXPECT_EQ(order.addressees[1].name, "B");
  EXPECT_EQ(order.addressees[1].route, "FAX-ANY");
  EXPECT_EQ(order.addressees[1].number, "02");

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
