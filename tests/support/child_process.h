// Programs beside the test program, run as child processes (Windows only).
#pragma once

#include <string>

namespace vltest {

// The full path of a program in the test program's directory.
std::string ProgramBeside(const std::string& name);

class ChildProcess {
 public:
  // Starts the program beside the test program with the arguments.
  ChildProcess(const std::string& program, const std::string& arguments);
  ~ChildProcess();  // ends a child that is still running
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  bool started() const { return process_ != nullptr; }
  // Waits up to timeoutMs for the child; its exit code, or -1.
  int Wait(int timeoutMs);

 private:
  void* process_ = nullptr;
};

}  // namespace vltest
