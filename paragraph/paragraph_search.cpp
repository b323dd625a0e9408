#include <cstring>

#include "paragraph/paragraph_reader.h"

namespace para {

bool FindParagraph(FILE* stream, const char* header, char* buffer, int size, long* position) {
  const long start = std::ftell(stream);
  while (ReadLine(stream, buffer, size)) {
    if (IsHeader(buffer) && (!header || StartsWithNoCase(buffer, header))) {
      if (position) *position = std::ftell(stream);
      return true;
    }
  }
  std::fseek(stream, start, SEEK_SET);
  buffer[0] = '\0';
  return false;
}

bool FindKeyword(FILE* stream, const char* keyword, char* buffer, int size, long startPosition,
                 char stopChar) {
  long start = startPosition;
  if (startPosition != 0) {
    if (std::fseek(stream, startPosition, SEEK_SET) != 0) {
      buffer[0] = '\0';
      return false;
    }
  } else {
    start = std::ftell(stream);
  }
  while (ReadLine(stream, buffer, size)) {
    if (IsHeader(buffer) || (stopChar != 0 && buffer[0] == stopChar)) break;
    if (!IsContentLine(buffer)) continue;
    if (!keyword || StartsWithNoCase(buffer, keyword)) return true;
  }
  std::fseek(stream, start, SEEK_SET);
  buffer[0] = '\0';
  return false;
}

}  // namespace para
