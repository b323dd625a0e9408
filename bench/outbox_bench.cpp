// Outbox benchmark: submission and log-on as the out directory grows, in
// one process and with one process per message. The outbox holds real
// messages: a control file, a data file and a list entry each, named as
// the unique-name generator names them (prefix BNCH: 000-999, then base 36).
// At 0, 1,000 and 10,000 messages it prints
//   - VlxSendSubmitFile per second in one process (median of 40),
//   - submissions per second with one process per message (bench_client,
//     200 runs one after another) against an empty process (bench_empty),
//   - the time of one process per listing of the whole list,
//   - the profile of one submission: platform calls by kind, and the time
//     of its parts (log-on, unique name, look-up of an unknown name).
// Child processes find the tree through the per-user VLCLIENT.INI, which
// the benchmark writes and puts back afterwards.
//
//   outbox_bench [DIRECTORY]
#include <windows.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <unordered_set>
#include <vector>

#include "api/config.h"
#include "bench/bench_support.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "vlapi.h"

namespace {

using Clock = std::chrono::steady_clock;

const int kInProcessRuns = 40;
const int kProcessRuns = 200;
const char kControl[] =
    "[VELOMAR]\r\nType: SendControl\r\nRevision: A\r\n\r\n[DOCUMENT]\r\nFile: %s.TXT\r\n"
    "Comment: Quarterly report\r\nOrganisation: Acme\r\n[MESSAGE]\r\nAssocFile:\r\nFormat: ASCII\r\n"
    "Accepted: 26-11-21 10:20:30\r\nType: SEND\r\nStatus: OK\r\nUserStatus: Aw\r\nMsgType: FAX\r\n"
    "Custom: \r\n[OPTIONS]\r\nFrom: Bench\r\nPriority: NORMAL\r\nHeader: NoToFrDaTi\r\n"
    "Quality: NORMAL\r\nSubject: Report\r\n[ADDRESSEES]\r\nShortname:\r\nAddrStatus: OK\r\n"
    "Name: Sales\r\nField: Fax 0123 456789\r\nVia: FAX-ANY 0123 456789\r\n\r\n[HISTORY]\r\n"
    "MessageID: SIM1\r\nSentOK: 26-11-21 10:20:40, 1, \"Sales\", FAX-ANY, \"0123 456789\", 0, 1, "
    "0:00:11, \"FAX1\", \"\"\r\n";

double Since(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// The counters of the first count names the generator hands out.
std::vector<std::string> GeneratorNames(int count) {
  std::vector<std::string> names;
  std::unordered_set<std::string> seen;
  char text[16];
  for (int i = 0; i < 1000 && static_cast<int>(names.size()) < count; ++i) {
    std::snprintf(text, sizeof text, "~BNCH%03d", i);
    names.push_back(text);
    seen.insert(text);
  }
  static const char kDigits[] = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ";
  for (int v = 10; v < 46656 && static_cast<int>(names.size()) < count; ++v) {
    std::snprintf(text, sizeof text, "~BNCH%c%c%c", kDigits[v / 1296], kDigits[v / 36 % 36],
                  kDigits[v % 36]);
    if (seen.insert(text).second) names.push_back(text);
  }
  return names;
}

struct Tree {
  std::string root, out, request;
};

// Empties the out directory and the request area (but the server's lock),
// then fills the outbox with count messages.
void FillOutbox(const Tree& tree, int count) {
  std::vector<std::string> names;
  for (const std::string* directory : {&tree.out, &tree.request}) {
    os::ListFiles((*directory + "*").c_str(), &names);
    for (const std::string& name : names)
      if (name != "VELOMAR.LOK") os::RemoveFile((*directory + name).c_str());
  }
  std::string list = "[VELOMAR]\r\nType: SendDir\r\nRevision: A\r\n";
  char text[2048];
  for (const std::string& name : GeneratorNames(count)) {
    std::snprintf(text, sizeof text, kControl, name.c_str());
    bench::WriteText(tree.out + name + ".CTL", text);
    bench::WriteText(tree.out + name + ".TXT", "A one-page text message.\r\n");
    std::snprintf(text, sizeof text,
                  "\r\n[DOCUMENT]\r\nFile: %s.TXT\r\nComment: Quarterly report\r\n"
                  "Organisation: Acme\r\n[MESSAGE]\r\nAssocFile:\r\nFormat: ASCII\r\n"
                  "Accepted: 26-11-21 10:20:30\r\nType: SEND\r\nStatus: OK\r\nUserStatus: Aw\r\n"
                  "Subject: Report\r\nMsgType: FAX\r\nCustom: \r\n",
                  name.c_str());
    list += text;
  }
  bench::WriteText(tree.out + "MSGDIR.CTL", list);
}

void RemoveRequests(const Tree& tree) {
  std::vector<std::string> names;
  os::ListFiles((tree.request + "*.CTL").c_str(), &names);
  for (const std::string& name : names) os::RemoveFile((tree.request + name).c_str());
}

void Check(VLRESULT rc, const char* what) {
  if (rc == VL_OK) return;
  std::fprintf(stderr, "%s failed: 0x%04X\n", what, static_cast<unsigned>(static_cast<uint16_t>(rc)));
  std::exit(1);
}

// Runs a program to its end; false when it could not start or failed.
bool RunProcess(const std::string& commandLine) {
  STARTUPINFOA startup{};
  startup.cb = sizeof startup;
  PROCESS_INFORMATION process{};
  std::string line = commandLine;
  if (!CreateProcessA(nullptr, line.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr,
                      &startup, &process))
    return false;
  WaitForSingleObject(process.hProcess, INFINITE);
  DWORD code = 1;
  GetExitCodeProcess(process.hProcess, &code);
  CloseHandle(process.hThread);
  CloseHandle(process.hProcess);
  return code == 0;
}

// Milliseconds per run of runs runs of commandLine, one after another.
double PerProcess(const std::string& commandLine, int runs) {
  const auto start = Clock::now();
  for (int i = 0; i < runs; ++i)
    if (!RunProcess(commandLine)) {
      std::fprintf(stderr, "failed: %s\n", commandLine.c_str());
      std::exit(1);
    }
  return Since(start) / runs;
}

struct Profile {
  double logOn, autoFile, lookUp, submission, search, creation, enumeration;
  int calls[static_cast<int>(os::fault::Op::Count)];
};

// One submission counted by kind of platform call, and its parts timed.
Profile ProfileSubmission(VLHANDLE handle, const Tree& tree, const std::string& submit) {
  Profile profile{};
  auto start = Clock::now();
  VLHANDLE other = 0;
  Check(VlxAPIInit(&other, "BENCH", 0, nullptr), "log-on");
  VlxAPIClosedown(other);
  profile.logOn = Since(start);
  char name[16];
  start = Clock::now();
  Check(VlxCreateAutoFile(handle, "BNCH", "CTL", tree.out.c_str(), name), "unique name");
  profile.autoFile = Since(start);
  os::RemoveFile((tree.out + name + ".CTL").c_str());
  VLMSGINFOEX info;
  start = Clock::now();
  VlxGetMsgInfoEx(handle, VL_DIR_OUT, "UNKNOWN", sizeof info, &info);
  profile.lookUp = Since(start);
  // The floor: one search of the out directory, one new file in it.
  std::vector<std::string> none;
  profile.search = bench::Median(9, [&] { os::ListFiles((tree.out + "~ZZZZ000.*").c_str(), &none); });
  profile.enumeration = bench::Median(9, [&] {
    os::ListFiles((tree.out + "~BNCH0*").c_str(), &none, 0, os::Listing::FilesAndDirectories);
  });
  profile.creation = bench::Median(9, [&] {
    os::CreateExclusive((tree.out + "~ZZZZ000.CTL").c_str());
    os::RemoveFile((tree.out + "~ZZZZ000.CTL").c_str());
  });
  os::fault::Inject(os::fault::Op::Any, 1 << 30, 0);  // counts only
  start = Clock::now();
  char body[9];
  Check(VlxSendSubmitFile(handle, submit.c_str(), "BNCH", body), "submission");
  profile.submission = Since(start);
  for (int op = 0; op < static_cast<int>(os::fault::Op::Count); ++op)
    profile.calls[op] = os::fault::Calls(static_cast<os::fault::Op>(op));
  os::fault::Clear();
  return profile;
}

// The per-user client configuration naming the tree; the old one comes back
// when the benchmark ends.
class ClientConfiguration {
 public:
  explicit ClientConfiguration(const Tree& tree) {
    std::string appData;
    os::AppDataFolder(&appData);
    os::MakeDirectory((appData + "Ornavex").c_str());
    os::MakeDirectory((appData + "Ornavex\\Velomar Client").c_str());
    path_ = appData + "Ornavex\\Velomar Client\\VLCLIENT.INI";
    if (FILE* old = std::fopen(path_.c_str(), "rb")) {
      char block[4096];
      size_t got;
      while ((got = std::fread(block, 1, sizeof block, old)) > 0) old_.append(block, got);
      std::fclose(old);
      hadOld_ = true;
    }
    bench::WriteText(path_, "[WORKSTATION]\r\nAllUserArea: " + tree.root + "USERS\\\r\nRequestArea: " +
                                tree.request + "\r\nSystemArea: " + tree.root + "SYSTEM\\\r\n" +
                                "ServerArea: " + tree.root + "SERVER\\\r\n");
  }
  ~ClientConfiguration() {
    if (hadOld_) bench::WriteText(path_, old_);
    else os::RemoveFile(path_.c_str());
  }

 private:
  std::string path_, old_;
  bool hadOld_ = false;
};

}  // namespace

int main(int argc, char** argv) {
  std::string temp;
  os::TempDirectory(&temp);
  Tree tree;
  tree.root = argc > 1 ? std::string(argv[1]) + "\\" : temp + "VLOUTBOX\\";
  tree.out = tree.root + "USERS\\BENCH\\V-OUT\\";
  tree.request = tree.root + "REQUEST\\";
  bench::MakeTree(tree.root);
  for (const char* ini : {"SYSTEM\\V-DB\\USER.INI", "USERS\\BENCH\\V-DB\\USER.INI"})
    bench::WriteText(tree.root + ini, "[OPTIONS]\r\nFrom: Bench\r\n");
  const std::string submit = tree.root + "SUBMIT.TXT";
  bench::WriteText(submit,
                   "%%[MESSAGE]\r\nComment: one page\r\nSubject: Benchmark\r\nTo: Sales\r\n"
                   "Fax: 0123 456789\r\n%%[TEXT]\r\nA one-page text message.\r\n");
  vl::SetAreas((tree.root + "SERVER").c_str(), (tree.root + "SYSTEM").c_str(),
               (tree.root + "USERS").c_str(), tree.request.c_str());
  // The server's lock, held here for this process and its children.
  os::OpenRequest lock;
  lock.read = lock.write = true;
  lock.disposition = os::Disposition::OpenAlways;
  lock.share = os::Share::ReadOnly;
  os::OpenedStream server = os::OpenStream((tree.request + "VELOMAR.LOK").c_str(), lock);
  VLHANDLE handle = 0;
  if (!server.file || VlxAPIInit(&handle, "BENCH", 0, nullptr) != VL_OK) {
    std::fprintf(stderr, "cannot set up in %s\n", tree.root.c_str());
    return 1;
  }
  ClientConfiguration configuration(tree);
  char self[MAX_PATH];
  GetModuleFileNameA(nullptr, self, sizeof self);
  std::string bin = self;
  bin.erase(bin.find_last_of('\\') + 1);
  const std::string client = "\"" + bin + "bench_client.exe\"";

  const double empty = PerProcess("\"" + bin + "bench_empty.exe\"", kProcessRuns);
  FillOutbox(tree, 0);
  const double load = PerProcess(client + " load", kProcessRuns);
  const double logOn = PerProcess(client + " logon BENCH", kProcessRuns);
  std::printf("Outbox benchmark in %s\n", tree.root.c_str());
  std::printf("  an empty process: %.1f ms; one that loads the DLL: %.1f ms; one that logs on "
              "and off: %.1f ms\n\n",
              empty, load, logOn);
  std::printf("%8s | %-30s | %-30s | %s\n", "messages", "one process: submissions/s",
              "process per message: per s", "profile of one submission");
  double inProcessAtZero = 0, perProcessAtZero = 0;
  for (int messages : {0, 1000, 10000}) {
    FillOutbox(tree, messages);
    const double inProcess = bench::Median(
        kInProcessRuns,
        [&] {
          char body[9];
          Check(VlxSendSubmitFile(handle, submit.c_str(), "BNCH", body), "submission");
        },
        [&] { RemoveRequests(tree); });
    const Profile profile = ProfileSubmission(handle, tree, submit);
    FillOutbox(tree, messages);
    const double perProcess =
        PerProcess(client + " submit BENCH \"" + submit + "\"", kProcessRuns);
    if (messages == 0) inProcessAtZero = inProcess, perProcessAtZero = perProcess;
    using os::fault::Op;
    const auto& c = profile.calls;
    std::printf("%8d | %6.1f (%3.0f%% of empty outbox) | %6.1f (%3.0f%% of at 0, %4.1fx empty) | "
                "log-on %.2f ms, unique name %.2f ms, unknown look-up %.2f ms, submission %.2f ms; "
                "floor: a search %.2f ms, a new file and its removal %.2f ms, a block of names "
                "(~BNCH0*) %.2f ms; "
                "calls: %d searches, %d opens, %d exclusive creations, %d infos, %d removals, "
                "%d renames, %d in all\n",
                messages, 1000 / inProcess, 100 * inProcessAtZero / inProcess, 1000 / perProcess,
                100 * perProcessAtZero / perProcess, perProcess / empty, profile.logOn,
                profile.autoFile, profile.lookUp, profile.submission, profile.search, profile.creation,
                profile.enumeration,
                c[static_cast<int>(Op::ListFiles)], c[static_cast<int>(Op::OpenStream)],
                c[static_cast<int>(Op::CreateExclusive)], c[static_cast<int>(Op::GetFileInfo)],
                c[static_cast<int>(Op::RemoveFile)], c[static_cast<int>(Op::RenameFile)],
                c[static_cast<int>(Op::Any)]);
    if (messages == 1000) {
      FillOutbox(tree, messages);
      const double listing = PerProcess(client + " list BENCH", kProcessRuns / 2);
      std::printf("%8s   one process per listing of 1,000 messages: %.1f ms, %.2fx an empty process\n",
                  "", listing, listing / empty);
    }
  }
  VlxAPIClosedown(handle);
  return 0;
}
