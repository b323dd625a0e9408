// Creating files with fresh, unique short names: "~" + a 4-character
// prefix + a 3-character counter + an extension.
#pragma once

#include <string>

#include "api/session.h"

namespace vl {

enum class UniqueFileResult {
  Created = 0,
  BadArguments = 1,
  TooManyOpenFiles = 2,
  PathNotFound = 3,
  AllExist = 4,
  Failed = 5,
};

// Creates an empty file "~PPPPnnn.EXT" in directory (which ends in a
// backslash) whose base name no other file in the directory has, with any
// extension. name receives "~PPPPnnn.EXT".
UniqueFileResult MakeUniqueFile(const char* prefix, const char* extension, const char* directory,
                                std::string* name);

// Checks the arguments of CreateAutoFile: a 4-character prefix, a 1 to 3
// character extension, a path of 1 to 256 characters (256 only when it
// ends in a backslash). 0, or 0xF700 reported.
VLRESULT CheckAutoFileArguments(const ApiSession& session, const char* prefix,
                                const char* extension, const char* path);

// Creates a unique file as MakeUniqueFile does in path (a backslash is
// appended when missing), skipping names that the directory's message list
// "MSGDIR.CTL" still references. name receives the base name without its
// extension. Arguments and failures are reported; result 0 or 0xF700,
// 0xF706, 0xF707, 0xF708.
VLRESULT CreateAutoFile(const ApiSession& session, const char* prefix, const char* extension,
                        const char* path, std::string* name);

}  // namespace vl
