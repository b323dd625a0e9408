// The new message: its submit file byte for byte, its collections' limits,
// and Send end to end against a running-server stand-in.
#include "automation/new_message.h"

#include <string>
#include <vector>

#include "api/process_state.h"
#include "automation/factories.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/automation/automation_test_support.h"

namespace {

using namespace vltest;
using vlauto::SubmitSwitches;
using vlauto::SubmitValues;

class NewMessageTest : public AutomationTest {
 protected:
  void SetUp() override {
    AutomationTest::SetUp();
    saved_ = vl::Process();
    tree_.PrepareSender("JSMITH");
    TraceInto(scratch_);  // the API temporary directory too
    ASSERT_EQ(vlauto::CreateNewMessage(handle_, message_.put()), S_OK);
    recipients_ = Get(message_.get(), &IVlNewMsg::get_Recipients);
  }
  void TearDown() override {
    vl::Process() = saved_;
    AutomationTest::TearDown();
  }
  // The submit files Send left in the API temporary directory.
  std::vector<std::string> TempFiles() const {
    std::vector<std::string> names = ListDirectory(scratch_.Dir());
    std::erase_if(names, [](const std::string& name) { return name.rfind("VAP", 0) != 0; });
    return names;
  }

  vl::ProcessState saved_;
  ComPtr<IVlNewMsg> message_;
  ComPtr<IVlRecipients> recipients_;
};

TEST_F(NewMessageTest, EveryPropertyIsWrittenInItsPlaceAndTheFileStaysWhenSubmissionFails) {
  vl::Process().deleteFailedFaxes = 1;
  IVlNewMsg* m = message_.get();
  m->put_Priority(vlPriorityUrgent), m->put_Format(vlFormatTIFFFine);
  m->put_Quality(vlQualityDraft), m->put_SendTime(vlSendTimeAfter);
  m->put_After(Date(2024, 3, 7, 9, 5, 0));
  m->put_Header(HeaderEnum(vlHeaderTo | vlHeaderDate)), m->put_Hold(VARIANT_FALSE);
  m->put_Delete(VARIANT_TRUE), m->put_Preview(VARIANT_TRUE), m->put_Broadcast(VARIANT_TRUE);
  m->put_From(B(L"Jo Smith")), m->put_Subject(B(L"Report")), m->put_Comment(B(L"quarterly"));
  m->put_CustomField(B(L"ref-1")), m->put_Charge(B(L"C-7")), m->put_User(B(L"jsmith"));
  m->put_CoverSheet(B(L"FORMAL")), m->put_Letterhead(B(L"HEAD1"));
  m->put_Covertext(B(L"Dear all,")), m->put_Text(B(L"Body text"));
  ComPtr<IVlRecipient> sales, mo;
  ASSERT_EQ(recipients_->AddFaxRecipient(B(L"Sales"), B(L"Acme"), B(L"0123"), sales.put()), S_OK);
  ASSERT_EQ(recipients_->AddSMSRecipient(B(L"Mo"), nullptr, B(L"0700 1"), mo.put()), S_OK);
  sales->put_Custom(B(L"c1"));
  ComPtr<IVlAttachments> attachments = Get(m, &IVlNewMsg::get_Attachments);
  ComPtr<IVlFiles> files = Get(m, &IVlNewMsg::get_Files);
  ComPtr<IVlAttachment> attachment;
  ComPtr<IVlFile> file;
  for (const wchar_t* name : {L"a.doc", L"b.doc"}) attachments->Add(B(name), attachment.put());
  for (const wchar_t* name : {L"C:\\A.DOC", L"C:\\B.DOC"}) files->Add(B(name), file.put());
  running_.Stop();
  EXPECT_EQ(m->Send(), HRESULT(0x8004F70C));
  const std::vector<std::string> kept = TempFiles();
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_EQ(ReadFile(scratch_.Path(kept[0])),
            Lines({"%%[MESSAGE]", "FROM: Jo Smith", "SUBJECT: Report", "COMMENT: quarterly",
                   "DELETE: YES", "HOLD: NO", "PREVIEW: YES", "FAXBROADCAST: YES", "CUSTOM: ref-1",
                   "CHARGE: C-7", "USER: jsmith", "FORMAT: TIFF-FINE", "PRIORITY: URGENT",
                   "QUALITY: DRAFT", "AFTER: 2024-3-7 9:5:0", "HEADER: ToDa", "COVERSHEET: FORMAL",
                   "LETTERHEAD: HEAD1", "SENTITEMS: YES", "ATTACH: a.doc, b.doc",
                   "DOCUMENT: C:\\A.DOC", "DOCUMENT: C:\\B.DOC", "To: Sales", "Organisation: Acme",
                   "Fax: 0123", "Field: Custom c1", "To: Mo", "Organisation: ", "SMS: 0700 1",
                   "Field: Custom ", "", "%%[COVERTEXT]", "Dear all,", "", "%%[TEXT]", "Body text",
                   "", "%%[FILE]", "C:\\A.DOC", "C:\\B.DOC"}));
}

struct Input {
  SubmitValues v;
  SubmitSwitches s;
};
const struct {
  void (*change)(Input&);
  const char *has, *lacks = nullptr, *tail = nullptr;
} kEdgeCases[] = {
    {[](Input&) {}, "\r\nHEADER: \r\n", "QUALITY", "Custom \r\n\r\n%%[TEXT]\r\n\r\n"},
    {[](Input& i) { i.v.files = {"F1"}; }, nullptr, "%%[TEXT]",
     "Custom \r\n\r\n%%[FILE]\r\nF1\r\n"},
    {[](Input& i) { i.v.header = 31; }, "\r\nHEADER: NoToFrDaTi\r\n"},
    {[](Input& i) { i.v.subject = "a\r\nTo: b\n"; }, "\r\nSUBJECT: a  To: b \r\n"},
    {[](Input& i) { i.v.deleteAfterSend = true, i.s.deleteFailedFaxes = 0; }, "\r\nDELETE: OK\r\n"},
    {[](Input& i) { i.v.priority = 7; }, "\r\nPRIORITY: BACKGROUND\r\n"},
    {[](Input& i) { i.v.sendTime = 3; }, "\r\nAFTER:\r\nHEADER"},
    {[](Input& i) { i.v.sendTime = 2; }, "\r\nAFTER: OFFPEAK\r\n"},
    {[](Input& i) { i.v.recipients[0].type = 3, i.v.sentItemsSms = 0; }, "\r\nSENTITEMS: NO\r\n"},
    {[](Input& i) { i.s.sentItems = 0; }, "\r\nSENTITEMS: NO\r\n"},
    {[](Input& i) { i.v.sentItemsFax = 0, i.s.sentItems = 1; }, "\r\nSENTITEMS: YES\r\n"},
    {[](Input& i) {
       for (int n = 1; n <= 31; ++n) i.v.files.push_back("F" + std::to_string(n));
     },
     "\r\nDOCUMENT: F30\r\nTo: A\r\n", "DOCUMENT: F31", "F29\r\nF30\r\nF31\r\n"},
};

TEST(SubmitFileWriter, EachLineKeepsItsRuleAtTheEdges) {
  for (const auto& c : kEdgeCases) {
    Input input;
    input.v.sentItemsFax = 1;
    input.v.recipients = {{0, "A", "", "1", ""}};  // type 0 is written as fax
    c.change(input);
    std::string text;
    ASSERT_EQ(WriteSubmitFile(input.v, input.s, &text), S_OK);
    SCOPED_TRACE(text);
    EXPECT_TRUE(!c.has || text.find(c.has) != std::string::npos) << c.has;
    EXPECT_TRUE(!c.lacks || text.find(c.lacks) == std::string::npos) << c.lacks;
    EXPECT_TRUE(!c.tail || text.ends_with(c.tail)) << c.tail;
  }
  SubmitValues late;
  late.sendTime = 3, late.after = 1e9;  // beyond any calendar date
  std::string text = "junk";
  EXPECT_EQ(WriteSubmitFile(late, {}, &text), E_FAIL);
  EXPECT_EQ(text, "junk");
}

TEST_F(NewMessageTest, CollectionsKeepTheirLimitsAndItemsOutliveThem) {
  ComPtr<IVlRecipient> r;
  EXPECT_EQ(recipients_->AddFaxRecipient(B(L"A"), B(L"O"), B(L"1"), nullptr), E_POINTER);
  for (int i = 0; i < 999; ++i)
    ASSERT_EQ(recipients_->AddFaxRecipient(nullptr, nullptr, B(L"1"), r.put()), S_OK);
  EXPECT_EQ(recipients_->AddSMSRecipient(B(L"A"), nullptr, B(L"1"), r.put()), HRESULT(0x8004F730));
  EXPECT_EQ(ErrorRecord(), L"IVlRecipients::AddSMSRecipient(): The collection is full");
  EXPECT_EQ(Get(recipients_.get(), &IVlRecipients::get_Count), 999);

  ComPtr<IVlAttachments> attachments = Get(message_.get(), &IVlNewMsg::get_Attachments);
  ComPtr<IVlAttachment> a;
  for (int i = 0; i < 30; ++i) ASSERT_EQ(attachments->Add(B(std::to_wstring(i)), a.put()), S_OK);
  EXPECT_EQ(attachments->Add(B(L"x"), a.put()), HRESULT(0x8004F730));
  EXPECT_EQ(Get(attachments.get(), &IVlAttachments::get_Count), 30);

  ComPtr<IVlFiles> files = Get(message_.get(), &IVlNewMsg::get_Files);
  ComPtr<IVlFile> f;
  ASSERT_EQ(files->Add(B(L"C:\\A.DOC"), f.put()), S_OK);
  files.reset(), attachments.reset(), recipients_.reset(), message_.reset();
  EXPECT_EQ(f->Delete(), S_OK) << "its collection is gone";
}

TEST_F(NewMessageTest, InitTakesTheUserDefaults) {
  WriteFile(tree_.Users() + "JSMITH\\V-DB\\USER.INI",
            "[OPTIONS]\r\nFrom: Jo Smith\r\nPriority: URGENT\r\nHeader: NoTi\r\n"
            "After: 17:30:00\r\nCoversheet: formal\r\n");
  ComPtr<IVlNewMsg> m;
  ASSERT_EQ(vlauto::CreateNewMessage(handle_, m.put()), S_OK);
  EXPECT_EQ(Get(m.get(), &IVlNewMsg::get_Priority), vlPriorityUrgent);
  EXPECT_EQ(Get(m.get(), &IVlNewMsg::get_Header), 17);
  EXPECT_EQ(Gets(m.get(), {&IVlNewMsg::get_From, &IVlNewMsg::get_CoverSheet}),
            (Texts{L"Jo Smith", L"FORMAL"}));
  ASSERT_EQ(Get(m.get(), &IVlNewMsg::get_SendTime), vlSendTimeAfter);
  SYSTEMTIME t = {}, today = {};
  ASSERT_TRUE(VariantTimeToSystemTime(Get(m.get(), &IVlNewMsg::get_After), &t));
  GetLocalTime(&today);
  EXPECT_EQ(std::vector<int>({t.wDay, t.wHour, t.wMinute}), std::vector<int>({today.wDay, 17, 30}));
}

// The file of a refused message stays; that of a submitted one goes.
TEST_F(NewMessageTest, SendRefusesNoRecipientAndDeniedAccessThenSubmitsAndDeletesItsFile) {
  EXPECT_EQ(message_->Send(), HRESULT(0x8004F716)) << "no recipient";
  EXPECT_EQ(ErrorRecord(), L"IVlNewMsg::SubmitMessage(): Invalid submit file format ");
  const std::vector<std::string> kept = TempFiles();
  ASSERT_EQ(kept.size(), 1u);

  ComPtr<IVlRecipient> r;
  ASSERT_EQ(recipients_->AddFaxRecipient(B(L"Sales"), B(L"Acme"), B(L"0123"), r.put()), S_OK);
  ASSERT_EQ(recipients_->AddLANRecipient(B(L"Jo"), nullptr, B(L"JO"), r.put()), S_OK);
  os::fault::Inject(os::fault::Op::AccessCheck, 1, os::kAccessDenied);
  EXPECT_EQ(message_->Send(), E_ACCESSDENIED);
  EXPECT_EQ(ErrorSource(), L"IVlNewMsg::SubmitMessage()");
  EXPECT_EQ(TempFiles(), kept) << "nothing written";

  message_->put_Text(B(L"Body"));
  ASSERT_EQ(message_->Send(), S_OK) << Reported::Last();
  EXPECT_EQ(TempFiles(), kept);
  ComPtr<IVlRecipients> listed;  // the script clients follow fax recipients
  ASSERT_EQ(vlauto::CreateMessageRecipients(handle_, VL_DIR_OUT, "~VAPI000", listed.put()), S_OK);
  r = At<IVlRecipient>(listed.get(), 1);
  EXPECT_EQ(Get(r.get(), &IVlRecipient::get_Fax), L"JO");
  EXPECT_EQ(Get(r.get(), &IVlRecipient::get_Type), vlFaxTypeLAN);
}

}  // namespace
