/* SPDX-License-Identifier: Apache-2.0 */
/*
 * High availability: whether the appliance is one of a pair, and what the pair shares. Answered from the settings
 * file /etc/zarnha.conf (keys active, running, has_if: "yes"; heartbeat_if; <ifname>_mac, <ifname>_ip,
 * <ifname>_mask); an appliance without it is alone. Predicates answer 1 or 0, getters 0 or -1. What is not known is
 * absent and sets no error; a null argument sets 0x0D00, a file that cannot be read what zarncore.h says.
 */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The address settings of one interface. */
typedef struct ZARNNETIFADDR {
  int32_t bootProto; /* 0 DHCP, 1 static */
  int32_t reserved;
  char szName[16];
  unsigned char rgMac[6];
  char szIP[20];
  char szMask[20];
} ZARNNETIFADDR;

/** Is the appliance one of a pair? @return 1 or 0 */
int ZARNHAIsActive(void);

/** Do both of the pair work together now? @return 1 or 0 */
int ZARNHAIsRunning(void);

/** Has the pair an interface with a shared address? @return 1 or 0 */
int ZARNHAHasHAIF(void);

/** The shared MAC address of an interface, as text, cut to the buffer. @return 0, or -1 when none is known */
int ZARNHAGetMac(const char* szIfname, char* szBuf, int cbBuf);

/** The interface over which the pair watches each other, cut to the buffer. @return 0, or -1 when none is known */
int ZARNHAGetHeartbeatIF(char* szBuf, int cbBuf);

/** Fills name, address and mask with what the pair shares on an interface; the rest is left alone.
 * @return 0; -1 when address or mask are not known: the record is as it was */
int ZARNHAGetRelatedIFInfo(const char* szIfname, ZARNNETIFADDR* pInfo);

#ifdef __cplusplus
}
#endif
