// The word tables of the message files: data formats, message and user
// states, message types and device states.
#pragma once

#include <cstdint>

namespace vl {

struct DataFormat {
  uint16_t code;
  const char* word;       // the "Format:" word
  const char* extension;  // the data file's extension
};

// The first row with the code, or none.
const DataFormat* FormatByCode(uint16_t code);
// The first row whose extension equals extension without regard to case
// ("???" included: callers refuse the row of code 0 themselves), or none.
const DataFormat* FormatByExtension(const char* extension);
// The first row whose word equals word without regard to case, or none.
const DataFormat* FormatByWord(const char* word);

inline constexpr uint16_t kFormatAscii = 2;
inline constexpr uint16_t kFormatEpson = 8;

// Message status of a two-letter "Status:" word; 0 when unknown. With
// preview, 30 (OK) becomes 32 and 31 (failed) 33.
uint16_t MessageStatusOf(const char* word, bool preview);
inline bool IsCompletedStatus(uint16_t status) { return status >= 30 && status <= 33; }

// User status of a "UserStatus:" word: "OK" 1, "Aw" 2, "Wa" 3; else 0.
uint16_t UserStatusOf(const char* word);

// Message type of a "MsgType:" word. The three message types run on into
// the device status words, so "Er" gives 2; an unknown word gives fallback.
uint16_t MessageTypeOf(const char* word, uint16_t fallback);

// Device status of a "StatusExt:" word (the same table from "Un" on).
uint16_t DeviceStatusOf(const char* word, uint16_t fallback);

}  // namespace vl
