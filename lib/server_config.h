// The server's view of the configuration: the areas, the mail area, the
// failover partners and this computer's devices paragraph from
// "VELOMAR.INI", and the operating options of the system's "SETUP.INI".
// Reading it also sets up the log writer's file and levels.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace vl {

struct ServerConfig {
  std::string allUserArea, requestArea, serverArea, systemArea, mailArea;  // each ends in '\'
  bool mailAreaGiven = false;
  int32_t manualOdbc = 0;
  std::string computerName;
  std::string primaryServer, primaryDevices;  // devices default "[DEVICES]"
  std::string backupServer, backupDevices;    // devices default "[DEVICES-BACKUP]"
  std::string devicesParagraph = "[DEVICES]";  // this computer's
  uint16_t failoverTimeout = 2;                // 1 to 30
  uint16_t startupTimeout = 5;                 // 5 to 20
  int32_t autoEnrolClient = 0;
  std::string logFile;        // at most 268 characters; empty: none
  uint16_t logKeepDays = 0;   // the log writer's message-log switch
  uint16_t logLevel = 3;      // the log writer's second level
  uint16_t language = 1033;
  std::string languageCode;   // "ENG", "ESP", "DEU", "ITA" or "FRA"
  int32_t serverProgSleepMs = 100;
  int32_t serviceStartTimeout = 600;
  int32_t epsMaxCheckChars = 1000;
  int32_t epsMaxCheckEscs = 200;
  int32_t detectEpson = 1;
};

// The process-wide server configuration.
ServerConfig& ServerSettings();

// Fills the server configuration from the configuration file found for the
// server (else the client's) and the system's setup file. 0 or an internal
// code: 0xF018 not found, 0xF019 paragraph missing, 0xF00C cannot open,
// 0xF025 required line missing, 0xF026 setup file cannot be opened. With
// setup given, the setup file is handed over open and rewound.
int ReadServerConfig(FILE** setup = nullptr);

// The same from the configuration file at iniPath.
int ReadServerConfigFrom(const std::string& iniPath, FILE** setup = nullptr);

}  // namespace vl
