// The server status readers under arbitrary status files and lists.
// Input: STATUS.LOG, "====", the coversheet list, "====", the letterhead list.
#include <string>
#include <vector>

#include "tests/fuzz/fuzz_support.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vlfuzz::ResetProcess();
  const std::vector<std::string> sections = vlfuzz::Sections(data, size, 3);
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  vlfuzz::WriteFile(tree.System() + "V-DB\\STATUS.LOG", sections[0]);
  vlfuzz::WriteFile(tree.System() + "V-COVER\\MSGDIR.CTL", sections[1]);
  vlfuzz::WriteFile(tree.System() + "V-LETTER\\MSGDIR.CTL", sections[2]);
  vlfuzz::Session session;

  VLSERVERINFOEX server;
  std::vector<VLDEVICEINFOEX> devices(16);
  std::vector<VLLINKINFOEX> links(16);
  std::vector<char> covers(16 * 64), letters(16 * 64);
  uint16_t deviceCount = 0, linkCount = 0, coverCount = 0, letterCount = 0;
  // Room for every record, then room for one and no arrays for the rest.
  for (int round = 0; round < 2; ++round) {
    const bool room = round == 0;
    VLSERVERSTATUSEX status{};
    status.ServerInfoSize = sizeof server;
    status.ServerInfo = &server;
    status.MaxDevices = room ? 16 : 1;
    status.DeviceCount = &deviceCount;
    status.DeviceInfoSize = sizeof(VLDEVICEINFOEX);
    status.Devices = devices.data();
    status.MaxLinks = room ? 16 : 1;
    status.LinkCount = &linkCount;
    status.LinkInfoSize = sizeof(VLLINKINFOEX);
    status.Links = room ? links.data() : nullptr;
    status.MaxCoversheets = room ? 16 : 1;
    status.CoversheetCount = &coverCount;
    status.CoversheetEntrySize = 10;
    status.Coversheets = room ? covers.data() : nullptr;
    status.MaxLetterheads = room ? 16 : 0;
    status.LetterheadCount = &letterCount;
    status.LetterheadEntrySize = 10;
    status.Letterheads = letters.data();
    vlfuzz::Require(vlfuzz::IsResult(VlxGetServerStatusEx(session.handle(), sizeof status, &status)) &&
                        vlfuzz::IsResult(VlxGetServerStatusEx(session.handle(), 80, &status)),
                    "the status reader returns a result code");
  }
  VLSERVERINFO older;
  int16_t count = 0;
  vlfuzz::Require(vlfuzz::IsResult(VlxGetServerStatus(session.handle(), sizeof older, &older, 16,
                                                      &count, nullptr, devices.data())),
                  "the older status reader returns a result code");
  return 0;
}
