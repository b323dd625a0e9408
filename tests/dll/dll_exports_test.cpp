// Vlapi64.dll as its clients load it: exported names and ordinals, the
// message table and the version resource.
#include <windows.h>

#include <gtest/gtest.h>

#include <string>

#include "vlapi.h"

namespace {

class Library {
 public:
  Library() : module_(LoadLibraryA("Vlapi64.dll")) {}
  ~Library() {
    if (module_) FreeLibrary(module_);
  }
  HMODULE get() const { return module_; }

 private:
  HMODULE module_;
};

std::string MessageText(HMODULE module, DWORD code) {
  char text[512];
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS,
                                module, code, 0, text, sizeof text, nullptr);
  return std::string(text, length);
}

TEST(Exports, NamesAndOrdinals) {
  Library dll;
  ASSERT_NE(dll.get(), nullptr) << GetLastError();
  const struct {
    const char* name;
    WORD ordinal;
  } exports[] = {
      {"VlxAPIInit", 1},         {"VlxAPIClosedown", 2},     {"VlxGetUserOutDir", 3},
      {"VlxGetUserInDir", 4},    {"VlxGetMsgList", 5},       {"VlxGetMsgInfo", 6},
      {"VlxCheckServer", 8},     {"VlxAbortMsg", 10},        {"VlxHoldMsg", 11},
      {"VlxReleaseMsg", 12},     {"VlxDeleteMsg", 13},       {"VlxGetAPIVersion", 16},
      {"VlxEscape", 17},         {"VlxStartServer", 19},     {"VlxStopServer", 20},
      {"VlxRestartServer", 21},  {"VlxGetUserArea", 22},     {"VlxGetSystemArea", 23},
      {"VlxCreateAutoFile", 24}, {"VlxRushMsgEx", 28},       {"VlxAbortMsgEx", 29},
      {"VlxHoldMsgEx", 30},      {"VlxReleaseMsgEx", 31},    {"VlxGetMsgListEx", 32},
      {"VlxGetMsgInfoEx", 33},   {"VlxCheckNewMsgStatus", 37}, {"VlxGetDocuments", 38},
      {"VlxGetUserCoversheet", 39}, {"VlxGetUserFromname", 40}, {"VlxGetMsgHistory", 15},
      {"VlxGetMsgHistoryEx", 36}, {"VlxSendMsg", 7},         {"VlxCreateDataFile", 9},
      {"VlxCreateCtlFile", 14},  {"VlxSendSubmitFile", 25},  {"VlxVBSendSubmitFile", 26},
      {"VlxSendMsgEx", 34},      {"VlxCreateCtlFileEx", 35}, {"VlxGetServerStatus", 18},
      {"VlxGetServerStatusEx", 27}, {"VlxStartPrint", 140}, {"VlxIsPrintComplete", 141},
      {"VlxCancelPrint", 142}};
  for (const auto& e : exports) {
    FARPROC byName = GetProcAddress(dll.get(), e.name);
    EXPECT_NE(byName, nullptr) << e.name;
    EXPECT_EQ(byName, GetProcAddress(dll.get(), MAKEINTRESOURCEA(e.ordinal))) << e.name;
  }
  // Functions the library uses itself are not exported.
  for (const char* internal : {"VlxGetServerArea", "VlxGetRequestArea", "VlxGetUsersArea",
                               "VlxMarkMsgAsRead", "VlxGetMsgDefaultsEx", "VlxGetMsgAddrs"})
    EXPECT_EQ(GetProcAddress(dll.get(), internal), nullptr) << internal;
}

TEST(Exports, VersionThroughTheLibrary) {
  Library dll;
  using GetVersion = VLRESULT(VLAPI_CALL*)(char*, int16_t, uint16_t*);
  auto getVersion = reinterpret_cast<GetVersion>(
      reinterpret_cast<void*>(GetProcAddress(dll.get(), "VlxGetAPIVersion")));
  ASSERT_NE(getVersion, nullptr);
  char text[16] = "junk";
  uint16_t number = 0;
  EXPECT_EQ(getVersion(text, 10, &number), VL_OK);
  EXPECT_STREQ(text, "16.1.1002");
  EXPECT_EQ(number, 0x0600);
  EXPECT_EQ(getVersion(text, 9, nullptr), VL_E_BUFFER_TOO_SMALL);
}

TEST(MessageTable, HoldsTheTextOfEveryResultCode) {
  Library dll;
  const struct {
    DWORD code;
    const char* text;
  } texts[] = {
      {0xF700, "Invalid parameter supplied to API"},
      {0xF701, "Unable to initialise the API"},
      {0xF702, "API initialisation has failed"},
      {0xF703, "Invalid Velomar initialisation file "},
      {0xF704, "This user account is invalid "},
      {0xF705, "Cannot log on the current user "},
      {0xF706, "The API was passed an invalid path"},
      {0xF707, "There are too many files in this directory"},
      {0xF708, "Too many open files"},
      {0xF709, "Could not open file"},
      {0xF70A, "API file error"},
      {0xF70B, "The file could not be found"},
      {0xF70C, "Velomar Server is not currently running "},
      {0xF70D, "The data file format specified is not recognised"},
      {0xF70E, "The specified message is unknown"},
      {0xF70F, "Message not completed"},
      {0xF710, "Unable to send. Message already exists"},
      {0xF711, "Could not open file"},
      {0xF712, "File error"},
      {0xF713, "Invalid file "},
      {0xF714, "API unable to submit message"},
      {0xF715, "The buffer in which to return data was too small"},
      {0xF716, "Invalid submit file format "},
      {0xF717, "API unable to read default settings"},
      {0xF718, "The API was unable to open the message's CTL file"},
      {0xF719, "API control file error"},
      {0xF71A, "CTL file is corrupt"},
      {0xF71B, "Velomar Server running OK"},
      {0xF71C, "Unable to start System Manager program"},
      {0xF71D, "Unable to start Velomar Server  "},
      {0xF71E, "Server initialization file error"},
      {0xF71F, "API function aborted"},
      {0xF720, "API timeout expired"},
      {0xF722, "API port busy "},
      {0xF723, "Port offline"},
      {0xF724, "API memory error"},
      {0xF727, "API user not initialized"},
      {0xF728, "Access denied"},
      {0xF729, "There was an error accessing the registry"},
      {0xF72A, "Active Directory server not present"},
      {0xF72B, "There was an error accessing Active Directory"},
      {0xF72C, "Active Directory value not set"},
      {0xF730, "The collection is full"},
  };
  for (const auto& t : texts) EXPECT_EQ(MessageText(dll.get(), t.code), t.text) << std::hex << t.code;
  for (DWORD unassigned : {0xF721u, 0xF725u, 0xF726u, 0xF72Du, 0xF731u})
    EXPECT_EQ(MessageText(dll.get(), unassigned), "") << std::hex << unassigned;
  // The log writer's event-log entries show their one string.
  for (DWORD event : {0x5801u, 0x9802u, 0xD803u}) EXPECT_EQ(MessageText(dll.get(), event), "%1");
}

TEST(VersionResource, Says16_1_1002) {
  char path[MAX_PATH];
  Library dll;
  GetModuleFileNameA(dll.get(), path, sizeof path);
  DWORD ignored = 0;
  DWORD size = GetFileVersionInfoSizeA(path, &ignored);
  ASSERT_GT(size, 0u);
  std::string data(size, '\0');
  ASSERT_TRUE(GetFileVersionInfoA(path, 0, size, data.data()));
  VS_FIXEDFILEINFO* fixed = nullptr;
  UINT length = 0;
  ASSERT_TRUE(VerQueryValueA(data.data(), "\\", reinterpret_cast<void**>(&fixed), &length));
  EXPECT_EQ(fixed->dwFileVersionMS, (16u << 16) | 1u);
  EXPECT_EQ(fixed->dwFileVersionLS, 1002u << 16);
  char* text = nullptr;
  ASSERT_TRUE(VerQueryValueA(data.data(), "\\StringFileInfo\\040904B0\\FileVersion",
                             reinterpret_cast<void**>(&text), &length));
  EXPECT_STREQ(text, "16.1.1002");
}

}  // namespace
