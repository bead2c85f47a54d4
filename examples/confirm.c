/* SPDX-License-Identifier: Apache-2.0 */
/* Makes a change that goes back by itself, asks whether it shall stay, and keeps it or puts it
 * back. Needs root.
 *   cc -std=c99 confirm.c -o confirm $(pkg-config --cflags --libs zarnnetchange)
 *   ./confirm '{"interfaces": {"eth0": {"ipv4": {"address": "192.168.50.11"}}}}' 60
 * Who is cut off by it needs to do nothing: without an answer in time everything is as it was. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <zarnnetchange/change.h>

/* The number of the change that waits; 0 when none does, as on a machine that is as wished. */
static int waiting(const char* szReport) {
  static const char key[] = "\"number\":";
  const char* at = szReport ? strstr(szReport, "\"confirm\":") : NULL;
  at = at ? strstr(at, key) : NULL;
  return at ? atoi(at + sizeof key - 1) : 0;
}

static int settle(int nNumber, int bKeep) {
  char szOptions[64];
  char* szReport = NULL;
  int result;
  /* By its number: in place of one that has gone back, somebody else's may wait by now. */
  snprintf(szOptions, sizeof szOptions, "{\"number\": %d}", nNumber);
  result = bKeep ? ZARNNetChangeConfirm(szOptions, &szReport)
                 : ZARNNetChangeUndo(szOptions, NULL, NULL, &szReport);
  puts(szReport ? szReport : "no memory for the report");
  ZARNNetChangeFree(szReport);
  return result;
}

int main(int argc, char** argv) {
  char szOptions[64], szAnswer[8];
  char* szReport = NULL;
  int result, nNumber;
  if (argc != 3) {
    fprintf(stderr, "usage: %s WISH SECONDS\n", argv[0]);
    return 2;
  }
  snprintf(szOptions, sizeof szOptions, "{\"confirm\": %d, \"program\": \"confirm\"}",
           atoi(argv[2]));
  result = ZARNNetChangeApply(argv[1], szOptions, NULL, NULL, &szReport);
  puts(szReport ? szReport : "no memory for the report");
  nNumber = result == ZARNNETCHANGE_DONE ? waiting(szReport) : 0;
  ZARNNetChangeFree(szReport);
  if (nNumber == 0) return result;

  fprintf(stderr, "Keep change %d? [y/n] ", nNumber);
  if (fgets(szAnswer, sizeof szAnswer, stdin) == NULL) return result;
  return settle(nNumber, szAnswer[0] == 'y');
}
