// Reading a paragraph file line by line while keeping the byte position of
// every line, without asking the stream for it.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "paragraph/paragraph_reader.h"

namespace vl {

class LineCursor {
 public:
  // Starts at the stream's current position.
  explicit LineCursor(FILE* stream) : stream_(stream), next_(std::ftell(stream)) {}

  // Reads the next cleaned line; false at the end of the file.
  bool Next() {
    if (pending_) {
      pending_ = false;
      return true;
    }
    start_ = next_;
    long consumed = 0;
    if (!para::ReadLineCounted(stream_, line_, sizeof line_, &consumed)) return false;
    next_ += consumed;
    return true;
  }
  // Makes the next Next() give the current line again.
  void Unread() { pending_ = true; }

  const char* line() const { return line_; }
  long start() const { return start_; }  // where the current line begins
  FILE* stream() const { return stream_; }

 private:
  FILE* stream_;
  char line_[para::kLineSize] = {};
  long start_ = 0;
  long next_ = 0;
  bool pending_ = false;
};

// The content lines of one paragraph, kept to look keywords up in any order.
class ParagraphLines {
 public:
  // Reads the lines up to the next header, which is left unread, or the end.
  void Collect(LineCursor& cursor) {
    text_.clear();
    starts_.clear();
    while (cursor.Next()) {
      if (para::IsHeader(cursor.line())) {
        cursor.Unread();
        break;
      }
      if (!para::IsContentLine(cursor.line())) continue;
      starts_.push_back(text_.size());
      text_.append(cursor.line());
      text_.push_back('\0');
    }
  }
  // The value of the first line that begins with keyword ("" when the line
  // has no separator); none when no line does.
  const char* Value(const char* keyword) const {
    for (size_t start : starts_) {
      const char* line = text_.data() + start;
      if (!para::StartsWithNoCase(line, keyword)) continue;
      const char* value = para::ValueOf(line);
      return value ? value : "";
    }
    return nullptr;
  }

 private:
  std::string text_;
  std::vector<size_t> starts_;
};

}  // namespace vl
