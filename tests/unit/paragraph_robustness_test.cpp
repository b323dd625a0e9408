// Arbitrary bytes never crash the paragraph readers: random files of
// headers, keyword lines, long lines, control and high bytes, NULs.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

#include "paragraph/paragraph_reader.h"
#include "paragraph/rewrite.h"
#include "platform/raii.h"
#include "tests/support/test_support.h"

namespace {

std::string RandomParagraphFile(std::mt19937& random) {
  static const char* const pieces[] = {
      "[USER]", "[DOCUMENT]", "[", "]", "File:", "Name:", "Username=", ":", "=", ";", " ",
      "\t", "\r\n", "\n", "\r", "\"", ",", "%%[TEXT]", "YES", "-12", "65536", "10:30"};
  std::string text;
  const int parts = static_cast<int>(random() % 200);
  for (int i = 0; i < parts; ++i) {
    switch (random() % 4) {
      case 0: text += pieces[random() % (sizeof pieces / sizeof pieces[0])]; break;
      case 1: text.push_back(static_cast<char>(random() % 256)); break;
      case 2: text.append(random() % 400, static_cast<char>('a' + random() % 26)); break;
      default: text += "\r\n"; break;
    }
  }
  return text;
}

void ReadEverything(FILE* f) {
  char line[para::kLineSize], text[para::kLineSize];
  uint16_t u16;
  int16_t i16;
  int32_t i32;
  int64_t i64;
  long position = 0;
  while (para::FindParagraph(f, nullptr, line, sizeof line, &position)) {
    for (const char* keyword : {"File:", "Name:", "Username", static_cast<const char*>(nullptr)}) {
      para::ReadText(f, keyword, text, sizeof text, position);
      para::ReadU16(f, keyword, &u16, position);
      para::ReadI16(f, keyword, &i16, position);
      para::ReadI32(f, keyword, &i32, position);
      para::ReadI64(f, keyword, &i64, position);
      para::ReadFlag(f, keyword, &i32, position);
      para::ReadTimeOfDay(f, keyword, &i32, position, ';');
    }
    if (para::FindKeyword(f, nullptr, line, sizeof line, position, 0)) {
      for (const char* p = para::ValueOf(line); p;) p = para::NextListItem(p).next;
    }
    para::NextLineText(f, "Name:", text, sizeof text);
  }
}

TEST(ParagraphRobustness, RandomFilesAreReadAndRewrittenWithoutHarm) {
  vltest::Scratch scratch;
  const std::string path = scratch.Path("RANDOM.INI");
  std::mt19937 random(20261121);
  for (int round = 0; round < 300; ++round) {
    const std::string bytes = RandomParagraphFile(random);
    vltest::WriteFile(path, bytes);
    {
      os::UniqueFile f(std::fopen(vltest::NativePath(path).c_str(), "rb"));
      ASSERT_TRUE(f);
      ReadEverything(f.get());
    }
    ASSERT_TRUE(para::SetParagraphValue(path.c_str(), "[USER]", "Name:", "X", round % 2 == 0))
        << "round " << round;
    ASSERT_TRUE(para::SetGroupValues(path.c_str(), "[DOCUMENT]", "File:", "A.TXT", false,
                                     "Comment:", "c", 'F'))
        << "round " << round;
    EXPECT_FALSE(vltest::FileExists(scratch.Path("RANDOM.TMP")));
  }
}

}  // namespace
