/* DHCP: the built-in server's files and switches, the trial run of the client, the question whether an
 * interface uses DHCP. */
#pragma once

#include <stddef.h>
#include <stdint.h>
#include <zarncore/zarncore.h>
#include <zarnhacore/zarnhacore.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- records of the server -------------------------------------------------------------------------- */

/** One option of an IPv4 subnet beyond router, DNS servers and domain; freed with DHCPOptionFree(). */
typedef struct DHCP_OPTION {
  int32_t number;     /* 1 to 254 */
  char name[52];      /* the server's name of the option, at most 49 characters */
  char value[1024];   /* of an option with one value */
  PKOPACSZLIST values; /* of an option with a list of values, else null */
  struct DHCP_OPTION *next;
} DHCP_OPTION;

/** One served subnet of one interface. */
typedef struct DHCP_SUBNET_CONF {
  int32_t enable;
  int32_t reserved1; /* kept for callers that compare the whole record */
  int32_t lease;     /* seconds */
  char start[46];
  char end[46];
  char interface[16];
  char domain[256];
  char dns1[46];
  char dns2[46];
  char dns_more[512]; /* further DNS servers, split at commas; written, not read back */
  char netmask[46];
  char router[46];
  char reserved2[256];
  char tag[20];
  char v6mode[16]; /* "off", "ra-only", "ra-stateless" or "stateful" */
  DHCP_OPTION *options;
} DHCP_SUBNET_CONF;

/** The range of one IPv4 subnet; freed with DHCPRangeFree(). */
typedef struct DHCP_RANGE {
  char start[16];
  char end[16];
  char netmask[16];
  struct DHCP_RANGE *next;
} DHCP_RANGE;

/** Network boot. */
typedef struct DHCP_PXE_CONF {
  int32_t enable;
  int32_t is_remote_tftp; /* 1: from the remote TFTP server, 0: from the local one */
  char local_bootloader[4096];
  char remote_bootloader[4096];
  char remote_tftp_server_ip[20];
} DHCP_PXE_CONF;

/* ---- the client ------------------------------------------------------------------------------------- */

/**
 * Asks the DHCP server of the network at an interface which address it would hand out; the interface is
 * left as it is. Blocks for as long as the client does.
 * @param info  szName names the interface; szIP and szMask are filled
 * @return 0; -1 with 0x0D00 (null record, empty name) or 0x2A00 (the client failed), or when the client
 *         left no address
 * Runs /usr/sbin/dhclient --zarn_test, and /bin/cp once for its script.
 */
int ZARNIGetDHCPTestNetInfo(ZARNNETIFADDR *info);

/**
 * Does the interface's file say BOOTPROTO=dhcp? A file without the key is repaired to BOOTPROTO=static.
 * Reads, and repairs, under the shared network lock.
 * @return 1 or 0; 0 also without a name (0x0D00) or a file, or when the lock is not had within 5 seconds
 */
int BlZARNLnxIsDHCP(const char *ifname);

#ifdef __cplusplus
}
#endif
