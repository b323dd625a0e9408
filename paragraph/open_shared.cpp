#include "paragraph/open_shared.h"

#include <cstring>
#include <string>

#include "platform/os.h"

namespace para {
namespace {

int16_t g_defaultRetrySeconds = 5;

// Does nothing: the wait between tries is a busy retry.
void IdleHook() {}

// Translates a mode text into an open request; false for a mode without
// one of the letters r, w, a and c.
bool ParseMode(const char* mode, os::OpenRequest* request, std::string* streamMode) {
  const char* kind = std::strpbrk(mode, "rwac");
  if (!kind) return false;
  bool plus = std::strchr(mode, '+') != nullptr;
  request->read = plus;
  request->write = true;
  request->share = os::Share::Nobody;
  *streamMode = mode;
  switch (*kind) {
    case 'r':
      request->read = true;
      request->write = plus;
      request->disposition = os::Disposition::OpenExisting;
      request->share = plus ? os::Share::Nobody : os::Share::All;
      break;
    case 'w':
      request->disposition = os::Disposition::CreateAlways;
      break;
    case 'a':
      request->append = true;
      request->disposition = os::Disposition::OpenAlways;
      request->share = os::Share::ReadOnly;
      break;
    case 'c':
      // A new file only; the stream is then used as for "w".
      request->disposition = os::Disposition::CreateNew;
      *streamMode = "w";
      if (std::strchr(mode, 'b')) *streamMode += "b";
      else if (std::strchr(mode, 't')) *streamMode += "t";
      if (plus) *streamMode += "+";
      break;
  }
  return true;
}

}  // namespace

int16_t DefaultRetrySeconds() { return g_defaultRetrySeconds; }

Opened OpenShared(int16_t retrySeconds, const char* path, const char* mode) {
  Opened result;
  if (!path) {
    g_defaultRetrySeconds = retrySeconds;
    return result;
  }
  if (retrySeconds < 0) retrySeconds = g_defaultRetrySeconds;
  os::OpenRequest request;
  std::string streamMode;
  if (!mode || !ParseMode(mode, &request, &streamMode)) {
    result.error = os::kInvalidParameter;
    return result;
  }
  request.streamMode = streamMode.c_str();
  const int64_t start = os::WallClockMilliseconds();
  const int64_t limit = static_cast<int64_t>(retrySeconds) * 1000;
  for (;;) {
    os::OpenedStream opened = os::OpenStream(path, request);
    if (opened.file) {
      result.file = std::move(opened.file);
      result.error = 0;
      return result;
    }
    result.error = opened.error;
    if (opened.error != os::kSharingViolation) return result;
    int64_t now = os::WallClockMilliseconds();
    if (now < start || now - start >= limit) return result;
    IdleHook();
  }
}

Opened OpenShared(const char* path, const char* mode) { return OpenShared(-1, path, mode); }

}  // namespace para
