/* SPDX-License-Identifier: Apache-2.0 */
/* Virtual interfaces: bonds (link aggregation), bridges, Open vSwitch devices, VLANs. */
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <zarncore/zarncore.h>

#ifdef __cplusplus
extern "C" {
#endif

/* ---- bonds ----------------------------------------------------------------------------------- */

#define ZARNLINKAGGR_MAX_SLAVE 32

/** The modes of a bond, by mode id; grgBondDesc has their names. The last three are Open
 * vSwitch's. */
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

/**
 * The mode id of a name; only the beginning is compared ("802.3ad 4" is ZARNBOND_8023AD).
 * @param szMode  a mode's name
 * @return a ZARNBOND_...; ZARNBOND_NONE for other texts, and with ZARNNETERR_BAD_PARAMETER for null
 */
uint32_t ZARNNetLinkAggrStringToMode(const char* szMode);

/**
 * The name of a mode id.
 * @param mode  a ZARNBOND_...
 * @return static text, "unknown" for ZARNBOND_NONE and any number that is no mode
 */
const char* ZARNNetLinkAggrModeToString(uint32_t mode);

/** Can a line be read from /sys/class/net/bonding_masters? @return 1; 0 without the bonding driver,
 * and with it as long as there is no bond; -1 with ZARNNETERR_READ for a failed read */
int ZARNNetLinkAggrExist(void);

/** Appends the kernel's bonds that have slaves to *ppList.
 * @return the number of bonds, with or without slaves; 0 without the driver; -1 with
 *         ZARNNETERR_BAD_PARAMETER (no list), ZARNNETERR_NO_MEMORY or ZARNNETERR_READ */
int ZARNNetLinkAggrEnum(PKOPACSZLIST* ppList);

/**
 * Appends the slaves of a kernel bond to *ppSlaves.
 * @param ppSlaves  the list that is appended to
 * @return their number; -1 with ZARNNETERR_BAD_PARAMETER (no list, a name that can be no
 *         interface's), ZARNNETERR_OPEN (no kernel bond), ZARNNETERR_READ or
 *         ZARNNETERR_NO_MEMORY
 */
int ZARNNetLinkAggrPhyGet(const char* szBond, PKOPACSZLIST* ppSlaves);

/**
 * Reads a bond: of the kernel from sysfs, of Open vSwitch ("ovs_bond...") from its interface file.
 * @return 0, also for an interface that is no bond (ZARNBOND_NONE, no slaves); otherwise -1
 *         (kernel) or 1 (Open vSwitch), with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_OPEN or
 *         ZARNNETERR_READ (a file), ZARNNETERR_UNEXPECTED_CONTENT (a key of the file of Open
 *         vSwitch), ZARNNETERR_SLAVES_FULL or ZARNNETERR_NO_MEMORY
 */
int ZARNNetLinkAggrGet(const char* szBond, ZARNLINKAGGROPT* pOpt);

/**
 * Adds a slave to the record, sorted.
 * @param pOpt     the record
 * @param szSlave  the name of the slave
 * @return 0 (the error state is ZARNNETERR_NOT_FOUND all the same); -1 with
 *         ZARNNETERR_BAD_PARAMETER, ZARNNETERR_EXISTS (it is in the record already) or
 *         ZARNNETERR_SLAVES_FULL
 */
int ZARNNetLinkAggrOptSlsaveAdd(ZARNLINKAGGROPT* pOpt, const char* szSlave);

/**
 * Creates, changes or deletes a kernel bond: rewrites the interface files of bond and slaves, and
 * restarts them with "/etc/rc.network stop" and "start", bond and slaves. The bond takes over the
 * first slave's address settings and lease, the first slave the bond's when it is deleted. Creation
 * and deletion, not a change, are told as net/ifname_change. No lock is taken: callers serialise
 * their changes of bonds.
 * The ".saved" files that stand beside the slaves' files from an earlier change are removed first.
 * @param pOpt  szName; mode: ZARNBOND_NONE deletes, ZARNBOND_BALANCE_ALB to ZARNBOND_BALANCE_RR is
 *              the mode it shall have (those of Open vSwitch cannot be created here); at least 2
 *              slaves. A record equal to the present bond does nothing. On delete the slaves are
 *              overwritten with the present ones
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (the record; a name that begins with "-"),
 *         ZARNNETERR_NO_MEMORY (also a former slave whose BOOTPROTO=none cannot be written),
 *         ZARNNETERR_OPEN, ZARNNETERR_READ, ZARNNETERR_WRITE or ZARNNETERR_RENAME (an interface
 *         file), ZARNNETERR_UNEXPECTED_CONTENT (a slave's file without DEVICE), ZARNNETERR_COMMAND
 *         (the copy of the bond's file, the event's facility), ZARNNETERR_REFUSED (the bond's file
 *         cannot be removed), ZARNNETERR_NOT_FOUND (it has none): the slaves' files are put back, a
 *         bond that could not be created has no file, and the interfaces are started again all the
 *         same. A change that has removed the present bond and fails to create the wanted one
 *         leaves none
 * Files: the interface files; /tmp/dhcpv4.leases.SLAVE and .BOND, believed only when they are
 * regular files of root's. Programs: /etc/rc.network, /bin/cp, /bin/mv.
 */
int ZARNNetLinkAggrSet(ZARNLINKAGGROPT* pOpt);

/**
 * Makes an interface's file that of a slave, or of an interface of its own again. The file as it
 * was stays beside it, with its mode and owner and ".saved" appended.
 * @param blJoin    not 0: joins szMaster; 0: leaves its bond
 * @param szMaster  the bond; not used to leave
 * @param szSlave  the interface
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NO_MEMORY, or the code of the file that
 *         cannot be read (ZARNNETERR_OPEN, ZARNNETERR_READ) or written (ZARNNETERR_WRITE,
 *         ZARNNETERR_RENAME)
 * Program: /bin/cp.
 */
int ZARNNetLinkAggrConfSetSlave(const char* szSlave, int blJoin, const char* szMaster);

/**
 * Removes a bond's file and releases every interface whose file names it as MASTER. Its settings go
 * to the first slave of the record, or to the first one found. Slaves keep their ".saved" files,
 * older ones of which are removed first.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (names), ZARNNETERR_OPEN (the folder),
 *         ZARNNETERR_COMMAND (the copy) and the codes of ZARNNetLinkAggrSet(): the slaves' files
 *         are put back
 * Programs: /bin/cp, /bin/mv.
 */
int ZARNNetLinkAggrConfDel(ZARNLINKAGGROPT* pOpt);

/**
 * Adds to the keys to set what makes the BOOTPROTO of a file "static" or "dhcp"; "dhcp", and no
 * address, for any other value; "dhcp" where there is no file. Writes nothing.
 * @param szPath  the interface's file
 * @param ppSet   the hash of keys to set; it may move
 * @return 0; negative with ZARNNETERR_BAD_PARAMETER (a missing argument), ZARNNETERR_NO_MEMORY, or
 *         ZARNNETERR_OPEN or ZARNNETERR_READ for a file that is there and cannot be read
 */
int ZARNNetLinkAggrConfUpdateBootProto(const char* szPath, PKOPACSZHASH* ppSet);

/* ---- bridges --------------------------------------------------------------------------------- */

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

/** Is the interface a bridge? @return 1 or 0; ZARNNETERR_BAD_PARAMETER for a name that can be
 * none */
int KOPANetBridgeIfIsMaster(const char* szIfname);

/** Is the interface a port of a bridge? @return 1 or 0; ZARNNETERR_BAD_PARAMETER for a name that
 * can be none */
int KOPANetBridgeIfIsSlave(const char* szIfname);

/** Appends the ports of a bridge to *ppList. @return their number; -1 with ZARNNETERR_BAD_PARAMETER
 * (the name, no list), ZARNNETERR_NOT_FOUND (no bridge), ZARNNETERR_OPEN (its folder in sysfs) or
 * ZARNNETERR_NO_MEMORY */
int KOPANetBridgeSlaveEnum(const char* szBridge, PKOPACSZLIST* ppList);

/**
 * Appends the bridges of a role, ZARNBRIDGE_BRIDGE or ZARNBRIDGE_LOCAL_LAN, to *ppList; null only
 * counts.
 * @param role  ZARNBRIDGE_BRIDGE or ZARNBRIDGE_LOCAL_LAN
 * @return their number, 0 for another role; -1 with ZARNNETERR_NO_MEMORY, also when the interfaces
 *         cannot be listed
 */
int KOPANetEnumBridge(PKOPACSZLIST* ppList, uint32_t role);

/** The part of an interface as the kernel has it. @return a ZARNBRIDGE_...; 0 while it is down, and
 * with ZARNNETERR_BAD_PARAMETER for a name that can be none; pInfo may be null */
int KOPANETGetBridgeInfo(const char* szIfname, ZARNBRIDGEINFO* pInfo);

/**
 * The part of an interface in topology 1 to 3.
 * @param kind  the id of the topology, 1 to 3
 * @return a ZARNBRIDGE_..., or 0, with ZARNNETERR_BAD_PARAMETER for a null name; pInfo may be null
 */
int KOPANETGetBridgeInfoByTopology(const char* szIfname, ZARNBRIDGEINFO* pInfo, uint32_t kind);

/**
 * Reads the interface's file. Either output may be null, not both. The type is ZARNBRIDGE_LOCAL_LAN
 * or ZARNBRIDGE_BRIDGE for TYPE=bridge; else ZARNBRIDGE_STANDALONE with a BRIDGE key and
 * ZARNBRIDGE_PORT without: the reverse of the other functions, kept for callers that compare
 * against it.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (the name, both outputs null) or ZARNNETERR_OPEN (no
 *         file)
 */
int ZARNNetGetBridgeConfig(const char* szIfname, ZARNNETIFSETTINGS* pSettings,
                           ZARNBRIDGEINFO* pInfo);

/**
 * Writes an interface's part in a bridge into its file, and its address settings where they are
 * given. The type is a ZARNBRIDGE_...; szRef the primary port of a bridge, or the bridge of a port.
 * The file is made where there is none, otherwise kept beside itself with ".saved" at its end.
 * @param pSettings  null leaves the address alone; its szName is not used
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (null record, unfit name or text, another type),
 *         ZARNNETERR_NO_MEMORY, or ZARNNETERR_OPEN, ZARNNETERR_READ, ZARNNETERR_WRITE or
 *         ZARNNETERR_RENAME (the file)
 * Program: /bin/cp.
 */
int ZARNNetSetBridgeConfig(const ZARNNETIFSETTINGS* pSettings, const ZARNBRIDGEINFO* pInfo);

/**
 * Makes a port of a bridge an interface of its own again, in its file: TYPE and BRIDGE go, the
 * address settings come, ONBOOT is yes whatever blOnBoot says. The file is kept beside itself with
 * ".saved" at its end.
 * @return 0; -1 with the codes of ZARNNetSetBridgeConfig()
 * Program: /bin/cp.
 */
int ZARNNetDisableBridgeSlave(const ZARNNETIFSETTINGS* pSettings);

/**
 * Does ZARNNetGetBridgeConfig() read this type?
 * @param role  a ZARNBRIDGE_...
 * @return 1 or 0; ZARNNETERR_BAD_PARAMETER for a null or empty name, ZARNNETERR_OPEN without a file
 */
int ZARNNetIsIfBridgeType(const char* szIfname, uint32_t role);

/* ---- Open vSwitch ---------------------------------------------------------------------------- */

/** What an interface is to Open vSwitch. */
enum {
  ZARNOVS_NONE = 0,
  ZARNOVS_DEVICE = 1, /* a device over one port, "ovs_eth0" */
  ZARNOVS_BOND = 2    /* a bond, "ovs_bond0" */
};

/**
 * What is the interface to Open vSwitch?
 * @return ZARNOVS_BOND, ZARNOVS_DEVICE or, for any other interface, ZARNOVS_NONE;
 *         ZARNNETERR_BAD_PARAMETER for a name that can be none
 */
int KOPANetOVSIfIsMaster(const char* szIfname);

/** Is the interface a member of an Open vSwitch bond? @return 1 or 0; ZARNNETERR_BAD_PARAMETER for
 * a name that can be none, ZARNNETERR_NO_MEMORY */
int KOPANetOVSIfIsSlave(const char* szIfname);

/** The interface under an Open vSwitch device: "ovs_eth0" gives "eth0". cbOut must exceed the
 * result's length. @return 0, or -1 with ZARNNETERR_BAD_PARAMETER */
int KOPANetOVSGetOriginalIf(const char* szIfname, char* szOut, size_t cbOut);

/* ---- VLANs ----------------------------------------------------------------------------------- */

/** One VLAN interface. */
typedef struct KOPANETVLAN {
  char szName[16];   /* "eth0.10" */
  char szRowDev[16]; /* its parent */
  int32_t id;        /* 1 to 4094 */
} KOPANETVLAN;

/**
 * Is the id one of 1 to 4094?
 * @param id  the number that a VLAN shall have
 * @return 0, or -1 with ZARNNETERR_BAD_PARAMETER
 */
int KOPANetVlanValidId(unsigned int id);

/** Is the VLAN driver there? @return 1 or 0 */
int KOPANetVlanExist(void);

/** Asks the kernel whether an interface is a VLAN. @return 1 (record filled), 0, or -1 with
 * ZARNNETERR_BAD_PARAMETER or ZARNNETERR_VLAN_QUERY (no socket) */
int KOPANetVlanGet(const char* szIfname, KOPANETVLAN* pVlan);

/**
 * KOPANetVlanGet() for the VLAN of a parent and an id.
 * @param id  the VLAN's id, 1 to 4094
 * @return as there; ZARNNETERR_BAD_PARAMETER also for the id
 */
int KOPANetVlanGetByRowDev(const char* szRowDev, unsigned int id, KOPANETVLAN* pVlan);

/**
 * All VLANs (/proc/net/vlan/config). *ppVlan is freed with free(), null when there are none.
 * @param ppVlan  receives an array of records
 * @param pcVlan  receives their number
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER, ZARNNETERR_NO_MEMORY, ZARNNETERR_OPEN or
 *         ZARNNETERR_UNEXPECTED_CONTENT
 */
int KOPANetVlanEnum(KOPANETVLAN** ppVlan, int* pcVlan);

/**
 * Puts a VLAN over an interface: the VLAN's file is written with the address given and the parent's
 * IPv6 settings, the parent keeps no address, both are started, and the firewall, traffic control
 * and DHCP server follow. Fires net/ifname_change before and after, whatever came of it. An
 * interface carries one VLAN at most. What is in place when a step fails stays. Blocks for 2
 * seconds and the programs' time. Takes no lock: changes of VLANs must not overlap.
 * @param szRowDev   the parent, "eth0"; with ".id" at most 15 characters
 * @param id         1 to 4094
 * @param pSettings  blStatic, szIP and szMask are used
 * A call that was killed half way is set right by the same call: the settings that it had taken
 * from the parent's file already are found, and its temporary files removed.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (arguments; the parent is a VLAN),
 *         ZARNNETERR_NOT_FOUND (no such parent), ZARNNETERR_EXISTS (there is a VLAN),
 *         ZARNNETERR_VLAN_QUERY, ZARNNETERR_UNEXPECTED_CONTENT (the driver's table),
 *         ZARNNETERR_OPEN (the parent's file), ZARNNETERR_WRITE (a new file), ZARNNETERR_RENAME,
 *         ZARNNETERR_REFUSED (its mode), ZARNNETERR_COMMAND (a program, the event's facility),
 *         ZARNNETERR_LOCK (the settings), or the code of the DHCP server's step that failed
 * Programs: /etc/rc.network, /usr/zarn/bin/zarnfirewall, /usr/zarn/bin/tctool.
 */
int KOPANetVlanCreate(const char* szRowDev, unsigned int id, const ZARNNETIFSETTINGS* pSettings);

/**
 * Removes a VLAN: its address settings go back into the parent's file, its own file and MTU setting
 * are deleted, the parent is started, and the same ones follow as for KOPANetVlanCreate(). Event,
 * pause and locks as there.
 * @return 0; -1 with ZARNNETERR_BAD_PARAMETER (the name), ZARNNETERR_NOT_FOUND (no VLAN), and
 *         otherwise with the codes of KOPANetVlanCreate()
 */
int KOPANetVlanRemove(const char* szVlan);

#ifdef __cplusplus
}
#endif
