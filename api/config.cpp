#include "api/config.h"

#include <cstring>

#include "api/diagnostics.h"
#include "api/ini_locator.h"
#include "api/process_state.h"
#include "api/text.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vl {
namespace {

inline constexpr int kAreaValueSize = 256;      // area values keep 255 characters
inline constexpr size_t kWideAreaChars = 255;   // server and system areas
inline constexpr size_t kNarrowAreaChars = 63;  // user and request areas
inline constexpr size_t kAreaCopyChars = 260;   // what GetAreas hands out

struct ExplicitAreas {
  char server[kAreaSize] = {};
  char system[kAreaSize] = {};
  char user[kAreaSize] = {};
  char request[kAreaSize] = {};
  char selectedServer[kAreaSize] = {};
};

ExplicitAreas& Explicit() {
  static ExplicitAreas areas;
  return areas;
}

void StoreArea(char* store, const char* value, size_t keep) {
  CopyBounded(store, keep + 1, value);
  EnsureBackslash(store, kAreaSize);
}

// Reads an area keyword of the paragraph at position, first with a colon,
// then with an equals sign; a found but empty value counts as missing.
std::string ReadArea(FILE* file, long position, const char* name) {
  char value[kAreaValueSize];
  return para::ReadTextEitherForm(file, name, value, sizeof value, position) ? value : "";
}

// Reads "Trace:", "MailTrace:" and "OverRideFrom:" of the "[API]" paragraph.
void ReadApiSettings(const ApiSession& session, FILE* file) {
  ProcessState& process = Process();
  process.apiSettingsRead = true;
  char line[para::kLineSize];
  long position = 0;
  if (para::FindParagraph(file, "[API]", line, sizeof line, &position)) {
    para::ReadFlag(file, "Trace:", &process.traceSetting, position);
    para::ReadFlag(file, "MailTrace:", &process.mailTraceSetting, position);
    para::ReadFlag(file, "OverRideFrom:", &process.overrideFrom, position);
    ApiTrace(&session, "API settings read from VELOMAR.INI");
  }
  std::rewind(file);
}

// The configuration file: the server's, else the client's, else the one in
// the Windows directory of installations before version 9.
VLRESULT LocateConfigFile(const ApiSession& session, std::string* path) {
  if (FindServerIni(path) == 0 || FindClientIni(path) == 0) return VL_OK;
  std::string windows;
  os::WindowsDirectory(&windows);
  char directory[268];
  CopyBounded(directory, windows);
  EnsureBackslash(directory, sizeof directory);
  *path = std::string(directory) + "VELOMAR.INI";
  os::FileInfo info;
  if (os::GetFileInfo(path->c_str(), &info) != os::kOk) {
    ApiReportError(&session,
                   "File %s/%s not found in user profile, program files or windows directory.",
                   "VELOMAR.INI", "VLCLIENT.INI");
    return VL_E_INIT_FAIL;
  }
  ApiReportError(&session,
                 "Attempting to use %s from windows directory. This is a pre version 9 file.",
                 "VELOMAR.INI");
  return VL_OK;
}

VLRESULT ReadConfigFile(ApiSession& session) {
  std::string path;
  if (VLRESULT rc = LocateConfigFile(session, &path)) return rc;
  para::Opened file = para::OpenShared(10, path.c_str(), "rb");
  if (!file) {
    ApiReportError(&session, "Cannot open file %s", path.c_str());
    return VL_E_INIT_FAIL;
  }
  if (!Process().apiSettingsRead) ReadApiSettings(session, file.get());

  char line[para::kLineSize];
  long position = 0;
  if (!para::FindParagraph(file.get(), "[SERVER]", line, sizeof line, &position)) {
    std::rewind(file.get());
    if (!para::FindParagraph(file.get(), "[WORKSTATION]", line, sizeof line, &position)) {
      file.file.reset();
      ApiReportError(&session, "[SERVER]/[WORKSTATION] Paragraph missing from file (%s)",
                     path.c_str());
      return VL_E_INVALID_INI_FILE;
    }
  }
  std::string user = ReadArea(file.get(), position, "AllUserArea");
  if (user.empty()) {
    user = ReadArea(file.get(), position, "UserArea");
    size_t name = user.find("%NAME%");
    if (name != std::string::npos) user.resize(name);
  }
  std::string request = ReadArea(file.get(), position, "RequestArea");
  std::string system = ReadArea(file.get(), position, "SystemArea");
  std::string server = ReadArea(file.get(), position, "ServerArea");
  file.file.reset();

  bool missing = false;
  const struct {
    const std::string& value;
    const char* text;
  } required[] = {{system, "SystemArea line missing from %s file"},
                  {user, "AllUserArea line missing from %s file"},
                  {request, "RequestArea line missing from %s file"}};
  for (const auto& area : required) {
    if (!area.value.empty()) continue;
    ApiReportError(&session, area.text, path.c_str());
    missing = true;
  }
  if (missing) return VL_E_INVALID_INI_FILE;

  StoreArea(session.userArea, user.c_str(), kWideAreaChars);
  StoreArea(session.requestArea, request.c_str(), kWideAreaChars);
  StoreArea(session.systemArea, system.c_str(), kWideAreaChars);
  StoreArea(session.serverArea, server.c_str(), kWideAreaChars);
  return VL_OK;
}

}  // namespace

VLRESULT SetAreas(const char* server, const char* system, const char* user, const char* request) {
  if (!server || !system || !user || !request) return VL_E_INVALID_PARAM;
  ExplicitAreas& areas = Explicit();
  StoreArea(areas.server, server, kWideAreaChars);
  StoreArea(areas.system, system, kWideAreaChars);
  StoreArea(areas.user, user, kNarrowAreaChars);
  StoreArea(areas.request, request, kNarrowAreaChars);
  areas.selectedServer[0] = '\0';
  return VL_OK;
}

void SelectServerAreas(const char* server, const char* system, const char* user,
                       const char* request, const char* name) {
  ExplicitAreas& areas = Explicit();
  StoreArea(areas.server, server, kAreaSize - 1);
  StoreArea(areas.system, system, kAreaSize - 1);
  StoreArea(areas.user, user, kAreaSize - 1);
  StoreArea(areas.request, request, kAreaSize - 1);
  CopyBounded(areas.selectedServer, name);
}

void ClearExplicitAreas() { Explicit() = ExplicitAreas{}; }

VLRESULT GetAreas(char* server, char* system, char* user, char* request) {
  if (!server || !system || !user || !request) return VL_E_INVALID_PARAM;
  const ExplicitAreas& areas = Explicit();
  CopyBounded(server, kAreaCopyChars + 1, areas.server);
  CopyBounded(system, kAreaCopyChars + 1, areas.system);
  CopyBounded(user, kAreaCopyChars + 1, areas.user);
  CopyBounded(request, kAreaCopyChars + 1, areas.request);
  return VL_OK;
}

VLRESULT SetSelectedServerName(const char* name) {
  if (!name) return VL_E_INVALID_PARAM;
  CopyBounded(Explicit().selectedServer, name);
  return VL_OK;
}

VLRESULT GetSelectedServerName(char* buffer, int16_t bufLen) {
  if (!buffer) return VL_E_INVALID_PARAM;
  const char* name = Explicit().selectedServer;
  if (static_cast<int>(std::strlen(name)) >= bufLen) return VL_E_BUFFER_TOO_SMALL;
  std::strcpy(buffer, name);
  return VL_OK;
}

VLRESULT ReadSessionConfig(ApiSession& session) {
  if (session.configRead) return VL_OK;
  const ExplicitAreas& areas = Explicit();
  if (areas.server[0]) {
    CopyBounded(session.serverArea, areas.server);
    CopyBounded(session.systemArea, areas.system);
    CopyBounded(session.userArea, areas.user);
    CopyBounded(session.requestArea, areas.request);
  } else if (VLRESULT rc = ReadConfigFile(session)) {
    return rc;
  }
  session.configRead = 1;
  return VL_OK;
}

}  // namespace vl
