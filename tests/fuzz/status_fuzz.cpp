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
  // Full records, then the smallest ones and entry sizes that cut texts.
  for (int round = 0; round < 2; ++round) {
    const bool full = round == 0;
    VLSERVERSTATUSEX status{};
    status.ServerInfoSize = full ? sizeof server : 2;
    status.ServerInfo = &server;
    status.MaxDevices = 16;
    status.DeviceCount = &deviceCount;
    status.DeviceInfoSize = full ? sizeof(VLDEVICEINFOEX) : 13;
    status.Devices = devices.data();
    status.MaxLinks = 16;
    status.LinkCount = &linkCount;
    status.LinkInfoSize = full ? sizeof(VLLINKINFOEX) : 13;
    status.Links = links.data();
    status.MaxCoversheets = 16;
    status.CoversheetCount = &coverCount;
    status.CoversheetEntrySize = full ? 64 : 3;
    status.Coversheets = covers.data();
    status.MaxLetterheads = 16;
    status.LetterheadCount = &letterCount;
    status.LetterheadEntrySize = full ? 64 : 1;
    status.Letterheads = letters.data();
    vlfuzz::Require(vlfuzz::IsResult(VlxGetServerStatusEx(session.handle(), sizeof status, &status)) &&
                        vlfuzz::IsResult(VlxGetServerStatusEx(session.handle(), 80, &status)),
                    "the status reader returns a result code");
    vlfuzz::Require(deviceCount <= 16 && linkCount <= 16 && coverCount <= 16 && letterCount <= 16,
                    "no more records are counted than fit");
  }
  VLSERVERINFO older;
  int16_t count = 0;
  vlfuzz::Require(vlfuzz::IsResult(VlxGetServerStatus(session.handle(), sizeof older, &older, 16,
                                                      &count, nullptr, devices.data())),
                  "the older status reader returns a result code");
  return 0;
}
