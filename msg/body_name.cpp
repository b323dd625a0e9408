#include "msg/body_name.h"

#include <cstring>

#include "api/diagnostics.h"
#include "msg/msg_dir.h"
#include "paragraph/paragraph_reader.h"

namespace vl {

BodyNameFault BodyNameFaultOf(const char* name, size_t length) {
  if (length < 1 || length > kMaxBodyChars) return BodyNameFault::Length;
  if (para::BadNamePartCharacter(name, length)) return BodyNameFault::Character;
  if (name[0] == ' ') return BodyNameFault::LeadingBlank;
  if (length == 6 && para::StartsWithNoCase(name, "MSGDIR")) return BodyNameFault::Reserved;
  return BodyNameFault::None;
}

VLRESULT CheckBodyName(const ApiSession& session, const char* body) {
  const size_t length = body ? std::strlen(body) : 0;
  switch (BodyNameFaultOf(body, length)) {
    case BodyNameFault::Length:
      ApiReportError(&session, "Body name invalid");
      return VL_E_INVALID_PARAM;
    case BodyNameFault::Character:
      ApiReportError(&session, "Body name invalid: character 0x%2.2X not allowed",
                     static_cast<unsigned char>(*para::BadNamePartCharacter(body, length)));
      return VL_E_INVALID_PARAM;
    case BodyNameFault::LeadingBlank:
      ApiReportError(&session, "Body name invalid: leading blank");
      return VL_E_INVALID_PARAM;
    default:
      return VL_OK;
  }
}

VLRESULT CheckRecordBody(const ApiSession& session, const char (&body)[kMaxBodyChars + 1]) {
  const char* name = strnlen(body, sizeof body) > kMaxBodyChars ? "" : body;
  if (VLRESULT rc = CheckBodyName(session, name)) return rc;
  return CheckNotReserved(session, name);
}

bool NamesListFile(const char* path) {
  const char* name = path;
  for (const char* p = path; *p; ++p)
    if (*p == '\\' || *p == '/' || *p == ':') name = p + 1;
  return para::EqualNoCase(name, "MSGDIR.CTL") || para::EqualNoCase(name, "MSGDIR.TMP");
}

}  // namespace vl
