// What the benchmarks share: files written through the platform layer, a
// fax tree for one user, and the median time of repeated work.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <vector>

#include "platform/os.h"

namespace bench {

// Writes text as the whole content of path; ends the program on failure.
inline void WriteText(const std::string& path, const std::string& text) {
  os::OpenRequest request;
  request.write = true;
  request.disposition = os::Disposition::CreateAlways;
  request.streamMode = "wb";
  os::OpenedStream out = os::OpenStream(path.c_str(), request);
  if (!out.file) {
    std::fprintf(stderr, "cannot write %s (error %d)\n", path.c_str(), out.error);
    std::exit(1);
  }
  std::fwrite(text.data(), 1, text.size(), out.file.get());
}

// Makes the areas of a fax tree under root (ending in a backslash) with the
// user BENCH, and sets them as the process's areas.
inline void MakeTree(const std::string& root) {
  for (const char* dir : {"", "SERVER", "SYSTEM", "SYSTEM\\V-DB", "REQUEST", "USERS",
                          "USERS\\BENCH", "USERS\\BENCH\\V-DB", "USERS\\BENCH\\V-OUT",
                          "USERS\\BENCH\\V-IN"})
    os::MakeDirectory((root + dir).c_str());
}

// The median time in milliseconds of runs runs of work; prepare runs
// before each, untimed.
inline double Median(int runs, const std::function<void()>& work,
                     const std::function<void()>& prepare = {}) {
  std::vector<double> times;
  for (int i = 0; i < runs; ++i) {
    if (prepare) prepare();
    auto start = std::chrono::steady_clock::now();
    work();
    auto end = std::chrono::steady_clock::now();
    times.push_back(std::chrono::duration<double, std::milli>(end - start).count());
  }
  std::sort(times.begin(), times.end());
  return times[times.size() / 2];
}

// The text of an out list holding entries sent messages M0000001 and on.
inline std::string MessageList(int entries) {
  std::string text = "[VELOMAR]\r\nType: SendDir\r\nRevision: A\r\n";
  char entry[600];
  for (int i = 1; i <= entries; ++i) {
    std::snprintf(entry, sizeof entry,
                  "\r\n[DOCUMENT]\r\nFile: M%07d.TXT\r\nComment: Report %d\r\nOrganisation: Org\r\n"
                  "[MESSAGE]\r\nAssocFile:\r\nFormat: ASCII\r\nAccepted: 26-11-21 10:20:30\r\n"
                  "Type: SEND\r\nStatus: OK\r\nUserStatus: Aw\r\nSubject: Report %d\r\n"
                  "MsgType: FAX\r\nCustom: \r\n",
                  i, i, i);
    text += entry;
  }
  return text;
}

}  // namespace bench
