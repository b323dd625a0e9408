#include "api/unique_file.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <unordered_set>
#include <vector>

#include "platform/os.h"

namespace vl {
namespace {

inline constexpr int kLowReserve = 39;      // counters 000-039, tried first in order
inline constexpr int kRandomBudget = 20;    // attempts of the decimal phase after its first
inline constexpr int kBase36Limit = 46656;  // 36^3
inline constexpr size_t kMaxDirectoryChars = 256;

// The counters to try, as three-character texts, in three phases: 000 to
// 039; decimal from a pseudo-random start in 040-999; base 36 from a
// pseudo-random start in 00A-ZZZ until the start comes round again.
class CounterSequence {
 public:
  bool Next(char (&text)[4]) {
    switch (phase_) {
      case 1:
        if (value_ <= kLowReserve) return Decimal(value_++, text);
        phase_ = 2;
        {
          os::LocalTime t = os::Now();
          value_ = (t.millisecond + t.second) % 960 + 40;
        }
        attempts_ = 0;
        [[fallthrough]];
      case 2:
        if (attempts_ <= kRandomBudget) {
          ++attempts_;
          int counter = value_;
          value_ = value_ >= 999 ? 40 : value_ + 1;
          return Decimal(counter, text);
        }
        phase_ = 3;
        {
          os::LocalTime t = os::Now();
          uint32_t seed = static_cast<uint32_t>(t.millisecond) * 53u + static_cast<uint32_t>(t.second);
          start_ = value_ = static_cast<int>(seed % 46646u) + 10;
        }
        return Base36(value_, text);
      default: {
        value_ = value_ + 1 >= kBase36Limit ? 10 : value_ + 1;
        if (value_ == start_) return false;
        return Base36(value_, text);
      }
    }
  }

 private:
  static bool Decimal(int value, char (&text)[4]) {
    std::snprintf(text, sizeof text, "%03d", value);
    return true;
  }
  static bool Base36(int value, char (&text)[4]) {
    static const char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
    if (value >= kBase36Limit) return false;
    text[0] = kDigits[value / 1296];
    text[1] = kDigits[value / 36 % 36];
    text[2] = kDigits[value % 36];
    text[3] = '\0';
    return true;
  }

  int phase_ = 1;
  int value_ = 0;
  int attempts_ = 0;
  int start_ = 0;
};

// Counts the entries (files or directories) with the base name of pattern
// (at most limit); -1 when the directory cannot be searched. A missing
// directory counts none, so that the creation reports it.
int CountFiles(const std::string& pattern, int limit) {
  std::vector<std::string> names;
  int error =
      os::ListFiles(pattern.c_str(), &names, limit, os::Listing::FilesAndDirectories);
  if (error == os::kPathNotFound) return 0;
  return error ? -1 : static_cast<int>(names.size());
}

std::string UpperBase(const std::string& name) {
  std::string base = name.substr(0, name.find('.'));
  for (char& c : base)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  return base;
}

// The base names (before the first dot, in upper case) of every entry of
// the directory whose name begins with start: what a search for
// "candidate.*" would find, for all candidates at once. False when the
// directory cannot be searched; a missing directory has none.
bool TakenBaseNames(const std::string& directory, const std::string& start,
                    std::unordered_set<std::string>* taken) {
  std::vector<std::string> names;
  int error = os::ListFiles((directory + start + "*").c_str(), &names, 0,
                            os::Listing::FilesAndDirectories);
  if (error == os::kPathNotFound) return true;
  if (error) return false;
  for (const std::string& name : names) taken->insert(UpperBase(name));
  return true;
}

}  // namespace

UniqueFileResult MakeUniqueFile(const char* prefix, const char* extension, const char* directory,
                                std::string* name) {
  const size_t directoryLength = std::strlen(directory);
  if (directoryLength > kMaxDirectoryChars || std::strlen(prefix) != 4 ||
      std::strlen(extension) > 3)
    return UniqueFileResult::BadArguments;
  if (directoryLength == 0 || directory[directoryLength - 1] != '\\')
    return UniqueFileResult::Failed;

  // One search of the directory serves every candidate; the count after the
  // exclusive creation still decides, so a name taken since is given up.
  std::unordered_set<std::string> taken;
  if (!TakenBaseNames(directory, std::string("~") + prefix, &taken))
    return UniqueFileResult::Failed;
  CounterSequence counters;
  char counter[4];
  while (counters.Next(counter)) {
    std::string base = std::string("~") + prefix + counter;
    if (taken.count(UpperBase(base))) continue;
    std::string stem = std::string(directory) + base;
    std::string path = stem + "." + extension;
    int error = os::CreateExclusive(path.c_str());
    if (error == os::kPathNotFound) return UniqueFileResult::PathNotFound;
    if (error == os::kFileExists || error == os::kAlreadyExists) continue;
    if (error == os::kTooManyOpenFiles) return UniqueFileResult::TooManyOpenFiles;
    if (error) return UniqueFileResult::Failed;
    // Another process may have taken the same base name with another
    // extension at the same moment: then this name is given up.
    int now = CountFiles(stem + ".*", 2);
    if (now != 1) os::RemoveFile(path.c_str());
    if (now > 1) continue;
    if (now < 1) return UniqueFileResult::Failed;  // the search failed, or the file went
    *name = base + "." + extension;
    return UniqueFileResult::Created;
  }
  return UniqueFileResult::AllExist;
}

}  // namespace vl
