// Another process that holds a file open, as the server or another client
// would, until the test lets it go (Windows only).
#pragma once

#include <string>

namespace vltest {

class FileHolder {
 public:
  // Starts the helper program "file_holder.exe" beside the test program,
  // which opens path with the library's shared opener in mode and reports
  // when it holds the file. opened() tells whether the open succeeded.
  FileHolder(const std::string& path, const std::string& mode);
  ~FileHolder();
  FileHolder(const FileHolder&) = delete;
  FileHolder& operator=(const FileHolder&) = delete;

  bool opened() const { return opened_; }
  // Closes the file and ends the helper.
  void Release();

 private:
  void* process_ = nullptr;
  void* input_ = nullptr;  // the helper's standard input; closing it releases the file
  bool opened_ = false;
};

}  // namespace vltest
