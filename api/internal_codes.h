// Result codes that stay inside the library.
#pragma once

namespace vl {

inline constexpr int kInternalFileError = 0xF00C;     // a file could not be opened or read
inline constexpr int kInternalNotFound = 0xF018;      // a configuration file was not found
inline constexpr int kInternalNoParagraph = 0xF019;   // a paragraph or keyword is missing

}  // namespace vl
