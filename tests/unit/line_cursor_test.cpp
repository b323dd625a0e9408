// The block-buffered line cursor reads exactly the lines, and positions,
// that the stream line reader does.
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

TEST(LineCursor, UnreadGivesTheLineAgain) {
  auto f = StreamOf("[A]\r\nx: 1\r\n[B]\r\n");
  para::LineCursor cursor(f.get());
  ASSERT_TRUE(cursor.Next());
  ASSERT_TRUE(cursor.Next());
  cursor.Unread();
  ASSERT_TRUE(cursor.Next());
  EXPECT_STREQ(cursor.line(), "x: 1");
  EXPECT_EQ(cursor.start(), 5);
  para::ParagraphFields fields({"x:", "y:"});
  fields.Collect(cursor);
  ASSERT_TRUE(cursor.Next());
  EXPECT_STREQ(cursor.line(), "[B]");  // the header that ended the paragraph
}

}  // namespace
