// Functions of the flat interface that the library uses itself but does not
// export.
#pragma once

#include "vlapi.h"

extern "C" {

// As VlxGetSystemArea, for the server, request and users areas. The text
// gets a further backslash that the buffer test does not count, so the
// buffer must hold one character more than the test asks for.
VLRESULT VLAPI_CALL VlxGetServerArea(VLHANDLE handle, char* buffer, int16_t bufLen);
VLRESULT VLAPI_CALL VlxGetRequestArea(VLHANDLE handle, char* buffer, int16_t bufLen);
VLRESULT VLAPI_CALL VlxGetUsersArea(VLHANDLE handle, char* buffer, int16_t bufLen);

// Marks one message as read: its user status becomes "OK".
VLRESULT VLAPI_CALL VlxMarkMsgAsRead(VLHANDLE handle, uint16_t directory, const char* body);

}  // extern "C"
