// Result codes that stay inside the library.
#pragma once

namespace vl {

inline constexpr int kInternalFileError = 0xF00C;     // a file could not be opened or read
inline constexpr int kInternalNotFound = 0xF018;      // a configuration file was not found
inline constexpr int kInternalNoParagraph = 0xF019;   // a paragraph or keyword is missing
inline constexpr int kInternalRequiredLineMissing = 0xF025;  // a required line is missing
inline constexpr int kInternalSetupOpenError = 0xF026;  // the setup file could not be opened

}  // namespace vl
