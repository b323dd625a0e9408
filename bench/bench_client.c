/*
 * bench_client - one client process of the outbox benchmark, linked with
 * the import library of Vlapi64.dll, as a command-line tool or a script
 * host would run it: one process per message or per listing.
 *
 *   bench_client submit USER SUBMITFILE   log on, submit the file, log off
 *   bench_client list USER                log on, list the out directory, log off
 *   bench_client logon USER               log on and off
 *   bench_client load                     nothing: the cost of loading the DLL
 *
 * Exits 0 on success, else 1 with the result code on standard error.
 */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "vlapi.h"

static VLMSGINFOEX records[2048];

int main(int argc, char **argv) {
  VLHANDLE session = 0;
  VLRESULT rc;
  if (argc == 2 && strcmp(argv[1], "load") == 0) return 0;
  if (argc < 3) {
    fprintf(stderr, "usage: bench_client submit USER SUBMITFILE | list USER | logon USER | load\n");
    return 2;
  }
  rc = VlxAPIInit(&session, argv[2], 0, NULL);
  if (rc == VL_OK && strcmp(argv[1], "submit") == 0 && argc == 4) {
    char body[9];
    rc = VlxSendSubmitFile(session, argv[3], "BNCH", body);
  } else if (rc == VL_OK && strcmp(argv[1], "list") == 0) {
    int16_t count = 0;
    rc = VlxGetMsgListEx(session, VL_DIR_OUT, 2048, &count, sizeof records[0], records);
  }
  if (session) VlxAPIClosedown(session);
  if (rc != VL_OK) {
    fprintf(stderr, "bench_client %s: 0x%04X\n", argv[1], (unsigned)(uint16_t)rc);
    return 1;
  }
  return 0;
}
