// SPDX-License-Identifier: Apache-2.0
// Open vSwitch with the kernel's datapath: a device over one port, and a bond of two.
#include "machine.h"

using namespace test;

namespace {

void StartOpenVSwitch() {
  Do("mkdir -p /etc/openvswitch /run/openvswitch /var/log/openvswitch;"
     "ovsdb-tool create /etc/openvswitch/conf.db /usr/share/openvswitch/vswitch.ovsschema;"
     "ovsdb-server --remote=punix:/run/openvswitch/db.sock --pidfile --detach -vconsole:off "
     "--log-file;"
     "ovs-vsctl --no-wait init; /usr/lib/openvswitch-switch/ovs-vswitchd --pidfile --detach "
     "-vconsole:off --log-file");
}

// The appliance's kernel has a file for its Open vSwitch bonds, which nobody can make in a kernel's
// own tree: a copy of the folder's links takes its place.
void NameBonds(const std::string& table) {
  Do("mkdir /run/net; cp -dR /sys/class/net/. /run/net; mount --bind /run/net /sys/class/net");
  WriteFile("/sys/class/net/zarn_ovs_bonds", table);
}

}  // namespace

TEST(OpenVSwitch, DevicesAndMembersAreKnown) {
  StartOpenVSwitch();
  Do("ovs-vsctl add-br ovs_eth0 -- add-port ovs_eth0 eth0;"
     "ovs-vsctl add-br ovs_bond0 -- add-bond ovs_bond0 members eth1 eth2 bond_mode=active-backup;"
     "ip link set ovs_eth0 up; ip link set ovs_bond0 up");
  BringUp("eth0");
  WriteIfcfg("ovs_bond0", "DEVICE=ovs_bond0\nSLAVE_LIST=eth1 eth2\nBOND_MODE=ovs-active-backup\n");
  EXPECT_EQ(2, KOPANetOVSIfIsMaster("ovs_bond0"));
  EXPECT_EQ(1, KOPANetOVSIfIsMaster("ovs_eth0"));
  EXPECT_EQ(0, KOPANetOVSIfIsMaster("ovs_eth1"));
  EXPECT_EQ(0, KOPANetOVSIfIsMaster("ovs-system"));
  EXPECT_EQ("openvswitch", Link("ovs_bond0")["linkinfo"]["info_kind"]);
  EXPECT_EQ("openvswitch", Link("eth1")["linkinfo"]["info_slave_kind"]);

  ZARNLINKAGGROPT bond{};
  ASSERT_EQ(0, ZARNNetLinkAggrGet("ovs_bond0", &bond)) << LogText();
  EXPECT_EQ(6u, bond.mode);
  EXPECT_EQ(Words(Shell("ovs-vsctl list-ifaces ovs_bond0")), Slaves(bond));

  // The device's carrier is that of what lies under it.
  EXPECT_EQ(1, ZARNNetIfIsLink("ovs_eth0"));
  EXPECT_EQ(0, ZARNNetIfIsLink("ovs_bond0"));
  BringUp("eth2");
  EXPECT_EQ(1, ZARNNetIfIsLink("ovs_bond0"));
  char mac[18] = "";
  EXPECT_EQ(0, KOPANetGetMacAddrByInterface("ovs_bond0", mac, sizeof mac, 1));
  EXPECT_EQ(Link("eth1")["address"], mac);

  // An Open vSwitch device follows the smallest of its ports.
  ASSERT_EQ(0, ZARNNetSetMTUEth("1400", "ovs_bond0")) << LogText();
  for (const char* ifname : {"eth1", "eth2"})
    EXPECT_EQ(1400, Link(ifname)["mtu"]);
  EXPECT_TRUE(Within(5, [] { return Link("ovs_bond0")["mtu"] == 1400; }));
  EXPECT_EQ(1400, ZARNGetMTUSetting("ovs_bond0"));

  EXPECT_EQ(0, KOPANetOVSIfIsSlave("eth1"));
  EXPECT_EQ(0, ZARNNetIfIsBondingPassive("eth1"));
  Do("ovs-vsctl add-br ovs_eth1; ip link set eth1 up");
  NameBonds("ovs_bond0 eth1 eth2\n");
  EXPECT_EQ(1, KOPANetOVSIfIsSlave("eth1"));
  EXPECT_EQ(0, KOPANetOVSIfIsSlave("eth2"));  // has no device of its own
  EXPECT_EQ(0, KOPANetOVSIfIsSlave("eth0"));
  EXPECT_EQ(0, KOPANetOVSIfIsSlave("bond0"));
  EXPECT_EQ(1, ZARNNetIfIsBondingPassive("eth1"));
  EXPECT_EQ(1, ZARNNetIfIsBondingPassive("eth2"));
  EXPECT_EQ(0, ZARNNetIfIsBondingPassive("eth0"));
  std::string listed;
  for (const unsigned kind : {8u, 3u})
    for (const char* ifname : {"eth0", "eth1", "eth2", "ovs_bond0"})
      listed += std::to_string(ZARNNetIsDevTypeMatch(ifname, kind));
  EXPECT_EQ("10011011", listed) << "eth1 has a device of its own, eth2 is in a bond alone";
}
