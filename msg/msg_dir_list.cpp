// Listing and looking up messages: VlxGetMsgListEx, VlxGetMsgList,
// VlxGetMsgInfoEx, VlxGetMsgInfo, VlxCheckNewMsgStatus and VlxGetDocuments.
#include <cstdint>
#include <cstring>
#include <memory>
#include <new>
#include <string>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/directory_check.h"
#include "api/text.h"
#include "msg/body_name.h"
#include "msg/msg_dir.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

using namespace vl;

namespace {

inline constexpr int64_t kNewMessagePeriod = 120;  // seconds

std::string ListPath(const ApiSession& session, uint16_t selector) {
  return std::string(MessageDirectory(session, selector)) + "MSGDIR.CTL";
}

// Opens a list for reading, reporting failure.
VLRESULT OpenList(const ApiSession& session, const std::string& path, para::Opened* list) {
  *list = para::OpenShared(path.c_str(), "rb");
  if (*list) return VL_OK;
  ApiReportError(&session, "Unable to open file %s", path.c_str());
  return VL_E_INFO_FILE_OPEN_ERROR;
}

VLRESULT ListMessages(ApiSession& session, uint16_t selector, int16_t maxEntries, int16_t* count,
                      uint16_t size, VLMSGINFOEX* records) {
  if (VLRESULT rc = CheckInfoSize(session, size)) return rc;
  if (VLRESULT rc = CheckSelector(session, selector)) return rc;
  if (VLRESULT rc = CheckListOutputs(session, count, records, maxEntries)) return rc;
  if (VLRESULT rc = CheckDirectory(&session, session.serverArea)) {
    ApiReportError(&session, "Error checking %s: 0x%4.4x", session.serverArea,
                   static_cast<unsigned>(static_cast<uint16_t>(rc)));
    return rc;
  }
  // Group users have no out list.
  if (selector == kDirectoryOut && session.userName[0] == '@') return VL_OK;
  para::Opened list;
  if (VLRESULT rc = OpenList(session, ListPath(session, selector), &list)) return rc;
  MsgDirReader reader(list.get());
  auto* slots = reinterpret_cast<unsigned char*>(records);
  // The count is kept wide and handed out saturated at the largest 16-bit value.
  int read = 0;
  VLRESULT rc = VL_OK;
  for (;; ++read) {
    VLMSGINFOEX* record =
        read < maxEntries ? reinterpret_cast<VLMSGINFOEX*>(slots + read * kFullInfoSize) : nullptr;
    rc = MsgDirReadEntry(session, selector, reader, nullptr, nullptr, size, record);
    if (rc) break;
  }
  *count = static_cast<int16_t>(read < INT16_MAX ? read : INT16_MAX);
  return rc == VL_E_MSG_UNKNOWN ? VL_OK : rc;
}

VLRESULT GetMessageInfo(ApiSession& session, uint16_t selector, const char* body, uint16_t size,
                        VLMSGINFOEX* info) {
  if (VLRESULT rc = CheckInfoSize(session, size)) return rc;
  if (VLRESULT rc = CheckBodyName(session, body)) return rc;
  if (VLRESULT rc = CheckSelector(session, selector)) return rc;
  if (!info) {
    ReportNullArgument(&session, "info");
    return VL_E_INVALID_PARAM;
  }
  para::Opened list;
  if (VLRESULT rc = OpenList(session, ListPath(session, selector), &list)) return rc;
  MsgDirReader reader(list.get());
  return MsgDirReadEntry(session, selector, reader, body, nullptr, size, info);
}

}  // namespace

extern "C" {

VLRESULT VLAPI_CALL VlxGetMsgListEx(VLHANDLE handle, uint16_t directory, int16_t maxEntries,
                                    int16_t* count, uint16_t recordSize, VLMSGINFOEX* records) {
  return CallFrame(handle, "VlxGetMsgList", UserRule::Needed)
      .Enter("VlxGetMsgList - '%s', MaxEntries = %d", DirectoryWord(directory), maxEntries)
      .Run([&](ApiSession& session) {
        return ListMessages(session, directory, maxEntries, count, recordSize, records);
      });
}

VLRESULT VLAPI_CALL VlxGetMsgList(VLHANDLE handle, uint16_t directory, int16_t maxEntries,
                                  int16_t* count, VLMSGINFO* records) {
  return Guarded(nullptr, [&]() -> VLRESULT {
    const int16_t slots = maxEntries > 0 ? maxEntries : 0;
    std::unique_ptr<VLMSGINFOEX[]> full(new (std::nothrow) VLMSGINFOEX[slots ? slots : 1]());
    if (!full) return VL_E_MALLOC_FAILED;
    VLRESULT rc = VlxGetMsgListEx(handle, directory, maxEntries, count, kFullInfoSize, full.get());
    if (rc != VL_OK || !count || !records) return rc;
    for (int i = 0; i < *count && i < slots; ++i) {
      std::memcpy(records[i].Body, full[i].Body, sizeof records[i].Body);
      std::memcpy(records[i].Comment, full[i].Comment, sizeof records[i].Comment);
      records[i].Status = full[i].Status;
    }
    return rc;
  });
}

VLRESULT VLAPI_CALL VlxGetMsgInfoEx(VLHANDLE handle, uint16_t directory, const char* body,
                                    uint16_t recordSize, VLMSGINFOEX* info) {
  return CallFrame(handle, "VlxGetMsgInfo", UserRule::Needed)
      .Enter("VlxGetMsgInfo - '%s\\%s.CTL'", DirectoryWord(directory), body ? body : "(null)")
      .Run([&](ApiSession& session) {
        return GetMessageInfo(session, directory, body, recordSize, info);
      });
}

VLRESULT VLAPI_CALL VlxGetMsgInfo(VLHANDLE handle, uint16_t directory, const char* body,
                                  VLMSGINFO* info) {
  return Guarded(nullptr, [&]() -> VLRESULT {
    VLMSGINFOEX full;
    std::memset(&full, 0, sizeof full);
    VLRESULT rc = VlxGetMsgInfoEx(handle, directory, body, kFullInfoSize, &full);
    if (info) {
      info->Status = full.Status;
      std::memcpy(info->Comment, full.Comment, sizeof info->Comment);
      std::memcpy(info->Body, full.Body, sizeof info->Body);
    }
    return rc;
  });
}

VLRESULT VLAPI_CALL VlxCheckNewMsgStatus(VLHANDLE handle, uint16_t directory, uint16_t* isNew) {
  CallFrame frame(handle, "VlxCheckNewMsgStatus", UserRule::Needed);
  frame.Enter("VlxCheckNewMsgStatus - '%s'", DirectoryWord(directory));
  return frame.Run([&](ApiSession& session) -> VLRESULT {
    if (VLRESULT rc = CheckSelector(session, directory)) return rc;
    const int slot = directory - 1;
    if (!isNew) {
      // Clears the change memory: the next poll reports a change.
      session.lastChangeTime[slot] = session.lastListTime[slot] = 0;
      frame.OmitClosingTrace();
      return VL_OK;
    }
    const std::string path = ListPath(session, directory);
    os::FileInfo info;
    if (os::GetFileInfo(path.c_str(), &info) != os::kOk) {
      ApiReportError(&session, "Unable to access file %s", path.c_str());
      return VL_E_INFO_FILE_ERROR;
    }
    const int64_t now = os::SecondsSince1970();
    int64_t& changed = session.lastChangeTime[slot];
    int64_t& listTime = session.lastListTime[slot];
    if (changed <= now && now - changed <= kNewMessagePeriod && info.modified == listTime) {
      *isNew = 0;
    } else {
      *isNew = 1;
      changed = now;
      listTime = info.modified;
    }
    return VL_OK;
  });
}

VLRESULT VLAPI_CALL VlxGetDocuments(VLHANDLE handle, const VLMSGINFOEX* info, char* documents,
                                    char* attachments) {
  char body[sizeof info->Body] = "(null)";
  if (info) CopyBounded(body, sizeof body, info->Body);
  return CallFrame(handle, "VlxGetDocuments", UserRule::Needed)
      .Enter("VlxGetDocuments - '%s'", body)
      .Run([&](ApiSession& session) -> VLRESULT {
        if (!info || !documents || !attachments) {
          ReportNullArgument(&session, !info ? "info" : !documents ? "documents" : "attachments");
          return VL_E_INVALID_PARAM;
        }
        for (int i = 0; i < VL_DOCUMENT_SLOTS; ++i)
          documents[i * VL_DOCUMENT_SLOT_SIZE] = attachments[i * VL_DOCUMENT_SLOT_SIZE] = '\0';
        if (VLRESULT rc = CheckRecordBody(session, info->Body)) return rc;
        const std::string path = std::string(session.userOutDir) + body + ".CTL";
        para::Opened control = para::OpenShared(path.c_str(), "rb");
        if (!control) {
          ApiReportError(&session, "Unable to open file %s", path.c_str());
          return VL_E_INFO_FILE_OPEN_ERROR;
        }
        // The slot does not advance: the last line of each kind wins.
        char line[para::kLineSize];
        while (para::ReadLine(control.get(), line, sizeof line)) {
          char* slot = para::StartsWithNoCase(line, "Document:") ? documents
                       : para::StartsWithNoCase(line, "Attach:") ? attachments
                                                                 : nullptr;
          if (!slot) continue;
          const char* value = para::ValueOf(line);
          CopyBounded(slot, VL_DOCUMENT_SLOT_SIZE, value ? value : "");
        }
        return VL_OK;
      });
}

}  // extern "C"
