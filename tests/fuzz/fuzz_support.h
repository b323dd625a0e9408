// What the fuzz targets share: a fax tree in a private temporary directory,
// the reset of the process-wide state between runs, a logged-on session and
// the splitting of one input into the files it stands for.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "vlapi.h"

namespace vlfuzz {

// The tree of the target's process, made on first use: SERVER\, SYSTEM\
// with V-DB, V-COVER and V-LETTER, REQUEST\ and USERS\JSMITH\ with V-DB,
// V-OUT and V-IN. Paths end in a backslash, as the library writes them.
struct Tree {
  std::string root;
  std::string Server() const { return root + "SERVER\\"; }
  std::string System() const { return root + "SYSTEM\\"; }
  std::string Request() const { return root + "REQUEST\\"; }
  std::string Users() const { return root + "USERS\\"; }
  std::string Out() const { return Users() + "JSMITH\\V-OUT\\"; }
  std::string In() const { return Users() + "JSMITH\\V-IN\\"; }
};
const Tree& TheTree();

// Puts every process-wide setting back as a new process has it, then makes
// the tree the explicit areas and switches the server check off (the
// native build has no server to hold the lock file). Empties the request
// area and both message directories but for their lists.
void ResetProcess();

// JSMITH logged on for one run; logged off at the end of the scope.
class Session {
 public:
  Session();
  ~Session();
  VLHANDLE handle() const { return handle_; }

 private:
  VLHANDLE handle_ = 0;
};

// The input cut at each line "====" into at most count sections (the last
// one takes the rest); missing sections are empty.
std::vector<std::string> Sections(const uint8_t* data, size_t size, size_t count);

// The fields of a text cut at each '|'.
std::vector<std::string> Fields(const std::string& text);
// The count fields of an arguments section: its line, less the line end,
// cut at each '|'; missing fields are empty.
std::vector<std::string> Arguments(const std::string& section, size_t count);

void WriteFile(const std::string& path, const std::string& bytes);
std::string ReadFile(const std::string& path);
// Names of the files in a directory, sorted.
std::vector<std::string> FilesIn(const std::string& directory);

// Whether rc is one of the library's result codes: 0 or 0xF700-0xF730.
bool IsResult(VLRESULT rc);

// Ends the run with a message when a property of the library does not hold,
// so that the fuzzer keeps the input as a finding.
[[noreturn]] void Fail(const char* what);
inline void Require(bool holds, const char* what) {
  if (!holds) Fail(what);
}

}  // namespace vlfuzz
