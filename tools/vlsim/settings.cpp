#include "tools/vlsim/settings.h"

#include <algorithm>
#include <cstdlib>

#include "lib/server_config.h"
#include "platform/os.h"
#include "tools/vlsim/text_lines.h"

namespace vlsim {

namespace {

std::string WithSeparator(const std::string& root) {
  if (!root.empty() && root.back() != '\\' && root.back() != '/') return root + '\\';
  return root;
}

}  // namespace

Areas TreeAreas(const std::string& root) {
  const std::string base = WithSeparator(root);
  return {base + "USERS\\", base + "REQUEST\\", base + "SYSTEM\\", base + "SERVER\\"};
}

std::string TreeConfigPath(const std::string& root) { return WithSeparator(root) + "VELOMAR.INI"; }

int ReadServerAreas(const std::string& tree, Areas* areas) {
  const int rc = tree.empty() ? vl::ReadServerConfig()
                              : vl::ReadServerConfigFrom(TreeConfigPath(os::FullPath(tree.c_str())));
  if (rc) return rc;
  const vl::ServerConfig& config = vl::ServerSettings();
  *areas = {config.allUserArea, config.requestArea, config.systemArea, config.serverArea};
  return 0;
}

int NumberIn(const std::string& text, int low, int high, int fallback) {
  char* end = nullptr;
  long value = std::strtol(text.c_str(), &end, 10);
  if (end == text.c_str()) return fallback;
  return static_cast<int>(std::clamp<long>(value, low, high));
}

std::vector<std::string> SplitWords(const std::string& text) {
  std::vector<std::string> words;
  std::string word;
  for (char c : text + " ") {
    if (c == ' ' || c == ',' || c == '\t') {
      if (!word.empty()) words.push_back(word);
      word.clear();
    } else {
      word += c;
    }
  }
  return words;
}

void ReadSetupSettings(const std::string& paragraph, Settings* settings) {
  Lines lines;
  if (ReadSharedFile(settings->areas.system + "V-DB\\SETUP.INI", &lines) != 0) return;
  size_t header = FindHeader(lines, paragraph.c_str());
  if (header == kNone) return;
  const size_t end = ParagraphEnd(lines, header);
  auto value = [&](const char* keyword, std::string* out) {
    size_t at = FindKeyword(lines, header + 1, end, keyword);
    if (at == kNone) return false;
    *out = ValueOf(lines[at]);
    return true;
  };
  std::string text;
  if (value("SimDevices:", &text))
    settings->devices = NumberIn(text, 1, kMostDevices, settings->devices);
  if (value("SimStepDelayMS:", &text))
    settings->stepDelayMs = NumberIn(text, 0, kLongestPause, settings->stepDelayMs);
  if (value("SimPollMS:", &text)) settings->pollMs = NumberIn(text, 1, kLongestPause, settings->pollMs);
  if (value("SimFailNumbers:", &text)) settings->failNumbers = SplitWords(text);
  if (value("SimLinks:", &text)) settings->links = SplitWords(text);
}

}  // namespace vlsim
