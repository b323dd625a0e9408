#include "tools/vlsim/text_lines.h"

#include <cstdio>

#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "paragraph/rewrite.h"
#include "platform/os.h"

namespace vlsim {
namespace {

// Shared files wait this long for another opener to let go.
inline constexpr int16_t kRetrySeconds = 10;

std::string ReadAll(FILE* stream) {
  std::string bytes;
  char block[4096];
  std::rewind(stream);
  for (size_t n; (n = std::fread(block, 1, sizeof block, stream)) > 0;) bytes.append(block, n);
  return bytes;
}

bool WriteAll(FILE* stream, const std::string& bytes) {
  return std::fwrite(bytes.data(), 1, bytes.size(), stream) == bytes.size() &&
         std::fflush(stream) == 0;
}

}  // namespace

Lines SplitLines(const std::string& bytes) {
  Lines lines;
  size_t begin = 0;
  while (begin < bytes.size()) {
    size_t end = bytes.find('\n', begin);
    if (end == std::string::npos) end = bytes.size();
    size_t cut = end > begin && bytes[end - 1] == '\r' ? end - 1 : end;
    lines.emplace_back(bytes, begin, cut - begin);
    begin = end + 1;
  }
  return lines;
}

std::string JoinLines(const Lines& lines) {
  std::string bytes;
  for (const std::string& line : lines) bytes += line + "\r\n";
  return bytes;
}

size_t FindHeader(const Lines& lines, const char* header, size_t from) {
  for (size_t i = from; i < lines.size(); ++i)
    if (para::StartsWithNoCase(lines[i].c_str(), header)) return i;
  return kNone;
}

size_t ParagraphEnd(const Lines& lines, size_t header) {
  size_t i = header + 1;
  while (i < lines.size() && !para::IsHeader(lines[i].c_str())) ++i;
  return i;
}

size_t FindKeyword(const Lines& lines, size_t begin, size_t end, const char* keyword) {
  for (size_t i = begin; i < end && i < lines.size(); ++i)
    if (para::StartsWithNoCase(lines[i].c_str(), keyword)) return i;
  return kNone;
}

std::string ValueOf(const std::string& line) {
  const char* value = para::ValueOf(line.c_str());
  std::string text = value ? value : "";
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t')) text.pop_back();
  return text;
}

size_t SetValue(Lines& lines, size_t begin, size_t end, const char* keyword,
                const std::string& value) {
  std::string line = value.empty() ? std::string(keyword) : std::string(keyword) + " " + value;
  size_t at = FindKeyword(lines, begin, end, keyword);
  if (at != kNone) {
    lines[at] = line;
    return at;
  }
  lines.insert(lines.begin() + static_cast<long>(end), line);
  return end;
}

int EditSharedFile(const std::string& path, bool create, const std::function<bool(Lines&)>& edit) {
  para::Opened file = para::OpenShared(kRetrySeconds, path.c_str(), "rb+");
  if (!file && create && file.error == os::kFileNotFound)
    file = para::OpenShared(kRetrySeconds, path.c_str(), "wb+");
  if (!file) return file.error ? file.error : os::kAccessDenied;
  Lines lines = SplitLines(ReadAll(file.get()));
  if (std::ferror(file.get())) return os::kAccessDenied;
  if (!edit(lines)) return os::kOk;

  std::string workPath;
  if (!para::WorkFileName(path.c_str(), &workPath)) return os::kFilenameTooLong;
  para::Opened work = para::OpenShared(kRetrySeconds, workPath.c_str(), "wb+");
  if (!work) return work.error ? work.error : os::kAccessDenied;
  int error = os::kOk;
  if (!WriteAll(work.get(), JoinLines(lines)) || para::CopyBack(work.get(), file.get()) != 0)
    error = os::kAccessDenied;
  para::RemoveWorkFile(work.file, workPath);
  return error;
}

int ReadSharedFile(const std::string& path, Lines* lines) {
  para::Opened file = para::OpenShared(kRetrySeconds, path.c_str(), "rb");
  if (!file) return file.error ? file.error : os::kAccessDenied;
  *lines = SplitLines(ReadAll(file.get()));
  return std::ferror(file.get()) ? os::kAccessDenied : os::kOk;
}

int CreateNewFile(const std::string& path, const Lines& lines) {
  para::Opened file = para::OpenShared(kRetrySeconds, path.c_str(), "cb");
  if (!file) return file.error ? file.error : os::kAccessDenied;
  if (WriteAll(file.get(), JoinLines(lines))) return os::kOk;
  file.file.reset();
  os::RemoveFile(path.c_str());
  return os::kAccessDenied;
}

}  // namespace vlsim
