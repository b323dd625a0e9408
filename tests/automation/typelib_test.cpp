// The type library inside Vlapi64.dll, as clients load it: its identity and
// every type info in order, compared with one table of the published
// interface.
#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>

#include "tests/automation/automation_test_support.h"

namespace {

using vltest::ComPtr;

// Kinds: 'e' enumeration, 'd' dual interface, 'c' class and 'C' creatable
// class, whose body is its default interface. An enumeration's body is the
// prefix of its names, then "Name[=value]" per constant; an interface's is
// "Name[=dispid][:accessors]" per member in slot order (m method, g get,
// p put). A value or dispid is one more than the last unless given (the
// first value 0, the first dispid 1); accessors are the last member's unless
// given. A two-digit guid stands for {F1A35Dnn-ED5D-11D4-B860-009027A6FEE2}.
// A null help is "<name> Interface" or "<name> Class" (none for enumerations).
struct TypeRow {
  char kind;
  const char *name, *guid, *body, *help = nullptr;
};

#define COLLECTION "Item=0:g _NewEnum=-4 Count=1 "
#define FOLDER "GetMsgList:m CheckNewMsgStatus GetMsg"

const TypeRow kTypes[] = {
    {'e', "StatusEnum", nullptr,
     "vlStatus Adding=1 Held Deferred Waiting Converting=6 Connecting Sending Aborting=10 "
     "Incoming SubRouter=13 AcceptRemote Ok=30 Failed PreviewOK PreviewFailed"},
    {'e', "UserStatusEnum", nullptr, "vlUserStatus OK=1 Aware Waiting"},
    {'e', "RouteEnum", nullptr, "vlRoute FaxNormal=2 FaxFine FaxSuperfine"},
    {'e', "FaxTypeEnum", nullptr, "vlFaxType Fax=1 LAN SMS"},
    {'e', "QualityEnum", nullptr, "vlQuality High=1 Normal Draft"},
    {'e', "PriorityEnum", nullptr, "vlPriority Background=1 Normal Urgent"},
    {'e', "FormatEnum", nullptr, "vlFormat ASCII=1 Epson TIFFNormal TIFFFine"},
    {'e', "SendTimeEnum", nullptr, "vlSendTime Now=1 Offpeak After"},
    {'e', "HeaderEnum", nullptr, "vlHeader None Number To From=4 Date=8 Time=16"},
    {'e', "EventEnum", nullptr,
     "vlEvent SentOK=1 RecdOK ScanOK SentError RecdError ScanError Tried RouterSub RouterAcc "
     "RouterErr"},
    {'e', "DevStatusEnum", nullptr,
     "vlDevStatus Idle=1 Error Failed Offline Busy WaitingConnect Sending Receiving "
     "WaitingScanDoc=11 IncomingCall=13"},
    {'e', "LinkStatusEnum", nullptr,
     "vlLink Online=1 Offline FailedWDog Initialising Shutdown UnknownState"},
    {'e', "VlErr", nullptr,
     "vlErrE_ INVALID_PARAM=0x8004F700 NOT_INIT INIT_FAIL INVALID_VL_INIT_FILE INVALID_VL_USER "
     "CANNOT_LOG_ON CANT_LOG_ON=0x8004F705 PATH_NOT_FOUND TOO_MANY_FILES FILE_CREATE_ERROR "
     "FILE_OPEN_ERROR FILE_ERROR FILE_NOT_FOUND SERVER_NOT_RUNNING INVALID_DATA_FORMAT "
     "MSG_UNKNOWN MSG_NOT_COMPLETED MSG_EXISTS INFO_FILE_OPEN_ERROR INFO_FILE_ERROR "
     "INFO_FILE_INVALID CANNOT_SUBMIT CANT_SUBMIT_REQUEST=0x8004F714 BUFFER_TOO_SMALL "
     "SUBMIT_FILE_INVALID CANNOT_READ_MSG_DEFAULTS CANT_READ_MSG_DEFAULTS=0x8004F717 "
     "CONTROL_FILE_OPEN_ERROR CONTROL_FILE_ERROR CONTROL_FILE_INVALID SERVER_RUNNING "
     "NO_START_SYSMAN SERVER_INI_FILE_ERROR=0x8004F71E FUNCTION_ABORT TIMEOUT_EXPIRED "
     "MALLOC_FAILED=0x8004F724 USER_NOT_INIT=0x8004F727 ACCESSDENIED REGISTRY_ERROR "
     "ACTIVE_DIRECTORY_NOT_PRESENT ACTIVE_DIRECTORY_ERROR ACTIVE_DIRECTORY_MISSING_VALUE "
     "FULLCOLLECTION=0x8004F730"},
    {'c', "UserSession", "71", "IVlUserSession"},
    {'d', "IVlUserSession", "70",
     "CreateNewMsg:m Server:g UserArea UserOutDir UserInDir FromName CoverSheet Inbox Outbox "
     "SystemArea SendSubmitFile:m Logoff MailInfo:g APIPrint"},
    {'d', "IVlNewMsg", "8A",
     "Send:m Recipients:g Attachments Files Priority:gp Format Covertext Comment Text From "
     "Quality After Charge Delete Preview Letterhead Subject Hold User Header CoverSheet "
     "SendTime Body:g CustomField:gp Broadcast"},
    {'d', "IVlRecipients", "8E", COLLECTION "AddFaxRecipient:m AddLANRecipient AddSMSRecipient"},
    {'d', "IVlRecipient", "8C", "To=0:gp Organisation Fax Type Delete:m Custom:gp Status"},
    {'d', "IVlAttachments", "92", COLLECTION "Add:m"},
    {'d', "IVlAttachment", "90", "Name=0:gp Delete:m"},
    {'d', "IVlFiles", "{052B982E-780C-4B6A-8C16-323FF065F43E}", COLLECTION "Add:m"},
    {'d', "IVlFile", "{826D8FE5-222F-48D8-A79C-998B4C1764C4}", "FileName=0:gp Delete:m"},
    {'d', "IVlServer", "72", "Start:m Check Stop Restart GetServerInfo Id6"},
    {'d', "IVlServerInfo", "76",
     "Devices:g Links MaxDevices MaxLinks Sending Deferred WaitingResend WaitingConvert "
     "WaitingDevice RemoteAccept Scanning RouterSub Coversheets Letterheads"},
    {'d', "IVlDevices", "74", COLLECTION},
    {'d', "IVlDevice", "78",
     "Name=0:g Status User MsgBody NumConnectFails NumSendFails NumSendOK NumPages CurrentPage"},
    {'d', "IVlLinks", "7A", COLLECTION},
    {'d', "IVlLink", "7C",
     "RemoteStatus:g LocalStatus RemoteServer NumRejected NumSentOK NumDeviceError "
     "NumRemoteServerError NumTimedOut NumUnAcknowledged NumAcknowledged NumReceived "
     "ConnectionOK LinkActive"},
    {'d', "ICoversheets", "{CA56FBE4-4539-4914-9B63-F1779FD1D6C5}", COLLECTION},
    {'d', "ICoversheet", "{C959283E-2284-4830-B9B6-103E67B81C64}", "Name:g"},
    {'d', "ILetterheads", "{AE9FF212-C515-433A-8B38-97F3A0AD40E3}", COLLECTION},
    {'d', "ILetterhead", "{952C7718-7EF1-4552-8840-77990F414554}", "Name:g"},
    {'d', "IVlInbox", "88", FOLDER}, {'d', "IVlMsgs", "80", COLLECTION "MsgDir"},
    {'d', "IVlMsg", "7E",
     "AbortMsg:m HoldMsg RushMsg ReleaseMsg SendMsg DeleteMsg GetMsgInfo GetMsgHistories "
     "MarkMsgAsRead GetMsgRecipients"},
    {'d', "IVlMsgInfo", "82",
     "Status:g Body Comment Subject UserStatus Type Organisation CustomField ImageStream "
     "ImageSize ImageFilePath AcceptedDate Covertext Files Attachments"},
    {'d', "IVlMsgHistories", "84", COLLECTION},
    {'d', "IVlMsgHistory", "94",
     "Event:g Date Route RouteParams Device RemoteServer ErrorCode AddrNum Connection PagesSent "
     "Name Organisation"},
    {'d', "IVlOutbox", "86", FOLDER},
    {'d', "IVlMailInfo", "{247BB804-EE7B-40A6-ADCD-DAAFDB687DB7}", "Type:g Address",
     "IVlMailInfo interface"},
    {'d', "IAPIPrint", "{ADE8D039-65FA-421C-8151-169AF273349B}",
     "StartPrint:m CancelPrint IsComplete FileName:g"},
    {'c', "Server", "73", "IVlServer"}, {'c', "Devices", "75", "IVlDevices"},
    {'c', "ServerInfo", "77", "IVlServerInfo"}, {'c', "Device", "79", "IVlDevice"},
    {'c', "Links", "7B", "IVlLinks"}, {'c', "Link", "7D", "IVlLink"},
    {'c', "Message", "7F", "IVlMsg"}, {'c', "Messages", "81", "IVlMsgs"},
    {'c', "MessageInfo", "83", "IVlMsgInfo"}, {'c', "MessageHistories", "85", "IVlMsgHistories"},
    {'c', "Outbox", "87", "IVlOutbox"}, {'c', "Inbox", "89", "IVlInbox"},
    {'c', "NewMessage", "8B", "IVlNewMsg"}, {'c', "Recipient", "8D", "IVlRecipient"},
    {'c', "Recipients", "8F", "IVlRecipients"},
    {'c', "File", "{CA69F25A-5464-4DA4-8F24-8B0406C7D5F1}", "IVlFile"},
    {'c', "Files", "{F043477B-366F-47A2-934A-0167D4B4C65A}", "IVlFiles"},
    {'c', "Attachment", "91", "IVlAttachment"}, {'c', "Attachments", "93", "IVlAttachments"},
    {'c', "MessageHistory", "95", "IVlMsgHistory"},
    {'c', "CoverSheet", "{B4A821BA-881D-4674-ACF7-BE86AB42FE38}", "ICoversheet",
     "Coversheet Class"},
    {'c', "Coversheets", "{4A04C383-7958-40E9-9DE5-24F653F6B298}", "ICoversheets"},
    {'c', "Letterhead", "{F55DE77A-B9BF-40A8-867C-98387168C67F}", "ILetterhead"},
    {'c', "Letterheads", "{F6F93AAF-CDD7-44E1-A0C2-E452C46A46A6}", "ILetterheads"},
    {'c', "MailInfo", "{D6E589FA-9338-4140-AB94-9793B0B16142}", "IVlMailInfo", "MailInfo class"},
    {'c', "APIPrint", "{F8FF11E7-D6F8-4475-8285-EF235A1A6F8B}", "IAPIPrint",
     "Enables printing to the Velomar printer from the API"},
    {'C', "VlAPI", "{F8F6D7F6-F36C-11D4-B863-009027A6FEE2}", "IVlAPI",
     "Top-level object used to log on user"},
    {'d', "IVlAPI", "{27702C4B-FDB6-11D4-B866-009027A6FEE2}",
     "Logon:m LogonAnonymous Version:g AutoTempDirectory:gp Escape:m SetTempDir SetVelomarDirs "
     "EnableImpersonation:gp ServerDir:g SystemDir UsersDir RequestDir SetVelomarServerFromAD:m "
     "VelomarServer:g GetVelomarServersFromAD:m GetVelomarServerInfoFromAD"},
};

// The help texts of the members whose text is not "method X" or "property
// X", in member order ("" where it is). Documentation is found by dispatch
// id, so both accessors of a property answer with the get's text.
const std::map<std::string, std::vector<std::string>> kHelp = {
    {"IVlServer", {"", "", "", "", "", "Tombstone"}},
    {"IVlAPI",
     {"Logs user on to Velomar", "Logs an anonymous user on to Velomar", "Gets version of API dll",
      "Sets the TEMP directory to be the user's area on the Velomar server", "Escape method",
      "SetTempDir method",
      "Sets Velomar directories to use for user logon. Overrides default logon server.",
      "This property is not used", "Gets Server directory used for user logon",
      "Gets System directory used for user logon", "Gets Users directory used for user logon",
      "Gets Request directory used for user logon",
      "Sets Velomar server to log on to for user logon. Overrides default logon server.",
      "Gets Velomar server used for user logon",
      "Gets list of Velomar servers registered in Active Directory",
      "Gets Velomar server directories configured in Active Directory"}},
    {"IAPIPrint",
     {"Sets API print mode for the next job sent to the printer", "Cancels API print mode",
      "Checks if printer has completed writing the output file", "Gets the output filename"}},
};

struct Token {
  std::string name;
  long long value;  // or dispid
  std::string kinds;
};

// The words of a body as the table's comment reads them, after value `last`.
std::vector<Token> Tokens(const std::string& text, long long last) {
  std::istringstream in(text);
  std::vector<Token> tokens;
  std::string kinds;
  for (std::string w; in >> w;) {
    size_t equals = w.find('='), colon = w.find(':');
    if (colon != std::string::npos) kinds = w.substr(colon + 1);
    last = equals == std::string::npos ? last + 1 : std::stoll(w.substr(equals + 1), nullptr, 0);
    tokens.push_back({w.substr(0, std::min(equals, colon)), last, kinds});
  }
  return tokens;
}

std::string GuidText(const GUID& guid) {
  wchar_t text[40];
  return std::string(text, text + StringFromGUID2(guid, text, 40) - 1);
}
std::string RowGuid(const std::string& guid) {
  return guid.size() == 2 ? "{F1A35D" + guid + "-ED5D-11D4-B860-009027A6FEE2}" : guid;
}
std::string Narrow(const std::wstring& text) { return std::string(text.begin(), text.end()); }

// The name and help text of a member (MEMBERID_NIL: of the type itself).
std::pair<std::string, std::string> Documentation(ITypeInfo* info, MEMBERID id) {
  BSTR name = nullptr, help = nullptr;
  EXPECT_EQ(info->GetDocumentation(id, &name, &help, nullptr, nullptr), S_OK);
  return {Narrow(vltest::Take(name)), Narrow(vltest::Take(help))};
}

auto Attr(ITypeInfo* info) {
  TYPEATTR* attr = nullptr;
  EXPECT_EQ(info->GetTypeAttr(&attr), S_OK);
  auto release = [info](TYPEATTR* a) { info->ReleaseTypeAttr(a); };
  return std::unique_ptr<TYPEATTR, decltype(release)>(attr, release);
}

ComPtr<ITypeInfo> Referenced(ITypeInfo* info, UINT index) {
  HREFTYPE ref = 0;
  ComPtr<ITypeInfo> target;
  EXPECT_EQ(info->GetRefTypeOfImplType(index, &ref), S_OK);
  EXPECT_EQ(info->GetRefTypeInfo(ref, target.put()), S_OK);
  return target;
}

void ExpectEnum(ITypeInfo* info, const TYPEATTR& attr, const std::string& body) {
  const std::string prefix = body.substr(0, body.find(' '));
  std::vector<Token> items = Tokens(body.substr(prefix.size()), -1);
  ASSERT_EQ(attr.cVars, items.size());
  for (UINT i = 0; i < items.size(); ++i) {
    VARDESC* var = nullptr;
    ASSERT_EQ(info->GetVarDesc(i, &var), S_OK);
    auto release = os::scope_exit([&] { info->ReleaseVarDesc(var); });
    const std::string name = prefix + items[i].name;
    EXPECT_EQ(Documentation(info, var->memid).first, name);
    ASSERT_EQ(var->varkind, VAR_CONST) << name;
    EXPECT_EQ(V_VT(var->lpvarValue), VT_I4) << name;
    EXPECT_EQ(V_I4(var->lpvarValue), static_cast<LONG>(items[i].value)) << name;
  }
}

// Compares the functions of the virtual table interface of a dual interface
// (same guid, derived from IDispatch) with the members of the table, one
// slot per accessor after IDispatch's seven; the dispatch view clients bind
// by name is made from it by the system.
void ExpectMembers(ITypeInfo* info, const TypeRow& row) {
  UINT slot = 0;
  const std::vector<Token> members = Tokens(row.body, 0);
  const auto helps = kHelp.contains(row.name) ? kHelp.at(row.name) : std::vector<std::string>();
  for (size_t m = 0; m < members.size(); ++m) {
    const Token& member = members[m];
    for (char kind : member.kinds) {
      SCOPED_TRACE(member.name + ":" + kind);
      FUNCDESC* func = nullptr;
      ASSERT_EQ(info->GetFuncDesc(slot, &func), S_OK);
      auto release = os::scope_exit([&] { info->ReleaseFuncDesc(func); });
      EXPECT_EQ(func->memid, member.value);
      EXPECT_EQ(func->invkind, kind == 'm'   ? INVOKE_FUNC
                               : kind == 'g' ? INVOKE_PROPERTYGET
                                             : INVOKE_PROPERTYPUT);
      EXPECT_EQ((func->wFuncFlags & FUNCFLAG_FRESTRICTED) != 0, member.value == DISPID_NEWENUM);
      EXPECT_EQ(func->oVft, static_cast<SHORT>((7 + slot) * 8));
      if (kind == 'g') {
        ASSERT_GT(func->cParams, 0);
        EXPECT_EQ(func->lprgelemdescParam[func->cParams - 1].paramdesc.wParamFlags & 0xF,
                  PARAMFLAG_FOUT | PARAMFLAG_FRETVAL);
      }
      std::string help = m < helps.size() ? helps[m] : "";
      if (help.empty()) help = (kind == 'm' ? "method " : "property ") + member.name;
      EXPECT_EQ(Documentation(info, func->memid), std::make_pair(member.name, help));
      ++slot;
    }
  }
  auto attr = Attr(info);
  ASSERT_TRUE(attr);
  EXPECT_EQ(attr->cFuncs, slot);
  EXPECT_EQ(attr->cbSizeVft, static_cast<WORD>((7 + slot) * 8));
}

void ExpectType(ITypeInfo* info, const TYPEATTR& attr, const TypeRow& row) {
  const std::string suffix = row.kind == 'd' ? " Interface" : " Class";
  EXPECT_EQ(GuidText(attr.guid), row.guid ? RowGuid(row.guid) : GuidText(GUID_NULL));
  EXPECT_EQ(Documentation(info, MEMBERID_NIL).second,
            row.help ? row.help : row.kind == 'e' ? "" : row.name + suffix);
  if (row.kind == 'e') {
    EXPECT_EQ(attr.typekind, TKIND_ENUM);
    ExpectEnum(info, attr, row.body);
  } else if (row.kind != 'd') {
    EXPECT_EQ(attr.typekind, TKIND_COCLASS);
    EXPECT_EQ((attr.wTypeFlags & TYPEFLAG_FCANCREATE) != 0, row.kind == 'C');
    ASSERT_EQ(attr.cImplTypes, 1);
    INT flags = 0;
    EXPECT_EQ(info->GetImplTypeFlags(0, &flags), S_OK);
    EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT);
    EXPECT_EQ(Documentation(Referenced(info, 0).get(), MEMBERID_NIL).first, row.body);
  } else {
    ASSERT_EQ(attr.typekind, TKIND_DISPATCH);
    EXPECT_NE(attr.wTypeFlags & TYPEFLAG_FDUAL, 0);
    ExpectMembers(Referenced(info, static_cast<UINT>(-1)).get(), row);
  }
}

// The library as found beside the test program.
ComPtr<ITypeLib> LoadVlLib() {
  ComPtr<ITypeLib> lib;
  EXPECT_EQ(LoadTypeLibEx(L"Vlapi64.dll", REGKIND_NONE, lib.put()), S_OK);
  return lib;
}

TEST(TypeLib, LibraryIdentityAndHeader) {
  ComPtr<ITypeLib> lib = LoadVlLib();
  ASSERT_TRUE(lib);
  TLIBATTR* attr = nullptr;
  ASSERT_EQ(lib->GetLibAttr(&attr), S_OK);
  EXPECT_EQ(GuidText(attr->guid), RowGuid("64"));
  EXPECT_EQ(std::vector<int>({attr->wMajorVerNum, attr->wMinorVerNum, int(attr->lcid)}),
            std::vector<int>({1, 4, 1033}));
  lib->ReleaseTLibAttr(attr);
  BSTR name = nullptr, help = nullptr;
  ASSERT_EQ(lib->GetDocumentation(-1, &name, &help, nullptr, nullptr), S_OK);
  EXPECT_EQ(vltest::Take(name) + L" | " + vltest::Take(help), L"VlLib | Vlapi32 1.4 Type Library");
}

// The imported automation library does not describe IStream, so IStream and
// the types of its signatures are the only type infos outside the table; it
// is there once, for IVlMsgInfo.ImageStream, and is the system's.
TEST(TypeLib, TypeInfosInOrderMatchThePublishedInterface) {
  ComPtr<ITypeLib> lib = LoadVlLib();
  ASSERT_TRUE(lib);
  size_t row = 0, streams = 0;
  for (UINT i = 0; i < lib->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(lib->GetTypeInfo(i, info.put()), S_OK);
    auto attr = Attr(info.get());
    ASSERT_TRUE(attr);
    std::string name = Documentation(info.get(), MEMBERID_NIL).first;
    SCOPED_TRACE(name);
    if (row < std::size(kTypes) && name == kTypes[row].name) {
      ExpectType(info.get(), *attr, kTypes[row++]);
    } else if (name == "IStream") {
      EXPECT_TRUE(IsEqualGUID(attr->guid, IID_IStream));
      ++streams;
    } else {
      EXPECT_TRUE(name == "ISequentialStream" || attr->typekind == TKIND_RECORD ||
                  attr->typekind == TKIND_ALIAS);
    }
  }
  EXPECT_EQ(row, std::size(kTypes)) << "missing or out of order: " << kTypes[row].name;
  EXPECT_EQ(streams, 1u);
}

}  // namespace
