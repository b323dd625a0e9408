// VlxGetAPIVersion and VlxEscape.
#include <cstring>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/process_state.h"
#include "paragraph/paragraph_reader.h"

using namespace vl;

namespace {

struct Escape {
  const char* name;
  void (*apply)(int32_t value);
};

// The escapes in the order their names are compared.
const Escape kEscapes[] = {
    {"DISABLECHECKSERVER", [](int32_t v) { Process().checkServerDisabled = v != 0; }},
    {"APPLICATION", [](int32_t v) { Process().applicationId = v; }},
    {"ENABLESENTITEMS", [](int32_t v) { Process().sentItemsMode = v == 1; }},
    {"DELETEFAILEDFAXES", [](int32_t v) { Process().deleteFailedFaxes = v < 2 ? v : 1; }},
    {"TRACE", [](int32_t v) { Process().traceSwitch = v != 0; }},
};

}  // namespace

extern "C" {

VLRESULT VLAPI_CALL VlxGetAPIVersion(char* buffer, int16_t bufLen, uint16_t* version) {
  return Guarded(nullptr, [&]() -> VLRESULT {
    ApiTrace(nullptr, "VlxGetAPIVersion");
    if (buffer) {
      if (static_cast<int>(std::strlen(VL_API_VERSION_TEXT)) >= bufLen)
        return VL_E_BUFFER_TOO_SMALL;
      std::strcpy(buffer, VL_API_VERSION_TEXT);
    }
    if (version) *version = VL_API_VERSION_NUMBER;
    ApiTrace(nullptr, "...VlxGetAPIVersion - return OK");
    return VL_OK;
  });
}

VLRESULT VLAPI_CALL VlxEscape(VLHANDLE, const char* name, int32_t value) {
  if (!name) return VL_E_INVALID_PARAM;
  for (const Escape& escape : kEscapes) {
    if (para::EqualNoCase(name, escape.name)) {
      escape.apply(value);
      return VL_OK;
    }
  }
  return VL_E_INVALID_PARAM;
}

}  // extern "C"
