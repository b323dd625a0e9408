// The addressees of a message as its control file's "[ADDRESSEES]"
// paragraph gives them, and what the control file readers share.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <optional>
#include <string>
#include <string_view>

#include "api/session.h"
#include "paragraph/open_shared.h"
#include "vlapi.h"

// One addressee, 200 bytes, as VlxGetMsgAddrs stores it for the automation
// layer. Texts are NUL-terminated and cut to their fields.
struct MsgAddresseeRecord {
  uint16_t status;         // addressee status number
  char name[31];           // "Name:"
  char organisation[41];   // "Organisation:"
  char number[41];         // fax number, LAN user or SMS number from "Via:"
  char reserved1;
  uint16_t type;           // 1 fax, 2 LAN, 3 SMS, 0 other
  char custom[81];         // the value of "Field: Custom"
  char reserved2;
};

static_assert(sizeof(MsgAddresseeRecord) == 200);
static_assert(offsetof(MsgAddresseeRecord, name) == 2);
static_assert(offsetof(MsgAddresseeRecord, organisation) == 33);
static_assert(offsetof(MsgAddresseeRecord, number) == 74);
static_assert(offsetof(MsgAddresseeRecord, type) == 116);
static_assert(offsetof(MsgAddresseeRecord, custom) == 118);

namespace vl {

inline constexpr uint16_t kAddresseeFax = 1;
inline constexpr uint16_t kAddresseeLan = 2;
inline constexpr uint16_t kAddresseeSms = 3;

// The status number of an "AddrStatus:" word, compared without regard to
// case; "He" is 2 for a held message and 4 otherwise. None for an unknown
// word.
std::optional<uint16_t> AddresseeStatusOf(const char* word, bool held);

// Copies text into a record's field, cut to the field, and terminates.
template <size_t N>
void CopyCut(char (&out)[N], std::string_view text) {
  const size_t length = text.size() < N - 1 ? text.size() : N - 1;
  if (length > 0) std::memcpy(out, text.data(), length);
  out[length] = '\0';
}

// Checks a message's body name as the control file readers do: present, 1
// to 8 characters and not "MSGDIR". Reports and returns 0xF700, or 0.
VLRESULT CheckControlFileBody(const ApiSession& session, const char* body);

// Opens the message's control file for reading: the out directory for
// selector 1, the in directory otherwise, the path upper-cased, retried for
// 10 seconds. path receives the path. Reports and returns 0xF70E when the
// file does not exist, 0xF718 when it cannot be opened, else 0.
VLRESULT OpenControlFile(const ApiSession& session, uint16_t selector, const char* body,
                         para::Opened* control, std::string* path);

}  // namespace vl
