#include "server/request_writer.h"

#include <cstdio>
#include <string>

#include "api/diagnostics.h"
#include "api/directory_check.h"
#include "api/unique_file.h"
#include "msg/msg_dir.h"
#include "paragraph/open_shared.h"
#include "platform/os.h"

namespace vl {
namespace {

struct RequestKind {
  int16_t code;
  const char* server;
  const char* type;  // none: no Type line
  bool message;      // User and File lines
  bool directory;    // a Directory line
};

const RequestKind kRequests[] = {
    {kRequestSend, "QUEUEMAN", "SEND", true, false},
    {kRequestDelete, "QUEUEMAN", "DELETE", true, true},
    {kRequestHold, "QUEUEMAN", "HOLD", true, true},
    {kRequestRelease, "QUEUEMAN", "RELEASE", true, true},
    {kRequestRush, "QUEUEMAN", "RUSH", true, true},
    {kRequestShutdown, "SYSMAN", "SHUTDOWN", false, false},
    {kRequestRestart, "SYSMAN", "RESTART", false, false},
};
const RequestKind kUnknownRequest = {0, "???", nullptr, false, false};

const RequestKind& KindOf(int16_t code) {
  for (const RequestKind& kind : kRequests)
    if (kind.code == code) return kind;
  return kUnknownRequest;
}

void WriteLines(FILE* out, const ApiSession& session, const RequestKind& kind, uint16_t selector,
                const char* body) {
  std::fprintf(out, "[VELOMAR]\r\nType: Request\r\nRevision: A\r\n\r\n[REQUEST]\r\nServer: %s\r\n",
               kind.server);
  if (kind.type) std::fprintf(out, "Type: %s\r\n", kind.type);
  if (kind.message)
    std::fprintf(out, "User: %s\r\nFile: %s.CTL\r\n", session.userName, body ? body : "");
  if (kind.directory)
    std::fprintf(out, "Directory: %s\r\n", selector == kDirectoryOut ? "V-OUT" : "V-IN");
}

}  // namespace

VLRESULT WriteRequest(const ApiSession& session, int16_t code, uint16_t selector,
                      const char* body) {
  if (VLRESULT rc = CheckDirectory(&session, session.requestArea)) {
    ApiReportError(&session, "Error checking %s: 0x%4.4x", session.requestArea,
                   static_cast<unsigned>(static_cast<uint16_t>(rc)));
    return rc;
  }
  std::string name;
  if (VLRESULT rc = CreateAutoFile(session, "RQST", "TMP", session.requestArea, &name)) return rc;
  const std::string temp = std::string(session.requestArea) + name + ".TMP";
  const std::string complete = std::string(session.requestArea) + name + ".CTL";

  // Until the rename, the temporary file goes on every way out.
  auto removeTemp = os::scope_exit([&] { os::RemoveFile(temp.c_str()); });
  para::Opened request = para::OpenShared(temp.c_str(), "wb");
  if (!request) {
    ApiReportError(&session, "Unable to open file %s", temp.c_str());
    return VL_E_CANNOT_SUBMIT;
  }
  WriteLines(request.get(), session, KindOf(code), selector, body);
  const bool written = std::fflush(request.get()) == 0 && !std::ferror(request.get());
  const bool closed = std::fclose(request.file.release()) == 0;
  if (!written || !closed) {
    ApiReportError(&session, "Error writing to file %s", temp.c_str());
    return VL_E_CANNOT_SUBMIT;
  }
  if (os::RenameFile(temp.c_str(), complete.c_str()) != os::kOk) {
    ApiReportError(&session, "Unable to rename request file to %s", complete.c_str());
    return VL_E_CANNOT_SUBMIT;
  }
  removeTemp.dismiss();
  return VL_OK;
}

}  // namespace vl
