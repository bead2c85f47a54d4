/* SPDX-License-Identifier: Apache-2.0 */
/*
 * Plugin events and services of the appliance. A failure is negative and sets the error state, as zarncore.h says:
 * 0x0D00 for an argument, 0x2A00 for a plugin, a tool or a job that failed, 0x4000 for a setting that cannot be.
 *
 * An event is a folder of programs: /usr/zarn/plugins/<category>/<event>/. Each of them is run in name order with
 * the stage, "pre" or "post", as its argument and the event's arguments in its environment (NAME=value; a list as
 * NAME_1 ... NAME_n and NAME_COUNT; PLUGIN_ARGS names them all), on top of the caller's. A plugin has 30 seconds, then
 * it is ended with all its children. One that fails is logged (syslog, err) and stops none of the others.
 */
#pragma once

#include <zarncore/zarncore.h>

#ifdef __cplusplus
extern "C" {
#endif

/** One event being prepared. */
typedef struct KOPAPLUGIN KOPAPLUGIN, *PKOPAPLUGIN;

/** Prepares an event. @param szEvent its name, with or without "<category>/" before it
 * @param ppPlugin receives the handle, to be given to KOPAPluginExit(); left alone on failure
 * @return 0, or -1 for a name that leads out of the plugins' folder; an event without a folder is fine */
int KOPAPluginSDKInit(const char* szCategory, const char* szEvent, PKOPAPLUGIN* ppPlugin);

/** Sets an argument. @param szName of A-Z, 0-9 and "_", but neither PATH nor LD_...; set again, the later value counts
 * @return 0 or -1 */
int KOPAPluginSetArg(PKOPAPLUGIN pPlugin, const char* szName, const char* szValue);
/** The same with a number, as decimal text. */
int KOPAPluginSetArgByInt(PKOPAPLUGIN pPlugin, const char* szName, int value);
/** The same with a list, which is copied. */
int KOPAPluginSetArgByArray(PKOPAPLUGIN pPlugin, const char* szName, const KOPACSZLIST* pValues);

/**
 * Runs the event's plugins, all of them, and waits.
 * @param stage  4 before the change, 5 after it
 * @return 0, also when there are none; negative when one failed, which is logged
 */
int KOPAPluginAction(int stage, PKOPAPLUGIN pPlugin);

/** Was the event prepared? @return 1, or 0 for null */
int KOPAPluginHasInit(PKOPAPLUGIN pPlugin);

/** Frees an event; null is fine. */
void KOPAPluginExit(PKOPAPLUGIN pPlugin);

/** Does /sbin/initctl status call the service "start/running"? @return 1 or 0; -1 for a name that can be none and
 * when the tool cannot be started */
int KOPAServiceIsRunning(const char* szService);

/** Runs /sbin/initctl reload. @return 0, or -1 when it fails */
int KOPAServiceReload(const char* szService);

/** Runs /sbin/stop. @return 0, or -1 when it fails, as for a job that does not run */
int KOPAServicectlJobStop(const char* szJob);

/**
 * Is the service meant to run (key "run", "yes" or "no", in /etc/zarnservice/<service>.conf)?
 * @param pRunState  receives 1 for yes and 2 for no; left alone on failure
 * @return 0; negative for a service without this setting (0x4000) and for any other text in it (0x4000)
 */
int KOPAServicecfgRunKeyGet(const char* szService, int* pRunState);

#ifdef __cplusplus
}
#endif
