// The paragraph file primitives under arbitrary files and arguments.
// Input: "header|keyword|value|keyword2|value2|flags", "====", the file.
// Checked besides: the block cursor yields exactly the lines and positions
// of ReadLine; a rewrite leaves no work file, and a simple value it sets
// reads back.
#include <cstring>
#include <string>
#include <vector>

#include "paragraph/line_cursor.h"
#include "paragraph/paragraph_reader.h"
#include "paragraph/rewrite.h"
#include "platform/raii.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

using vlfuzz::Require;

const std::string& FilePath() {
  static const std::string path = vlfuzz::TheTree().System() + "V-DB\\FUZZ.INI";
  return path;
}

os::UniqueFile Open() {
  std::string native = FilePath();
  for (char& c : native)
    if (c == '\\') c = '/';
  return os::UniqueFile(std::fopen(native.c_str(), "rb"));
}

void CursorAgreesWithReadLine() {
  os::UniqueFile byLine = Open(), byBlock = Open();
  para::LineCursor cursor(byBlock.get());
  char line[para::kLineSize];
  long start = 0;
  while (para::ReadLine(byLine.get(), line, sizeof line, &start)) {
    Require(cursor.Next(), "the cursor reads as many lines as ReadLine");
    Require(std::strcmp(line, cursor.line()) == 0 && start == cursor.start(),
            "the cursor reads the lines and positions of ReadLine");
  }
  Require(!cursor.Next(), "the cursor ends where ReadLine ends");
}

void Search(const std::vector<std::string>& a) {
  os::UniqueFile file = Open();
  FILE* f = file.get();
  char buffer[para::kLineSize];
  long position = 0;
  const char* header = a[0].empty() ? nullptr : a[0].c_str();
  const char* keyword = a[1].empty() ? nullptr : a[1].c_str();
  while (para::FindParagraph(f, header, buffer, sizeof buffer, &position)) {
    uint16_t u16;
    int16_t i16;
    int32_t i32 = 0;
    int64_t i64;
    para::ReadText(f, keyword, buffer, sizeof buffer, position);
    para::ReadText(f, keyword, buffer, 3, position, a[5].empty() ? 0 : a[5][0]);
    para::ReadU16(f, keyword, &u16, position);
    para::ReadI16(f, keyword, &i16, position);
    para::ReadI32(f, keyword, &i32, position);
    para::ReadI64(f, keyword, &i64, position);
    para::ReadFlag(f, keyword, &i32, position);
    para::ReadTimeOfDay(f, keyword, &i32, position);
    std::fseek(f, position, SEEK_SET);
    para::NextLineText(f, a[1].c_str(), buffer, sizeof buffer);
    para::NextLineU16(f, a[1].c_str(), &u16);
    para::NextLineFlag(f, a[1].c_str(), &i32);
    while (para::FindKeyword(f, keyword, buffer, sizeof buffer, 0, '#')) {
    }
  }
}

void Items(const std::string& text) {
  int16_t number;
  int32_t flag;
  para::FlagFromText(text.c_str(), &flag);
  para::NumberFromText(text.c_str(), &number);
  const char* end = text.c_str() + text.size();
  for (para::ListItem item = para::NextListItem(text.c_str());;
       item = para::NextListItem(item.next)) {
    Require(item.item + item.length <= end, "a list item lies inside its text");
    if (!item.next) break;
    Require(item.next > item.item && item.next <= end, "list items move on");
  }
}

// A value that the rewrite writes on a line of its own and the reader
// gives back unchanged.
bool Simple(const std::string& header, const std::string& keyword, const std::string& value) {
  auto plain = [](const std::string& s) {
    for (char c : s)
      if (!para::KeptInLine(static_cast<unsigned char>(c)) || c == '[' || c == ';') return false;
    return true;
  };
  return header.size() >= 2 && header[0] == '[' && header.back() == ']' && plain(header.substr(1)) &&
         keyword.size() >= 2 && (keyword.back() == ':' || keyword.back() == '=') &&
         keyword[0] != ' ' && plain(keyword) &&
         keyword.find_first_of(":=") == keyword.size() - 1 && plain(value) &&
         (value.empty() || (value[0] != ' ' && value.back() != ' ')) &&
         header.size() + keyword.size() + value.size() < 200;
}

void Rewrite(const std::vector<std::string>& a, const std::string& bytes) {
  const std::string& path = FilePath();
  std::string work;
  para::WorkFileName(path.c_str(), &work);
  const bool addAnother = a[5].find('a') != std::string::npos;
  const bool set = para::SetParagraphValue(path.c_str(), a[0].c_str(), a[1].c_str(),
                                           a[2].c_str(), addAnother);
  Require(vlfuzz::ReadFile(work).empty() && vlfuzz::FilesIn(vlfuzz::TheTree().System() + "V-DB\\").size() == 1,
          "a rewrite leaves no work file");
  if (set && !addAnother && Simple(a[0], a[1], a[2])) {
    os::UniqueFile file = Open();
    char value[para::kLineSize];
    long position = 0;
    Require(para::FindParagraph(file.get(), a[0].c_str(), value, sizeof value, &position) &&
                para::ReadText(file.get(), a[1].c_str(), value, sizeof value, position) &&
                a[2] == value,
            "a value set reads back");
  }
  vlfuzz::WriteFile(path, bytes);
  para::SetGroupValues(path.c_str(), a[0].c_str(), a[1].c_str(), a[2].c_str(),
                       a[5].find('k') != std::string::npos, a[3].c_str(), a[4].c_str(),
                       a[5].empty() ? 0 : a[5][0]);
  Require(vlfuzz::FilesIn(vlfuzz::TheTree().System() + "V-DB\\").size() == 1,
          "a group rewrite leaves no work file");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vlfuzz::ResetProcess();
  const std::vector<std::string> sections = vlfuzz::Sections(data, size, 2);
  const std::vector<std::string> a = vlfuzz::Arguments(sections[0], 6);
  para::SetEightBitText(a[5].find('7') == std::string::npos);
  vlfuzz::WriteFile(FilePath(), sections[1]);
  CursorAgreesWithReadLine();
  Search(a);
  Items(a[2]);
  Rewrite(a, sections[1]);
  return 0;
}
