// Reading paragraph files: cleaned lines, searches, typed values, list items.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "paragraph/paragraph_reader.h"
#include "platform/raii.h"
#include "tests/support/test_support.h"

namespace {

// A stream over the given bytes.
using vltest::StreamOf;

std::string NextLine(FILE* f) {
  char line[para::kLineSize];
  return para::ReadLine(f, line, sizeof line) ? line : "<eof>";
}

TEST(ReadLine, LongLinesAreCutAndTheRestSkipped) {
  auto f = StreamOf(std::string(300, 'x') + "\r\nnext\r\n" + std::string(280, 'y') + "\r\nlast");
  EXPECT_EQ(NextLine(f.get()), std::string(280, 'x'));
  EXPECT_EQ(NextLine(f.get()), "next");
  EXPECT_EQ(NextLine(f.get()), std::string(280, 'y'));
  EXPECT_EQ(NextLine(f.get()), "last");
  EXPECT_EQ(NextLine(f.get()), "<eof>");
}

TEST(ReadLine, CleansControlBytesAndTrailingBlanks) {
  auto f = StreamOf(std::string("a\tb\x01" "c\x7f" "d  \t \r\n") + std::string("x\0y\n", 4) +
                    "lf only\n\r\n");
  EXPECT_EQ(NextLine(f.get()), "a b c d");
  EXPECT_EQ(NextLine(f.get()), "x y");
  EXPECT_EQ(NextLine(f.get()), "lf only");
  EXPECT_EQ(NextLine(f.get()), "");
  EXPECT_EQ(NextLine(f.get()), "<eof>");
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

TEST(ReadLine, ReportsWhereEachLineBegan) {
  auto f = StreamOf("one\r\ntwo\r\n");
  char line[para::kLineSize];
  long start = -1;
  ASSERT_TRUE(para::ReadLine(f.get(), line, sizeof line, &start));
  EXPECT_EQ(start, 0);
  ASSERT_TRUE(para::ReadLine(f.get(), line, sizeof line, &start));
  EXPECT_EQ(start, 5);
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

TEST(TypedReaders, ConvertValuesAsTheirTypesSay) {
  const long kBody = 5;  // after "[P]" and CR LF
  auto f = StreamOf(
      "[P]\r\nText: hello world\r\nEmpty:\r\nU16: 70000x\r\nNeg: -12\r\nBig: 4294967295\r\n"
      "Flag1: yes\r\nFlag2: Off\r\nFlag3:\r\nFlag4: maybe\r\nTime: 10:30:45\r\nNoColon: 1030\r\n"
      "Equals= 7\r\n");
  char text[6];
  EXPECT_TRUE(para::ReadText(f.get(), "Text:", text, sizeof text, kBody));
  EXPECT_STREQ(text, "hello");
  std::rewind(f.get());
  char empty[8] = "junk";
  EXPECT_TRUE(para::ReadText(f.get(), "Empty:", empty, sizeof empty, kBody));
  EXPECT_STREQ(empty, "");

  uint16_t u16 = 1;
  EXPECT_TRUE(para::ReadU16(f.get(), "U16:", &u16, kBody));
  EXPECT_EQ(u16, static_cast<uint16_t>(70000));
  EXPECT_FALSE(para::ReadU16(f.get(), "Empty:", &u16, kBody));
  int16_t i16 = 0;
  EXPECT_TRUE(para::ReadI16(f.get(), "Neg:", &i16, kBody));
  EXPECT_EQ(i16, -12);
  int32_t i32 = 0;
  EXPECT_TRUE(para::ReadI32(f.get(), "Neg:", &i32, kBody));
  EXPECT_EQ(i32, -12);
  int64_t i64 = 0;
  EXPECT_TRUE(para::ReadI64(f.get(), "Big:", &i64, kBody));
  EXPECT_EQ(i64, -1);  // converted to 32 bits, then sign-extended
  EXPECT_TRUE(para::ReadU16(f.get(), "Equals", &u16, kBody));
  EXPECT_EQ(u16, 7);

  int32_t flag = 5;
  EXPECT_TRUE(para::ReadFlag(f.get(), "Flag1:", &flag, kBody));
  EXPECT_EQ(flag, 1);
  EXPECT_TRUE(para::ReadFlag(f.get(), "Flag2:", &flag, kBody));
  EXPECT_EQ(flag, 0);
  EXPECT_TRUE(para::ReadFlag(f.get(), "Flag3:", &flag, kBody));
  EXPECT_EQ(flag, 1);
  flag = 5;
  EXPECT_FALSE(para::ReadFlag(f.get(), "Flag4:", &flag, kBody));
  EXPECT_EQ(flag, 5);

  int32_t seconds = 0;
  EXPECT_TRUE(para::ReadTimeOfDay(f.get(), "Time:", &seconds, kBody));
  EXPECT_EQ(seconds, (10 * 60 + 30) * 60);
  EXPECT_FALSE(para::ReadTimeOfDay(f.get(), "NoColon:", &seconds, kBody));
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
  } flags[] = {{"Y", true, 1},     {"yes", true, 1}, {"True", true, 1}, {"ON", true, 1},
               {"1", true, 1},     {"", true, 1},    {"n", true, 0},    {"No", true, 0},
               {"FALSE", true, 0}, {"off", true, 0}, {"0", true, 0},    {"maybe", false, 9},
               {"yess", false, 9}};
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

}  // namespace
