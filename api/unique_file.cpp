#include "api/unique_file.h"

#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "api/text.h"
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

std::string UpperBase(const std::string& name) { return UpperCase(name.substr(0, name.find('.'))); }

// Which candidate names the directory already holds, with any extension:
// what a search for "candidate.*" finds, answered from one search per block
// of candidates that share the counter's first character ("~PPPPc*"), made
// when the first candidate of the block is asked about. A directory search
// costs a pass over all its entries, and every entry it returns costs more:
// blocks keep both few.
class TakenNames {
 public:
  TakenNames(std::string directory, std::string prefix)
      : directory_(std::move(directory)), prefix_(std::move(prefix)) {}

  // Whether base is taken; false with failed set when a search fails. A
  // missing directory holds nothing, so that the creation reports it.
  bool Taken(const std::string& base, bool* failed) {
    const char first = base[1 + prefix_.size()];
    if (searched_.find(first) == std::string::npos) {
      std::vector<std::string> names;
      const std::string pattern = directory_ + "~" + prefix_ + first + "*";
      int error = os::ListFiles(pattern.c_str(), &names, 0, os::Listing::FilesAndDirectories);
      if (error && error != os::kPathNotFound) {
        *failed = true;
        return false;
      }
      for (const std::string& name : names) taken_.insert(UpperBase(name));
      searched_.push_back(first);
    }
    return taken_.count(UpperBase(base)) > 0;
  }

 private:
  std::string directory_, prefix_;
  std::string searched_;  // first counter characters whose block was searched
  std::unordered_set<std::string> taken_;
};

}  // namespace

UniqueFileResult MakeUniqueFile(const char* prefix, const char* extension, const char* directory,
                                std::string* name) {
  const size_t directoryLength = std::strlen(directory);
  if (directoryLength > kMaxDirectoryChars || std::strlen(prefix) != 4 ||
      std::strlen(extension) > 3)
    return UniqueFileResult::BadArguments;
  if (directoryLength == 0 || directory[directoryLength - 1] != '\\')
    return UniqueFileResult::Failed;

  // Candidates are looked up in blocks; the count after the exclusive
  // creation still decides, so a name taken since the look is given up.
  TakenNames taken(directory, prefix);
  CounterSequence counters;
  char counter[4];
  while (counters.Next(counter)) {
    std::string base = std::string("~") + prefix + counter;
    bool failed = false;
    const bool isTaken = taken.Taken(base, &failed);
    if (failed) return UniqueFileResult::Failed;
    if (isTaken) continue;
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
