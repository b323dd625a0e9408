#include "msg/epson.h"

#include <algorithm>
#include <initializer_list>

#include "api/text.h"

namespace vl {
namespace {

inline constexpr size_t kMaxWord = 90;  // characters of a name or an argument
inline constexpr char kEsc = 27;

const char* const kCommandNames[] = {"MESSAGE", "DOWN", "RIGHT",     "XPOS", "XPOSR", "LMARGIN",
                                     "FONT",    "UL",   "UNDERLINE", "BOLD", "PAGE"};

bool StartsWith(const std::string& text, const char* prefix) { return text.rfind(prefix, 0) == 0; }

// The size code of a font name; names outside the table give 0.
int SizeCode(const std::string& font) {
  static const struct {
    const char* name;
    int code;
  } kSizes[] = {{"ROMAN10", 0},  {"SSERIF10", 0},  {"ROMAN12", 1},  {"SSERIF16", 1},
                {"ROMANPS", 2},  {"SSERIFPS", 2},  {"ROMAN20", 4},  {"SSERIF20", 4},
                {"ROMAN24", 5},  {"SSERIF32", 5},  {"ROMAN5", 32},  {"SSERIF5", 32},
                {"ROMAN6", 33},  {"SSERIF8", 33}};
  for (const auto& size : kSizes)
    if (font == size.name) return size.code;
  return 0;
}

// The argument as a number, read as atoi does (leading blanks, a sign, the
// digits that follow); kept small enough to stay out of every range.
long Number(const std::string& text) {
  size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  long value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i)
    value = std::min(value * 10 + (text[i] - '0'), 100000L);
  return negative ? -value : value;
}

void Put(std::string* out, std::initializer_list<int> bytes) {
  for (int b : bytes) out->push_back(static_cast<char>(b));
}

}  // namespace

bool ParseFormattingCommand(std::string_view text, FormattingCommand* command) {
  if (text.empty() || text[0] != '[') return false;
  const size_t nameEnd = text.find_first_of(":]", 1);
  if (nameEnd == std::string_view::npos || nameEnd == 1 || nameEnd - 1 > kMaxWord) return false;
  size_t close = nameEnd;
  std::string argument;
  if (text[nameEnd] == ':') {
    close = text.find(']', nameEnd + 1);
    if (close == std::string_view::npos || close - nameEnd - 1 > kMaxWord) return false;
    argument = UpperCase(std::string(text.substr(nameEnd + 1, close - nameEnd - 1)));
  }
  std::string name = UpperCase(std::string(text.substr(1, nameEnd - 1)));
  if (std::none_of(std::begin(kCommandNames), std::end(kCommandNames),
                   [&](const char* known) { return name == known; }))
    return false;
  if (name == "FONT" && !StartsWith(argument, "ROMAN") && !StartsWith(argument, "SSERIF"))
    return false;
  command->name = std::move(name);
  command->argument = std::move(argument);
  command->length = close + 1;
  return true;
}

void AppendEpsonBytes(const FormattingCommand& command, EpsonState* state, std::string* out) {
  const std::string& name = command.name;
  const std::string& arg = command.argument;
  const long n = Number(arg);
  if (name == "PAGE") {
    Put(out, {12});
  } else if (name == "BOLD" || name == "UL" || name == "UNDERLINE") {
    const bool bold = name == "BOLD";
    if (arg != "ON" && arg != "OFF") return;
    const bool on = arg == "ON";
    (bold ? state->bold : state->underline) = on;
    if (bold) Put(out, {kEsc, on ? 'E' : 'F'});
    else Put(out, {kEsc, '-', on ? 1 : 0});
  } else if (name == "DOWN") {
    if (n < 1 || n > 2000) return;
    for (long r = n; r > 0; r -= 100)
      Put(out, {kEsc, 'J', static_cast<int>(2 * std::min(r, 100L))});
  } else if (name == "RIGHT") {
    if (n < 1 || n > 2000) return;
    const long v = 4 * n / 3;
    Put(out, {kEsc, '\\', static_cast<int>(v & 0xFF), static_cast<int>(v >> 8)});
  } else if (name == "XPOS" || name == "XPOSR") {
    if (n < 0 || n > 2000) return;
    const long v = 2 * n / 3;
    const int hi = static_cast<int>((v >> 8) & 0x7F);
    Put(out, {kEsc, '$', static_cast<int>(v & 0xFF), name == "XPOSR" ? hi | 0x80 : hi});
  } else if (name == "LMARGIN") {
    if (n < 0 || n > 255) return;
    Put(out, {kEsc, 'l', static_cast<int>(n)});
  } else if (name == "FONT") {
    const int m = SizeCode(arg) + (state->bold ? 8 : 0) + (state->underline ? 128 : 0);
    Put(out, {kEsc, 'k', StartsWith(arg, "SSERIF") ? 255 : 0, kEsc, '!', m});
  }
  // "MESSAGE" has no bytes.
}

}  // namespace vl
