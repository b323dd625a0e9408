// Test helper standing in for the server's system manager: writes the
// command line it was started with to COMMAND.TXT beside itself.
#include <windows.h>

#include <cstdio>
#include <cstring>

int main() {
  char path[MAX_PATH];
  DWORD length = GetModuleFileNameA(nullptr, path, sizeof path);
  char* slash = std::strrchr(path, '\\');
  if (length == 0 || !slash) return 1;
  std::strcpy(slash + 1, "COMMAND.TXT");
  FILE* out = std::fopen(path, "wb");
  if (!out) return 1;
  std::fputs(GetCommandLineA(), out);
  std::fclose(out);
  return 0;
}
