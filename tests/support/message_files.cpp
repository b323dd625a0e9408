#include "tests/support/message_files.h"

namespace vltest {

std::string ListHeader(bool out) {
  return std::string("[VELOMAR]\r\nType: ") + (out ? "SendDir" : "ReceiveDir") +
         "\r\nRevision: A\r\n";
}

std::string ListEntryText(const ListEntry& e) {
  const std::string body = e.file.substr(0, e.file.find('.'));
  return "\r\n[DOCUMENT]\r\nFile: " + e.file + "\r\nComment: comment of " + body +
         "\r\nOrganisation: Org " + body + "\r\n[MESSAGE]\r\nAssocFile:\r\nFormat: ASCII\r\n" +
         "Accepted: " + e.accepted + "\r\nType: " + e.type + "\r\nStatus: " + e.status +
         "\r\nUserStatus: " + e.userStatus + "\r\nSubject: subject of " + body + "\r\n" + e.extra;
}

}  // namespace vltest
