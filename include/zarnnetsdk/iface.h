/* SPDX-License-Identifier: Apache-2.0 */
/* Interfaces: which there are, their state, their configuration files' block flags, and the network
 * topology. The name of an interface that leads to a file is refused with ZARNNETERR_BAD_PARAMETER
 * when it is null, empty, begins with "-", or has a slash, a blank or a control character. */
#pragma once

#include <stdint.h>

#include <zarnhacore/zarnhacore.h>
#include <zarnnetsdk/virtual.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- block flags: who keeps an interface for itself ------------------------------------------ */

enum {
  ZARNNET_BLOCK_HA = 1,      /* high availability */
  ZARNNET_BLOCK_AHA = 2,     /* active/active high availability */
  ZARNNET_BLOCK_VIRTUAL = 4, /* virtualisation */
  ZARNNET_BLOCK_QUENDAR = 8  /* the mail-server package */
};

/**
 * Sets or clears block flags in the interface's file, under a lock on that file (waits up to 30
 * seconds). Each flag is a key (BLOCK_HA ...); BLOCK_CNT counts them.
 * @param mask   the ZARNNET_BLOCK_... flags to change, handled in the order of their bits until one
 *               fails
 * @param value  0 clears; 1 sets; any other value writes "no" and still counts, for callers that
 *               rely on it
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (no name, or one that is none: above),
 *         ZARNNETERR_LOCK (lock), ZARNNETERR_OPEN or ZARNNETERR_READ (the file cannot be read),
 *         ZARNNETERR_WRITE or ZARNNETERR_RENAME (it cannot be written)
 */
int ZARNNetIFBlockSet(const char* szIfname, unsigned int mask, int value);

/** The flags that are set. @return the mask, 0 while BLOCK_CNT is 0 or absent, or there is no file;
 * -1 with ZARNNETERR_BAD_PARAMETER for no name, ZARNNETERR_OPEN or ZARNNETERR_READ for a file that
 * cannot be read */
int ZARNNetIFBlockGet(const char* szIfname);

/* ---- inventory ------------------------------------------------------------------------------- */

/** One interface as the kernel has it. */
typedef struct KOPANetIfInfo {
  char name[16];
  unsigned char mac[6];
  char ip[64];           /* dotted IPv4 address, empty without one */
  uint32_t reserved1;    /* not filled */
  int32_t link;          /* 2 with carrier, 0 without */
  int32_t flags;         /* the kernel's IFF_... flags, as a signed 16-bit value */
  uint32_t reserved2[3]; /* not filled */
  char mask[20];         /* dotted netmask */
} KOPANetIfInfo;

/** Selectors of interfaces: a kind, and what may be added to it. Another kind is: no loopback or
 * point-to-point. */
enum {
  ZARNNETKIND_PORT = 1, /* no loopback, point-to-point, bond or VLAN */
  ZARNNETKIND_USABLE =
      2, /* what can hold an address: no loopback, point-to-point, passive bond member or VLAN */
  ZARNNETKIND_ALL = 8,         /* no loopback or passive bond member */
  ZARNNETKIND_HEARTBEAT = 0x4, /* added: the high-availability heartbeat interface too */
  ZARNNETKIND_SHARED_IP = 0x10 /* added: the pair's shared addresses while high availability runs */
};

/**
 * Lists interfaces that are up, in natural name order (eth2 before eth10), ports of bridges and of
 * Open vSwitch left out. At most 32 interfaces are looked at.
 * @param pList     receives the records, which the caller has zeroed: fields without a value are
 *                  left alone; null only counts
 * @param max       room in pList
 * @param selector  a kind, plus 0x4 to include the high-availability heartbeat interface, plus 0x10
 *                  to report the pair's shared addresses while high availability runs. Kinds: 1 no
 *                  loopback, point-to-point, bond or VLAN; 2 no loopback, point-to-point, passive
 *                  bond member or VLAN (the last record takes a removed one's place); 8 no loopback
 *                  or passive bond member; others no loopback or point-to-point
 * @return the number found; -1 with ZARNNETERR_BAD_PARAMETER (max below 0, kind 0),
 *         ZARNNETERR_NO_MEMORY, ZARNNETERR_OPEN (/proc/net/dev, no socket),
 *         ZARNNETERR_UNEXPECTED_CONTENT (/proc/net/dev cannot be read to its end),
 *         ZARNNETERR_NOT_FOUND (it names no interface), or ZARNNETERR_READ (the list of modules)
 *
 * Kind 2 fills pList with VLAN interfaces too before it removes them: with a pList that is too
 * small for both, the rest is missing. A null list counts them.
 * Reads /proc/net/dev once, /sys/class/net, and the interface ioctls over one socket.
 */
int KOPANetGetInterfaceInfo(KOPANetIfInfo* pList, int max, unsigned int selector);

/**
 * Lists the Ethernet ports (names that begin with "eth", up, no VLAN); records are zeroed first.
 * @param pList  receives the records; null only counts
 * @param max    room in pList, in records
 * @return the number found, -1 with ZARNNETERR_BAD_PARAMETER (max below 0), ZARNNETERR_NO_MEMORY,
 *         ZARNNETERR_OPEN (/proc/net/dev, no socket) or ZARNNETERR_UNEXPECTED_CONTENT
 */
int KOPANetEthEnum(KOPANetIfInfo* pList, int max);

/**
 * Lists every interface that is up but the loopback, in natural name order: bond members, bridge
 * ports and VLAN interfaces too. At most 32 interfaces are looked at.
 * @param pList  as for KOPANetGetInterfaceInfo()
 * @param max    room in pList
 * @param kind   0; there are no others, and it is not looked at
 * @return the number found; -1 with ZARNNETERR_BAD_PARAMETER (max below 0), ZARNNETERR_NO_MEMORY,
 *         ZARNNETERR_OPEN (/proc/net/dev, no socket) or ZARNNETERR_UNEXPECTED_CONTENT
 */
int KOPANetInterfaceEnum(KOPANetIfInfo* pList, int max, unsigned int kind);

/**
 * The record of one interface, up or down, as KOPANetGetInterfaceInfo() fills it; what has no value
 * is zero.
 * @return 0; -1, the record left alone, with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NOT_FOUND (the
 *         kernel knows no such interface) or ZARNNETERR_OPEN (no socket)
 */
int ZARNNetIFGetInfo(const char* szIfname, KOPANetIfInfo* pInfo);

/** The same, and the configured address as ZARNNetIFGetIPConfig() reads it. @return 0; -1, both
 * records left alone, as either of the two */
int ZARNNetIFGetInfoEx(const char* szIfname, KOPANetIfInfo* pInfo, ZARNNETIFADDR* pConfig);

/** Is the interface among those that KOPANetGetInterfaceInfo() lists? @return 1, or 0 with
 * ZARNNETERR_NOT_FOUND, ZARNNETERR_BAD_PARAMETER (no name), or as there where it fails */
int ZARNNetIsDevTypeMatch(const char* szIfname, unsigned int selector);

/** How many interfaces KOPANetGetInterfaceInfo() counts. @return the number, or -1 as there */
int ZARNNetEnumCard(unsigned int selector);

/** The traffic of one interface since it came up. */
typedef struct KOPANETSTAT {
  char name[16];
  uint64_t rxBytes, rxPackets, rxErrors, rxDropped;
  uint64_t txBytes, txPackets, txErrors, txDropped;
} KOPANETSTAT;

/* C++ has no open-ended field of its own; its compilers know C's. */
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wpedantic"
/** The statistics list. */
typedef struct KOPANETSTATLIST {
  int nItem; /* entries filled */
  int nMax;  /* room */
  KOPANETSTAT rgItem[];
} KOPANETSTATLIST, *PKOPANETSTATLIST;
#pragma GCC diagnostic pop

/**
 * An empty list with room for cMax interfaces; KOPANetStatFree() frees it.
 * @param cMax  room, in interfaces
 * @return the list, or null with ZARNNETERR_BAD_PARAMETER (cMax below 1) or ZARNNETERR_NO_MEMORY
 */
PKOPANETSTATLIST KOPANetStatInit(int cMax);

/**
 * Fills the list with the interfaces of /proc/net/dev, up or down, in natural name order: at most
 * 32, and at most what the list has room for; those whose names contain "mon." or begin with "tap",
 * "docker" or "dplv" are left out.
 * @param pList  the list, of KOPANetStatInit()
 * @return the number of entries; -1 with ZARNNETERR_BAD_PARAMETER (null list), ZARNNETERR_OPEN or
 *         ZARNNETERR_UNEXPECTED_CONTENT (/proc/net/dev), the list left as it was
 */
int KOPANetStatGetAll(PKOPANETSTATLIST pList);

/**
 * Frees the list; null is allowed.
 * @param pList  the list, of KOPANetStatInit()
 */
void KOPANetStatFree(PKOPANETSTATLIST pList);

/**
 * The kernel's IPv4 address and netmask, in network byte order.
 * @param pAddr  receives the address
 * @param pMask  receives the netmask
 * @return 1; 0 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_OPEN (no socket), ZARNNETERR_NOT_FOUND (no
 *         such interface) or ZARNNETERR_REFUSED (it has no address)
 */
int KOPANetGetIfCfg(const char* szIfname, uint32_t* pAddr, uint32_t* pMask);

/**
 * Sets the kernel's IPv4 address, then the netmask, in network byte order; no file.
 * @param pAddr  the address
 * @param pMask  the netmask
 * @return 1; 0 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_OPEN (no socket), ZARNNETERR_NOT_FOUND (no
 *         such interface) or ZARNNETERR_REFUSED (the kernel refuses)
 */
int KOPANetSetIfCfg(const char* szIfname, const uint32_t* pAddr, const uint32_t* pMask);

/* ---- configuration --------------------------------------------------------------------------- */

/** Does the interface's file say BOOTPROTO=static? Reads under the shared network lock. @return 1
 * or 0, which is also the answer with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_LOCK (lock), and
 * ZARNNETERR_OPEN or ZARNNETERR_READ (the file cannot be read) */
int ZARNNetIfIsStaticIP(const char* szIfname);

/** Does the interface's file say LOCAL_LAN=yes? @return 1 or 0, which is also the answer with
 * ZARNNETERR_BAD_PARAMETER, and ZARNNETERR_OPEN or ZARNNETERR_READ (the file cannot be read) */
int KOPANetIFIsLocalLan(const char* szIfname);

/**
 * The configured address: that of the lease (/etc/dhclient/ipv4/dhcpcd-IFNAME.info) for an
 * interface on DHCP, that of its file otherwise. Fills bootProto, szIP and szMask; the rest is left
 * alone. On DHCP without a lease it answers 0 with bootProto alone filled. Reads under the shared
 * network lock.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_LOCK (lock), ZARNNETERR_OPEN or
 *         ZARNNETERR_READ (the file cannot be read), or ZARNNETERR_UNEXPECTED_CONTENT (it has no
 *         address or no mask)
 */
int ZARNNetIFGetIPConfig(const char* szIfname, ZARNNETIFADDR* pNetInfo);

/**
 * Appends the interfaces that the factory settings make the local LAN (local_lan of
 * /etc.defaults/zarninfo.conf, names split at blanks or commas) to *ppList.
 * @return their number, 0 without the setting; -1 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_OPEN
 *         (no factory settings), ZARNNETERR_TABLE_FULL (more than 32 names: none is appended) or
 *         ZARNNETERR_NO_MEMORY
 */
int KOPANetGetLocalLanConfig(PKOPACSZLIST* ppList);

/** How many LAN ports are built in (kernel count, else the factory settings' maxlanport, else 1).
 * @return the count, or -1 with ZARNNETERR_OPEN (/proc/sys/kernel/zarn_internal_netif_num) */
int ZARNNetInternalLanNumGet(void);

/* ---- the primary interface ----------------------------------------------------------------------
 * The first Ethernet port in natural name order, up or down; or the bond, the bridge or the Open
 * vSwitch device that it is in. The functions fail with ZARNNETERR_NOT_FOUND where there is no
 * port. */

/** Its name, MAC address and configured address, as ZARNNetIFGetIPConfig() reads it. @return 0; -1,
 * the record left alone: ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NOT_FOUND, ZARNNETERR_OPEN, or as
 * ZARNNetIFGetIPConfig() */
int ZARNNetGetCard1(ZARNNETIFADDR* pConfig);

/** The same, and what the kernel has (up or down). @return as ZARNNetGetCard1() and
 * ZARNNetIFGetInfo(): neither record is touched by a failure */
int ZARNNetGetCard1Ex(KOPANetIfInfo* pInfo, ZARNNETIFADDR* pConfig);

/**
 * Gives it a fixed address (bootProto 1, as ZARNILnxSetIPNetmask() does), or DHCP (bootProto 0: its
 * file says BOOTPROTO=dhcp and ONBOOT=yes, has no address and is in no bond, and its DHCP client is
 * started afresh). On failure the file is as it was. Holds the exclusive network lock (waits up to
 * 5 seconds).
 * @param pConfig  szName: empty, or the primary interface's, so that settings that were read can be
 *                 written back. rgMac is not used
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NOT_FOUND (no port; szName is another
 *         interface's), ZARNNETERR_MALFORMED_ADDRESS (address or mask), ZARNNETERR_LOCK (lock),
 *         ZARNNETERR_OPEN, ZARNNETERR_READ, ZARNNETERR_WRITE or ZARNNETERR_RENAME (file),
 *         ZARNNETERR_COMMAND (no copy of the file; the client does not start) or as
 *         ZARNILnxSetIPNetmask()
 * Programs: /bin/cp, /sbin/start and /sbin/stop dhcp-client.
 */
int ZARNNetSetCard1(const ZARNNETIFADDR* pConfig);

/* ---- state ----------------------------------------------------------------------------------- */

/** Is the interface administratively up? @return 1 or 0, which is also the answer with
 * ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NOT_FOUND (none of that name), and ZARNNETERR_OPEN or
 * ZARNNETERR_READ (its state cannot be read) */
int ZARNNetIsIFUp(const char* szIfname);

/**
 * Changes the kernel's flags: change >= 0 sets those bits, change < 0 keeps only the bits of change
 * - 1 (-1 clears bit 0).
 * @param change  IFF_... bits to set, or below 0 what to keep
 * @return 1; 0 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_OPEN (no socket), ZARNNETERR_NOT_FOUND (no
 *         such interface) or ZARNNETERR_REFUSED (the kernel refuses)
 */
int KOPANetISetIfFlags(const char* szIfname, int change);

/** Brings the interface up. @return as KOPANetISetIfFlags() */
int KOPANetIfUp(const char* szIfname);

/** Takes the interface down. @return as KOPANetISetIfFlags() */
int KOPANetIfDown(const char* szIfname);

/** Takes the interface down, if it is up, and brings it up. @return as KOPANetISetIfFlags() */
int KOPANetReInitIf(const char* szIfname);

/** Has the interface carrier? An Open vSwitch bond has when one of its slaves has. @return 1, 0; -1
 * with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_OPEN (no socket), ZARNNETERR_NOT_FOUND (no such
 * interface; a bond without slaves), ZARNNETERR_REFUSED, or as ZARNNetLinkAggrGet() for such a
 * bond */
int ZARNNetIfIsLink(const char* szIfname);

/** Is the interface a passive member of a bond? @return 1 or 0, which is also the answer with
 * ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NOT_FOUND (no such interface), ZARNNETERR_REFUSED and
 * ZARNNETERR_OPEN (no socket; the table of Open vSwitch's bonds) */
int ZARNNetIfIsBondingPassive(const char* szIfname);

/**
 * The MAC address of port eth<index> as "02:00:00:00:00:10".
 * @param blLocal  0: the address the appliance shows (the pair's shared one while high availability
 *                 runs); otherwise the port's own
 * @param index  the number of the port, from 0
 * @return 0; 1 bad arguments (ZARNNETERR_BAD_PARAMETER) or the port's own address unreadable with
 *         blLocal set (ZARNNETERR_OPEN no socket, ZARNNETERR_NOT_FOUND no such port,
 *         ZARNNETERR_REFUSED); 2 the same with blLocal 0; 3 no shared address
 *         (ZARNNETERR_NOT_FOUND, or the code of the high availability's query); 4 an appliance with
 *         two controller heads (ZARNNETERR_REFUSED)
 */
int KOPANetGetMacAddr(int index, char* szBuf, int cbBuf, int blLocal);

/**
 * The MAC address of the port behind an interface: a VLAN's parent, a bond's first slave, the
 * interface under an Open vSwitch device.
 * @param blLocal  as for KOPANetGetMacAddr()
 * @return as KOPANetGetMacAddr(); 1 also when there is no such port (ZARNNETERR_NOT_FOUND,
 *         ZARNNETERR_BAD_PARAMETER, or as ZARNNetLinkAggrGet() for a bond)
 */
int KOPANetGetMacAddrByInterface(const char* szIfname, char* szBuf, int cbBuf, int blLocal);

/** A port's link as its driver tells it. */
typedef struct ZARNNETETHINFO {
  int32_t speed;   /* Mb/s, -1 unknown */
  int32_t duplex;  /* 0 half, 1 full, -1 unknown */
  int32_t link;    /* 1 carrier, 0 none */
  int32_t autoneg; /* 1 on, 0 off, -1 unknown */
} ZARNNETETHINFO;

/**
 * Reads a port's link. Whatever the kernel does not know (many virtual interfaces, a port that is
 * down) is -1; that is no failure.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (bad name, null record), ZARNNETERR_NOT_FOUND (no
 *         such interface) or ZARNNETERR_OPEN (no socket), and the record left alone
 * Asks the driver through the socket ioctls, and reads /sys/class/net/IFNAME when it gives no
 * answer.
 */
int ZARNNetGetEthInfo(const char* szIfname, ZARNNETETHINFO* pInfo);

/** Fires net/if_link_up, stage 5: INTERFACE. @return 0; -1 with ZARNNETERR_BAD_PARAMETER, or
 * ZARNNETERR_COMMAND when the event could not be delivered */
int KOPANetIfLinkUpEvent(const char* szIfname);

/** Fires net/if_link_down, stage 5: INTERFACE. @return as KOPANetIfLinkUpEvent() */
int KOPANetIfLinkDownEvent(const char* szIfname);

/**
 * Gives a port another name: in the kernel, in its file (ifcfg-OLD becomes ifcfg-NEW, with
 * DEVICE=NEW) and of its MTU setting in /etc/zarninfo.conf. A port that is up is taken down for it
 * and brought up again, which drops its IPv6 addresses and its routes; the DHCP client of one whose
 * file says BOOTPROTO=dhcp is stopped before and started under the name that it has afterwards.
 * Fires net/ifname_change before and after, whatever came of it. When a step fails names and files
 * are as they were. File and setting stand under both names until the kernel has renamed the port;
 * when the call is killed on the way, the same call again brings it to its end.
 * @param szNew  at most 15 characters, none of "/%:.", no blank, no "-" first
 * @param szOld  the port's name
 * @return 0, also with a client that does not start (ZARNNETERR_COMMAND tells of it); -1 with
 *         ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NOT_FOUND (no such port), ZARNNETERR_EXISTS (the new
 *         name has an interface, or a file that is no trace of a killed call), ZARNNETERR_REFUSED
 *         (the port is part of a bond, a bridge, Open vSwitch or a VLAN, or the kernel refuses),
 *         ZARNNETERR_LOCK (a lock), ZARNNETERR_OPEN (no socket, or the settings), ZARNNETERR_RENAME
 *         (its file, or the settings), ZARNNETERR_READ or ZARNNETERR_WRITE (the settings)
 * Holds the exclusive network lock, and that on the settings (waits up to 5 seconds for each).
 * Programs: /bin/cp, /sbin/start and /sbin/stop dhcp-client.
 */
int ZARNNetRenameEth(const char* szOld, const char* szNew);

/* ---- topology -------------------------------------------------------------------------------- */

/** One network topology of an appliance with a wireless interface. */
typedef struct KOPANETTOPOLOGY {
  uint32_t id;       /* 0 unknown, 1 client, 2 bridge, 3 router */
  char szName[64];   /* as the settings hold it */
  char szUplink[16]; /* the interface to the outside */
  uint32_t flag;     /* 1 for the client topology */
  uint32_t mode;
} KOPANETTOPOLOGY;

/** The topologies, indexed by id. */
extern const KOPANETTOPOLOGY gTopologyInfo[4];
/** Which interfaces form what in each topology: type is the role, szRef the bridge or the first
 * port. */
extern const ZARNBRIDGEINFO grgTopologyIFInfo[4][4];

/**
 * The topology in force, read from net_topology in /etc/zarninfo.conf.
 * @param pInfo  null: only the id is answered. Otherwise its id field chooses the entry to copy, 0
 *               the one in force; a VLAN over the uplink takes the uplink's place in the copy
 * @return the id, 0 (and pInfo left alone) where support_net_topology is not "yes"; 0 with
 *         ZARNNETERR_BAD_PARAMETER for an id above 3
 */
uint32_t KOPANetTopologyGet(KOPANETTOPOLOGY* pInfo);

/** Stores the name of the record as net_topology. @return 0; -1 with ZARNNETERR_BAD_PARAMETER
 * (null, a name with blanks or line ends), or with ZARNNETERR_LOCK, ZARNNETERR_OPEN,
 * ZARNNETERR_WRITE or ZARNNETERR_RENAME when writing fails */
int KOPANETSetTopologyConfigs(const KOPANETTOPOLOGY* pInfo);

#ifdef __cplusplus
}
#endif
