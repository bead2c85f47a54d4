/*
 * Plugin events and services of the appliance. A failure is negative.
 *
 * An event is a folder of programs: /usr/zarn/plugins/<category>/<event>/. Each of them is run in name order with
 * the stage, "pre" or "post", as its argument and the event's arguments in its environment (NAME=value; a list as
 * NAME_1 ... NAME_n and NAME_COUNT; PLUGIN_ARGS names them all). A plugin has 30 seconds.
 */
#pragma once

#include <zarncore/zarncore.h>

#ifdef __cplusplus
extern "C" {
#endif

/** One event being prepared. */
typedef struct KOPAPLUGIN KOPAPLUGIN, *PKOPAPLUGIN;

/** Prepares an event. @param szEvent its name, with or without "<category>/" before it
 * @param ppPlugin receives the handle, to be given to KOPAPluginExit(); left alone on failure */
int KOPAPluginSDKInit(const char *szCategory, const char *szEvent, PKOPAPLUGIN *ppPlugin);

/** Sets an argument; names are of A-Z, 0-9 and "_". Set again, the later value counts. */
int KOPAPluginSetArg(PKOPAPLUGIN pPlugin, const char *szName, const char *szValue);
int KOPAPluginSetArgByInt(PKOPAPLUGIN pPlugin, const char *szName, int value);
int KOPAPluginSetArgByArray(PKOPAPLUGIN pPlugin, const char *szName, const KOPACSZLIST *pValues);

/**
 * Runs the event's plugins, all of them, and waits.
 * @param stage  4 before the change, 5 after it
 * @return 0, also when there are none; negative when one failed, which is logged
 */
int KOPAPluginAction(int stage, PKOPAPLUGIN pPlugin);

/** Was the event prepared? @return 1 or 0 */
int KOPAPluginHasInit(PKOPAPLUGIN pPlugin);

/** Frees an event; null is fine. */
void KOPAPluginExit(PKOPAPLUGIN pPlugin);

/** Asks /sbin/initctl status. @return 1 or 0 */
int KOPAServiceIsRunning(const char *szService);

/** Runs /sbin/initctl reload. */
int KOPAServiceReload(const char *szService);

/** Runs /sbin/stop. */
int KOPAServicectlJobStop(const char *szJob);

/** Is the service meant to run (run=yes in /etc/zarnservice/<service>.conf)? @param pRunState receives 1 or 0 */
int KOPAServicecfgRunKeyGet(const char *szService, int *pRunState);

#ifdef __cplusplus
}
#endif
