// Inbox and Outbox, their message lists, and a message's requests,
// information, files, image and history.
#include <functional>
#include <string>
#include <vector>

#include "automation/factories.h"
#include "platform/fault.h"
#include "tests/automation/automation_test_support.h"
#include "tests/support/message_files.h"

namespace {

using namespace vltest;
using Names = std::vector<std::string>;
const HRESULT kUnknownMessage = 0x8004F70E, kNoFile = 0x8004F70B;

class FoldersTest : public AutomationTest {
 protected:
  void SetUp() override {
    AutomationTest::SetUp();
    ASSERT_EQ(vlauto::CreateOutbox(handle_, outbox_.put()), S_OK);
    ASSERT_EQ(vlauto::CreateInbox(handle_, inbox_.put()), S_OK);
  }
  void WriteList(const std::vector<ListEntry>& entries, bool out = true) const {
    std::string text = ListHeader(out);
    for (const auto& entry : entries) text += ListEntryText(entry);
    WriteFile((out ? Out() : In()) + "MSGDIR.CTL", text);
  }
  ComPtr<IVlMsg> Message(const wchar_t* body) {
    ComPtr<IVlMsg> message;
    EXPECT_EQ(outbox_->GetMsg(B(body), message.put()), S_OK);
    return message;
  }
  Names Requests() const {
    Names names = ListDirectory(tree_.Request());
    std::erase(names, "VELOMAR.LOK");
    return names;
  }

  ComPtr<IVlOutbox> outbox_;
  ComPtr<IVlInbox> inbox_;
};

TEST_F(FoldersTest, ListedMessagesKeepTheirOrderAndTheSnapshotsInformation) {
  WriteList({}, false);  // only the in list: each folder reads its own
  ComPtr<IVlMsgs> messages = Get(inbox_.get(), &IVlInbox::GetMsgList);
  EXPECT_EQ(Get(messages.get(), &IVlMsgs::get_Count), 0);
  EXPECT_EQ(Get(messages.get(), &IVlMsgs::get_MsgDir), Wide(In()));

  // The statuses are the list's (the script clients follow them).
  const struct {
    ListEntry entry;
    DATE accepted;
  } rows[] = {
      {{"MSG3.TXT", "OK"}, Date(2026, 11, 21, 10, 20, 30)},
      {{"MSG1.G3F", "He", "Aw", "SEND", "79-12-31 23:59:59"}, Date(2079, 12, 31, 23, 59, 59)},
      {{"MSG2.TXT", "Su", "Aw", "SEND", "00-00-00 00:00:00"}, 0},
  };
  std::vector<ListEntry> entries;
  for (const auto& row : rows) entries.push_back(row.entry);
  WriteList(entries);
  messages = Get(outbox_.get(), &IVlOutbox::GetMsgList);
  ASSERT_EQ(Get(messages.get(), &IVlMsgs::get_Count), 3);
  // Neither the list nor the folder's rights are consulted again per item.
  WriteList({});
  os::fault::Inject(os::fault::Op::AccessCheck, 1, 5, true);
  for (long i = 0; i < 3; ++i) {
    const std::string body = rows[i].entry.file.substr(0, 4);
    ComPtr<IVlMsgInfo> info = Get(At<IVlMsg>(messages.get(), i).get(), &IVlMsg::GetMsgInfo);
    EXPECT_EQ(Gets(info.get(), {&IVlMsgInfo::get_Body, &IVlMsgInfo::get_Subject}),
              (Texts{Wide(body), Wide("subject of " + body)}));
    EXPECT_EQ(Get(info.get(), &IVlMsgInfo::get_AcceptedDate), rows[i].accepted) << body;
  }
  os::fault::Clear();
  ComPtr<IVlMsgInfo> info;
  EXPECT_EQ(Message(L"MSG3")->GetMsgInfo(info.put()), kUnknownMessage) << "read from the list";
  EXPECT_EQ(ErrorRecord(), L"IVlMsg::GetMsgInfo(): The specified message is unknown");
}

// The inbox reports its check under a source and interface of its own.
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
    GUID iid = GUID_NULL;
    EXPECT_EQ(row.call(), E_ACCESSDENIED) << row.source;
    EXPECT_EQ(ErrorSource(&iid), row.source);
    EXPECT_TRUE(IsEqualGUID(iid, row.iid)) << row.source;
  }
}

TEST_F(FoldersTest, SendMsgSendsOnlyAMessageTheListDoesNotKnow) {
  WriteList({{"MSG1.TXT"}});
  for (const char* file : {"MSG1.CTL", "MSG1.TXT", "MSG2.CTL", "MSG2.TXT", "MSG3.CTL"})
    WriteFile(Out() + file, "x");
  const std::string listed = ReadFile(Out() + "MSGDIR.CTL");
  EXPECT_EQ(Message(L"MSG1")->SendMsg(), S_OK);
  EXPECT_EQ(ReadFile(Out() + "MSGDIR.CTL"), listed);
  EXPECT_EQ(Requests(), Names{});
  EXPECT_EQ(Message(L"MSG3")->SendMsg(), E_FAIL) << "no data file";
  EXPECT_EQ(Message(L"MSG2")->SendMsg(), S_OK);
  EXPECT_EQ(Requests(), Names{"~RQST000.CTL"});
  EXPECT_NE(ReadFile(Out() + "MSGDIR.CTL").find("File: MSG2.TXT\r\n"), std::string::npos);
}

// Release and abort are followed through the server by the script clients;
// the requests' text, and their refusal while the server is down, are the
// flat functions'.
TEST_F(FoldersTest, HoldMsgRequestsTheOutboxMessage) {
  ASSERT_EQ(Message(L"MSG1")->HoldMsg(), S_OK);
  EXPECT_NE(ReadFile(tree_.Request() + "~RQST000.CTL")
                .find("\r\nType: HOLD\r\nUser: JSMITH\r\nFile: MSG1.CTL\r\nDirectory: V-OUT\r\n"),
            std::string::npos);
}

TEST_F(FoldersTest, AMessageGivesItsFilesAttachmentsCoverTextAndHistory) {
  WriteList({{}});
  WriteFile(Out() + "MSG1.CTL", Lines({
      "[OPTIONS]", "Hold: NO", "Attach: a.doc", "Document: C:\\d\\one.txt",
      "Document: C:\\d\\two.txt", "Covertext: Dear", "Covertext: Ann,", "Covertext: \\nBye",
      "[HISTORY]", "MessageID: Id-1",
      "Tried: 26-01-01 09:00:00 1 \"Ann\" FAX-FINE \"\" <1A 0 0:00:00 \"FAX1\" \"\"",
      "SentOK: 26-01-01 10:00:00 2 \"Bob\" FAX \"p\" <0 3 0:01:05 \"FAX2\" \"PARIS\"",
      "[ADDRESSEES]", "ShortName:", "Name: Ann", "Organisation: Acme", "Via: FAX-ANY 1",
      "ShortName:", "Name: Bob", "Organisation: Bobco", "Via: FAX-ANY 2"}));
  ComPtr<IVlMsgInfo> info = Get(Message(L"MSG1").get(), &IVlMsg::GetMsgInfo);
  EXPECT_EQ(Items<IVlFile>(Get(info.get(), &IVlMsgInfo::get_Files).get(),
                           [](IVlFile* f) { return Get(f, &IVlFile::get_FileName); }),
            (Texts{L"C:\\d\\one.txt", L"C:\\d\\two.txt"}));
  EXPECT_EQ(Items<IVlAttachment>(Get(info.get(), &IVlMsgInfo::get_Attachments).get(),
                                 [](IVlAttachment* a) { return Get(a, &IVlAttachment::get_Name); }),
            Texts{L"a.doc"});
  EXPECT_EQ(Get(info.get(), &IVlMsgInfo::get_Covertext), L"Dear Ann,\r\nBye");
  // "event addressee route pages connection error name organisation remote"
  auto describe = [](IVlMsgHistory* e) {
    using H = IVlMsgHistory;
    std::wstring text;
    for (long n : {long(Get(e, &H::get_Event)), long(Get(e, &H::get_AddrNum)),
                   long(Get(e, &H::get_Route)), long(Get(e, &H::get_PagesSent)),
                   long(Get(e, &H::get_Connection)), Get(e, &H::get_ErrorCode)})
      text += std::to_wstring(n) + L" ";
    return text + Get(e, &H::get_Name) + L" " + Get(e, &H::get_Organisation) + L" " +
           Get(e, &H::get_RemoteServer);
  };
  EXPECT_EQ(Items<IVlMsgHistory>(
                Get(Message(L"MSG1").get(), &IVlMsg::GetMsgHistories).get(), describe),
            (Texts{L"7 1 3 0 0 26 Ann Acme ", L"1 2 2 3 65 0 Bob Bobco PARIS"}));
}

TEST_F(FoldersTest, TheImageIsThePreviewElseTheFaxFile) {
  WriteList({{"MSG1.TXT"}});
  WriteFile(Out() + "MSG1.CTL", "[VELOMAR]\r\nType: Control\r\nRevision: A\r\n");
  ComPtr<IVlMsgInfo> info = Get(Message(L"MSG1").get(), &IVlMsg::GetMsgInfo);
  BSTR path = nullptr;
  EXPECT_EQ(info->get_ImageFilePath(&path), kNoFile);
  WriteFile(Out() + "MSG1.G3N", "fax");
  EXPECT_EQ(Get(info.get(), &IVlMsgInfo::get_ImageSize), 3);
  MakeDirectories(Out() + "PREVIEW");
  WriteFile(Out() + "PREVIEW\\MSG1.TIF", "image");
  EXPECT_EQ(Get(info.get(), &IVlMsgInfo::get_ImageFilePath), Wide(Out() + "PREVIEW\\MSG1.TIF"));
  ComPtr<IStream> stream = Get(info.get(), &IVlMsgInfo::get_ImageStream);
  char bytes[16] = {};
  ULONG read = 0;
  EXPECT_EQ(stream->Read(bytes, sizeof bytes, &read), S_OK);
  EXPECT_EQ(std::string(bytes, read), "image");
}

}  // namespace
