// Submission benchmark: VlxSendSubmitFile of a one-page text message into
// an empty out directory, and into one whose list already holds 10,000
// messages. Prints submissions per second (the median time of one
// submission); the message's files and request are cleared between runs.
//
//   submit_bench [DIRECTORY] [LISTED]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "api/config.h"
#include "bench/bench_support.h"
#include "platform/os.h"
#include "vlapi.h"

namespace {

const int kRuns = 40;

void RemoveAllBut(const std::string& directory, const std::string& keep) {
  std::vector<std::string> names;
  os::ListFiles((directory + "*").c_str(), &names);
  for (const std::string& name : names)
    if (name != keep) os::RemoveFile((directory + name).c_str());
}

// The median time of one submission into an out directory whose list is list.
double MedianSubmission(VLHANDLE handle, const std::string& root, const std::string& list) {
  const std::string out = root + "USERS\\BENCH\\V-OUT\\", request = root + "REQUEST\\";
  const std::string submit = root + "SUBMIT.TXT";
  return bench::Median(
      kRuns,
      [&] {
        char body[9];
        VLRESULT rc = VlxSendSubmitFile(handle, submit.c_str(), "BNCH", body);
        if (rc != VL_OK) {
          std::fprintf(stderr, "submission failed: 0x%04X\n",
                       static_cast<unsigned>(static_cast<uint16_t>(rc)));
          std::exit(1);
        }
      },
      [&] {
        RemoveAllBut(out, "");
        RemoveAllBut(request, "VELOMAR.LOK");
        bench::WriteText(out + "MSGDIR.CTL", list);
      });
}

}  // namespace

int main(int argc, char** argv) {
  std::string temp;
  os::TempDirectory(&temp);
  const std::string root = argc > 1 ? std::string(argv[1]) + "\\" : temp + "vlsubmitbench\\";
  const int listed = argc > 2 ? std::atoi(argv[2]) : 10000;
  bench::MakeTree(root);
  for (const char* ini : {"SYSTEM\\V-DB\\USER.INI", "USERS\\BENCH\\V-DB\\USER.INI"})
    bench::WriteText(root + ini, "[OPTIONS]\r\nFrom: Bench\r\n");
  bench::WriteText(root + "SUBMIT.TXT",
            "%%[MESSAGE]\r\nComment: one page\r\nSubject: Benchmark\r\nTo: Sales\r\n"
            "Fax: 0123 456789\r\n%%[TEXT]\r\nA one-page text message.\r\n");
  vl::SetAreas((root + "SERVER").c_str(), (root + "SYSTEM").c_str(), (root + "USERS").c_str(),
               (root + "REQUEST").c_str());
  // The server's lock, held here: an open that denies writers fails on it.
  os::OpenRequest lock;
  lock.read = lock.write = true;
  lock.disposition = os::Disposition::OpenAlways;
  lock.share = os::Share::ReadOnly;
  os::OpenedStream server = os::OpenStream((root + "REQUEST\\VELOMAR.LOK").c_str(), lock);
  VLHANDLE handle = 0;
  if (!server.file || VlxAPIInit(&handle, "BENCH", 0, nullptr) != VL_OK) {
    std::fprintf(stderr, "cannot set up in %s\n", root.c_str());
    return 1;
  }
  const double empty = MedianSubmission(handle, root, bench::MessageList(0));
  const double full = MedianSubmission(handle, root, bench::MessageList(listed));
  std::printf("VlxSendSubmitFile of a one-page text message; median of %d runs\n", kRuns);
  std::printf("  empty out directory        %7.2f ms  %7.1f per second (goal >= 200)\n", empty,
              1000.0 / empty);
  std::printf("  %5d messages listed       %7.2f ms  %7.1f per second (goal >= 40)\n", listed,
              full, 1000.0 / full);
  VlxAPIClosedown(handle);
  return 0;
}
