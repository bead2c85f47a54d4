/* SPDX-License-Identifier: Apache-2.0 */
/* IPv4 addresses and MTU of an interface, the host name, and the events that tell of network
 * changes. */
#pragma once

#include <zarncore/zarncore.h>
#include <zarnsdk/zarnsdk.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The stages of the events that tell of a change, as the hooks take them. */
enum {
  ZARNNETSTAGE_BEFORE = 4, /* "pre" */
  ZARNNETSTAGE_AFTER = 5   /* "post" */
};

/* ---- addresses ------------------------------------------------------------------------------- */

/**
 * Adds, deletes or flushes an address in the running kernel; no file is touched.
 * @param szType    "-4" or "-6"
 * @param prefix    prefix length, at most 32 or 128
 * @param szAction  "add" (IPv4: replaces the interface's address), "del", or "flush" (all
 *                  addresses; szIP and prefix are ignored)
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (an argument that cannot be meant; nothing was run),
 *         ZARNNETERR_OPEN (the kernel's list of IPv6 addresses) or ZARNNETERR_COMMAND (a program
 *         failed); what earlier steps changed stays (after a failed second ifconfig the interface
 *         is left at 0.0.0.0)
 * Adding an address that the interface does not have fires net/ipv4_change or net/ipv6_change
 * first. Runs /sbin/ip, /sbin/ifconfig, /bin/ipcalc, and zarnnetdtool when the same IPv4 address is
 * set again.
 */
int ZARNNetSetIP(const char* szType, const char* szIfname, const char* szIP, unsigned int prefix,
                 const char* szAction);

/**
 * Gives the interface a fixed IPv4 address, in its file and in the kernel. On failure a file that
 * was there is put back as it was; where there was none the new one stays.
 * @param szMask  dotted netmask
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (an argument null or empty, a name or text that
 *         begins with "-", a text with other characters than letters, digits and ".:/%_-": nothing
 *         is written then), ZARNNETERR_MALFORMED_ADDRESS (no netmask), what a file that cannot be
 *         written leaves, or what ZARNNetSetIP() fails with
 * Writes ifcfg-IFNAME (DEVICE, ONBOOT, IPADDR, NETMASK, BOOTPROTO; drops MASTER and SLAVE). Runs
 * /bin/cp, /sbin/stop dhcp-client and what ZARNNetSetIP() runs. Takes no lock: the caller
 * serialises.
 */
int ZARNILnxSetIPNetmask(const char* szIfname, const char* szIP, const char* szMask);

/** The address the kernel has. @return 1; 0 with "0.0.0.0" in the buffer; -1 with
 * ZARNNETERR_BAD_PARAMETER */
int ZARNILnxGetIP(const char* szIfname, char* szBuf, int cbBuf);

/** The configured address: of the lease on DHCP, of the interface's file otherwise.
 * @return 1; 0 without an address (buffer emptied) or without a file (buffer left alone); -1 with
 * ZARNNETERR_BAD_PARAMETER, or ZARNNETERR_OPEN or ZARNNETERR_READ when the file cannot be read
 * (buffer emptied) */
int ZARNILnxGetIPFromCfg(const char* szIfname, char* szBuf, int cbBuf);

/**
 * Removes all addresses of one family from the kernel; szType is "-4" or "-6".
 * @param szType  "-4" or "-6"
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (another type, no name), ZARNNETERR_COMMAND (the
 *         program failed), or for "-6" as ZARNLnxIPv6FlushAddr()
 */
int ZARNNetFlushIP(const char* szType, const char* szIfname);

/** The appliance's address as seen from the internet, asked of /usr/zarn/sbin/ddnsd -e.
 * @return a 16-byte text to be freed with free(); null with ZARNNETERR_COMMAND (the program
 * failed), ZARNNETERR_UNEXPECTED_CONTENT (its result holds no address), ZARNNETERR_NO_MEMORY, or
 * what a result that cannot be read leaves */
char* ZARNExternalIPGet(void);

/* ---- MTU ----------------------------------------------------------------------------------------
 * An MTU is a text of decimal digits; another is refused with ZARNNETERR_BAD_PARAMETER. It is
 * stored in /etc/zarninfo.conf under "IFNAME_mtu" (of a name, the first 16 characters). An Open
 * vSwitch port stands for the interface under it, an Open vSwitch bond for its members. */

/** The stored MTU, "1500" when none is stored. Takes no lock.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER, or ZARNNETERR_OPEN or ZARNNETERR_READ when the file
 * cannot be read */
int ZARNConfGetMTUValue(const char* szIfname, char* szBuf, int cbBuf);

/**
 * Stores the MTU of an interface, of a VLAN under its parent's name first. No kernel change.
 * @return 0, also with nothing stored where the kernel cannot be asked for VLANs; -1 with
 *         ZARNNETERR_BAD_PARAMETER, ZARNNETERR_LOCK (lock), or ZARNNETERR_OPEN, ZARNNETERR_WRITE or
 *         ZARNNETERR_RENAME when a write failed (of the two writes of a VLAN the other is done all
 *         the same)
 * Writes under the settings lock (waits up to 5 seconds).
 */
int ZARNConfSetMTUValue(const char* szMTU, const char* szIfname);

/**
 * Sets the MTU in the kernel, of a VLAN on its parent first, of a bond on its members in order
 * until one refuses. Each interface is taken down for it and brought up again whatever happens,
 * which drops its IPv6 addresses and its routes. No file, no event.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (also a name of more than 16 characters),
 *         ZARNNETERR_VLAN_QUERY (no socket), ZARNNETERR_NOT_FOUND (a name that no interface can
 *         have), ZARNNETERR_REFUSED (the kernel refuses, or a VLAN is its own parent), or what the
 *         look-up of an Open vSwitch device's ports fails with
 */
int ZARNNetSetMTUEth(const char* szMTU, const char* szIfname);

/**
 * Gives an interface an MTU: fires net/mtu_change, stores the MTU, sets it in the kernel, waits 5
 * seconds for the link and fires net/mtu_change again with the same name. On a link known to be
 * slower than 1 Gb/s an MTU of 1500 or more is stored and not applied, which is a success.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER or the code of the step that failed. The setting
 *         stays when the kernel refuses; the second event is fired after a failure only for an Open
 *         vSwitch bond.
 */
int ZARNNetSetMTUValue(const char* szMTU, const char* szIfname);

/** The kernel's MTU of this very interface. @return it; 0 when there is none of that name; -1 with
 * ZARNNETERR_BAD_PARAMETER (no name, or one of more than 16 characters) or ZARNNETERR_OPEN (no
 * socket) */
int ZARNGetMTU(const char* szIfname);

/** The MTU in force: of a bond, the largest of its members'. @return as ZARNGetMTU(), or -1 with
 * ZARNNETERR_BAD_PARAMETER (an Open vSwitch device over nothing), ZARNNETERR_NOT_FOUND (a bond
 * without members), or what the look-up of the members fails with */
int ZARNGetMTUSetting(const char* szIfname);

/* ---- host name ------------------------------------------------------------------------------- */

/**
 * Sets the host name: in the kernel, in /etc/hostname, in /etc/hosts (written whole); has the
 * system logger take it up (/sbin/initctl reload syslog-ng) and fires net/hostname_change. Does
 * nothing on the container edition. Holds the exclusive network lock (waits up to 5 seconds).
 * @param szHostname  1 to 63 characters, no slash, blank or control character
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_HOSTNAME_LENGTH (empty or too long),
 *         ZARNNETERR_LOCK (lock), ZARNNETERR_REFUSED (kernel), ZARNNETERR_OPEN (open),
 *         ZARNNETERR_WRITE (write, also of a device in the place of /etc/hostname),
 *         ZARNNETERR_RENAME (rename), or ZARNNETERR_COMMAND after a failed command or event.
 *         Earlier steps stay done; each file is then the old one or the new one.
 */
int ZARNLnxSetHostname(const char* szHostname);

/**
 * The kernel's host name up to its first dot. Holds the shared network lock (waits up to 5
 * seconds).
 * @param szBuf  at least 64 bytes
 * @return 1; 0 with an empty text when the kernel has none; -1 with ZARNNETERR_BAD_PARAMETER,
 *         ZARNNETERR_LOCK (lock) or ZARNNETERR_REFUSED (kernel, or a name too long)
 */
int ZARNLnxGetHostname(char* szBuf);

/* ---- change hooks: each fires one event of the plugin category "net" ----------------------------
 * stage is a ZARNNETSTAGE_.... A hook answers 0, or -1 with ZARNNETERR_BAD_PARAMETER (an argument
 * is null) or ZARNNETERR_COMMAND when the event could not be set up or delivered, which it logs;
 * that never undoes a change. When an argument cannot be set no plugin is run. */

/**
 * Fires net/ipv4_change (type 0) or net/ipv6_change (type 1), before the change: IFNAME,
 * ORIGIN_ADDRESS, NEW_ADDRESS, PREFIX_LENGTH ("-1" for IPv4), IS_LINK ("true" or "false").
 * @param type   0 IPv4, 1 IPv6
 * @param szOld  the address before the change
 * @param szNew  the address after it
 * @return 0; -1 also with ZARNNETERR_BAD_PARAMETER for another type or a prefix out of range, or as
 *         ZARNNetIfIsLink()
 */
int ZARNNetIPChangePreHook(int type, const char* szIfname, const char* szOld, const char* szNew,
                           unsigned int prefix);

/**
 * Fires net/dns_config_change: INTERFACE, NITEMS, DNS_1 ... DNS_n.
 * @param pServers  addresses of name servers
 * @return 0, or -1 with ZARNNETERR_BAD_PARAMETER or ZARNNETERR_COMMAND, as all hooks
 */
int ZARNNetDnsConfigChangeHook(int stage, const char* szIfname, const KOPACSZLIST* pServers);

/**
 * Fires net/dns_change: NITEMS, DNS_1 ... DNS_n.
 * @param pServers  addresses of name servers
 * @return 0, or -1 with ZARNNETERR_BAD_PARAMETER or ZARNNETERR_COMMAND, as all hooks
 */
int ZARNNetDNSChangeHook(int stage, const KOPACSZLIST* pServers);

/**
 * Fires net/gateway_config_change: TYPE, INTERFACE, GATEWAY_OLD, GATEWAY_NEW.
 * @param szType  what kind of gateway, handed on as it is
 * @param szOld   the gateway before the change
 * @param szNew   the gateway after it
 * @return 0, or -1 with ZARNNETERR_BAD_PARAMETER or ZARNNETERR_COMMAND, as all hooks
 */
int ZARNNetGatewayConfigChangeHook(int stage, const char* szType, const char* szIfname,
                                   const char* szOld, const char* szNew);

/**
 * Fires net/hostname_change, after the change: HOSTNAME.
 * @return 0, or -1 with ZARNNETERR_BAD_PARAMETER or ZARNNETERR_COMMAND, as all hooks
 */
int ZARNNetHostnameChangeHook(const char* szHostname);

/**
 * Fires net/mtu_change: IFACE, MTU_VALUE (text).
 * @return 0, or -1 with ZARNNETERR_BAD_PARAMETER or ZARNNETERR_COMMAND, as all hooks
 */
int ZARNNetMTUChangeHook(const char* szIfname, const char* szMTU, int stage);

/**
 * Sets the arguments of an open net/ifname_change event: ORIGIN_IFNAME and IFNAME (lists), RESULT.
 * @param pPlugin    the event, of KOPAPluginSDKInit()
 * @param pOldNames  names of interfaces before the change
 * @param pNewNames  their names after it
 * @param result     handed on as RESULT
 * @return 0, or -1 as the hooks
 */
int KOPANetIFChgPluginSetArgs(PKOPAPLUGIN pPlugin, const KOPACSZLIST* pOldNames,
                              const KOPACSZLIST* pNewNames, int result);

/**
 * Tells the services in one event, "service", before and after, which kinds of change took place.
 * @param daemonAction  passed on as SERVICE_DAEMON_ACTION
 * @param flags         bit 0 an address, bit 1 the host name, bit 2 an MTU changed
 * @return 0, also when a stage failed (logged); -1 with ZARNNETERR_LOCK (the service-plugin lock is
 *         not had within 5 seconds) or ZARNNETERR_COMMAND (the event cannot be set up)
 */
int KOPAServicePlugin(int daemonAction, unsigned int flags);

/** Stops the job "pppoerelay". @return 0, or -1 with ZARNNETERR_COMMAND */
int KOPAServiceStopBeforeIPChange(void);

#ifdef __cplusplus
}
#endif
