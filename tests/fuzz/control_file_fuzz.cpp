// The control-file readers under arbitrary control files.
// Input: "filter|routing|max|messageId", "====", the control file MSG1.CTL
// (written in both message directories).
#include <string>
#include <vector>

#include "api/vlapi_internal.h"
#include "msg/addressees.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

uint16_t Number(const std::string& text) {
  return static_cast<uint16_t>(std::strtoul(text.c_str(), nullptr, 10));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vlfuzz::ResetProcess();
  const std::vector<std::string> sections = vlfuzz::Sections(data, size, 2);
  const std::vector<std::string> a = vlfuzz::Arguments(sections[0], 4);
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  vlfuzz::WriteFile(tree.Out() + "MSG1.CTL", sections[1]);
  vlfuzz::WriteFile(tree.In() + "MSG1.CTL", sections[1]);
  vlfuzz::Session session;
  const VLHANDLE h = session.handle();

  const uint16_t filter = Number(a[0]), routing = Number(a[1]);
  const int16_t max = static_cast<int16_t>(Number(a[2]) % 64);
  std::vector<VLMSGHISTORYEX> history(64);
  std::vector<VLMSGHISTORY> older(64);
  std::vector<MsgAddresseeRecord> addressees(64);
  uint16_t count = 0;
  for (uint16_t directory : {VL_DIR_OUT, VL_DIR_IN}) {
    for (VLRESULT rc : {
             VlxGetMsgHistoryEx(h, directory, "MSG1", filter, routing, max, &count,
                                sizeof(VLMSGHISTORYEX), history.data()),
             VlxGetMsgHistoryEx(h, directory, "MSG1", filter, routing, -1, &count, 100,
                                history.data()),
             VlxGetMsgHistory(h, directory, "MSG1", filter, routing, max, &count, older.data()),
             VlxGetMsgAddrs(h, directory, "MSG1", static_cast<uint16_t>(max), &count,
                            addressees.data())})
      vlfuzz::Require(vlfuzz::IsResult(rc), "a reader returns a result code");
  }
  VLMSGINFOEX info{};
  std::string documents(VL_DOCUMENT_SLOTS * VL_DOCUMENT_SLOT_SIZE, 'x');
  std::string attachments = documents;
  info.Body[0] = 'M', info.Body[1] = 'S', info.Body[2] = 'G', info.Body[3] = '1';
  vlfuzz::Require(VlxGetDocuments(h, &info, documents.data(), attachments.data()) == VL_OK,
                  "the documents of a control file that opens are read");
  // A message identity is compared with the file's before a request is written.
  vlfuzz::Require(vlfuzz::IsResult(VlxHoldMsgEx(h, VL_DIR_OUT, "MSG1", a[3].c_str())),
                  "message control returns a result code");
  return 0;
}
