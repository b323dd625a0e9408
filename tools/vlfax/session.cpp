#include "session.h"

#include <windows.h>

#include "errors.h"

namespace vlfax {

// Without the user lock: the user's other programs, and other vlfax runs of
// a batch, may log on at the same time.
Session::Session(const std::string& userName) {
  Check(VlxAPIInit(&handle_, userName.c_str(), 0, nullptr), "logon as " + userName);
}

Session::~Session() {
  if (handle_) VlxAPIClosedown(handle_);
}

std::string CurrentAccount() {
  // GetUserNameExA lives in secur32.dll, which is loaded only for this call.
  using GetUserNameExFn = BOOLEAN(WINAPI*)(int, LPSTR, PULONG);
  constexpr int kNameSamCompatible = 2;
  if (HMODULE secur32 = LoadLibraryA("secur32.dll")) {
    auto getName = reinterpret_cast<GetUserNameExFn>(
        reinterpret_cast<void (*)()>(GetProcAddress(secur32, "GetUserNameExA")));
    char name[512];
    ULONG size = sizeof name;
    bool ok = getName && getName(kNameSamCompatible, name, &size);
    FreeLibrary(secur32);
    if (ok) return name;
  }
  char name[257];
  DWORD size = sizeof name;
  if (GetUserNameA(name, &size)) return name;
  return {};
}

}  // namespace vlfax
