/* SPDX-License-Identifier: Apache-2.0 */
/* Addresses as text: validation and arithmetic, which neither read nor change the system, but for
 * the two functions that ask /bin/ipcalc. And questions about ports and hosts, and whether another
 * host uses an address. */
#pragma once

#include <stdint.h>

#include <zarncore/zarncore.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * Splits a dotted address into its numbers. Each part is read as C writes numbers: 0x1F is
 * hexadecimal, a leading 0 octal; the range is the caller's to test.
 * @param szIP    text; beyond 31 characters it is cut
 * @param rgPart  receives the parts, first part first
 * @return how many parts were read: 4 for a whole address; ZARNNETERR_MALFORMED_ADDRESS is set for
 *         fewer
 */
int cKOPAISepIP(const char* szIP, unsigned int rgPart[4]);

/**
 * Is the text the IPv4 address of a host (first part not 127 and not above 223)? Of a longer text
 * the first 31 characters are judged.
 * @return 1; 0 with ZARNNETERR_MALFORMED_ADDRESS, or ZARNNETERR_BAD_PARAMETER for null
 */
int BlKOPAIsIpAddr(const char* szIP);

/**
 * The prefix length of a netmask given as four numbers.
 * @param rgPart  the four numbers, first part first
 * @return 1 to 32; 0 with ZARNNETERR_MALFORMED_ADDRESS when a part exceeds 255 or the one-bits are
 *         not contiguous; 0 for 0.0.0.0
 */
int cKOPAICalMask(const unsigned int rgPart[4]);

/**
 * Is the text a netmask? A valid one is rewritten in place as plain decimal ("255.255.255.0x0"
 * becomes "255.255.255.0"), which is never longer than what was given.
 * @param szMask  the text, which is rewritten
 * @return 1, or 0 with ZARNNETERR_MALFORMED_ADDRESS, or ZARNNETERR_BAD_PARAMETER for null
 */
int BlKOPAIsIpMask(char* szMask);

/** Is the text a non-zero contiguous netmask? The text is left alone. @return 1, or 0 with
 * ZARNNETERR_MALFORMED_ADDRESS; null logs and sets ZARNNETERR_BAD_PARAMETER */
int BlKOPAIsValidIpMask(const char* szMask);

/**
 * "a.b.c.d/N" to "network/netmask", N from 1 to 32.
 * @param szIn   text of at most 63 characters
 * @param szOut  receives the result, at least 64 bytes; null: szIn, 64 bytes, is overwritten
 * @return 0, or -1 with ZARNNETERR_BAD_PARAMETER (null, no "/") or ZARNNETERR_MALFORMED_ADDRESS
 *         (malformed)
 */
int ErrKOPASubnetToIpMask(char* szIn, char* szOut);

/**
 * "a.b.c.d/m.m.m.m" to "network/N".
 * @param szIn   text of at most 63 characters
 * @param szOut  receives the result, at least 64 bytes; null: szIn, 64 bytes, is overwritten
 * @return as ErrKOPASubnetToIpMask()
 */
int ErrKOPAIpMaskToSubnet(char* szIn, char* szOut);

/** The number of one-bits of a dotted netmask, contiguous or not. @return 0 to 32; -1 with
 * ZARNNETERR_MALFORMED_ADDRESS, or ZARNNETERR_BAD_PARAMETER for null */
int ZARNNetNetmaskToPrefix(const char* szMask);

/** Is the text an IPv6 address, with or without "/" and a prefix length of 0 to 128? @return 1, or
 * 0, with ZARNNETERR_BAD_PARAMETER for null */
int BlKOPAIsv6IpAddrValid(const char* szIP);

/**
 * Is the text a host name: a letter or "_", then letters, digits, "_" or "-", at most 15 in all?
 * @param szName  the text
 * @return 1 or 0
 */
int BlKOPAIsHostname(const char* szName);

/**
 * Is the text one label of a mail domain: not empty, no blank or control character, none of
 * "(),.:;<>[]\@?
 * @param szAtom  the text
 * @return 1 or 0
 */
int BlKOPAIsAtom(const char* szAtom);

/**
 * Is the text a domain: atoms joined by single dots? Of a longer text the first 511 characters are
 * judged.
 * @param szDomain  the text
 * @return 1, or 0, with ZARNNETERR_BAD_PARAMETER for null
 */
int BlKOPAIsDomain(const char* szDomain);

/**
 * Do two addresses lie in one subnet? All three texts are IPv4, or all three IPv6.
 * @return 1; 0 also for text that does not parse or mixed families; a null argument sets
 *         ZARNNETERR_BAD_PARAMETER
 */
int ZARNNetIsSameSubnet(const char* szAddr1, const char* szAddr2, const char* szMask);

/**
 * Does an address lie between two others, bounds included? The bounds may come in either order.
 * @param family  AF_INET or AF_INET6
 * @return 1, 0, or -1 with ZARNNETERR_MALFORMED_ADDRESS (a text does not parse) or
 *         ZARNNETERR_BAD_PARAMETER (null, another family)
 */
int KOPAIsIpInRange(const char* szAddr, const char* szStart, const char* szEnd, int family);

/** Is the IPv4 address private, loopback or link-local? @return 1 or 0, with
 * ZARNNETERR_MALFORMED_ADDRESS for other texts, ZARNNETERR_BAD_PARAMETER for null */
int ZARNNetIsPrivateIP(const char* szIP);

/** The family of an address text. @return AF_INET (2), AF_INET6 (10) or 0 */
int ZARNNetGetAddrType(const char* szIP);

/**
 * A number as dotted text.
 * @param value  the address, first part in the top byte
 * @return text in one static buffer that the next call overwrites, in whatever thread
 */
const char* ZARNNetNtoa(uint32_t value);

/**
 * The broadcast address of a subnet, asked of /bin/ipcalc -b.
 * @param szAddr  address with prefix or mask, as ipcalc takes it
 * @param szOut   receives the address
 * @param cbOut   size of szOut in bytes; also bounds the line that is read from ipcalc
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (a missing argument, an address with "-" first) or
 *         ZARNNETERR_COMMAND (ipcalc is missing or prints no usable line)
 */
int ZARNNetCalBroadcast(const char* szAddr, char* szOut, int cbOut);

/**
 * The network address of a subnet, asked of /bin/ipcalc -n.
 * @param szAddr  address with prefix or mask, as ipcalc takes it
 * @param szOut   receives the address
 * @param cbOut   size of szOut in bytes; also bounds the line that is read from ipcalc
 * @return as ZARNNetCalBroadcast()
 */
int ZARNNetCalNetwork(const char* szAddr, char* szOut, int cbOut);

/* ---- ports, hosts ---------------------------------------------------------------------------- */

/**
 * The local ports of a range that are taken: each once, the lowest first. Of TCP these are the
 * ports of listeners and of connections, which no server could take, but not those of connections
 * that are only being waited out; of UDP those of all sockets. Of which address a port is taken
 * does not matter. IPv4 and IPv6 are looked at.
 * @param first, last  1 to 65535, bounds included
 * @param szProto      "tcp" or "udp" in any case; null or empty: both
 * @param rgPort       receives the first cPort of them; null with cPort 0 only counts
 * @param cPort        room in rgPort, in numbers
 * @return how many there are, which may exceed cPort; -1 with ZARNNETERR_BAD_PARAMETER, or
 *         ZARNNETERR_OPEN or ZARNNETERR_READ for a table of the kernel (/proc/net/tcp, tcp6, udp,
 *         udp6; those of IPv6 may be missing)
 */
int ZARNNetGetPortUsedInRange(int first, int last, const char* szProto, int* rgPort, int cPort);

/**
 * Is a port of the range taken, in the sense of ZARNNetGetPortUsedInRange()?
 * @param first, last  1 to 65535, bounds included
 * @param szProto      "tcp" or "udp" in any case; null or empty: both
 * @return 1, 0, or -1 as there
 */
int ZARNNetIsPortRangeUsed(int first, int last, const char* szProto);

/**
 * Does a host answer an ICMP echo? Each of its addresses is asked at once and then every second, so
 * that one lost packet is no answer either way. Needs root, or a system that lets the user open
 * ping sockets.
 * @param szHost           an address of either family, or a name
 * @param cTimeoutSeconds  at least 1. Looking a name up counts, but is not cut short: the resolver
 *                         has limits of its own
 * @return 1 as soon as an answer comes; 0 when the time is over, at once where no route leads, or
 *         with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_OPEN (no socket), or a code of
 *         ZARNNetLookupIP() for a name that is not known
 */
int BlKOPAIsConnected(const char* szHost, int cTimeoutSeconds);

/**
 * The address of a host, from the system's resolver (/etc/hosts, name servers).
 * @param szIP  receives the first address whose text fits into cbIP bytes: none is cut. 46 bytes
 *              take either family
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (also when none fits), ZARNNETERR_NOT_FOUND (no such
 *         host, or none with an address), ZARNNETERR_REFUSED (the resolver failed) or
 *         ZARNNETERR_NO_MEMORY
 */
int ZARNNetLookupIP(const char* szHost, char* szIP, int cbIP);

/**
 * The interface that has an address of either family, with any prefix; "fe80::1%eth0" looks at eth0
 * alone.
 * @param szIfname  16 bytes take every name
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (also for a buffer that would cut the name),
 *         ZARNNETERR_MALFORMED_ADDRESS (no address), ZARNNETERR_NOT_FOUND (nobody has it) or
 *         ZARNNETERR_REFUSED
 */
int ZARNNetIP2If(const char* szIP, char* szIfname, int cbIfname);

/**
 * Sends the frame that wakes a machine over an interface, which has to be up: broadcast, ethertype
 * 0x0842, six bytes of ones and the address sixteen times.
 * @param szMac  "02:00:00:00:00:10", or with "-"
 * @return 0 when it was sent; -1 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NOT_FOUND (no such
 *         interface), ZARNNETERR_OPEN (no packet socket) or ZARNNETERR_COMMAND (not sent)
 */
int KOPANetEtherWake(const char* szIfname, const char* szMac);
/* ---- addresses in use ------------------------------------------------------------------------ */

/** Told of a conflict: the interface, and the address that another host has. */
typedef void (*PFNIPCONFLICT)(const char* szIfname, const char* szAddr);

/**
 * Asks the network of each interface whether another host uses an address, with /sbin/arping (3
 * seconds an entry). Answers of the appliance's own ports do not count: the MACs of its first 16
 * "eth" ports follow "-F", unless arp_ignore in /etc/zarninfo.conf is "yes".
 * @param pIfnames     interfaces
 * @param pAddrs       the address to ask for at each; null: the interface's own, entries without
 *                     one are skipped
 * @param pfnConflict  called for each conflict; null: nobody
 * @return 1 with any conflict, else 0, also for entries that could not be asked
 *         (ZARNNETERR_BAD_PARAMETER tells of one whose name or address no program may be given); -1
 *         with ZARNNETERR_BAD_PARAMETER (no interfaces, lists of different length) or
 *         ZARNNETERR_NO_MEMORY
 */
int IpConflictDetectInternal(const KOPACSZLIST* pIfnames, const KOPACSZLIST* pAddrs,
                             PFNIPCONFLICT pfnConflict);

/**
 * IpConflictDetectInternal() for one address that an interface may get. The address it already has
 * is none.
 * @return 1, 0, or -1 with ZARNNETERR_BAD_PARAMETER (a missing argument, one that no program may be
 *         given) or ZARNNETERR_NO_MEMORY
 */
int ZARNIIpConflict(const char* szIfname, const char* szAddr);

/**
 * Is the configured address of a bond (kernel or Open vSwitch) that of a member other than its
 * first?
 * @param szOutPort  receives the first 4 characters of that member's name, whatever cbOutPort says
 * @param cbOutPort  size of szOutPort in bytes; the terminator is written when it is above 4
 * @return 1 (szOutPort filled), 0, or -1 with ZARNNETERR_BAD_PARAMETER, as ZARNNetLinkAggrGet(), or
 *         as ZARNILnxGetIPFromCfg()
 */
int ZARNNetBondIPConflict(const char* szBond, char* szOutPort, int cbOutPort);

#ifdef __cplusplus
}
#endif
