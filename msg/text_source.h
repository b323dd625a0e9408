// Reading the subject and cover text blocks of a submit file.
#pragma once

#include <cstdio>
#include <functional>
#include <string>

namespace vl {

struct TextBlock {
  const char* keyword;       // the control file keyword: "Subject:" or "Covertext:"
  const char* lineWords[2];  // submit file lines that contribute their value
  const char* section;       // the section head whose lines all contribute
  size_t maxChars;           // submit file lines are read up to this length
};

extern const TextBlock kSubject;
extern const TextBlock kCover;

// Reads one line of at most maxChars characters (the rest of a longer line
// is skipped) and cleans it as the paragraph reader does. lineStart
// receives where it began. False at the end of the file.
bool ReadSubmitLine(FILE* in, std::string* line, size_t maxChars, long* lineStart);

// Hands each text line of the block at position to take, until take
// returns false or the block ends: the values of its keyword lines, and the
// lines of its first section. The stream is put back where it was.
void ForEachSubmitTextLine(FILE* submit, long position, const TextBlock& block,
                           const std::function<bool(const std::string&)>& take);

}  // namespace vl
