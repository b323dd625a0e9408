// Print to fax: VlxStartPrint, VlxIsPrintComplete and VlxCancelPrint. The
// fax printer driver renders into the file named by the current user's
// "APIPrint" registry value; these calls set and clear that value and watch
// the file until the driver lets it go.
#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "paragraph/open_shared.h"
#include "platform/os.h"

using namespace vl;

namespace {

inline constexpr char kPrintKey[] = "SOFTWARE\\Ornavex\\Velomar\\";
inline constexpr char kPrintValue[] = "APIPrint";

// The entry line, traced without a session whatever the handle.
template <typename... Args>
void TraceEntry(const char* format, Args... args) noexcept {
  try {
    ApiTrace(nullptr, format, args...);
  } catch (...) {
  }
}

// Sets "APIPrint" under the existing key (never created). The platform
// reports one error for opening the key and writing the value: a missing
// key is traced as the open failing, anything else as the write failing.
VLRESULT SetPrintValue(const ApiSession& session, const char* data) {
  const int error = os::RegistryWriteString(os::Hive::CurrentUser, kPrintKey, kPrintValue, data);
  if (error == os::kOk) return VL_OK;
  if (error == os::kFileNotFound)
    ApiTrace(&session, "Can't open registry key '%s' under HKCU for writing - ErrorCode = %d",
             kPrintKey, error);
  else
    ApiTrace(&session, "Can't write registry value '%s' under HKCU:%s for writing - ErrorCode = %d",
             kPrintValue, kPrintKey, error);
  return error == os::kAccessDenied ? VL_E_ACCESS_DENIED : VL_E_REGISTRY_ERROR;
}

bool Absent(int error) { return error == os::kFileNotFound || error == os::kPathNotFound; }

// Removes a stale output file so that it cannot pass for the new one.
VLRESULT RemoveStaleOutput(const ApiSession& session, const char* fileName) {
  const int exists = os::CheckAccess(fileName, false);
  if (exists == os::kAccessDenied) {
    ApiTrace(&session, "Can't access input file '%s'", fileName);
    return VL_E_ACCESS_DENIED;
  }
  if (exists != os::kOk) return VL_OK;  // nothing there (or nothing that can be seen)
  if (int error = os::RemoveFile(fileName)) {
    ApiTrace(&session, "Can't delete input file '%s' - LastError = %d", fileName, error);
    return VL_E_FILE_ERROR;
  }
  return VL_OK;
}

// The driver holds the file open while it writes: the file is complete once
// an exclusive open succeeds within the default wait.
VLRESULT PrintComplete(const ApiSession& session, const char* fileName, int32_t* complete) {
  if (Absent(os::CheckAccess(fileName, false))) return VL_OK;
  para::Opened output = para::OpenShared(fileName, "rb+");
  if (output) {
    *complete = 1;
    return VL_OK;
  }
  switch (output.error) {
    case os::kSharingViolation:
    case os::kLockViolation:
      return VL_OK;
    case os::kAccessDenied:
      ApiTrace(&session, "VlxIsPrintComplete - Access denied on file %s", fileName);
      return VL_E_ACCESS_DENIED;
    default:
      ApiTrace(&session, "VlxIsPrintComplete - File error %d on file %s", output.error, fileName);
      return VL_E_FILE_ERROR;
  }
}

}  // namespace

extern "C" {

VLRESULT VLAPI_CALL VlxStartPrint(VLHANDLE handle, const char* fileName) {
  if (!fileName) return VL_E_INVALID_PARAM;
  TraceEntry("VlxStartPrint - FileName = %s", fileName);
  CallFrame frame(handle, "VlxStartPrint", UserRule::Needed);
  frame.OmitClosingTrace();
  return frame.Run([&](ApiSession& session) -> VLRESULT {
    if (VLRESULT rc = RemoveStaleOutput(session, fileName)) return rc;
    return SetPrintValue(session, fileName);
  });
}

VLRESULT VLAPI_CALL VlxIsPrintComplete(VLHANDLE handle, const char* fileName, int32_t* complete) {
  if (!fileName || !complete) return VL_E_INVALID_PARAM;
  TraceEntry("VlxIsPrintComplete - FileName = %s", fileName);
  *complete = 0;
  CallFrame frame(handle, "VlxIsPrintComplete", UserRule::Needed);
  frame.OmitClosingTrace();
  return frame.Run(
      [&](ApiSession& session) { return PrintComplete(session, fileName, complete); });
}

VLRESULT VLAPI_CALL VlxCancelPrint(VLHANDLE handle) {
  TraceEntry("VlxCancelPrint");
  CallFrame frame(handle, "VlxCancelPrint", UserRule::Needed);
  frame.OmitClosingTrace();
  return frame.Run([](ApiSession& session) { return SetPrintValue(session, ""); });
}

}  // extern "C"
