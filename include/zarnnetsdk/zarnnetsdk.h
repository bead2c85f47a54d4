/* SPDX-License-Identifier: Apache-2.0 */
/*
 * libzarnnetsdk: reads and changes the networking of the appliance.
 *
 * What holds for every function, unless its own text says otherwise:
 *  - There is nothing to initialise and nothing to shut down. A call runs on the caller's thread
 *    and returns when the change is written and applied, or has failed. Changing anything needs
 *    root.
 *  - Actions and getters answer 0 or -1, predicates 1 or 0, enumerators a count or -1.
 *  - A failure sets the calling thread's error state (KOPACErrGet(), KOPACErrorGetFile(),
 *    KOPACErrorGetLine()) and writes one line to syslog. Codes are written 0x%04X;
 *    ZARNNETERR_BAD_PARAMETER is a bad argument and ZARNNETERR_NO_MEMORY is memory exhausted in
 *    every function.
 *  - A required text that is null or empty is a bad argument; nothing is changed then.
 *  - Buffers belong to the caller and are passed with their size in bytes; text handed out is cut
 *    to fit and always ends with a NUL. Records are plain and fixed in layout. What the library
 *    allocates for the caller says which function frees it.
 *  - Interface names are those of the kernel, at most 15 characters.
 *  - Functions may be called from several threads, except ZARNNetNtoa(), which answers in a buffer
 *    of its own. Changes to one interface are the caller's to serialise where a function takes no
 *    lock.
 */
/*
 * Parameters that mean the same everywhere; where a function has more to say of one, it does.
 *  szIfname, ifname, bond, szBond, szBridge, szVlan, szRowDev
 *      the name of an interface, of a bond, bridge, VLAN or parent of VLANs; required
 *  szIP, szAddr, szAddr1, szAddr2, szAddrA, szAddrB, szStart, szEnd
 *      an address as text; required
 *  szMask
 *      a netmask as dotted text; required
 *  szHost
 *      the name of a host, or an address of either family; required
 *  szHostname
 *      a host name; required
 *  szMTU
 *      an MTU in bytes, as decimal digits; required
 *  prefix
 *      a prefix length in bits
 *  szBuf, szOut
 *      receives the text
 *  cbBuf, cbOut, cbIP, cbIfname, cbAddr, cbGateway, size, ip_size, mask_size, conflict_if_size
 *      the size of the buffer before it, in bytes, the NUL at its end included
 *  ppList
 *      the list that is appended to; required. It may move: *ppList is its place afterwards
 *  conf, pConf, pOpt, pInfo, pConfig, pNetInfo, pSettings, pVlan
 *      the record that is read or filled in; required, unless the text lets it be null
 *  iptype
 *      0 IPv4, 1 IPv6
 *  subnet
 *      the number of one of the interface's subnets, from 0
 *  vendor
 *      the name of a vendor class; required
 *  selector
 *      a ZARNNETKIND_..., as for KOPANetGetInterfaceInfo()
 *  stage
 *      ZARNNETSTAGE_BEFORE or ZARNNETSTAGE_AFTER
 */
#pragma once

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/dhcp_options.h>
#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/dns_route.h>
#include <zarnnetsdk/error.h>
#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/ipv6.h>
#include <zarnnetsdk/pppoe.h>
#include <zarnnetsdk/tunnel.h>
#include <zarnnetsdk/virtual.h>
