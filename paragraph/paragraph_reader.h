// Reading paragraph files: cleaned lines, paragraph and keyword searches,
// typed value readers and list items.
//
// A paragraph file is a sequence of lines. A line whose first character is
// '[' is a header and opens a paragraph; a line that is empty, begins with a
// blank or begins with ';' is ignored; every other line is a content line,
// usually "keyword: value" or "keyword=value".
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>

namespace para {

// Size of the line buffer of every reader: a line holds 280 characters.
inline constexpr int kLineSize = 281;

// Process-wide switch: keep bytes 128-255 in lines read (initially on).
void SetEightBitText(bool on);
bool EightBitText();

// Reads the next line into buffer (at most size-1 characters; the rest of a
// longer line is skipped), replaces control bytes by blanks and strips
// trailing blanks. lineStart, when given, receives the stream position at
// which the line began. False at the end of the file.
bool ReadLine(FILE* stream, char* buffer, int size, long* lineStart = nullptr);

// ReadLine that reports the number of bytes the line took in the file, its
// line end and any skipped rest included, instead of asking the stream.
bool ReadLineCounted(FILE* stream, char* buffer, int size, long* consumed);

// Cleans length raw bytes of a line in place as ReadLine does (control
// bytes and, with eight-bit text off, high bytes to blanks; trailing blanks
// stripped) and terminates it.
void CleanLine(char* line, int length);

// Whether the line reader keeps byte c as it is: every other byte becomes a
// blank. Follows the eight-bit switch.
bool KeptInLine(unsigned char c);
// The first of length characters that cannot stand in one part (base name
// or extension) of a file name that a paragraph file records: a byte the
// line reader would blank, a dot, or one of \ / : * ? " < > |. None when
// every character can.
const char* BadNamePartCharacter(const char* text, size_t length);

// Kinds of cleaned line.
inline bool IsHeader(const char* line) { return line[0] == '['; }
inline bool IsContentLine(const char* line) {
  return line[0] != '\0' && line[0] != ' ' && line[0] != ';' && line[0] != '[';
}

// True when text begins with prefix, compared without regard to case over
// the length of prefix.
bool StartsWithNoCase(const char* text, const char* prefix);
bool EqualNoCase(const char* a, const char* b);

// Finds the next header, from the current position, that begins with header
// (none: any header). On success position, when given, receives the stream
// position after the header line; otherwise the stream is put back and the
// buffer emptied.
bool FindParagraph(FILE* stream, const char* header, char* buffer, int size,
                   long* position = nullptr);

// Finds the next content line of the current paragraph that begins with
// keyword (none: any content line). A startPosition other than 0 is sought
// first; a header, or a line beginning with stopChar when it is not 0, ends
// the search. When nothing matched the stream is put back where the search
// began and the buffer emptied.
bool FindKeyword(FILE* stream, const char* keyword, char* buffer, int size, long startPosition,
                 char stopChar);

// The value of a keyword line: after the first ':' or '=' and any blanks,
// tabs, CR and LF; none when the line has no separator.
const char* ValueOf(const char* line);

// Typed keyword readers: FindKeyword, then the value. Each returns found.
// A text result holds at most size-1 characters and is always terminated;
// a keyword with no value reads as "".
bool ReadText(FILE* stream, const char* keyword, char* out, int size, long startPosition = 0,
              char stopChar = 0);
bool ReadU16(FILE* stream, const char* keyword, uint16_t* out, long startPosition = 0,
             char stopChar = 0);
bool ReadI16(FILE* stream, const char* keyword, int16_t* out, long startPosition = 0,
             char stopChar = 0);
bool ReadI32(FILE* stream, const char* keyword, int32_t* out, long startPosition = 0,
             char stopChar = 0);
bool ReadI64(FILE* stream, const char* keyword, int64_t* out, long startPosition = 0,
             char stopChar = 0);
// The value of "name:", else of "name=", in the paragraph at startPosition;
// a found but empty value counts as missing. Found: a non-empty value.
bool ReadTextEitherForm(FILE* stream, const char* name, char* out, int size,
                        long startPosition);
// 0 or 1; an unknown word is not found and leaves out unchanged.
bool ReadFlag(FILE* stream, const char* keyword, int32_t* out, long startPosition = 0,
              char stopChar = 0);
// "h:m" as seconds: (h * 60 + m) * 60.
bool ReadTimeOfDay(FILE* stream, const char* keyword, int32_t* out, long startPosition = 0,
                   char stopChar = 0);

// Next-line readers: the very next content line must begin with keyword;
// otherwise the stream is put back and the result is not found.
bool NextLineText(FILE* stream, const char* keyword, char* out, int size);
bool NextLineU16(FILE* stream, const char* keyword, uint16_t* out);
bool NextLineFlag(FILE* stream, const char* keyword, int32_t* out);

// Value-from-text readers, applied to at most 19 characters of value.
// Flag words: Y, YES, TRUE, ON, 1 and "" give 1; N, NO, FALSE, OFF, 0 give 0.
bool FlagFromText(const char* value, int32_t* out);
// A decimal number into 16 bits; on failure out is 0 and the result false.
bool NumberFromText(const char* value, int16_t* out);

// Decimal conversions shared by the readers.
uint16_t LeadingDigitsU16(const char* text);
int32_t DecimalI32(const char* text);

// One item of a list value: a double-quoted run (quotes included) or a run
// up to a comma, blank, tab, CR or LF. next is the start of the following
// item, or none at the end of the text.
struct ListItem {
  const char* item;
  size_t length;
  const char* next;
};
ListItem NextListItem(const char* text);

}  // namespace para
