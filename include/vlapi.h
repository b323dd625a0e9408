/**
 * @file vlapi.h
 * @brief Client programming interface of the network fax server (Vlapi64.dll).
 *
 * Every function returns a 16-bit result code: 0 on success, one of the
 * VL_E_... codes below on failure. A session handle comes from VlxAPIInit
 * and is given back to VlxAPIClosedown. Text is 8-bit in the system code
 * page; text results go to caller buffers whose size, NUL included, is
 * passed as a signed 16-bit length.
 *
 * The records below are part of the binary interface: their sizes and field
 * offsets are fixed and checked at compile time at the end of this file.
 *
 * Rules shared by all functions:
 * - A function that takes a handle returns VL_E_NOT_INIT when the handle
 *   designates no session; one that acts for a user returns
 *   VL_E_USER_NOT_INIT in a session opened without a user.
 * - A text result whose length is not less than the buffer length gives
 *   VL_E_BUFFER_TOO_SMALL: room for the terminating NUL is required.
 * - A required pointer that is NULL gives VL_E_INVALID_PARAM.
 * - Functions that hand work to the server first check that it runs and
 *   return VL_E_SERVER_NOT_RUNNING before they look at their other arguments.
 * - Most failures also hand a text naming the file, user or argument at
 *   fault to the session's error callback, when VlxAPIInit was given one.
 * - Any function may return VL_E_MALLOC_FAILED when memory runs out and
 *   VL_E_FUNCTION_ABORT when an unexpected internal failure stops it.
 */
#ifndef VLAPI_H
#define VLAPI_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * @def VLAPI_CALL
 * @brief Calling convention of every exported function and of VLERRORPROC.
 *
 * __stdcall on Windows; empty elsewhere.
 */
#if defined(_WIN32)
#define VLAPI_CALL __stdcall
#else
#define VLAPI_CALL
#endif

/**
 * @brief Result code of every function: VL_OK (0) or a VL_E_... code.
 *
 * The codes 0xF700 to 0xF730 are held as negative 16-bit values; cast to
 * uint16_t to print them as 0xF7nn.
 */
typedef int16_t VLRESULT;
/** @brief Designates one session, as VlxAPIInit returns it; 0 designates none. */
typedef uint32_t VLHANDLE;

/**
 * @brief Receives the text of every failure reported for a session.
 *
 * Given to VlxAPIInit. It is called on the calling thread before the failing
 * function returns; the text is valid only during the call.
 *
 * @param text The failure text, NUL-terminated, at most 511 characters.
 */
typedef void(VLAPI_CALL *VLERRORPROC)(const char *text);

/**
 * @name Result codes
 * The text of each is in the module's message table; the automation server
 * reports code 0xF7nn as the error 0x8004F7nn with that text. This version
 * does not return 0xF70D, 0xF719, 0xF71A, 0xF71D, 0xF720, 0xF722 and 0xF723;
 * 0xF72A to 0xF72C and 0xF730 come from the automation server only.
 */
/** @{ */
/** Success. */
#define VL_OK                          0
/** "Invalid parameter supplied to API": an argument is missing, malformed or out of range. */
#define VL_E_INVALID_PARAM             ((VLRESULT)0xF700)
/** "Unable to initialise the API": the handle designates no session. */
#define VL_E_NOT_INIT                  ((VLRESULT)0xF701)
/** "API initialisation has failed": no configuration file was found or opened. */
#define VL_E_INIT_FAIL                 ((VLRESULT)0xF702)
/** "Invalid Velomar initialisation file ": a paragraph or area line is missing. */
#define VL_E_INVALID_INI_FILE          ((VLRESULT)0xF703)
/** "This user account is invalid ": unknown account or missing user directory. */
#define VL_E_INVALID_USER              ((VLRESULT)0xF704)
/** "Cannot log on the current user ": the user's lock is held by another session. */
#define VL_E_CANNOT_LOG_ON             ((VLRESULT)0xF705)
/** "The API was passed an invalid path": a directory does not exist or is too long. */
#define VL_E_PATH_NOT_FOUND            ((VLRESULT)0xF706)
/** "There are too many files in this directory": no unique file name is left. */
#define VL_E_TOO_MANY_FILES            ((VLRESULT)0xF707)
/** "Too many open files": a file could not be created. */
#define VL_E_FILE_CREATE_ERROR         ((VLRESULT)0xF708)
/** "Could not open file": a file given by the caller could not be opened. */
#define VL_E_FILE_OPEN_ERROR           ((VLRESULT)0xF709)
/** "API file error": a file could not be read, written or used. */
#define VL_E_FILE_ERROR                ((VLRESULT)0xF70A)
/** "The file could not be found": a file or directory does not exist. */
#define VL_E_FILE_NOT_FOUND            ((VLRESULT)0xF70B)
/** "Velomar Server is not currently running ": the server's lock file is not held. */
#define VL_E_SERVER_NOT_RUNNING        ((VLRESULT)0xF70C)
/** "The data file format specified is not recognised". */
#define VL_E_INVALID_DATA_FORMAT       ((VLRESULT)0xF70D)
/** "The specified message is unknown": no such message, or its ID differs. */
#define VL_E_MSG_UNKNOWN               ((VLRESULT)0xF70E)
/** "Message not completed": only a completed message can be removed. */
#define VL_E_MSG_NOT_COMPLETED         ((VLRESULT)0xF70F)
/** "Unable to send. Message already exists": the message list has it already. */
#define VL_E_MSG_EXISTS                ((VLRESULT)0xF710)
/** "Could not open file": a message list file (MSGDIR.CTL) could not be opened. */
#define VL_E_INFO_FILE_OPEN_ERROR      ((VLRESULT)0xF711)
/** "File error": a message list file could not be read, examined or rewritten. */
#define VL_E_INFO_FILE_ERROR           ((VLRESULT)0xF712)
/** "Invalid file ": an entry of a message list file is malformed. */
#define VL_E_INFO_FILE_INVALID         ((VLRESULT)0xF713)
/** "API unable to submit message": a request file for the server could not be written. */
#define VL_E_CANNOT_SUBMIT             ((VLRESULT)0xF714)
/** "The buffer in which to return data was too small". */
#define VL_E_BUFFER_TOO_SMALL          ((VLRESULT)0xF715)
/** "Invalid submit file format ": a submit file is malformed. */
#define VL_E_SUBMIT_FILE_INVALID       ((VLRESULT)0xF716)
/** "API unable to read default settings": a USER.INI file could not be read. */
#define VL_E_CANNOT_READ_MSG_DEFAULTS  ((VLRESULT)0xF717)
/** "The API was unable to open the message's CTL file": it exists but cannot be opened. */
#define VL_E_CONTROL_FILE_OPEN_ERROR   ((VLRESULT)0xF718)
/** "API control file error". */
#define VL_E_CONTROL_FILE_ERROR        ((VLRESULT)0xF719)
/** "CTL file is corrupt". */
#define VL_E_CONTROL_FILE_INVALID      ((VLRESULT)0xF71A)
/** "Velomar Server running OK": a status, given where the server must be stopped. */
#define VL_E_SERVER_RUNNING            ((VLRESULT)0xF71B)
/** "Unable to start System Manager program": the server program did not start. */
#define VL_E_NO_START_SYSMAN           ((VLRESULT)0xF71C)
/** "Unable to start Velomar Server  ". */
#define VL_E_NO_START_SERVER           ((VLRESULT)0xF71D)
/** "Server initialization file error": SETUP.INI or its server paragraph is unusable. */
#define VL_E_SERVER_INI_FILE_ERROR     ((VLRESULT)0xF71E)
/** "API function aborted": an unexpected internal failure stopped the function. */
#define VL_E_FUNCTION_ABORT            ((VLRESULT)0xF71F)
/** "API timeout expired". */
#define VL_E_TIMEOUT_EXPIRED           ((VLRESULT)0xF720)
/** "API port busy ". */
#define VL_E_PORT_BUSY                 ((VLRESULT)0xF722)
/** "Port offline". */
#define VL_E_PORT_OFFLINE              ((VLRESULT)0xF723)
/** "API memory error": memory could not be allocated. */
#define VL_E_MALLOC_FAILED             ((VLRESULT)0xF724)
/** "API user not initialized": the session has no user. */
#define VL_E_USER_NOT_INIT             ((VLRESULT)0xF727)
/** "Access denied": a directory, file or registry key may not be used. */
#define VL_E_ACCESS_DENIED             ((VLRESULT)0xF728)
/** "There was an error accessing the registry". */
#define VL_E_REGISTRY_ERROR            ((VLRESULT)0xF729)
/** "Active Directory server not present": the directory service cannot be used. */
#define VL_E_AD_NOT_PRESENT            ((VLRESULT)0xF72A)
/** "There was an error accessing Active Directory": a directory search failed. */
#define VL_E_AD_ERROR                  ((VLRESULT)0xF72B)
/** "Active Directory value not set": a fax server's entry lacks a value. */
#define VL_E_AD_VALUE_NOT_SET          ((VLRESULT)0xF72C)
/** "The collection is full": an automation collection holds its most items. */
#define VL_E_COLLECTION_FULL           ((VLRESULT)0xF730)
/** @} */

/** @name Message directory selectors */
/** @{ */
#define VL_DIR_OUT 1 ///< the user's V-OUT directory: messages the user sends
#define VL_DIR_IN  2 ///< the user's V-IN directory: messages the user receives
/** @} */

/** @name Interface version */
/** @{ */
/** Version of this interface as text, as VlxGetAPIVersion reports it. */
#define VL_API_VERSION_TEXT   "16.1.1002"
#define VL_API_VERSION_NUMBER 0x0600 ///< Version number, as VlxGetAPIVersion reports it.
/** @} */

/** @name Buffers of VlxGetDocuments: 30 slots of 1024 bytes each */
/** @{ */
#define VL_DOCUMENT_SLOTS     30   ///< Number of slots in each buffer.
#define VL_DOCUMENT_SLOT_SIZE 1024 ///< Size of one slot in bytes, NUL included.
/** @} */

#pragma pack(push, 1)

/**
 * @brief One message of a message directory (272 bytes; byte-packed).
 *
 * Filled by VlxGetMsgListEx and VlxGetMsgInfoEx from the directory's message
 * list, which the server keeps up to date; given to VlxSendMsgEx and
 * VlxCreateCtlFileEx. Texts are NUL-terminated.
 */
typedef struct VLMSGINFOEX {
    /**
     * Message status: 1 submitted, 2 held, 3 deferred, 4 waiting, 6 converting,
     * 7 connecting, 8 sending, 9 scanning, 10 aborting, 11 receiving, 12 waiting
     * for a device, 13 submitted to the router, 14 accepted from a remote server;
     * the completed states 30 sent, 31 failed, 32 preview done, 33 preview failed;
     * 0 for a status word this version does not know.
     */
    uint16_t Status;
    char     Body[9];          ///< Body name of the message, 1 to 8 characters, upper case.
    char     Comment[41];      ///< Comment, at most 40 characters.
    char     Subject[61];      ///< Subject, at most 60 characters.
    char     Reserved;         ///< Not used.
    uint16_t UserStatus;       ///< 1 read, 2 not yet read, 3 waiting; 0 unknown.
    uint16_t MsgType;          ///< 1 fax, 2 LAN, 3 SMS.
    char     Organisation[41]; ///< Organisation, at most 40 characters.
    char     Custom[101];      ///< Custom field, at most 100 characters.
    uint16_t AcceptedYear;     ///< Time the server accepted the message: year; 0 until known.
    uint16_t AcceptedMonth;    ///< Month 1-12; 0 until known.
    uint16_t AcceptedDay;      ///< Day 1-31; 0 until known.
    uint16_t AcceptedHour;     ///< Hour 0-23.
    uint16_t AcceptedMinute;   ///< Minute 0-59.
    uint16_t AcceptedSecond;   ///< Second 0-59.
} VLMSGINFOEX;

/**
 * @brief The older message record (52 bytes; byte-packed), of VlxGetMsgList
 * and VlxGetMsgInfo.
 */
typedef struct VLMSGINFO {
    char     Body[9];     ///< Body name, as in VLMSGINFOEX.
    char     Comment[41]; ///< Comment, as in VLMSGINFOEX.
    uint16_t Status;      ///< Message status, as in VLMSGINFOEX.
} VLMSGINFO;

#pragma pack(pop)
#pragma pack(push, 8)

/**
 * @brief One history event of a message: 166 bytes, or the first 94 (short form).
 *
 * Filled by VlxGetMsgHistoryEx from the history that the server writes into
 * the message's control file. Texts are NUL-terminated; a date or time that
 * the server wrote out of range is 0.
 */
typedef struct VLMSGHISTORYEX {
    /**
     * Event: 1 sent, 2 received, 3 scanned, 4 send error, 5 receive error,
     * 6 scan error, 7 attempt, 8 submitted to the router, 9 accepted by the
     * router, 10 router error (7 to 10 only when routing events are asked for).
     */
    uint16_t Event;
    uint16_t Year;              ///< Time of the event: four-digit year.
    uint16_t Month;             ///< Month 1-12.
    uint16_t Day;               ///< Day 1-31.
    uint16_t Hour;              ///< Hour 0-23.
    uint16_t Minute;            ///< Minute 0-59.
    uint16_t Second;            ///< Second 0-59.
    uint16_t Addressee;         ///< Number of the addressee the event concerns.
    uint16_t Route;             ///< Route code, such as 2 fax, 3 fax fine, 4 fax superfine.
    char     RouteParams[41];   ///< Parameters of the route, at most 40 characters.
    char     Reserved1;         ///< Not used.
    uint16_t ErrorCode;         ///< The server's error code for the event; 0 when none.
    uint16_t Pages;             ///< Number of pages.
    uint16_t ConnectTime;       ///< Connection time in seconds.
    char     Device[13];        ///< Device that handled the event, at most 12 characters.
    char     Reserved2;         ///< Not used.
    char     RemoteServer[13];  ///< Remote server involved, at most 12 characters.
    char     Reserved3;         ///< Not used.
    char     AddresseeText[71]; ///< Addressee's text, at most 70 characters; long form only.
    char     Reserved4;         ///< Not used.
} VLMSGHISTORYEX;

/**
 * @brief The older history record (80 bytes): the first 80 bytes of
 * VLMSGHISTORYEX, of VlxGetMsgHistory.
 */
typedef struct VLMSGHISTORY {
    uint16_t Event;           ///< Event, as in VLMSGHISTORYEX.
    uint16_t Year;            ///< Time of the event: four-digit year.
    uint16_t Month;           ///< Month 1-12.
    uint16_t Day;             ///< Day 1-31.
    uint16_t Hour;            ///< Hour 0-23.
    uint16_t Minute;          ///< Minute 0-59.
    uint16_t Second;          ///< Second 0-59.
    uint16_t Addressee;       ///< Number of the addressee the event concerns.
    uint16_t Route;           ///< Route code, as in VLMSGHISTORYEX.
    char     RouteParams[41]; ///< Parameters of the route, at most 40 characters.
    char     Reserved1;       ///< Not used.
    uint16_t ErrorCode;       ///< The server's error code for the event; 0 when none.
    uint16_t Pages;           ///< Number of pages.
    uint16_t ConnectTime;     ///< Connection time in seconds.
    char     Device[13];      ///< Device that handled the event, at most 12 characters.
    char     Reserved2;       ///< Not used.
} VLMSGHISTORY;

/**
 * @brief A user's message defaults (72 bytes), as the user's USER.INI files set them.
 *
 * The automation server's new message starts from these values; no function
 * declared in this header fills the record.
 */
typedef struct VLMSGDEFAULTSEX {
    uint16_t Priority;       ///< 1 background, 2 normal, 3 urgent.
    uint16_t Header;         ///< Page header parts: 1 number, 2 to, 4 from, 8 date, 16 time.
    uint16_t Quality;        ///< 1 draft, 2 normal, 3 high.
    uint16_t SendTime;       ///< 1 at once, 2 off-peak, 3 at the time below.
    uint16_t SendYear;       ///< Time to send at: four-digit year.
    uint16_t SendMonth;      ///< Month 1-12.
    uint16_t SendDay;        ///< Day 1-31.
    uint16_t SendHour;       ///< Hour 0-23.
    uint16_t SendMinute;     ///< Minute 0-59.
    uint16_t SendSecond;     ///< Second 0-59.
    char     From[32];       ///< Sender name, at most 30 characters.
    char     Coversheet[10]; ///< Cover sheet name, at most 8 characters.
    char     Letterhead[10]; ///< Letterhead name, at most 8 characters.
} VLMSGDEFAULTSEX;

/** @brief Queue totals of the server (18 bytes): numbers of messages in each state. */
typedef struct VLSERVERINFOEX {
    uint16_t Deferred;       ///< Deferred to a later time.
    uint16_t WaitingResend;  ///< Waiting to be sent again.
    uint16_t WaitingConvert; ///< Waiting for conversion.
    uint16_t Converting;     ///< Being converted.
    uint16_t WaitingDevice;  ///< Waiting for a device.
    uint16_t Sending;        ///< Being sent.
    uint16_t Scanning;       ///< Being scanned.
    uint16_t RouterSub;      ///< Submitted to the router.
    uint16_t RemoteAccept;   ///< Accepted from remote servers.
} VLSERVERINFOEX;

/** @brief The older queue totals (14 bytes): the first seven counts of VLSERVERINFOEX. */
typedef struct VLSERVERINFO {
    uint16_t Deferred;       ///< Deferred to a later time.
    uint16_t WaitingResend;  ///< Waiting to be sent again.
    uint16_t WaitingConvert; ///< Waiting for conversion.
    uint16_t Converting;     ///< Being converted.
    uint16_t WaitingDevice;  ///< Waiting for a device.
    uint16_t Sending;        ///< Being sent.
    uint16_t Scanning;       ///< Being scanned.
} VLSERVERINFO;

/** @brief One fax device (44 bytes). Texts are NUL-terminated and upper case. */
typedef struct VLDEVICEINFOEX {
    char     Name[13];     ///< Device name, at most 12 characters.
    /**
     * Device status: 0 unknown, 1 idle, 2 error, 3 failed, 4 offline,
     * 6 waiting to connect, 7 sending, 8 receiving, 9 and 10 for the server's
     * states PS and PR, 11 waiting for a document to scan, 12 scanning,
     * 13 incoming call. 5 (busy) is not reported by this version.
     */
    uint16_t Status;
    char     User[9];      ///< User whose message the device handles, at most 8 characters.
    char     Message[9];   ///< Body name of that message.
    uint16_t TotalPages;   ///< Pages of the current message.
    uint16_t CurrentPage;  ///< Page being handled.
    uint16_t ConnectFails; ///< Connections that failed.
    uint16_t SendFails;    ///< Transmissions that failed.
    uint16_t SentOK;       ///< Transmissions that succeeded.
} VLDEVICEINFOEX;

/** @brief The older device record; its layout is that of VLDEVICEINFOEX. */
typedef VLDEVICEINFOEX VLDEVICEINFO;

/** @brief One link to a remote server (38 bytes). */
typedef struct VLLINKINFOEX {
    char     RemoteServer[13];  ///< Name of the remote server, at most 12 characters.
    /**
     * State of the link at the remote server: 1 online, 2 offline, 3 watchdog
     * failed, 4 initialising, 5 shut down, 6 unknown; 0 for any other state.
     */
    uint16_t RemoteLinkStatus;
    uint16_t LocalLinkStatus;   ///< State of the link here, as RemoteLinkStatus.
    int16_t  ConnectionStatus;  ///< 1 connected, 0 not connected, -1 not reported.
    int16_t  LinkActive;        ///< 1 both ends online and connected, 0 not, -1 unknown.
    uint16_t SentOK;            ///< Messages sent.
    uint16_t TimedOut;          ///< Messages timed out.
    uint16_t Rejected;          ///< Messages rejected.
    uint16_t DeviceError;       ///< Device errors.
    uint16_t RemoteServerError; ///< Errors of the remote server.
    uint16_t Unacknowledged;    ///< Messages not acknowledged.
    uint16_t Acknowledged;      ///< Messages acknowledged.
    uint16_t Received;          ///< Messages received.
} VLLINKINFOEX;

/**
 * @brief Request block of VlxGetServerStatusEx: 144 bytes, or the first 80.
 *
 * The caller sets the sizes, the capacities, the count pointers and the
 * arrays; the function fills what they point to. Each count receives the
 * total found, which may exceed the capacity; only as many records as the
 * capacity allows are stored.
 */
typedef struct VLSERVERSTATUSEX {
    int16_t          ServerInfoSize;      ///< Must be 18, the size of VLSERVERINFOEX.
    VLSERVERINFOEX  *ServerInfo;          ///< Receives the queue totals.
    int16_t          MaxDevices;          ///< Number of records that Devices holds.
    /**
     * Receives the number of devices. When NULL, the function allocates a
     * 2-byte count itself and stores its address here; the library never
     * frees it.
     */
    uint16_t        *DeviceCount;
    uint16_t         DeviceInfoSize;      ///< Must be 44, the size of VLDEVICEINFOEX.
    VLDEVICEINFOEX  *Devices;             ///< Receives the device records.
    int16_t          MaxLinks;            ///< Number of records that Links holds.
    uint16_t        *LinkCount;           ///< Receives the number of links; NULL: links not read.
    uint16_t         LinkInfoSize;        ///< Must be 38, the size of VLLINKINFOEX.
    VLLINKINFOEX    *Links;               ///< Receives the link records; NULL: none stored.
    int16_t          MaxCoversheets;      ///< Number of names that Coversheets holds.
    uint16_t        *CoversheetCount;     ///< Receives the number of cover sheets; NULL: not read.
    int16_t          CoversheetEntrySize; ///< Not used: every entry is 10 bytes.
    char            *Coversheets;         ///< Receives the names, 10 bytes each; may be NULL.
    int16_t          MaxLetterheads;      ///< Number of names that Letterheads holds.
    uint16_t        *LetterheadCount;     ///< Receives the number of letterheads; NULL: not read.
    int16_t          LetterheadEntrySize; ///< Not used: every entry is 10 bytes.
    char            *Letterheads;         ///< Receives the names, 10 bytes each; may be NULL.
} VLSERVERSTATUSEX;

#pragma pack(pop)

/** @name Sessions */
/** @{ */

/**
 * @brief Opens a session, for one fax user or for none, and returns its handle.
 *
 * The shared directories come from the configuration file (VELOMAR.INI on the
 * server, the per-user VLCLIENT.INI on a workstation) or from directories set
 * through the automation server. A name that contains a backslash is an
 * account name, looked up in the system's USERLIST.INI; any other name is the
 * fax user name itself. A session without a user can use only the functions
 * that need none (directory of the system, server status and control).
 *
 * @param handle        Receives the session handle.
 * @param userName      Fax user name (1 to 8 letters, digits, `_` or `-`; a leading
 *                      \@ marks a group), an account name such as `DOMAIN\jsmith`,
 *                      or NULL or "" for a session without a user.
 * @param lock          Non-zero to hold the user's lock file for the session's life,
 *                      so that the user cannot be logged on a second time.
 * @param errorCallback Receives the text of every failure of this session; may be NULL.
 * @return VL_OK; VL_E_INVALID_PARAM for a malformed name or a NULL handle;
 *         VL_E_INIT_FAIL when no configuration file is found or opened;
 *         VL_E_INVALID_INI_FILE when it lacks its paragraph or an area line;
 *         VL_E_INVALID_USER for an unknown account or a missing user directory;
 *         VL_E_FILE_ERROR when the user list cannot be opened or a user directory
 *         is a file; VL_E_ACCESS_DENIED when a user directory cannot be used;
 *         VL_E_PATH_NOT_FOUND when its name is too long; VL_E_CANNOT_LOG_ON when
 *         another session holds the user's lock; VL_E_MALLOC_FAILED.
 */
VLRESULT VLAPI_CALL VlxAPIInit(VLHANDLE *handle, const char *userName, uint16_t lock,
                               VLERRORPROC errorCallback);
/**
 * @brief Ends a session: releases the user's lock and frees the session.
 *
 * The handle must not be used afterwards.
 *
 * @param handle Session handle from VlxAPIInit.
 * @return VL_OK; VL_E_NOT_INIT when the handle designates no session.
 */
VLRESULT VLAPI_CALL VlxAPIClosedown(VLHANDLE handle);

/** @} */

/** @name Directories, version, escapes and unique file names */
/** @{ */

/**
 * @brief Copies the path of the user's outgoing message directory (V-OUT),
 * ending in a backslash.
 *
 * @param handle Session handle, with a user.
 * @param buffer Receives the path.
 * @param bufLen Size of buffer in bytes.
 * @return VL_OK; VL_E_NOT_INIT when the handle designates no session;
 *         VL_E_USER_NOT_INIT when the session has no user; VL_E_INVALID_PARAM
 *         when buffer is NULL; VL_E_BUFFER_TOO_SMALL when the path does not fit.
 */
VLRESULT VLAPI_CALL VlxGetUserOutDir(VLHANDLE handle, char *buffer, int16_t bufLen);
/**
 * @brief Copies the path of the user's incoming message directory (V-IN),
 * ending in a backslash.
 *
 * @param handle Session handle, with a user.
 * @param buffer Receives the path.
 * @param bufLen Size of buffer in bytes.
 * @return VL_OK; VL_E_NOT_INIT when the handle designates no session;
 *         VL_E_USER_NOT_INIT when the session has no user; VL_E_INVALID_PARAM
 *         when buffer is NULL; VL_E_BUFFER_TOO_SMALL when the path does not fit.
 */
VLRESULT VLAPI_CALL VlxGetUserInDir(VLHANDLE handle, char *buffer, int16_t bufLen);
/**
 * @brief Copies the path of the user's own directory: the user area, the user
 * name and a backslash.
 *
 * @param handle Session handle, with a user.
 * @param buffer Receives the path.
 * @param bufLen Size of buffer in bytes.
 * @return VL_OK; VL_E_NOT_INIT when the handle designates no session;
 *         VL_E_USER_NOT_INIT when the session has no user; VL_E_INVALID_PARAM
 *         when buffer is NULL; VL_E_BUFFER_TOO_SMALL when the path does not fit.
 */
VLRESULT VLAPI_CALL VlxGetUserArea(VLHANDLE handle, char *buffer, int16_t bufLen);
/**
 * @brief Copies the path of the server's system directory, ending in a
 * backslash; needs no user.
 *
 * @param handle Session handle.
 * @param buffer Receives the path.
 * @param bufLen Size of buffer in bytes.
 * @return VL_OK; VL_E_NOT_INIT when the handle designates no session;
 *         VL_E_INVALID_PARAM when buffer is NULL; VL_E_BUFFER_TOO_SMALL when the
 *         path does not fit.
 */
VLRESULT VLAPI_CALL VlxGetSystemArea(VLHANDLE handle, char *buffer, int16_t bufLen);
/**
 * @brief Returns the version of this interface; needs no session.
 *
 * @param buffer  Receives VL_API_VERSION_TEXT; may be NULL.
 * @param bufLen  Size of buffer in bytes (at least 10).
 * @param version Receives VL_API_VERSION_NUMBER; may be NULL.
 * @return VL_OK; VL_E_BUFFER_TOO_SMALL when the text does not fit.
 */
VLRESULT VLAPI_CALL VlxGetAPIVersion(char *buffer, int16_t bufLen, uint16_t *version);
/**
 * @brief Sets a switch of the process, for all its sessions.
 *
 * Names, compared without regard to case: "DISABLECHECKSERVER" (non-zero:
 * VlxCheckServer reports a running server without looking); "APPLICATION"
 * (the caller's application identifier; 13398 makes tracing follow the
 * configuration's "MailTrace:" line instead of "Trace:"); "ENABLESENTITEMS"
 * (1: keep every message submitted in the sender's sent items, other values:
 * keep none); "DELETEFAILEDFAXES" (0: a message marked for deletion through
 * the automation server is deleted only when sent, otherwise also when it
 * fails); "TRACE" (non-zero: write the trace log VLAPI.LOG in the temporary
 * directory, as the configuration's "Trace:" line does).
 *
 * @param handle Not used: the switches belong to the process.
 * @param name   Name of the switch.
 * @param value  New value.
 * @return VL_OK; VL_E_INVALID_PARAM for a NULL or unknown name.
 */
VLRESULT VLAPI_CALL VlxEscape(VLHANDLE handle, const char *name, int32_t value);
/**
 * @brief Creates a new empty file with a unique name in a directory and
 * returns its base name.
 *
 * The name is a tilde, the prefix, three characters and the extension; it is
 * also unused by the files named in the directory's message list.
 *
 * @param handle    Session handle; no user needed.
 * @param prefix    Exactly 4 characters.
 * @param extension 1 to 3 characters, without the dot.
 * @param path      Directory, 1 to 256 characters; a backslash is added when missing.
 * @param name      Receives the 8-character name without extension: give at least 9 bytes.
 * @return VL_OK; VL_E_NOT_INIT when the handle designates no session;
 *         VL_E_INVALID_PARAM for a bad prefix, extension or path or a NULL name;
 *         VL_E_PATH_NOT_FOUND when the directory does not exist;
 *         VL_E_TOO_MANY_FILES when every name is taken; VL_E_FILE_CREATE_ERROR
 *         when the file cannot be created.
 */
VLRESULT VLAPI_CALL VlxCreateAutoFile(VLHANDLE handle, const char *prefix, const char *extension,
                                      const char *path, char *name);

/** @} */

/** @name Message directories */
/** @{ */

/**
 * @brief Lists the messages of the user's outgoing or incoming directory.
 *
 * The first maxEntries messages of the directory's message list are stored
 * 272 bytes apart, whatever recordSize says; count receives the number of all
 * messages, which may exceed maxEntries. A group user's outgoing directory
 * has no list: the call succeeds and leaves count as it was.
 *
 * @param handle     Session handle, with a user.
 * @param directory  VL_DIR_OUT or VL_DIR_IN.
 * @param maxEntries Number of records that records holds; 0 to count only.
 * @param count      Receives the number of messages.
 * @param recordSize Part of each record to fill: 272 (all); 114, 116, 160 or 260 for
 *                   older callers (status, body, comment, subject; user status from 116).
 * @param records    Array of maxEntries VLMSGINFOEX; may be NULL when maxEntries is 0.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM for a bad
 *         selector or size or a NULL argument; VL_E_FILE_NOT_FOUND, VL_E_ACCESS_DENIED
 *         or VL_E_FILE_ERROR when the server directory cannot be used;
 *         VL_E_INFO_FILE_OPEN_ERROR when the list cannot be opened;
 *         VL_E_INFO_FILE_INVALID for a malformed entry (count holds the entries before it).
 */
VLRESULT VLAPI_CALL VlxGetMsgListEx(VLHANDLE handle, uint16_t directory, int16_t maxEntries,
                                    int16_t *count, uint16_t recordSize, VLMSGINFOEX *records);
/**
 * @brief Lists the messages of a directory in the older record: body name,
 * comment and status.
 *
 * @param handle     Session handle, with a user.
 * @param directory  VL_DIR_OUT or VL_DIR_IN.
 * @param maxEntries Number of records that records holds; 0 to count only.
 * @param count      Receives the number of messages, which may exceed maxEntries.
 * @param records    Array of maxEntries VLMSGINFO.
 * @return As VlxGetMsgListEx, and VL_E_MALLOC_FAILED.
 */
VLRESULT VLAPI_CALL VlxGetMsgList(VLHANDLE handle, uint16_t directory, int16_t maxEntries,
                                  int16_t *count, VLMSGINFO *records);
/**
 * @brief Reads the entry of one message from a directory's message list.
 *
 * @param handle     Session handle, with a user.
 * @param directory  VL_DIR_OUT or VL_DIR_IN.
 * @param body       Body name of the message, 1 to 8 characters.
 * @param recordSize Part of the record to fill, as for VlxGetMsgListEx.
 * @param info       Receives the entry.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM for a bad
 *         size, body name or selector or a NULL info; VL_E_INFO_FILE_OPEN_ERROR when
 *         the list cannot be opened; VL_E_MSG_UNKNOWN when it has no such message;
 *         VL_E_INFO_FILE_INVALID when an entry up to it is malformed.
 */
VLRESULT VLAPI_CALL VlxGetMsgInfoEx(VLHANDLE handle, uint16_t directory, const char *body,
                                    uint16_t recordSize, VLMSGINFOEX *info);
/**
 * @brief Reads the entry of one message in the older record.
 *
 * @param handle    Session handle, with a user.
 * @param directory VL_DIR_OUT or VL_DIR_IN.
 * @param body      Body name of the message, 1 to 8 characters.
 * @param info      Receives body name, comment and status (also when the call fails);
 *                  may be NULL.
 * @return As VlxGetMsgInfoEx.
 */
VLRESULT VLAPI_CALL VlxGetMsgInfo(VLHANDLE handle, uint16_t directory, const char *body,
                                  VLMSGINFO *info);
/**
 * @brief Tells whether a directory's message list has changed, for polling.
 *
 * The answer is 1 when the list file changed since this session's last
 * answer of 1, or when that answer is more than 120 seconds old; else 0.
 *
 * @param handle    Session handle, with a user.
 * @param directory VL_DIR_OUT or VL_DIR_IN.
 * @param isNew     Receives 1 or 0; NULL resets the session's memory, so that the
 *                  next call answers 1.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM for a bad
 *         selector; VL_E_INFO_FILE_ERROR when the list file cannot be examined.
 */
VLRESULT VLAPI_CALL VlxCheckNewMsgStatus(VLHANDLE handle, uint16_t directory, uint16_t *isNew);
/**
 * @brief Reads the names of a message's document and attachment files from its
 * control file in the user's outgoing directory.
 *
 * Both buffers are cleared first. Only slot 0 of each is filled: with the
 * last "Document:" and the last "Attach:" line of the control file.
 *
 * @param handle      Session handle, with a user.
 * @param info        Record whose Body names the message; nothing else is read.
 * @param documents   VL_DOCUMENT_SLOTS slots of VL_DOCUMENT_SLOT_SIZE bytes.
 * @param attachments VL_DOCUMENT_SLOTS slots of VL_DOCUMENT_SLOT_SIZE bytes.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM for a NULL
 *         argument or a bad body name; VL_E_INFO_FILE_OPEN_ERROR when the control
 *         file cannot be opened.
 */
VLRESULT VLAPI_CALL VlxGetDocuments(VLHANDLE handle, const VLMSGINFOEX *info, char *documents,
                                    char *attachments);

/** @} */

/** @name Submission */
/** @{ */

/**
 * @brief Submits a message whose control and data files are already in the
 * user's outgoing directory.
 *
 * The files are Body + ".CTL" and Body + "." + extension. The message is
 * added to the directory's message list and a request hands it to the server;
 * the server then sends it and reports its progress in the list.
 *
 * @param handle     Session handle, with a user.
 * @param extension  Extension of the data file, 1 to 3 characters of a known format
 *                   (such as TXT, TIF, PDF).
 * @param recordSize 272; or 114, 116, 160 or 260 for older callers (MsgType and
 *                   Organisation are read from 160 on, Custom from 260 on).
 * @param info       Body (1 to 8 characters), Comment (at most 40), Subject (at most
 *                   60), MsgType, Organisation and Custom of the message.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_SERVER_NOT_RUNNING;
 *         VL_E_INVALID_PARAM for a bad size, body name or extension or a text too
 *         long; VL_E_FILE_NOT_FOUND when a file is missing; VL_E_MSG_EXISTS when the
 *         list has the message already; VL_E_INFO_FILE_OPEN_ERROR,
 *         VL_E_INFO_FILE_ERROR or VL_E_INFO_FILE_INVALID when the list cannot be
 *         used; VL_E_CANNOT_SUBMIT when the request cannot be written.
 */
VLRESULT VLAPI_CALL VlxSendMsgEx(VLHANDLE handle, const char *extension, uint16_t recordSize,
                                 VLMSGINFOEX *info);
/**
 * @brief Submits a message whose files are ready, given by body name and comment.
 *
 * @param handle    Session handle, with a user.
 * @param body      Body name of the message, 1 to 8 characters.
 * @param extension Extension of the data file, as for VlxSendMsgEx.
 * @param comment   Comment, at most 40 characters; may be NULL.
 * @return As VlxSendMsgEx.
 */
VLRESULT VLAPI_CALL VlxSendMsg(VLHANDLE handle, const char *body, const char *extension,
                               const char *comment);
/**
 * @brief Writes the body of a submit file's first \%\%[TEXT] or \%\%[FILE]
 * section into a data file.
 *
 * The submit file must begin with that section. ASCII and EPSON text is
 * copied up to the next section, EPSON formatting commands becoming printer
 * codes; other formats are copied unchanged. On failure the data file is
 * deleted.
 *
 * @param handle     Session handle, with a user.
 * @param submitFile Path of the submit file, at most 268 characters.
 * @param dataFile   Path of the data file to create, at most 268 characters.
 * @param extension  Extension of the data format, 1 to 3 characters (such as TXT, EPN).
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM for a NULL
 *         or too long path or a bad extension; VL_E_FILE_OPEN_ERROR when the submit
 *         file cannot be opened; VL_E_FILE_CREATE_ERROR when the data file cannot be
 *         created; VL_E_SUBMIT_FILE_INVALID when the section is missing or malformed;
 *         VL_E_FILE_NOT_FOUND when a \%\%[FILE] section names a missing file;
 *         VL_E_FILE_ERROR on a read or write error.
 */
VLRESULT VLAPI_CALL VlxCreateDataFile(VLHANDLE handle, const char *submitFile, const char *dataFile,
                                      const char *extension);
/**
 * @brief Writes a control file from a submit file's first \%\%[MESSAGE] section
 * and fills the message record from it.
 *
 * The user's message defaults are read first, then the section's options and
 * addressees. On failure the control file is deleted.
 *
 * @param handle       Session handle, with a user.
 * @param submitFile   Path of the submit file, at most 268 characters.
 * @param controlFile  Path of the control file to create, at most 268 characters.
 * @param extension    Extension of the expected data format, or NULL for ASCII with no
 *                     check.
 * @param extensionOut Receives the extension of the format the submit file sets.
 * @param recordSize   Part of info to fill, as for VlxGetMsgListEx.
 * @param info         In: Body, 1 to 8 characters. Out: Comment, Subject and, as the
 *                     size allows, MsgType, Organisation and Custom.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM for a bad
 *         size, path, body name or extension or a NULL argument; VL_E_FILE_OPEN_ERROR
 *         when the submit file cannot be opened; VL_E_FILE_CREATE_ERROR when the
 *         control file cannot be created; VL_E_SUBMIT_FILE_INVALID when the section
 *         is missing or malformed or its format differs from extension;
 *         VL_E_CANNOT_READ_MSG_DEFAULTS; VL_E_FILE_ERROR on a read or write error.
 */
VLRESULT VLAPI_CALL VlxCreateCtlFileEx(VLHANDLE handle, const char *submitFile,
                                       const char *controlFile, const char *extension,
                                       char *extensionOut, uint16_t recordSize, VLMSGINFOEX *info);
/**
 * @brief Writes a control file from a submit file, given the body name.
 *
 * @param handle       Session handle, with a user.
 * @param submitFile   Path of the submit file, at most 268 characters.
 * @param controlFile  Path of the control file to create, at most 268 characters.
 * @param body         Body name of the message, 1 to 8 characters.
 * @param extension    Extension of the expected data format, or NULL for ASCII.
 * @param extensionOut Receives the extension of the format the submit file sets:
 *                     give at least 4 bytes.
 * @param comment      At most 40 characters, or NULL; it is only checked: the control
 *                     file takes its comment from the submit file.
 * @return As VlxCreateCtlFileEx.
 */
VLRESULT VLAPI_CALL VlxCreateCtlFile(VLHANDLE handle, const char *submitFile,
                                     const char *controlFile, const char *body,
                                     const char *extension, char *extensionOut,
                                     const char *comment);
/**
 * @brief Submits the first message of a submit file in one call.
 *
 * Creates a control file with a unique name (as VlxCreateAutoFile) in the
 * user's outgoing directory, writes it and the data files from the submit
 * file, and submits the message as VlxSendMsgEx. On failure every file it
 * wrote is deleted.
 *
 * @param handle     Session handle, with a user.
 * @param submitFile Path of the submit file, at most 268 characters.
 * @param prefix     Exactly 4 characters, the start of the message's name.
 * @param body       Receives the body name of the new message: give at least 9 bytes.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_SERVER_NOT_RUNNING;
 *         VL_E_INVALID_PARAM for a NULL argument, a too long path or a prefix not of
 *         4 characters; VL_E_FILE_OPEN_ERROR when the submit file cannot be opened;
 *         VL_E_SUBMIT_FILE_INVALID for a malformed submit file;
 *         VL_E_CANNOT_READ_MSG_DEFAULTS; VL_E_FILE_NOT_FOUND or VL_E_FILE_ERROR for
 *         a file that cannot be read or written; the codes of VlxCreateAutoFile and
 *         VlxSendMsgEx.
 */
VLRESULT VLAPI_CALL VlxSendSubmitFile(VLHANDLE handle, const char *submitFile, const char *prefix,
                                      char *body);
/**
 * @brief Logs a user on, submits the first message of a submit file and logs
 * off again: for callers that cannot keep a handle.
 *
 * The session takes no lock and has no error callback; the body name of the
 * new message is not returned.
 *
 * @param userName   Fax user name or account name, as for VlxAPIInit.
 * @param submitFile Path of the submit file, at most 268 characters.
 * @param prefix     Exactly 4 characters, the start of the message's name.
 * @return The codes of VlxAPIInit and of VlxSendSubmitFile.
 */
VLRESULT VLAPI_CALL VlxVBSendSubmitFile(const char *userName, const char *submitFile,
                                        const char *prefix);

/** @} */

/** @name Message defaults */
/** @{ */

/**
 * @brief Copies the name of the user's default cover sheet; empty when none.
 *
 * The default comes from the system's USER.INI, overridden by the user's own.
 *
 * @param handle Session handle, with a user.
 * @param buffer Receives the name.
 * @param bufLen Size of buffer in bytes.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM when buffer
 *         is NULL; VL_E_CANNOT_READ_MSG_DEFAULTS when a USER.INI cannot be read;
 *         VL_E_BUFFER_TOO_SMALL when the name does not fit.
 */
VLRESULT VLAPI_CALL VlxGetUserCoversheet(VLHANDLE handle, char *buffer, int16_t bufLen);
/**
 * @brief Copies the user's default sender name; empty when none.
 *
 * The default comes from the system's USER.INI, overridden by the user's own.
 *
 * @param handle Session handle, with a user.
 * @param buffer Receives the name.
 * @param bufLen Size of buffer in bytes.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM when buffer
 *         is NULL; VL_E_CANNOT_READ_MSG_DEFAULTS when a USER.INI cannot be read;
 *         VL_E_BUFFER_TOO_SMALL when the name does not fit.
 */
VLRESULT VLAPI_CALL VlxGetUserFromname(VLHANDLE handle, char *buffer, int16_t bufLen);

/** @} */

/** @name Message histories */
/** @{ */

/**
 * @brief Reads the events of a message's history from its control file.
 *
 * A message without history gives VL_OK with count 0.
 *
 * @param handle          Session handle, with a user.
 * @param directory       VL_DIR_OUT for the outgoing directory; any other value reads
 *                        the incoming directory.
 * @param body            Body name of the message, 1 to 8 characters.
 * @param addresseeFilter 0 for the events of all addressees, else only those of the
 *                        addressee with this number.
 * @param includeRouting  Non-zero to include attempts and router events.
 * @param maxEntries      Number of records that records holds.
 * @param count           Receives the number of matching events, which may exceed
 *                        maxEntries.
 * @param recordSize      166, or 94 for the short form without AddresseeText.
 * @param records         Array of maxEntries records, recordSize bytes apart.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM for a bad
 *         body name or size or a NULL argument; VL_E_MSG_UNKNOWN when the control
 *         file does not exist; VL_E_CONTROL_FILE_OPEN_ERROR when it cannot be opened.
 */
VLRESULT VLAPI_CALL VlxGetMsgHistoryEx(VLHANDLE handle, uint16_t directory, const char *body,
                                       uint16_t addresseeFilter, uint16_t includeRouting,
                                       int16_t maxEntries, uint16_t *count, int16_t recordSize,
                                       VLMSGHISTORYEX *records);
/**
 * @brief Reads the events of a message's history in the older 80-byte record.
 *
 * @param handle          Session handle, with a user.
 * @param directory       VL_DIR_OUT, or any other value for the incoming directory.
 * @param body            Body name of the message, 1 to 8 characters.
 * @param addresseeFilter 0 for all addressees, else this addressee's number.
 * @param includeRouting  Non-zero to include attempts and router events.
 * @param maxEntries      Number of records that records holds.
 * @param count           Receives the number of matching events.
 * @param records         Array of maxEntries VLMSGHISTORY.
 * @return As VlxGetMsgHistoryEx, and VL_E_MALLOC_FAILED.
 */
VLRESULT VLAPI_CALL VlxGetMsgHistory(VLHANDLE handle, uint16_t directory, const char *body,
                                     uint16_t addresseeFilter, uint16_t includeRouting,
                                     int16_t maxEntries, uint16_t *count, VLMSGHISTORY *records);

/** @} */

/**
 * @name Message control and server requests
 * Each of these (but VlxDeleteMsg) writes a request file for the server and
 * returns once the request is handed over; the server acts on it later.
 */
/** @{ */

/**
 * @brief Asks the server to abort a message and delete it.
 *
 * @param handle    Session handle, with a user.
 * @param directory VL_DIR_OUT or VL_DIR_IN.
 * @param body      Body name of the message, 1 to 8 characters.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_SERVER_NOT_RUNNING;
 *         VL_E_INVALID_PARAM for a bad body name or selector; VL_E_CANNOT_SUBMIT,
 *         VL_E_FILE_NOT_FOUND, VL_E_ACCESS_DENIED or VL_E_FILE_ERROR when the
 *         request cannot be written.
 */
VLRESULT VLAPI_CALL VlxAbortMsg(VLHANDLE handle, uint16_t directory, const char *body);
/**
 * @brief Asks the server to hold an outgoing message: it is not sent until released.
 *
 * @param handle    Session handle, with a user.
 * @param directory Must be VL_DIR_OUT.
 * @param body      Body name of the message, 1 to 8 characters.
 * @return As VlxAbortMsg.
 */
VLRESULT VLAPI_CALL VlxHoldMsg(VLHANDLE handle, uint16_t directory, const char *body);
/**
 * @brief Asks the server to release a held outgoing message for sending.
 *
 * @param handle    Session handle, with a user.
 * @param directory Must be VL_DIR_OUT.
 * @param body      Body name of the message, 1 to 8 characters.
 * @return As VlxAbortMsg.
 */
VLRESULT VLAPI_CALL VlxReleaseMsg(VLHANDLE handle, uint16_t directory, const char *body);
/**
 * @brief Asks the server to abort a message and delete it, checking its message ID.
 *
 * @param handle    Session handle, with a user.
 * @param directory VL_DIR_OUT or VL_DIR_IN.
 * @param body      Body name of the message, 1 to 8 characters.
 * @param messageId NULL, or the ID that the "MessageID:" line of the message's history
 *                  must hold exactly.
 * @return As VlxAbortMsg; VL_E_MSG_UNKNOWN when the message ID differs or cannot be read.
 */
VLRESULT VLAPI_CALL VlxAbortMsgEx(VLHANDLE handle, uint16_t directory, const char *body,
                                  const char *messageId);
/**
 * @brief Asks the server to hold an outgoing message, checking its message ID.
 *
 * @param handle    Session handle, with a user.
 * @param directory Must be VL_DIR_OUT.
 * @param body      Body name of the message, 1 to 8 characters.
 * @param messageId NULL, or the ID the message's history must hold exactly.
 * @return As VlxAbortMsgEx.
 */
VLRESULT VLAPI_CALL VlxHoldMsgEx(VLHANDLE handle, uint16_t directory, const char *body,
                                 const char *messageId);
/**
 * @brief Asks the server to release a held outgoing message, checking its message ID.
 *
 * @param handle    Session handle, with a user.
 * @param directory Must be VL_DIR_OUT.
 * @param body      Body name of the message, 1 to 8 characters.
 * @param messageId NULL, or the ID the message's history must hold exactly.
 * @return As VlxAbortMsgEx.
 */
VLRESULT VLAPI_CALL VlxReleaseMsgEx(VLHANDLE handle, uint16_t directory, const char *body,
                                    const char *messageId);
/**
 * @brief Asks the server to rush a queued outgoing message, checking its message ID.
 *
 * @param handle    Session handle, with a user.
 * @param directory Must be VL_DIR_OUT.
 * @param body      Body name of the message, 1 to 8 characters.
 * @param messageId NULL, or the ID the message's history must hold exactly.
 * @return As VlxAbortMsgEx.
 */
VLRESULT VLAPI_CALL VlxRushMsgEx(VLHANDLE handle, uint16_t directory, const char *body,
                                 const char *messageId);
/**
 * @brief Removes a completed message from a directory's message list, and its
 * files if asked, without involving the server.
 *
 * Only a completed message (status 30 to 33) can be removed; the files of a
 * message that the list does not hold are still deleted. With body NULL the
 * whole list is emptied, which needs the server stopped.
 *
 * @param handle      Session handle, with a user.
 * @param directory   VL_DIR_OUT or VL_DIR_IN.
 * @param body        Body name of the message, 1 to 8 characters, or NULL for all.
 * @param deleteFiles Non-zero to delete the message's files as well.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_INVALID_PARAM for a bad
 *         selector or body name; VL_E_MSG_NOT_COMPLETED; VL_E_SERVER_RUNNING when
 *         body is NULL and the server runs; VL_E_INFO_FILE_OPEN_ERROR,
 *         VL_E_INFO_FILE_ERROR or VL_E_INFO_FILE_INVALID when the list cannot be used.
 */
VLRESULT VLAPI_CALL VlxDeleteMsg(VLHANDLE handle, uint16_t directory, const char *body,
                                 uint16_t deleteFiles);
/**
 * @brief Asks the server to shut down; needs no user.
 *
 * Poll VlxCheckServer to see it stop.
 *
 * @param handle   Session handle.
 * @param reserved Must be 0.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_SERVER_NOT_RUNNING; VL_E_INVALID_PARAM when
 *         reserved is not 0; VL_E_CANNOT_SUBMIT, VL_E_FILE_NOT_FOUND,
 *         VL_E_ACCESS_DENIED or VL_E_FILE_ERROR when the request cannot be written.
 */
VLRESULT VLAPI_CALL VlxStopServer(VLHANDLE handle, uint16_t reserved);
/**
 * @brief Asks the server to restart; needs no user.
 *
 * @param handle   Session handle.
 * @param reserved Must be 0.
 * @return As VlxStopServer.
 */
VLRESULT VLAPI_CALL VlxRestartServer(VLHANDLE handle, uint16_t reserved);

/** @} */

/** @name Server status, liveness and start */
/** @{ */

/**
 * @brief Reads the server's status: queue totals, devices and links, and the
 * names of its cover sheets and letterheads; needs no user.
 *
 * On failure the records may be partly filled.
 *
 * @param handle    Session handle.
 * @param blockSize 144 (sizeof(VLSERVERSTATUSEX)) for everything, or 80 to stop after
 *                  the links.
 * @param status    The request block, prepared by the caller.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_SERVER_NOT_RUNNING; VL_E_INVALID_PARAM for a
 *         bad block or record size or a NULL block or totals; VL_E_FILE_NOT_FOUND
 *         when the status file or a name list does not exist; VL_E_FILE_OPEN_ERROR
 *         when one cannot be opened.
 */
VLRESULT VLAPI_CALL VlxGetServerStatusEx(VLHANDLE handle, int16_t blockSize,
                                         VLSERVERSTATUSEX *status);
/**
 * @brief Reads the server's queue totals and devices in the older records.
 *
 * @param handle      Session handle.
 * @param infoSize    Must be 14, the size of VLSERVERINFO.
 * @param info        Receives the queue totals.
 * @param maxDevices  Number of records that devices holds.
 * @param deviceCount Receives the number of devices, which may exceed maxDevices;
 *                    may be NULL.
 * @param unused      Not used; pass NULL.
 * @param devices     Array of maxDevices VLDEVICEINFO; may be NULL.
 * @return As VlxGetServerStatusEx, and VL_E_MALLOC_FAILED.
 */
VLRESULT VLAPI_CALL VlxGetServerStatus(VLHANDLE handle, int16_t infoSize, VLSERVERINFO *info,
                                       int16_t maxDevices, int16_t *deviceCount, void *unused,
                                       VLDEVICEINFO *devices);
/**
 * @brief Tells whether the fax server is running.
 *
 * The running server holds its lock file VELOMAR.LOK in the request directory
 * open; no network connection is made. The escape "DISABLECHECKSERVER" makes
 * the check succeed without looking.
 *
 * @param handle Session handle, or 0 to check with the configuration alone.
 * @return VL_OK when the server runs; VL_E_SERVER_NOT_RUNNING when it does not;
 *         VL_E_NOT_INIT for a non-zero handle that designates no session;
 *         VL_E_INIT_FAIL or VL_E_INVALID_INI_FILE when handle is 0 and the
 *         configuration cannot be read; VL_E_MALLOC_FAILED.
 */
VLRESULT VLAPI_CALL VlxCheckServer(VLHANDLE handle);
/**
 * @brief Starts the server on this machine; needs no user.
 *
 * Runs the program named by the "Sysman:" line of a server paragraph of the
 * system's SETUP.INI, giving it the paragraph name. It does not wait for the
 * server: poll VlxCheckServer to see it come up.
 *
 * @param handle    Session handle.
 * @param unused    Not used; pass 0.
 * @param paragraph Paragraph name in brackets, such as "[SERVER]"; NULL or "" for
 *                  "[SERVER]".
 * @return VL_OK when the program was started; VL_E_NOT_INIT; VL_E_SERVER_RUNNING
 *         when the server runs already; VL_E_INVALID_PARAM for a paragraph name
 *         without brackets; VL_E_SERVER_INI_FILE_ERROR when SETUP.INI, the paragraph
 *         or its program line is missing or invalid; VL_E_NO_START_SYSMAN when the
 *         program cannot be started; the other codes of VlxCheckServer.
 */
VLRESULT VLAPI_CALL VlxStartServer(VLHANDLE handle, uint16_t unused, const char *paragraph);

/** @} */

/**
 * @name Print to fax
 * A document printed to the fax printer is written by its driver to a file
 * that the application names, instead of being submitted.
 */
/** @{ */

/**
 * @brief Makes the fax printer write its next job to fileName.
 *
 * Deletes an existing file of that name and records the name in the value
 * "APIPrint" of the current user's registry key SOFTWARE\\Ornavex\\Velomar,
 * which must exist. Poll VlxIsPrintComplete, then call VlxCancelPrint.
 *
 * @param handle   Session handle, with a user.
 * @param fileName Full path of the output file.
 * @return VL_OK; VL_E_INVALID_PARAM when fileName is NULL; VL_E_NOT_INIT;
 *         VL_E_USER_NOT_INIT; VL_E_FILE_ERROR when an old file cannot be deleted;
 *         VL_E_ACCESS_DENIED when the file or the registry key may not be used;
 *         VL_E_REGISTRY_ERROR when the value cannot be written.
 */
VLRESULT VLAPI_CALL VlxStartPrint(VLHANDLE handle, const char *fileName);
/**
 * @brief Tells whether the fax printer has finished writing the output file.
 *
 * @param handle   Session handle, with a user.
 * @param fileName Full path of the output file, as given to VlxStartPrint.
 * @param complete Receives 1 when the file exists and the driver has closed it,
 *                 else 0.
 * @return VL_OK, also while the file is missing or being written;
 *         VL_E_INVALID_PARAM for a NULL argument; VL_E_NOT_INIT; VL_E_USER_NOT_INIT;
 *         VL_E_ACCESS_DENIED when the file may not be opened; VL_E_FILE_ERROR for any
 *         other failure to open it.
 */
VLRESULT VLAPI_CALL VlxIsPrintComplete(VLHANDLE handle, const char *fileName, int32_t *complete);
/**
 * @brief Ends print to fax: clears the name recorded by VlxStartPrint, so that
 * printed jobs are submitted again.
 *
 * @param handle Session handle, with a user.
 * @return VL_OK; VL_E_NOT_INIT; VL_E_USER_NOT_INIT; VL_E_ACCESS_DENIED when the
 *         registry key may not be written; VL_E_REGISTRY_ERROR when the value cannot
 *         be written.
 */
VLRESULT VLAPI_CALL VlxCancelPrint(VLHANDLE handle);

/** @} */

#ifdef __cplusplus
}
#endif

/** @cond */
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
/** @endcond */

#endif /* VLAPI_H */
