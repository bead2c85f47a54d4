/* SPDX-License-Identifier: Apache-2.0 */
/* Looks at a change, makes it, and shows the report. Needs root.
 *   cc -std=c99 change.c -o change $(pkg-config --cflags --libs zarnnetchange)
 *   ./change '{"interfaces": {"eth0": {"mtu": 1400}}}' */
#include <stdio.h>
#include <zarnnetchange/change.h>

static void show(const char* szStep, const char* szReport) {
  printf("%s: %s\n", szStep, szReport ? szReport : "no memory for the report");
}

int main(int argc, char** argv) {
  char* szReport = NULL;
  int result;
  if (argc != 2) {
    fprintf(stderr, "usage: %s WISH\n", argv[0]);
    return 2;
  }
  result = ZARNNetChangeCheck(argv[1], NULL, &szReport);
  show("check", szReport);
  ZARNNetChangeFree(szReport);
  if (result != ZARNNETCHANGE_DONE) return result;

  szReport = NULL;
  result = ZARNNetChangeApply(argv[1], "{\"wait\": 10}", NULL, NULL, &szReport);
  show("apply", szReport);
  ZARNNetChangeFree(szReport);
  return result;
}
