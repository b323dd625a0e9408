// Process-wide settings of the library: plain globals, set before use.
#pragma once

#include <cstdint>

namespace vl {

// The application identifier that makes tracing follow "MailTrace:".
inline constexpr int32_t kMailApplicationId = 13398;

struct ProcessState {
  // Tracing.
  int32_t traceSwitch = 0;    // forces tracing on for every session
  int32_t applicationId = 0;  // kMailApplicationId selects the mail setting
  // The "[API]" settings of the configuration file, read once per process.
  bool apiSettingsRead = false;
  int32_t traceSetting = 0;
  int32_t mailTraceSetting = 0;
  int32_t overrideFrom = 0;
  // Escape switches.
  int32_t checkServerDisabled = 0;
  // The control file's "SentItems:" line: 0 always NO, 1 always YES, -1 by
  // message, anything else no line. The escape sets it to 0 or 1.
  int32_t sentItemsMode = -1;
  // Whether characters 128-255 of subject and cover text files are kept.
  int32_t eightBitTextFiles = 0;
  int32_t deleteFailedFaxes = 1;
  // Whether changes of a user's lists touch the in directory's list file.
  int32_t touchMessageList = 1;
  // Directory of the trace file and of the automation layer's temporary
  // files; empty means the system temporary directory.
  char apiTempDirectory[257] = {};
  // The sent-items values last read from a USER.INI (1 = keep).
  int32_t userSentItemsFax = 1;
  int32_t userSentItemsSMS = 1;
};

ProcessState& Process();

}  // namespace vl
