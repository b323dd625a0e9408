// VlxCreateAutoFile: a new empty file with a unique name in a directory,
// checked against the directory's message list.
#include <cstring>
#include <optional>
#include <unordered_set>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/text.h"
#include "api/unique_file.h"
#include "paragraph/line_cursor.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

namespace vl {
namespace {

inline constexpr size_t kMaxPathChars = 256;

// The first "File:" values of the list's "[DOCUMENT]" paragraphs, cut to
// length and upper-cased: a new name is still in use when its text up to
// and including the dot begins one of them. One pass over the list.
std::unordered_set<std::string> ReferencedStems(FILE* list, size_t length) {
  std::unordered_set<std::string> stems;
  std::rewind(list);
  para::LineCursor cursor(list);
  bool inDocument = false;
  while (cursor.Next()) {
    const char* line = cursor.line();
    if (para::IsHeader(line)) {
      inDocument = para::StartsWithNoCase(line, "[DOCUMENT]");
    } else if (inDocument && para::IsContentLine(line) && para::StartsWithNoCase(line, "File:")) {
      inDocument = false;  // only the paragraph's first "File:" line counts
      const char* value = para::ValueOf(line);
      if (value && std::strlen(value) >= length)
        stems.insert(UpperCase(std::string(value, length)));
    }
  }
  return stems;
}

// The generated name is written into lists and request files: every
// character must stand there unchanged, and its only dot is the one before
// the extension.
bool AllNameCharacters(const char* text) {
  return !para::BadNamePartCharacter(text, std::strlen(text));
}

VLRESULT ReportGeneratorResult(const ApiSession& session, UniqueFileResult result) {
  if (result == UniqueFileResult::Created) return VL_OK;
  struct Outcome {
    UniqueFileResult result;
    const char* text;
    VLRESULT code;
  };
  static const Outcome kOutcomes[] = {
      {UniqueFileResult::BadArguments, "Invalid parameters", VL_E_INVALID_PARAM},
      {UniqueFileResult::Failed, "Invalid parameters", VL_E_INVALID_PARAM},
      {UniqueFileResult::PathNotFound, "Path not found", VL_E_PATH_NOT_FOUND},
      {UniqueFileResult::AllExist, "All possible files already exist", VL_E_TOO_MANY_FILES},
  };
  for (const Outcome& outcome : kOutcomes) {
    if (outcome.result != result) continue;
    ApiReportError(&session, "%s", outcome.text);
    return outcome.code;
  }
  ApiReportError(&session, "Unable to create file");
  return VL_E_FILE_CREATE_ERROR;
}

}  // namespace

VLRESULT CheckAutoFileArguments(const ApiSession& session, const char* prefix,
                                const char* extension, const char* path) {
  prefix = prefix ? prefix : "";
  extension = extension ? extension : "";
  path = path ? path : "";
  if (std::strlen(prefix) != 4) {
    ApiReportError(&session, "Prefix name must be 4 characters");
    return VL_E_INVALID_PARAM;
  }
  if (!AllNameCharacters(prefix)) {
    ApiReportError(&session, "Prefix name invalid");
    return VL_E_INVALID_PARAM;
  }
  const size_t extensionLength = std::strlen(extension);
  if (extensionLength < 1 || extensionLength > 3 || !AllNameCharacters(extension)) {
    ApiReportError(&session, "Extension name invalid");
    return VL_E_INVALID_PARAM;
  }
  const size_t pathLength = std::strlen(path);
  if (pathLength < 1 || pathLength > kMaxPathChars ||
      (pathLength == kMaxPathChars && path[pathLength - 1] != '\\')) {
    ApiReportError(&session, "Path name invalid");
    return VL_E_INVALID_PARAM;
  }
  return VL_OK;
}

namespace {

// CreateAutoFile once its arguments are known to be good.
VLRESULT CreateCheckedAutoFile(const ApiSession& session, const char* prefix,
                               const char* extension, const char* path, std::string* name) {
  std::string directory = path;
  EnsureBackslash(directory);

  // A directory without a message list is not checked; one whose list
  // exists but cannot be opened is not checked either, with a trace.
  std::string listPath = directory + "MSGDIR.CTL";
  para::Opened list = para::OpenShared(10, listPath.c_str(), "rb");
  if (!list && list.error != os::kFileNotFound && list.error != os::kPathNotFound)
    ApiTrace(&session,
             "VlxCreateAutoFile - Unable to open MSGDIR file '%s' (error %d), check disabled",
             listPath.c_str(), list.error);
  std::optional<std::unordered_set<std::string>> referenced;  // read at the first need
  for (;;) {
    std::string created;
    UniqueFileResult result =
        MakeUniqueFile(prefix, extension, directory.c_str(), &created);
    if (result != UniqueFileResult::Created) return ReportGeneratorResult(session, result);
    const size_t dot = created.find('.');
    std::string stem = created.substr(0, dot + 1);
    if (list && !referenced) referenced = ReferencedStems(list.get(), stem.size());
    if (!list || !referenced->count(UpperCase(stem))) {
      *name = created.substr(0, dot);
      return VL_OK;
    }
    ApiTrace(&session, "VlxCreateAutoFile - New file '%s' already referenced in MSGDIR file",
             (directory + stem + "*").c_str());
    // The file keeps the name taken, under the extension TMP. When it cannot
    // be renamed it goes, rather than pass for a file of the listed message,
    // and the call fails: the generator would only make the same name again.
    const std::string createdPath = directory + created;
    if (!para::EqualNoCase(extension, "TMP") &&
        os::RenameFile(createdPath.c_str(), (directory + stem + "TMP").c_str()) != os::kOk) {
      os::RemoveFile(createdPath.c_str());
      ApiReportError(&session, "Unable to create file");
      return VL_E_FILE_CREATE_ERROR;
    }
  }
}

}  // namespace

VLRESULT CreateAutoFile(const ApiSession& session, const char* prefix, const char* extension,
                        const char* path, std::string* name) {
  if (VLRESULT rc = CheckAutoFileArguments(session, prefix, extension, path)) return rc;
  return CreateCheckedAutoFile(session, prefix, extension, path, name);
}

}  // namespace vl

using namespace vl;

extern "C" VLRESULT VLAPI_CALL VlxCreateAutoFile(VLHANDLE handle, const char* prefix,
                                                 const char* extension, const char* path,
                                                 char* name) {
  return CallFrame(handle, "VlxCreateAutoFile", UserRule::NotNeeded)
      .Enter("VlxCreateAutoFile - Prefix = '%s', Extn = '%s', Path = '%s'",
             prefix ? prefix : "(null)", extension ? extension : "(null)", path ? path : "(null)")
      .Run([&](ApiSession& session) -> VLRESULT {
        if (VLRESULT rc = CheckAutoFileArguments(session, prefix, extension, path)) return rc;
        if (!name) {
          ReportNullArgument(&session, "name");
          return VL_E_INVALID_PARAM;
        }
        std::string created;
        if (VLRESULT rc = CreateCheckedAutoFile(session, prefix, extension, path, &created))
          return rc;
        std::strcpy(name, created.c_str());
        return VL_OK;
      });
}
