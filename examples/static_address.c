/* SPDX-License-Identifier: Apache-2.0 */
/* A fixed address with name servers and gateway, as one change: it is in effect as a whole, or nothing is.
 *   cc -std=c99 static_address.c $(pkg-config --cflags --libs zarnnetchange) */
#include <stdio.h>
#include <zarnnetchange/change.h>

static const char wish[] =
    "{\"interfaces\": {\"eth0\": {\"ipv4\": {\"address\": \"192.168.50.10\", \"prefix\": 24}}},"
    " \"dns\": {\"servers\": [\"192.168.50.1\"]},"
    " \"routes\": {\"gateway\": \"192.168.50.1\"}}";

static void tell(const char* progress, void* context) {
  fprintf((FILE*)context, "%s\n", progress);
}

int main(void) {
  char* report = NULL;
  const int result = ZARNNetChangeApply(wish, "{\"program\": \"static_address\"}", tell, stderr, &report);
  if (report) puts(report);
  ZARNNetChangeFree(report);
  return result;
}
