// Paragraph files as lines in memory, and the server's way of changing a
// shared one: hold it open with "r+b", build the new text in a work file
// beside it and copy that back through the open handle, so that readers
// never find the file missing or half written.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace vlsim {

// The lines of a file, without their line ends.
using Lines = std::vector<std::string>;

Lines SplitLines(const std::string& bytes);
// Every line followed by CR LF.
std::string JoinLines(const Lines& lines);

inline constexpr size_t kNone = static_cast<size_t>(-1);

// Line ranges of paragraphs: a paragraph runs from its header line (one that
// begins with the header, as the library's readers find it) to the next
// header or the end.
size_t FindHeader(const Lines& lines, const char* header, size_t from = 0);
size_t ParagraphEnd(const Lines& lines, size_t header);
// The first line in [begin, end) that begins with keyword (without regard
// to case), or kNone.
size_t FindKeyword(const Lines& lines, size_t begin, size_t end, const char* keyword);
// The value of a line: after the first ':' or '=', blanks skipped, without
// trailing blanks.
std::string ValueOf(const std::string& line);
// Replaces the first keyword line in [begin, end) by "keyword value", or
// inserts one at end; returns where the line is.
size_t SetValue(Lines& lines, size_t begin, size_t end, const char* keyword,
                const std::string& value);

// Changes the shared file at path in place; edit returns false to leave it
// as it is. A missing file is created first when create is set. Returns 0
// or a system error number.
int EditSharedFile(const std::string& path, bool create, const std::function<bool(Lines&)>& edit);

// Reads a shared file whole, waiting while another opener holds it.
int ReadSharedFile(const std::string& path, Lines* lines);

// Writes a new file that must not exist yet. 0 or a system error number.
int CreateNewFile(const std::string& path, const Lines& lines);

}  // namespace vlsim
