// Log-on and the user's settings under arbitrary configuration files.
// Input: "user|lock", then, each after a line "====": the configuration
// file VELOMAR.INI (found in the Windows directory; its areas are relative
// to the sandbox, as "USERS\"), USERLIST.INI, the system's USER.INI, the
// user's USER.INI and MAILLIST.INI.
#include <string>
#include <vector>

#include "api/config.h"
#include "api/vlapi_internal.h"
#include "msg/defaults.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

// Whether a path in the files could lead out of the sandbox: a parent
// directory, a slash, or a backslash that begins a value (an absolute or
// network path).
bool LeavesSandbox(const uint8_t* data, size_t size) {
  bool valueStart = true;
  for (size_t i = 0; i < size; ++i) {
    const char c = static_cast<char>(data[i]);
    if (c == '/' || (c == '.' && i + 1 < size && data[i + 1] == '.')) return true;
    if (c == '\\' && valueStart) return true;
    if (c == ':' || c == '=' || c == '\n' || c == '|') valueStart = true;
    else if (c != ' ' && c != '\t') valueStart = false;
  }
  return false;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (LeavesSandbox(data, size)) return -1;
  vlfuzz::ResetProcess();
  vl::SetAreas("", "", "", "");  // the areas come from the configuration file
  const std::vector<std::string> sections = vlfuzz::Sections(data, size, 6);
  const std::vector<std::string> a = vlfuzz::Arguments(sections[0], 2);
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  const std::string db = tree.System() + "V-DB\\";
  vlfuzz::WriteFile("VELOMAR.INI", sections[1]);
  vlfuzz::WriteFile(db + "USERLIST.INI", sections[2]);
  vlfuzz::WriteFile(db + "USER.INI", sections[3]);
  vlfuzz::WriteFile(tree.Users() + "JSMITH\\V-DB\\USER.INI", sections[4]);
  vlfuzz::WriteFile(db + "MAILLIST.INI", sections[5]);

  VLHANDLE handle = 0;
  const VLRESULT init = VlxAPIInit(&handle, a[0].c_str(), a[1] == "1", nullptr);
  vlfuzz::Require(vlfuzz::IsResult(init), "log-on returns a result code");
  if (init != VL_OK) return 0;
  VLMSGDEFAULTSEX defaults;
  char text[300];
  uint16_t kind = 0;
  for (VLRESULT rc : {VlxGetMsgDefaultsEx(handle, sizeof defaults, &defaults),
                      VlxGetUserCoversheet(handle, text, sizeof text),
                      VlxGetUserFromname(handle, text, 5),
                      vl::GetUserMailAddress(handle, &kind, text, sizeof text),
                      VlxCheckServer(handle)})
    vlfuzz::Require(vlfuzz::IsResult(rc), "a settings reader returns a result code");
  vlfuzz::Require(VlxAPIClosedown(handle) == VL_OK, "a session opened is closed");
  return 0;
}
