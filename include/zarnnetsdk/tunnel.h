/* SPDX-License-Identifier: Apache-2.0 */
/* The IPv6 tunnel: the user's settings of the tunnel broker client, and running that client. */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What the user sets for the tunnel. */
typedef struct ZARNTUNNELCONF {
  uint8_t blAnonymous; /* 1: no login; the user id and the password are empty */
  char szServer[256];  /* the tunnel broker */
  char szUserId[256];
  char szPassword[32]; /* in clear, at most 31 characters */
} ZARNTUNNELCONF;

/**
 * Reads the settings: SERVER, LOGIN ("anonymous", or anything else for a login) and USERID of
 * ifcfg-tun, and the password, which /etc/gogoc/.tunnel_passwd holds enciphered. A password that
 * cannot be had (no file, one that is too long, a cipher that fails) reads as empty.
 * @return 1 when the service "zarntunnel" is enabled, 0 when it is disabled (the record is filled
 *         both times); -1 for a null record (ZARNNETERR_BAD_PARAMETER), a run state that cannot be
 *         read (ZARNNETERR_OPEN, ZARNNETERR_READ) or is neither (ZARNNETERR_UNEXPECTED_CONTENT), or
 *         an interface file that cannot be read (ZARNNETERR_OPEN, ZARNNETERR_READ; the record is
 *         cleared then)
 */
int ZARNTunnelConfigGet(ZARNTUNNELCONF* pConf);

/**
 * Stores what differs from the settings that are there: the password (only with a login) as 64
 * enciphered bytes in /etc/gogoc/.tunnel_passwd, mode 0600, replaced as a whole; then the keys of
 * ifcfg-tun. An empty server leaves the one that is there. Equal settings write nothing. The client
 * is not told: ZARNTunnelExecute() does that. The lock of the password file is held meanwhile, so
 * that callers at once leave the user and the password of one.
 * @return 0; -1, with ZARNNETERR_BAD_PARAMETER for a null record, a text with a control character
 *         in it or a text without its terminator, with ZARNNETERR_LOCK when the lock is not had in
 *         30 seconds, or with a code of ZARNTunnelConfigGet(): nothing is written then. Other
 *         failures (ZARNNETERR_OPEN, ZARNNETERR_WRITE, ZARNNETERR_RENAME) may find the password
 *         stored
 */
int ZARNTunnelConfigSet(const ZARNTUNNELCONF* pConf);

enum { ZARNTUNNEL_START = 0, ZARNTUNNEL_STOP = 1, ZARNTUNNEL_RESTART = 2 };

/**
 * Starts, stops or restarts the client, and reloads the service "zarnrelayd", where it runs, when
 * that is done.
 *
 * The client's script /etc/gogoc/rc.tun runs in a child process, which is given 46 looks, one a
 * second: a broker that does not answer holds the caller no longer than that. For a start and a
 * restart the client's settings /etc/gogoc/gogoc.conf (mode 0600) are made before, and removed when
 * the script has ended, whether the caller is there still or not; a stop removes what a killed run
 * has left. A start retries for good, a restart tries for a short while. A script that takes longer
 * goes on by itself and is nobody's to reap. May be called with other threads running.
 *
 * tsp-broker-list.txt in the caller's working folder is renamed to tsp-broker-list.txt.bak.
 *
 * @param action  ZARNTUNNEL_START, ZARNTUNNEL_STOP or ZARNTUNNEL_RESTART; anything else only
 *                removes gogoc.conf
 * @param pConf   the settings to use; null: those that are stored
 * @return 0: the interface "tun" has an IPv6 address, or the client has ended, or, after a start,
 *         still tries. -1 with ZARNNETERR_COMMAND: no child; a stop that leaves "tun" with an
 *         address; a client that hangs after a stop or restart, which is ended. -1 with
 *         ZARNNETERR_BAD_PARAMETER, before anything is done, for settings that
 *         ZARNTunnelConfigSet() would refuse
 * Not to be run twice at once: both would write and remove the same file.
 */
int ZARNTunnelExecute(int action, const ZARNTUNNELCONF* pConf);

/**
 * The present hour of the week in local time.
 * @return 0 for Sunday 00:00 to 00:59 up to 167 for Saturday 23:00 to 23:59
 */
int ZARNSchedGetNowIndex(void);

#ifdef __cplusplus
}
#endif
