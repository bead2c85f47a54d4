#pragma once

#include <zarncore/zarncore.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef struct KOPAPLUGIN KOPAPLUGIN, *PKOPAPLUGIN;
int KOPAPluginSDKInit(const char *szCategory, const char *szEvent, PKOPAPLUGIN *ppPlugin);
int KOPAPluginSetArg(PKOPAPLUGIN pPlugin, const char *szName, const char *szValue);
int KOPAPluginSetArgByInt(PKOPAPLUGIN pPlugin, const char *szName, int value);
int KOPAPluginSetArgByArray(PKOPAPLUGIN pPlugin, const char *szName, const KOPACSZLIST *pValues);
int KOPAPluginAction(int stage, PKOPAPLUGIN pPlugin);
int KOPAPluginHasInit(PKOPAPLUGIN pPlugin);
void KOPAPluginExit(PKOPAPLUGIN pPlugin);
int KOPAServiceIsRunning(const char *szService);
int KOPAServiceReload(const char *szService);
int KOPAServicectlJobStop(const char *szJob);
int KOPAServicecfgRunKeyGet(const char *szService, int *pRunState);

#ifdef __cplusplus
}
#endif
