// Telling watchers of a user's in directory that its messages changed.
#include <string>

#include "api/diagnostics.h"
#include "api/process_state.h"
#include "msg/msg_dir.h"
#include "paragraph/open_shared.h"
#include "platform/os.h"

namespace vl {
namespace {

inline constexpr int64_t kChangeStep = 10;            // seconds
inline constexpr int64_t kFurthestAhead = 31536000;   // 365 days

}  // namespace

int MarkGroupInfoChanged(const ApiSession& session, const char* path) {
  os::FileInfo info;
  const int missing = os::GetFileInfo(path, &info);
  if (missing == os::kFileNotFound) {
    para::Opened created = para::OpenShared(path, "wb");
    if (!created) return 0;
    std::fputs("[VELOMAR]\r\nType: ReceiveChange\r\nRevision: A\r\n\r\n", created.get());
    ApiTrace(&session, "MarkGroupInfoChanged created new file.");
    return 1;
  }
  if (!para::OpenShared(0, path, "r+b")) {
    ApiTrace(&session, "Cannot open file %s for reading/writing", path);
    return 0;
  }
  if (os::GetFileInfo(path, &info) != os::kOk) {
    ApiTrace(&session, "Cannot get timestamp for file %s", path);
    return 0;
  }
  // A step of 10 seconds at least, so that a watcher comparing time stamps
  // sees two changes even within the file system's time resolution.
  const int64_t now = os::SecondsSince1970();
  int64_t changed = info.modified + kChangeStep > now ? info.modified + kChangeStep : now;
  if (changed - now > kFurthestAhead) changed = now;
  if (os::SetModifiedTime(path, changed) != os::kOk) {
    ApiTrace(&session, "Cannot set timestamp for file %s", path);
    return 0;
  }
  return 1;
}

void NotifyGroupChange(const ApiSession& session, bool newMessage, const char* userName,
                       const char* inDirectory) {
  const bool group = userName[0] == '@';
  if (newMessage && group) {
    ApiTrace(&session, "Found user group %s", userName);
    const std::string path = std::string(inDirectory) + "MSGNEW.CTL";
    if (!MarkGroupInfoChanged(session, path.c_str())) {
      ApiReportError(&session, "Could not mark group info changed %s.", path.c_str());
      ApiReportError(&session, "Unable to mark %s as changed", path.c_str());
    }
  }
  if (group) {
    ApiTrace(&session, "NotifyGroupChange : File Changed.");
    ApiTrace(&session, "NotifyGroupChange : User group found %s.", userName);
    const std::string path = std::string(inDirectory) + "MSGCHG.CTL";
    if (!MarkGroupInfoChanged(session, path.c_str()))
      ApiTrace(&session, "NotifyGroupChange : Could not mark group info changed %s.", path.c_str());
  } else if (Process().touchMessageList) {
    const std::string path = std::string(inDirectory) + "MSGDIR.CTL";
    if (os::SetModifiedTime(path.c_str(), os::SecondsSince1970()) != os::kOk)
      ApiTrace(&session, "Unable to mark %s as changed", path.c_str());
  }
}

}  // namespace vl
