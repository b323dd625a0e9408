// Changing a message directory file in place: MsgDirUpdate and MsgDirReset.
#include <cstdio>
#include <string>

#include "api/diagnostics.h"
#include "msg/body_name.h"
#include "msg/msg_dir.h"
#include "msg/tables.h"
#include "paragraph/open_shared.h"
#include "paragraph/rewrite.h"
#include "platform/os.h"

namespace vl {
namespace {

inline constexpr size_t kStreamBuffer = 64 * 1024;

struct ListFiles {
  std::string list;  // MSGDIR.CTL
  std::string work;  // MSGDIR.TMP beside it
};

ListFiles PathsOf(const ApiSession& session, uint16_t selector) {
  const std::string directory = MessageDirectory(session, selector);
  return {directory + "MSGDIR.CTL", directory + "MSGDIR.TMP"};
}

// Reads the whole open list into bytes; false on a read error.
bool ReadAll(FILE* list, std::string* bytes) {
  std::rewind(list);
  char block[64 * 1024];
  size_t got;
  while ((got = std::fread(block, 1, sizeof block, list)) > 0) bytes->append(block, got);
  return !std::ferror(list);
}

// Writes a text of an entry line: control bytes become blanks, as the
// reader sees them, so that no text can end its line or begin another.
void WriteText(FILE* out, const char* text) {
  for (; text && *text; ++text) {
    const auto c = static_cast<unsigned char>(*text);
    std::fputc(c < 32 || c == 127 ? ' ' : c, out);
  }
}

void WriteEntry(FILE* out, const NewEntry& entry) {
  const DataFormat* format = FormatByCode(entry.format);
  const char* comment = entry.comment && *entry.comment ? entry.comment : "(submitted from API)";
  std::fprintf(out, "\r\n[DOCUMENT]\r\nFile: %s.%s\r\nComment: ", entry.body,
               format ? format->extension : "");
  WriteText(out, comment);
  std::fputs("\r\nOrganisation: ", out);
  WriteText(out, entry.organisation);
  std::fprintf(out,
               "\r\n[MESSAGE]\r\nAssocFile:\r\nFormat: %s\r\nAccepted: 00-00-00 00:00:00\r\n"
               "Type: SEND\r\nStatus: Su\r\nUserStatus: Aw\r\nSubject: ",
               format ? format->word : "");
  WriteText(out, entry.subject);
  std::fprintf(out, "\r\nMsgType: %s\r\nCustom: ", entry.messageType == 3 ? "SMS" : "FAX");
  WriteText(out, entry.custom);
  std::fputs("\r\n", out);
}

// Where the entry to remove begins and where the next one begins (or the
// list ends).
struct Span {
  long start = -1;
  long end = -1;
};

// Reads every entry as the listing does, so that a list that does not read
// is never changed, and finds the span of the entry named remove. 0, the
// reader's code for a malformed list, 0xF70E or 0xF70F.
VLRESULT ScanList(const ApiSession& session, uint16_t selector, const std::string& list,
                  const char* remove, Span* span) {
  MsgDirReader reader(list.data(), list.size());
  VLMSGINFOEX info;
  uint16_t status = 0;
  for (;;) {
    long start = -1;
    VLRESULT rc = MsgDirReadEntry(session, selector, reader, nullptr, &start, kFullInfoSize, &info);
    if (rc == VL_E_MSG_UNKNOWN) break;
    if (rc) return rc;
    if (span->start >= 0 && span->end < 0) span->end = start;
    if (remove && span->start < 0 && para::EqualNoCase(info.Body, remove)) {
      span->start = start;
      status = info.Status;
    }
  }
  if (!remove) return VL_OK;
  if (span->start < 0) {
    ApiTrace(&session, "Unknown message for %s", remove);
    ApiReportError(&session, "Message %s not found", remove);
    return VL_E_MSG_UNKNOWN;
  }
  if (!IsCompletedStatus(status)) {
    ApiReportError(&session, "Message %s not completed", remove);
    return VL_E_MSG_NOT_COMPLETED;
  }
  if (span->end < 0) span->end = static_cast<long>(list.size());
  return VL_OK;
}

// Writes the new list into the work file and copies it back into the list,
// where only what follows the first change is written again.
VLRESULT Rewrite(const ApiSession& session, uint16_t selector, const ListFiles& paths, FILE* list,
                 FILE* work, const char* remove, const NewEntry* add) {
  std::string bytes;
  const bool read = ReadAll(list, &bytes);
  Span span;
  if (VLRESULT rc = ScanList(session, selector, bytes, remove, &span)) return rc;
  if (!read) {
    ApiReportError(&session, "File error updating info file");
    return VL_E_INFO_FILE_ERROR;
  }
  const size_t kept = remove ? static_cast<size_t>(span.start) : bytes.size();
  std::fwrite(bytes.data(), 1, kept, work);
  if (remove) std::fwrite(bytes.data() + span.end, 1, bytes.size() - static_cast<size_t>(span.end), work);
  if (add && selector == kDirectoryOut) WriteEntry(work, *add);
  if (std::fflush(work) != 0 || std::ferror(work)) {
    ApiReportError(&session, "File error updating info file");
    return VL_E_INFO_FILE_ERROR;
  }
  if (para::CopyBack(work, list, static_cast<int64_t>(kept)) != 0) {
    ApiReportError(&session, "Unable to replace file %s", paths.list.c_str());
    return VL_E_INFO_FILE_ERROR;
  }
  return VL_OK;
}

}  // namespace

VLRESULT MsgDirUpdate(const ApiSession& session, uint16_t selector, const char* remove,
                      const NewEntry* add) {
  if (add) {
    if (VLRESULT rc = CheckBodyName(session, add->body)) return rc;
    if (VLRESULT rc = CheckNotReserved(session, add->body)) return rc;
  }
  const ListFiles paths = PathsOf(session, selector);
  para::Opened list = para::OpenShared(0, paths.list.c_str(), "rb+");
  if (!list) {
    ApiReportError(&session, "Error opening file %s", paths.list.c_str());
    return VL_E_INFO_FILE_OPEN_ERROR;
  }
  para::Opened work = para::OpenShared(0, paths.work.c_str(), "wb+");
  if (!work) {
    ApiReportError(&session, "Error creating file %s", paths.work.c_str());
    return VL_E_INFO_FILE_OPEN_ERROR;
  }
  // Large stream buffers: the work file takes the whole list.
  std::setvbuf(list.get(), nullptr, _IOFBF, kStreamBuffer);
  std::setvbuf(work.get(), nullptr, _IOFBF, kStreamBuffer);
  // The work file goes and the change is announced whatever happens.
  auto finish = os::scope_exit([&] {
    para::RemoveWorkFile(work.file, paths.work);
    list.file.reset();
    NotifyGroupChange(session, false, session.userName, session.userInDir);
  });
  return Rewrite(session, selector, paths, list.get(), work.get(), remove, add);
}

VLRESULT MsgDirReset(const ApiSession& session, uint16_t selector) {
  const ListFiles paths = PathsOf(session, selector);
  para::Opened list = para::OpenShared(paths.list.c_str(), "rb+");
  if (!list && list.error == os::kFileNotFound) list = para::OpenShared(paths.list.c_str(), "wb+");
  if (!list) {
    ApiReportError(&session, "Error opening file %s", paths.list.c_str());
    return VL_E_INFO_FILE_OPEN_ERROR;
  }
  para::Opened work = para::OpenShared(paths.work.c_str(), "wb+");
  if (!work) {
    ApiReportError(&session, "Error creating file %s", paths.work.c_str());
    return VL_E_INFO_FILE_OPEN_ERROR;
  }
  auto removeWork = os::scope_exit([&] { para::RemoveWorkFile(work.file, paths.work); });
  VLRESULT rc = VL_OK;
  std::fprintf(work.get(), "[VELOMAR]\r\nType: %s\r\nRevision: A\r\n",
               selector == kDirectoryOut ? "SendDir" : "ReceiveDir");
  if (std::fflush(work.get()) != 0 || std::ferror(work.get())) {
    ApiReportError(&session, "File error updating info file");
    rc = VL_E_INFO_FILE_ERROR;
  } else if (para::CopyBack(work.get(), list.get()) != 0) {
    ApiReportError(&session, "Unable to replace file %s", paths.list.c_str());
    rc = VL_E_INFO_FILE_ERROR;
  }
  return rc;
}

}  // namespace vl
