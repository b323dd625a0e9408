// The text formatting commands of EPSON body text and their printer bytes.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "api/session.h"
#include "msg/data_copier.h"
#include "platform/raii.h"
#include "tests/support/test_support.h"

namespace {

using vltest::Reported;

const std::string E = "\x1b";

std::string Bytes(std::initializer_list<int> bytes) {
  std::string text;
  for (int b : bytes) text.push_back(static_cast<char>(b));
  return text;
}

// The data file written from body lines (each ended by CR LF) for an EPSON message.
std::string Epson(const std::string& body) {
  vl::ApiSession session;
  session.errorCallback = &Reported::Callback;
  os::UniqueFile submit(std::tmpfile()), out(std::tmpfile());
  const std::string text = "%%[TEXT]\r\n" + body + "\r\n";
  std::fwrite(text.data(), 1, text.size(), submit.get());
  std::rewind(submit.get());
  EXPECT_EQ(vl::CopyDataSection(session, submit.get(), out.get(), "epn"), VL_OK) << body;
  std::rewind(out.get());
  std::string written;
  for (int c; (c = std::fgetc(out.get())) != EOF;) written.push_back(static_cast<char>(c));
  EXPECT_EQ(written.substr(written.size() - 2), "\r\n");
  return written.substr(0, written.size() - 2);
}

TEST(EpsonCommand, EveryCommandGivesItsPrinterBytes) {
  const std::string arg90 = std::string(88, '0') + "10";
  const struct {
    std::string body;
    std::string bytes;
  } cases[] = {
      {"a%%[PAGE]b", "a\fb"},
      {"%%[page:x]", "\f"},
      {"%%[BOLD:ON]%%[bold:off]", E + "E" + E + "F"},
      {"%%[UL:on]%%[UNDERLINE:OFF]", E + "-" + Bytes({1}) + E + "-" + Bytes({0})},
      {"%%[DOWN:1]", E + "J" + Bytes({2})},
      {"%%[DOWN:100]", E + "J" + Bytes({200})},
      {"%%[DOWN:101]", E + "J" + Bytes({200}) + E + "J" + Bytes({2})},
      {"%%[DOWN:250]", E + "J" + Bytes({200}) + E + "J" + Bytes({200}) + E + "J" + Bytes({100})},
      {"%%[RIGHT:1]", E + "\\" + Bytes({1, 0})},
      {"%%[RIGHT:3]", E + "\\" + Bytes({4, 0})},
      {"%%[RIGHT:2000]", E + "\\" + Bytes({0x6A, 0x0A})},
      {"%%[XPOS:0]", E + "$" + Bytes({0, 0})},
      {"%%[XPOS:2000]", E + "$" + Bytes({0x35, 0x05})},
      {"%%[XPOSR:0]", E + "$" + Bytes({0, 0x80})},
      {"%%[XPOSR:2000]", E + "$" + Bytes({0x35, 0x85})},
      {"%%[LMARGIN:0]", E + "l" + Bytes({0})},
      {"%%[LMARGIN:255]", E + "l" + Bytes({255})},
      {"%%[FONT:ROMAN]", E + "k" + Bytes({0}) + E + "!" + Bytes({0})},
      {"%%[FONT:roman12]", E + "k" + Bytes({0}) + E + "!" + Bytes({1})},
      {"%%[FONT:SSERIF]", E + "k" + Bytes({255}) + E + "!" + Bytes({0})},
      {"%%[FONT:SSERIF16]", E + "k" + Bytes({255}) + E + "!" + Bytes({1})},
      {"%%[FONT:ROMANPS]", E + "k" + Bytes({0}) + E + "!" + Bytes({2})},
      {"%%[FONT:SSERIF20]", E + "k" + Bytes({255}) + E + "!" + Bytes({4})},
      {"%%[FONT:SSERIF32]", E + "k" + Bytes({255}) + E + "!" + Bytes({5})},
      {"%%[FONT:ROMAN5]", E + "k" + Bytes({0}) + E + "!" + Bytes({32})},
      {"%%[FONT:SSERIF8]", E + "k" + Bytes({255}) + E + "!" + Bytes({33})},
      {"%%[FONT:ROMANX]", E + "k" + Bytes({0}) + E + "!" + Bytes({0})},
      {"%%[DOWN:" + arg90 + "]", E + "J" + Bytes({20})},
      // Out of range, or not ON or OFF: removed, no bytes.
      {"<%%[DOWN:0]%%[DOWN:2001]%%[DOWN]%%[RIGHT:0]%%[RIGHT:2001]%%[XPOS:2001]%%[XPOSR:-1]>", "<>"},
      {"<%%[LMARGIN:256]%%[LMARGIN:-1]%%[BOLD:YES]%%[UL]>", "<>"},
      // Runs of percent signs: an even run shrinks to (n - 1) / 2.
      {"%%%%[PAGE]", "%\f"},
      {"%%%%%%[PAGE]", "%%\f"},
      {"%[PAGE]%%%[PAGE]", "%[PAGE]%%%[PAGE]"},
      // Not commands: they stay in the text.
      {"%%[FONT:COURIER]%%[FONT]%%[HELLO]%%[]%%[ PAGE]",
       "%%[FONT:COURIER]%%[FONT]%%[HELLO]%%[]%%[ PAGE]"},
      {"%%[DOWN:" + arg90 + "1]", "%%[DOWN:" + arg90 + "1]"},
      {"%%[" + std::string(91, 'A') + "]", "%%[" + std::string(91, 'A') + "]"},
      {"%%[X %%[PAGE] %%[PAGE", "%%[X \f %%[PAGE"},
  };
  for (const auto& c : cases) EXPECT_EQ(Epson(c.body), c.bytes) << c.body;
}

TEST(EpsonCommand, BoldAndUnderlineSetTheFontByteAndMessageIsReported) {
  const std::string roman12 = E + "k" + Bytes({0}) + E + "!";
  EXPECT_EQ(Epson("%%[BOLD:ON]%%[UL:ON]\r\n%%[FONT:ROMAN12]%%[BOLD:OFF]%%[FONT:ROMAN12]"),
            E + "E" + E + "-" + Bytes({1}) + "\r\n" + roman12 + Bytes({1 + 8 + 128}) + E + "F" +
                roman12 + Bytes({1 + 128}));
  // A removed command leaves the state alone; every section starts plain.
  EXPECT_EQ(Epson("%%[BOLD:MAYBE]%%[FONT:ROMAN12]"), roman12 + Bytes({1}));
  Reported::Clear();
  EXPECT_EQ(Epson("x %%[message] y"), "x  y");
  EXPECT_EQ(Reported::Texts(), std::vector<std::string>{"message text contains %%[MESSAGE]"});
}

}  // namespace
