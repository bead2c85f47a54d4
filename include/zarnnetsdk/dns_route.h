/* SPDX-License-Identifier: Apache-2.0 */
/* Name servers, the default gateway, and the routes to the subnets that the appliance is in. */
#pragma once

#include <zarncore/zarncore.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- name servers -------------------------------------------------------------------------------
 * In mode "static" the servers are those of /etc/resolv.conf.static, in any other those learned on
 * the interfaces (/etc/iproute2/config/resolv4.conf, then resolv6.conf). /etc/resolv.conf is always
 * rebuilt from them and replaced as a whole: a reader finds the old file or the new one, and a
 * failure leaves the old one. The mode is the key dns_mode of /etc/zarninfo.conf. A list that is
 * handed in stays the caller's; one that is filled is appended to. */

/**
 * Makes these the fixed servers, sets mode "static" and rebuilds the resolver file.
 * @param pList  IPv4 and IPv6 addresses, at least one
 * @return 0, or -1: ZARNNETERR_BAD_PARAMETER (nothing is written or announced then),
 *         ZARNNETERR_OPEN (no temporary file), ZARNNETERR_WRITE (not written, such as on a full
 *         disk), ZARNNETERR_RENAME (not renamed), or what ZARNNetDNSModeSet() fails with; the
 *         stored list stays in that case
 * Fires net/dns_config_change before and, when all is done, after. Takes the lock of
 * ZARNNetDNSUpdate() for the rebuild alone; of two callers at once one list stays whole.
 */
int ZARNNetDNSListSet(PKOPACSZLIST pList);

/** The same with one server. @return as ZARNNetDNSListSet() */
int ZARNNetDNSSet(const char* szAddr);

/**
 * Stores the mode, "static" or "auto", and rebuilds the resolver file.
 * @param szMode  "static" or "auto"
 * @return 0, or -1: ZARNNETERR_BAD_PARAMETER (another mode), what settings that cannot be written
 *         leave, or what ZARNNetDNSUpdate() fails with; the mode stays stored then
 */
int ZARNNetDNSModeSet(const char* szMode);

/** The fixed servers; none without a file. @return 0; -1 with ZARNNETERR_BAD_PARAMETER (no list),
 * ZARNNETERR_READ (reading failed before the end) or ZARNNETERR_NO_MEMORY */
int ZARNNetStaticDNSListGet(PKOPACSZLIST* ppList);

/** The servers of the resolver file; none without a file. Reads under the shared network lock.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (no list), ZARNNETERR_LOCK (lock not had within 5
 * seconds), ZARNNETERR_READ (reading failed before the end) or ZARNNETERR_NO_MEMORY */
int ZARNNetDNSListGet(PKOPACSZLIST* ppList);

/** The first server of the resolver file, empty when there is none. @return as ZARNNetDNSListGet();
 * the buffer is left alone on failure */
int ZARNNetDNSGet(char* szBuf, int cbBuf);

/**
 * Replaces /etc/resolv.conf (mode 0644) by these servers and lines. Takes no lock.
 * @param pServers  written as "nameserver<tab>...", at least one; not checked to be addresses
 * @param pExtra    further lines, such as "domain<tab>..."; may be null or empty
 * @return 0, or -1: ZARNNETERR_BAD_PARAMETER (no server, or a text with a newline in it),
 *         ZARNNETERR_OPEN, ZARNNETERR_WRITE or ZARNNETERR_RENAME as for ZARNNetDNSListSet()
 * Fires net/dns_change before and after the replacement.
 */
int ZARNNetDNSFileSet(PKOPACSZLIST pServers, PKOPACSZLIST pExtra);

/**
 * Rebuilds the resolver file from the mode's source and the line "domain<tab>..." of
 * /etc/resolv.conf.option, then reloads the services ddns and, if it runs, zarnrelayd. Without any
 * server the file is left as it is. A line of the source that names no server repeats the one
 * before it.
 * @return 0, or -1: ZARNNETERR_LOCK (lock not had within 5 seconds), ZARNNETERR_READ (the settings
 *         or a source that is there cannot be read), or what ZARNNetDNSFileSet() fails with
 * Holds the network lock for writing, also while the plugins and the services run.
 */
int ZARNNetDNSUpdate(void);

/* ---- default gateway (IPv4) ---------------------------------------------------------------------
 * The stored one is the key GATEWAY of /etc/sysconfig/network, the active one is the kernel's first
 * default route; a setter changes one of the two. No locks, no events. */

/** The stored gateway, empty when there is none. @return 0; -1 with ZARNNETERR_BAD_PARAMETER, or
 * ZARNNETERR_OPEN or ZARNNETERR_READ (the file cannot be read) */
int ZARNNetDefaultGatewayGetConf(char* szBuf, int cbBuf);

/**
 * Stores the gateway; null or empty removes it.
 * @param szGateway  an IPv4 address; null or empty
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (a text that begins with "-" or has other characters
 *         than letters, digits and ".:/%_-"), or what a file that cannot be written leaves
 */
int ZARNNetDefaultGatewaySetConf(const char* szGateway);

/**
 * Replaces the kernel's default route; null or empty only removes it.
 * @param szGateway  an IPv4 address; null or empty
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (as for ZARNNetDefaultGatewaySetConf(); the old route
 *         stays), or ZARNNETERR_COMMAND when the kernel does not take the gateway, and the old
 *         route is gone then
 * Runs /sbin/route.
 */
int ZARNNetDefaultGatewaySet(const char* szGateway);

/**
 * The kernel's default route.
 * @param szGateway  receives the gateway as dotted text; may be null
 * @param szIfname   receives the interface; may be null
 * @return 0, also without a default route (the buffers are left alone then: clear them first); -1
 *         with ZARNNETERR_BAD_PARAMETER (a buffer without room), ZARNNETERR_OPEN (/proc/net/route)
 *         or ZARNNETERR_UNEXPECTED_CONTENT (a line of it that reads otherwise)
 */
int DefaultGatewayGet(char* szGateway, int cbGateway, char* szIfname, int cbIfname);

/** The gateway alone. @return as DefaultGatewayGet() */
int ZARNNetDefaultGatewayGet(char* szBuf, int cbBuf);

/** The interface alone. @return as DefaultGatewayGet() */
int ZARNNetDefaultGatewayInterfaceGet(char* szBuf, int cbBuf);

/* ---- subnet routes ------------------------------------------------------------------------------
 * The route to an interface's own subnet, with the interface's address as its source. op is 0 to
 * install it in place of the one that is there, 1 to remove it. Runs /sbin/ip, and /sbin/route
 * where that refuses; routes that both refuse are noted in the log and fail nothing. */

/**
 * Installs or removes the route that an address and its netmask make.
 * @param op  0 installs, 1 removes
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER for an argument that is null or does not parse, or
 *         another op
 */
int NetRoutetableEdit(unsigned int op, const char* szIP, const char* szMask, const char* szIfname);

/**
 * The same for an interface with the address of its lease (/etc/dhclient/ipv4/dhcpcd-IFNAME.info)
 * on DHCP, of its file otherwise. A port of an Open vSwitch is handled as the switch's device,
 * ovs_IFNAME. Only interfaces of kind 2 (KOPANetGetInterfaceInfo()) have such a route; op 0 leaves
 * those on DHCP alone.
 * @param op  0 installs, 1 removes
 * @return 0, also when there is nothing to do; -1 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_OPEN
 *         (without a lease), ZARNNETERR_UNEXPECTED_CONTENT (without an address or a netmask), or
 *         ZARNNETERR_OPEN or ZARNNETERR_READ when the file cannot be read
 */
int NetRoutetableHandler(unsigned int op, const char* szIfname);

/**
 * Removes the subnet routes of all interfaces that are up without carrier, unless just one
 * interface is up.
 * @return 0; -1 with ZARNNETERR_LOCK (lock not had within 5 seconds), ZARNNETERR_NO_MEMORY,
 *         ZARNNETERR_NOT_FOUND (no interface is up), ZARNNETERR_OPEN or
 *         ZARNNETERR_UNEXPECTED_CONTENT (/proc/net/dev), or when NetRoutetableHandler() fails for
 *         one: the rest is not looked at then
 * Holds the shared network lock.
 */
int NetRoutetableCheck(void);

#ifdef __cplusplus
}
#endif
