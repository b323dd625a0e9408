// send: writes a submit file from the command line (or takes a ready one),
// submits it and optionally follows the message to its end.
#include <windows.h>

#include <cstdio>
#include <fstream>
#include <iostream>
#include <iterator>
#include <sstream>

#include "commands.h"
#include "errors.h"
#include "output.h"

namespace vlfax {
namespace {

constexpr const char* kBodyPrefix = "VFAX";
constexpr unsigned kFirstFinalStatus = 30;
constexpr unsigned kStatusOk = 30;
constexpr DWORD kPollMs = 200;
constexpr ULONGLONG kBusyRetryMs = 5000;

struct Recipient {
  std::string name;
  std::string keyword;  // "Fax:", "SMS:" or "LAN:"
  std::string address;
  std::string organisation;
};

struct SendOptions {
  std::string submitFile;
  std::vector<std::string> to, fax, sms, lan, org;
  std::string subject, comment, text, textFile, cover, coverText, letterhead;
  std::vector<std::string> files;
  std::string priority, quality, after;
  bool hold = false, remove = false, wait = false;
  int timeout = 300;
};

std::string Upper(std::string s) {
  for (char& c : s) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return s;
}

// The recipients in the order their options were given: each --to starts
// one, an address and an organisation belong to the last one started.
std::vector<Recipient> Recipients(const CLI::App& command, const SendOptions& options) {
  std::vector<Recipient> recipients;
  size_t toIndex = 0, faxIndex = 0, smsIndex = 0, lanIndex = 0, orgIndex = 0;
  for (const CLI::Option* option : command.parse_order()) {
    const std::string name = option->get_name();
    if (name == "--to") {
      recipients.push_back({options.to.at(toIndex++), "", "", ""});
      continue;
    }
    const std::string* value = nullptr;
    const char* keyword = nullptr;
    if (name == "--fax")
      value = &options.fax.at(faxIndex++), keyword = "Fax:";
    else if (name == "--sms")
      value = &options.sms.at(smsIndex++), keyword = "SMS:";
    else if (name == "--lan")
      value = &options.lan.at(lanIndex++), keyword = "LAN:";
    else if (name == "--org")
      value = &options.org.at(orgIndex++);
    else
      continue;
    if (recipients.empty()) throw UsageError(name + " must follow --to NAME");
    Recipient& last = recipients.back();
    if (!keyword) {
      last.organisation = *value;
    } else {
      if (!last.keyword.empty())
        throw UsageError("recipient '" + last.name + "' has more than one address");
      last.keyword = keyword;
      last.address = *value;
    }
  }
  for (const Recipient& r : recipients)
    if (r.keyword.empty())
      throw UsageError("recipient '" + r.name + "' needs --fax, --sms or --lan");
  return recipients;
}

// "OFFPEAK", or "YYYY-MM-DD HH:MM:00" for a date and time that exist.
std::string AfterValue(const std::string& text) {
  if (Upper(text) == "OFFPEAK") return "OFFPEAK";
  int year, month, day, hour, minute;
  char end;
  if (std::sscanf(text.c_str(), "%4d-%2d-%2d %2d:%2d%c", &year, &month, &day, &hour, &minute,
                  &end) != 5)
    throw UsageError("--after '" + text + "': expected \"YYYY-MM-DD HH:MM\" or offpeak");
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
  bool valid = year >= 1980 && year <= 2079 && month >= 1 && month <= 12 && day >= 1 &&
               day <= kDays[month - 1] + (month == 2 && leap ? 1 : 0) && hour >= 0 && hour <= 23 &&
               minute >= 0 && minute <= 59;
  if (!valid) throw UsageError("--after '" + text + "': no such date and time");
  char value[32];
  std::snprintf(value, sizeof value, "%04d-%02d-%02d %02d:%02d:00", year, month, day, hour, minute);
  return value;
}

std::string Choice(const std::string& value, std::initializer_list<const char*> words,
                   const char* option) {
  for (const char* word : words)
    if (Upper(value) == Upper(word)) return Upper(word);
  throw UsageError(std::string(option) + " '" + value + "' invalid");
}

std::string ReadAll(std::istream& in) {
  return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

std::string FullPath(const std::string& path) {
  char full[MAX_PATH];
  DWORD length = GetFullPathNameA(path.c_str(), sizeof full, full, nullptr);
  if (length == 0 || length >= sizeof full) throw SystemError("resolving " + path, GetLastError());
  return full;
}

// The full path of a file the message refers to, checked to be readable
// now, so that a wrong name is reported by name and no message is made.
std::string ReadableFile(const std::string& path) {
  std::string full = FullPath(path);
  std::ifstream file(full, std::ios::binary);
  if (!file) throw SystemError("reading " + path, GetLastError());
  return full;
}

// Body text with CR LF line ends, ending with a line end.
std::string TextLines(const std::string& text) {
  std::string lines;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r') continue;
    if (text[i] == '\n')
      lines += "\r\n";
    else
      lines += text[i];
  }
  if (!lines.empty() && lines.back() != '\n') lines += "\r\n";
  return lines;
}

// The submit file's text for the options given.
std::string SubmitText(const CLI::App& command, const SendOptions& o) {
  std::vector<Recipient> recipients = Recipients(command, o);
  if (recipients.empty()) throw UsageError("at least one --to NAME is needed");
  if (!o.text.empty() && !o.textFile.empty())
    throw UsageError("--text and --text-file exclude each other");
  std::ostringstream s;
  auto line = [&s](const char* keyword, const std::string& value) {
    if (value.find_first_of("\r\n") != std::string::npos)
      throw UsageError(std::string(keyword) + " value must be one line");
    s << keyword << " " << value << "\r\n";
  };
  s << "%%[MESSAGE]\r\n";
  if (!o.subject.empty()) line("Subject:", o.subject);
  if (!o.comment.empty()) line("Comment:", o.comment);
  if (!o.priority.empty())
    line("Priority:", Choice(o.priority, {"background", "normal", "urgent"}, "--priority"));
  if (!o.quality.empty())
    line("Quality:", Choice(o.quality, {"high", "normal", "draft"}, "--quality"));
  if (!o.after.empty()) line("After:", AfterValue(o.after));
  if (o.hold) line("Hold:", "YES");
  if (o.remove) line("Delete:", "YES");
  if (!o.cover.empty()) line("Coversheet:", o.cover);
  if (!o.letterhead.empty()) line("Letterhead:", o.letterhead);
  for (const std::string& file : o.files) line("Document:", ReadableFile(file));
  for (const Recipient& r : recipients) {
    line("To:", r.name);
    if (!r.organisation.empty()) line("Organisation:", r.organisation);
    line(r.keyword.c_str(), r.address);
  }
  if (!o.coverText.empty()) s << "%%[COVERTEXT]\r\n" << TextLines(o.coverText);
  if (!o.textFile.empty() && o.textFile != "-") {
    s << "%%[FILE]\r\n" << ReadableFile(o.textFile) << "\r\n";
  } else {
    std::string body = o.text;
    if (o.textFile == "-") body = ReadAll(std::cin);
    s << "%%[TEXT]\r\n" << TextLines(body);
  }
  return s.str();
}

// A temporary file that is deleted when it goes out of scope.
class TemporaryFile {
 public:
  TemporaryFile() {
    char directory[MAX_PATH];
    char path[MAX_PATH];
    if (!GetTempPathA(sizeof directory, directory) || !GetTempFileNameA(directory, "VFX", 0, path))
      throw SystemError("making a temporary file", GetLastError());
    path_ = path;
  }
  ~TemporaryFile() { DeleteFileA(path_.c_str()); }
  TemporaryFile(const TemporaryFile&) = delete;
  TemporaryFile& operator=(const TemporaryFile&) = delete;

  const std::string& path() const { return path_; }

  void Write(const std::string& text) const {
    std::ofstream file(path_, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) throw SystemError("writing " + path_, GetLastError());
  }

 private:
  std::string path_;
};

// Prints every status change and every new history event until the message
// reaches a final state; returns that state.
unsigned Follow(VLHANDLE handle, const std::string& body, int timeoutSeconds) {
  unsigned last = 0xFFFF;
  size_t shown = 0;
  DWORD start = GetTickCount();
  for (;;) {
    // The server writes a step's history before the status it leads to:
    // reading the status first, the history then explains it.
    VLMSGINFOEX info{};
    Check(VlxGetMsgInfoEx(handle, VL_DIR_OUT, body.c_str(), sizeof info, &info),
          "reading message " + body);
    std::vector<VLMSGHISTORYEX> history = ReadHistory(handle, VL_DIR_OUT, body);
    for (; shown < history.size(); ++shown) std::cout << EventLine(history[shown]) << "\n";
    if (info.Status != last) {
      last = info.Status;
      std::cout << "status " << MessageStatusWord(last) << "\n" << std::flush;
    }
    if (last >= kFirstFinalStatus) return last;
    if (GetTickCount() - start >= static_cast<DWORD>(timeoutSeconds) * 1000u)
      throw LibraryError("waiting for message " + body, VL_E_TIMEOUT_EXPIRED);
    Sleep(kPollMs);
  }
}

// Submits the file. A message list that another program reads at that
// moment refuses the submission (0xF711) with nothing left behind; the
// submission is made again for up to kBusyRetryMs.
VLRESULT SubmitWhileListBusy(VLHANDLE handle, const std::string& path, char* body) {
  const ULONGLONG start = GetTickCount64();
  for (;;) {
    VLRESULT rc = VlxSendSubmitFile(handle, path.c_str(), kBodyPrefix, body);
    if (rc != VL_E_INFO_FILE_OPEN_ERROR || GetTickCount64() - start >= kBusyRetryMs) return rc;
    Sleep(20);
  }
}

int RunSend(const Globals& globals, const CLI::App& command, const SendOptions& options) {
  std::string text;
  if (options.submitFile.empty()) {
    text = SubmitText(command, options);
  } else {
    if (!options.to.empty() || !options.fax.empty() || !options.sms.empty() || !options.lan.empty())
      throw UsageError("a submit file names its own recipients");
    std::ifstream file(options.submitFile, std::ios::binary);
    if (!file) throw SystemError("reading " + options.submitFile, ERROR_FILE_NOT_FOUND);
    text = ReadAll(file);
  }
  auto session = OpenSession(globals);
  char body[16] = "";
  {
    TemporaryFile submit;
    submit.Write(text);
    Check(SubmitWhileListBusy(session->handle(), submit.path(), body), "submitting the message");
  }
  std::cout << body << "\n" << std::flush;
  if (!options.wait) return kExitOk;
  unsigned status = Follow(session->handle(), body, options.timeout);
  return status == kStatusOk ? kExitOk : kExitSendFailed;
}

}  // namespace

void AddSendCommand(CLI::App& app, const Globals& globals, Action& action) {
  auto o = std::make_shared<SendOptions>();
  CLI::App* send = app.add_subcommand("send", "send a message");
  send->add_option("SUBMITFILE", o->submitFile, "a ready submit file to send instead");
  send->add_option("--to", o->to, "starts a recipient: the name");
  send->add_option("--fax", o->fax, "the recipient's fax number");
  send->add_option("--sms", o->sms, "the recipient's mobile number");
  send->add_option("--lan", o->lan, "the recipient's fax user name");
  send->add_option("--org", o->org, "the recipient's organisation");
  send->add_option("--subject", o->subject, "subject");
  send->add_option("--comment", o->comment, "comment (40 characters)");
  auto* text = send->add_option("--text", o->text, "the message text");
  send->add_option("--text-file", o->textFile, "a file holding the message text (- for stdin)")
      ->excludes(text);
  send->add_option("--file", o->files, "a document to send (repeatable)");
  send->add_option("--cover", o->cover, "coversheet name");
  send->add_option("--cover-text", o->coverText, "text for the coversheet");
  send->add_option("--letterhead", o->letterhead, "letterhead name");
  send->add_option("--priority", o->priority, "background, normal or urgent");
  send->add_option("--quality", o->quality, "high, normal or draft");
  send->add_option("--after", o->after, "\"YYYY-MM-DD HH:MM\" or offpeak");
  send->add_flag("--hold", o->hold, "hold the message in the queue");
  send->add_flag("--delete", o->remove, "delete the message once sent");
  send->add_flag("--wait", o->wait, "follow the message until it is completed");
  send->add_option("--timeout", o->timeout, "seconds to wait with --wait (default 300)");
  send->callback([&globals, &action, send, o] {
    action = [&globals, send, o] { return RunSend(globals, *send, *o); };
  });
}

}  // namespace vlfax
