// Shared helpers of the tests: a scratch directory per test, whole-file
// reads and writes, a fax tree, the error-callback recorder and the trace
// log reader. Paths are written with backslashes on every platform.
#pragma once

#include <cstdio>
#include <initializer_list>
#include <string>
#include <vector>

#include "platform/raii.h"

#include "vlapi.h"

namespace vltest {

// A temporary stream holding bytes, positioned at its start.
os::UniqueFile StreamOf(const std::string& bytes);
// Everything a stream holds, read from its start.
std::string Contents(FILE* stream);
// The lines, each ended by CR LF.
std::string Lines(std::initializer_list<const char*> lines);

// The path as the host's file functions take it.
std::string NativePath(const std::string& path);

void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFile(const std::string& path);
bool FileExists(const std::string& path);
void MakeDirectories(const std::string& path);
void RemoveTree(const std::string& path);
std::vector<std::string> ListDirectory(const std::string& directory);

// A fresh, short directory for the running test under the temporary
// directory, ending in a backslash; removed again when the test passes.
class Scratch {
 public:
  Scratch();
  ~Scratch();
  const std::string& Dir() const { return dir_; }
  std::string Path(const std::string& relative) const { return dir_ + relative; }

 private:
  std::string dir_;
};

// A fax system's directories under a scratch directory: SERVER, SYSTEM
// with V-DB, REQUEST and USERS with one directory set per added user.
class FaxTree {
 public:
  explicit FaxTree(const Scratch& scratch);
  std::string Server() const { return root_ + "SERVER\\"; }
  std::string System() const { return root_ + "SYSTEM\\"; }
  std::string Users() const { return root_ + "USERS\\"; }
  std::string Request() const { return root_ + "REQUEST\\"; }
  // Creates USERS\name\ with V-DB, V-OUT and V-IN.
  void AddUser(const std::string& name) const;
  // What a submission of the user needs besides: empty system and user
  // defaults files and an empty out list.
  void PrepareSender(const std::string& name) const;
  // Makes these the process's explicit areas.
  void UseAsExplicitAreas() const;
  // Makes the scratch directory the working directory and the areas the
  // relative paths SERVER\, SYSTEM\, USERS\ and REQUEST\: paths the
  // library upper-cases then resolve on case-sensitive file systems too.
  // The working directory is restored when the tree goes.
  void UseAsRelativeAreas();
  ~FaxTree();
  // A configuration file text naming this tree in paragraph [SERVER] or
  // [WORKSTATION].
  std::string ConfigText(const char* paragraph = "[WORKSTATION]") const;

 private:
  std::string root_;
  std::string home_;  // the working directory to restore, when changed
};

// Every text handed to the error callback since the last Clear.
struct Reported {
  static void VLAPI_CALL Callback(const char* text);
  static std::vector<std::string>& Texts();
  static void Clear() { Texts().clear(); }
  static std::string Last() { return Texts().empty() ? std::string() : Texts().back(); }
};

// Sends the trace log to the scratch directory and turns tracing on.
void TraceInto(const Scratch& scratch);
// The field "S=xxxxxxxx  " that begins the session's trace lines.
std::string SessionField(VLHANDLE handle);
// The trace lines written so far, each without its time, process and thread
// prefix, as "S=xxxxxxxx  text".
std::vector<std::string> TraceLines(const Scratch& scratch);

// Opens a session for user on the explicit areas; fails the test on error.
VLHANDLE LogOn(const char* user, uint16_t lock = 0);

}  // namespace vltest
