// Vlapi64.dll as its clients load it: exported names and ordinals, the
// message table and the version resource. Calls across the exports are made
// by the programs linked with the library (vlfax, submit_many).
#include <windows.h>

#include <gtest/gtest.h>

#include <iterator>
#include <string>

namespace {

// The library, loaded once for the whole program.
HMODULE Dll() {
  static const HMODULE module = LoadLibraryA("Vlapi64.dll");
  return module;
}

std::string MessageText(DWORD code) {
  char text[512];
  DWORD length = FormatMessageA(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS,
                                Dll(), code, 0, text, sizeof text, nullptr);
  return std::string(text, length);
}

TEST(Exports, NamesAndOrdinals) {
  ASSERT_NE(Dll(), nullptr) << GetLastError();
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
    FARPROC byName = GetProcAddress(Dll(), e.name);
    EXPECT_NE(byName, nullptr) << e.name;
    EXPECT_EQ(byName, GetProcAddress(Dll(), MAKEINTRESOURCEA(e.ordinal))) << e.name;
  }
  // Functions the library uses itself are not exported.
  for (const char* internal : {"VlxGetServerArea", "VlxGetRequestArea", "VlxGetUsersArea",
                               "VlxMarkMsgAsRead", "VlxGetMsgDefaultsEx", "VlxGetMsgAddrs"})
    EXPECT_EQ(GetProcAddress(Dll(), internal), nullptr) << internal;
}

// Every code from 0xF700 to 0xF731 in order; "" where a code has no text.
TEST(MessageTable, HoldsTheTextOfEveryResultCode) {
  const char* const texts[] = {
      "Invalid parameter supplied to API", "Unable to initialise the API",
      "API initialisation has failed", "Invalid Velomar initialisation file ",
      "This user account is invalid ", "Cannot log on the current user ",
      "The API was passed an invalid path", "There are too many files in this directory",
      "Too many open files", "Could not open file", "API file error", "The file could not be found",
      "Velomar Server is not currently running ",
      "The data file format specified is not recognised", "The specified message is unknown",
      "Message not completed", "Unable to send. Message already exists", "Could not open file",
      "File error", "Invalid file ", "API unable to submit message",
      "The buffer in which to return data was too small", "Invalid submit file format ",
      "API unable to read default settings", "The API was unable to open the message's CTL file",
      "API control file error", "CTL file is corrupt", "Velomar Server running OK",
      "Unable to start System Manager program", "Unable to start Velomar Server  ",
      "Server initialization file error", "API function aborted", "API timeout expired", "",
      "API port busy ", "Port offline", "API memory error", "", "", "API user not initialized",
      "Access denied", "There was an error accessing the registry",
      "Active Directory server not present", "There was an error accessing Active Directory",
      "Active Directory value not set", "", "", "", "The collection is full", ""};
  static_assert(std::size(texts) == 0x32);
  for (DWORD code = 0xF700; code < 0xF732; ++code)
    EXPECT_EQ(MessageText(code), texts[code - 0xF700]) << std::hex << code;
  // The log writer's event-log entries show their one string.
  for (DWORD event : {0x5801u, 0x9802u, 0xD803u}) EXPECT_EQ(MessageText(event), "%1");
}

// The texts of the resource come from the same generated numbers.
TEST(VersionResource, Says16_1_1002) {
  char path[MAX_PATH];
  GetModuleFileNameA(Dll(), path, sizeof path);
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
}

}  // namespace
