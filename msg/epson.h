// The text formatting commands of EPSON body text: "%%[NAME]" or
// "%%[NAME:ARGUMENT]", turned into printer control bytes.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace vl {

// Bold and underline as the commands of one body text have left them.
struct EpsonState {
  bool bold = false;
  bool underline = false;
};

// One bracketed command, as it follows a run of percent signs.
struct FormattingCommand {
  std::string name;      // upper-cased
  std::string argument;  // upper-cased; empty when none is given
  size_t length = 0;     // bytes from "[" to "]", both included
};

// Recognises the command at text, which begins with "[". False when the
// bracketed text is not one and stays in the text: an empty name, a name or
// argument of more than 90 characters or not closed, a name not in the
// command list, or "FONT" with a font name beginning neither "ROMAN" nor
// "SSERIF".
bool ParseFormattingCommand(std::string_view text, FormattingCommand* command);

// Appends the printer bytes of a recognised command to out and updates
// state. An argument out of range, or other than "ON" or "OFF" where one of
// them is needed, gives no bytes and leaves state alone; "MESSAGE" gives none.
void AppendEpsonBytes(const FormattingCommand& command, EpsonState* state, std::string* out);

}  // namespace vl
