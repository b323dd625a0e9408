#include "paragraph/rewrite.h"
#include "platform/os.h"

namespace para {

int CopyBack(FILE* source, FILE* target, int64_t unchanged) {
  if (std::fflush(source) != 0 || std::fflush(target) != 0) return kCopyBackFailed;
  std::rewind(source);
  const int64_t newLength = os::StreamLength(source);
  const int64_t oldLength = os::StreamLength(target);
  if (newLength < 0 || oldLength < 0) return kCopyBackFailed;
  if (newLength > 0 && std::fgetc(source) == EOF) return kCopyBackFailed;  // probe

  if (int error = os::SetStreamLength(target, newLength)) {
    bool diskFull = error == os::kDiskFull || error == os::kHandleDiskFull;
    if (diskFull && newLength > oldLength) os::SetStreamLength(target, oldLength);
    return kCopyBackFailed;
  }

  // The shared start stays as it is; copying resumes behind it.
  const int64_t skipped = unchanged < 0 ? 0 : unchanged < newLength ? unchanged : newLength;
  if (std::fseek(source, static_cast<long>(skipped), SEEK_SET) != 0 ||
      std::fseek(target, static_cast<long>(skipped), SEEK_SET) != 0) {
    os::SetStreamLength(target, skipped);  // cut to what was copied
    return kCopyBackFailed;
  }
  char block[512];
  int64_t copied = skipped;
  for (;;) {
    size_t n = std::fread(block, 1, sizeof block, source);
    if (n == 0) break;
    if (std::fwrite(block, 1, n, target) != n) break;
    copied += static_cast<int64_t>(n);
  }
  bool failed = std::ferror(source) || std::fflush(target) != 0 || std::ferror(target);
  if (copied < newLength) os::SetStreamLength(target, copied);
  return failed ? kCopyBackFailed : 0;
}

}  // namespace para
