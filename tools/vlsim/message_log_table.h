// Today's message-log records as a table, read back record by record.
#pragma once

#include <cstdio>

namespace vlsim {

// Prints the records of today's message log of the configured server area
// to out; 0, or 1 when the log cannot be read (with a line saying so).
int PrintMessageLog(FILE* out);

}  // namespace vlsim
