// The message list under arbitrary contents and arbitrary changing calls.
// Input: the out list, "====", the in list, "====", one call a line:
//   +BODY|comment|subject|format|type|organisation|custom   append an entry
//   -BODY                 VlxDeleteMsg without the files
//   ~OLD|NEW              remove OLD and append NEW in one rewrite
//   !BODY                 VlxMarkMsgAsRead
//   >BODY|ext|comment     VlxSendMsgEx, its control and data files made first
//   ?BODY                 VlxGetMsgInfoEx
//   8                     the eight-bit switch off
// Texts may hold \r and \n.
// A leading '<' sends the call to the in directory. After every call the
// rule of the lists is checked: a call that returns 0 leaves a list that
// reads, with the same entries less the one removed and plus the one added;
// a call on a list that does not read fails and leaves its bytes as they were.
#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include "api/session.h"
#include "api/vlapi_internal.h"
#include "msg/msg_dir.h"
#include "paragraph/paragraph_reader.h"
#include "tests/fuzz/fuzz_support.h"

namespace {

using vlfuzz::Require;

struct Listing {
  VLRESULT rc = 0;
  std::vector<VLMSGINFOEX> entries;
};

// Every entry read into a full record, as a listing client reads them.
Listing List(VLHANDLE handle, uint16_t selector) {
  static std::vector<VLMSGINFOEX> records(2048);
  Listing listing;
  int16_t count = 0;
  listing.rc = VlxGetMsgListEx(handle, selector, static_cast<int16_t>(records.size()), &count,
                               sizeof(VLMSGINFOEX), records.data());
  Require(count >= 0, "a count is never negative");
  const size_t read = std::min(static_cast<size_t>(count), records.size());
  if (listing.rc == VL_OK) listing.entries.assign(records.begin(), records.begin() + read);
  return listing;
}

bool Same(const VLMSGINFOEX& a, const VLMSGINFOEX& b) { return std::memcmp(&a, &b, sizeof a) == 0; }

std::string Upper(std::string text) {
  for (char& c : text)
    if (c >= 'a' && c <= 'z') c = static_cast<char>(c - 32);
  return text;
}

// The entries less the first one named remove, plus one named add.
bool Follows(const Listing& before, const Listing& after, const std::string& remove,
             const std::string& add) {
  std::vector<VLMSGINFOEX> expected = before.entries;
  if (!remove.empty()) {
    for (auto it = expected.begin(); it != expected.end(); ++it)
      if (Upper(it->Body) == Upper(remove)) {
        expected.erase(it);
        break;
      }
  }
  const size_t kept = expected.size();
  if (after.entries.size() != kept + (add.empty() ? 0 : 1)) return false;
  for (size_t i = 0; i < kept; ++i)
    if (!Same(expected[i], after.entries[i])) return false;
  return add.empty() || Upper(after.entries[kept].Body) == Upper(add);
}

// Marking as read sets the user status of the first entry whose name
// begins with name, and nothing else.
bool MarkedFirst(const Listing& before, const Listing& after, const std::string& name) {
  if (before.entries.size() != after.entries.size()) return false;
  bool marked = false;
  for (size_t i = 0; i < before.entries.size(); ++i) {
    VLMSGINFOEX expected = before.entries[i];
    if (!marked && Upper(expected.Body).compare(0, name.size(), Upper(name)) == 0) {
      expected.UserStatus = 1;
      marked = true;
    }
    if (!Same(expected, after.entries[i])) return false;
  }
  return marked;
}

// Texts of calls may hold line ends, written as \r and \n.
std::string Unescaped(const std::string& text) {
  std::string out;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size() && (text[i + 1] == 'r' || text[i + 1] == 'n')) {
      out.push_back(text[++i] == 'r' ? '\r' : '\n');
    } else {
      out.push_back(text[i]);
    }
  }
  return out;
}

uint16_t Number(const std::string& text) {
  return static_cast<uint16_t>(std::strtoul(text.c_str(), nullptr, 10));
}

void Run(VLHANDLE handle, const vl::ApiSession& session, std::string call) {
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  uint16_t selector = VL_DIR_OUT;
  if (!call.empty() && call[0] == '<') {
    selector = VL_DIR_IN;
    call.erase(0, 1);
  }
  if (call.empty()) return;
  const char kind = call[0];
  if (kind == '>') selector = VL_DIR_OUT;
  std::vector<std::string> f = vlfuzz::Fields(call.substr(1));
  f.resize(7);
  for (std::string& field : f) field = Unescaped(field).c_str();  // as the C interface sees it
  const std::string list = (selector == VL_DIR_OUT ? tree.Out() : tree.In()) + "MSGDIR.CTL";
  const Listing before = List(handle, selector);
  const std::string bytes = vlfuzz::ReadFile(list);
  VLRESULT rc = 0;
  std::string removed, added;
  switch (kind) {
    case '+': {
      const vl::NewEntry entry{f[0].c_str(), f[1].c_str(), f[2].c_str(), Number(f[3]),
                               Number(f[4]),  f[5].c_str(), f[6].c_str()};
      rc = vl::MsgDirUpdate(session, selector, nullptr, &entry);
      if (selector == VL_DIR_OUT) added = f[0];
      break;
    }
    case '-':
      rc = VlxDeleteMsg(handle, selector, f[0].c_str(), 0);
      removed = f[0];
      break;
    case '~': {
      const vl::NewEntry entry{f[1].c_str(), "", "", 2, 1, "", ""};
      rc = vl::MsgDirUpdate(session, selector, f[0].c_str(), &entry);
      removed = f[0];
      if (selector == VL_DIR_OUT) added = f[1];
      break;
    }
    case '!':
      rc = VlxMarkMsgAsRead(handle, selector, f[0].c_str());
      break;
    case '>': {
      const std::string extension = f[1].substr(0, 3);
      for (const std::string& ext : {std::string("CTL"), extension})
        if (!f[0].empty() && f[0].size() <= 8 && Upper(f[0]) != "MSGDIR" &&
            (f[0] + ext).find_first_of("/\\") == std::string::npos)
          vlfuzz::WriteFile(Upper(tree.Out() + f[0] + "." + ext), "");
      VLMSGINFOEX info{};
      std::strncpy(info.Body, f[0].c_str(), sizeof info.Body);
      std::strncpy(info.Comment, f[2].c_str(), sizeof info.Comment - 1);
      rc = VlxSendMsgEx(handle, extension.c_str(), sizeof info, &info);
      added = f[0];
      break;
    }
    case '8':  // the eight-bit switch off from here on
      para::SetEightBitText(false);
      return;
    case '?': {
      VLMSGINFOEX info;
      VlxGetMsgInfoEx(handle, selector, f[0].c_str(), sizeof info, &info);
      return;
    }
    default:
      return;
  }
  const Listing after = List(handle, selector);
  const bool unchanged = vlfuzz::ReadFile(list) == bytes;
  if (before.rc != VL_OK)
    Require(rc != VL_OK && unchanged, "a call on a list that does not read fails and keeps it");
  // A submission whose request cannot be written keeps its entry.
  const bool entryStays = kind == '>' && !unchanged;
  if (rc != VL_OK && !entryStays) {
    Require(unchanged, "a failed call leaves the list as it was");
    return;
  }
  Require(after.rc == VL_OK, "a list reads after every call that returns 0");
  if (kind == '!') {
    Require(MarkedFirst(before, after, f[0]), "marking changes the first matching user status");
    return;
  }
  Require(Follows(before, after, removed, added), "the list keeps its other entries");
  if (!added.empty())
    Require(after.entries.back().Status == 1 && after.entries.back().UserStatus == 2,
            "a new entry is submitted and awaited");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  vlfuzz::ResetProcess();
  const std::vector<std::string> sections = vlfuzz::Sections(data, size, 3);
  const vlfuzz::Tree& tree = vlfuzz::TheTree();
  vlfuzz::WriteFile(tree.Out() + "MSGDIR.CTL", sections[0]);
  vlfuzz::WriteFile(tree.In() + "MSGDIR.CTL", sections[1]);
  vlfuzz::Session session;
  const vl::ApiSession& record = *vl::SessionFromHandle(session.handle());
  std::string call;
  int calls = 0;
  for (char c : sections[2] + "\n") {
    if (c != '\n') {
      call.push_back(c);
      continue;
    }
    if (++calls > 16) break;
    Run(session.handle(), record, call);
    call.clear();
  }
  return 0;
}
