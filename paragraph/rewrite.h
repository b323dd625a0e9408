// In-place rewrites of paragraph files. The file stays open with "r+b" (so
// no other opener can touch it) while a work file beside it is written and
// then copied back through the open handle: the file is never absent.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

#include "platform/raii.h"

namespace para {

// Internal failure code of CopyBack; it never leaves the library.
inline constexpr int kCopyBackFailed = 0xF00C;

// Longest path a rewrite handles.
inline constexpr size_t kMaxRewritePath = 268;

// Replaces the contents of the open target by those of the source. The
// target's length is set first; when that fails for lack of disk space
// while growing, the old length is put back and nothing is lost. The first
// unchanged bytes, which the caller knows the two files share, are not
// copied again. Returns 0 or kCopyBackFailed.
int CopyBack(FILE* source, FILE* target, int64_t unchanged = 0);

// The work file of a rewrite: the path with its extension replaced by
// ".TMP" (".TM2" when it already is ".TMP"); false when too long.
bool WorkFileName(const char* path, std::string* work);

// Closes and deletes a work file, trying the deletion twice so that a
// passing error does not leave it behind; true once it is gone.
bool RemoveWorkFile(os::UniqueFile& file, const std::string& path);

// Sets keyword to value in paragraph header: the first line of the
// paragraph that begins with keyword is replaced (all are kept with
// addAnother, the new line going to the paragraph's end); a missing
// paragraph is appended. A null value writes no keyword line, which removes
// the first matching line; a null keyword empties the paragraph.
bool SetParagraphValue(const char* path, const char* header, const char* keyword,
                       const char* value, bool addAnother);

// Sets two keywords of one group of paragraph header: the first line that
// begins with keyword1 is rewritten as "keyword1 value1" (kept with
// keepFirst), and within the group that follows it, up to a line beginning
// with stopChar, the next header or the end, keyword2 is set to value2. A
// paragraph without a keyword1 line is left as it is; a missing paragraph
// gets only its header appended.
bool SetGroupValues(const char* path, const char* header, const char* keyword1,
                    const char* value1, bool keepFirst, const char* keyword2, const char* value2,
                    char stopChar);

}  // namespace para
