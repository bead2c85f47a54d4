/* IPv4 addresses of an interface, and the events that tell the appliance of network changes. */
#pragma once

#include <zarncore/zarncore.h>
#include <zarnsdk/zarnsdk.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- addresses ------------------------------------------------------------------------------------ */

/**
 * Adds, deletes or flushes an address in the running kernel; no file is touched.
 * @param szType    "-4" or "-6"
 * @param prefix    prefix length, at most 32 or 128
 * @param szAction  "add" (IPv4: replaces the interface's address), "del", or "flush" (all addresses;
 *                  szIP and prefix are ignored)
 * @return 0, or -1; what earlier steps changed stays (after a failed second ifconfig the interface is
 *         left at 0.0.0.0)
 * Adding an address that the interface does not have fires net/ipv4_change or net/ipv6_change first.
 * Runs /sbin/ip, /sbin/ifconfig, /bin/ipcalc, and zarnnetdtool when the same IPv4 address is set again.
 */
int ZARNNetSetIP(const char *szType, const char *szIfname, const char *szIP, unsigned int prefix,
                 const char *szAction);

/**
 * Gives the interface a fixed IPv4 address, in its file and in the kernel. On failure the file is put
 * back as it was.
 * @param szMask  dotted netmask
 * @return 0, or -1 (0x0D00: an argument null or empty)
 * Writes ifcfg-IFNAME (DEVICE, ONBOOT, IPADDR, NETMASK, BOOTPROTO; drops MASTER and SLAVE). Runs /bin/cp,
 * /sbin/stop dhcp-client and what ZARNNetSetIP() runs. Takes no lock: the caller serialises.
 */
int ZARNILnxSetIPNetmask(const char *szIfname, const char *szIP, const char *szMask);

/** The address the kernel has. @return 1; 0 with "0.0.0.0" in the buffer; -1 with 0x0D00 */
int ZARNILnxGetIP(const char *szIfname, char *szBuf, int cbBuf);

/** The configured address: of the lease on DHCP, of the interface's file otherwise.
 * @return 1; 0 without an address (buffer emptied) or without a file (buffer left alone); -1 on failure */
int ZARNILnxGetIPFromCfg(const char *szIfname, char *szBuf, int cbBuf);

/** Removes all addresses of one family from the kernel; szType is "-4" or "-6". @return 0 or -1 */
int ZARNNetFlushIP(const char *szType, const char *szIfname);

/** The appliance's address as seen from the internet, asked of /usr/zarn/sbin/ddnsd -e.
 * @return a 16-byte text to be freed with free(), or null */
char *ZARNExternalIPGet(void);

/* ---- change hooks: each fires one event of the plugin category "net" -------------------------------
 * stage is 4 before the change and 5 after it. A hook answers 0, or -1 when the event could not be set
 * up or delivered; that never undoes a change. */

/**
 * Fires net/ipv4_change (type 0) or net/ipv6_change (type 1), before the change: IFNAME, ORIGIN_ADDRESS,
 * NEW_ADDRESS, PREFIX_LENGTH ("-1" for IPv4), IS_LINK ("true" or "false").
 * @return 0, or -1; 0x0D00 for another type or a prefix out of range
 */
int ZARNNetIPChangePreHook(int type, const char *szIfname, const char *szOld, const char *szNew,
                           unsigned int prefix);

/** Fires net/dns_config_change: INTERFACE, NITEMS, DNS_1 ... DNS_n. */
int ZARNNetDnsConfigChangeHook(int stage, const char *szIfname, const KOPACSZLIST *pServers);

/** Fires net/dns_change: NITEMS, DNS_1 ... DNS_n. */
int ZARNNetDNSChangeHook(int stage, const KOPACSZLIST *pServers);

/** Fires net/gateway_config_change: TYPE, INTERFACE, GATEWAY_OLD, GATEWAY_NEW. */
int ZARNNetGatewayConfigChangeHook(int stage, const char *szType, const char *szIfname,
                                   const char *szOld, const char *szNew);

/** Fires net/hostname_change, after the change: HOSTNAME. */
int ZARNNetHostnameChangeHook(const char *szHostname);

/** Fires net/mtu_change: IFACE, MTU_VALUE (text). */
int ZARNNetMTUChangeHook(const char *szIfname, const char *szMTU, int stage);

/** Sets the arguments of an open net/ifname_change event: ORIGIN_IFNAME and IFNAME (lists), RESULT. @return 0 or -1 */
int KOPANetIFChgPluginSetArgs(PKOPAPLUGIN pPlugin, const KOPACSZLIST *pOldNames,
                              const KOPACSZLIST *pNewNames, int result);

/**
 * Tells the services in one event, "service", before and after, which kinds of change took place.
 * @param daemonAction  passed on as SERVICE_DAEMON_ACTION
 * @param flags         bit 0 an address, bit 1 the host name, bit 2 an MTU changed
 * @return 0, also when a stage failed (logged); -1 when the service-plugin lock is not had within 5
 *         seconds or the event cannot be set up
 */
int KOPAServicePlugin(int daemonAction, unsigned int flags);

/** Stops the job "pppoerelay". @return 0 or -1 */
int KOPAServiceStopBeforeIPChange(void);

#ifdef __cplusplus
}
#endif
