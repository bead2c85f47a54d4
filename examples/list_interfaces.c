/* SPDX-License-Identifier: Apache-2.0 */
/* Lists the interfaces that are up, as the kernel has them. Any user may.
 *   cc -std=c99 list_interfaces.c -o list_interfaces $(pkg-config --cflags --libs zarnnetsdk) */
#include <stdio.h>
#include <string.h>
#include <zarnnetsdk/zarnnetsdk.h>

int main(void) {
  KOPANetIfInfo list[32];
  int i, cFound;
  /* Fields without a value are left alone. */
  memset(list, 0, sizeof list);
  cFound = KOPANetGetInterfaceInfo(list, 32, ZARNNETKIND_PORT);
  if (cFound < 0) {
    fprintf(stderr, "failed: 0x%04X\n", KOPACErrGet());
    return 1;
  }
  for (i = 0; i < cFound && i < 32; ++i) {
    printf("%s %s %s\n", list[i].name, list[i].link == 2 ? "carrier" : "no-carrier",
           list[i].ip[0] ? list[i].ip : "-");
  }
  return 0;
}
