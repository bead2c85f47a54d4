#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct ZARNNETIFADDR {
    int32_t bootProto;          /* 0 DHCP, 1 static */
    int32_t reserved;
    char szName[16];
    unsigned char rgMac[6];
    char szIP[20];
    char szMask[20];
} ZARNNETIFADDR;
int ZARNHAIsActive(void);
int ZARNHAIsRunning(void);
int ZARNHAHasHAIF(void);
int ZARNHAGetMac(const char *szIfname, char *szBuf, int cbBuf);
int ZARNHAGetHeartbeatIF(char *szBuf, int cbBuf);
int ZARNHAGetRelatedIFInfo(const char *szIfname, ZARNNETIFADDR *pInfo);

#ifdef __cplusplus
}
#endif
