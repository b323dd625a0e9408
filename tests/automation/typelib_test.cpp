// The type library inside Vlapi64.dll, as clients load it: its identity and
// every type info in order, compared with one table of the published
// interface.
#include <windows.h>
#include <oleauto.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <iterator>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "platform/win32/raii_win.h"
#include "vllib.h"

namespace {

using os::ComPtr;

// Kinds: 'e' enumeration ("name=value ..."), 'd' dual interface
// ("Member:dispid:accessors ...", m = method, g = get, p = put, in slot
// order), 'c' class and 'C' creatable class (the default interface).
struct TypeRow {
  char kind;
  const char* name;
  const char* guid;
  const char* help;
  const char* body;
};

#define COLLECTION "Item:0:g _NewEnum:-4:g Count:1:g "
#define FOLDER "GetMsgList:1:m CheckNewMsgStatus:2:m GetMsg:3:m"
#define VLGUID(n) "{F1A35D" n "-ED5D-11D4-B860-009027A6FEE2}"

const TypeRow kTypes[] = {
    {'e', "StatusEnum", nullptr, nullptr,
     "vlStatusAdding=1 vlStatusHeld=2 vlStatusDeferred=3 vlStatusWaiting=4 vlStatusConverting=6 "
     "vlStatusConnecting=7 vlStatusSending=8 vlStatusAborting=10 vlStatusIncoming=11 "
     "vlStatusSubRouter=13 vlStatusAcceptRemote=14 vlStatusOk=30 vlStatusFailed=31 "
     "vlStatusPreviewOK=32 vlStatusPreviewFailed=33"},
    {'e', "UserStatusEnum", nullptr, nullptr,
     "vlUserStatusOK=1 vlUserStatusAware=2 vlUserStatusWaiting=3"},
    {'e', "RouteEnum", nullptr, nullptr,
     "vlRouteFaxNormal=2 vlRouteFaxFine=3 vlRouteFaxSuperfine=4"},
    {'e', "FaxTypeEnum", nullptr, nullptr, "vlFaxTypeFax=1 vlFaxTypeLAN=2 vlFaxTypeSMS=3"},
    {'e', "QualityEnum", nullptr, nullptr, "vlQualityHigh=1 vlQualityNormal=2 vlQualityDraft=3"},
    {'e', "PriorityEnum", nullptr, nullptr,
     "vlPriorityBackground=1 vlPriorityNormal=2 vlPriorityUrgent=3"},
    {'e', "FormatEnum", nullptr, nullptr,
     "vlFormatASCII=1 vlFormatEpson=2 vlFormatTIFFNormal=3 vlFormatTIFFFine=4"},
    {'e', "SendTimeEnum", nullptr, nullptr,
     "vlSendTimeNow=1 vlSendTimeOffpeak=2 vlSendTimeAfter=3"},
    {'e', "HeaderEnum", nullptr, nullptr,
     "vlHeaderNone=0 vlHeaderNumber=1 vlHeaderTo=2 vlHeaderFrom=4 vlHeaderDate=8 vlHeaderTime=16"},
    {'e', "EventEnum", nullptr, nullptr,
     "vlEventSentOK=1 vlEventRecdOK=2 vlEventScanOK=3 vlEventSentError=4 vlEventRecdError=5 "
     "vlEventScanError=6 vlEventTried=7 vlEventRouterSub=8 vlEventRouterAcc=9 vlEventRouterErr=10"},
    {'e', "DevStatusEnum", nullptr, nullptr,
     "vlDevStatusIdle=1 vlDevStatusError=2 vlDevStatusFailed=3 vlDevStatusOffline=4 "
     "vlDevStatusBusy=5 vlDevStatusWaitingConnect=6 vlDevStatusSending=7 vlDevStatusReceiving=8 "
     "vlDevStatusWaitingScanDoc=11 vlDevStatusIncomingCall=13"},
    {'e', "LinkStatusEnum", nullptr, nullptr,
     "vlLinkOnline=1 vlLinkOffline=2 vlLinkFailedWDog=3 vlLinkInitialising=4 vlLinkShutdown=5 "
     "vlLinkUnknownState=6"},
    {'e', "VlErr", nullptr, nullptr,
     "vlErrE_INVALID_PARAM=0x8004F700 vlErrE_NOT_INIT=0x8004F701 vlErrE_INIT_FAIL=0x8004F702 "
     "vlErrE_INVALID_VL_INIT_FILE=0x8004F703 vlErrE_INVALID_VL_USER=0x8004F704 "
     "vlErrE_CANNOT_LOG_ON=0x8004F705 vlErrE_CANT_LOG_ON=0x8004F705 "
     "vlErrE_PATH_NOT_FOUND=0x8004F706 vlErrE_TOO_MANY_FILES=0x8004F707 "
     "vlErrE_FILE_CREATE_ERROR=0x8004F708 vlErrE_FILE_OPEN_ERROR=0x8004F709 "
     "vlErrE_FILE_ERROR=0x8004F70A vlErrE_FILE_NOT_FOUND=0x8004F70B "
     "vlErrE_SERVER_NOT_RUNNING=0x8004F70C vlErrE_INVALID_DATA_FORMAT=0x8004F70D "
     "vlErrE_MSG_UNKNOWN=0x8004F70E vlErrE_MSG_NOT_COMPLETED=0x8004F70F "
     "vlErrE_MSG_EXISTS=0x8004F710 vlErrE_INFO_FILE_OPEN_ERROR=0x8004F711 "
     "vlErrE_INFO_FILE_ERROR=0x8004F712 vlErrE_INFO_FILE_INVALID=0x8004F713 "
     "vlErrE_CANNOT_SUBMIT=0x8004F714 vlErrE_CANT_SUBMIT_REQUEST=0x8004F714 "
     "vlErrE_BUFFER_TOO_SMALL=0x8004F715 vlErrE_SUBMIT_FILE_INVALID=0x8004F716 "
     "vlErrE_CANNOT_READ_MSG_DEFAULTS=0x8004F717 vlErrE_CANT_READ_MSG_DEFAULTS=0x8004F717 "
     "vlErrE_CONTROL_FILE_OPEN_ERROR=0x8004F718 vlErrE_CONTROL_FILE_ERROR=0x8004F719 "
     "vlErrE_CONTROL_FILE_INVALID=0x8004F71A vlErrE_SERVER_RUNNING=0x8004F71B "
     "vlErrE_NO_START_SYSMAN=0x8004F71C vlErrE_SERVER_INI_FILE_ERROR=0x8004F71E "
     "vlErrE_FUNCTION_ABORT=0x8004F71F vlErrE_TIMEOUT_EXPIRED=0x8004F720 "
     "vlErrE_MALLOC_FAILED=0x8004F724 vlErrE_USER_NOT_INIT=0x8004F727 "
     "vlErrE_ACCESSDENIED=0x8004F728 vlErrE_REGISTRY_ERROR=0x8004F729 "
     "vlErrE_ACTIVE_DIRECTORY_NOT_PRESENT=0x8004F72A vlErrE_ACTIVE_DIRECTORY_ERROR=0x8004F72B "
     "vlErrE_ACTIVE_DIRECTORY_MISSING_VALUE=0x8004F72C vlErrE_FULLCOLLECTION=0x8004F730"},
    {'c', "UserSession", VLGUID("71"), "UserSession Class", "IVlUserSession"},
    {'d', "IVlUserSession", VLGUID("70"), "IVlUserSession Interface",
     "CreateNewMsg:1:m Server:2:g UserArea:3:g UserOutDir:4:g UserInDir:5:g FromName:6:g "
     "CoverSheet:7:g Inbox:8:g Outbox:9:g SystemArea:10:g SendSubmitFile:11:m Logoff:12:m "
     "MailInfo:13:g APIPrint:14:g"},
    {'d', "IVlNewMsg", VLGUID("8A"), "IVlNewMsg Interface",
     "Send:1:m Recipients:2:g Attachments:3:g Files:4:g Priority:5:gp Format:6:gp Covertext:7:gp "
     "Comment:8:gp Text:9:gp From:10:gp Quality:11:gp After:12:gp Charge:13:gp Delete:14:gp "
     "Preview:15:gp Letterhead:16:gp Subject:17:gp Hold:18:gp User:19:gp Header:20:gp "
     "CoverSheet:21:gp SendTime:22:gp Body:23:g CustomField:24:gp Broadcast:25:gp"},
    {'d', "IVlRecipients", VLGUID("8E"), "IVlRecipients Interface",
     COLLECTION "AddFaxRecipient:2:m AddLANRecipient:3:m AddSMSRecipient:4:m"},
    {'d', "IVlRecipient", VLGUID("8C"), "IVlRecipient Interface",
     "To:0:gp Organisation:1:gp Fax:2:gp Type:3:gp Delete:4:m Custom:5:gp Status:6:gp"},
    {'d', "IVlAttachments", VLGUID("92"), "IVlAttachments Interface", COLLECTION "Add:2:m"},
    {'d', "IVlAttachment", VLGUID("90"), "IVlAttachment Interface", "Name:0:gp Delete:1:m"},
    {'d', "IVlFiles", "{052B982E-780C-4B6A-8C16-323FF065F43E}", "IVlFiles Interface",
     COLLECTION "Add:2:m"},
    {'d', "IVlFile", "{826D8FE5-222F-48D8-A79C-998B4C1764C4}", "IVlFile Interface",
     "FileName:0:gp Delete:1:m"},
    {'d', "IVlServer", VLGUID("72"), "IVlServer Interface",
     "Start:1:m Check:2:m Stop:3:m Restart:4:m GetServerInfo:5:m Id6:6:m"},
    {'d', "IVlServerInfo", VLGUID("76"), "IVlServerInfo Interface",
     "Devices:1:g Links:2:g MaxDevices:3:g MaxLinks:4:g Sending:5:g Deferred:6:g "
     "WaitingResend:7:g WaitingConvert:8:g WaitingDevice:9:g RemoteAccept:10:g Scanning:11:g "
     "RouterSub:12:g Coversheets:13:g Letterheads:14:g"},
    {'d', "IVlDevices", VLGUID("74"), "IVlDevices Interface", COLLECTION},
    {'d', "IVlDevice", VLGUID("78"), "IVlDevice Interface",
     "Name:0:g Status:1:g User:2:g MsgBody:3:g NumConnectFails:4:g NumSendFails:5:g "
     "NumSendOK:6:g NumPages:7:g CurrentPage:8:g"},
    {'d', "IVlLinks", VLGUID("7A"), "IVlLinks Interface", COLLECTION},
    {'d', "IVlLink", VLGUID("7C"), "IVlLink Interface",
     "RemoteStatus:1:g LocalStatus:2:g RemoteServer:3:g NumRejected:4:g NumSentOK:5:g "
     "NumDeviceError:6:g NumRemoteServerError:7:g NumTimedOut:8:g NumUnAcknowledged:9:g "
     "NumAcknowledged:10:g NumReceived:11:g ConnectionOK:12:g LinkActive:13:g"},
    {'d', "ICoversheets", "{CA56FBE4-4539-4914-9B63-F1779FD1D6C5}", "ICoversheets Interface",
     COLLECTION},
    {'d', "ICoversheet", "{C959283E-2284-4830-B9B6-103E67B81C64}", "ICoversheet Interface",
     "Name:1:g"},
    {'d', "ILetterheads", "{AE9FF212-C515-433A-8B38-97F3A0AD40E3}", "ILetterheads Interface",
     COLLECTION},
    {'d', "ILetterhead", "{952C7718-7EF1-4552-8840-77990F414554}", "ILetterhead Interface",
     "Name:1:g"},
    {'d', "IVlInbox", VLGUID("88"), "IVlInbox Interface", FOLDER},
    {'d', "IVlMsgs", VLGUID("80"), "IVlMsgs Interface", COLLECTION "MsgDir:2:g"},
    {'d', "IVlMsg", VLGUID("7E"), "IVlMsg Interface",
     "AbortMsg:1:m HoldMsg:2:m RushMsg:3:m ReleaseMsg:4:m SendMsg:5:m DeleteMsg:6:m "
     "GetMsgInfo:7:m GetMsgHistories:8:m MarkMsgAsRead:9:m GetMsgRecipients:10:m"},
    {'d', "IVlMsgInfo", VLGUID("82"), "IVlMsgInfo Interface",
     "Status:1:g Body:2:g Comment:3:g Subject:4:g UserStatus:5:g Type:6:g Organisation:7:g "
     "CustomField:8:g ImageStream:9:g ImageSize:10:g ImageFilePath:11:g AcceptedDate:12:g "
     "Covertext:13:g Files:14:g Attachments:15:g"},
    {'d', "IVlMsgHistories", VLGUID("84"), "IVlMsgHistories Interface", COLLECTION},
    {'d', "IVlMsgHistory", VLGUID("94"), "IVlMsgHistory Interface",
     "Event:1:g Date:2:g Route:3:g RouteParams:4:g Device:5:g RemoteServer:6:g ErrorCode:7:g "
     "AddrNum:8:g Connection:9:g PagesSent:10:g Name:11:g Organisation:12:g"},
    {'d', "IVlOutbox", VLGUID("86"), "IVlOutbox Interface", FOLDER},
    {'d', "IVlMailInfo", "{247BB804-EE7B-40A6-ADCD-DAAFDB687DB7}", "IVlMailInfo interface",
     "Type:1:g Address:2:g"},
    {'d', "IAPIPrint", "{ADE8D039-65FA-421C-8151-169AF273349B}", "IAPIPrint Interface",
     "StartPrint:1:m CancelPrint:2:m IsComplete:3:m FileName:4:g"},
    {'c', "Server", VLGUID("73"), "Server Class", "IVlServer"},
    {'c', "Devices", VLGUID("75"), "Devices Class", "IVlDevices"},
    {'c', "ServerInfo", VLGUID("77"), "ServerInfo Class", "IVlServerInfo"},
    {'c', "Device", VLGUID("79"), "Device Class", "IVlDevice"},
    {'c', "Links", VLGUID("7B"), "Links Class", "IVlLinks"},
    {'c', "Link", VLGUID("7D"), "Link Class", "IVlLink"},
    {'c', "Message", VLGUID("7F"), "Message Class", "IVlMsg"},
    {'c', "Messages", VLGUID("81"), "Messages Class", "IVlMsgs"},
    {'c', "MessageInfo", VLGUID("83"), "MessageInfo Class", "IVlMsgInfo"},
    {'c', "MessageHistories", VLGUID("85"), "MessageHistories Class", "IVlMsgHistories"},
    {'c', "Outbox", VLGUID("87"), "Outbox Class", "IVlOutbox"},
    {'c', "Inbox", VLGUID("89"), "Inbox Class", "IVlInbox"},
    {'c', "NewMessage", VLGUID("8B"), "NewMessage Class", "IVlNewMsg"},
    {'c', "Recipient", VLGUID("8D"), "Recipient Class", "IVlRecipient"},
    {'c', "Recipients", VLGUID("8F"), "Recipients Class", "IVlRecipients"},
    {'c', "File", "{CA69F25A-5464-4DA4-8F24-8B0406C7D5F1}", "File Class", "IVlFile"},
    {'c', "Files", "{F043477B-366F-47A2-934A-0167D4B4C65A}", "Files Class", "IVlFiles"},
    {'c', "Attachment", VLGUID("91"), "Attachment Class", "IVlAttachment"},
    {'c', "Attachments", VLGUID("93"), "Attachments Class", "IVlAttachments"},
    {'c', "MessageHistory", VLGUID("95"), "MessageHistory Class", "IVlMsgHistory"},
    {'c', "CoverSheet", "{B4A821BA-881D-4674-ACF7-BE86AB42FE38}", "Coversheet Class",
     "ICoversheet"},
    {'c', "Coversheets", "{4A04C383-7958-40E9-9DE5-24F653F6B298}", "Coversheets Class",
     "ICoversheets"},
    {'c', "Letterhead", "{F55DE77A-B9BF-40A8-867C-98387168C67F}", "Letterhead Class",
     "ILetterhead"},
    {'c', "Letterheads", "{F6F93AAF-CDD7-44E1-A0C2-E452C46A46A6}", "Letterheads Class",
     "ILetterheads"},
    {'c', "MailInfo", "{D6E589FA-9338-4140-AB94-9793B0B16142}", "MailInfo class", "IVlMailInfo"},
    {'c', "APIPrint", "{F8FF11E7-D6F8-4475-8285-EF235A1A6F8B}",
     "Enables printing to the Velomar printer from the API", "IAPIPrint"},
    {'C', "VlAPI", "{F8F6D7F6-F36C-11D4-B863-009027A6FEE2}", "Top-level object used to log on user",
     "IVlAPI"},
    {'d', "IVlAPI", "{27702C4B-FDB6-11D4-B866-009027A6FEE2}", "IVlAPI Interface",
     "Logon:1:m LogonAnonymous:2:m Version:3:g AutoTempDirectory:4:gp Escape:5:m SetTempDir:6:m "
     "SetVelomarDirs:7:m EnableImpersonation:8:gp ServerDir:9:g SystemDir:10:g UsersDir:11:g "
     "RequestDir:12:g SetVelomarServerFromAD:13:m VelomarServer:14:g "
     "GetVelomarServersFromAD:15:m GetVelomarServerInfoFromAD:16:m"},
};

// Members whose help text is not "method X" or "property X". Documentation
// is found by dispatch id, so both accessors of a property answer with the
// get's text (the put's own text is checked in the resource below).
const std::map<std::string, std::string> kHelp = {
    {"IVlServer.Id6", "Tombstone"},
    {"IVlAPI.Logon", "Logs user on to Velomar"},
    {"IVlAPI.LogonAnonymous", "Logs an anonymous user on to Velomar"},
    {"IVlAPI.Version", "Gets version of API dll"},
    {"IVlAPI.AutoTempDirectory",
     "Sets the TEMP directory to be the user's area on the Velomar server"},
    {"IVlAPI.Escape", "Escape method"},
    {"IVlAPI.SetTempDir", "SetTempDir method"},
    {"IVlAPI.SetVelomarDirs",
     "Sets Velomar directories to use for user logon. Overrides default logon server."},
    {"IVlAPI.EnableImpersonation", "This property is not used"},
    {"IVlAPI.ServerDir", "Gets Server directory used for user logon"},
    {"IVlAPI.SystemDir", "Gets System directory used for user logon"},
    {"IVlAPI.UsersDir", "Gets Users directory used for user logon"},
    {"IVlAPI.RequestDir", "Gets Request directory used for user logon"},
    {"IVlAPI.SetVelomarServerFromAD",
     "Sets Velomar server to log on to for user logon. Overrides default logon server."},
    {"IVlAPI.VelomarServer", "Gets Velomar server used for user logon"},
    {"IVlAPI.GetVelomarServersFromAD",
     "Gets list of Velomar servers registered in Active Directory"},
    {"IVlAPI.GetVelomarServerInfoFromAD",
     "Gets Velomar server directories configured in Active Directory"},
    {"IAPIPrint.StartPrint", "Sets API print mode for the next job sent to the printer"},
    {"IAPIPrint.CancelPrint", "Cancels API print mode"},
    {"IAPIPrint.IsComplete", "Checks if printer has completed writing the output file"},
    {"IAPIPrint.FileName", "Gets the output filename"},
};

std::wstring DllPath() {
  wchar_t path[MAX_PATH];
  std::wstring module(path, GetModuleFileNameW(nullptr, path, MAX_PATH));
  return module.substr(0, module.find_last_of(L'\\') + 1) + L"Vlapi64.dll";
}

ComPtr<ITypeLib> LoadVlLib() {
  ComPtr<ITypeLib> lib;
  EXPECT_EQ(LoadTypeLibEx(DllPath().c_str(), REGKIND_NONE, lib.put()), S_OK);
  return lib;
}

std::string Narrow(BSTR text) { return text ? std::string(text, text + SysStringLen(text)) : ""; }

std::string GuidText(const GUID& guid) {
  wchar_t text[40];
  return std::string(text, text + StringFromGUID2(guid, text, 40) - 1);
}

// The name and help text of a member (MEMBERID_NIL: of the type itself).
std::pair<std::string, std::string> Documentation(ITypeInfo* info, MEMBERID id) {
  BSTR name = nullptr, help = nullptr;
  EXPECT_EQ(info->GetDocumentation(id, &name, &help, nullptr, nullptr), S_OK);
  os::UniqueBstr owned_name(name), owned_help(help);
  return {Narrow(name), Narrow(help)};
}

std::vector<std::string> Words(const char* text) {
  std::istringstream in(text);
  std::vector<std::string> words;
  for (std::string w; in >> w;) words.push_back(w);
  return words;
}

void ExpectEnum(ITypeInfo* info, const TYPEATTR& attr, const char* body) {
  std::vector<std::string> items = Words(body);
  ASSERT_EQ(attr.cVars, items.size());
  for (UINT i = 0; i < items.size(); ++i) {
    VARDESC* var = nullptr;
    ASSERT_EQ(info->GetVarDesc(i, &var), S_OK);
    auto release = os::scope_exit([&] { info->ReleaseVarDesc(var); });
    std::string name = items[i].substr(0, items[i].find('='));
    EXPECT_EQ(Documentation(info, var->memid).first, name);
    ASSERT_EQ(var->varkind, VAR_CONST) << name;
    EXPECT_EQ(V_VT(var->lpvarValue), VT_I4) << name;
    EXPECT_EQ(static_cast<ULONG>(V_I4(var->lpvarValue)),
              std::strtoul(items[i].c_str() + name.size() + 1, nullptr, 0)) << name;
  }
}

// Compares the functions from index `first` with the members of the table,
// one slot per accessor; the virtual table also fixes each slot's offset.
void ExpectMembers(ITypeInfo* info, const TypeRow& row, UINT first, bool vtable) {
  UINT slot = 0;
  for (const std::string& word : Words(row.body)) {
    size_t colon = word.find(':'), last = word.rfind(':');
    std::string name = word.substr(0, colon), kinds = word.substr(last + 1);
    MEMBERID id = std::stoi(word.substr(colon + 1, last - colon - 1));
    auto help = kHelp.find(std::string(row.name) + "." + name);
    for (char kind : kinds) {
      SCOPED_TRACE(name + ":" + kind);
      FUNCDESC* func = nullptr;
      ASSERT_EQ(info->GetFuncDesc(first + slot, &func), S_OK);
      auto release = os::scope_exit([&] { info->ReleaseFuncDesc(func); });
      EXPECT_EQ(func->memid, id);
      EXPECT_EQ(func->invkind, kind == 'm'   ? INVOKE_FUNC
                               : kind == 'g' ? INVOKE_PROPERTYGET
                                             : INVOKE_PROPERTYPUT);
      EXPECT_EQ((func->wFuncFlags & FUNCFLAG_FRESTRICTED) != 0, id == DISPID_NEWENUM);
      if (vtable) {
        EXPECT_EQ(func->oVft, static_cast<SHORT>((7 + slot) * 8));
        if (kind == 'g') {
          ASSERT_GT(func->cParams, 0);
          EXPECT_EQ(func->lprgelemdescParam[func->cParams - 1].paramdesc.wParamFlags & 0xF,
                    PARAMFLAG_FOUT | PARAMFLAG_FRETVAL);
        }
      }
      auto doc = Documentation(info, func->memid);
      EXPECT_EQ(doc.first, name);
      EXPECT_EQ(doc.second, help != kHelp.end() ? help->second
                                                : (kind == 'm' ? "method " : "property ") + name);
      ++slot;
    }
  }
  TYPEATTR* attr = nullptr;
  ASSERT_EQ(info->GetTypeAttr(&attr), S_OK);
  EXPECT_EQ(attr->cFuncs, first + slot);
  if (vtable) {
    EXPECT_EQ(attr->cbSizeVft, static_cast<WORD>((7 + slot) * 8));
  }
  info->ReleaseTypeAttr(attr);
}

ComPtr<ITypeInfo> Referenced(ITypeInfo* info, UINT index) {
  HREFTYPE ref = 0;
  ComPtr<ITypeInfo> target;
  EXPECT_EQ(info->GetRefTypeOfImplType(index, &ref), S_OK);
  EXPECT_EQ(info->GetRefTypeInfo(ref, target.put()), S_OK);
  return target;
}

void ExpectType(ITypeInfo* info, const TYPEATTR& attr, const TypeRow& row) {
  EXPECT_EQ(GuidText(attr.guid), row.guid ? row.guid : GuidText(GUID_NULL));
  EXPECT_EQ(Documentation(info, MEMBERID_NIL).second, row.help ? row.help : "");
  if (row.kind == 'e') {
    EXPECT_EQ(attr.typekind, TKIND_ENUM);
    ExpectEnum(info, attr, row.body);
  } else if (row.kind == 'c' || row.kind == 'C') {
    EXPECT_EQ(attr.typekind, TKIND_COCLASS);
    EXPECT_EQ((attr.wTypeFlags & TYPEFLAG_FCANCREATE) != 0, row.kind == 'C');
    ASSERT_EQ(attr.cImplTypes, 1);
    INT flags = 0;
    EXPECT_EQ(info->GetImplTypeFlags(0, &flags), S_OK);
    EXPECT_EQ(flags, IMPLTYPEFLAG_FDEFAULT);
    ComPtr<ITypeInfo> def = Referenced(info, 0);
    ASSERT_TRUE(def);
    EXPECT_EQ(Documentation(def.get(), MEMBERID_NIL).first, row.body);
  } else {
    ASSERT_EQ(attr.typekind, TKIND_DISPATCH);
    EXPECT_NE(attr.wTypeFlags & TYPEFLAG_FDUAL, 0);
    ExpectMembers(info, row, 7, false);  // after the inherited IDispatch functions
    ComPtr<ITypeInfo> vtable = Referenced(info, static_cast<UINT>(-1));
    ASSERT_TRUE(vtable);
    TYPEATTR* vattr = nullptr;
    ASSERT_EQ(vtable->GetTypeAttr(&vattr), S_OK);
    auto release = os::scope_exit([&] { vtable->ReleaseTypeAttr(vattr); });
    EXPECT_EQ(vattr->typekind, TKIND_INTERFACE);
    EXPECT_EQ(GuidText(vattr->guid), row.guid);
    EXPECT_EQ(Documentation(Referenced(vtable.get(), 0).get(), MEMBERID_NIL).first, "IDispatch");
    ExpectMembers(vtable.get(), row, 0, true);
  }
}

TEST(TypeLib, LibraryIdentityAndHeader) {
  ComPtr<ITypeLib> lib = LoadVlLib();
  ASSERT_TRUE(lib);
  TLIBATTR* attr = nullptr;
  ASSERT_EQ(lib->GetLibAttr(&attr), S_OK);
  EXPECT_EQ(GuidText(attr->guid), "{F1A35D64-ED5D-11D4-B860-009027A6FEE2}");
  EXPECT_EQ(attr->wMajorVerNum, 1);
  EXPECT_EQ(attr->wMinorVerNum, 4);
  EXPECT_EQ(attr->lcid, 1033u);
  EXPECT_TRUE(IsEqualGUID(attr->guid, LIBID_VlLib));
  lib->ReleaseTLibAttr(attr);
  BSTR name = nullptr, help = nullptr;
  ASSERT_EQ(lib->GetDocumentation(-1, &name, &help, nullptr, nullptr), S_OK);
  os::UniqueBstr owned_name(name), owned_help(help);
  EXPECT_EQ(Narrow(name), "VlLib");
  EXPECT_EQ(Narrow(help), "Vlapi32 1.4 Type Library");
  // The generated header names the same identities and C++ types.
  ComPtr<ITypeInfo> info;
  EXPECT_EQ(lib->GetTypeInfoOfGuid(__uuidof(IVlAPI), info.put()), S_OK);
  EXPECT_EQ(lib->GetTypeInfoOfGuid(__uuidof(VlAPI), info.put()), S_OK);
  static_assert(sizeof(PriorityEnum) == 4 && vlPriorityUrgent == 3);
  static_assert(vlErrE_FULLCOLLECTION == static_cast<HRESULT>(0x8004F730));
}

// The imported automation library does not describe IStream, so IStream and
// the types of its signatures are the only type infos outside the table.
TEST(TypeLib, TypeInfosInOrderMatchThePublishedInterface) {
  ComPtr<ITypeLib> lib = LoadVlLib();
  ASSERT_TRUE(lib);
  size_t row = 0;
  for (UINT i = 0; i < lib->GetTypeInfoCount(); ++i) {
    ComPtr<ITypeInfo> info;
    ASSERT_EQ(lib->GetTypeInfo(i, info.put()), S_OK);
    TYPEATTR* attr = nullptr;
    ASSERT_EQ(info->GetTypeAttr(&attr), S_OK);
    auto release = os::scope_exit([&] { info->ReleaseTypeAttr(attr); });
    std::string name = Documentation(info.get(), MEMBERID_NIL).first;
    SCOPED_TRACE(name);
    if (row < std::size(kTypes) && name == kTypes[row].name) {
      ExpectType(info.get(), *attr, kTypes[row++]);
      continue;
    }
    EXPECT_TRUE(name == "IStream" || name == "ISequentialStream" ||
                attr->typekind == TKIND_RECORD || attr->typekind == TKIND_ALIAS);
  }
  EXPECT_EQ(row, std::size(kTypes)) << "missing or out of order: " << kTypes[row].name;
}

TEST(TypeLib, ImageStreamReturnsTheSystemIStream) {
  ComPtr<ITypeLib> lib = LoadVlLib();
  ComPtr<ITypeInfo> info;
  ASSERT_TRUE(lib);
  ASSERT_EQ(lib->GetTypeInfoOfGuid(__uuidof(IVlMsgInfo), info.put()), S_OK);
  ComPtr<ITypeInfo> vtable = Referenced(info.get(), static_cast<UINT>(-1));
  FUNCDESC* func = nullptr;
  ASSERT_EQ(vtable->GetFuncDesc(8, &func), S_OK);  // ImageStream, the ninth slot
  auto release = os::scope_exit([&] { vtable->ReleaseFuncDesc(func); });
  const TYPEDESC* type = &func->lprgelemdescParam[0].tdesc;
  ASSERT_EQ(type->vt, VT_PTR);
  ASSERT_EQ(type->lptdesc->vt, VT_PTR);
  ASSERT_EQ(type->lptdesc->lptdesc->vt, VT_USERDEFINED);
  ComPtr<ITypeInfo> stream;
  ASSERT_EQ(vtable->GetRefTypeInfo(type->lptdesc->lptdesc->hreftype, stream.put()), S_OK);
  TYPEATTR* attr = nullptr;
  ASSERT_EQ(stream->GetTypeAttr(&attr), S_OK);
  EXPECT_TRUE(IsEqualGUID(attr->guid, IID_IStream));
  stream->ReleaseTypeAttr(attr);
}

// ITypeInfo answers for the put accessor with the get's text, so the put's
// own (swapped) text is looked for in the resource itself.
TEST(TypeLib, ResourceHoldsThePutTextOfAutoTempDirectory) {
  os::UniqueModule dll(LoadLibraryExW(DllPath().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE));
  ASSERT_TRUE(dll);
  HRSRC found = FindResourceW(dll.get(), MAKEINTRESOURCEW(1), L"TYPELIB");
  ASSERT_NE(found, nullptr);
  const char* bytes = static_cast<const char*>(LockResource(LoadResource(dll.get(), found)));
  std::string tlb(bytes, SizeofResource(dll.get(), found));
  EXPECT_NE(tlb.find("Gets the AutoTempDirectory property"), std::string::npos);
}

}  // namespace
