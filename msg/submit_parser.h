// Reading one message of a submit file: its options, where its subject and
// cover text are, its type and organisation.
#pragma once

#include <cstdio>
#include <string>

#include "api/session.h"
#include "msg/control_file.h"
#include "msg/message_options.h"

namespace vl {

struct SubmitMessage {
  TextSource subject;
  TextSource cover;
  long toPosition = -1;  // the first "To:" line
};

// Reads the options of the message whose "%%[MESSAGE]" head the stream has
// just passed, on top of the defaults already in options, and leaves the
// stream at the first "To:" line. 0, 0xF716 or 0xF70A, reported.
VLRESULT ParseMessageOptions(const ApiSession& session, FILE* submit, MessageOptions* options,
                             SubmitMessage* message);

// The subject for a message's info record: the first subject line, cut to
// 60 characters with "..." marking that more follows.
std::string InfoSubject(FILE* submit, const TextSource& subject);

// Checks and rewrites an "After:" time; false (reported) when it is invalid
// and emptied.
bool CheckAfterTime(const ApiSession& session, std::string* after);

}  // namespace vl
