#include "api/user_list.h"

#include "api/diagnostics.h"
#include "api/text.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"

namespace vl {
namespace {

bool FindUser(const ApiSession& session, FILE* list, const char* account,
              char (&userName)[kUserNameSize]) {
  char line[para::kLineSize];
  char value[para::kLineSize];
  long position = 0;
  while (para::FindParagraph(list, "[USER]", line, sizeof line, &position)) {
    if (!para::ReadText(list, "Username:", value, sizeof value, position)) {
      ApiTrace(&session, "'[USER]' paragraph found missing 'Username:' field - ignore");
      continue;
    }
    if (!para::EqualNoCase(value, account)) continue;
    if (para::ReadText(list, "Name:", value, sizeof value, position)) {
      CopyBounded(userName, value);
      return true;
    }
    ApiTrace(&session, "User paragraph found missing 'Name:' field - ignore");
  }
  return false;
}

bool FindGroup(const ApiSession& session, FILE* list, const char* account,
               char (&userName)[kUserNameSize]) {
  char line[para::kLineSize];
  char value[para::kLineSize];
  long position = 0;
  while (para::FindParagraph(list, "[GROUP]", line, sizeof line, &position)) {
    if (!para::ReadText(list, "Name:", value, sizeof value, position)) {
      ApiTrace(&session, "'[GROUP]' paragraph found missing 'Name:' field - ignore");
      continue;
    }
    if (para::EqualNoCase(value, account)) {
      CopyBounded(userName, value);
      return true;
    }
  }
  return false;
}

}  // namespace

VLRESULT ResolveAccountName(ApiSession& session, const char* account, const char* wholeName,
                            char (&userName)[kUserNameSize]) {
  std::string path = std::string(session.systemArea) + "V-DB\\" + "USERLIST.INI";
  para::Opened list = para::OpenShared(10, path.c_str(), "rb");
  if (!list) {
    ApiReportError(&session, "Unable to open file '%s'", path.c_str());
    return VL_E_FILE_ERROR;
  }
  if (FindUser(session, list.get(), account, userName)) return VL_OK;
  std::rewind(list.get());
  if (FindGroup(session, list.get(), account, userName)) return VL_OK;
  ApiReportError(&session, "No Velomar user name found for user '%s'", wholeName);
  return VL_E_INVALID_USER;
}

}  // namespace vl
