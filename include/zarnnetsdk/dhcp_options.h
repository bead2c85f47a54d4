/* SPDX-License-Identifier: Apache-2.0 */
/* The options of an IPv4 subnet beyond router, DNS servers and domain: which there are, by the
 * server's names and numbers, and what values they take. An option is added here and
 * nowhere else. */
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/** What an option takes; addresses are plainly dotted IPv4. */
enum {
  /* one value, in DHCP_OPTION.value */
  ZARNNET_DHCP_INTEGER = 1,   /* a whole number from least to most */
  ZARNNET_DHCP_UNSIGNED = 2,  /* a whole number without a sign */
  ZARNNET_DHCP_NODE_TYPE = 3, /* 1, 2, 4 or 8 */
  ZARNNET_DHCP_ADDRESS = 4,   /* one address */
  ZARNNET_DHCP_TEXT = 5,      /* any text but an empty one */
  /* a list, in DHCP_OPTION.values; DHCPOptionIsListValue() answers 1 */
  ZARNNET_DHCP_ADDRESSES = 6, /* addresses */
  ZARNNET_DHCP_PAIRS = 7,     /* addresses and netmasks in turn */
  ZARNNET_DHCP_ROUTES = 8     /* ADDRESS/PREFIX and gateways in turn */
};

/** One row of the table: an option that a subnet can have. */
typedef struct ZARNNET_DHCP_OPTION {
  int32_t number;
  const char* name;
  int32_t takes; /* ZARNNET_DHCP_INTEGER ... */
  int32_t least; /* of ZARNNET_DHCP_INTEGER, else 0 */
  int32_t most;
} ZARNNET_DHCP_OPTION;

/** All of them, in the order of their numbers. Not exported: a source that reads it has its own. */
static const ZARNNET_DHCP_OPTION ZARNNetDhcpOptions[] = {
    {7, "log-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {9, "lpr-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {13, "boot-file-size", ZARNNET_DHCP_INTEGER, 0, 65536},
    {16, "swap-server", ZARNNET_DHCP_ADDRESS, 0, 0},
    {17, "root-path", ZARNNET_DHCP_TEXT, 0, 0},
    {18, "extension-path", ZARNNET_DHCP_TEXT, 0, 0},
    {19, "ip-forward-enable", ZARNNET_DHCP_INTEGER, 0, 1},
    {20, "non-local-source-routing", ZARNNET_DHCP_INTEGER, 0, 1},
    {21, "policy-filter", ZARNNET_DHCP_PAIRS, 0, 0},
    {22, "max-datagram-reassembly", ZARNNET_DHCP_INTEGER, 576, 65536},
    {23, "default-ttl", ZARNNET_DHCP_INTEGER, 1, 255},
    {26, "mtu", ZARNNET_DHCP_INTEGER, 68, 65536},
    {27, "all-subnets-local", ZARNNET_DHCP_INTEGER, 0, 1},
    {31, "router-discovery", ZARNNET_DHCP_INTEGER, 0, 1},
    {32, "router-solicitation", ZARNNET_DHCP_ADDRESS, 0, 0},
    {34, "trailer-encapsulation", ZARNNET_DHCP_INTEGER, 0, 1},
    {35, "arp-timeout", ZARNNET_DHCP_UNSIGNED, 0, 0},
    {36, "ethernet-encap", ZARNNET_DHCP_INTEGER, 0, 1},
    {37, "tcp-ttl", ZARNNET_DHCP_INTEGER, 1, 255},
    {38, "tcp-keepalive", ZARNNET_DHCP_UNSIGNED, 0, 0},
    {40, "nis-domain", ZARNNET_DHCP_TEXT, 0, 0},
    {41, "nis-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {42, "ntp-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {44, "netbios-ns", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {45, "netbios-dd", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {46, "netbios-nodetype", ZARNNET_DHCP_NODE_TYPE, 0, 0},
    {47, "netbios-scope", ZARNNET_DHCP_TEXT, 0, 0},
    {48, "x-windows-fs", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {49, "x-windows-dm", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {58, "T1", ZARNNET_DHCP_UNSIGNED, 0, 0},
    {59, "T2", ZARNNET_DHCP_UNSIGNED, 0, 0},
    {64, "nis+-domain", ZARNNET_DHCP_TEXT, 0, 0},
    {65, "nis+-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {68, "mobile-ip-home", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {69, "smtp-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {70, "pop3-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {71, "nntp-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {74, "irc-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {120, "sip-server", ZARNNET_DHCP_ADDRESSES, 0, 0},
    {121, "classless-static-route", ZARNNET_DHCP_ROUTES, 0, 0},
};

#ifdef __cplusplus
}
#endif
