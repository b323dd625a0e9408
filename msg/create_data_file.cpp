// Writing a data file from the data section that opens a submit file:
// VlxCreateDataFile.
#include <cstdint>
#include <cstring>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "msg/body_name.h"
#include "msg/data_copier.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"
#include "platform/raii.h"

using namespace vl;

namespace {

inline constexpr size_t kMaxPathChars = 268;

const char* Shown(const char* text) { return text ? text : "(null)"; }

VLRESULT CreateDataFile(const ApiSession& session, const char* submitPath, const char* dataPath,
                        const char* extension) {
  if (!submitPath || !dataPath || !extension) {
    ReportNullArgument(&session, !submitPath ? "submitFile" : !dataPath ? "dataFile" : "extension");
    return VL_E_INVALID_PARAM;
  }
  if (std::strlen(submitPath) > kMaxPathChars) {
    ApiReportError(&session, "Submit file name too long");
    return VL_E_INVALID_PARAM;
  }
  if (std::strlen(dataPath) > kMaxPathChars) {
    ApiReportError(&session, "Data file name too long");
    return VL_E_INVALID_PARAM;
  }
  if (NamesListFile(dataPath)) {
    ApiReportError(&session, "Data file name invalid");
    return VL_E_INVALID_PARAM;
  }
  para::Opened submit = para::OpenShared(submitPath, "rb");
  if (!submit) {
    ApiReportError(&session, "Unable to open file '%s'", submitPath);
    return VL_E_FILE_OPEN_ERROR;
  }
  para::Opened data = para::OpenShared(dataPath, "wb");
  if (!data) {
    ApiReportError(&session, "Unable to create file '%s'", dataPath);
    return VL_E_FILE_CREATE_ERROR;
  }
  // From here on a failure leaves no data file behind.
  auto discard = os::scope_exit([&] {
    data.file.reset();
    os::RemoveFile(dataPath);
  });

  char line[para::kLineSize];
  if (!para::ReadLine(submit.get(), line, sizeof line) ||
      !(para::EqualNoCase(line, "%%[TEXT]") || para::EqualNoCase(line, "%%[FILE]"))) {
    if (std::ferror(submit.get())) {
      ApiReportError(&session, "Error reading submit file");
      return VL_E_FILE_ERROR;
    }
    ApiReportError(&session, "%%%%[TEXT] or %%%%[FILE] section not found in submit file");
    return VL_E_SUBMIT_FILE_INVALID;
  }
  std::fseek(submit.get(), 0, SEEK_SET);
  if (VLRESULT rc = CopyDataSection(session, submit.get(), data.get(), extension)) return rc;
  discard.dismiss();
  return VL_OK;
}

}  // namespace

extern "C" VLRESULT VLAPI_CALL VlxCreateDataFile(VLHANDLE handle, const char* submitFile,
                                                 const char* dataFile, const char* extension) {
  CallFrame frame(handle, "VlxCreateDataFile", UserRule::Needed);
  frame.Enter("VlxCreateDataFile - Submit = '%s', Data = '%s', Extn = '%s'", Shown(submitFile),
              Shown(dataFile), Shown(extension));
  return frame.Run([&](ApiSession& session) -> VLRESULT {
    // This function's closing lines are its own, for failures too.
    frame.OmitClosingTrace();
    const VLRESULT rc = Guarded(&session, [&] {
      return CreateDataFile(session, submitFile, dataFile, extension);
    });
    if (rc == VL_OK)
      ApiTrace(&session, "...VlxCreateDataFile - returned OK");
    else
      ApiTrace(&session, "...VlxCreateDataFile - returned error 0x%X",
               static_cast<unsigned>(static_cast<uint16_t>(rc)));
    return rc;
  });
}
