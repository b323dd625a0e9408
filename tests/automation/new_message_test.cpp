// The new message: its submit file byte for byte, its collections' limits,
// and Send end to end against a running-server stand-in.
#include "automation/new_message.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <cstring>
#include <string>
#include <vector>

#include "api/process_state.h"
#include "automation/factories.h"
#include "platform/fault.h"
#include "platform/os.h"
#include "tests/support/server_stand_in.h"
#include "tests/support/user_fixture.h"

namespace {

using os::ComPtr;
using vlauto::SubmitSwitches;
using vlauto::SubmitValues;

// An automation string argument, freed at the end of the statement.
struct B {
  explicit B(const wchar_t* text) : owned(SysAllocString(text)) {}
  operator BSTR() const { return owned.get(); }
  os::UniqueBstr owned;
};

std::wstring Take(BSTR text) {
  os::UniqueBstr owned(text);
  return text ? text : L"(null)";
}

template <typename I, typename T>
T Get(I* object, HRESULT (STDMETHODCALLTYPE I::*getter)(T*)) {
  T value;
  std::memset(&value, 0x5A, sizeof value);
  EXPECT_EQ((object->*getter)(&value), S_OK);
  return value;
}

VARIANT Index(long i) {
  VARIANT v = {};
  V_VT(&v) = VT_I4;
  V_I4(&v) = i;
  return v;
}

// "source: description" of the thread's error information, taken.
std::wstring ErrorRecord() {
  ComPtr<IErrorInfo> info;
  if (GetErrorInfo(0, info.put()) != S_OK) return L"(none)";
  BSTR source = nullptr, description = nullptr;
  info->GetSource(&source), info->GetDescription(&description);
  return Take(source) + L": " + Take(description);
}

class NewMessageTest : public vltest::JsmithTest {
 protected:
  void SetUp() override {
    JsmithTest::SetUp();
    CoInitialize(nullptr);
    saved_ = vl::Process();
    tree_.PrepareSender("JSMITH");
    vltest::TraceInto(scratch_);  // the API temporary directory too
    ASSERT_EQ(vlauto::CreateNewMessage(handle_, message_.put()), S_OK);
    ASSERT_EQ(message_->get_Recipients(recipients_.put()), S_OK);
  }
  void TearDown() override {
    recipients_.reset(), message_.reset();
    vl::Process() = saved_;
    CoUninitialize();
    JsmithTest::TearDown();
  }
  // The submit files Send left in the API temporary directory.
  std::vector<std::string> TempFiles() const {
    std::vector<std::string> names = vltest::ListDirectory(scratch_.Dir());
    std::erase_if(names, [](const std::string& name) { return name.rfind("VAP", 0) != 0; });
    return names;
  }
  // The last trace line, without its session value.
  std::string TraceEnd() const { return vltest::TraceLines(scratch_).back().substr(12); }

  vl::ProcessState saved_;
  vltest::ServerStandIn server_{tree_.Request()};
  ComPtr<IVlNewMsg> message_;
  ComPtr<IVlRecipients> recipients_;
};

TEST_F(NewMessageTest, EveryPropertyIsWrittenInItsPlaceAndTheFileStaysWhenSubmissionFails) {
  vl::Process().deleteFailedFaxes = 1;
  SYSTEMTIME when = {2024, 3, 4, 7, 9, 5, 0, 0};
  DATE after = 0;
  ASSERT_TRUE(SystemTimeToVariantTime(&when, &after));
  IVlNewMsg* m = message_.get();
  m->put_Priority(vlPriorityUrgent), m->put_Format(vlFormatTIFFFine);
  m->put_Quality(vlQualityDraft), m->put_SendTime(vlSendTimeAfter), m->put_After(after);
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
  ComPtr<IVlAttachments> attachments;
  ComPtr<IVlFiles> files;
  ComPtr<IVlAttachment> attachment;
  ComPtr<IVlFile> file;
  ASSERT_EQ(m->get_Attachments(attachments.put()), S_OK);
  ASSERT_EQ(m->get_Files(files.put()), S_OK);
  for (const wchar_t* name : {L"a.doc", L"b.doc"}) attachments->Add(B(name), attachment.put());
  for (const wchar_t* name : {L"C:\\A.DOC", L"C:\\B.DOC"}) files->Add(B(name), file.put());
  server_.Stop();
  EXPECT_EQ(m->Send(), HRESULT(0x8004F70C));
  EXPECT_EQ(ErrorRecord(), L"IVlNewMsg::SubmitMessage(): Velomar Server is not currently running ");
  const std::vector<std::string> kept = TempFiles();
  ASSERT_EQ(kept.size(), 1u);
  EXPECT_EQ(TraceEnd(), "Error submitting file " + scratch_.Path(kept[0]) + ": 0x8004f70c");
  EXPECT_EQ(vltest::ReadFile(scratch_.Path(kept[0])),
            vltest::Lines({"%%[MESSAGE]", "FROM: Jo Smith", "SUBJECT: Report", "COMMENT: quarterly",
                           "DELETE: YES", "HOLD: NO", "PREVIEW: YES", "FAXBROADCAST: YES",
                           "CUSTOM: ref-1", "CHARGE: C-7", "USER: jsmith", "FORMAT: TIFF-FINE",
                           "PRIORITY: URGENT", "QUALITY: DRAFT", "AFTER: 2024-3-7 9:5:0",
                           "HEADER: ToDa", "COVERSHEET: FORMAL", "LETTERHEAD: HEAD1",
                           "SENTITEMS: YES", "ATTACH: a.doc, b.doc", "DOCUMENT: C:\\A.DOC",
                           "DOCUMENT: C:\\B.DOC", "To: Sales", "Organisation: Acme", "Fax: 0123",
                           "Field: Custom c1", "To: Mo", "Organisation: ", "SMS: 0700 1",
                           "Field: Custom ", "", "%%[COVERTEXT]", "Dear all,", "", "%%[TEXT]",
                           "Body text", "", "%%[FILE]", "C:\\A.DOC", "C:\\B.DOC"}));
}

using Change = void (*)(SubmitValues&, SubmitSwitches&);
struct EdgeCase {
  Change change;
  const char *has, *lacks, *tail;
};
const EdgeCase kEdgeCases[] = {
    {[](SubmitValues&, SubmitSwitches&) {}, "\r\nHEADER: \r\n", "QUALITY",
     "Custom \r\n\r\n%%[TEXT]\r\n\r\n"},
    {[](SubmitValues& v, SubmitSwitches&) { v.files = {"F1"}; }, nullptr, "%%[TEXT]",
     "Custom \r\n\r\n%%[FILE]\r\nF1\r\n"},
    {[](SubmitValues& v, SubmitSwitches&) { v.text = "x", v.files = {"F1"}; },
     "Custom \r\n\r\n%%[TEXT]\r\nx\r\n\r\n%%[FILE]\r\nF1\r\n", nullptr, nullptr},
    {[](SubmitValues& v, SubmitSwitches&) { v.header = 31; }, "\r\nHEADER: NoToFrDaTi\r\n"},
    {[](SubmitValues& v, SubmitSwitches& s) { v.deleteAfterSend = true, s.deleteFailedFaxes = 0; },
     "\r\nDELETE: OK\r\n"},
    {[](SubmitValues& v, SubmitSwitches& s) { v.deleteAfterSend = true, s.deleteFailedFaxes = -3; },
     "\r\nDELETE: YES\r\n"},
    {[](SubmitValues& v, SubmitSwitches&) { v.priority = 7; }, "\r\nPRIORITY: BACKGROUND\r\n"},
    {[](SubmitValues& v, SubmitSwitches&) { v.priority = v.quality = 2; },
     "\r\nPRIORITY: NORMAL\r\nQUALITY: NORMAL\r\n"},
    {[](SubmitValues& v, SubmitSwitches&) { v.sendTime = 3; }, "\r\nAFTER:\r\nHEADER"},
    {[](SubmitValues& v, SubmitSwitches&) { v.sendTime = 2; }, "\r\nAFTER: OFFPEAK\r\n"},
    {[](SubmitValues& v, SubmitSwitches&) { v.recipients[0].type = 2; }, "\r\nLAN: 1\r\n", "Fax:"},
    {[](SubmitValues& v, SubmitSwitches&) { v.recipients[0].type = 3, v.sentItemsSms = 0; },
     "\r\nSENTITEMS: NO\r\n"},
    {[](SubmitValues&, SubmitSwitches& s) { s.sentItems = 0; }, "\r\nSENTITEMS: NO\r\n"},
    {[](SubmitValues& v, SubmitSwitches& s) { v.sentItemsFax = 0, s.sentItems = 1; },
     "\r\nSENTITEMS: YES\r\n"},
    {[](SubmitValues& v, SubmitSwitches&) {
       for (int i = 1; i <= 31; ++i) v.files.push_back("F" + std::to_string(i));
     },
     "\r\nDOCUMENT: F30\r\nTo: A\r\n", "DOCUMENT: F31", "F29\r\nF30\r\nF31\r\n"},
};

TEST(SubmitFileWriter, EachLineKeepsItsRuleAtTheEdges) {
  for (const EdgeCase& c : kEdgeCases) {
    SubmitValues values;
    values.sentItemsFax = 1;
    values.recipients = {{0, "A", "", "1", ""}};  // type 0 is written as fax
    SubmitSwitches switches;
    c.change(values, switches);
    std::string text;
    ASSERT_EQ(WriteSubmitFile(values, switches, &text), S_OK);
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

TEST_F(NewMessageTest, CollectionsKeepTheirLimitsAndItemsLeaveByDelete) {
  ComPtr<IVlRecipient> r;
  EXPECT_EQ(recipients_->AddFaxRecipient(B(L"A"), B(L"O"), B(L"1"), nullptr), E_POINTER);
  EXPECT_EQ(recipients_->AddLANRecipient(B(L""), B(L"Acme"), nullptr, r.put()), E_INVALIDARG);
  EXPECT_TRUE(ErrorRecord().starts_with(L"IVlRecipients::AddLANRecipient(): ")) << "system text";
  for (int i = 0; i < 999; ++i)
    ASSERT_EQ(recipients_->AddFaxRecipient(nullptr, nullptr, B(L"1"), r.put()), S_OK);
  EXPECT_EQ(recipients_->AddSMSRecipient(B(L"A"), nullptr, B(L"1"), r.put()), HRESULT(0x8004F730));
  EXPECT_EQ(ErrorRecord(), L"IVlRecipients::AddSMSRecipient(): The collection is full");
  EXPECT_EQ(Get(recipients_.get(), &IVlRecipients::get_Count), 999);
  EXPECT_EQ(recipients_->get_Item(Index(999), r.put()), E_INVALIDARG);
  EXPECT_EQ(TraceEnd(), "CRecipients::GetItem: Index out of range");

  ComPtr<IVlAttachments> attachments;
  ComPtr<IVlAttachment> a;
  ASSERT_EQ(message_->get_Attachments(attachments.put()), S_OK);
  for (int i = 0; i < 30; ++i)
    ASSERT_EQ(attachments->Add(B(std::to_wstring(i).c_str()), a.put()), S_OK);
  EXPECT_EQ(attachments->Add(B(L"x"), a.put()), HRESULT(0x8004F730));
  EXPECT_EQ(Get(attachments.get(), &IVlAttachments::get_Count), 30);
  ASSERT_EQ(attachments->get_Item(Index(0), a.put()), S_OK);
  EXPECT_EQ(a->Delete(), S_OK);
  EXPECT_EQ(Get(attachments.get(), &IVlAttachments::get_Count), 29);
  ASSERT_EQ(attachments->get_Item(Index(0), a.put()), S_OK);
  EXPECT_EQ(Take(Get(a.get(), &IVlAttachment::get_Name)), L"1");

  ComPtr<IVlFiles> files;
  ComPtr<IVlFile> f;
  ASSERT_EQ(message_->get_Files(files.put()), S_OK);
  EXPECT_EQ(files->Add(B(L""), f.put()), E_INVALIDARG);
  ASSERT_EQ(files->Add(B(L"C:\\A.DOC"), f.put()), S_OK);
  files.reset(), attachments.reset(), recipients_.reset(), message_.reset();
  EXPECT_EQ(f->Delete(), S_OK) << "its collection is gone";
}

TEST_F(NewMessageTest, InitTakesTheUserDefaults) {
  vltest::WriteFile(tree_.Users() + "JSMITH\\V-DB\\USER.INI",
                    "[OPTIONS]\r\nFrom: Jo Smith\r\nPriority: URGENT\r\nHeader: NoTi\r\n"
                    "After: 17:30:00\r\nCoversheet: formal\r\n");
  ComPtr<IVlNewMsg> m;
  ASSERT_EQ(vlauto::CreateNewMessage(handle_, m.put()), S_OK);
  EXPECT_EQ(Get(m.get(), &IVlNewMsg::get_Priority), vlPriorityUrgent);
  EXPECT_EQ(Get(m.get(), &IVlNewMsg::get_Header), 17);
  EXPECT_EQ(Take(Get(m.get(), &IVlNewMsg::get_From)), L"Jo Smith");
  EXPECT_EQ(Take(Get(m.get(), &IVlNewMsg::get_CoverSheet)), L"FORMAL");
  ASSERT_EQ(Get(m.get(), &IVlNewMsg::get_SendTime), vlSendTimeAfter);
  SYSTEMTIME t = {}, today = {};
  ASSERT_TRUE(VariantTimeToSystemTime(Get(m.get(), &IVlNewMsg::get_After), &t));
  GetLocalTime(&today);
  EXPECT_EQ(std::vector<int>({t.wDay, t.wHour, t.wMinute}), std::vector<int>({today.wDay, 17, 30}));
  EXPECT_EQ(vlauto::CreateNewMessage(0, m.put()), HRESULT(0x8004F701));
  EXPECT_EQ(ErrorRecord(), L"IVlNewMsg::Init(): Unable to initialise the API");
}

TEST_F(NewMessageTest, SendSubmitsTheMessageAndDeletesItsFile) {
  ComPtr<IVlRecipient> r;
  message_->put_Text(B(L"Body"));
  ASSERT_EQ(recipients_->AddFaxRecipient(B(L"Sales"), B(L"Acme"), B(L"0123"), r.put()), S_OK);
  ASSERT_EQ(recipients_->AddLANRecipient(B(L"Jo"), nullptr, B(L"JO"), r.put()), S_OK);
  ASSERT_EQ(message_->Send(), S_OK) << vltest::Reported::Last();
  EXPECT_EQ(Take(Get(message_.get(), &IVlNewMsg::get_Body)), L"~VAPI000");
  EXPECT_TRUE(vltest::FileExists(Out() + "~VAPI000.CTL"));
  EXPECT_EQ(vltest::ReadFile(Out() + "~VAPI000.TXT"), "Body\r\n");
  EXPECT_EQ(TempFiles(), std::vector<std::string>{});
  EXPECT_EQ(TraceEnd(), "...NewMessage.Send - return OK");

  ComPtr<IVlRecipients> listed;
  ASSERT_EQ(vlauto::CreateMessageRecipients(handle_, VL_DIR_OUT, "~VAPI000", listed.put()), S_OK);
  EXPECT_EQ(Get(listed.get(), &IVlRecipients::get_Count), 2);
  ASSERT_EQ(listed->get_Item(Index(1), r.put()), S_OK);
  EXPECT_EQ(Take(Get(r.get(), &IVlRecipient::get_Fax)), L"JO");
  EXPECT_EQ(Get(r.get(), &IVlRecipient::get_Type), vlFaxTypeLAN);
  EXPECT_EQ(Get(r.get(), &IVlRecipient::get_Status), vlStatusWaiting);
}

TEST_F(NewMessageTest, SendReportsEachFailureAndLeavesLongTextsToTheSubmission) {
  EXPECT_EQ(message_->Send(), HRESULT(0x8004F716)) << "no recipient";
  EXPECT_EQ(ErrorRecord(), L"IVlNewMsg::SubmitMessage(): Invalid submit file format ");
  const std::vector<std::string> kept = TempFiles();
  ASSERT_EQ(kept.size(), 1u);

  ComPtr<IVlRecipient> r;
  ASSERT_EQ(recipients_->AddFaxRecipient(B(L"A"), nullptr, B(L"1"), r.put()), S_OK);
  os::fault::Inject(os::fault::Op::AccessCheck, 1, os::kAccessDenied);
  EXPECT_EQ(message_->Send(), E_ACCESSDENIED);
  EXPECT_EQ(ErrorRecord().substr(0, 28), L"IVlNewMsg::SubmitMessage(): ");
  EXPECT_EQ(TempFiles(), kept) << "nothing written";

  message_->put_Subject(B(std::wstring(1 << 20, L's').c_str()));
  EXPECT_EQ(message_->Send(), S_OK) << "the submission cuts the subject";
  VLMSGINFOEX info;
  ASSERT_EQ(VlxGetMsgInfoEx(handle_, VL_DIR_OUT, "~VAPI000", sizeof info, &info), VL_OK);
  EXPECT_EQ(std::string(info.Subject), std::string(57, 's') + "...");
}

}  // namespace
