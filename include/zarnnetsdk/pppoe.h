/* SPDX-License-Identifier: Apache-2.0 */
/* PPPoE: the appliance's own dial-in, and the relay that hands the discovery of others on. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- the client ------------------------------------------------------------------------------ */

/** The account that is dialled with. Texts are NUL-terminated. */
typedef struct PPPOE_CONF {
  char eth[16];         /* Ethernet interface to dial on */
  char user[256];       /* account name */
  char password[32];    /* in clear */
  char mtu[8];          /* decimal text */
  int32_t defaultroute; /* 1: the link becomes the default route */
} PPPOE_CONF;

/**
 * Reads ETH, DEFAULTROUTE, USER and MTU of /etc/ppp/pppoe.conf, and the account's line of
 * /etc/ppp/pap-secrets. Without a USER only eth and defaultroute are filled; without a line for the
 * account user and password stay empty.
 * @return 0; -1 for a null record (ZARNNETERR_BAD_PARAMETER), an ETH that is not set
 *         (ZARNNETERR_UNEXPECTED_CONTENT), or a file that cannot be opened or read
 *         (ZARNNETERR_OPEN, ZARNNETERR_READ)
 */
int PPPoEConfigGet(PPPOE_CONF* conf);

/**
 * Stores the account: the keys ETH, DEFAULTROUTE, USER and MTU one after the other in
 * /etc/ppp/pppoe.conf, then /etc/ppp/pap-secrets as a whole, as one line of mode 0600; lines of
 * other accounts go. The name and the password are quoted for a shell; a quoted text is cut to 511
 * characters. A connection that runs keeps its settings. The lock of the secrets file is held
 * meanwhile, so that callers at once leave the account of one.
 * @return 0; -1, with ZARNNETERR_BAD_PARAMETER for a null record, a text with a control character
 *         or without its terminator in it, or an eth or mtu with other characters than letters,
 *         digits and ".:_-@+"; with ZARNNETERR_LOCK when the lock is not had in 30 seconds: nothing
 *         is written then. Later failures (ZARNNETERR_OPEN, ZARNNETERR_WRITE, ZARNNETERR_RENAME)
 *         leave the secrets as they were, and the keys written so far
 */
int PPPoEConfigSet(const PPPOE_CONF* conf);

/**
 * Starts the client with /usr/sbin/pppoe-start, or stops it with /usr/sbin/pppoe-stop, and keeps
 * pppoe_enable of /etc/zarninfo.conf in step ("yes" while it is meant to be up).
 * @param op  1 starts, 0 stops
 * @return 0; 19 when the start script ends with 19; -1 for any other failure
 *         (ZARNNETERR_BAD_PARAMETER for another op, ZARNNETERR_COMMAND for a script,
 *         ZARNNETERR_OPEN or ZARNNETERR_WRITE for the settings file). A start that fails leaves
 *         pppoe_enable "no". Takes no lock
 */
int ZARNPPPoEService(int op);

/**
 * Is the client meant to be up, and does its process "pppoe-connect" run? A process that runs
 * although it is not meant to is stopped. Takes the settings-file lock.
 * @param fix  not 0: pppoe_enable becomes "no" when it says "yes" and no process runs
 * @return 1, 0, or -1: the lock (ZARNNETERR_LOCK, logged), the settings file (ZARNNETERR_OPEN,
 *         ZARNNETERR_READ, ZARNNETERR_WRITE) or the processes (ZARNNETERR_OPEN) cannot be had
 */
int ZARNPPPoECheckStatus(int fix);

/**
 * The name of the PPP interface: what /tmp/zarnpppoe.intf remembers, otherwise what
 * /usr/sbin/pppoe-status says, which is then remembered there. What is remembered counts only in a
 * regular file of root's.
 * @param ifname  receives it, cut to size
 * @return 0; -1 with ZARNNETERR_NOT_FOUND when the kernel has no interface "ppp...", or nobody
 *         knows it; ZARNNETERR_BAD_PARAMETER for a null or empty buffer, ZARNNETERR_OPEN or
 *         ZARNNETERR_UNEXPECTED_CONTENT when /proc/net/dev cannot be opened or reads otherwise,
 *         ZARNNETERR_COMMAND when the script cannot be run
 */
int ZARNPPPoeIntfGet(char* ifname, size_t size);

/**
 * The address and the netmask of the PPP interface, dotted. A null buffer or a size below 1 is one
 * that is not wanted. A failure forgets the remembered name of the interface.
 * @param ip    receives the address
 * @param mask  receives the netmask
 * @return 0, also when neither is wanted; -1 with a code of ZARNPPPoeIntfGet(), ZARNNETERR_OPEN
 *         without a socket or ZARNNETERR_REFUSED when the interface has none
 */
int ZARNPPPoeNetInfoGet(char* ip, int ip_size, char* mask, int mask_size);

/**
 * Stops the client if it runs on this interface.
 * @return 0, also when it does not run or runs on another; -1, with ZARNNETERR_BAD_PARAMETER for a
 *         null name, else with a code of ZARNPPPoECheckStatus(), PPPoEConfigGet() or
 *         ZARNPPPoEService()
 */
int KOPADisablePPPoEOnIf(const char* ifname);

/* ---- the relay: one process /usr/sbin/pppoe-relay for each interface with clients ------------ */

/** What the relay of one interface does; kept in /etc/sysconfig/pppoe-relay/IFNAME. */
typedef struct PPPOE_RELAY_CONF {
  int32_t enable;  /* 1: relay on this interface */
  char server[16]; /* the interface on the server's side */
} PPPOE_RELAY_CONF;

/** Reads the settings of an interface; makes the folder (0755) and an empty file where there is
 * none: not enabled, no server. @return 0 or -1 (ZARNNETERR_BAD_PARAMETER for a name that can be no
 * file's; the file cannot be made or read: ZARNNETERR_OPEN, ZARNNETERR_READ) */
int ZARNNetGetPPPoERelayConfig(const char* ifname, PPPOE_RELAY_CONF* conf);

/** Stores the settings of an interface; enable other than 1 is stored as not enabled. No process is
 * touched. The file keeps its mode and owner. @return 0; -1 (ZARNNETERR_BAD_PARAMETER for a name
 * that can be no file's, or a server that can be no interface's; ZARNNETERR_LOCK when the file's
 * lock is not had in 30 seconds, logged; ZARNNETERR_OPEN, ZARNNETERR_READ, ZARNNETERR_WRITE,
 * ZARNNETERR_RENAME) */
int ZARNNetSetPPPoERelayConfig(const char* ifname, const PPPOE_RELAY_CONF* conf);

/**
 * Do both say the same? Servers count also where neither is enabled.
 * @param a, b  the two records
 * @return 1 or 0; null is 0
 */
int ZARNNetIsSamePPPoERelayConfig(const PPPOE_RELAY_CONF* a, const PPPOE_RELAY_CONF* b);

/**
 * Starts, restarts or ends the relay process of an interface so that it is as the settings say. It
 * runs when they enable it, the interface is up and has a role that may relay, and is left alone
 * when it runs with the same server.
 * @return 0; -1: the settings cannot be read (as above), the process cannot be started or ended
 *         (ZARNNETERR_COMMAND)
 */
int ZARNNetApplyPPPoERelayConfig(const char* ifname);

/** The same for every interface with a file (up to 128), in the order of their names, up to the
 * first that fails.
 * @return 0; -1 as ZARNNetApplyPPPoERelayConfig(), or with ZARNNETERR_OPEN for a folder that cannot
 *         be read */
int ZARNNetApplyPPPoERelayConfigAll(void);

/** Deletes the settings of every interface (up to 128). Processes run on. @return 0; -1: the folder
 * cannot be read (ZARNNETERR_OPEN), or is none (ZARNNETERR_UNEXPECTED_CONTENT) */
int ZARNNetClearPPPoERelayConfigAll(void);

#ifdef __cplusplus
}
#endif
