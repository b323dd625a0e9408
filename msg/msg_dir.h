// The message directory file "MSGDIR.CTL" of a user's out and in
// directories: one "[DOCUMENT]" and "[MESSAGE]" entry per message.
#pragma once

#include <cstdint>

#include "api/session.h"
#include "paragraph/line_cursor.h"
#include "vlapi.h"

namespace vl {

inline constexpr uint16_t kDirectoryOut = 1;
inline constexpr uint16_t kDirectoryIn = 2;
inline constexpr uint16_t kFullInfoSize = 272;

// "V-OUT", "V-IN" or "???" for traces.
const char* DirectoryWord(uint16_t selector);
// The out directory for selector 1, the in directory otherwise.
const char* MessageDirectory(const ApiSession& session, uint16_t selector);

// Argument checks shared by the message functions; each reports its text
// and returns 0xF700, or returns 0. Body names are checked by
// CheckBodyName (msg/body_name.h).
VLRESULT CheckSelector(const ApiSession& session, uint16_t selector);
VLRESULT CheckNotReserved(const ApiSession& session, const char* body);
VLRESULT CheckInfoSize(const ApiSession& session, uint16_t size);
// The count place must be given, and the records too when any are wanted.
VLRESULT CheckListOutputs(const ApiSession& session, const void* count, const void* records,
                          int maxEntries);

// Whether a cleaned line begins an entry: the line "[DOCUMENT]".
inline bool IsEntryStart(const char* line) { return para::EqualNoCase(line, "[DOCUMENT]"); }

// Reads the entries of one open list, keeping its buffers between entries.
struct MsgDirReader {
  explicit MsgDirReader(FILE* list);
  // Reads a list already in memory.
  MsgDirReader(const char* bytes, size_t size);
  enum DocumentField { kFile, kComment, kOrganisation };
  enum MessageField { kAccepted, kType, kStatus, kUserStatus, kSubject, kMsgType, kCustom };
  para::LineCursor cursor;
  para::ParagraphFields document;
  para::ParagraphFields message;
};

// Reads the next entry from the reader, or the next one named wanted.
// position, when given, receives where the entry's "[DOCUMENT]" line
// begins. With a record, fills it as far as size asks. 0, 0xF70E at the
// end (the normal end of a list) or 0xF713 for a malformed entry.
VLRESULT MsgDirReadEntry(const ApiSession& session, uint16_t selector, MsgDirReader& reader,
                         const char* wanted, long* position, uint16_t size, VLMSGINFOEX* record);

// Removes the completed entry named remove and/or appends a new entry named
// add (out directory only), rewriting the list in place.
struct NewEntry {
  const char* body;
  const char* comment;
  const char* subject;
  uint16_t format;
  uint16_t messageType;
  const char* organisation;
  const char* custom;
};
VLRESULT MsgDirUpdate(const ApiSession& session, uint16_t selector, const char* remove,
                      const NewEntry* add);

// Brings the list back to its three header lines.
VLRESULT MsgDirReset(const ApiSession& session, uint16_t selector);

// Tells watchers of a user's in directory that something changed.
void NotifyGroupChange(const ApiSession& session, bool newMessage, const char* userName,
                       const char* inDirectory);
// Creates path, or moves its modification time on; 1 on success, else 0.
int MarkGroupInfoChanged(const ApiSession& session, const char* path);

}  // namespace vl
