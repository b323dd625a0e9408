// Inbox and Outbox, their message lists, and a message's requests,
// information, files, image and history.
#include <windows.h>

#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "automation/factories.h"
#include "platform/fault.h"
#include "platform/win32/raii_win.h"
#include "tests/support/message_files.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/user_fixture.h"

namespace {

using os::ComPtr;
using Names = std::vector<std::string>;
const HRESULT kUnknownMessage = 0x8004F70E, kServerDown = 0x8004F70C, kNoFile = 0x8004F70B;

std::wstring Wide(const std::string& text) { return std::wstring(text.begin(), text.end()); }
std::wstring Take(BSTR text) {
  os::UniqueBstr owned(text);
  return text ? text : L"";
}
template <typename I>
std::wstring Text(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(BSTR*)) {
  BSTR text = reinterpret_cast<BSTR>(0x5A5A);  // junk, to be replaced
  EXPECT_EQ((object->*getter)(&text), S_OK);
  return Take(text);
}
template <typename I, typename T>
T Get(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(T*)) {
  T value = static_cast<T>(0x5A);
  EXPECT_EQ((object->*getter)(&value), S_OK);
  return value;
}
template <typename C, typename Item>
HRESULT ItemAt(C* collection, long index, ComPtr<Item>& item) {
  VARIANT v = {};
  V_VT(&v) = VT_I4;
  V_I4(&v) = index;
  return collection->get_Item(v, item.put());
}
// What describe makes of each item of a collection, in order.
using Texts = std::vector<std::wstring>;
template <typename Item, typename C, typename Describe>
Texts Items(C* collection, Describe describe) {
  Texts texts;
  for (long i = 0, count = Get(collection, &C::get_Count); i < count; ++i) {
    ComPtr<Item> item;
    EXPECT_EQ(ItemAt(collection, i, item), S_OK);
    texts.push_back(item ? describe(item.get()) : L"(none)");
  }
  return texts;
}
std::wstring FileName(IVlFile* file) { return Text(file, &IVlFile::get_FileName); }
std::wstring AttachmentName(IVlAttachment* a) { return Text(a, &IVlAttachment::get_Name); }
// "event addressee route pages connection error name organisation remote".
std::wstring Event(IVlMsgHistory* e) {
  using H = IVlMsgHistory;
  std::wstring text;
  for (long n : {long(Get(e, &H::get_Event)), long(Get(e, &H::get_AddrNum)),
                 long(Get(e, &H::get_Route)), long(Get(e, &H::get_PagesSent)),
                 long(Get(e, &H::get_Connection)), Get(e, &H::get_ErrorCode)})
    text += std::to_wstring(n) + L" ";
  return text + Text(e, &H::get_Name) + L" " + Text(e, &H::get_Organisation) + L" " +
         Text(e, &H::get_RemoteServer);
}
DATE Date(WORD year, WORD month, WORD day, WORD hour, WORD minute, WORD second) {
  SYSTEMTIME time = {year, month, 0, day, hour, minute, second, 0};
  DATE date = 0;
  SystemTimeToVariantTime(&time, &date);
  return date;
}
// The source and interface of the thread's error information.
std::pair<std::wstring, GUID> LastError() {
  ComPtr<IErrorInfo> info;
  GUID guid = GUID_NULL;
  BSTR source = nullptr;
  if (GetErrorInfo(0, info.put()) != S_OK) return {L"(none)", guid};
  info->GetSource(&source);
  info->GetGUID(&guid);
  return {Take(source), guid};
}

class FoldersTest : public vltest::JsmithTest {
 protected:
  void SetUp() override {
    JsmithTest::SetUp();
    CoInitialize(nullptr);
    ASSERT_EQ(vlauto::CreateOutbox(handle_, outbox_.put()), S_OK);
    ASSERT_EQ(vlauto::CreateInbox(handle_, inbox_.put()), S_OK);
  }
  void TearDown() override {
    inbox_.reset();
    outbox_.reset();
    CoUninitialize();
    JsmithTest::TearDown();
  }
  void WriteList(const std::vector<vltest::ListEntry>& entries, bool out = true) const {
    std::string text = vltest::ListHeader(out);
    for (const auto& entry : entries) text += vltest::ListEntryText(entry);
    vltest::WriteFile((out ? Out() : In()) + "MSGDIR.CTL", text);
  }
  ComPtr<IVlMsg> Message(const wchar_t* body) {
    ComPtr<IVlMsg> message;
    EXPECT_EQ(outbox_->GetMsg(os::UniqueBstr(SysAllocString(body)).get(), message.put()), S_OK);
    return message;
  }
  Names Requests() const {
    Names names = vltest::ListDirectory(tree_.Request());
    std::erase(names, "VELOMAR.LOK");
    return names;
  }

  vltest::ServerStandIn server_{tree_.Request()};
  ComPtr<IVlOutbox> outbox_;
  ComPtr<IVlInbox> inbox_;
};

TEST_F(FoldersTest, AnEmptyFolderListsNoMessagesAndNamesItsDirectory) {
  WriteList({}, false);
  ComPtr<IVlMsgs> messages;
  ASSERT_EQ(inbox_->GetMsgList(messages.put()), S_OK);
  EXPECT_EQ(Get(messages.get(), &IVlMsgs::get_Count), 0);
  EXPECT_EQ(Text(messages.get(), &IVlMsgs::get_MsgDir), Wide(In()));
}

TEST_F(FoldersTest, ListedMessagesKeepTheirOrderAndTheSnapshotsInformation) {
  const struct {
    vltest::ListEntry entry;
    StatusEnum status;
    DATE accepted;
  } rows[] = {
      {{"MSG3.TXT", "OK"}, vlStatusOk, Date(2026, 11, 21, 10, 20, 30)},
      {{"MSG1.G3F", "He", "Aw", "SEND", "79-12-31 23:59:59"}, vlStatusHeld,
       Date(2079, 12, 31, 23, 59, 59)},
      {{"MSG2.TXT", "Su", "Aw", "SEND", "00-00-00 00:00:00"}, vlStatusAdding, 0},
  };
  std::vector<vltest::ListEntry> entries;
  for (const auto& row : rows) entries.push_back(row.entry);
  WriteList(entries);
  ComPtr<IVlMsgs> messages;
  ASSERT_EQ(outbox_->GetMsgList(messages.put()), S_OK);
  ASSERT_EQ(Get(messages.get(), &IVlMsgs::get_Count), 3);
  // Neither the list nor the folder's rights are consulted again per item.
  WriteList({});
  os::fault::Inject(os::fault::Op::AccessCheck, 1, 5, true);
  for (long i = 0; i < 3; ++i) {
    const std::string body = rows[i].entry.file.substr(0, 4);
    ComPtr<IVlMsg> message;
    ComPtr<IVlMsgInfo> info;
    ASSERT_EQ(ItemAt(messages.get(), i, message), S_OK);
    ASSERT_EQ(message->GetMsgInfo(info.put()), S_OK);
    EXPECT_EQ(Text(info.get(), &IVlMsgInfo::get_Body), Wide(body));
    EXPECT_EQ(Get(info.get(), &IVlMsgInfo::get_Status), rows[i].status) << body;
    EXPECT_EQ(Text(info.get(), &IVlMsgInfo::get_Subject), Wide("subject of " + body));
    EXPECT_EQ(Get(info.get(), &IVlMsgInfo::get_AcceptedDate), rows[i].accepted) << body;
  }
  os::fault::Clear();
  ComPtr<IVlMsgInfo> info;
  EXPECT_EQ(Message(L"MSG3")->GetMsgInfo(info.put()), kUnknownMessage) << "read from the list";
}

TEST_F(FoldersTest, CheckNewMsgStatusGivesMinusOneForNewMessages) {
  WriteList({{}});
  EXPECT_EQ(Get(outbox_.get(), &IVlOutbox::CheckNewMsgStatus), VARIANT_TRUE);
  EXPECT_EQ(Get(outbox_.get(), &IVlOutbox::CheckNewMsgStatus), VARIANT_FALSE);
}

TEST_F(FoldersTest, AFolderTheCallerMayNotReadIsRefusedUnderItsSource) {
  os::fault::Inject(os::fault::Op::AccessCheck, 1, 5, true);
  VARIANT_BOOL isNew = 1;
  ComPtr<IVlMsgs> messages;
  ComPtr<IVlMsgInfo> info;
  ComPtr<IVlMsg> message = Message(L"MSG1");
  const struct {
    std::function<HRESULT()> call;
    const wchar_t* source;
    GUID iid;
  } rows[] = {
      {[&] { return inbox_->CheckNewMsgStatus(&isNew); }, L"VlInbox::CheckNewMsgStatus()",
       __uuidof(IVlNewMsg)},
      {[&] { return outbox_->CheckNewMsgStatus(&isNew); }, L"IVlOutbox::CheckNewMsgStatus()",
       __uuidof(IVlOutbox)},
      {[&] { return inbox_->GetMsgList(messages.put()); }, L"IVlInbox::GetMsgList()",
       __uuidof(IVlInbox)},
      {[&] { return message->GetMsgInfo(info.put()); }, L"IVlMsg::GetMsgInfo()", __uuidof(IVlMsg)},
      {[&] { return message->HoldMsg(); }, L"IVlMsg::HoldMsg()", __uuidof(IVlMsg)},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(row.call(), E_ACCESSDENIED) << row.source;
    EXPECT_EQ(LastError(), std::make_pair(std::wstring(row.source), row.iid));
  }
}

TEST_F(FoldersTest, SendMsgSendsOnlyAMessageTheListDoesNotKnow) {
  WriteList({{"MSG1.TXT"}});
  for (const char* file : {"MSG1.CTL", "MSG1.TXT", "MSG2.CTL", "MSG2.TXT", "MSG3.CTL"})
    vltest::WriteFile(Out() + file, "x");
  const std::string listed = vltest::ReadFile(Out() + "MSGDIR.CTL");
  EXPECT_EQ(Message(L"MSG1")->SendMsg(), S_OK);
  EXPECT_EQ(vltest::ReadFile(Out() + "MSGDIR.CTL"), listed);
  EXPECT_EQ(Requests(), Names{});
  EXPECT_EQ(Message(L"MSG3")->SendMsg(), E_FAIL) << "no data file";
  EXPECT_EQ(Message(L"MSG2")->SendMsg(), S_OK);
  EXPECT_EQ(Requests(), Names{"~RQST000.CTL"});
  EXPECT_NE(vltest::ReadFile(Out() + "MSGDIR.CTL").find("File: MSG2.TXT\r\n"), std::string::npos);
}

TEST_F(FoldersTest, HoldAndReleaseWriteTheirRequestsWhileTheServerRuns) {
  const std::pair<HRESULT (STDMETHODCALLTYPE IVlMsg::*)(), std::string> rows[] = {
      {&IVlMsg::HoldMsg, "HOLD"}, {&IVlMsg::ReleaseMsg, "RELEASE"}};
  const std::string request = tree_.Request() + "~RQST000.CTL";
  for (const auto& [call, type] : rows) {
    ASSERT_EQ((Message(L"MSG1").get()->*call)(), S_OK) << type;
    EXPECT_NE(vltest::ReadFile(request).find("\r\nType: " + type +
                                             "\r\nUser: JSMITH\r\nFile: MSG1.CTL\r\n"
                                             "Directory: V-OUT\r\n"),
              std::string::npos);
    vltest::RemoveTree(request);
  }
  server_.Stop();
  for (const auto& [call, type] : rows) EXPECT_EQ((Message(L"MSG1").get()->*call)(), kServerDown);
  EXPECT_EQ(Requests(), Names{});
}

TEST_F(FoldersTest, AMessageGivesItsFilesAttachmentsCoverTextAndHistory) {
  WriteList({{}});
  vltest::WriteFile(Out() + "MSG1.CTL", vltest::Lines({
      "[OPTIONS]", "Hold: NO", "Attach: a.doc", "Document: C:\\d\\one.txt",
      "Document: C:\\d\\two.txt", "Covertext: Dear", "Covertext: Ann,", "Covertext: \\nBye",
      "[HISTORY]", "MessageID: Id-1",
      "Tried: 26-01-01 09:00:00 1 \"Ann\" FAX-FINE \"\" <1A 0 0:00:00 \"FAX1\" \"\"",
      "SentOK: 26-01-01 10:00:00 2 \"Bob\" FAX \"p\" <0 3 0:01:05 \"FAX2\" \"PARIS\"",
      "[ADDRESSEES]", "ShortName:", "Name: Ann", "Organisation: Acme", "Via: FAX-ANY 1",
      "ShortName:", "Name: Bob", "Organisation: Bobco", "Via: FAX-ANY 2"}));
  ComPtr<IVlMsgInfo> info;
  ComPtr<IVlFiles> files;
  ComPtr<IVlAttachments> attachments;
  ComPtr<IVlMsgHistories> histories;
  ASSERT_EQ(Message(L"MSG1")->GetMsgInfo(info.put()), S_OK);
  ASSERT_EQ(info->get_Files(files.put()), S_OK);
  ASSERT_EQ(info->get_Attachments(attachments.put()), S_OK);
  EXPECT_EQ(Items<IVlFile>(files.get(), FileName), (Texts{L"C:\\d\\one.txt", L"C:\\d\\two.txt"}));
  EXPECT_EQ(Items<IVlAttachment>(attachments.get(), AttachmentName), Texts{L"a.doc"});
  EXPECT_EQ(Text(info.get(), &IVlMsgInfo::get_Covertext), L"Dear Ann,\r\nBye");
  ASSERT_EQ(Message(L"MSG1")->GetMsgHistories(histories.put()), S_OK);
  EXPECT_EQ(Items<IVlMsgHistory>(histories.get(), Event),
            (Texts{L"7 1 3 0 0 26 Ann Acme ", L"1 2 2 3 65 0 Bob Bobco PARIS"}));
}

TEST_F(FoldersTest, TheImageIsThePreviewElseTheFaxFile) {
  WriteList({{"MSG1.TXT"}});
  ComPtr<IVlMsgInfo> info;
  ASSERT_EQ(Message(L"MSG1")->GetMsgInfo(info.put()), S_OK);
  BSTR path = nullptr;
  EXPECT_EQ(info->get_ImageFilePath(&path), kNoFile);
  vltest::WriteFile(Out() + "MSG1.G3N", "fax");
  EXPECT_EQ(Get(info.get(), &IVlMsgInfo::get_ImageSize), 3);
  vltest::MakeDirectories(Out() + "PREVIEW");
  vltest::WriteFile(Out() + "PREVIEW\\MSG1.TIF", "image");
  EXPECT_EQ(Text(info.get(), &IVlMsgInfo::get_ImageFilePath), Wide(Out() + "PREVIEW\\MSG1.TIF"));
  ComPtr<IStream> stream;
  ASSERT_EQ(info->get_ImageStream(stream.put()), S_OK);
  char bytes[16] = {};
  ULONG read = 0;
  EXPECT_EQ(stream->Read(bytes, sizeof bytes, &read), S_OK);
  EXPECT_EQ(std::string(bytes, read), "image");
}

}  // namespace
