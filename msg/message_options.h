// The options of one message: filled from the user's defaults and the
// submit file, written to the message's control file.
#pragma once

#include <cstdint>

namespace vl {

inline constexpr int kDocumentSlots = 30;
inline constexpr int kDocumentSlotSize = 1024;

struct MessageOptions {
  uint16_t Format = 0;  // data format code
  char Comment[41] = {};
  char From[31] = {};
  char FromTelephone[41] = {};
  char FromFax[41] = {};
  char FromEmail[41] = {};
  char FromParam[41] = {};
  char Coversheet[13] = {};
  char Letterhead[13] = {};
  char Priority[11] = {};
  char After[18] = {};
  char Header[11] = {};
  char Quality[7] = {};
  char Chargecode[41] = {};
  char Attach[391] = {};  // comma-separated list
  char NotifyMail[151] = {};
  char QSMessageID[257] = {};
  int32_t Preview = 0;
  int32_t Hold = 0;
  int32_t DeleteFaxIfOK = 0;
  int32_t DeleteFax = 0;
  int32_t DeleteSMSIfOK = 0;
  int32_t DeleteSMS = 0;
  int32_t AbortAfterPreview = 0;
  int32_t FaxBroadcast = 0;
  int32_t SentItemsFax = 0;  // 1 = keep
  int32_t SentItemsSMS = 0;
  uint16_t MsgType = 1;      // 1 fax, 2 LAN, 3 SMS
  char Organisation[41] = {};
  char Custom[101] = {};
  char Documents[kDocumentSlots][kDocumentSlotSize] = {};
};

inline constexpr uint16_t kMessageTypeFax = 1;
inline constexpr uint16_t kMessageTypeLan = 2;
inline constexpr uint16_t kMessageTypeSms = 3;

}  // namespace vl
