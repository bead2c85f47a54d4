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
