/*
 * submit_many - a client that submits many faxes at once, linked with the
 * import library of Vlapi64.dll.
 *
 *   submit_many USER COUNT SUBMIT_EVEN SUBMIT_ODD OUTPUT
 *
 * Logs USER on (without the user lock, so that several processes may work
 * for one user) and submits COUNT messages, the even-numbered from the
 * submit file SUBMIT_EVEN and the odd-numbered from SUBMIT_ODD. A
 * submission refused because another process held the message list
 * (0xF711) is tried again after a short pause. OUTPUT receives one line
 * per message, "index result body" (with the last error text on failure),
 * and then "busy N" with the number of such retries.
 */
#include <windows.h>

#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vlapi.h"

static char lastText[512];

static void VLAPI_CALL Remember(const char *text) {
  strncpy(lastText, text, sizeof lastText - 1);
}

int main(int argc, char **argv) {
  VLHANDLE session = 0;
  FILE *output;
  int count, i, busy = 0;
  VLRESULT rc;
  if (argc != 6) {
    fprintf(stderr, "usage: submit_many USER COUNT SUBMIT_EVEN SUBMIT_ODD OUTPUT\n");
    return 2;
  }
  count = atoi(argv[2]);
  srand((unsigned)GetCurrentProcessId());
  output = fopen(argv[5], "wb");
  if (!output) return 2;
  rc = VlxAPIInit(&session, argv[1], 0, Remember);
  if (rc != VL_OK) {
    fprintf(output, "logon %04X\n", (unsigned)(uint16_t)rc);
    fclose(output);
    return 1;
  }
  for (i = 0; i < count; ++i) {
    char body[9] = "";
    int tries = 0;
    do {
      rc = VlxSendSubmitFile(session, argv[i % 2 ? 4 : 3], "FAXA", body);
      if (rc == VL_E_INFO_FILE_OPEN_ERROR) {
        ++busy;
        Sleep((DWORD)(1 + rand() % 20));
      }
    } while (rc == VL_E_INFO_FILE_OPEN_ERROR && ++tries < 50);
    fprintf(output, "%d %04X %s%s%s\n", i, (unsigned)(uint16_t)rc, rc == VL_OK ? body : "-",
            rc == VL_OK ? "" : " ", rc == VL_OK ? "" : lastText);
  }
  fprintf(output, "busy %d\n", busy);
  fclose(output);
  VlxAPIClosedown(session);
  return 0;
}
