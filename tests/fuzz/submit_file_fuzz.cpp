// Submission of arbitrary submit files, over arbitrary user defaults.
// Input: the submit file, "====", the user's USER.INI.
// Checked besides: a submission that returns 0 adds exactly its entry to a
// list that reads and leaves its files and one request; one that fails
// leaves no file of the message, no request and the list as it was. The
// same holds for the control and data files made on their own.
#include <cstring>
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_support.h"

namespace {

using vlfuzz::Require;

const char kList[] = "[VELOMAR]\r\nType: SendDir\r\nRevision: A\r\n";

int16_t Entries(VLHANDLE handle) {
  int16_t count = -1;
  Require(VlxGetMsgListEx(handle, VL_DIR_OUT, 0, &count, 272, nullptr) == VL_OK,
          "the list reads after a submission");
  return count;
}

void Submit(VLHANDLE handle) {
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  char body[9] = {};
  const VLRESULT rc = VlxSendSubmitFile(handle, "SUBMIT.TXT", "FUZZ", body);
  const std::vector<std::string> out = vlfuzz::FilesIn(tree.Out());
  const std::vector<std::string> requests = vlfuzz::FilesIn(tree.Request());
  if (rc != VL_OK) {
    Require(out == std::vector<std::string>{"MSGDIR.CTL"}, "a failed submission leaves no file");
    Require(requests.empty(), "a failed submission leaves no request");
    Require(vlfuzz::ReadFile(tree.Out() + "MSGDIR.CTL") == kList, "a failed submission keeps the list");
    return;
  }
  Require(Entries(handle) == 1, "a submission adds its entry");
  VLMSGINFOEX info;
  Require(VlxGetMsgInfoEx(handle, VL_DIR_OUT, body, sizeof info, &info) == VL_OK,
          "the submitted message is listed under its name");
  Require(requests.size() == 1, "a submission writes one request");
  for (const std::string& name : out)
    Require(name == "MSGDIR.CTL" || name.compare(0, std::strlen(body), body) == 0,
            "a submission makes files of its own name only");
}

void ControlAndData(VLHANDLE handle) {
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  VLMSGINFOEX info{};
  std::strcpy(info.Body, "MSG1");
  char extension[4];
  const std::string control = tree.Out() + "MSG1.CTL", data = tree.Out() + "MSG1.TXT";
  if (VlxCreateCtlFileEx(handle, "SUBMIT.TXT", control.c_str(), nullptr, extension, sizeof info,
                         &info) != VL_OK)
    Require(vlfuzz::ReadFile(control).empty() &&
                vlfuzz::FilesIn(tree.Out()).size() == 1,
            "a failed control file is deleted");
  if (VlxCreateDataFile(handle, "SUBMIT.TXT", data.c_str(), "TXT") != VL_OK)
    Require(vlfuzz::FilesIn(tree.Out()).size() <= 2, "a failed data file is deleted");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  // Files that a submit file names are opened and copied: only names in the
  // sandbox's own directory are let through, never a device or a far path.
  for (size_t i = 0; i < size; ++i)
    if (data[i] == '/' || data[i] == '\\') return -1;
  vlfuzz::ResetProcess();
  const std::vector<std::string> sections = vlfuzz::Sections(data, size, 2);
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  vlfuzz::WriteFile("SUBMIT.TXT", sections[0]);
  vlfuzz::WriteFile(tree.Users() + "JSMITH\\V-DB\\USER.INI", sections[1]);
  vlfuzz::WriteFile(tree.Out() + "MSGDIR.CTL", kList);
  vlfuzz::Session session;
  Submit(session.handle());
  vlfuzz::ResetProcess();
  vlfuzz::WriteFile(tree.Out() + "MSGDIR.CTL", kList);
  ControlAndData(session.handle());
  return 0;
}
