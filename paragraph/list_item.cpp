#include <cstring>

#include "paragraph/paragraph_reader.h"

namespace para {
namespace {

inline bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n'; }

const char* SkipBlanks(const char* p) {
  while (IsBlank(*p)) ++p;
  return p;
}

}  // namespace

ListItem NextListItem(const char* text) {
  const char* end;
  if (*text == '"') {
    const char* closing = std::strchr(text + 1, '"');
    end = closing ? closing + 1 : text + std::strlen(text);
  } else {
    end = text + std::strcspn(text, ", \t\r\n");
  }
  const char* rest = SkipBlanks(end);
  if (*rest == ',') rest = SkipBlanks(rest + 1);
  return ListItem{text, static_cast<size_t>(end - text), *rest ? rest : nullptr};
}

}  // namespace para
