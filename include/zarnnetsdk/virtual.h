/* Virtual interfaces: bonds (link aggregation), bridges, Open vSwitch devices, VLANs. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <zarncore/zarncore.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- bonds ------------------------------------------------------------------------------------------ */

#define ZARNLINKAGGR_MAX_SLAVE 32

/** The modes of a bond, by mode id; grgBondDesc has their names. The last three are Open vSwitch's. */
enum {
  ZARNBOND_NONE = 0, /* no bond; to a setter: delete it */
  ZARNBOND_BALANCE_ALB = 1,
  ZARNBOND_8023AD = 2,
  ZARNBOND_BALANCE_XOR = 3,
  ZARNBOND_ACTIVE_BACKUP = 4,
  ZARNBOND_BALANCE_RR = 5,
  ZARNBOND_OVS_ACTIVE_BACKUP = 6,
  ZARNBOND_BALANCE_SLB = 7,
  ZARNBOND_BALANCE_TCP = 8
};

/** One bond. */
typedef struct ZARNLINKAGGROPT {
  char szName[16];
  uint32_t mode;        /* index into grgBondDesc; 0 unknown or no slaves */
  uint32_t blNoPartner; /* 1: an 802.3ad bond without an LACP partner */
  int32_t cSlave;
  char rgszSlave[ZARNLINKAGGR_MAX_SLAVE][16]; /* sorted as strcmp does: eth10 before eth2 */
} ZARNLINKAGGROPT;

/** One bonding mode. An Open vSwitch mode has no kernel options: its pointers are null. */
typedef struct ZARNBONDDESC {
  const char* szKernelMode; /* the kernel's number of the mode, as text */
  const char* szName;
  const char* szBondingOpts; /* value of BONDING_OPTS, double quotes included */
} ZARNBONDDESC;

/** The modes, indexed by mode id 0 to 8; row 0 is empty. */
extern const ZARNBONDDESC grgBondDesc[9];

/** The mode id of a name; only the beginning is compared ("802.3ad 4" is 2). @return 1 to 8, or 0; null is 0 */
uint32_t ZARNNetLinkAggrStringToMode(const char* szMode);

/** The name of a mode id. @return static text, "unknown" for any id but 1 to 8 */
const char* ZARNNetLinkAggrModeToString(uint32_t mode);

/** Can a line be read from /sys/class/net/bonding_masters? @return 1; 0 without the bonding driver, and with it as
 * long as there is no bond; -1 for a failed read */
int ZARNNetLinkAggrExist(void);

/** Appends the kernel's bonds that have slaves to *ppList.
 * @return the number of bonds, with or without slaves; 0 without the driver; -1 (0x0D00, 0x0200, 0x0A00) */
int ZARNNetLinkAggrEnum(PKOPACSZLIST* ppList);

/** Appends the slaves of a kernel bond to *ppSlaves. @return their number; -1 (0x0D00, 0x0900, 0x0A00) */
int ZARNNetLinkAggrPhyGet(const char* szBond, PKOPACSZLIST* ppSlaves);

/**
 * Reads a bond: of the kernel from sysfs, of Open vSwitch ("ovs_bond...") from its interface file.
 * @return 0, also for an interface that is no bond (mode 0, no slaves); otherwise -1 (kernel) or 1 (Open
 *         vSwitch); 0x0D00, 0x0200, 0x0900, 0x0A00, 0x4000 (an Open vSwitch bond without its keys)
 */
int ZARNNetLinkAggrGet(const char* szBond, ZARNLINKAGGROPT* pOpt);

/** Adds a slave to the record, sorted. @return 0 (the error state is 0xBC00 all the same); -1 with 0x0D00,
 * 0xBB00 (already there) or 0xBD00 (32 slaves) */
int ZARNNetLinkAggrOptSlsaveAdd(ZARNLINKAGGROPT* pOpt, const char* szSlave);

/**
 * Creates, changes or deletes a kernel bond: rewrites the interface files of bond and slaves, and restarts them
 * with "/etc/rc.network stop" and "start", bond and slaves. The bond takes over the first slave's address settings
 * and lease, the first slave the bond's when it is deleted. Creation and deletion, not a change, are told as
 * net/ifname_change. No lock is taken: callers serialise their changes of bonds.
 * @param pOpt  szName; mode 0 deletes, 1 to 5 is the mode it shall have (6 to 8 cannot be created here); at least
 *              2 slaves. A record equal to the present bond does nothing. On delete the slaves are overwritten with
 *              the present ones
 * @return 0; -1 with 0x0D00 (record), 0x0200, 0x0900, 0x2A00: the slaves' files are put back, and the interfaces
 *         are started again all the same
 */
int ZARNNetLinkAggrSet(ZARNLINKAGGROPT* pOpt);

/**
 * Makes an interface's file that of a slave, or of an interface of its own again. The file as it was stays beside
 * it with ".saved" appended.
 * @param blJoin    not 0: joins szMaster; 0: leaves its bond
 * @param szMaster  the bond; not used to leave
 * @return 0, or -1 (0x0D00, 0x0200, or the file cannot be written)
 */
int ZARNNetLinkAggrConfSetSlave(const char* szSlave, int blJoin, const char* szMaster);

/**
 * Removes a bond's file and releases every interface whose file names it as MASTER. Its settings go to the first
 * slave of the record, or to the first one found. Slaves keep their ".saved" files.
 * @return 0, or -1 (0x0D00, 0x0200, 0x0900 folder, 0x2A00 copy): the slaves' files are put back
 */
int ZARNNetLinkAggrConfDel(ZARNLINKAGGROPT* pOpt);

/**
 * Adds to the keys to set what makes the BOOTPROTO of a file "static" or "dhcp"; "dhcp", and no address, for any
 * other value. Writes nothing.
 * @return 0, or negative (0x0D00 for a missing argument, no memory)
 */
int ZARNNetLinkAggrConfUpdateBootProto(const char* szPath, PKOPACSZHASH* ppSet);

/* ---- bridges ---------------------------------------------------------------------------------------- */

/** An interface's part in a bridge. */
enum {
  ZARNBRIDGE_STANDALONE = 1, /* none */
  ZARNBRIDGE_BRIDGE = 2,
  ZARNBRIDGE_LOCAL_LAN = 3, /* the bridge of the local LAN */
  ZARNBRIDGE_PORT = 4       /* a port of a bridge */
};

/** One interface's part in a bridge; type is a ZARNBRIDGE_... */
typedef struct ZARNBRIDGEINFO {
  uint32_t type;
  char szName[16];
  char szRef[16]; /* a bridge's primary port, a port's bridge */
} ZARNBRIDGEINFO;

/** The settings of one interface's file. */
typedef struct ZARNNETIFSETTINGS {
  uint32_t blStatic; /* 0: DHCP, and the two texts are ignored */
  uint32_t blOnBoot;
  char szName[16];
  char szIP[20];
  char szMask[20];
} ZARNNETIFSETTINGS;

/** Is the interface a bridge? @return 1 or 0 */
int KOPANetBridgeIfIsMaster(const char* szIfname);

/** Is the interface a port of a bridge? @return 1 or 0 */
int KOPANetBridgeIfIsSlave(const char* szIfname);

/** Appends the ports of a bridge to *ppList. @return their number, or -1 */
int KOPANetBridgeSlaveEnum(const char* szBridge, PKOPACSZLIST* ppList);

/** Appends the bridges of role 2 or 3 to *ppList; null only counts. @return their number; -1 with 0x0200 */
int KOPANetEnumBridge(PKOPACSZLIST* ppList, uint32_t role);

/** The part of an interface as the kernel has it. @return 1 to 4, 0 while it is down; pInfo may be null */
int KOPANETGetBridgeInfo(const char* szIfname, ZARNBRIDGEINFO* pInfo);

/** The part of an interface in topology 1 to 3. @return its role, or 0; pInfo may be null */
int KOPANETGetBridgeInfoByTopology(const char* szIfname, ZARNBRIDGEINFO* pInfo, uint32_t kind);

/**
 * Reads the interface's file. Either output may be null, not both. The type is 3 or 2 for TYPE=bridge;
 * else 1 with a BRIDGE key and 4 without: the reverse of the other functions, kept for callers that
 * compare against it.
 * @return 0, or -1 (both outputs null, no file)
 */
int ZARNNetGetBridgeConfig(const char* szIfname, ZARNNETIFSETTINGS* pSettings,
                           ZARNBRIDGEINFO* pInfo);

/**
 * Writes an interface's part in a bridge into its file, and its address settings where they are given. The type
 * is 1 none, 2 bridge, 3 bridge of the local LAN, 4 port; szRef the primary port (2, 3) or the bridge (4). The
 * file is made where there is none, otherwise kept beside itself with ".saved" at its end.
 * @param pSettings  null leaves the address alone; its szName is not used
 * @return 0; -1 with 0x0D00 (null record, unfit name or text, another type), 0x0200, or when writing fails
 * Program: /bin/cp.
 */
int ZARNNetSetBridgeConfig(const ZARNNETIFSETTINGS* pSettings, const ZARNBRIDGEINFO* pInfo);

/**
 * Makes a port of a bridge an interface of its own again, in its file: TYPE and BRIDGE go, the address settings
 * come, ONBOOT is yes whatever blOnBoot says. The file is kept beside itself with ".saved" at its end.
 * @return 0; -1 with 0x0D00 (null record, unfit name or text), 0x0200, or when writing fails
 * Program: /bin/cp.
 */
int ZARNNetDisableBridgeSlave(const ZARNNETIFSETTINGS* pSettings);

/** Does ZARNNetGetBridgeConfig() read this type? @return 1 or 0 */
int ZARNNetIsIfBridgeType(const char* szIfname, uint32_t role);

/* ---- Open vSwitch ----------------------------------------------------------------------------------- */

/** What an interface is to Open vSwitch. */
enum {
  ZARNOVS_NONE = 0,
  ZARNOVS_DEVICE = 1, /* a device over one port, "ovs_eth0" */
  ZARNOVS_BOND = 2    /* a bond, "ovs_bond0" */
};

/** @return ZARNOVS_BOND, ZARNOVS_DEVICE or, for any other interface, ZARNOVS_NONE */
int KOPANetOVSIfIsMaster(const char* szIfname);

/** Is the interface a member of an Open vSwitch bond? @return 1 or 0 */
int KOPANetOVSIfIsSlave(const char* szIfname);

/** The interface under an Open vSwitch device: "ovs_eth0" gives "eth0". cbOut must exceed the result's
 * length. @return 0, or -1 with 0x0D00 */
int KOPANetOVSGetOriginalIf(const char* szIfname, char* szOut, size_t cbOut);

/* ---- VLANs ------------------------------------------------------------------------------------------ */

/** One VLAN interface. */
typedef struct KOPANETVLAN {
  char szName[16];   /* "eth0.10" */
  char szRowDev[16]; /* its parent */
  int32_t id;        /* 1 to 4094 */
} KOPANETVLAN;

/** Is the id one of 1 to 4094? @return 0 or -1 */
int KOPANetVlanValidId(unsigned int id);

/** Is the VLAN driver there? @return 1 or 0 */
int KOPANetVlanExist(void);

/** Asks the kernel whether an interface is a VLAN. @return 1 (record filled), 0, or -1 (0x0D00, 0x3400) */
int KOPANetVlanGet(const char* szIfname, KOPANETVLAN* pVlan);

/** KOPANetVlanGet() for the VLAN of a parent and an id. */
int KOPANetVlanGetByRowDev(const char* szRowDev, unsigned int id, KOPANETVLAN* pVlan);

/** All VLANs (/proc/net/vlan/config). *ppVlan is freed with free(), null when there are none.
 * @return 0, or -1 (0x0D00, 0x0200, 0x4000) */
int KOPANetVlanEnum(KOPANETVLAN** ppVlan, int* pcVlan);

/**
 * Puts a VLAN over an interface: the VLAN's file is written with the address given and the parent's IPv6 settings,
 * the parent keeps no address, both are started, and the firewall, traffic control and DHCP server follow. Fires
 * net/ifname_change before and after, whatever came of it. An interface carries one VLAN at most. What is in
 * place when a step fails stays. Blocks for 2 seconds and the programs' time. Takes no lock: changes of VLANs must
 * not overlap.
 * @param szRowDev   the parent, "eth0"; with ".id" at most 15 characters
 * @param id         1 to 4094
 * @param pSettings  blStatic, szIP and szMask are used
 * @return 0; -1 with 0x0D00 (arguments; the parent is a VLAN), 0xBC00 (no such parent), 0xBB00 (there is a VLAN),
 *         0x0900 (the parent's file), 0x0B00 (a new file), 0x3400, 0x4000, or after a step that failed
 * Programs: /etc/rc.network, /usr/zarn/bin/zarnfirewall, /usr/zarn/bin/tctool.
 */
int KOPANetVlanCreate(const char* szRowDev, unsigned int id, const ZARNNETIFSETTINGS* pSettings);

/**
 * Removes a VLAN: its address settings go back into the parent's file, its own file and MTU setting are deleted,
 * the parent is started, and the same ones follow as for KOPANetVlanCreate(). Event, pause and locks as there.
 * @return 0; -1 with 0x0D00 (no name), 0x0900 (a file cannot be read), 0x0B00 (the new file), 0x3400, or when it
 *         is no VLAN or a step failed
 */
int KOPANetVlanRemove(const char* szVlan);

#ifdef __cplusplus
}
#endif
