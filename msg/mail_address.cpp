// A user's mail address from the system's MAILLIST.INI: GetUserMailAddress.
#include <cstring>
#include <string>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/text.h"
#include "msg/defaults.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

using namespace vl;

namespace {

const struct {
  const char* prefix;
  uint16_t kind;
} kMailPrefixes[] = {
    {"ex:", kMailKindEx},
    {"smtp:", kMailKindSmtp},
    {"not:", kMailKindNot},
    {"grw:", kMailKindGrw},
};

const char* SkipBlanks(const char* text) {
  while (*text == ' ' || *text == '\t') ++text;
  return text;
}

// Splits an "Emailname:" value into its kind and the address after the
// prefix and its blanks.
const char* AddressOf(const char* value, uint16_t* kind) {
  value = SkipBlanks(value);
  for (const auto& p : kMailPrefixes) {
    if (para::StartsWithNoCase(value, p.prefix)) {
      *kind = p.kind;
      return SkipBlanks(value + std::strlen(p.prefix));
    }
  }
  *kind = kMailKindOther;
  return value;
}

void Store(uint16_t* kindOut, char* address, int capacity, uint16_t kind, const char* text) {
  if (kindOut) *kindOut = kind;
  if (address && capacity > 0) CopyBounded(address, static_cast<size_t>(capacity), text);
}

VLRESULT FindMailAddress(const ApiSession& session, uint16_t* kindOut, char* address,
                         int capacity) {
  if (!kindOut && !address) {
    ReportNullArgument(&session, "address");
    return VL_E_INVALID_PARAM;
  }
  const std::string path = std::string(session.systemArea) + "V-DB\\" + "MAILLIST.INI";
  os::FileInfo info;
  const int error = os::GetFileInfo(path.c_str(), &info);
  if (error == os::kFileNotFound || error == os::kPathNotFound) {
    Store(kindOut, address, capacity, kMailKindNone, "");
    return VL_OK;
  }
  para::Opened file = para::OpenShared(path.c_str(), "rb");
  if (!file) return VL_E_FILE_ERROR;
  Store(kindOut, address, capacity, kMailKindNone, "");

  char line[para::kLineSize];
  long paragraph = 0;
  while (para::FindParagraph(file.get(), "[USER]", line, sizeof line, &paragraph)) {
    char name[para::kLineSize] = {};
    char email[para::kLineSize] = {};
    int32_t profile = 0;
    para::ReadText(file.get(), "Veloname:", name, sizeof name, paragraph);
    para::ReadText(file.get(), "Emailname:", email, sizeof email, paragraph);
    para::ReadFlag(file.get(), "Profile:", &profile, paragraph);
    if (profile || !para::EqualNoCase(name, session.userName)) continue;
    uint16_t kind = kMailKindOther;
    const char* text = AddressOf(email, &kind);
    Store(kindOut, address, capacity, kind, text);
  }
  return VL_OK;
}

}  // namespace

namespace vl {

VLRESULT GetUserMailAddress(VLHANDLE handle, uint16_t* kind, char* address, int capacity) {
  CallFrame frame(handle, "GetUserMailAddress", UserRule::Needed);
  frame.OmitClosingTrace();
  return frame.Run([&](ApiSession& session) {
    return FindMailAddress(session, kind, address, capacity);
  });
}

}  // namespace vl
