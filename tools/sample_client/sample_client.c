/*
 * sample_client - a small client of Vlapi64.dll.
 *
 *   sample_client [TREE]
 *
 * Creates a sample fax tree in the directory TREE (default: sample-tree in
 * the current directory): the system, server, request and users areas, a
 * user list and the user JSMITH with his directories. It then writes the
 * per-user client configuration file that points at the tree, loads the
 * library, logs JSMITH on, prints the library's version and the session's
 * directories, and logs off.
 */
#include <windows.h>
#include <shlobj.h>
#include <stdio.h>
#include <string.h>

#include "vlapi.h"

typedef VLRESULT(VLAPI_CALL *InitFn)(VLHANDLE *, const char *, uint16_t, VLERRORPROC);
typedef VLRESULT(VLAPI_CALL *ClosedownFn)(VLHANDLE);
typedef VLRESULT(VLAPI_CALL *GetTextFn)(VLHANDLE, char *, int16_t);
typedef VLRESULT(VLAPI_CALL *VersionFn)(char *, int16_t, uint16_t *);

static void VLAPI_CALL ShowError(const char *text) { printf("  library reports: %s\n", text); }

static int MakeDir(const char *root, const char *relative) {
  char path[MAX_PATH];
  snprintf(path, sizeof path, "%s\\%s", root, relative);
  if (CreateDirectoryA(path, NULL) || GetLastError() == ERROR_ALREADY_EXISTS) return 1;
  fprintf(stderr, "cannot create %s (error %lu)\n", path, (unsigned long)GetLastError());
  return 0;
}

static int WriteText(const char *path, const char *text) {
  FILE *f = fopen(path, "wb");
  if (!f) {
    fprintf(stderr, "cannot write %s\n", path);
    return 0;
  }
  fputs(text, f);
  fclose(f);
  return 1;
}

/* Builds the tree under root and returns 1 on success. */
static int CreateSampleTree(const char *root) {
  static const char *const directories[] = {
      "", "SYSTEM", "SYSTEM\\V-DB", "SYSTEM\\V-COVER", "SYSTEM\\V-LETTER", "SERVER",
      "REQUEST", "USERS", "USERS\\JSMITH", "USERS\\JSMITH\\V-DB", "USERS\\JSMITH\\V-OUT",
      "USERS\\JSMITH\\V-IN"};
  char path[MAX_PATH];
  size_t i;
  CreateDirectoryA(root, NULL);
  for (i = 0; i < sizeof directories / sizeof directories[0]; ++i)
    if (!MakeDir(root, directories[i])) return 0;
  snprintf(path, sizeof path, "%s\\SYSTEM\\V-DB\\USERLIST.INI", root);
  return WriteText(path,
                   "[VELOMAR]\r\nType: UserList\r\nRevision: A\r\n\r\n"
                   "[USER]\r\nUsername: jsmith\r\nName: JSMITH\r\n\r\n"
                   "[GROUP]\r\nName: @SALES\r\n");
}

/* Writes "%APPDATA%\Ornavex\Velomar Client\VLCLIENT.INI" naming the tree. */
static int WriteClientConfig(const char *root) {
  char folder[MAX_PATH], path[MAX_PATH], text[4 * MAX_PATH + 200];
  if (FAILED(SHGetFolderPathA(NULL, CSIDL_APPDATA | CSIDL_FLAG_CREATE, NULL, 0, folder))) {
    fprintf(stderr, "no application data folder\n");
    return 0;
  }
  snprintf(path, sizeof path, "%s\\Ornavex", folder);
  CreateDirectoryA(path, NULL);
  snprintf(path, sizeof path, "%s\\Ornavex\\Velomar Client", folder);
  CreateDirectoryA(path, NULL);
  snprintf(path, sizeof path, "%s\\Ornavex\\Velomar Client\\VLCLIENT.INI", folder);
  snprintf(text, sizeof text,
           "[VELOMAR]\r\nType: ClientConfig\r\nRevision: A\r\n\r\n[WORKSTATION]\r\n"
           "AllUserArea: %s\\USERS\\\r\nRequestArea: %s\\REQUEST\\\r\n"
           "SystemArea: %s\\SYSTEM\\\r\nServerArea: %s\\SERVER\\\r\n",
           root, root, root, root);
  printf("Client configuration: %s\n", path);
  return WriteText(path, text);
}

static FARPROC Entry(HMODULE library, const char *name) {
  FARPROC entry = GetProcAddress(library, name);
  if (!entry) fprintf(stderr, "Vlapi64.dll does not export %s\n", name);
  return entry;
}

int main(int argc, char **argv) {
  char root[MAX_PATH], text[300];
  HMODULE library;
  InitFn init;
  ClosedownFn closedown;
  GetTextFn outDir, inDir, userArea, systemArea;
  VersionFn version;
  VLHANDLE session = 0;
  VLRESULT rc;
  uint16_t number = 0;

  if (!GetFullPathNameA(argc > 1 ? argv[1] : "sample-tree", sizeof root, root, NULL)) return 1;
  printf("Sample fax tree: %s\n", root);
  if (!CreateSampleTree(root) || !WriteClientConfig(root)) return 1;

  library = LoadLibraryA("Vlapi64.dll");
  if (!library) {
    fprintf(stderr, "cannot load Vlapi64.dll (error %lu)\n", (unsigned long)GetLastError());
    return 1;
  }
  init = (InitFn)(void (*)(void))Entry(library, "VlxAPIInit");
  closedown = (ClosedownFn)(void (*)(void))Entry(library, "VlxAPIClosedown");
  version = (VersionFn)(void (*)(void))Entry(library, "VlxGetAPIVersion");
  outDir = (GetTextFn)(void (*)(void))Entry(library, "VlxGetUserOutDir");
  inDir = (GetTextFn)(void (*)(void))Entry(library, "VlxGetUserInDir");
  userArea = (GetTextFn)(void (*)(void))Entry(library, "VlxGetUserArea");
  systemArea = (GetTextFn)(void (*)(void))Entry(library, "VlxGetSystemArea");
  if (!init || !closedown || !version || !outDir || !inDir || !userArea || !systemArea) return 1;

  rc = version(text, sizeof text, &number);
  printf("Library version %s (interface 0x%04X), result 0x%04X\n", text, number,
         (unsigned)(uint16_t)rc);

  rc = init(&session, "DOMAIN\\jsmith", 1, ShowError);
  if (rc != VL_OK) {
    printf("Log-on failed: 0x%04X\n", (unsigned)(uint16_t)rc);
    return 1;
  }
  printf("Logged on as JSMITH (account DOMAIN\\jsmith), session handle 0x%08lX\n",
         (unsigned long)session);
  if (outDir(session, text, sizeof text) == VL_OK) printf("  Out directory: %s\n", text);
  if (inDir(session, text, sizeof text) == VL_OK) printf("  In directory: %s\n", text);
  if (userArea(session, text, sizeof text) == VL_OK) printf("  User area: %s\n", text);
  if (systemArea(session, text, sizeof text) == VL_OK) printf("  System area: %s\n", text);

  rc = closedown(session);
  printf("Logged off, result 0x%04X\n", (unsigned)(uint16_t)rc);
  FreeLibrary(library);
  return rc == VL_OK ? 0 : 1;
}
