#include "msg/text_wrap.h"

namespace vl {
namespace {

inline constexpr size_t kPieceChars = 60;

inline bool IsWhite(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

std::string WithoutLeadingWhite(const std::string& text) {
  size_t start = 0;
  while (start < text.size() && IsWhite(text[start])) ++start;
  return text.substr(start);
}

}  // namespace

void TextWrapper::Piece(const std::string& piece, bool first) {
  for (; pendingBlanks_ > 0; --pendingBlanks_) std::fprintf(out_, "%s\r\n", keyword_);
  if (first && continuation_) std::fprintf(out_, "%s \\n%s\r\n", keyword_, piece.c_str());
  else std::fprintf(out_, "%s %s\r\n", keyword_, piece.c_str());
  continuation_ = false;
}

void TextWrapper::Line(const std::string& text, bool endsSourceLine) {
  size_t at = 0;  // the rest of the line starts here
  while (at < text.size() && IsWhite(text[at])) ++at;
  if (at == text.size()) {
    ++pendingBlanks_;
    return;
  }
  if (pendingBlanks_ > 0) continuation_ = false;
  bool first = true;
  while (text.size() - at > kPieceChars) {
    size_t cut = kPieceChars;
    while (cut > 0 && !IsWhite(text[at + cut])) --cut;
    if (cut == 0) cut = kPieceChars;
    Piece(WithoutLeadingWhite(text.substr(at, cut)), first);
    first = false;
    at += cut;
  }
  const std::string rest = WithoutLeadingWhite(text.substr(at));
  if (!rest.empty()) Piece(rest, first);
  continuation_ = endsSourceLine;
}

}  // namespace vl
