/* SPDX-License-Identifier: Apache-2.0 */
/* DHCP: the built-in server's files and switches, the trial run of the client, the question whether
 * an interface uses DHCP. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <zarncore/zarncore.h>
#include <zarnhacore/zarnhacore.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- records of the server ------------------------------------------------------------------- */

/** One option of an IPv4 subnet, of those in dhcp_options.h; freed with DHCPOptionFree(). */
typedef struct DHCP_OPTION {
  int32_t number;      /* 1 to 254 */
  char name[52];       /* the server's name of the option, at most 49 characters */
  char value[1024];    /* of an option with one value */
  PKOPACSZLIST values; /* of an option with a list of values, else null */
  struct DHCP_OPTION* next;
} DHCP_OPTION;

/** One served subnet of one interface. */
typedef struct DHCP_SUBNET_CONF {
  int32_t enable;
  int32_t reserved1; /* kept for callers that compare the whole record */
  int32_t lease;     /* seconds */
  char start[46];
  char end[46];
  char interface[16];
  char domain[256];
  char dns1[46];
  char dns2[46];
  char dns_more[512]; /* further DNS servers, split at commas; written, not read back */
  char netmask[46];
  char router[46];
  char reserved2[256];
  char tag[20];
  char v6mode[16]; /* "off", "ra-only", "ra-stateless" or "stateful" */
  DHCP_OPTION* options;
} DHCP_SUBNET_CONF;

/** The range of one IPv4 subnet; freed with DHCPRangeFree(). */
typedef struct DHCP_RANGE {
  char start[16];
  char end[16];
  char netmask[16];
  struct DHCP_RANGE* next;
} DHCP_RANGE;

/** Network boot. */
typedef struct DHCP_PXE_CONF {
  int32_t enable;
  int32_t is_remote_tftp; /* 1: from the remote TFTP server, 0: from the local one */
  char local_bootloader[4096];
  char remote_bootloader[4096];
  char remote_tftp_server_ip[20];
} DHCP_PXE_CONF;

/* ---- the server ---------------------------------------------------------------------------------
 * The server is a dnsmasq of the appliance's. These functions write its fragments (".conf") and
 * their switches (".info") in /etc/dhcpd; the network script puts what is switched on together and
 * starts the server with it. A change has no effect before a restart. iptype is 0 for IPv4, 1 for
 * IPv6. No locks; a file is replaced as a whole: a switch keeps its mode and owner, a fragment has
 * mode 0644. A text that would add a line to a file (a newline or another control character in it)
 * and a name that can be no part of a path or that begins with "-" are refused with
 * ZARNNETERR_BAD_PARAMETER and nothing written. Files that cannot be opened, read, written or
 * renamed leave ZARNNETERR_OPEN, ZARNNETERR_READ, ZARNNETERR_WRITE or ZARNNETERR_RENAME, programs
 * that fail ZARNNETERR_COMMAND, memory ZARNNETERR_NO_MEMORY; what is just missing, missing
 * arguments too where nothing else is said, is told by the result and the log alone. Addresses and
 * texts that are no options are written as they are given. Writers run /bin/mkdir for the
 * folder. */

/** Runs "/etc/rc.network nat-start-dhcp". @return 1 when it ends with status 1, else 0 */
int DHCPServerStart(void);

/** Runs "/etc/rc.network nat-restart-dhcp". @return 1 when it ends with status 1, else 0 */
int DHCPServerRestart(void);

/** The same. @return 0 when it ends with status 0, else -1 */
int KOPANetDHCPServerRestart(void);

/** Is the server switched on as a whole (enable="yes" in dhcpd.info)? @return 1 or 0 */
int DHCPIsEnabled(void);

/** Is it switched on for an interface and a family? @return 1, 0 (also without a switch), or -1 for
 * a wrong argument */
int DHCPInterfaceIsEnabled(const char* ifname, int iptype);

/**
 * Switches it on (1) or off.
 * @param enable  1 on, any other off
 * @return 0, also when the file cannot be written, which the log tells; -1 for a wrong argument or
 *         without the folder
 */
int DHCPInterfaceSetEnabled(const char* ifname, int iptype, int enable);

/**
 * The interfaces that have a switch, on or off. Names with "-" or "." in them are passed over;
 * "pxe" is among them where network boot has been set.
 * @param list  replaced by a new list when there are any, the former one is freed; else left alone.
 *              May hold null
 * @return their number, or -1 for a wrong argument (ZARNNETERR_NO_MEMORY)
 */
int DHCPInterfaceListGet(PKOPACSZLIST* list, int iptype);

/* ---- tagged subnets (IPv4) ------------------------------------------------------------------- */

/**
 * Reads dhcpd-IFNAME-TAG.conf and .info. Addresses and the domain are cut to 19 characters.
 * @param tag  which of the interface's tagged subnets
 * @return 1; 0 with ZARNNETERR_BAD_PARAMETER for an unfit name, or when the file or a line of it is
 *         missing (domain and switch may be)
 */
int ZARNNetGetDhcpServerConf(const char* tag, const char* ifname, DHCP_SUBNET_CONF* conf);

/**
 * Writes the switch and, when enable is not 0, the fragment of conf->interface and conf->tag.
 * @param enable  0 writes the switch alone
 * @return 1; 0 with ZARNNETERR_BAD_PARAMETER, or when a file cannot be written: the switch may be
 *         written then
 */
int ZARNNetSetDhcpServerConfigFiles(const DHCP_SUBNET_CONF* conf, int enable);

/* ---- numbered subnets ------------------------------------------------------------------------ */

/**
 * Reads a subnet. The record's options are the caller's to free with DHCPOptionFree().
 * @return 1; 0 when there is none; -1 for a wrong argument, or when a line is missing. An IPv6
 *         subnet that was written without name servers cannot be read.
 */
int DHCPTagConfGet(const char* ifname, unsigned subnet, int iptype, DHCP_SUBNET_CONF* conf);

/**
 * Reads a subnet's switch.
 * @param enable  receives 1 or 0
 * @return 1, 0 (none; *enable is 0), or -1 for a wrong argument
 */
int DHCPTagConfGetEnable(const char* ifname, unsigned subnet, int iptype, int* enable);

/**
 * Writes a subnet's switch: on for 1, else off.
 * @param enable  1 on, any other off
 * @return 0, or -1 (ZARNNETERR_BAD_PARAMETER, or the file cannot be written)
 */
int DHCPTagConfSetEnable(const char* ifname, unsigned subnet, int iptype, int enable);

/**
 * Writes a subnet's fragment. An IPv6 subnet in mode "off" keeps the one it has.
 * Addresses and masks of options are plainly dotted; of an option with a list only the list is
 * written, which must not be empty.
 * Every other text is written as it is, control characters alone are refused: callers were written
 * against it. A quote, a comma in a domain, a text that is no address where one stands, an empty
 * router or an empty list of servers keep the server from starting; whoever takes texts from others
 * checks them first, as zarnnetctl does.
 * @return 0; -1 for a wrong argument, when the file cannot be written, or for an option with a
 *         wrong value: the lines before it are written then
 */
int DHCPTagConfSetConfig(const char* ifname, unsigned subnet, int iptype,
                         const DHCP_SUBNET_CONF* conf);

/** Writes the switch (conf->enable), then the fragment. @return as those two; the switch stays when
 * the fragment fails */
int DHCPTagConfSet(const char* ifname, unsigned subnet, int iptype, const DHCP_SUBNET_CONF* conf);

/** The ranges of an interface's IPv4 subnets 0, 1, 2 ... up to the first number that is missing.
 * @param ranges  holds null; receives a chain that DHCPRangeFree() frees
 * @return their number, or -1 for a wrong argument or a range that is none */
int DHCPGetInterfaceRanges(const char* ifname, DHCP_RANGE** ranges);

/**
 * Frees a chain; null is allowed.
 * @param head  the chain, of DHCPGetInterfaceRanges()
 */
void DHCPRangeFree(DHCP_RANGE* head);

/**
 * Does the network of an address overlap with one that another interface serves? Members of a bond,
 * interfaces without a file and those switched off do not count.
 * @param conflict_if  receives that interface; may be null
 * @param start, end  the range that is to be served, IPv4
 * @param netmask     its netmask, dotted
 * @return 1 or 0; -1 for a wrong argument, or when the ranges of an interface cannot be read
 */
int DHCPIsRangeConflict(const char* ifname, const char* start, const char* end, const char* netmask,
                        char* conflict_if, size_t conflict_if_size);

/**
 * Does the option take a list of values (dhcp_options.h)?
 * @param number  the option's number
 * @return 1 or 0
 */
int DHCPOptionIsListValue(int number);

/**
 * Frees a chain of options with their lists; null is allowed.
 * @param head  the chain, of DHCPTagConfGet()
 */
void DHCPOptionFree(DHCP_OPTION* head);

/* ---- vendor classes -------------------------------------------------------------------------- */

/**
 * Is the text a number from 1 to 254?
 * @param text  decimal digits
 * @return 1 or 0
 */
int DHCPVendorCheckOptNum(const char* text);

/**
 * Appends the vendor classes that have options, each once.
 * @param vendors  the list that is appended to
 * @return 0; -1 without a list, for a file that cannot be read (ZARNNETERR_OPEN, ZARNNETERR_READ),
 *         or with ZARNNETERR_NO_MEMORY
 */
int DHCPVendorEnum(PKOPACSZLIST* vendors);

/**
 * Sets number and value of every option of a vendor class.
 * @param options  the hash in which they are set; it may move
 * @return 0, also when there are none; -1 when it cannot be read (ZARNNETERR_OPEN,
 *         ZARNNETERR_READ), or for a line that reads otherwise
 */
int DHCPVendorGetVendor(const char* vendor, PKOPACSZHASH* options);

/**
 * The value of one option, cut to fit. Number 1 finds the line of number 12 where that comes first.
 * @param number  the option's number
 * @param value   receives it
 * @return 1, 0 when there is none, -1 for a wrong argument, a file that cannot be read, or a line
 *         that reads otherwise
 */
int DHCPVendorGetVendorOpt(const char* vendor, int number, char* value, size_t size);

/**
 * Replaces all options of a vendor class by number and value of the hash.
 * @param options  numbers as decimal text, and their values
 * @return 0; -1 for a wrong argument or when the file cannot be written: the former options are
 *         gone then, unless the vendor or a value was refused
 */
int DHCPVendorSetVendor(const char* vendor, PKOPACSZHASH options);

/**
 * Replaces one option. An empty vendor or value and a number out of range are logged and written
 * all the same.
 * @param number  the option's number, 1 to 254
 * @param value   the new value
 * @return 0, or -1 (ZARNNETERR_BAD_PARAMETER for a text with a control character; the file cannot
 *         be written)
 */
int DHCPVendorSetVendorOpt(const char* vendor, int number, const char* value);

/* ---- network boot ---------------------------------------------------------------------------- */

/**
 * Is network boot switched on?
 * @param enable  receives 1 or 0
 * @return 0 with *enable 1 or 0; -1 for a wrong argument
 */
int DHCPPXEConfGetEnable(int* enable);

/** Reads the settings; all is empty when there are none.
 * @return 0; -1 without a record, or when they cannot be read (ZARNNETERR_OPEN, ZARNNETERR_READ) */
int DHCPPXEConfGet(DHCP_PXE_CONF* conf);

/**
 * Switches network boot on (1) or off.
 * @param enable  1 on, any other off
 * @return 0; -1 when the file cannot be written (ZARNNETERR_OPEN, ZARNNETERR_WRITE,
 *         ZARNNETERR_RENAME)
 */
int DHCPPXEConfSetEnable(int enable);

/** Writes the switch and, when it is 1, the settings of the chosen side and the fragment.
 * @return 0; -1 for a wrong argument (a text of the chosen side is empty: the switch is written
 *         then) or when a file cannot be written */
int DHCPPXEConfSet(const DHCP_PXE_CONF* conf);

/* ---- changes of interfaces ------------------------------------------------------------------- */

/**
 * The server's IPv4 files of an interface follow it to another name, as do the names in them. The
 * switch of IPv6 stays.
 * @param old_if  the interface's former name
 * @param new_if  the name that it has now
 * @return 0, also without the folder; -1 for a wrong argument (ZARNNETERR_BAD_PARAMETER), a file
 *         that cannot be renamed (ZARNNETERR_RENAME), or when sed refuses (ZARNNETERR_COMMAND):
 *         what is done stays done
 * Runs /bin/sed. Does not restart the server.
 */
int DHCPDConfChangeInterface(const char* old_if, const char* new_if);

/**
 * op 1: switches the members' service off, remembering it, and the bond's to what it remembers; any
 * other: the other way round. A member that is off and has something remembered keeps that.
 * Restarts the server.
 * @param op       1 the bond was made, any other it was deleted
 * @param members  the names of its slaves
 * @return 0; -1 for a wrong argument (ZARNNETERR_BAD_PARAMETER; a bond's bad name before anything
 *         is done), or when a switch cannot be read or written
 */
int DHCPDLinkAggrSet(int op, const char* bond, PKOPACSZLIST members);

/* ---- the client ------------------------------------------------------------------------------ */

/**
 * Asks the DHCP server of the network at an interface which address it would hand out; the
 * interface is left as it is. Blocks for as long as the client does.
 * @param info  szName names the interface; szIP and szMask are filled
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (null record, a name that can be no interface's or
 *         begins with "-"), ZARNNETERR_COMMAND (a program failed), ZARNNETERR_OPEN (the client left
 *         no result) or ZARNNETERR_UNEXPECTED_CONTENT (one without an address)
 * Runs /usr/sbin/dhclient --zarn_test, and /bin/cp once for its script. Its lease file in /tmp is
 * made anew where something that is not root's own file lies under its name.
 */
int ZARNIGetDHCPTestNetInfo(ZARNNETIFADDR* info);

/**
 * Does the interface's file say BOOTPROTO=dhcp? A file without the key is repaired to
 * BOOTPROTO=static; one that cannot be read is left alone.
 * Reads, and repairs, under the shared network lock.
 * @return 1 or 0; 0 also without a name (ZARNNETERR_BAD_PARAMETER) or a file, or when the lock is
 *         not had within 5 seconds
 */
int BlZARNLnxIsDHCP(const char* ifname);

#ifdef __cplusplus
}
#endif
