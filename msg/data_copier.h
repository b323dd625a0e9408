// Copying one data section of a submit file into a data file.
#pragma once

#include <cstdio>

#include "api/session.h"
#include "vlapi.h"

namespace vl {

// Copies the data section at whose "%%[TEXT]" or "%%[FILE]" line the submit
// stream stands into out, for the data file extension given (1-3 characters,
// known in the data format table). Text formats (ASCII, EPSON) stop at the next
// "%%[MESSAGE]", "%%[TEXT]" or "%%[FILE]" line and leave the stream there.
// 0, or 0xF700, 0xF70B, 0xF716, 0xF70A, reported.
VLRESULT CopyDataSection(const ApiSession& session, FILE* submit, FILE* out, const char* extension);

}  // namespace vl
