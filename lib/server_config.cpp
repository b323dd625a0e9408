// Reading the server's configuration: the areas of "VELOMAR.INI", then the
// failover partners, workstation and operating options of the system's
// "SETUP.INI".
#include "lib/server_config.h"

#include <cstring>
#include <utility>

#include "api/ini_locator.h"
#include "api/internal_codes.h"
#include "api/text.h"
#include "lib/log_writer.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vl {
namespace {

const char kIniName[] = "VELOMAR.INI";
const char kDatabaseDirectory[] = "V-DB\\";
constexpr int kAreaBytes = 256;        // an area keeps 255 characters, its backslash included
constexpr int kUserAreaBytes = 280;    // "UserArea:" keeps 279
constexpr int kPartnerBytes = 256;     // "PrimaryServer:" and "BackupServer:"
constexpr int kLogFileBytes = 268;     // "LogFile:" keeps 267
constexpr size_t kLogPathLimit = 269;  // a placed log file's path stays below this
constexpr int16_t kIniRetrySeconds = 10;
constexpr int16_t kSetupRetrySeconds = 30;

// The language identifiers the server knows, with the primary language each
// stands for; the first is the one for every other value.
struct Language {
  int primary;
  uint16_t id;
  const char* code;
};
const Language kLanguages[] = {
    {9, 1033, "ENG"}, {10, 1034, "ESP"}, {7, 1031, "DEU"}, {12, 1036, "FRA"}, {16, 1040, "ITA"},
};

// An area of the paragraph at position ("name:", else "name="), with a
// backslash appended when it fits in size; "" when it has no value.
std::string ReadArea(FILE* file, long position, const char* name, int size) {
  char value[kUserAreaBytes];
  if (!para::ReadTextEitherForm(file, name, value, size, position)) return std::string();
  EnsureBackslash(value, static_cast<size_t>(size));
  return value;
}

// The directory without its trailing backslash.
std::string WithoutBackslash(std::string directory) {
  if (!directory.empty() && directory.back() == '\\') directory.pop_back();
  return directory;
}

// Logs that the configuration file lacks a required keyword line.
void LogMissingLine(const char* keyword) {
  LogWrite(kLogSevere, "%s line missing from %s file", keyword, kIniName);
}

// Derives the server, all-user and mail areas left empty and checks the
// required ones, logging every problem; false when any is missing.
bool CompleteAreas(ServerConfig& config, const std::string& userArea) {
  bool complete = true;
  if (config.systemArea.empty()) {
    LogMissingLine("SystemArea");
    complete = false;
  }
  if (config.serverArea.empty()) {
    // The system area's sibling directory "server".
    const std::string system = WithoutBackslash(config.systemArea);
    const size_t last = system.rfind('\\');
    if (last == std::string::npos) {
      LogMissingLine("ServerArea");
      complete = false;
    } else {
      config.serverArea = system.substr(0, last) + "\\server\\";
    }
  }
  if (config.allUserArea.empty()) {
    if (userArea.empty()) {
      LogMissingLine("AllUserArea");
      complete = false;
    } else {
      // The directory holding the user's directory; a name without any
      // directory stays as it is.
      const std::string user = WithoutBackslash(userArea);
      const size_t last = user.rfind('\\');
      config.allUserArea = last == std::string::npos ? user : user.substr(0, last + 1);
    }
  }
  if (config.requestArea.empty()) {
    LogMissingLine("RequestArea");
    complete = false;
  }
  if (config.mailArea.empty()) {
    // "MAIL" beside the server area; mailAreaGiven stays false.
    if (!config.serverArea.empty()) {
      const std::string server = WithoutBackslash(config.serverArea);
      const size_t last = server.rfind('\\');
      config.mailArea = last == std::string::npos ? server + "\\" : server.substr(0, last + 1);
    }
    config.mailArea += "MAIL\\";
  }
  return complete;
}

// Splits "NAME PARAGRAPH" at its first blank into a partner's computer name
// and devices paragraph; no paragraph gives defaultDevices.
void SplitPartner(const char* value, const char* defaultDevices, std::string* name,
                  std::string* devices) {
  const char* blank = std::strchr(value, ' ');
  *name = blank ? std::string(value, blank) : std::string(value);
  *devices = blank ? blank + 1 : "";
  if (devices->empty()) *devices = defaultDevices;
}

// Reads "[FAILOVER]" and chooses this computer's devices paragraph: the
// backup's when the backup names it, else the primary's when the primary
// does, else "[DEVICES]".
void ReadFailover(FILE* setup, ServerConfig& config) {
  config.primaryDevices = "[DEVICES]";
  config.backupDevices = "[DEVICES-BACKUP]";
  char line[para::kLineSize];
  long position = 0;
  if (!para::FindParagraph(setup, "[FAILOVER]", line, sizeof line, &position)) return;
  char value[kPartnerBytes];
  if (para::ReadText(setup, "PrimaryServer:", value, sizeof value, position))
    SplitPartner(value, "[DEVICES]", &config.primaryServer, &config.primaryDevices);
  if (para::ReadText(setup, "BackupServer:", value, sizeof value, position))
    SplitPartner(value, "[DEVICES-BACKUP]", &config.backupServer, &config.backupDevices);
  // An absent partner names no computer.
  auto isThisComputer = [&config](const std::string& partner) {
    return !partner.empty() && para::EqualNoCase(partner.c_str(), config.computerName.c_str());
  };
  if (isThisComputer(config.primaryServer)) config.devicesParagraph = config.primaryDevices;
  if (isThisComputer(config.backupServer)) config.devicesParagraph = config.backupDevices;

  uint16_t seconds = 0;
  if (para::ReadU16(setup, "Timeout:", &seconds, position))
    config.failoverTimeout = seconds >= 1 && seconds <= 30 ? seconds : 2;
  if (para::ReadU16(setup, "StartupTimeout:", &seconds, position))
    config.startupTimeout = seconds >= 5 && seconds <= 20 ? seconds : 5;
}

// "[WORKSTATION]" "AutoEnrolClient:"; a line without a value leaves it off.
void ReadWorkstation(FILE* setup, ServerConfig& config) {
  std::rewind(setup);
  char line[para::kLineSize];
  long position = 0;
  if (!para::FindParagraph(setup, "[WORKSTATION]", line, sizeof line, &position)) return;
  char value[para::kLineSize];
  if (para::ReadText(setup, "AutoEnrolClient:", value, sizeof value, position) && *value)
    para::FlagFromText(value, &config.autoEnrolClient);
}

// The log file: a name with a directory as it stands, a bare name in the
// system area's "V-DB\"; "" (logged) when that path would be too long.
std::string PlaceLogFile(const std::string& systemArea, const char* name) {
  if (std::strpbrk(name, "\\/:")) return name;
  if (systemArea.size() + std::strlen(kDatabaseDirectory) + std::strlen(name) >= kLogPathLimit) {
    LogWrite(kLogSevere, "Invalid log file name '%s%s%s'", systemArea.c_str(), kDatabaseDirectory,
             name);
    return std::string();
  }
  return systemArea + kDatabaseDirectory + name;
}

// The language identifier of the system's default language.
uint16_t SystemLanguage() {
  const int primary = os::SystemPrimaryLanguage();
  for (const Language& language : kLanguages)
    if (language.primary == primary) return language.id;
  return kLanguages[0].id;
}

// A "Language:" value: a known identifier with its code, anything else
// English.
void SetLanguage(ServerConfig& config, uint16_t id) {
  const Language* chosen = &kLanguages[0];
  for (const Language& language : kLanguages)
    if (language.id == id) chosen = &language;
  config.language = chosen->id;
  config.languageCode = chosen->code;
}

// "[OPTIONS]": the log file and levels, the language and the server's
// operating options; each missing line keeps its default.
void ReadOptions(FILE* setup, ServerConfig& config) {
  std::rewind(setup);
  char line[para::kLineSize];
  long position = 0;
  const bool present = para::FindParagraph(setup, "[OPTIONS]", line, sizeof line, &position);
  char logFile[kLogFileBytes] = "";
  if (present) para::ReadText(setup, "LogFile:", logFile, sizeof logFile, position);
  config.logFile = PlaceLogFile(config.systemArea, *logFile ? logFile : "SERVER.LOG");

  // Without a "Language:" line only the identifier follows the system; the
  // code stays as it was.
  uint16_t language = 0;
  if (present && para::ReadU16(setup, "Language:", &language, position))
    SetLanguage(config, language);
  else
    config.language = SystemLanguage();
  if (!present) return;

  para::ReadU16(setup, "LogKeepDays: ", &config.logKeepDays, position);
  para::ReadU16(setup, "LogLevel: ", &config.logLevel, position);
  const struct {
    const char* keyword;
    int32_t ServerConfig::*item;
  } numbers[] = {{"ServerProgSleepMS:", &ServerConfig::serverProgSleepMs},
                 {"ServiceStartTimeout:", &ServerConfig::serviceStartTimeout},
                 {"EPSMaxCheckChars:", &ServerConfig::epsMaxCheckChars},
                 {"EPSMaxCheckEscs:", &ServerConfig::epsMaxCheckEscs}};
  for (const auto& number : numbers)
    para::ReadI32(setup, number.keyword, &(config.*number.item), position);
  para::ReadFlag(setup, "DetectEpson:", &config.detectEpson, position);
}

}  // namespace

ServerConfig& ServerSettings() {
  static ServerConfig config;
  return config;
}

int ReadServerConfig(FILE** setup) {
  if (setup) *setup = nullptr;
  std::string path;
  if (FindServerIni(&path) != 0 && FindClientIni(&path) != 0) {
    LogWrite(kLogSevere, "ERROR - File %s not found", kIniName);
    return kInternalNotFound;
  }
  return ReadServerConfigFrom(path, setup);
}

int ReadServerConfigFrom(const std::string& iniPath, FILE** setup) {
  if (setup) *setup = nullptr;
  ServerConfig& config = ServerSettings();
  // Every item starts from its default, except the language code, which
  // only a "Language:" line changes.
  std::string languageCode = std::move(config.languageCode);
  config = ServerConfig{};
  config.languageCode = std::move(languageCode);

  para::Opened ini = para::OpenShared(kIniRetrySeconds, iniPath.c_str(), "rb");
  if (!ini) {
    LogWrite(kLogSevere, "ERROR - Can't open file %s", iniPath.c_str());
    return kInternalFileError;
  }
  char line[para::kLineSize];
  long position = 0;
  if (!para::FindParagraph(ini.get(), "[SERVER]", line, sizeof line, &position) &&
      !para::FindParagraph(ini.get(), "[WORKSTATION]", line, sizeof line, &position)) {
    ini.file.reset();
    LogWrite(kLogSevere, "ERROR - [SERVER] Paragraph missing from %s file", kIniName);
    return kInternalNoParagraph;
  }
  config.allUserArea = ReadArea(ini.get(), position, "AllUserArea", kAreaBytes);
  config.requestArea = ReadArea(ini.get(), position, "RequestArea", kAreaBytes);
  config.serverArea = ReadArea(ini.get(), position, "ServerArea", kAreaBytes);
  config.systemArea = ReadArea(ini.get(), position, "SystemArea", kAreaBytes);
  config.mailArea = ReadArea(ini.get(), position, "MailArea", kAreaBytes);
  config.mailAreaGiven = !config.mailArea.empty();
  // "UserArea:" has only its colon form.
  char userValue[kUserAreaBytes] = "";
  para::ReadText(ini.get(), "UserArea:", userValue, sizeof userValue, position);
  if (*userValue) EnsureBackslash(userValue, sizeof userValue);
  const std::string userArea = userValue;
  para::ReadFlag(ini.get(), "ManualODBC:", &config.manualOdbc, position);
  ini.file.reset();
  if (!CompleteAreas(config, userArea)) return kInternalRequiredLineMissing;

  const std::string setupPath = config.systemArea + kDatabaseDirectory + "SETUP.INI";
  para::Opened setupFile = para::OpenShared(kSetupRetrySeconds, setupPath.c_str(), "rb");
  if (!setupFile) {
    LogWrite(kLogSevere, "ERROR - Unable to open file %s", setupPath.c_str());
    return kInternalSetupOpenError;
  }
  config.computerName = os::ComputerName();
  ReadFailover(setupFile.get(), config);
  ReadWorkstation(setupFile.get(), config);
  ReadOptions(setupFile.get(), config);

  LogState& log = Log();
  log.fileName = config.logFile;
  log.secondLevel = static_cast<int16_t>(config.logLevel);
  log.messageLogSwitch = static_cast<int16_t>(config.logKeepDays);
  if (setup) {
    std::rewind(setupFile.get());
    *setup = setupFile.file.release();
  }
  return 0;
}

}  // namespace vl
