#include "paragraph/line_cursor.h"

#include <algorithm>
#include <cstring>

namespace para {
namespace {

inline constexpr size_t kBlockSize = 64 * 1024;

inline char Lower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c + 32) : c; }

}  // namespace

LineCursor::LineCursor(FILE* stream)
    : stream_(stream), storage_(kBlockSize), block_(storage_.data()),
      blockStart_(std::ftell(stream)) {}

LineCursor::LineCursor(const char* bytes, size_t size)
    : stream_(nullptr), block_(const_cast<char*>(bytes)), end_(size), blockStart_(0),
      atEnd_(true) {}

// Moves the unread bytes to the front and reads more behind them.
bool LineCursor::Fill() {
  if (atEnd_) return false;
  std::memmove(block_, block_ + begin_, end_ - begin_);
  blockStart_ += static_cast<long>(begin_);
  end_ -= begin_;
  begin_ = 0;
  size_t got = std::fread(block_ + end_, 1, storage_.size() - end_, stream_);
  if (got == 0) atEnd_ = true;
  end_ += got;
  return got > 0;
}

bool LineCursor::Next() {
  if (pending_) {
    pending_ = false;
    return true;
  }
  // Find the line end, reading more as needed; a line longer than the block
  // keeps only what the line buffer takes.
  const size_t keep = kLineSize - 1;
  size_t length = 0;     // bytes of the line kept
  long lineStart = -1;
  for (;;) {
    if (begin_ == end_ && !Fill()) {
      if (lineStart < 0) return false;
      break;
    }
    if (lineStart < 0) lineStart = blockStart_ + static_cast<long>(begin_);
    const char* bytes = block_ + begin_;
    const size_t available = end_ - begin_;
    const char* lineEnd = static_cast<const char*>(std::memchr(bytes, '\n', available));
    const size_t taken = lineEnd ? static_cast<size_t>(lineEnd - bytes) + 1 : available;
    const size_t copied = std::min(taken, keep - length);
    std::memcpy(line_ + length, bytes, copied);
    length += copied;
    begin_ += taken;
    if (lineEnd) break;
  }
  start_ = lineStart;
  CleanLine(line_, static_cast<int>(length));
  return true;
}

ParagraphFields::ParagraphFields(std::vector<const char*> keywords)
    : keywords_(std::move(keywords)), values_(keywords_.size()), found_(keywords_.size()),
      starts_(keywords_.size()) {}

void ParagraphFields::Collect(LineCursor& cursor) {
  std::fill(found_.begin(), found_.end(), false);
  while (cursor.Next()) {
    const char* line = cursor.line();
    if (IsHeader(line)) {
      cursor.Unread();
      break;
    }
    if (!IsContentLine(line)) continue;
    const char first = Lower(line[0]);
    for (size_t k = 0; k < keywords_.size(); ++k) {
      if (Lower(keywords_[k][0]) != first || !StartsWithNoCase(line, keywords_[k])) continue;
      if (!found_[k]) {
        const char* value = ValueOf(line);
        char* out = values_[k].data();
        size_t i = 0;
        for (; value && value[i]; ++i) out[i] = value[i];
        out[i] = '\0';
        found_[k] = true;
        starts_[k] = cursor.start();
      }
      break;
    }
  }
}

}  // namespace para
