// Writing a message's control file from the submit file: shared by
// VlxCreateCtlFileEx and VlxSendSubmitFile; and the submission of a submit
// file that the caller holds open.
#pragma once

#include <cstdio>

#include "api/session.h"
#include "vlapi.h"

namespace vl {

// Reads the first message of submit (from the stream's position) and
// writes control from its start. info's Body names the message; the rest of
// info is filled as size asks. A null extension means ASCII; extensionOut
// receives the extension of the message's format. submit is left at the
// "%%" line of the message's first data section. 0 or the failing code,
// reported.
VLRESULT CreateControlFile(const ApiSession& session, FILE* submit, FILE* control,
                           const char* extension, char (&extensionOut)[4], uint16_t size,
                           VLMSGINFOEX* info);

// VlxSendSubmitFile for a submit file already open for reading: the same
// frame, traces, checks and files, the stream read from its start. name is
// the file's name for the traces; body receives the body name (char[9]).
VLRESULT SendOpenSubmitFile(VLHANDLE handle, FILE* submit, const char* name, const char* prefix,
                            char* body);

}  // namespace vl
