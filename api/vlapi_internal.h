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

// The user's message defaults as the automation layer reads them; recordSize
// must be sizeof(VLMSGDEFAULTSEX).
VLRESULT VLAPI_CALL VlxGetMsgDefaultsEx(VLHANDLE handle, uint16_t recordSize,
                                        VLMSGDEFAULTSEX* defaults);

}  // extern "C"

// One addressee of a message, declared in msg/addressees.h.
struct MsgAddresseeRecord;

extern "C" {

// Reads the addressees of a message from its control file, for the
// automation layer. count receives the number of addressees in the file;
// the first maxEntries are stored, 200 bytes apart.
VLRESULT VLAPI_CALL VlxGetMsgAddrs(VLHANDLE handle, uint16_t directory, const char* body,
                                   uint16_t maxEntries, uint16_t* count,
                                   MsgAddresseeRecord* records);

}  // extern "C"
