// How the automation objects make one another. Each object copies the
// session handle it is given and holds no reference to the object that made
// it. A factory returns the new object with one reference for the caller, or
// a failing HRESULT already reported under the given source.
#pragma once

#include <string>
#include <vector>

#include "vlapi.h"
#include "vllib.h"

namespace vlauto {

// user_session.cpp: a session logged on (VlxAPIInit) with the user name,
// exclusive flag and, when autoTempDirectory is set, the user's area made the
// API temporary directory; failures are reported under source.
HRESULT LogonUserSession(BSTR userName, VARIANT_BOOL exclusive, VARIANT_BOOL autoTempDirectory,
                         const char* source, IVlUserSession** out);

// new_message.cpp: a new message with its defaults read (Init).
HRESULT CreateNewMessage(VLHANDLE handle, IVlNewMsg** out);

// recipients.cpp: the recipient list of an existing message in a folder.
HRESULT CreateMessageRecipients(VLHANDLE handle, uint16_t folder, const char* body,
                                IVlRecipients** out);

// files.cpp, attachments.cpp: collections filled from a message's document
// and attachment names.
HRESULT CreateFiles(const std::vector<std::string>& names, IVlFiles** out);
HRESULT CreateAttachments(const std::vector<std::string>& names, IVlAttachments** out);

// server.cpp: the server object of a session.
HRESULT CreateServer(VLHANDLE handle, bool exclusive, IVlServer** out);

// folders.cpp: the inbox and outbox of a session.
HRESULT CreateInbox(VLHANDLE handle, IVlInbox** out);
HRESULT CreateOutbox(VLHANDLE handle, IVlOutbox** out);

// mail_info.cpp, api_print.cpp.
HRESULT CreateMailInfo(VLHANDLE handle, IVlMailInfo** out);
HRESULT CreateApiPrint(VLHANDLE handle, IAPIPrint** out);

}  // namespace vlauto
