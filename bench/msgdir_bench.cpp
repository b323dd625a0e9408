// Message directory file benchmark: a list of 10,000 entries, read plainly
// line by line (the floor), listed whole with VlxGetMsgListEx, searched to
// its last entry with VlxGetMsgInfoEx, and rewritten by MsgDirUpdate
// removing one completed entry. Prints the median of several runs of each.
//
//   msgdir_bench [DIRECTORY] [ENTRIES]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <vector>

#include "api/config.h"
#include "api/session.h"
#include "msg/msg_dir.h"
#include "bench/bench_support.h"
#include "platform/os.h"
#include "vlapi.h"

namespace {

const int kRuns = 15;

std::string Entry(int i) {
  char text[640];
  std::snprintf(text, sizeof text,
                "\r\n[DOCUMENT]\r\nFile: M%07d.TXT\r\nComment: Quarterly report for customer %d\r\n"
                "Organisation: Customer %d Ltd\r\n[MESSAGE]\r\nAssocFile:\r\nFormat: ASCII\r\n"
                "Accepted: 26-11-21 10:20:30\r\nType: SEND\r\nStatus: %s\r\nUserStatus: Aw\r\n"
                "Subject: Report %d of the quarter\r\nMsgType: FAX\r\nCustom: ref-%d\r\n",
                i, i, i, i % 3 ? "OK" : "Se", i, i);
  return text;
}

}  // namespace

int main(int argc, char** argv) {
  std::string temp;
  os::TempDirectory(&temp);
  const std::string root = argc > 1 ? std::string(argv[1]) + "\\" : temp + "vlbench\\";
  const int entries = argc > 2 ? std::atoi(argv[2]) : 10000;
  bench::MakeTree(root);
  vl::SetAreas((root + "SERVER").c_str(), (root + "SYSTEM").c_str(), (root + "USERS").c_str(),
               (root + "REQUEST").c_str());
  VLHANDLE handle = 0;
  if (VlxAPIInit(&handle, "BENCH", 0, nullptr) != VL_OK) {
    std::fprintf(stderr, "cannot log on in %s\n", root.c_str());
    return 1;
  }
  const std::string list = root + "USERS\\BENCH\\V-OUT\\MSGDIR.CTL";
  std::string text = "[VELOMAR]\r\nType: SendDir\r\nRevision: A\r\n";
  for (int i = 1; i <= entries; ++i) text += Entry(i);
  bench::WriteText(list, text);
  char last[16];
  std::snprintf(last, sizeof last, "M%07d", entries);

  const double plain = bench::Median(kRuns, [&] {
    os::OpenRequest request;
    request.read = true;
    os::OpenedStream in = os::OpenStream(list.c_str(), request);
    char line[281];
    int lines = 0;
    while (std::fgets(line, sizeof line, in.file.get())) ++lines;
    if (lines == 0) std::exit(1);
  });
  std::vector<VLMSGINFOEX> records(static_cast<size_t>(entries));
  const double listing = bench::Median(kRuns, [&] {
    int16_t count = 0;
    if (VlxGetMsgListEx(handle, VL_DIR_OUT, static_cast<int16_t>(entries), &count, 272,
                        records.data()) != VL_OK || count != entries)
      std::exit(1);
  });
  const double lookup = bench::Median(kRuns, [&] {
    VLMSGINFOEX info;
    if (VlxGetMsgInfoEx(handle, VL_DIR_OUT, last, 272, &info) != VL_OK) std::exit(1);
  });
  vl::SessionPtr session = vl::SessionFromHandle(handle);
  const double removal = bench::Median(kRuns,
      [&] {
        if (vl::MsgDirUpdate(*session, VL_DIR_OUT, last, nullptr) != VL_OK) std::exit(1);
      },
      [&] { bench::WriteText(list, text); });

  std::printf("MSGDIR.CTL of %d entries, %zu bytes; median of %d runs\n", entries, text.size(),
              kRuns);
  std::printf("  plain read, line by line      %8.2f ms\n", plain);
  std::printf("  VlxGetMsgListEx, all entries  %8.2f ms  (%.2f x plain read; goal <= 3)\n",
              listing, listing / plain);
  std::printf("  VlxGetMsgInfoEx, last entry   %8.2f ms  (%.2f x plain read; goal <= 2)\n",
              lookup, lookup / plain);
  std::printf("  MsgDirUpdate, remove last     %8.2f ms  (goal < 50 ms)\n", removal);
  VlxAPIClosedown(handle);
  return 0;
}
