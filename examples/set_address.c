/* SPDX-License-Identifier: Apache-2.0 */
/* Gives an interface a fixed address and tells what went wrong. Needs root.
 *   cc -std=c99 set_address.c -o set_address $(pkg-config --cflags --libs zarnnetsdk)
 *   ./set_address eth0 192.168.50.10 255.255.255.0 */
#include <stdio.h>
#include <zarnnetsdk/zarnnetsdk.h>

int main(int argc, char** argv) {
  if (argc != 4) {
    fprintf(stderr, "usage: %s IFNAME ADDRESS NETMASK\n", argv[0]);
    return 2;
  }
  /* The error state is the last failure's: cleared, what is read below is this call's. */
  ZARNNetErrorClear();
  if (ZARNILnxSetIPNetmask(argv[1], argv[2], argv[3]) < 0) {
    const unsigned int code = KOPACErrGet();
    const char* szText = ZARNNetErrorText(code);
    fprintf(stderr, "%s: 0x%04X (%s), set in %s:%d\n", argv[1], code, szText ? szText : "unknown",
            KOPACErrorGetFile(), KOPACErrorGetLine());
    return 1;
  }
  return 0;
}
