/*
 * vlapi.h - client programming interface of the network fax server.
 *
 * Every function returns a 16-bit result code: 0 on success, one of the
 * VL_E_... codes below on failure. A session handle comes from VlxAPIInit
 * and is given back to VlxAPIClosedown. Text is 8-bit in the system code
 * page; text results go to caller buffers whose size, NUL included, is
 * passed as a signed 16-bit length.
 *
 * The records below are part of the binary interface: their sizes and field
 * offsets are fixed and checked at compile time at the end of this file.
 */
#ifndef VLAPI_H
#define VLAPI_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

#if defined(_WIN32)
#define VLAPI_CALL __stdcall
#else
#define VLAPI_CALL
#endif

typedef int16_t VLRESULT;   /* 0 or a VL_E_... code, as a negative 16-bit value */
typedef uint32_t VLHANDLE;  /* designates one session; 0 designates none */

/* Receives the text of every failure reported for a session. */
typedef void(VLAPI_CALL *VLERRORPROC)(const char *text);

/* Result codes. The text of each is in the module's message table. */
#define VL_OK                          0
#define VL_E_INVALID_PARAM             ((VLRESULT)0xF700)
#define VL_E_NOT_INIT                  ((VLRESULT)0xF701)
#define VL_E_INIT_FAIL                 ((VLRESULT)0xF702)
#define VL_E_INVALID_INI_FILE          ((VLRESULT)0xF703)
#define VL_E_INVALID_USER              ((VLRESULT)0xF704)
#define VL_E_CANNOT_LOG_ON             ((VLRESULT)0xF705)
#define VL_E_PATH_NOT_FOUND            ((VLRESULT)0xF706)
#define VL_E_TOO_MANY_FILES            ((VLRESULT)0xF707)
#define VL_E_FILE_CREATE_ERROR         ((VLRESULT)0xF708)
#define VL_E_FILE_OPEN_ERROR           ((VLRESULT)0xF709)
#define VL_E_FILE_ERROR                ((VLRESULT)0xF70A)
#define VL_E_FILE_NOT_FOUND            ((VLRESULT)0xF70B)
#define VL_E_SERVER_NOT_RUNNING        ((VLRESULT)0xF70C)
#define VL_E_INVALID_DATA_FORMAT       ((VLRESULT)0xF70D)
#define VL_E_MSG_UNKNOWN               ((VLRESULT)0xF70E)
#define VL_E_MSG_NOT_COMPLETED         ((VLRESULT)0xF70F)
#define VL_E_MSG_EXISTS                ((VLRESULT)0xF710)
#define VL_E_INFO_FILE_OPEN_ERROR      ((VLRESULT)0xF711)
#define VL_E_INFO_FILE_ERROR           ((VLRESULT)0xF712)
#define VL_E_INFO_FILE_INVALID         ((VLRESULT)0xF713)
#define VL_E_CANNOT_SUBMIT             ((VLRESULT)0xF714)
#define VL_E_BUFFER_TOO_SMALL          ((VLRESULT)0xF715)
#define VL_E_SUBMIT_FILE_INVALID       ((VLRESULT)0xF716)
#define VL_E_CANNOT_READ_MSG_DEFAULTS  ((VLRESULT)0xF717)
#define VL_E_CONTROL_FILE_OPEN_ERROR   ((VLRESULT)0xF718)
#define VL_E_CONTROL_FILE_ERROR        ((VLRESULT)0xF719)
#define VL_E_CONTROL_FILE_INVALID      ((VLRESULT)0xF71A)
#define VL_E_SERVER_RUNNING            ((VLRESULT)0xF71B)
#define VL_E_NO_START_SYSMAN           ((VLRESULT)0xF71C)
#define VL_E_NO_START_SERVER           ((VLRESULT)0xF71D)
#define VL_E_SERVER_INI_FILE_ERROR     ((VLRESULT)0xF71E)
#define VL_E_FUNCTION_ABORT            ((VLRESULT)0xF71F)
#define VL_E_TIMEOUT_EXPIRED           ((VLRESULT)0xF720)
#define VL_E_PORT_BUSY                 ((VLRESULT)0xF722)
#define VL_E_PORT_OFFLINE              ((VLRESULT)0xF723)
#define VL_E_MALLOC_FAILED             ((VLRESULT)0xF724)
#define VL_E_USER_NOT_INIT             ((VLRESULT)0xF727)
#define VL_E_ACCESS_DENIED             ((VLRESULT)0xF728)
#define VL_E_REGISTRY_ERROR            ((VLRESULT)0xF729)
#define VL_E_AD_NOT_PRESENT            ((VLRESULT)0xF72A)
#define VL_E_AD_ERROR                  ((VLRESULT)0xF72B)
#define VL_E_AD_VALUE_NOT_SET          ((VLRESULT)0xF72C)
#define VL_E_COLLECTION_FULL           ((VLRESULT)0xF730)

/* Message directory selectors. */
#define VL_DIR_OUT 1 /* the user's V-OUT directory */
#define VL_DIR_IN  2 /* the user's V-IN directory */

/* Version of this interface, as VlxGetAPIVersion reports it. */
#define VL_API_VERSION_TEXT   "16.1.1002"
#define VL_API_VERSION_NUMBER 0x0600

/* Size of the buffers of VlxGetDocuments: 30 slots of 1024 bytes each. */
#define VL_DOCUMENT_SLOTS     30
#define VL_DOCUMENT_SLOT_SIZE 1024

#pragma pack(push, 1)

/* One message of a message directory (272 bytes; byte-packed). */
typedef struct VLMSGINFOEX {
    uint16_t Status;
    char     Body[9];
    char     Comment[41];
    char     Subject[61];
    char     Reserved;
    uint16_t UserStatus;
    uint16_t MsgType;
    char     Organisation[41];
    char     Custom[101];
    uint16_t AcceptedYear;
    uint16_t AcceptedMonth;
    uint16_t AcceptedDay;
    uint16_t AcceptedHour;
    uint16_t AcceptedMinute;
    uint16_t AcceptedSecond;
} VLMSGINFOEX;

/* The older message record (52 bytes; byte-packed). */
typedef struct VLMSGINFO {
    char     Body[9];
    char     Comment[41];
    uint16_t Status;
} VLMSGINFO;

#pragma pack(pop)
#pragma pack(push, 8)

/* One history event of a message: 166 bytes, or the first 94 (short form). */
typedef struct VLMSGHISTORYEX {
    uint16_t Event;
    uint16_t Year;
    uint16_t Month;
    uint16_t Day;
    uint16_t Hour;
    uint16_t Minute;
    uint16_t Second;
    uint16_t Addressee;
    uint16_t Route;
    char     RouteParams[41];
    char     Reserved1;
    uint16_t ErrorCode;
    uint16_t Pages;
    uint16_t ConnectTime;
    char     Device[13];
    char     Reserved2;
    char     RemoteServer[13];
    char     Reserved3;
    char     AddresseeText[71]; /* long form only */
    char     Reserved4;
} VLMSGHISTORYEX;

/* The older history record (80 bytes): the first 80 bytes of VLMSGHISTORYEX. */
typedef struct VLMSGHISTORY {
    uint16_t Event;
    uint16_t Year;
    uint16_t Month;
    uint16_t Day;
    uint16_t Hour;
    uint16_t Minute;
    uint16_t Second;
    uint16_t Addressee;
    uint16_t Route;
    char     RouteParams[41];
    char     Reserved1;
    uint16_t ErrorCode;
    uint16_t Pages;
    uint16_t ConnectTime;
    char     Device[13];
    char     Reserved2;
} VLMSGHISTORY;

/* A user's message defaults (72 bytes). */
typedef struct VLMSGDEFAULTSEX {
    uint16_t Priority;
    uint16_t Header;
    uint16_t Quality;
    uint16_t SendTime;
    uint16_t SendYear;
    uint16_t SendMonth;
    uint16_t SendDay;
    uint16_t SendHour;
    uint16_t SendMinute;
    uint16_t SendSecond;
    char     From[32];
    char     Coversheet[10];
    char     Letterhead[10];
} VLMSGDEFAULTSEX;

/* Queue totals of the server (18 bytes). */
typedef struct VLSERVERINFOEX {
    uint16_t Deferred;
    uint16_t WaitingResend;
    uint16_t WaitingConvert;
    uint16_t Converting;
    uint16_t WaitingDevice;
    uint16_t Sending;
    uint16_t Scanning;
    uint16_t RouterSub;
    uint16_t RemoteAccept;
} VLSERVERINFOEX;

/* The older queue totals (14 bytes): the first seven counts. */
typedef struct VLSERVERINFO {
    uint16_t Deferred;
    uint16_t WaitingResend;
    uint16_t WaitingConvert;
    uint16_t Converting;
    uint16_t WaitingDevice;
    uint16_t Sending;
    uint16_t Scanning;
} VLSERVERINFO;

/* One fax device (44 bytes). */
typedef struct VLDEVICEINFOEX {
    char     Name[13];
    uint16_t Status;
    char     User[9];
    char     Message[9];
    uint16_t TotalPages;
    uint16_t CurrentPage;
    uint16_t ConnectFails;
    uint16_t SendFails;
    uint16_t SentOK;
} VLDEVICEINFOEX;

/* The older device record; its layout is that of VLDEVICEINFOEX. */
typedef VLDEVICEINFOEX VLDEVICEINFO;

/* One link to a remote server (38 bytes). */
typedef struct VLLINKINFOEX {
    char     RemoteServer[13];
    uint16_t RemoteLinkStatus;
    uint16_t LocalLinkStatus;
    int16_t  ConnectionStatus;
    int16_t  LinkActive;
    uint16_t SentOK;
    uint16_t TimedOut;
    uint16_t Rejected;
    uint16_t DeviceError;
    uint16_t RemoteServerError;
    uint16_t Unacknowledged;
    uint16_t Acknowledged;
    uint16_t Received;
} VLLINKINFOEX;

/* Request block of VlxGetServerStatusEx: 144 bytes, or the first 80. */
typedef struct VLSERVERSTATUSEX {
    int16_t          ServerInfoSize;
    VLSERVERINFOEX  *ServerInfo;
    int16_t          MaxDevices;
    uint16_t        *DeviceCount;
    uint16_t         DeviceInfoSize;
    VLDEVICEINFOEX  *Devices;
    int16_t          MaxLinks;
    uint16_t        *LinkCount;
    uint16_t         LinkInfoSize;
    VLLINKINFOEX    *Links;
    int16_t          MaxCoversheets;
    uint16_t        *CoversheetCount;
    int16_t          CoversheetEntrySize;
    char            *Coversheets;
    int16_t          MaxLetterheads;
    uint16_t        *LetterheadCount;
    int16_t          LetterheadEntrySize;
    char            *Letterheads;
} VLSERVERSTATUSEX;

#pragma pack(pop)

/* Sessions. */
VLRESULT VLAPI_CALL VlxAPIInit(VLHANDLE *handle, const char *userName, uint16_t lock,
                               VLERRORPROC errorCallback);
VLRESULT VLAPI_CALL VlxAPIClosedown(VLHANDLE handle);

/* Directories, version, escapes and unique file names. */
VLRESULT VLAPI_CALL VlxGetUserOutDir(VLHANDLE handle, char *buffer, int16_t bufLen);
VLRESULT VLAPI_CALL VlxGetUserInDir(VLHANDLE handle, char *buffer, int16_t bufLen);
VLRESULT VLAPI_CALL VlxGetUserArea(VLHANDLE handle, char *buffer, int16_t bufLen);
VLRESULT VLAPI_CALL VlxGetSystemArea(VLHANDLE handle, char *buffer, int16_t bufLen);
VLRESULT VLAPI_CALL VlxGetAPIVersion(char *buffer, int16_t bufLen, uint16_t *version);
VLRESULT VLAPI_CALL VlxEscape(VLHANDLE handle, const char *name, int32_t value);
/* name receives the 8-character base name: give at least 9 bytes. */
VLRESULT VLAPI_CALL VlxCreateAutoFile(VLHANDLE handle, const char *prefix, const char *extension,
                                      const char *path, char *name);

/* Message directories. */
VLRESULT VLAPI_CALL VlxGetMsgListEx(VLHANDLE handle, uint16_t directory, int16_t maxEntries,
                                    int16_t *count, uint16_t recordSize, VLMSGINFOEX *records);
VLRESULT VLAPI_CALL VlxGetMsgList(VLHANDLE handle, uint16_t directory, int16_t maxEntries,
                                  int16_t *count, VLMSGINFO *records);
VLRESULT VLAPI_CALL VlxGetMsgInfoEx(VLHANDLE handle, uint16_t directory, const char *body,
                                    uint16_t recordSize, VLMSGINFOEX *info);
VLRESULT VLAPI_CALL VlxGetMsgInfo(VLHANDLE handle, uint16_t directory, const char *body,
                                  VLMSGINFO *info);
VLRESULT VLAPI_CALL VlxCheckNewMsgStatus(VLHANDLE handle, uint16_t directory, uint16_t *isNew);
/* documents and attachments: VL_DOCUMENT_SLOTS slots of VL_DOCUMENT_SLOT_SIZE bytes each. */
VLRESULT VLAPI_CALL VlxGetDocuments(VLHANDLE handle, const VLMSGINFOEX *info, char *documents,
                                    char *attachments);

/* Submission. */
VLRESULT VLAPI_CALL VlxSendMsgEx(VLHANDLE handle, const char *extension, uint16_t recordSize,
                                 VLMSGINFOEX *info);
VLRESULT VLAPI_CALL VlxSendMsg(VLHANDLE handle, const char *body, const char *extension,
                               const char *comment);
VLRESULT VLAPI_CALL VlxCreateDataFile(VLHANDLE handle, const char *submitFile, const char *dataFile,
                                      const char *extension);
/* extensionOut receives up to 3 characters: give at least 4 bytes. */
VLRESULT VLAPI_CALL VlxCreateCtlFileEx(VLHANDLE handle, const char *submitFile,
                                       const char *controlFile, const char *extension,
                                       char *extensionOut, uint16_t recordSize, VLMSGINFOEX *info);
VLRESULT VLAPI_CALL VlxCreateCtlFile(VLHANDLE handle, const char *submitFile,
                                     const char *controlFile, const char *body,
                                     const char *extension, char *extensionOut,
                                     const char *comment);
/* body receives the new body name: give at least 9 bytes. */
VLRESULT VLAPI_CALL VlxSendSubmitFile(VLHANDLE handle, const char *submitFile, const char *prefix,
                                      char *body);
VLRESULT VLAPI_CALL VlxVBSendSubmitFile(const char *userName, const char *submitFile,
                                        const char *prefix);

/* Message defaults. */
VLRESULT VLAPI_CALL VlxGetUserCoversheet(VLHANDLE handle, char *buffer, int16_t bufLen);
VLRESULT VLAPI_CALL VlxGetUserFromname(VLHANDLE handle, char *buffer, int16_t bufLen);

/* Message histories. */
VLRESULT VLAPI_CALL VlxGetMsgHistoryEx(VLHANDLE handle, uint16_t directory, const char *body,
                                       uint16_t addresseeFilter, uint16_t includeRouting,
                                       int16_t maxEntries, uint16_t *count, int16_t recordSize,
                                       VLMSGHISTORYEX *records);
VLRESULT VLAPI_CALL VlxGetMsgHistory(VLHANDLE handle, uint16_t directory, const char *body,
                                     uint16_t addresseeFilter, uint16_t includeRouting,
                                     int16_t maxEntries, uint16_t *count, VLMSGHISTORY *records);

/* Message control and server requests. */
VLRESULT VLAPI_CALL VlxAbortMsg(VLHANDLE handle, uint16_t directory, const char *body);
VLRESULT VLAPI_CALL VlxHoldMsg(VLHANDLE handle, uint16_t directory, const char *body);
VLRESULT VLAPI_CALL VlxReleaseMsg(VLHANDLE handle, uint16_t directory, const char *body);
VLRESULT VLAPI_CALL VlxAbortMsgEx(VLHANDLE handle, uint16_t directory, const char *body,
                                  const char *messageId);
VLRESULT VLAPI_CALL VlxHoldMsgEx(VLHANDLE handle, uint16_t directory, const char *body,
                                 const char *messageId);
VLRESULT VLAPI_CALL VlxReleaseMsgEx(VLHANDLE handle, uint16_t directory, const char *body,
                                    const char *messageId);
VLRESULT VLAPI_CALL VlxRushMsgEx(VLHANDLE handle, uint16_t directory, const char *body,
                                 const char *messageId);
VLRESULT VLAPI_CALL VlxDeleteMsg(VLHANDLE handle, uint16_t directory, const char *body,
                                 uint16_t deleteFiles);
VLRESULT VLAPI_CALL VlxStopServer(VLHANDLE handle, uint16_t reserved);
VLRESULT VLAPI_CALL VlxRestartServer(VLHANDLE handle, uint16_t reserved);

/* Server status, liveness and start. */
VLRESULT VLAPI_CALL VlxGetServerStatusEx(VLHANDLE handle, int16_t blockSize,
                                         VLSERVERSTATUSEX *status);
VLRESULT VLAPI_CALL VlxGetServerStatus(VLHANDLE handle, int16_t infoSize, VLSERVERINFO *info,
                                       int16_t maxDevices, int16_t *deviceCount, void *unused,
                                       VLDEVICEINFO *devices);
VLRESULT VLAPI_CALL VlxCheckServer(VLHANDLE handle);
VLRESULT VLAPI_CALL VlxStartServer(VLHANDLE handle, uint16_t unused, const char *paragraph);

/* Print to fax. */
VLRESULT VLAPI_CALL VlxStartPrint(VLHANDLE handle, const char *fileName);
VLRESULT VLAPI_CALL VlxIsPrintComplete(VLHANDLE handle, const char *fileName, int32_t *complete);
VLRESULT VLAPI_CALL VlxCancelPrint(VLHANDLE handle);

#ifdef __cplusplus
}
#endif

/* Compile-time checks of the record layouts. */
#ifdef __cplusplus
#define VLAPI_LAYOUT_CHECK(name, cond) static_assert(cond, #name)
#else
#define VLAPI_LAYOUT_CHECK(name, cond) typedef char vlapi_layout_##name[(cond) ? 1 : -1]
#endif
#define VLAPI_AT(type, field, offset) VLAPI_LAYOUT_CHECK(type##_##field, offsetof(type, field) == (offset))
#define VLAPI_SIZE(type, size) VLAPI_LAYOUT_CHECK(type##_size, sizeof(type) == (size))

VLAPI_SIZE(VLMSGINFOEX, 272);
VLAPI_AT(VLMSGINFOEX, Body, 2);
VLAPI_AT(VLMSGINFOEX, Comment, 11);
VLAPI_AT(VLMSGINFOEX, Subject, 52);
VLAPI_AT(VLMSGINFOEX, UserStatus, 114);
VLAPI_AT(VLMSGINFOEX, MsgType, 116);
VLAPI_AT(VLMSGINFOEX, Organisation, 118);
VLAPI_AT(VLMSGINFOEX, Custom, 159);
VLAPI_AT(VLMSGINFOEX, AcceptedYear, 260);
VLAPI_AT(VLMSGINFOEX, AcceptedSecond, 270);

VLAPI_SIZE(VLMSGINFO, 52);
VLAPI_AT(VLMSGINFO, Comment, 9);
VLAPI_AT(VLMSGINFO, Status, 50);

VLAPI_SIZE(VLMSGHISTORYEX, 166);
VLAPI_AT(VLMSGHISTORYEX, Addressee, 14);
VLAPI_AT(VLMSGHISTORYEX, Route, 16);
VLAPI_AT(VLMSGHISTORYEX, RouteParams, 18);
VLAPI_AT(VLMSGHISTORYEX, ErrorCode, 60);
VLAPI_AT(VLMSGHISTORYEX, Pages, 62);
VLAPI_AT(VLMSGHISTORYEX, ConnectTime, 64);
VLAPI_AT(VLMSGHISTORYEX, Device, 66);
VLAPI_AT(VLMSGHISTORYEX, RemoteServer, 80);
VLAPI_AT(VLMSGHISTORYEX, AddresseeText, 94);

VLAPI_SIZE(VLMSGHISTORY, 80);
VLAPI_AT(VLMSGHISTORY, ErrorCode, 60);
VLAPI_AT(VLMSGHISTORY, Device, 66);

VLAPI_SIZE(VLMSGDEFAULTSEX, 72);
VLAPI_AT(VLMSGDEFAULTSEX, SendSecond, 18);
VLAPI_AT(VLMSGDEFAULTSEX, From, 20);
VLAPI_AT(VLMSGDEFAULTSEX, Coversheet, 52);
VLAPI_AT(VLMSGDEFAULTSEX, Letterhead, 62);

VLAPI_SIZE(VLSERVERINFOEX, 18);
VLAPI_AT(VLSERVERINFOEX, RemoteAccept, 16);
VLAPI_SIZE(VLSERVERINFO, 14);

VLAPI_SIZE(VLDEVICEINFOEX, 44);
VLAPI_AT(VLDEVICEINFOEX, Status, 14);
VLAPI_AT(VLDEVICEINFOEX, User, 16);
VLAPI_AT(VLDEVICEINFOEX, Message, 25);
VLAPI_AT(VLDEVICEINFOEX, TotalPages, 34);
VLAPI_AT(VLDEVICEINFOEX, SentOK, 42);

VLAPI_SIZE(VLLINKINFOEX, 38);
VLAPI_AT(VLLINKINFOEX, RemoteLinkStatus, 14);
VLAPI_AT(VLLINKINFOEX, ConnectionStatus, 18);
VLAPI_AT(VLLINKINFOEX, LinkActive, 20);
VLAPI_AT(VLLINKINFOEX, SentOK, 22);
VLAPI_AT(VLLINKINFOEX, Received, 36);

#if UINTPTR_MAX == 0xFFFFFFFFFFFFFFFFu
VLAPI_SIZE(VLSERVERSTATUSEX, 144);
VLAPI_AT(VLSERVERSTATUSEX, ServerInfo, 8);
VLAPI_AT(VLSERVERSTATUSEX, MaxDevices, 16);
VLAPI_AT(VLSERVERSTATUSEX, DeviceCount, 24);
VLAPI_AT(VLSERVERSTATUSEX, DeviceInfoSize, 32);
VLAPI_AT(VLSERVERSTATUSEX, Devices, 40);
VLAPI_AT(VLSERVERSTATUSEX, MaxLinks, 48);
VLAPI_AT(VLSERVERSTATUSEX, LinkCount, 56);
VLAPI_AT(VLSERVERSTATUSEX, LinkInfoSize, 64);
VLAPI_AT(VLSERVERSTATUSEX, Links, 72);
VLAPI_AT(VLSERVERSTATUSEX, MaxCoversheets, 80);
VLAPI_AT(VLSERVERSTATUSEX, CoversheetCount, 88);
VLAPI_AT(VLSERVERSTATUSEX, CoversheetEntrySize, 96);
VLAPI_AT(VLSERVERSTATUSEX, Coversheets, 104);
VLAPI_AT(VLSERVERSTATUSEX, MaxLetterheads, 112);
VLAPI_AT(VLSERVERSTATUSEX, LetterheadCount, 120);
VLAPI_AT(VLSERVERSTATUSEX, LetterheadEntrySize, 128);
VLAPI_AT(VLSERVERSTATUSEX, Letterheads, 136);
#endif

#endif /* VLAPI_H */
