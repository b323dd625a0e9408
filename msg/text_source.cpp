#include "msg/text_source.h"

#include <cstring>

#include "paragraph/paragraph_reader.h"

namespace vl {

const TextBlock kSubject = {"Subject:", {"Subject:", nullptr}, "%%[SUBJECT]", 280};
const TextBlock kCover = {"Covertext:", {"Covertext:", "Note:"}, "%%[COVERTEXT]",
                          std::string::npos};

namespace {

bool StartsWithAny(const std::string& line, const char* const (&words)[2]) {
  for (const char* word : words)
    if (word && para::StartsWithNoCase(line.c_str(), word)) return true;
  return false;
}

}  // namespace

bool ReadSubmitLine(FILE* in, std::string* line, size_t maxChars, long* lineStart) {
  *lineStart = std::ftell(in);
  line->clear();
  int c = std::getc(in);
  if (c == EOF) return false;
  for (; c != EOF && c != '\n'; c = std::getc(in))
    if (line->size() < maxChars) line->push_back(static_cast<char>(c));
  line->push_back('\0');  // room for the terminator
  para::CleanLine(line->data(), static_cast<int>(line->size() - 1));
  line->resize(std::strlen(line->c_str()));
  return true;
}

void ForEachSubmitTextLine(FILE* submit, long position, const TextBlock& block,
                           const std::function<bool(const std::string&)>& take) {
  const long back = std::ftell(submit);
  std::fseek(submit, position, SEEK_SET);
  bool sectionSeen = false;
  std::string line;
  long start = 0;
  bool more = true;
  while (more && ReadSubmitLine(submit, &line, block.maxChars, &start)) {
    if (line.empty() || line[0] == ';') continue;
    if (StartsWithAny(line, block.lineWords)) {
      const char* value = para::ValueOf(line.c_str());
      more = take(value ? value : "");
      continue;
    }
    if (!para::StartsWithNoCase(line.c_str(), block.section)) break;
    if (sectionSeen) continue;  // a second head is skipped
    sectionSeen = true;
    while (more && ReadSubmitLine(submit, &line, block.maxChars, &start)) {
      if (line.rfind("%%[", 0) == 0) {
        std::fseek(submit, start, SEEK_SET);
        break;
      }
      more = take(line);
    }
  }
  std::fseek(submit, back, SEEK_SET);
}

}  // namespace vl
