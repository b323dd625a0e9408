// Submission: VlxCreateCtlFileEx, VlxCreateCtlFile, VlxSendMsgEx, VlxSendMsg,
// VlxSendSubmitFile and VlxVBSendSubmitFile.
#include "msg/submission.h"

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/text.h"
#include "msg/body_name.h"
#include "msg/control_file.h"
#include "msg/data_copier.h"
#include "msg/defaults.h"
#include "msg/msg_dir.h"
#include "msg/submit_parser.h"
#include "msg/tables.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"
#include "server/request_writer.h"

namespace vl {
namespace {

inline constexpr size_t kMaxPathChars = 268;

// The format of a data extension: 1-3 characters and in the table.
VLRESULT FormatOfExtension(const ApiSession& session, const char* extension, uint16_t* code) {
  const size_t length = extension ? std::strlen(extension) : 0;
  if (length < 1 || length > 3) return ReportFailure(&session, VL_E_INVALID_PARAM, "Extension name invalid");
  const DataFormat* format = FormatByExtension(extension);
  if (!format || format->code == 0) return ReportFailure(&session, VL_E_INVALID_PARAM, "Data extension unknown");
  *code = format->code;
  return VL_OK;
}

// Moves submit to the line after "%%[MESSAGE]", or puts it back.
VLRESULT FindMessageHead(const ApiSession& session, FILE* submit) {
  const long back = std::ftell(submit);
  char line[para::kLineSize];
  while (para::ReadLine(submit, line, sizeof line))
    if (para::StartsWithNoCase(line, "%%[MESSAGE]")) return VL_OK;
  const bool failed = std::ferror(submit) != 0;
  std::clearerr(submit);
  std::fseek(submit, back, SEEK_SET);
  if (failed) {
    ApiReportError(&session, "Error reading from submit file (or NULL file)");
    return VL_E_FILE_ERROR;
  }
  ApiReportError(&session, "%s", "'%%[MESSAGE]' line not found in submit file");
  return VL_E_SUBMIT_FILE_INVALID;
}

// Passes the message's subject and cover text sections and stops at the
// next line that begins "%%".
void SkipTextSections(FILE* submit) {
  char line[para::kLineSize];
  long start = 0;
  while (para::ReadLine(submit, line, sizeof line, &start)) {
    if (line[0] != '%' || line[1] != '%') continue;
    const bool named = para::StartsWithNoCase(line, "%%[COVERTEXTFILE]") ||
                       para::StartsWithNoCase(line, "%%[SUBJECTFILE]");
    const bool section = para::StartsWithNoCase(line, "%%[COVERTEXT]") ||
                         para::StartsWithNoCase(line, "%%[SUBJECT]");
    if (named) {
      para::ReadLine(submit, line, sizeof line);  // the file's name
    } else if (!section) {
      std::fseek(submit, start, SEEK_SET);
      return;
    }
  }
}

bool IsDataHead(const char* line) {
  return para::EqualNoCase(line, "%%[TEXT]") || para::EqualNoCase(line, "%%[FILE]");
}

}  // namespace

VLRESULT CreateControlFile(const ApiSession& session, FILE* submit, FILE* control,
                           const char* extension, char (&extensionOut)[4], uint16_t size,
                           VLMSGINFOEX* info) {
  char body[sizeof info->Body];
  CopyBounded(body, sizeof body, info->Body);
  if (VLRESULT rc = CheckRecordBody(session, info->Body))
    return rc;
  uint16_t format = kFormatAscii;
  if (extension)
    if (VLRESULT rc = FormatOfExtension(session, extension, &format)) return rc;
  if (VLRESULT rc = FindMessageHead(session, submit)) return rc;

  auto options = std::make_unique<MessageOptions>();
  if (VLRESULT rc = LoadMessageDefaults(session, format, options.get())) return rc;
  SubmitMessage message;
  if (VLRESULT rc = ParseMessageOptions(session, submit, options.get(), &message)) return rc;
  if (extension && options->Format != format) {
    ApiReportError(&session, "Format specified disagrees with SUBMIT file");
    return VL_E_SUBMIT_FILE_INVALID;
  }

  if (size >= 160) {
    info->MsgType = options->MsgType;
    CopyBounded(info->Organisation, options->Organisation);
  }
  CopyBounded(info->Comment, options->Comment);
  if (size >= 260) CopyBounded(info->Custom, options->Custom);
  CopyBounded(info->Subject, InfoSubject(submit, message.subject));
  const DataFormat* written = FormatByCode(options->Format);
  CopyBounded(extensionOut, written ? written->extension : "");

  std::rewind(control);
  if (VLRESULT rc = WriteControlFile(session, control, body, *options, submit, message.subject,
                                     message.cover))
    return rc;
  SkipTextSections(submit);
  return VL_OK;
}

}  // namespace vl

using namespace vl;

namespace {

// A file opened by path through the frame's checks: the submit file to
// read and the control file to write, both refused over 268 characters.
struct CtlFileCall {
  const char* submit;
  const char* control;
  const char* extension;
  char* extensionOut;
  uint16_t size;
  VLMSGINFOEX* info;
};

VLRESULT CreateCtlFile(ApiSession& session, const CtlFileCall& call) {
  if (VLRESULT rc = CheckInfoSize(session, call.size)) return rc;
  if (!call.submit || !call.control || !call.extensionOut || !call.info) {
    ReportNullArgument(&session, !call.submit ? "submit file" : !call.control ? "control file"
                                 : !call.info ? "info" : "extension");
    return VL_E_INVALID_PARAM;
  }
  if (std::strlen(call.submit) > kMaxPathChars) return ReportFailure(&session, VL_E_INVALID_PARAM, "Submit file name too long");
  if (std::strlen(call.control) > kMaxPathChars)
    return ReportFailure(&session, VL_E_INVALID_PARAM, "Control file name too long");
  if (NamesListFile(call.control))
    return ReportFailure(&session, VL_E_INVALID_PARAM, "Control file name invalid");
  para::Opened submit = para::OpenShared(call.submit, "rb");
  if (!submit) {
    ApiReportError(&session, "Unable to open file '%s'", call.submit);
    return VL_E_FILE_OPEN_ERROR;
  }
  para::Opened control = para::OpenShared(call.control, "w+b");
  if (!control) {
    ApiReportError(&session, "Unable to create file '%s'", call.control);
    return VL_E_FILE_CREATE_ERROR;
  }
  auto removeControl = os::scope_exit([&] {
    control.file.reset();
    os::RemoveFile(call.control);
  });
  char extension[4] = {};
  VLRESULT rc = CreateControlFile(session, submit.get(), control.get(), call.extension, extension,
                                  call.size, call.info);
  if (rc == VL_OK && (std::fflush(control.get()) != 0 || std::ferror(control.get()))) {
    ApiReportError(&session, "Error writing to control file");
    rc = VL_E_FILE_ERROR;
  }
  if (rc) return rc;
  std::strcpy(call.extensionOut, extension);
  removeControl.dismiss();
  return VL_OK;
}

VLRESULT SendMessage(ApiSession& session, VLHANDLE handle, const char* extension, uint16_t size,
                     VLMSGINFOEX* info) {
  if (VlxCheckServer(handle) != VL_OK) return VL_E_SERVER_NOT_RUNNING;
  if (VLRESULT rc = CheckInfoSize(session, size)) return rc;
  if (!info) {
    ReportNullArgument(&session, "info");
    return VL_E_INVALID_PARAM;
  }
  char body[sizeof info->Body];
  CopyBounded(body, sizeof body, info->Body);
  if (VLRESULT rc = CheckRecordBody(session, info->Body)) return rc;
  uint16_t format = 0;
  if (VLRESULT rc = FormatOfExtension(session, extension, &format)) return rc;
  // Only fields that lie inside the caller's record are looked at.
  if (strnlen(info->Comment, sizeof info->Comment) > 40) return ReportFailure(&session, VL_E_INVALID_PARAM, "Comment too long");
  if (size >= 260 && strnlen(info->Custom, sizeof info->Custom) > 100)
    return ReportFailure(&session, VL_E_INVALID_PARAM, "Custom field too long");
  if (strnlen(info->Subject, sizeof info->Subject) > 60) return ReportFailure(&session, VL_E_INVALID_PARAM, "Subject too long");

  const std::string directory = session.userOutDir;
  for (const std::string& path : {UpperCase(directory + body + ".CTL"),
                                  UpperCase(directory + body + "." + extension)}) {
    os::FileInfo file;
    if (os::GetFileInfo(path.c_str(), &file) != os::kOk) {
      ApiReportError(&session, "File not found %s", path.c_str());
      return VL_E_FILE_NOT_FOUND;
    }
  }
  VLMSGINFOEX listed;
  VLRESULT known = VlxGetMsgInfoEx(handle, kDirectoryOut, body, kFullInfoSize, &listed);
  if (known == VL_OK) {
    ApiReportError(&session, "Message %s already in info file", body);
    return VL_E_MSG_EXISTS;
  }
  if (known != VL_E_MSG_UNKNOWN) return known;

  char comment[41], subject[61], organisation[41] = {}, custom[101] = {};
  CopyBounded(comment, sizeof comment, info->Comment);
  CopyBounded(subject, sizeof subject, info->Subject);
  uint16_t type = kMessageTypeFax;
  if (size >= 160) {
    type = info->MsgType;
    CopyBounded(organisation, sizeof organisation, info->Organisation);
  }
  if (size >= 260) CopyBounded(custom, sizeof custom, info->Custom);
  const NewEntry entry{body, comment, subject, format, type, organisation, custom};
  if (VLRESULT rc = MsgDirUpdate(session, kDirectoryOut, nullptr, &entry)) return rc;
  return WriteRequest(session, kRequestSend, kDirectoryOut, body);
}

// Writes the data files of the message at whose first section submit
// stands: name + "." + extension, then name + ".001", ".002" and so on.
VLRESULT WriteDataFiles(const ApiSession& session, FILE* submit, const std::string& directory,
                        const std::string& name, const char* extension,
                        std::vector<std::string>* written) {
  for (int number = 0;; ++number) {
    char path[600];
    if (number == 0) std::snprintf(path, sizeof path, "%s%s.%s", directory.c_str(), name.c_str(), extension);
    else std::snprintf(path, sizeof path, "%s%s.%.03d", directory.c_str(), name.c_str(), number);
    para::Opened data = para::OpenShared(path, "wb");
    if (!data) {
      ApiReportError(&session, "Unable to open file %s", path);
      return VL_E_FILE_ERROR;
    }
    written->push_back(path);
    if (VLRESULT rc = CopyDataSection(session, submit, data.get(), extension)) {
      ApiReportError(&session, "%s", "Error interpreting %%[TEXT] section");
      return rc;
    }
    if (std::fflush(data.get()) != 0 || std::ferror(data.get())) {
      ApiReportError(&session, "Error writing to file %s", path);
      return VL_E_FILE_ERROR;
    }
    // Comments and empty lines pass; another text or file section follows
    // as the next data file.
    char line[para::kLineSize];
    long start = 0;
    bool another = false;
    while (para::ReadLine(submit, line, sizeof line, &start)) {
      if (line[0] == '\0' || line[0] == ';') continue;
      another = IsDataHead(line);
      std::fseek(submit, start, SEEK_SET);
      break;
    }
    if (!another) return VL_OK;
  }
}

// The marker that keeps the name of a message whose files are gone but
// whose list entry stays from being handed out again.
void WriteNameMarker(const std::string& directory, const std::string& name) {
  para::Opened marker = para::OpenShared((directory + name + ".TMP").c_str(), "wb");
  if (!marker) return;
  std::fprintf(marker.get(),
               "(created by VlxSendSubmitFile() because files %s.*\r\n"
               "deleted previously without deleting references\r\nin MSGDIR.CTL)\r\n",
               name.c_str());
}

// Submits the first message of submit, read from its start: the control
// file, the data files, the list entry and the request, or none of them.
VLRESULT SendSubmitStream(ApiSession& session, VLHANDLE handle, FILE* submit, const char* prefix,
                          char* bodyOut, std::string* submitted) {
  if (!submit || !bodyOut) {
    ReportNullArgument(&session, !submit ? "submit file" : "body");
    return VL_E_INVALID_PARAM;
  }
  std::rewind(submit);
  char outDir[300];
  if (VLRESULT rc = VlxGetUserOutDir(handle, outDir, sizeof outDir)) {
    ApiReportError(&session, "VlxGetUserOutDir call failed");
    return rc;
  }
  if (VLRESULT rc = VlxCheckServer(handle)) return rc;
  if (!prefix || std::strlen(prefix) != 4) return ReportFailure(&session, VL_E_INVALID_PARAM, "Prefix name must be 4 characters");

  const std::string directory = outDir;
  char created[16] = {};
  if (VLRESULT rc = VlxCreateAutoFile(handle, prefix, "CTL", outDir, created)) {
    ApiReportError(&session, "Unable to create ~%s*.CTL in directory %s", prefix, outDir);
    return rc;
  }
  const std::string name = created;
  const std::string controlPath = directory + name + ".CTL";
  std::vector<std::string> dataFiles;
  bool keepFiles = false;
  auto cleanUp = os::scope_exit([&] {
    if (keepFiles) return;
    os::RemoveFile(controlPath.c_str());
    for (auto it = dataFiles.rbegin(); it != dataFiles.rend(); ++it) os::RemoveFile(it->c_str());
  });
  if (name.size() > 8) {
    ApiReportError(&session, "Message file name '%s' too long", name.c_str());
    return VL_E_INVALID_PARAM;
  }
  para::Opened control = para::OpenShared(controlPath.c_str(), "w+b");
  if (!control) {
    ApiReportError(&session, "Unable to open file %s", controlPath.c_str());
    return VL_E_FILE_ERROR;
  }
  VLMSGINFOEX info;
  std::memset(&info, 0, sizeof info);
  CopyBounded(info.Body, name);
  char extension[4] = {};
  if (VLRESULT rc = CreateControlFile(session, submit, control.get(), nullptr, extension,
                                      kFullInfoSize, &info)) {
    ApiReportError(&session, "%s", "Error interpreting %%[MESSAGE] section");
    return rc;
  }
  if (VLRESULT rc = WriteDataFiles(session, submit, directory, name, extension, &dataFiles))
    return rc;
  const bool flushed = std::fflush(control.get()) == 0 && !std::ferror(control.get());
  if (std::fclose(control.file.release()) != 0 || !flushed) {
    ApiReportError(&session, "Error writing to file %s", controlPath.c_str());
    return VL_E_FILE_ERROR;
  }
  VLRESULT rc = VlxSendMsgEx(handle, extension, kFullInfoSize, &info);
  if (rc == VL_OK) {
    keepFiles = true;
    CopyBounded(bodyOut, 9, name.c_str());
    *submitted = name;
    return VL_OK;
  }
  if (rc == VL_E_MSG_EXISTS) WriteNameMarker(directory, name);
  else if (rc != VL_E_SERVER_NOT_RUNNING) ApiReportError(&session, "Error submitting message to server");
  return rc;
}

VLRESULT SendSubmitFile(ApiSession& session, VLHANDLE handle, const char* submitPath,
                        const char* prefix, char* bodyOut, std::string* submitted) {
  if (!submitPath || !bodyOut) {
    ReportNullArgument(&session, !submitPath ? "submit file" : "body");
    return VL_E_INVALID_PARAM;
  }
  if (std::strlen(submitPath) > kMaxPathChars) return ReportFailure(&session, VL_E_INVALID_PARAM, "Submit file name too long");
  para::Opened submit = para::OpenShared(submitPath, "rb");
  if (!submit) {
    ApiReportError(&session, "Unable to open file '%s'", submitPath);
    return VL_E_FILE_OPEN_ERROR;
  }
  return SendSubmitStream(session, handle, submit.get(), prefix, bodyOut, submitted);
}

// The full record of a body name and comment given on their own, both
// checked first (with no session, the called function refuses the handle).
VLRESULT RecordOf(VLHANDLE handle, const char* body, const char* comment, VLMSGINFOEX* info) {
  if (SessionPtr session = SessionFromHandle(handle)) {
    if (CheckBodyName(*session, body)) return VL_E_INVALID_PARAM;
    if (comment && std::strlen(comment) > 40)
      return ReportFailure(session.get(), VL_E_INVALID_PARAM, "Comment too long");
  }
  std::memset(info, 0, sizeof *info);
  if (body) CopyBounded(info->Body, body);
  if (comment) CopyBounded(info->Comment, comment);
  return VL_OK;
}

// Traces the closing line these functions write in place of the usual one.
void TraceResult(VLHANDLE handle, const char* name, VLRESULT rc, const char* okText = nullptr) {
  SessionPtr session = SessionFromHandle(handle);
  if (rc) ApiTrace(session.get(), "...%s - returned error 0x%X", name,
                   static_cast<unsigned>(static_cast<uint16_t>(rc)));
  else if (okText) ApiTrace(session.get(), "...%s - submitted file '%s' OK", name, okText);
  else ApiTrace(session.get(), "...%s - returned OK", name);
}

// The frame of a submit-file submission: the entry trace with the file's
// name, and the closing trace with the body name or the error.
template <typename Work>
VLRESULT SubmitFrame(VLHANDLE handle, const char* name, Work&& work) {
  CallFrame frame(handle, "VlxSendSubmitFile", UserRule::Needed);
  frame.Enter("VlxSendSubmitFile - '%s'", name ? name : "(null)");
  frame.OmitClosingTrace();
  std::string submitted;
  VLRESULT rc = frame.Run([&](ApiSession& session) { return work(session, &submitted); });
  if (rc != VL_E_NOT_INIT && rc != VL_E_USER_NOT_INIT)
    TraceResult(handle, "VlxSendSubmitFile", rc, rc ? nullptr : submitted.c_str());
  return rc;
}

}  // namespace

VLRESULT vl::SendOpenSubmitFile(VLHANDLE handle, FILE* submit, const char* name,
                                const char* prefix, char* body) {
  return SubmitFrame(handle, name, [&](ApiSession& session, std::string* submitted) {
    return SendSubmitStream(session, handle, submit, prefix, body, submitted);
  });
}

extern "C" {

VLRESULT VLAPI_CALL VlxCreateCtlFileEx(VLHANDLE handle, const char* submitFile,
                                       const char* controlFile, const char* extension,
                                       char* extensionOut, uint16_t recordSize,
                                       VLMSGINFOEX* info) {
  CallFrame frame(handle, "VlxCreateCtlFile", UserRule::Needed);
  frame.Enter("VlxCreateCtlFile - Submit = '%s', Control = '%s'", submitFile ? submitFile : "(null)",
              controlFile ? controlFile : "(null)");
  frame.OmitClosingTrace();
  VLRESULT rc = frame.Run([&](ApiSession& session) {
    return CreateCtlFile(session, CtlFileCall{submitFile, controlFile, extension, extensionOut,
                                              recordSize, info});
  });
  if (rc != VL_E_NOT_INIT && rc != VL_E_USER_NOT_INIT) TraceResult(handle, "VlxCreateCtlFile", rc);
  return rc;
}

VLRESULT VLAPI_CALL VlxCreateCtlFile(VLHANDLE handle, const char* submitFile,
                                     const char* controlFile, const char* body,
                                     const char* extension, char* extensionOut,
                                     const char* comment) {
  return Guarded(nullptr, [&]() -> VLRESULT {
    VLMSGINFOEX info;
    if (VLRESULT rc = RecordOf(handle, body, comment, &info)) return rc;
    return VlxCreateCtlFileEx(handle, submitFile, controlFile, extension, extensionOut,
                              kFullInfoSize, &info);
  });
}

VLRESULT VLAPI_CALL VlxSendMsgEx(VLHANDLE handle, const char* extension, uint16_t recordSize,
                                 VLMSGINFOEX* info) {
  char body[9] = "(null)";
  if (info) CopyBounded(body, sizeof body, info->Body);
  return CallFrame(handle, "VlxSendMsg", UserRule::Needed)
      .Enter("VlxSendMsg - '%s.%s'", body, extension ? extension : "(null)")
      .Run([&](ApiSession& session) {
        return SendMessage(session, handle, extension, recordSize, info);
      });
}

VLRESULT VLAPI_CALL VlxSendMsg(VLHANDLE handle, const char* body, const char* extension,
                               const char* comment) {
  return Guarded(nullptr, [&]() -> VLRESULT {
    VLMSGINFOEX info;
    if (VLRESULT rc = RecordOf(handle, body, comment, &info)) return rc;
    return VlxSendMsgEx(handle, extension, kFullInfoSize, &info);
  });
}

VLRESULT VLAPI_CALL VlxSendSubmitFile(VLHANDLE handle, const char* submitFile, const char* prefix,
                                      char* body) {
  return SubmitFrame(handle, submitFile, [&](ApiSession& session, std::string* submitted) {
    return SendSubmitFile(session, handle, submitFile, prefix, body, submitted);
  });
}

VLRESULT VLAPI_CALL VlxVBSendSubmitFile(const char* userName, const char* submitFile,
                                        const char* prefix) {
  VLHANDLE handle = 0;
  if (VLRESULT rc = VlxAPIInit(&handle, userName, 0, nullptr)) return rc;
  char body[9] = {};
  VLRESULT rc = VlxSendSubmitFile(handle, submitFile, prefix, body);
  VlxAPIClosedown(handle);
  return rc;
}

}  // extern "C"
