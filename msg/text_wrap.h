// Writing a block of subject or cover text as keyword lines of at most 60
// characters of text each.
#pragma once

#include <cstdio>
#include <string>

namespace vl {

class TextWrapper {
 public:
  TextWrapper(FILE* out, const char* keyword) : out_(out), keyword_(keyword) {}

  // Writes one source line. An empty line only adds a pending blank line.
  // The first piece of a line that follows a written line is marked "\n"
  // (a new source line begins), unless the previous line was cut
  // (endsSourceLine false) and this one is its rest.
  void Line(const std::string& text, bool endsSourceLine = true);

 private:
  void Piece(const std::string& piece, bool first);

  FILE* out_;
  const char* keyword_;
  bool continuation_ = false;  // a new source line begins with "\n"
  int pendingBlanks_ = 0;
};

}  // namespace vl
