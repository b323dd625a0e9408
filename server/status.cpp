// Reading the server's state: VlxGetServerStatusEx and VlxGetServerStatus.
//
// The server publishes its queue totals, fax devices and links in
// V-DB\STATUS.LOG of the system area, and keeps the coversheet and letterhead
// names in V-COVER\MSGDIR.CTL and V-LETTER\MSGDIR.CTL. Records are filled
// straight from the paragraphs; missing keywords are never errors.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <iterator>
#include <new>
#include <string>

#include "api/call_frame.h"
#include "api/diagnostics.h"
#include "api/text.h"
#include "msg/tables.h"
#include "paragraph/open_shared.h"
#include "paragraph/paragraph_reader.h"
#include "platform/os.h"

using namespace vl;

namespace {

inline constexpr int16_t kFullBlockSize = 144;
inline constexpr int16_t kShortBlockSize = 80;  // ends after the link group
inline constexpr int16_t kTotalsSize = 18;
inline constexpr int16_t kOldTotalsSize = 14;
inline constexpr uint16_t kDeviceSize = 44;
inline constexpr uint16_t kLinkSize = 38;
inline constexpr size_t kNameEntrySize = 10;  // one coversheet or letterhead name
inline constexpr int16_t kStatusRetrySeconds = 20;
inline constexpr int16_t kListRetrySeconds = 10;

static_assert(sizeof(VLSERVERINFOEX) == kTotalsSize && sizeof(VLDEVICEINFOEX) == kDeviceSize &&
              sizeof(VLLINKINFOEX) == kLinkSize && sizeof(VLSERVERINFO) == kOldTotalsSize);

bool NotFound(int error) { return error == os::kFileNotFound || error == os::kPathNotFound; }

// The value of a keyword line, "" when it has none.
const char* ValueText(const char* line) {
  const char* value = para::ValueOf(line);
  return value ? value : "";
}

// Copies at most size-1 characters of value, upper-cased.
void CopyUpper(char* out, size_t size, const char* value) {
  CopyBounded(out, size, value);
  UpperCase(out);
}

// The number of records an array can take: none for a null array or a
// negative maximum.
int Capacity(int16_t maximum, const void* array) { return array && maximum > 0 ? maximum : 0; }

// Code of a link status word; 0 for any other word.
uint16_t LinkStatusOf(const char* word) {
  static const char* const kWords[] = {"ONLINE",   "OFFLINE",      "WDOGFAILED",
                                       "LINKINIT", "LINKSHUTDOWN", "LINKUNKNOWN"};
  for (size_t i = 0; i < std::size(kWords); ++i)
    if (para::EqualNoCase(word, kWords[i])) return static_cast<uint16_t>(i + 1);
  return 0;
}

// Opens a status or list file for reading; on failure reports notFound or
// unopenable with the path and returns the code.
VLRESULT OpenForReading(const ApiSession& session, const std::string& path, int16_t retrySeconds,
                        const char* notFound, const char* unopenable, para::Opened* opened) {
  *opened = para::OpenShared(retrySeconds, path.c_str(), "rb");
  if (*opened) return VL_OK;
  if (NotFound(opened->error)) {
    ApiReportError(&session, notFound, path.c_str());
    return VL_E_FILE_NOT_FOUND;
  }
  ApiReportError(&session, unopenable, path.c_str());
  return VL_E_FILE_OPEN_ERROR;
}

// A count of a status record and the keyword that gives it.
template <typename Record>
struct Counter {
  const char* keyword;
  uint16_t Record::*field;
};

// Sets the counter whose keyword begins line, if any.
template <typename Record, size_t N>
void SetCounter(Record& record, const Counter<Record> (&counters)[N], const char* line,
                const char* value) {
  for (const Counter<Record>& counter : counters)
    if (para::StartsWithNoCase(line, counter.keyword)) {
      record.*counter.field = para::LeadingDigitsU16(value);
      return;
    }
}

// Reads the nine counts of "[TOTALS]" into the (already cleared) record.
void ReadTotals(FILE* stream, VLSERVERINFOEX* totals) {
  static const Counter<VLSERVERINFOEX> kFields[] = {
      {"Deferred:", &VLSERVERINFOEX::Deferred},
      {"WaitingResend:", &VLSERVERINFOEX::WaitingResend},
      {"WaitingConvert:", &VLSERVERINFOEX::WaitingConvert},
      {"Converting:", &VLSERVERINFOEX::Converting},
      {"WaitingDevice:", &VLSERVERINFOEX::WaitingDevice},
      {"Sending:", &VLSERVERINFOEX::Sending},
      {"Scanning:", &VLSERVERINFOEX::Scanning},
      {"RouterSub:", &VLSERVERINFOEX::RouterSub},
      {"RemoteAccept:", &VLSERVERINFOEX::RemoteAccept},
  };
  char line[para::kLineSize];
  long position = 0;
  if (!para::FindParagraph(stream, "[TOTALS]", line, sizeof line, &position)) return;
  for (const Counter<VLSERVERINFOEX>& field : kFields) {
    if (para::FindKeyword(stream, field.keyword, line, sizeof line, position, 0))
      totals->*field.field = para::LeadingDigitsU16(ValueText(line));
  }
}

// Walks the keyword lines of one paragraph from the start of the file. A
// line beginning with startKeyword opens a new record (Open); the other
// lines of the first maximum records go to Fill; each stored record is
// handed to Store with its slot. Returns the number of records opened.
template <typename Record, typename Open, typename Fill, typename Store>
int ReadRecords(FILE* stream, const char* header, const char* startKeyword, int maximum,
                Open open, Fill fill, Store store) {
  char line[para::kLineSize];
  std::rewind(stream);
  if (!para::FindParagraph(stream, header, line, sizeof line)) return 0;
  Record working{};
  int count = 0;
  auto stored = [&] { return count >= 1 && count <= maximum; };
  while (para::FindKeyword(stream, nullptr, line, sizeof line, 0, 0)) {
    const char* value = ValueText(line);
    if (para::StartsWithNoCase(line, startKeyword)) {
      if (stored()) store(count - 1, working);
      if (count < INT32_MAX) ++count;
      open(working, value);
    } else if (stored() && value[0] != '\0') {
      fill(working, line, value);
    }
    if (stored()) fill(working, nullptr, nullptr);  // after every line of a record
  }
  if (stored()) store(count - 1, working);
  return count;
}

int ReadDevices(FILE* stream, int maximum, VLDEVICEINFOEX* devices) {
  static const Counter<VLDEVICEINFOEX> kCounters[] = {
      {"TotalPages:", &VLDEVICEINFOEX::TotalPages},
      {"CurrentPage:", &VLDEVICEINFOEX::CurrentPage},
      {"ConnectFails:", &VLDEVICEINFOEX::ConnectFails},
      {"SendFails:", &VLDEVICEINFOEX::SendFails},
      {"SentOK:", &VLDEVICEINFOEX::SentOK},
  };
  return ReadRecords<VLDEVICEINFOEX>(
      stream, "[DEVICES]", "Device:", maximum,
      [](VLDEVICEINFOEX& device, const char* name) {
        device = VLDEVICEINFOEX{};
        CopyUpper(device.Name, sizeof device.Name, name);
      },
      [](VLDEVICEINFOEX& device, const char* line, const char* value) {
        if (!line) return;
        if (para::StartsWithNoCase(line, "StatusExt:")) {
          device.Status = DeviceStatusOf(value, device.Status);
        } else if (para::StartsWithNoCase(line, "User:")) {
          CopyUpper(device.User, sizeof device.User, value);
        } else if (para::StartsWithNoCase(line, "Message:")) {
          CopyUpper(device.Message, sizeof device.Message, value);
        } else {
          SetCounter(device, kCounters, line, value);
        }
      },
      [devices](int slot, const VLDEVICEINFOEX& device) { devices[slot] = device; });
}

int ReadLinks(FILE* stream, int maximum, VLLINKINFOEX* links) {
  static const Counter<VLLINKINFOEX> kCounters[] = {
      {"SentOK:", &VLLINKINFOEX::SentOK},
      {"TimedOut:", &VLLINKINFOEX::TimedOut},
      {"Rejected:", &VLLINKINFOEX::Rejected},
      {"DeviceError:", &VLLINKINFOEX::DeviceError},
      {"RemoteServerError:", &VLLINKINFOEX::RemoteServerError},
      {"Unacknowledged:", &VLLINKINFOEX::Unacknowledged},
      {"Acknowledged:", &VLLINKINFOEX::Acknowledged},
      {"Received:", &VLLINKINFOEX::Received},
  };
  return ReadRecords<VLLINKINFOEX>(
      stream, "[LINKS]", "RemoteServer:", maximum,
      [](VLLINKINFOEX& link, const char* name) {
        link = VLLINKINFOEX{};
        link.ConnectionStatus = -1;
        link.LinkActive = -1;
        CopyUpper(link.RemoteServer, sizeof link.RemoteServer, name);
      },
      [](VLLINKINFOEX& link, const char* line, const char* value) {
        if (!line) {
          // Decided once, as soon as both ends and the connection are known.
          if (link.RemoteLinkStatus != 0 && link.LocalLinkStatus != 0 &&
              link.ConnectionStatus >= 0 && link.LinkActive < 0)
            link.LinkActive = link.RemoteLinkStatus == 1 && link.LocalLinkStatus == 1 &&
                                      link.ConnectionStatus != 0
                                  ? 1
                                  : 0;
          return;
        }
        if (para::StartsWithNoCase(line, "RemoteLinkStatus:")) {
          link.RemoteLinkStatus = LinkStatusOf(value);
        } else if (para::StartsWithNoCase(line, "LocalLinkStatus:")) {
          link.LocalLinkStatus = LinkStatusOf(value);
        } else if (para::StartsWithNoCase(line, "ConnectionStatus:")) {
          link.ConnectionStatus =
              para::EqualNoCase(value, "ON") || para::EqualNoCase(value, "OK") ? 1 : 0;
        } else {
          SetCounter(link, kCounters, line, value);
        }
      },
      [links](int slot, const VLLINKINFOEX& link) { links[slot] = link; });
}

struct NameList {
  const char* directory;   // under the system area
  const char* notFound;    // report texts, taking the path
  const char* unopenable;
};

const NameList kCoversheets = {"V-COVER\\", "Coversheet list file %s not found",
                               "Unable to open coversheet list  file %s"};
const NameList kLetterheads = {"V-LETTER\\", "Letterhead list file %s not found",
                               "Unable to open letterhead list  file %s"};

// Counts the non-empty "FILE:" lines of the list's "[DIRECTORY]" and stores
// the first maximum names (8 characters at most) in 10-byte entries.
VLRESULT ReadNameList(const ApiSession& session, const NameList& list, int16_t maximum,
                      uint16_t* count, char* names) {
  *count = 0;
  const std::string path =
      UpperCase(std::string(session.systemArea) + list.directory + "MSGDIR.CTL");
  para::Opened file;
  if (VLRESULT rc = OpenForReading(session, path, kListRetrySeconds, list.notFound,
                                   list.unopenable, &file))
    return rc;
  char line[para::kLineSize];
  if (!para::FindParagraph(file.get(), "[DIRECTORY]", line, sizeof line)) return VL_OK;
  while (para::FindKeyword(file.get(), "FILE:", line, sizeof line, 0, 0)) {
    const char* value = ValueText(line);
    if (value[0] == '\0') continue;
    if (*count < UINT16_MAX) ++*count;
    if (names && *count <= maximum) {
      char* entry = names + (*count - 1) * kNameEntrySize;
      std::memset(entry, 0, kNameEntrySize);
      CopyBounded(entry, 9, value);
    }
  }
  return VL_OK;
}

VLRESULT CheckSize(const ApiSession& session, bool valid, const char* text) {
  return valid ? VL_OK : ReportFailure(&session, VL_E_INVALID_PARAM, text);
}

VLRESULT GetServerStatus(ApiSession& session, VLHANDLE handle, int16_t blockSize,
                         VLSERVERSTATUSEX* block) {
  if (VlxCheckServer(handle) != VL_OK) return VL_E_SERVER_NOT_RUNNING;
  if (VLRESULT rc = CheckSize(session, blockSize == kFullBlockSize || blockSize == kShortBlockSize,
                              "VLSERVERSTATUSEX size invalid"))
    return rc;
  if (!block) {
    ReportNullArgument(&session, "status");
    return VL_E_INVALID_PARAM;
  }
  if (VLRESULT rc = CheckSize(session, block->ServerInfoSize == kTotalsSize,
                              "VLSERVERINFOEX size invalid"))
    return rc;
  if (!block->ServerInfo) {
    ReportNullArgument(&session, "ServerInfo");
    return VL_E_INVALID_PARAM;
  }
  if (VLRESULT rc = CheckSize(session, block->DeviceInfoSize == kDeviceSize,
                              "VLDEVICEINFOEX size invalid"))
    return rc;
  // The count cell allocated here belongs to the caller's block from now on.
  if (!block->DeviceCount) {
    block->DeviceCount = static_cast<uint16_t*>(std::calloc(1, sizeof(uint16_t)));
    if (!block->DeviceCount) throw std::bad_alloc();
  }
  if (VLRESULT rc =
          CheckSize(session, block->LinkInfoSize == kLinkSize, "VLLINKINFOEX size invalid"))
    return rc;

  const std::string path = UpperCase(std::string(session.systemArea) + "V-DB\\" + "STATUS.LOG");
  para::Opened status;
  if (VLRESULT rc = OpenForReading(session, path, kStatusRetrySeconds,
                                   "Statistics file %s not found",
                                   "Unable to open statistics file %s", &status))
    return rc;
  std::memset(block->ServerInfo, 0, kTotalsSize);
  ReadTotals(status.get(), block->ServerInfo);
  *block->DeviceCount = 0;
  *block->DeviceCount = static_cast<uint16_t>(ReadDevices(
      status.get(), Capacity(block->MaxDevices, block->Devices), block->Devices));
  if (block->LinkCount) {
    *block->LinkCount = 0;
    *block->LinkCount = static_cast<uint16_t>(
        ReadLinks(status.get(), Capacity(block->MaxLinks, block->Links), block->Links));
  }
  status = para::Opened();
  if (blockSize < kFullBlockSize) return VL_OK;

  if (block->CoversheetCount) {
    if (VLRESULT rc = ReadNameList(session, kCoversheets, block->MaxCoversheets,
                                   block->CoversheetCount, block->Coversheets))
      return rc;
  }
  if (block->LetterheadCount) {
    if (VLRESULT rc = ReadNameList(session, kLetterheads, block->MaxLetterheads,
                                   block->LetterheadCount, block->Letterheads))
      return rc;
  }
  return VL_OK;
}

}  // namespace

extern "C" {

VLRESULT VLAPI_CALL VlxGetServerStatusEx(VLHANDLE handle, int16_t blockSize,
                                         VLSERVERSTATUSEX* status) {
  return CallFrame(handle, "VlxGetServerStatus", UserRule::NotNeeded)
      .Enter("VlxGetServerStatus - MaxDevices = %d", status ? status->MaxDevices : 0)
      .Run([&](ApiSession& session) { return GetServerStatus(session, handle, blockSize, status); });
}

VLRESULT VLAPI_CALL VlxGetServerStatus(VLHANDLE handle, int16_t infoSize, VLSERVERINFO* info,
                                       int16_t maxDevices, int16_t* deviceCount, void* /*unused*/,
                                       VLDEVICEINFO* devices) {
  SessionPtr session;
  return Guarded(nullptr, [&]() -> VLRESULT {
    session = SessionFromHandle(handle);
    if (infoSize != kOldTotalsSize) {
      ApiReportError(session.get(), "VLSERVERINFO size invalid");
      return VL_E_INVALID_PARAM;
    }
    if (!info) {
      ReportNullArgument(session.get(), "info");
      return VL_E_INVALID_PARAM;
    }
    const int slots = maxDevices > 0 ? maxDevices : 0;
    std::unique_ptr<VLDEVICEINFOEX[]> full(new (std::nothrow) VLDEVICEINFOEX[slots ? slots : 1]());
    if (!full) return VL_E_MALLOC_FAILED;
    VLSERVERINFOEX totals{};
    // Without a count from the caller the count is kept here, not in a cell
    // nobody could ever free.
    uint16_t localCount = 0;
    uint16_t* count = deviceCount ? reinterpret_cast<uint16_t*>(deviceCount) : &localCount;
    VLSERVERSTATUSEX block{};
    block.ServerInfoSize = kTotalsSize;
    block.ServerInfo = &totals;
    block.MaxDevices = maxDevices;
    block.DeviceCount = count;
    block.DeviceInfoSize = kDeviceSize;
    block.Devices = full.get();
    block.LinkInfoSize = kLinkSize;
    VLRESULT rc = VlxGetServerStatusEx(handle, kFullBlockSize, &block);
    if (rc != VL_OK) return rc;
    std::memcpy(info, &totals, kOldTotalsSize);
    if (!devices) return rc;
    const int copied = *count < slots ? *count : slots;
    for (int i = 0; i < copied; ++i) {
      std::memcpy(devices[i].Name, full[i].Name, sizeof devices[i].Name);
      std::memcpy(devices[i].User, full[i].User, sizeof devices[i].User);
      std::memcpy(devices[i].Message, full[i].Message, sizeof devices[i].Message);
      devices[i].Status = full[i].Status;
      devices[i].TotalPages = full[i].TotalPages;
      devices[i].CurrentPage = full[i].CurrentPage;
      devices[i].ConnectFails = full[i].ConnectFails;
      devices[i].SendFails = full[i].SendFails;
      devices[i].SentOK = full[i].SentOK;
    }
    return rc;
  });
}

}  // extern "C"
