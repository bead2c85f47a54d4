/* Interfaces: which there are, their state, their configuration files' block flags, and the network topology. */
#pragma once

#include <stdint.h>

#include <zarnhacore/zarnhacore.h>
#include <zarnnetsdk/virtual.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- block flags: who keeps an interface for itself --------------------------------------------- */

enum {
  ZARNNET_BLOCK_HA = 1,      /* high availability */
  ZARNNET_BLOCK_AHA = 2,     /* active/active high availability */
  ZARNNET_BLOCK_VIRTUAL = 4, /* virtualisation */
  ZARNNET_BLOCK_QUENDAR = 8  /* the mail-server package */
};

/**
 * Sets or clears block flags in the interface's file, under a lock on that file (waits up to 30 seconds).
 * Each flag is a key (BLOCK_HA ...); BLOCK_CNT counts them.
 * @param mask   the ZARNNET_BLOCK_... flags to change, handled in the order of their bits until one fails
 * @param value  0 clears; 1 sets; any other value writes "no" and still counts, for callers that rely on it
 * @return 0 or -1 (0x0D00: null or empty name)
 */
int ZARNNetIFBlockSet(const char* szIfname, unsigned int mask, int value);

/** The flags that are set. @return the mask, 0 while BLOCK_CNT is 0 or absent; -1 with 0x0D00 for no name */
int ZARNNetIFBlockGet(const char* szIfname);

/* ---- inventory ----------------------------------------------------------------------------------- */

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

/** Selectors of interfaces: a kind, and what may be added to it. Another kind is: no loopback or point-to-point. */
enum {
  ZARNNETKIND_PORT = 1, /* no loopback, point-to-point, bond or VLAN */
  ZARNNETKIND_USABLE =
      2, /* what can hold an address: no loopback, point-to-point, passive bond member or VLAN */
  ZARNNETKIND_ALL = 8,         /* no loopback or passive bond member */
  ZARNNETKIND_HEARTBEAT = 0x4, /* added: the high-availability heartbeat interface too */
  ZARNNETKIND_SHARED_IP = 0x10 /* added: the pair's shared addresses while high availability runs */
};

/**
 * Lists interfaces that are up, in natural name order (eth2 before eth10), ports of bridges and of Open
 * vSwitch left out. At most 32 interfaces are looked at.
 * @param pList     receives the records, which the caller has zeroed: fields without a value are left
 *                  alone; null only counts
 * @param max       room in pList
 * @param selector  a kind, plus 0x4 to include the high-availability heartbeat interface, plus 0x10 to
 *                  report the pair's shared addresses while high availability runs. Kinds: 1 no loopback,
 *                  point-to-point, bond or VLAN; 2 no loopback, point-to-point, passive bond member or
 *                  VLAN (the last record takes a removed one's place); 8 no loopback or passive bond
 *                  member; others no loopback or point-to-point
 * @return the number found; -1 with 0x0D00 (max below 0, kind 0), 0x0200, or 0x0900 (/proc/net/dev)
 *
 * Kind 2 fills pList with VLAN interfaces too before it removes them: with a pList that is too small for
 * both, the rest is missing. A null list counts them.
 * Reads /proc/net/dev once, /sys/class/net, and the interface ioctls over one socket.
 */
int KOPANetGetInterfaceInfo(KOPANetIfInfo* pList, int max, unsigned int selector);

/**
 * Lists the Ethernet ports (names that begin with "eth", up, no VLAN); records are zeroed first.
 * @return the number found, -1 with 0x0D00 (max below 0) or 0x0200 (no statistics)
 */
int KOPANetEthEnum(KOPANetIfInfo* pList, int max);

/**
 * Lists every interface that is up but the loopback, in natural name order: bond members, bridge ports and
 * VLAN interfaces too. At most 32 interfaces are looked at.
 * @param pList  as for KOPANetGetInterfaceInfo()
 * @param max    room in pList
 * @param kind   0; there are no others, and it is not looked at
 * @return the number found; -1 with 0x0D00 (max below 0), 0x0200, or 0x0900 (/proc/net/dev)
 */
int KOPANetInterfaceEnum(KOPANetIfInfo* pList, int max, unsigned int kind);

/**
 * The record of one interface, up or down, as KOPANetGetInterfaceInfo() fills it; what has no value is zero.
 * @return 0; -1, the record left alone, with 0x0D00, 0xBC00 (the kernel knows no such interface) or 0x8100 (no
 *         socket)
 */
int ZARNNetIFGetInfo(const char* szIfname, KOPANetIfInfo* pInfo);

/** The same, and the configured address as ZARNNetIFGetIPConfig() reads it. @return 0; -1, both records left alone,
 * as either of the two */
int ZARNNetIFGetInfoEx(const char* szIfname, KOPANetIfInfo* pInfo, ZARNNETIFADDR* pConfig);

/** Is the interface among those that KOPANetGetInterfaceInfo() lists? @return 1, or 0 with 0xBC00 */
int ZARNNetIsDevTypeMatch(const char* szIfname, unsigned int selector);

/** How many interfaces KOPANetGetInterfaceInfo() counts. @return the number or -1 */
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

/** An empty list with room for cMax interfaces; KOPANetStatFree() frees it.
 * @return the list, or null with 0x0D00 (cMax below 1) or 0x0200 */
PKOPANETSTATLIST KOPANetStatInit(int cMax);

/**
 * Fills the list with the interfaces of /proc/net/dev, up or down, in natural name order: at most 32, and at
 * most what the list has room for; those whose names contain "mon." or begin with "tap", "docker" or "dplv"
 * are left out.
 * @return the number of entries; -1 with 0x0D00 (null list), 0x0900 or 0x4000 (/proc/net/dev), the list
 *         left as it was
 */
int KOPANetStatGetAll(PKOPANETSTATLIST pList);

/** Frees the list; null is allowed. */
void KOPANetStatFree(PKOPANETSTATLIST pList);

/** The kernel's IPv4 address and netmask, in network byte order. @return 1, or 0 on any failure */
int KOPANetGetIfCfg(const char* szIfname, uint32_t* pAddr, uint32_t* pMask);

/** Sets the kernel's IPv4 address, then the netmask, in network byte order; no file. @return 1 or 0 */
int KOPANetSetIfCfg(const char* szIfname, const uint32_t* pAddr, const uint32_t* pMask);

/* ---- configuration ------------------------------------------------------------------------------- */

/** Does the interface's file say BOOTPROTO=static? Reads under the shared network lock. @return 1 or 0 */
int ZARNNetIfIsStaticIP(const char* szIfname);

/** Does the interface's file say LOCAL_LAN=yes? @return 1 or 0 */
int KOPANetIFIsLocalLan(const char* szIfname);

/**
 * The configured address: that of the lease (/etc/dhclient/ipv4/dhcpcd-IFNAME.info) for an interface on
 * DHCP, that of its file otherwise. Fills bootProto, szIP and szMask; the rest is left alone. On DHCP
 * without a lease it answers 0 with bootProto alone filled. Reads under the shared network lock.
 * @return 0; -1 with 0x0D00, 0x0400 (lock), or when an address or a mask is missing
 */
int ZARNNetIFGetIPConfig(const char* szIfname, ZARNNETIFADDR* pNetInfo);

/**
 * Appends the interfaces that the factory settings make the local LAN (local_lan of /etc.defaults/zarninfo.conf,
 * names split at blanks or commas) to *ppList.
 * @return their number, 0 without the setting; -1 with 0x0D00, 0x0900 (no factory settings), 0x0100 (more than 32
 *         names: none is appended) or 0x0200
 */
int KOPANetGetLocalLanConfig(PKOPACSZLIST* ppList);

/** How many LAN ports are built in (kernel count, else the factory settings' maxlanport, else 1). @return count or -1 */
int ZARNNetInternalLanNumGet(void);

/* ---- the primary interface -----------------------------------------------------------------------
 * The first Ethernet port in natural name order, up or down; or the bond, the bridge or the Open vSwitch device that
 * it is in. The functions fail with 0xBC00 where there is no port. */

/** Its name, MAC address and configured address, as ZARNNetIFGetIPConfig() reads it. @return 0; -1, the record left
 * alone: 0x0D00, 0xBC00, 0x0900, or as ZARNNetIFGetIPConfig() */
int ZARNNetGetCard1(ZARNNETIFADDR* pConfig);

/** The same, and what the kernel has (up or down). @return as ZARNNetGetCard1() and ZARNNetIFGetInfo(): neither
 * record is touched by a failure */
int ZARNNetGetCard1Ex(KOPANetIfInfo* pInfo, ZARNNETIFADDR* pConfig);

/**
 * Gives it a fixed address (bootProto 1, as ZARNILnxSetIPNetmask() does), or DHCP (bootProto 0: its file says
 * BOOTPROTO=dhcp and ONBOOT=yes and has no address, and its DHCP client is started afresh). On failure the file is
 * as it was. Holds the exclusive network lock (waits up to 5 seconds).
 * @param pConfig  szName: empty, or the primary interface's, so that settings that were read can be written back.
 *                 rgMac is not used
 * @return 0; -1 with 0x0D00, 0xBC00 (szName is another interface's), 0x1000 (address or mask), 0x0400 (lock),
 *         0x0B00 (file), 0x2A00 (the client does not start) or after a failed step of ZARNILnxSetIPNetmask()
 * Programs: /bin/cp, /sbin/start and /sbin/stop dhcp-client.
 */
int ZARNNetSetCard1(const ZARNNETIFADDR* pConfig);

/* ---- state ---------------------------------------------------------------------------------------- */

/** Is the interface administratively up? @return 1 or 0, 0 also when there is none of that name */
int ZARNNetIsIFUp(const char* szIfname);

/** Changes the kernel's flags: change >= 0 sets those bits, change < 0 keeps only the bits of change - 1
 * (-1 clears bit 0). @return 1 or 0 */
int KOPANetISetIfFlags(const char* szIfname, int change);

/** Brings the interface up. @return 1 or 0 */
int KOPANetIfUp(const char* szIfname);

/** Takes the interface down. @return 1 or 0 */
int KOPANetIfDown(const char* szIfname);

/** Takes the interface down, if it is up, and brings it up. @return 1 or 0 */
int KOPANetReInitIf(const char* szIfname);

/** Has the interface carrier? An Open vSwitch bond has when one of its slaves has. @return 1, 0 or -1 */
int ZARNNetIfIsLink(const char* szIfname);

/** Is the interface a passive member of a bond? @return 1 or 0 */
int ZARNNetIfIsBondingPassive(const char* szIfname);

/**
 * The MAC address of port eth<index> as "02:00:00:00:00:10".
 * @param blLocal  0: the address the appliance shows (the pair's shared one while high availability
 *                 runs); otherwise the port's own
 * @return 0; 1 bad arguments (0x0D00) or the port's own address unreadable with blLocal set; 2 the same
 *         with blLocal 0; 3 no shared address; 4 an appliance with two controller heads
 */
int KOPANetGetMacAddr(int index, char* szBuf, int cbBuf, int blLocal);

/** The MAC address of the port behind an interface: a VLAN's parent, a bond's first slave, the interface
 * under an Open vSwitch device. @return as KOPANetGetMacAddr(); 1 also when there is no such port */
int KOPANetGetMacAddrByInterface(const char* szIfname, char* szBuf, int cbBuf, int blLocal);

/** A port's link as its driver tells it. */
typedef struct ZARNNETETHINFO {
  int32_t speed;   /* Mb/s, -1 unknown */
  int32_t duplex;  /* 0 half, 1 full, -1 unknown */
  int32_t link;    /* 1 carrier, 0 none */
  int32_t autoneg; /* 1 on, 0 off, -1 unknown */
} ZARNNETETHINFO;

/**
 * Reads a port's link. Whatever the kernel does not know (many virtual interfaces, a port that is down)
 * is -1; that is no failure.
 * @return 0; -1 with 0x0D00 (bad name, null record), 0xBC00 (no such interface) or 0x8100 (no socket), and
 *         the record left alone
 * Asks the driver through the socket ioctls, and reads /sys/class/net/IFNAME when it gives no answer.
 */
int ZARNNetGetEthInfo(const char* szIfname, ZARNNETETHINFO* pInfo);

/** Fires net/if_link_up, stage 5: INTERFACE. @return 0; -1 with 0x0D00, or when the event could not be delivered */
int KOPANetIfLinkUpEvent(const char* szIfname);

/** Fires net/if_link_down, stage 5: INTERFACE. @return as KOPANetIfLinkUpEvent() */
int KOPANetIfLinkDownEvent(const char* szIfname);

/**
 * Gives a port another name: in the kernel, in its file (ifcfg-OLD becomes ifcfg-NEW, with DEVICE=NEW) and of its MTU
 * setting in /etc/zarninfo.conf. A port that is up is taken down for it and brought up again, which drops its IPv6
 * addresses and its routes; the DHCP client of one whose file says BOOTPROTO=dhcp is stopped before and started under
 * the name that it has afterwards. Fires net/ifname_change before and after, whatever came of it. When a step fails
 * names and files are as they were. File and setting stand under both names until the kernel has renamed the port; when
 * the call is killed on the way, the same call again brings it to its end.
 * @param szNew  at most 15 characters, none of "/%:.", no blank, no "-" first
 * @return 0, also with a client that does not start (0x2A00 tells of it); -1 with 0x0D00, 0xBC00 (no such port), 0xBB00
 *         (the new name has an interface, or a file that is no trace of a killed call), 0x8100 (the port is part of a
 *         bond, a bridge, Open vSwitch or a VLAN, or the kernel refuses), 0x0400 (a lock), 0x0900 (no socket, or the
 *         settings), 0x2800 (its file, or the settings), 0x0A00 or 0x0B00 (the settings)
 * Holds the exclusive network lock, and that on the settings (waits up to 5 seconds for each). Programs: /bin/cp,
 * /sbin/start and /sbin/stop dhcp-client.
 */
int ZARNNetRenameEth(const char* szOld, const char* szNew);

/* ---- topology -------------------------------------------------------------------------------------- */

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
/** Which interfaces form what in each topology: type is the role, szRef the bridge or the first port. */
extern const ZARNBRIDGEINFO grgTopologyIFInfo[4][4];

/**
 * The topology in force, read from net_topology in /etc/zarninfo.conf.
 * @param pInfo  null: only the id is answered. Otherwise its id field chooses the entry to copy, 0 the
 *               one in force; a VLAN over the uplink takes the uplink's place in the copy
 * @return the id, 0 (and pInfo left alone) where support_net_topology is not "yes"
 */
uint32_t KOPANetTopologyGet(KOPANETTOPOLOGY* pInfo);

/** Stores the name of the record as net_topology. @return 0; -1 with 0x0D00 (null, a name with blanks or line ends), or
 * when writing fails */
int KOPANETSetTopologyConfigs(const KOPANETTOPOLOGY* pInfo);

#ifdef __cplusplus
}
#endif
