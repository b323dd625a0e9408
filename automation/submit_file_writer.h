// The submit file of a new message: every value of the message, already in
// 8-bit text, written line by line in the order the submission reads them.
#pragma once

#include <windows.h>

#include <cstdint>
#include <cstdio>
#include <string>
#include <vector>

namespace vlauto {

struct SubmitRecipient {
  long type = 0;  // 1 fax, 2 LAN, 3 SMS; any other is written as fax
  std::string to, organisation, address, custom;
};

struct SubmitValues {
  std::string from, subject, comment, customField, charge, user, coverSheet, letterhead;
  std::string covertext, text;
  long format = 0, priority = 0, quality = 0, sendTime = 0;
  uint16_t header = 0;
  bool deleteAfterSend = false, hold = false, preview = false, broadcast = false;
  int32_t sentItemsFax = 0, sentItemsSms = 0;
  DATE after = 0;
  std::vector<SubmitRecipient> recipients;
  std::vector<std::string> attachments, files;
};

// The process-wide switches the file depends on: sent items (0 or 1 decide
// for every message, other values leave it to the message) and
// delete-failed-faxes (0 marks a message to delete as "OK").
struct SubmitSwitches {
  int32_t sentItems = -1;
  int32_t deleteFailedFaxes = 1;
};

// The whole file, each line ended by CR LF. E_FAIL when the After date
// cannot be converted (nothing is written then), else S_OK.
HRESULT WriteSubmitFile(const SubmitValues& message, const SubmitSwitches& switches,
                        std::string* out);

// The same bytes written to stream, flushed. E_FAIL also when the stream
// does not take them.
HRESULT WriteSubmitFile(const SubmitValues& message, const SubmitSwitches& switches, FILE* stream);

}  // namespace vlauto
