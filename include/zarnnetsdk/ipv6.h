/* IPv6 addresses of an interface and the kernel's per-interface switch. */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** One IPv6 address of an interface. */
typedef struct ZARNNETV6ADDR {
  char szAddr[46];  /* compressed text */
  uint32_t prefix;  /* prefix length */
  uint32_t scope;   /* the kernel's scope; 0x20 is link-local */
  uint32_t flags;   /* the kernel's address flags; 0x40 is tentative */
} ZARNNETV6ADDR;

/**
 * The IPv6 addresses the kernel has on an interface (/proc/net/if_inet6).
 * @param rgAddr  receives the first cAddr of them; unused records are cleared
 * @return how many there are, which may exceed cAddr; -1 with 0x0D00 or 0x0900
 */
int ZARNLnxV6IPGet(const char *szIfname, ZARNNETV6ADDR *rgAddr, int cAddr);

/**
 * Switches IPv6 off (action 1) or on (anything else) for one interface. After switching on it waits up to
 * 5 seconds while a link-local address looks tentative; running out of patience is no failure.
 * @return 0, also for an interface that is not switched (a bond); -1
 */
int ZARNLnxIPv6ProcAction(const char *szIfname, unsigned int action);

/** Drops all IPv6 addresses of an interface by switching IPv6 off and, unless its file says IPV6INIT=off,
 * on again. @return 0, or -1 (0x0D00: no name) */
int ZARNLnxIPv6FlushAddr(const char *szIfname);

/** Do two addresses agree in their first prefix (0 to 128) bits? @return 1, 0, or -1 for bad input */
int ZARNNetIPv6IsSameSubnet(const char *szAddrA, const char *szAddrB, unsigned int prefix);

#ifdef __cplusplus
}
#endif
