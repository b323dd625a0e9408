// Writing a message's control file: "[DOCUMENT]", "[MESSAGE]", "[OPTIONS]"
// with the wrapped subject and cover text, and "[ADDRESSEES]" translated
// from the submit file's addressing lines.
#pragma once

#include <cstdio>
#include <string>

#include "api/session.h"
#include "msg/message_options.h"

namespace vl {

// Where a block of text (subject or cover text) comes from: lines of the
// submit file at position, or, with position -1, the file named file (none
// when that is empty too).
struct TextSource {
  long position = -1;
  std::string file;
};

// Writes the whole control file of body to out. submit stands at the first
// addressing line and is left at the "%%" line that ends them. 0, 0xF70A
// (write or text file errors) or 0xF716 (addressing errors), reported.
VLRESULT WriteControlFile(const ApiSession& session, FILE* out, const char* body,
                          const MessageOptions& options, FILE* submit, const TextSource& subject,
                          const TextSource& cover);

}  // namespace vl
