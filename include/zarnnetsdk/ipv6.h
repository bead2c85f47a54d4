/* SPDX-License-Identifier: Apache-2.0 */
/* IPv6: an interface's configuration, its addresses, and the kernel's per-interface switches. */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- configuration --------------------------------------------------------------------------- */

/* How an interface gets its IPv6 address; IPV6INIT of its file. */
enum {
  ZARNNET_IPV6_AUTO = 0,     /* "auto": router advertisements */
  ZARNNET_IPV6_OFF = 1,      /* "off" */
  ZARNNET_IPV6_DHCP = 2,     /* "dhcp": DHCPv6 */
  ZARNNET_IPV6_STATIC = 3,   /* "static" */
  ZARNNET_IPV6_AUTO_DHCP = 4 /* "auto_dhcp": both */
};

/**
 * Reads an interface's configuration from its file; no lock. Everything but the type is the file's
 * text.
 * @param pType      the type, 0 when the file has none
 * @param szAddr     the fixed address, empty without one; cbAddr is at least 46
 * @param pPrefix    its prefix length, -1 without one
 * @param szGateway  the default gateway, empty without one; cbGateway is at least 46
 * @return 1 read; 0 no type in the file, or the interface is not listed for selector 2 of
 *         ZARNNetIsDevTypeMatch() (the outputs are left alone then); above 0 with the type 0 for a
 *         type that is unknown; -1 with ZARNNETERR_BAD_PARAMETER (null or a buffer too small), or,
 *         the outputs then hold what was read before, ZARNNETERR_OPEN or ZARNNETERR_READ (the file
 *         cannot be read) or ZARNNETERR_UNEXPECTED_CONTENT (a prefix that is no number)
 */
int ZARNNetIPv6ConfGet(const char* szIfname, int* pType, char* szAddr, int cbAddr, int* pPrefix,
                       char* szGateway, int cbGateway);

/**
 * Configures IPv6 on an interface, in its file and in the running system.
 *
 * Writes IPV6INIT and IPV6_ACCEPT_RA and, for the static type, IPV6ADDR, IPV6PREFIXLENG and
 * IPV6_DEFAULTGW (the other types drop these three); sets the kernel's accept_ra; switches IPv6 on
 * again where a flush has left it off, except for the type off; starts (dhcp, auto_dhcp) or stops
 * the job "dhcp-client6" of the interface, unless it runs (/tmp/dhclient6-IFNAME-start.pid) or does
 * not run already; gives the interface the fixed address and default route and takes away those of
 * the static configuration that the file held before. Then waits up to 5 seconds for duplicate
 * address detection, while the interface has carrier, and removes the addresses that failed it:
 * such an address stays in the file and the call succeeds, with a line in the log.
 *
 * When a step fails, the steps before it are taken back and the file is as it was, or gone again
 * where there was none (its copy meanwhile: ifcfg-IFNAME.tmpSECONDS).
 * @param szAddr     required for the static type; may be null or empty for the others, but not
 *                   malformed
 * @param prefix     0 to 128
 * @param szGateway  may be null or empty; not malformed
 * @param type  a ZARNNET_IPV6_...
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (bad arguments), ZARNNETERR_LOCK (lock),
 *         ZARNNETERR_OPEN or ZARNNETERR_WRITE (a switch of the kernel), ZARNNETERR_COMMAND (a
 *         program failed), what a file that cannot be copied or written leaves, or as
 *         ZARNNetSetIP()
 * Programs: /bin/cp, /sbin/start, /sbin/stop, /sbin/ip. Fires net/ipv6_change for a new address.
 * Holds the lock on the interface's file throughout (waits up to 30 seconds for it).
 */
int ZARNNetIPv6ConfSet(const char* szIfname, int type, const char* szAddr, int prefix,
                       const char* szGateway);

/**
 * Run at start-up: sets accept_ra of every interface that has a file, except loopback, passive bond
 * members and ports of bridges and of Open vSwitch, to what the file asks for: IPV6_ACCEPT_RA other
 * than "0" accepts; without that key every type but static accepts.
 * @return 0; -1 with ZARNNETERR_OPEN or ZARNNETERR_WRITE at the first switch that cannot be
 *         written, or ZARNNETERR_NO_MEMORY when the interfaces cannot be listed
 */
int ZARNNetIpv6Init(void);

/**
 * Adds (cmd 0) or deletes (cmd 1) one address in the running kernel or, when a gateway is given,
 * the default route over it; then the address is left alone. Nothing is written to a file.
 * @param prefix  0 to 128
 * @param cmd        0 adds, 1 deletes
 * @param szAddr     the address
 * @param szGateway  null or empty: none
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (prefix, null address, null name, another cmd, a name
 *         or gateway that cannot be meant), or as ZARNNetSetIP(); with a gateway the exit status of
 *         "/sbin/ip -6 route", and ZARNNETERR_COMMAND unless it is 0
 */
int ZARNNetIPv6IPAction(int cmd, const char* szIfname, const char* szAddr, unsigned int prefix,
                        const char* szGateway);

/* ---- addresses and switches ------------------------------------------------------------------ */

/** One IPv6 address of an interface. */
typedef struct ZARNNETV6ADDR {
  char szAddr[46]; /* compressed text */
  uint32_t prefix; /* prefix length */
  uint32_t scope;  /* the kernel's scope; 0x20 is link-local */
  uint32_t flags;  /* the kernel's address flags; 0x40 is tentative */
} ZARNNETV6ADDR;

/**
 * The IPv6 addresses the kernel has on an interface (/proc/net/if_inet6).
 * @param rgAddr  receives the first cAddr of them; unused records are cleared
 * @param cAddr  room in rgAddr, in records
 * @return how many there are, which may exceed cAddr; -1 with ZARNNETERR_BAD_PARAMETER or
 *         ZARNNETERR_OPEN
 */
int ZARNLnxV6IPGet(const char* szIfname, ZARNNETV6ADDR* rgAddr, int cAddr);

/**
 * Switches IPv6 off (action 1) or on (anything else) for one interface. After switching on it waits
 * up to 5 seconds while a link-local address looks tentative; running out of patience is no
 * failure.
 * @param action  1 off, any other on
 * @return 0, also for an interface that is not switched (a bond); -1 with ZARNNETERR_BAD_PARAMETER,
 *         ZARNNETERR_NOT_FOUND (no such interface that is up), ZARNNETERR_OPEN or ZARNNETERR_WRITE
 *         (the switch)
 */
int ZARNLnxIPv6ProcAction(const char* szIfname, unsigned int action);

/** Drops all IPv6 addresses of an interface by switching IPv6 off and, unless its file says
 * IPV6INIT=off, on again. @return 0; -1 as ZARNLnxIPv6ProcAction(), or with ZARNNETERR_OPEN or
 * ZARNNETERR_READ when the file cannot be read */
int ZARNLnxIPv6FlushAddr(const char* szIfname);

/** Do two addresses agree in their first prefix (0 to 128) bits? @return 1, 0, or -1 with
 * ZARNNETERR_BAD_PARAMETER for bad input */
int ZARNNetIPv6IsSameSubnet(const char* szAddrA, const char* szAddrB, unsigned int prefix);

#ifdef __cplusplus
}
#endif
