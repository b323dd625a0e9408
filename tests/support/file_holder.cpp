#include "tests/support/file_holder.h"

#include <gtest/gtest.h>

#ifdef _WIN32
#include <windows.h>

#include "platform/win32/raii_win.h"
#include "tests/support/child_process.h"

namespace vltest {

FileHolder::FileHolder(const std::string& path, const std::string& mode) {
  SECURITY_ATTRIBUTES inherit = {sizeof inherit, nullptr, TRUE};
  HANDLE childIn = nullptr, toChild = nullptr, fromChild = nullptr, childOut = nullptr;
  if (!CreatePipe(&childIn, &toChild, &inherit, 0) ||
      !CreatePipe(&fromChild, &childOut, &inherit, 0)) {
    ADD_FAILURE() << "cannot create pipes";
    return;
  }
  os::UniqueHandle childInOwner(childIn), childOutOwner(childOut), fromChildOwner(fromChild);
  SetHandleInformation(toChild, HANDLE_FLAG_INHERIT, 0);
  SetHandleInformation(fromChild, HANDLE_FLAG_INHERIT, 0);
  input_ = toChild;

  std::string line = "\"" + ProgramBeside("file_holder.exe") + "\" \"" + path + "\" " + mode;
  STARTUPINFOA startup = {};
  startup.cb = sizeof startup;
  startup.dwFlags = STARTF_USESTDHANDLES;
  startup.hStdInput = childIn;
  startup.hStdOutput = childOut;
  startup.hStdError = GetStdHandle(STD_ERROR_HANDLE);
  PROCESS_INFORMATION info;
  if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr,
                      &startup, &info)) {
    ADD_FAILURE() << "cannot start " << line;
    return;
  }
  CloseHandle(info.hThread);
  process_ = info.hProcess;
  childOutOwner.reset();  // so that the read below ends if the helper dies

  std::string reply;
  char c;
  DWORD read = 0;
  while (ReadFile(fromChild, &c, 1, &read, nullptr) && read == 1 && c != '\n') reply.push_back(c);
  opened_ = reply.rfind("held", 0) == 0;
}

void FileHolder::Release() {
  if (input_) {
    CloseHandle(static_cast<HANDLE>(input_));
    input_ = nullptr;
  }
  if (process_) {
    if (WaitForSingleObject(static_cast<HANDLE>(process_), 10000) != WAIT_OBJECT_0)
      TerminateProcess(static_cast<HANDLE>(process_), 1);
    CloseHandle(static_cast<HANDLE>(process_));
    process_ = nullptr;
  }
}

FileHolder::~FileHolder() { Release(); }

}  // namespace vltest

#else

namespace vltest {

FileHolder::FileHolder(const std::string&, const std::string&) {
  ADD_FAILURE() << "holding a file for another process needs Windows sharing modes";
}
void FileHolder::Release() {}
FileHolder::~FileHolder() = default;

}  // namespace vltest

#endif
