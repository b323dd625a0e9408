// Reading paragraph files: cleaned lines, searches, typed values, list items
// and the block-buffered line cursor. Arbitrary files are the fuzz target's.
#include <gtest/gtest.h>

#include <cstdio>
#include <random>
#include <string>

#include "paragraph/line_cursor.h"
#include "paragraph/paragraph_reader.h"
#include "platform/raii.h"
#include "tests/support/test_support.h"

namespace {

using vltest::StreamOf;

std::string NextLine(FILE* f) {
  char line[para::kLineSize];
  return para::ReadLine(f, line, sizeof line) ? line : "<eof>";
}

TEST(ReadLine, CutsLongLinesAndCleansControlBytesAndTrailingBlanks) {
  const std::string x280(280, 'x'), y280(280, 'y');
  auto f = StreamOf(std::string(300, 'x') + "\r\nnext\r\n" + y280 + "\r\na\tb\x01" "c\x7f" +
                    "d  \t \r\n" + std::string("x\0y\n", 4) + "lf only\n\r\nlast");
  for (const std::string& want :
       {x280, std::string("next"), y280, std::string("a b c d"), std::string("x y"),
        std::string("lf only"), std::string(), std::string("last"), std::string("<eof>")})
    EXPECT_EQ(NextLine(f.get()), want);
}

TEST(ReadLine, EightBitSwitchKeepsOrBlanksHighBytes) {
  const std::string line = "\xe9t\xe9 \x9c\xa3\xff\r\n";
  auto on = StreamOf(line);
  EXPECT_EQ(NextLine(on.get()), "\xe9t\xe9 \x9c\xa3\xff");
  para::SetEightBitText(false);
  auto off = StreamOf(line);
  EXPECT_EQ(NextLine(off.get()), " t  \x9c\xa3");  // 156 and 163 are always kept
  para::SetEightBitText(true);
}

TEST(FindParagraph, MatchesHeaderPrefixWithoutRegardToCase) {
  auto f = StreamOf("[USERS]\r\nA: 1\r\n[user]\r\nB: 2\r\n[USER] old\r\nC: 3\r\n");
  char line[para::kLineSize];
  long position = 0;
  ASSERT_TRUE(para::FindParagraph(f.get(), "[USER]", line, sizeof line, &position));
  EXPECT_STREQ(line, "[user]");
  EXPECT_EQ(position, 23);
  ASSERT_TRUE(para::FindParagraph(f.get(), "[USER]", line, sizeof line));
  EXPECT_STREQ(line, "[USER] old");
  EXPECT_FALSE(para::FindParagraph(f.get(), "[USER]", line, sizeof line));
  EXPECT_STREQ(line, "");
  EXPECT_EQ(NextLine(f.get()), "C: 3");  // put back where the search began
  std::rewind(f.get());
  ASSERT_TRUE(para::FindParagraph(f.get(), nullptr, line, sizeof line));
  EXPECT_STREQ(line, "[USERS]");
}

TEST(FindKeyword, SearchesOnlyTheCurrentParagraph) {
  auto f = StreamOf("[A]\r\n; Name: comment\r\n Name: indented\r\nNames: x\r\nname:   x\r\n"
                    "Name: second\r\n[B]\r\nOther: y\r\n");
  char line[para::kLineSize];
  long position = 0;
  ASSERT_TRUE(para::FindParagraph(f.get(), "[A]", line, sizeof line, &position));
  ASSERT_TRUE(para::FindKeyword(f.get(), "Name:", line, sizeof line, 0, 0));
  EXPECT_STREQ(line, "name:   x");
  EXPECT_STREQ(para::ValueOf(line), "x");
  ASSERT_TRUE(para::FindKeyword(f.get(), "Name:", line, sizeof line, 0, 0));
  EXPECT_STREQ(line, "Name: second");
  EXPECT_FALSE(para::FindKeyword(f.get(), "Name:", line, sizeof line, 0, 0));
  // A keyword of the next paragraph is not found; the stream stays put.
  EXPECT_FALSE(para::FindKeyword(f.get(), "Other:", line, sizeof line, position, 0));
  EXPECT_EQ(std::ftell(f.get()), position);
  // The stop character ends the search.
  EXPECT_FALSE(para::FindKeyword(f.get(), "Name: second", line, sizeof line, position, 'N'));
  ASSERT_TRUE(para::FindKeyword(f.get(), nullptr, line, sizeof line, position, 0));
  EXPECT_STREQ(line, "Names: x");
}

// What a typed reader gives for keyword in the paragraph body at 5 (after
// "[P]" and CR LF): the value, or "missing" and the value left alone.
template <typename T>
std::string Typed(bool (*read)(FILE*, const char*, T*, long, char), FILE* f, const char* keyword) {
  T value = 9;
  const bool found = read(f, keyword, &value, 5, 0);
  return (found ? "" : "missing ") + std::to_string(value);
}

TEST(TypedReaders, ConvertValuesAsTheirTypesSay) {
  auto f = StreamOf(
      "[P]\r\nText: hello world\r\nEmpty:\r\nU16: 70000x\r\nNeg: -12\r\nBig: 4294967295\r\n"
      "Flag1: yes\r\nFlag2: maybe\r\nTime: 10:30:45\r\nNoColon: 1030\r\n"
      "Equals= 7\r\n");
  char text[6];
  EXPECT_TRUE(para::ReadText(f.get(), "Text:", text, sizeof text, 5));
  EXPECT_STREQ(text, "hello");
  std::rewind(f.get());
  char empty[8] = "junk";
  EXPECT_TRUE(para::ReadText(f.get(), "Empty:", empty, sizeof empty, 5));
  EXPECT_STREQ(empty, "");
  FILE* s = f.get();
  EXPECT_EQ(Typed(para::ReadU16, s, "U16:"), "4464");  // 70000 in 16 bits
  EXPECT_EQ(Typed(para::ReadU16, s, "Empty:"), "missing 9");
  EXPECT_EQ(Typed(para::ReadU16, s, "Equals"), "7");
  EXPECT_EQ(Typed(para::ReadI16, s, "Neg:"), "-12");
  EXPECT_EQ(Typed(para::ReadI32, s, "Neg:"), "-12");
  EXPECT_EQ(Typed(para::ReadI64, s, "Big:"), "-1");  // converted to 32 bits, then sign-extended
  EXPECT_EQ(Typed(para::ReadFlag, s, "Flag1:"), "1");
  EXPECT_EQ(Typed(para::ReadFlag, s, "Flag2:"), "missing 9");
  EXPECT_EQ(Typed(para::ReadTimeOfDay, s, "Time:"), std::to_string((10 * 60 + 30) * 60));
  EXPECT_EQ(Typed(para::ReadTimeOfDay, s, "NoColon:"), "missing 9");
}

TEST(NextLineReaders, TakeOnlyTheVeryNextContentLine) {
  auto f = StreamOf("First: one\r\n; comment\r\n\r\nSecond: 2\r\nThird: yes\r\n[NEXT]\r\nX: 1\r\n");
  char text[20];
  EXPECT_TRUE(para::NextLineText(f.get(), "First:", text, sizeof text));
  EXPECT_STREQ(text, "one");
  int32_t flag = 0;
  EXPECT_FALSE(para::NextLineFlag(f.get(), "Third:", &flag));  // Second: comes first
  uint16_t number = 0;
  EXPECT_TRUE(para::NextLineU16(f.get(), "Second:", &number));
  EXPECT_EQ(number, 2);
  EXPECT_TRUE(para::NextLineFlag(f.get(), "Third:", &flag));
  EXPECT_EQ(flag, 1);
  EXPECT_FALSE(para::NextLineText(f.get(), "X:", text, sizeof text));  // a header stops it
  EXPECT_EQ(NextLine(f.get()), "[NEXT]");
}

TEST(ValueFromText, FlagWordsAndNumbers) {
  const struct {
    const char* word;
    bool found;
    int32_t value;
  } flags[] = {{"yes", true, 1}, {"", true, 1},      {"n", true, 0},
               {"FALSE", true, 0}, {"maybe", false, 9}, {"yess", false, 9}};
  for (const auto& c : flags) {
    int32_t value = 9;
    EXPECT_EQ(para::FlagFromText(c.word, &value), c.found) << c.word;
    EXPECT_EQ(value, c.value) << c.word;
  }
  int16_t n = 9;
  EXPECT_TRUE(para::NumberFromText(" -42", &n));
  EXPECT_EQ(n, -42);
  EXPECT_FALSE(para::NumberFromText("x1", &n));
  EXPECT_EQ(n, 0);
}

TEST(NextListItem, SplitsAtCommasAndBlanksKeepingQuotes) {
  std::vector<std::string> items;
  for (const char* p = "a, \"b c\" ,,d  e"; p;) {
    para::ListItem item = para::NextListItem(p);
    items.emplace_back(item.item, item.length);
    p = item.next;
  }
  EXPECT_EQ(items, (std::vector<std::string>{"a", "\"b c\"", "", "d", "e"}));
  para::ListItem open = para::NextListItem("\"unterminated, x");
  EXPECT_EQ(std::string(open.item, open.length), "\"unterminated, x");
  EXPECT_EQ(open.next, nullptr);
  EXPECT_EQ(para::NextListItem("last,").next, nullptr);
}

// The cursor reads exactly the lines, and positions, that ReadLine does.
TEST(LineCursor, AgreesWithReadLineOnAnyBytes) {
  std::mt19937 random(7);
  for (int round = 0; round < 200; ++round) {
    std::string bytes;
    const int lines = static_cast<int>(random() % 50);
    for (int i = 0; i < lines; ++i) {
      // Lengths around the 280-character limit and the 64 KiB block.
      const size_t length = random() % 4 == 0 ? 275 + random() % 10 : random() % 120;
      for (size_t j = 0; j < length; ++j) bytes.push_back(static_cast<char>(random() % 256));
      bytes += random() % 3 ? "\r\n" : "\n";
      if (random() % 40 == 0) bytes.append(70000, 'x');
    }
    auto a = StreamOf(bytes), b = StreamOf(bytes);
    para::LineCursor cursor(a.get());
    char line[para::kLineSize];
    long start = 0;
    int n = 0;
    while (para::ReadLine(b.get(), line, sizeof line, &start)) {
      ASSERT_TRUE(cursor.Next()) << "round " << round << " line " << n;
      EXPECT_STREQ(cursor.line(), line) << "round " << round << " line " << n;
      EXPECT_EQ(cursor.start(), start) << "round " << round << " line " << n;
      ++n;
    }
    EXPECT_FALSE(cursor.Next()) << "round " << round;
  }
}

}  // namespace
