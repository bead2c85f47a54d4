/* SPDX-License-Identifier: Apache-2.0 */
/* A program of release 6.0: records, tables and functions, as a management program uses them.
 * What that release's headers made of it on amd64 stays as program-6.0.s, and has to print
 * program-6.0.txt with every later library:
 *   gcc -std=c99 -O1 -fPIE -S -fno-asynchronous-unwind-tables program-6.0.c -o program-6.0.s */
#include <stddef.h>
#include <stdio.h>
#include <string.h>
#include <zarnnetchange/change.h>

#include <zarnnetsdk/zarnnetsdk.h>

static struct { /* what a library that wrote past a record's end would hit */
  KOPANetIfInfo ports[8];
  char after[64];
} known;

static int untouched(void) {
  size_t i;
  for (i = 0; i < sizeof known.after; ++i)
    if (known.after[i] != 0x5a) return 0;
  return 1;
}

static void tellPorts(void) {
  int i, count;
  memset(known.after, 0x5a, sizeof known.after);
  count = KOPANetEthEnum(known.ports, 8);
  printf("%d ports\n", count);
  for (i = 0; i < count; ++i)
    printf("  %s %s %s link %d\n", known.ports[i].name, known.ports[i].ip, known.ports[i].mask,
           known.ports[i].link);
  printf("nothing behind the records was written: %d\n", untouched());
}

static void tellAccount(void) {
  PPPOE_CONF kept = {"eth1", "user@example", "pass'word", "1492", 1}, found;
  memset(&found, 0, sizeof found);
  printf("account: %d", PPPoEConfigSet(&kept));
  printf(" %d", PPPoEConfigGet(&found));
  printf(" %s %s %s %s %d\n", found.eth, found.user, found.password, found.mtu,
         (int)found.defaultroute);
}

static void tellSubnet(void) {
  DHCP_SUBNET_CONF kept, found;
  DHCP_RANGE* ranges = NULL;
  memset(&kept, 0, sizeof kept);
  memset(&found, 0, sizeof found);
  kept.enable = 1;
  kept.lease = 3600;
  strcpy(kept.start, "192.168.50.100");
  strcpy(kept.end, "192.168.50.120");
  strcpy(kept.netmask, "255.255.255.0");
  strcpy(kept.router, "192.168.50.1");
  strcpy(kept.interface, "eth0");
  printf("subnet: %d", DHCPTagConfSet("eth0", 0, 0, &kept));
  printf(" %d", DHCPTagConfGet("eth0", 0, 0, &found));
  printf(" %d %d %s %s %s\n", (int)found.enable, (int)found.lease, found.start, found.end,
         found.router);
  printf("ranges: %d", DHCPGetInterfaceRanges("eth0", &ranges));
  if (ranges != NULL) printf(" %s %s %s", ranges->start, ranges->end, ranges->netmask);
  printf("\n");
  DHCPRangeFree(ranges);
}

static void tellServers(void) {
  PKOPACSZLIST list = KOPACSzListAlloc(2);
  printf("name servers: %d", ZARNNetDNSListGet(&list));
  printf(" %d\n", KOPACSzListFind(list, "192.168.50.1"));
  KOPACSzListFree(list);
}

static void tellFailure(void) {
  const int result = ZARNNetSetIP("-4", "eth0", "192.168.50.300", 24, "add");
  printf("no address: %d 0x%04X %s\n", result, (unsigned)KOPACErrGet(),
         ZARNNetErrorName(KOPACErrGet()));
}

static void tellChange(void) {
  char* report = NULL;
  printf("change: %d\n", ZARNNetChangeApply("{\"host\": {\"name\": \"nas\"}}",
                                            "{\"program\": \"6.0\"}", NULL, NULL, &report));
  printf("a report: %d\n", report != NULL && strstr(report, "\"result\"") != NULL);
  ZARNNetChangeFree(report);
}

int main(void) {
  int mode;
  printf("set: %d\n", ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0"));
  tellPorts();
  for (mode = 1; mode < 9; ++mode)
    printf("mode %d is %s\n", mode, grgBondDesc[mode].szName);
  tellAccount();
  tellSubnet();
  tellServers();
  tellFailure();
  tellChange();
  return 0;
}
