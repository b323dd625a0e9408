// Reading a paragraph file line by line, fast, while keeping the byte
// position of every line. Lines are cleaned and cut exactly as ReadLine
// does; the reading goes through a block buffer of its own, so the stream's
// position is undefined afterwards: callers seek before using it again.
#pragma once

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "paragraph/paragraph_reader.h"

namespace para {

class LineCursor {
 public:
  // Starts at the stream's current position.
  explicit LineCursor(FILE* stream);
  // Reads bytes already in memory (size of them), which stand at file
  // position 0 and must outlive the cursor.
  LineCursor(const char* bytes, size_t size);
  // The block points into the cursor's own storage: never copied or moved.
  LineCursor(const LineCursor&) = delete;
  LineCursor& operator=(const LineCursor&) = delete;

  // Reads the next cleaned line; false at the end of the file.
  bool Next();
  // Makes the next Next() give the current line again.
  void Unread() { pending_ = true; }

  const char* line() const { return line_; }
  long start() const { return start_; }  // where the current line begins

 private:
  bool Fill();

  FILE* stream_;            // none for bytes in memory
  std::vector<char> storage_;  // the block of a stream
  char* block_;
  size_t begin_ = 0;  // first unread byte of the block
  size_t end_ = 0;    // end of the bytes in the block
  long blockStart_;   // file position of block_[0]
  bool atEnd_ = false;
  char line_[kLineSize] = {};
  long start_ = 0;
  bool pending_ = false;
};

// The values of a fixed set of keywords in one paragraph, whose lines may
// come in any order; the first line that begins with a keyword gives its
// value.
class ParagraphFields {
 public:
  explicit ParagraphFields(std::vector<const char*> keywords);
  // Reads the lines up to the next header, which is left unread, or the end.
  void Collect(LineCursor& cursor);
  // The value of keyword number index ("" when its line has no separator);
  // none when no line begins with it.
  const char* Value(size_t index) const {
    return found_[index] ? values_[index].data() : nullptr;
  }
  // Where the line that gave keyword number index begins in the file.
  long LineStart(size_t index) const { return starts_[index]; }

 private:
  std::vector<const char*> keywords_;
  std::vector<std::array<char, kLineSize>> values_;
  std::vector<bool> found_;
  std::vector<long> starts_;
};

}  // namespace para
