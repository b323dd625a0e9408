// The text formatting commands of EPSON body text and their printer bytes.
#include <gtest/gtest.h>

#include "api/session.h"
#include "msg/data_copier.h"
#include "tests/support/test_support.h"

namespace {

using vltest::Reported;

// ESC, the command letter and its argument bytes.
std::string Esc(const char* command, std::initializer_list<int> arguments = {}) {
  std::string bytes = std::string("\x1b") + command;
  for (int b : arguments) bytes.push_back(static_cast<char>(b));
  return bytes;
}
// The font commands: typeface k, then the print mode.
std::string Font(int typeface, int mode) { return Esc("k", {typeface}) + Esc("!", {mode}); }

// The data file written from body lines (each ended by CR LF) for an EPSON message.
std::string Epson(const std::string& body, VLRESULT expected = VL_OK) {
  vl::ApiSession session;
  session.errorCallback = &Reported::Callback;
  auto submit = vltest::StreamOf("%%[TEXT]\r\n" + body + "\r\n"), out = vltest::StreamOf("");
  EXPECT_EQ(vl::CopyDataSection(session, submit.get(), out.get(), "epn"), expected) << body;
  const std::string written = vltest::Contents(out.get());
  if (expected != VL_OK) return written;
  EXPECT_TRUE(written.ends_with("\r\n")) << body;
  return written.substr(0, written.size() - 2);
}

TEST(EpsonCommand, EveryCommandGivesItsPrinterBytes) {
  const std::string arg90 = std::string(88, '0') + "10", j200 = Esc("J", {200});
  const struct { std::string body, bytes; } cases[] = {
      {"a%%[PAGE]b", "a\fb"}, {"%%[BOLD:ON]%%[bold:off]", Esc("E") + Esc("F")},
      {"%%[UL:on]%%[UNDERLINE:OFF]", Esc("-", {1}) + Esc("-", {0})},
      {"%%[DOWN:1]", Esc("J", {2})},          {"%%[DOWN:100]", j200},
      {"%%[DOWN:101]", j200 + Esc("J", {2})}, {"%%[DOWN:250]", j200 + j200 + Esc("J", {100})},
      {"%%[DOWN:" + arg90 + "]", Esc("J", {20})}, {"%%[page:x]", "\f"},
      {"%%[RIGHT:1]", Esc("\\", {1, 0})},     {"%%[RIGHT:3]", Esc("\\", {4, 0})},
      {"%%[RIGHT:2000]", Esc("\\", {0x6A, 0x0A})},
      {"%%[XPOS:0]", Esc("$", {0, 0})},       {"%%[XPOS:2000]", Esc("$", {0x35, 0x05})},
      {"%%[XPOSR:0]", Esc("$", {0, 0x80})},   {"%%[XPOSR:2000]", Esc("$", {0x35, 0x85})},
      {"%%[LMARGIN:0]", Esc("l", {0})},       {"%%[LMARGIN:255]", Esc("l", {255})},
      {"%%[FONT:ROMAN]", Font(0, 0)},         {"%%[FONT:roman12]", Font(0, 1)},
      {"%%[FONT:SSERIF]", Font(255, 0)},      {"%%[FONT:SSERIF16]", Font(255, 1)},
      {"%%[FONT:ROMANPS]", Font(0, 2)},       {"%%[FONT:SSERIF20]", Font(255, 4)},
      {"%%[FONT:SSERIF32]", Font(255, 5)},    {"%%[FONT:ROMAN5]", Font(0, 32)},
      {"%%[FONT:SSERIF8]", Font(255, 33)},    {"%%[FONT:ROMANX]", Font(0, 0)},
      // Out of range, or not ON or OFF: removed, no bytes.
      {"<%%[DOWN:0]%%[DOWN:2001]%%[DOWN]%%[RIGHT:0]%%[RIGHT:2001]%%[XPOS:2001]%%[XPOSR:-1]>", "<>"},
      {"<%%[LMARGIN:256]%%[LMARGIN:-1]%%[BOLD:YES]%%[UL]>", "<>"},
      // Runs of percent signs: an even run shrinks to (n - 1) / 2.
      {"%%%%[PAGE]", "%\f"}, {"%%%%%%[PAGE]", "%%\f"}, {"%%[X %%[PAGE] %%[PAGE", "%%[X \f %%[PAGE"},
  };
  for (const auto& c : cases) EXPECT_EQ(Epson(c.body), c.bytes) << c.body;
  // Not commands: they stay in the text.
  for (const std::string& text : {std::string("%[PAGE]%%%[PAGE]"), "%%[DOWN:" + arg90 + "1]",
                                  std::string("%%[FONT:COURIER]%%[FONT]%%[HELLO]%%[]%%[ PAGE]"),
                                  "%%[" + std::string(91, 'A') + "]"})
    EXPECT_EQ(Epson(text), text);
}

TEST(EpsonCommand, BoldAndUnderlineSetTheFontByteAndAMessageHeadIsRefused) {
  EXPECT_EQ(Epson("%%[BOLD:ON]%%[UL:ON]\r\n%%[FONT:ROMAN12]%%[BOLD:OFF]%%[FONT:ROMAN12]"),
            Esc("E") + Esc("-", {1}) + "\r\n" + Font(0, 1 + 8 + 128) + Esc("F") +
                Font(0, 1 + 128));
  // A removed command leaves the state alone; every section starts plain.
  EXPECT_EQ(Epson("%%[BOLD:MAYBE]%%[FONT:ROMAN12]"), Font(0, 1));
  Reported::Clear();
  Epson("x %%[message] y", VL_E_SUBMIT_FILE_INVALID);
  EXPECT_EQ(Reported::Texts(), std::vector<std::string>{"message text contains %%[MESSAGE]"});
}

}  // namespace
