// Whether the server runs, and starting it: VlxCheckServer and
// VlxStartServer.
#include <cstring>
#include <string>

#include "api/call_frame.h"
#include "api/config.h"
#include "api/diagnostics.h"
#include "api/process_state.h"
#include "api/text.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

using namespace vl;

namespace {

inline constexpr size_t kMaxParagraphChars = 280;
inline constexpr size_t kMaxArgumentChars = 80;
inline constexpr size_t kMaxProgramPathChars = 268;
inline constexpr size_t kMaxCommandChars = 121;

// The server holds its lock file open for writing while it runs: an open
// that denies other writers then fails.
VLRESULT LockFileState(const ApiSession& session) {
  const std::string lock = std::string(session.requestArea) + "VELOMAR.LOK";
  if (os::CheckAccess(lock.c_str(), false) != os::kOk) return VL_E_SERVER_NOT_RUNNING;
  os::OpenRequest request;
  request.read = true;
  request.share = os::Share::ReadOnly;
  os::OpenedStream probe = os::OpenStream(lock.c_str(), request);
  return probe.file ? VL_E_SERVER_NOT_RUNNING : VL_OK;
}

VLRESULT StartFailure(const ApiSession& session, const char* format, const char* a,
                      const char* b = nullptr) {
  ApiReportError(&session, format, a, b);
  return VL_E_SERVER_INI_FILE_ERROR;
}

// Reads the "Sysman:" value of paragraph in the system's "SETUP.INI".
VLRESULT ReadSysman(const ApiSession& session, const std::string& paragraph, std::string* value) {
  const std::string path = std::string(session.systemArea) + "V-DB\\" + "SETUP.INI";
  para::Opened setup = para::OpenShared(20, path.c_str(), "rb");
  if (!setup) {
    ApiReportError(&session, "Unable to open file %s", path.c_str());
    return VL_E_SERVER_INI_FILE_ERROR;
  }
  char line[para::kLineSize];
  long position = 0;
  if (!para::FindParagraph(setup.get(), paragraph.c_str(), line, sizeof line, &position))
    return StartFailure(session, "Section %s not found in file %s", paragraph.c_str(), "SETUP.INI");
  char sysman[para::kLineSize];
  if (!para::ReadText(setup.get(), "Sysman:", sysman, sizeof sysman, position))
    return StartFailure(session, "%s Sysman: line not found in file %s", paragraph.c_str(),
                        "SETUP.INI");
  *value = sysman;
  return VL_OK;
}

VLRESULT StartServer(ApiSession& session, const char* paragraphName) {
  VLRESULT running = VlxCheckServer(session.handle);
  if (running == VL_OK) return VL_E_SERVER_RUNNING;
  if (running != VL_E_SERVER_NOT_RUNNING) return running;

  std::string paragraph = paragraphName && *paragraphName ? paragraphName : "[SERVER]";
  if (paragraph.size() > kMaxParagraphChars || paragraph.front() != '[' ||
      paragraph.back() != ']') {
    ApiReportError(&session, "Server paragraph name invalid");
    return VL_E_INVALID_PARAM;
  }
  paragraph = UpperCase(paragraph);

  std::string sysman;
  if (VLRESULT rc = ReadSysman(session, paragraph, &sysman)) return rc;
  para::ListItem name = para::NextListItem(sysman.c_str());
  const std::string programName(name.item, name.length);
  if (!name.next)
    return StartFailure(session, "%s Sysman: line invalid in file %s", paragraph.c_str(),
                        "SETUP.INI");
  para::ListItem second = para::NextListItem(name.next);
  std::string program(second.item, second.length);
  if (!program.empty() && program.front() == '"') program.erase(0, 1);
  if (!program.empty() && program.back() == '"') program.pop_back();
  std::string arguments;
  if (size_t blank = program.find(' '); blank != std::string::npos) {
    arguments = program.substr(blank + 1);
    program.resize(blank);
  }

  std::string argumentText;
  if (arguments.empty()) {
    if (paragraph.size() > kMaxArgumentChars)
      return StartFailure(session, "Paragraph name too long for program %s", programName.c_str());
    argumentText = paragraph;
  } else {
    if (arguments.size() + paragraph.size() + 1 > kMaxArgumentChars)
      return StartFailure(session, "Invalid argument string for program %s", programName.c_str());
    argumentText = arguments + " " + paragraph;
  }

  const bool absolute = (program.size() > 1 && program[1] == ':') ||
                        (!program.empty() && program[0] == '\\');
  std::string path = absolute ? program : std::string(session.serverArea) + program;
  if (path.size() >= kMaxProgramPathChars + 1)
    return StartFailure(session, "Invalid path for program %s", programName.c_str());
  if (argumentText.size() + 3 > kMaxCommandChars)
    return StartFailure(session, "Invalid argument string for program %s", programName.c_str());

  // The command line is a blank, then a further blank and the arguments.
  const std::string commandLine = argumentText.empty() ? " " : "  " + argumentText;
  if (int error = os::StartDetachedProcess(path.c_str(), commandLine.c_str())) {
    ApiReportError(&session, "Windows error 0x%X running program '%s'",
                   static_cast<unsigned>(error), path.c_str());
    return VL_E_NO_START_SYSMAN;
  }
  return VL_OK;
}

}  // namespace

extern "C" {

VLRESULT VLAPI_CALL VlxCheckServer(VLHANDLE handle) {
  return Guarded(nullptr, [&]() -> VLRESULT {
    SessionPtr session = handle ? SessionFromHandle(handle) : nullptr;
    ApiTrace(session.get(), "VlxCheckServer");
    if (Process().checkServerDisabled) {
      ApiTrace(session.get(), "VlxCheckServer - return OK (no check)");
      return VL_OK;
    }
    if (handle && !session) return VL_E_NOT_INIT;
    if (!handle) {
      // A temporary session built from the configuration alone.
      try {
        session = std::make_shared<ApiSession>();
      } catch (const std::bad_alloc&) {
        return VL_E_MALLOC_FAILED;
      }
      session->magic = kSessionMagic;
      if (VLRESULT rc = ReadSessionConfig(*session)) return rc;
    }
    VLRESULT rc = LockFileState(*session);
    if (rc) ApiTrace(session.get(), "...VlxCheckServer - return 0x%X", static_cast<unsigned>(
                                                                        static_cast<uint16_t>(rc)));
    else ApiTrace(session.get(), "...VlxCheckServer - return OK");
    return rc;
  });
}

VLRESULT VLAPI_CALL VlxStartServer(VLHANDLE handle, uint16_t, const char* paragraph) {
  return CallFrame(handle, "VlxStartServer", UserRule::NotNeeded)
      .Enter("VlxStartServer - ParaName = '%s'", paragraph ? paragraph : "(default)")
      .Run([&](ApiSession& session) { return StartServer(session, paragraph); });
}

}  // extern "C"
