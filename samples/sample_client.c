/*
 * sample_client - the library from end to end, as a client program uses it.
 *
 *   sample_client
 *
 * Loads Vlapi64.dll at run time and
 *   1. prints the library's version and logs the user JSMITH on through his
 *      account name DOMAIN\jsmith;
 *   2. makes sure that the fax server runs, starting it when it does not;
 *   3. writes a submit file for a fax to three addressees into the
 *      temporary directory and
 *   4. submits it;
 *   5. follows the message until the server has completed it, printing each
 *      change of its status and each new event of its history;
 *   6. prints the server's status: queue totals, devices, links, cover
 *      sheets and letterheads;
 *   7. stops the server and
 *   8. logs off.
 *
 * The fax tree and the per-user client configuration VLCLIENT.INI that names
 * it must exist already ("vlsim --make-tree DIR --client-ini" makes both):
 * the library finds the tree through that configuration, as for any client.
 * The server is the one named by the "Sysman:" line of the tree's SETUP.INI.
 *
 * Exit status 0 when every step succeeded, 1 otherwise; every failed call
 * is reported with its result code.
 */
#include <windows.h>
#include <stdio.h>
#include <string.h>

#include "vlapi.h"

/* The entry points used, one type each. */
typedef VLRESULT(VLAPI_CALL *VlxGetAPIVersionFn)(char *, int16_t, uint16_t *);
typedef VLRESULT(VLAPI_CALL *VlxAPIInitFn)(VLHANDLE *, const char *, uint16_t, VLERRORPROC);
typedef VLRESULT(VLAPI_CALL *VlxAPIClosedownFn)(VLHANDLE);
typedef VLRESULT(VLAPI_CALL *VlxGetUserOutDirFn)(VLHANDLE, char *, int16_t);
typedef VLRESULT(VLAPI_CALL *VlxCheckServerFn)(VLHANDLE);
typedef VLRESULT(VLAPI_CALL *VlxStartServerFn)(VLHANDLE, uint16_t, const char *);
typedef VLRESULT(VLAPI_CALL *VlxStopServerFn)(VLHANDLE, uint16_t);
typedef VLRESULT(VLAPI_CALL *VlxSendSubmitFileFn)(VLHANDLE, const char *, const char *, char *);
typedef VLRESULT(VLAPI_CALL *VlxGetMsgInfoExFn)(VLHANDLE, uint16_t, const char *, uint16_t,
                                                VLMSGINFOEX *);
typedef VLRESULT(VLAPI_CALL *VlxGetMsgHistoryExFn)(VLHANDLE, uint16_t, const char *, uint16_t,
                                                   uint16_t, int16_t, uint16_t *, int16_t,
                                                   VLMSGHISTORYEX *);
typedef VLRESULT(VLAPI_CALL *VlxGetServerStatusExFn)(VLHANDLE, int16_t, VLSERVERSTATUSEX *);

static VlxGetAPIVersionFn pVlxGetAPIVersion;
static VlxAPIInitFn pVlxAPIInit;
static VlxAPIClosedownFn pVlxAPIClosedown;
static VlxGetUserOutDirFn pVlxGetUserOutDir;
static VlxCheckServerFn pVlxCheckServer;
static VlxStartServerFn pVlxStartServer;
static VlxStopServerFn pVlxStopServer;
static VlxSendSubmitFileFn pVlxSendSubmitFile;
static VlxGetMsgInfoExFn pVlxGetMsgInfoEx;
static VlxGetMsgHistoryExFn pVlxGetMsgHistoryEx;
static VlxGetServerStatusExFn pVlxGetServerStatusEx;

#define USER_ACCOUNT "DOMAIN\\jsmith"
#define BODY_PREFIX "DEMO"

#define SERVER_WAIT_MS 30000   /* for the server to come up or go down */
#define SERVER_POLL_MS 100
#define MESSAGE_WAIT_MS 60000  /* for the message to be completed */
#define MESSAGE_POLL_MS 200

#define MAX_EVENTS 32
#define MAX_DEVICES 8
#define MAX_LINKS 8
#define MAX_NAMES 16
#define NAME_ENTRY_SIZE 10     /* one cover sheet or letterhead name */

#define STATUS_COMPLETED 30    /* message states from here on are final */
#define STATUS_OK 30

/* The fax of step 3: options, cover text, three addressees, the body. */
static const char kSubmitText[] =
    "%%[MESSAGE]\r\n"
    "Comment: Quarterly figures\r\n"
    "Subject: Quarterly figures for the sales team\r\n"
    "Covertext: Please find this quarter's figures below.\r\n"
    "To: Ann Archer\r\n"
    "Organisation: Archer & Sons\r\n"
    "Fax: 02015550101\r\n"
    "To: Bob Baker\r\n"
    "Fax: 02015550102\r\n"
    "To: Carol Clark\r\n"
    "Organisation: Clark Ltd\r\n"
    "Fax: 02015550103\r\n"
    "%%[TEXT]\r\n"
    "Sales by quarter\r\n"
    "\r\n"
    "Quarter   Units   Revenue\r\n"
    "Q1         1200    36,000\r\n"
    "Q2         1350    40,500\r\n"
    "Q3         1100    33,000\r\n"
    "Q4         1600    48,000\r\n";

/* ---- Words for the numbers the library returns ------------------------- */

typedef struct CodeWord {
  unsigned code;
  const char *word;
  const char *meaning;
} CodeWord;

/* Message states (VLMSGINFOEX.Status); 30 and up are final. */
static const CodeWord kMessageStatus[] = {
    {1, "Su", "submitted"},        {2, "He", "held"},
    {3, "WT", "deferred"},         {4, "Wa", "waiting"},
    {6, "Pr", "converting"},       {7, "Co", "connecting"},
    {8, "Se", "sending"},          {9, "Sc", "scanning"},
    {10, "Ab", "aborting"},        {11, "Re", "receiving"},
    {12, "WD", "waiting for a device"},
    {13, "Sr", "submitted to the router"},
    {14, "Ar", "accepted from a remote server"},
    {30, "OK", "completed"},       {31, "Fa", "failed"},
    {32, "OK", "preview done"},    {33, "Fa", "preview failed"},
};

/* History events (VLMSGHISTORYEX.Event). */
static const CodeWord kHistoryEvent[] = {
    {1, "SentOK", "sent"},        {2, "RecdOK", "received"},   {3, "ScanOK", "scanned"},
    {4, "SentEr", "send error"},  {5, "RecdEr", "receive error"},
    {6, "ScanEr", "scan error"},  {7, "Tried", "attempt"},     {8, "RouterSub", "routed"},
    {9, "RouterAcc", "accepted by the router"},                {10, "RouterErr", "router error"},
};

/* Routes (VLMSGHISTORYEX.Route) and the words the server writes for them. */
static const CodeWord kRoute[] = {
    {100, "FAX-ANY", NULL},      {101, "PRINTER-ANY", NULL},  {102, "FAX-PRINTER-ANY", NULL},
    {103, "HP-PRINTER-ANY", NULL}, {104, "PS-PRINTER-ANY", NULL}, {105, "LAN-ANY", NULL},
    {106, "PREVIEW-ANY", NULL},  {107, "SMS-ANY", NULL},      {0, "none", NULL},
    {1, "BINARY", NULL},         {2, "FAX", NULL},            {3, "FAX-FINE", NULL},
    {4, "FAX-SFINE", NULL},      {5, "HQFAX", NULL},          {6, "FAX-ASCII", NULL},
    {7, "EMAIL", NULL},          {8, "PS-PRINTER", NULL},     {10, "HP-PRINTER-DRAFT", NULL},
    {11, "HP-PRINTER", NULL},    {13, "SCAN", NULL},          {14, "SCAN-FINE", NULL},
    {15, "SCAN-SUPERFINE", NULL}, {16, "FAX-PRINTER", NULL},  {17, "FAX-PRINTER-FINE", NULL},
    {18, "FAX-PRINTER-SFINE", NULL}, {19, "LAN", NULL},       {20, "LAN-FINE", NULL},
    {21, "LAN-SUPERFINE", NULL}, {22, "PREVIEW", NULL},       {23, "PREVIEW-FINE", NULL},
    {24, "PREVIEW-SUPERFINE", NULL}, {27, "PREVIEW-ASCII", NULL}, {25, "SMS", NULL},
    {31, "DIAL-INTERNAL", NULL}, {30, "FAX-INCOMING", NULL},  {29, "SMS-INCOMING", NULL},
};

/* Device states (VLDEVICEINFOEX.Status); no word of STATUS.LOG gives 5. */
static const CodeWord kDeviceStatus[] = {
    {0, "Un", "unknown"},  {1, "OK", "idle"},        {2, "Er", "error"},
    {3, "Fa", "failed"},   {4, "Of", "offline"},     {5, "?", "busy"},
    {6, "WC", "waiting to connect"},                 {7, "Se", "sending"},
    {8, "Re", "receiving"}, {9, "PS", NULL},         {10, "PR", NULL},
    {11, "WS", "waiting for a document to scan"},    {12, "Sc", "scanning"},
    {13, "In", "incoming call"},
};

/* Link states (VLLINKINFOEX.RemoteLinkStatus and LocalLinkStatus). */
static const CodeWord kLinkStatus[] = {
    {0, "-", NULL},          {1, "ONLINE", NULL},       {2, "OFFLINE", NULL},
    {3, "WDOGFAILED", NULL}, {4, "LINKINIT", NULL},     {5, "LINKSHUTDOWN", NULL},
    {6, "LINKUNKNOWN", NULL},
};

#define COUNT_OF(table) (sizeof(table) / sizeof((table)[0]))

static const CodeWord *Find(const CodeWord *table, size_t count, unsigned code) {
  size_t i;
  for (i = 0; i < count; ++i)
    if (table[i].code == code) return &table[i];
  return NULL;
}

static const char *Word(const CodeWord *table, size_t count, unsigned code) {
  const CodeWord *row = Find(table, count, code);
  return row ? row->word : "??";
}

/* "word (meaning)", or the word alone when the number has no meaning. */
static const char *Described(const CodeWord *table, size_t count, unsigned code, char *text,
                             size_t size) {
  const CodeWord *row = Find(table, count, code);
  if (!row) snprintf(text, size, "?? (%u)", code);
  else if (row->meaning) snprintf(text, size, "%s (%s)", row->word, row->meaning);
  else snprintf(text, size, "%s", row->word);
  return text;
}

/* ---- Helpers --------------------------------------------------------- */

static int Failed(const char *what, VLRESULT rc) {
  printf("%s failed: result 0x%04X\n", what, (unsigned)(uint16_t)rc);
  return 0;
}

static void VLAPI_CALL ShowError(const char *text) { printf("  library reports: %s\n", text); }

static FARPROC Entry(HMODULE library, const char *name) {
  FARPROC entry = GetProcAddress(library, name);
  if (!entry) printf("Vlapi64.dll does not export %s\n", name);
  return entry;
}

/* GetProcAddress returns a generic function pointer; each entry point is
   converted to its own type. */
#define LOAD(name) ((p##name = (name##Fn)(void (*)(void))Entry(library, #name)) != NULL)

static int LoadEntryPoints(HMODULE library) {
  int ok = 1;
  ok &= LOAD(VlxGetAPIVersion);
  ok &= LOAD(VlxAPIInit);
  ok &= LOAD(VlxAPIClosedown);
  ok &= LOAD(VlxGetUserOutDir);
  ok &= LOAD(VlxCheckServer);
  ok &= LOAD(VlxStartServer);
  ok &= LOAD(VlxStopServer);
  ok &= LOAD(VlxSendSubmitFile);
  ok &= LOAD(VlxGetMsgInfoEx);
  ok &= LOAD(VlxGetMsgHistoryEx);
  ok &= LOAD(VlxGetServerStatusEx);
  return ok;
}

/* Polls VlxCheckServer until it returns wanted; 0 after the time-out or on
   any other result. */
static int WaitForServer(VLHANDLE session, VLRESULT wanted) {
  DWORD start = GetTickCount();
  for (;;) {
    VLRESULT rc = pVlxCheckServer(session);
    if (rc == wanted) return 1;
    if (rc != VL_OK && rc != VL_E_SERVER_NOT_RUNNING) return Failed("Checking the server", rc);
    if (GetTickCount() - start >= SERVER_WAIT_MS) {
      printf("The fax server did not %s within %d s: last result 0x%04X\n",
             wanted == VL_OK ? "start" : "stop", SERVER_WAIT_MS / 1000, (unsigned)(uint16_t)rc);
      return 0;
    }
    Sleep(SERVER_POLL_MS);
  }
}

/* ---- Step 1: version and log-on ------------------------------------- */

static int LogOn(VLHANDLE *session) {
  char text[MAX_PATH];
  uint16_t number = 0;
  VLRESULT rc = pVlxGetAPIVersion(text, sizeof text, &number);
  if (rc != VL_OK) return Failed("VlxGetAPIVersion", rc);
  printf("Library version %s (interface 0x%04X)\n", text, number);

  rc = pVlxAPIInit(session, USER_ACCOUNT, 1, ShowError);
  if (rc != VL_OK) return Failed("Log-on as " USER_ACCOUNT, rc);
  printf("Logged on as %s, session handle 0x%08lX\n", USER_ACCOUNT, (unsigned long)*session);
  rc = pVlxGetUserOutDir(*session, text, sizeof text);
  if (rc != VL_OK) return Failed("VlxGetUserOutDir", rc);
  printf("  Out directory: %s\n", text);
  return 1;
}

/* ---- Step 2: the server runs ---------------------------------------- */

static int EnsureServerRuns(VLHANDLE session) {
  VLRESULT rc = pVlxCheckServer(session);
  if (rc == VL_OK) {
    printf("Fax server is running\n");
    return 1;
  }
  if (rc != VL_E_SERVER_NOT_RUNNING) return Failed("Checking the server", rc);
  printf("Fax server is not running (0x%04X): starting it\n", (unsigned)(uint16_t)rc);
  rc = pVlxStartServer(session, 0, NULL);
  if (rc != VL_OK) return Failed("Starting the fax server", rc);
  if (!WaitForServer(session, VL_OK)) return 0;
  printf("Fax server started\n");
  return 1;
}

/* ---- Steps 3 and 4: the submit file and its submission -------------- */

static int WriteSubmitFile(char *path) {
  char directory[MAX_PATH];
  FILE *file;
  size_t length = sizeof kSubmitText - 1;
  if (!GetTempPathA(sizeof directory, directory) ||
      !GetTempFileNameA(directory, "vls", 0, path)) {
    printf("Cannot make a temporary file (error %lu)\n", (unsigned long)GetLastError());
    return 0;
  }
  file = fopen(path, "wb");
  if (!file || fwrite(kSubmitText, 1, length, file) != length || fclose(file) != 0) {
    printf("Cannot write the submit file %s\n", path);
    if (file) fclose(file);
    DeleteFileA(path);
    return 0;
  }
  printf("Submit file: %s\n", path);
  return 1;
}

static int Submit(VLHANDLE session, char *body) {
  char path[MAX_PATH];
  VLRESULT rc;
  if (!WriteSubmitFile(path)) return 0;
  rc = pVlxSendSubmitFile(session, path, BODY_PREFIX, body);
  DeleteFileA(path);
  if (rc != VL_OK) return Failed("Submitting the message", rc);
  printf("Submitted message %s\n", body);
  return 1;
}

/* ---- Step 5: following the message ---------------------------------- */

static void PrintEvent(const VLMSGHISTORYEX *e) {
  char event[40];
  printf("  history %-26s %04u-%02u-%02u %02u:%02u:%02u  addressee %u",
         Described(kHistoryEvent, COUNT_OF(kHistoryEvent), e->Event, event, sizeof event),
         e->Year, e->Month, e->Day, e->Hour, e->Minute, e->Second, e->Addressee);
  if (e->AddresseeText[0]) printf(" \"%s\"", e->AddresseeText);
  printf("\n          route %s", Word(kRoute, COUNT_OF(kRoute), e->Route));
  if (e->RouteParams[0]) printf(" %s", e->RouteParams);
  printf(", error 0x%X, %u page(s), connected %u:%02u", e->ErrorCode, e->Pages,
         e->ConnectTime / 60u, e->ConnectTime % 60u);
  if (e->Device[0]) printf(", device %s", e->Device);
  if (e->RemoteServer[0]) printf(", remote server %s", e->RemoteServer);
  printf("\n");
}

/* Prints the history events from the one numbered *shown on. */
static int ShowNewEvents(VLHANDLE session, const char *body, uint16_t *shown) {
  VLMSGHISTORYEX events[MAX_EVENTS];
  uint16_t count = 0;
  VLRESULT rc = pVlxGetMsgHistoryEx(session, VL_DIR_OUT, body, 0, 1, MAX_EVENTS, &count,
                                    sizeof events[0], events);
  if (rc != VL_OK) return Failed("VlxGetMsgHistoryEx", rc);
  for (; *shown < count && *shown < MAX_EVENTS; ++*shown) PrintEvent(&events[*shown]);
  return 1;
}

static int FollowMessage(VLHANDLE session, const char *body) {
  VLMSGINFOEX info;
  char status[60];
  unsigned last = 0xFFFF;
  uint16_t shown = 0;
  DWORD start = GetTickCount();
  for (;;) {
    /* The server writes a step's history before the status it leads to:
       reading the status first, the history then holds every event up to
       it, and the events are printed before the change they explain. */
    VLRESULT rc = pVlxGetMsgInfoEx(session, VL_DIR_OUT, body, sizeof info, &info);
    if (rc != VL_OK) return Failed("VlxGetMsgInfoEx", rc);
    if (!ShowNewEvents(session, body, &shown)) return 0;
    if (info.Status != last) {
      last = info.Status;
      printf("  status %s\n",
             Described(kMessageStatus, COUNT_OF(kMessageStatus), last, status, sizeof status));
    }
    if (last >= STATUS_COMPLETED) break;
    if (GetTickCount() - start >= MESSAGE_WAIT_MS) {
      printf("Message %s not completed within %d s\n", body, MESSAGE_WAIT_MS / 1000);
      return 0;
    }
    Sleep(MESSAGE_POLL_MS);
  }
  printf("Message %s reached %s", body, Word(kMessageStatus, COUNT_OF(kMessageStatus), last));
  if (info.AcceptedYear)
    printf(" (accepted %04u-%02u-%02u %02u:%02u:%02u)", info.AcceptedYear, info.AcceptedMonth,
           info.AcceptedDay, info.AcceptedHour, info.AcceptedMinute, info.AcceptedSecond);
  printf("\n");
  return last == STATUS_OK;
}

/* ---- Step 6: the server's status ------------------------------------ */

static void PrintTotals(const VLSERVERINFOEX *t) {
  printf("  Queue: deferred %u, waiting to resend %u, waiting to convert %u, converting %u,\n"
         "         waiting for a device %u, sending %u, scanning %u, router submissions %u,\n"
         "         remote accepts %u\n",
         t->Deferred, t->WaitingResend, t->WaitingConvert, t->Converting, t->WaitingDevice,
         t->Sending, t->Scanning, t->RouterSub, t->RemoteAccept);
}

static void PrintDevice(const VLDEVICEINFOEX *d) {
  char status[60];
  Described(kDeviceStatus, COUNT_OF(kDeviceStatus), d->Status, status, sizeof status);
  printf("  Device %-12s %-24s user %-8s message %-8s pages %u/%u, connect fails %u,"
         " send fails %u, sent OK %u\n",
         d->Name, status, d->User[0] ? d->User : "-", d->Message[0] ? d->Message : "-",
         d->CurrentPage, d->TotalPages, d->ConnectFails, d->SendFails, d->SentOK);
}

static const char *Tristate(int value, const char *yes, const char *no) {
  return value < 0 ? "unknown" : value ? yes : no;
}

static void PrintLink(const VLLINKINFOEX *l) {
  printf("  Link to %-12s remote %s, local %s, connection %s, link %s\n", l->RemoteServer,
         Word(kLinkStatus, COUNT_OF(kLinkStatus), l->RemoteLinkStatus),
         Word(kLinkStatus, COUNT_OF(kLinkStatus), l->LocalLinkStatus),
         Tristate(l->ConnectionStatus, "OK", "down"), Tristate(l->LinkActive, "active", "idle"));
  printf("          sent OK %u, timed out %u, rejected %u, device errors %u, remote errors %u,"
         " unacknowledged %u, acknowledged %u, received %u\n",
         l->SentOK, l->TimedOut, l->Rejected, l->DeviceError, l->RemoteServerError,
         l->Unacknowledged, l->Acknowledged, l->Received);
}

static void PrintNames(const char *title, const char (*names)[NAME_ENTRY_SIZE], unsigned count) {
  unsigned i;
  printf("  %s (%u):", title, count);
  for (i = 0; i < count && i < MAX_NAMES; ++i) printf(" %s", names[i]);
  if (count > MAX_NAMES) printf(" ...");
  printf("\n");
}

static int ShowServerStatus(VLHANDLE session) {
  VLSERVERINFOEX totals;
  VLDEVICEINFOEX devices[MAX_DEVICES];
  VLLINKINFOEX links[MAX_LINKS];
  char coversheets[MAX_NAMES][NAME_ENTRY_SIZE], letterheads[MAX_NAMES][NAME_ENTRY_SIZE];
  uint16_t deviceCount = 0, linkCount = 0, coversheetCount = 0, letterheadCount = 0;
  VLSERVERSTATUSEX block;
  unsigned i;
  VLRESULT rc;

  memset(&block, 0, sizeof block);
  block.ServerInfoSize = sizeof totals;
  block.ServerInfo = &totals;
  block.MaxDevices = MAX_DEVICES;
  block.DeviceCount = &deviceCount;
  block.DeviceInfoSize = sizeof devices[0];
  block.Devices = devices;
  block.MaxLinks = MAX_LINKS;
  block.LinkCount = &linkCount;
  block.LinkInfoSize = sizeof links[0];
  block.Links = links;
  block.MaxCoversheets = MAX_NAMES;
  block.CoversheetCount = &coversheetCount;
  block.CoversheetEntrySize = NAME_ENTRY_SIZE;
  block.Coversheets = &coversheets[0][0];
  block.MaxLetterheads = MAX_NAMES;
  block.LetterheadCount = &letterheadCount;
  block.LetterheadEntrySize = NAME_ENTRY_SIZE;
  block.Letterheads = &letterheads[0][0];
  rc = pVlxGetServerStatusEx(session, sizeof block, &block);
  if (rc != VL_OK) return Failed("VlxGetServerStatusEx", rc);

  printf("Server status\n");
  PrintTotals(&totals);
  printf("  %u device(s)\n", deviceCount);
  for (i = 0; i < deviceCount && i < MAX_DEVICES; ++i) PrintDevice(&devices[i]);
  printf("  %u link(s)\n", linkCount);
  for (i = 0; i < linkCount && i < MAX_LINKS; ++i) PrintLink(&links[i]);
  PrintNames("Cover sheets", (const char(*)[NAME_ENTRY_SIZE])coversheets, coversheetCount);
  PrintNames("Letterheads", (const char(*)[NAME_ENTRY_SIZE])letterheads, letterheadCount);
  return 1;
}

/* ---- Steps 7 and 8: stopping the server, logging off ----------------- */

static int StopServer(VLHANDLE session) {
  VLRESULT rc = pVlxStopServer(session, 0);
  if (rc != VL_OK) return Failed("Stopping the fax server", rc);
  if (!WaitForServer(session, VL_E_SERVER_NOT_RUNNING)) return 0;
  printf("Fax server stopped\n");
  return 1;
}

static int LogOff(VLHANDLE session) {
  VLRESULT rc = pVlxAPIClosedown(session);
  if (rc != VL_OK) return Failed("Log-off", rc);
  printf("Logged off\n");
  return 1;
}

int main(void) {
  HMODULE library;
  VLHANDLE session = 0;
  char body[16] = "";
  int ok;

  setvbuf(stdout, NULL, _IONBF, 0);
  library = LoadLibraryA("Vlapi64.dll");
  if (!library) {
    printf("Cannot load Vlapi64.dll (error %lu)\n", (unsigned long)GetLastError());
    return 1;
  }
  ok = LoadEntryPoints(library) && LogOn(&session);
  if (ok) {
    if (EnsureServerRuns(session)) {
      ok = Submit(session, body) && FollowMessage(session, body);
      ok = ok && ShowServerStatus(session);
      /* The server is stopped even when the message went wrong. */
      ok = StopServer(session) && ok;
    } else {
      ok = 0;
    }
    ok = LogOff(session) && ok;
  }
  FreeLibrary(library);
  printf("%s\n", ok ? "Done" : "Failed");
  return ok ? 0 : 1;
}
