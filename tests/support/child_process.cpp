#include "tests/support/child_process.h"

#ifdef _WIN32
#include <windows.h>

namespace vltest {

std::string ProgramBeside(const std::string& name) {
  char module[MAX_PATH];
  DWORD length = GetModuleFileNameA(nullptr, module, sizeof module);
  std::string path(module, length);
  return path.substr(0, path.find_last_of('\\') + 1) + name;
}

ChildProcess::ChildProcess(const std::string& program, const std::string& arguments) {
  std::string line = "\"" + ProgramBeside(program) + "\" " + arguments;
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION info;
  if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &info))
    return;
  CloseHandle(info.hThread);
  process_ = info.hProcess;
}

int ChildProcess::Wait(int timeoutMs) {
  if (!process_) return -1;
  if (WaitForSingleObject(process_, static_cast<DWORD>(timeoutMs)) != WAIT_OBJECT_0) return -1;
  DWORD code = 0;
  GetExitCodeProcess(process_, &code);
  return static_cast<int>(code);
}

ChildProcess::~ChildProcess() {
  if (!process_) return;
  if (WaitForSingleObject(process_, 0) != WAIT_OBJECT_0) TerminateProcess(process_, 1);
  CloseHandle(process_);
}

}  // namespace vltest

#else

namespace vltest {

std::string ProgramBeside(const std::string& name) { return name; }
ChildProcess::ChildProcess(const std::string&, const std::string&) {}
int ChildProcess::Wait(int) { return -1; }
ChildProcess::~ChildProcess() = default;

}  // namespace vltest

#endif
