// SPDX-License-Identifier: Apache-2.0
// Bonds of the kernel's driver, opposite a switch that speaks LACP: the second bond, at the other
// ends of the cables.
#include "machine.h"

using namespace test;

namespace {

const Lines kPorts{"eth0", "eth1"};

ZARNLINKAGGROPT Wanted(uint32_t mode, const Lines& slaves) {
  ZARNLINKAGGROPT bond{};
  std::snprintf(bond.szName, sizeof bond.szName, "bond0");
  bond.mode = mode;
  for (const std::string& slave : slaves)
    ZARNNetLinkAggrOptSlsaveAdd(&bond, slave.c_str());
  return bond;
}

std::string Table() {
  return ReadFile("/proc/net/bonding/bond0");
}

void ExpectReadBack(uint32_t mode, uint32_t noPartner) {
  ZARNLINKAGGROPT bond{};
  ASSERT_EQ(0, ZARNNetLinkAggrGet("bond0", &bond)) << LogText();
  EXPECT_EQ(mode, bond.mode);
  EXPECT_EQ(noPartner, bond.blNoPartner);
  EXPECT_EQ(kPorts, Slaves(bond));
  EXPECT_EQ(kPorts, Members("bond0"));
  for (const std::string& slave : kPorts)
    EXPECT_TRUE(Contains(Table(), "Slave Interface: " + slave + "\n"));
}

// The other ends of the cables as an LACP trunk of the second host, and back on its bridge.
void MakeTrunk() {
  Do("ip -n lan link add trunk type bond mode 802.3ad miimon 100 lacp_rate fast;"
     "for plug in lan0 lan1; do ip -n lan link set $plug nomaster; ip -n lan link set $plug down;"
     "  ip -n lan link set $plug master trunk; done; ip -n lan link set trunk master lan up");
}
void CutTrunk() {
  Do("ip -n lan link delete trunk; for plug in lan0 lan1; do ip -n lan link set $plug master lan "
     "up; done");
}

}  // namespace

TEST(Bond, MadeChangedAndDeleted) {
  SleepForReal();
  EXPECT_EQ(0, ZARNNetLinkAggrExist());  // the driver's list of bonds has no line while it is empty
  EXPECT_EQ((Counted{0, {}}), ListOf(ZARNNetLinkAggrEnum));
  Do("/etc/rc.network start eth0 eth1");
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0")) << LogText();
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth1", "192.168.51.10", "255.255.255.0")) << LogText();

  ZARNLINKAGGROPT bond = Wanted(2, kPorts);
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&bond)) << LogText();
  EXPECT_TRUE(Contains(Table(), "Bonding Mode: IEEE 802.3ad")) << Shell("ip address");
  EXPECT_TRUE(Contains(Table(), "Partner Mac Address: 00:00:00:00:00:00"));
  EXPECT_EQ("fast 1\n", ReadFile("/sys/class/net/bond0/bonding/lacp_rate"));
  ExpectReadBack(2, 1);
  EXPECT_EQ("192.168.50.10", Address("bond0"));
  EXPECT_EQ("", Address("eth0"));
  EXPECT_EQ(1, ZARNNetLinkAggrExist());
  EXPECT_EQ(1, ZARNNetIfIsBondingPassive("eth0"));
  EXPECT_EQ(0, ZARNNetIfIsBondingPassive("bond0"));
  MakeTrunk();
  EXPECT_TRUE(SecondHostReaches("192.168.50.10")) << Table();
  // Frames pass before the aggregator in use is the one that the partner answered.
  const std::string partner = Ip("-n lan link show dev trunk")[0]["address"];
  EXPECT_TRUE(Within(30, [&] { return Contains(Table(), "Partner Mac Address: " + partner); }))
      << Table();
  ExpectReadBack(2, 0);
  EXPECT_EQ(1, ZARNNetIfIsLink("bond0"));
  CutTrunk();

  bond = Wanted(4, kPorts);
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&bond)) << LogText();
  EXPECT_TRUE(Contains(Table(), "Bonding Mode: fault-tolerance (active-backup)")) << Table();
  ExpectReadBack(4, 0);
  EXPECT_EQ("192.168.50.10", Address("bond0"));
  EXPECT_TRUE(SecondHostReaches("192.168.50.10"));

  bond = Wanted(0, {});
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&bond)) << LogText();
  EXPECT_FALSE(FileExists("/sys/class/net/bond0"));
  EXPECT_FALSE(FileExists(IfcfgPath("bond0")));
  EXPECT_EQ("192.168.50.10", Address("eth0")) << ReadIfcfg("eth0");
  EXPECT_EQ("192.168.51.10", Address("eth1")) << ReadIfcfg("eth1");
  EXPECT_FALSE(Contains(ReadIfcfg("eth0") + ReadIfcfg("eth1"), "MASTER"));
  EXPECT_TRUE(SecondHostReaches("192.168.50.10"));
  const Lines events = Events();
  EXPECT_EQ(4, std::count_if(events.begin(), events.end(),
                             [](const std::string& line) {
                               return line.starts_with("net/ifname_change");  // made and deleted
                             }))
      << Shell("cat /var/log/plugin-events.log");
}

// The modes with a number are those that the start script makes.
TEST(Bond, OfAModeWithoutNumberIsReadInTheOrderOfNames) {
  for (const std::string mode : {"broadcast", "balance-tlb"}) {
    Do("ip link add bond7 type bond miimon 100 mode " + mode +
       "; for port in eth3 eth2; do ip link set $port down; ip link set $port master bond7; done");
    EXPECT_EQ(mode, Link("bond7")["linkinfo"]["info_data"]["mode"]);
    EXPECT_EQ((Lines{"eth3", "eth2"}), Words(ReadFile("/sys/class/net/bond7/bonding/slaves")));
    ZARNLINKAGGROPT bond{};
    EXPECT_EQ(0, ZARNNetLinkAggrGet("bond7", &bond)) << mode;
    EXPECT_EQ(0u, bond.mode) << mode;
    EXPECT_EQ((Lines{"eth2", "eth3"}), Slaves(bond)) << mode;
    EXPECT_EQ(0u, bond.blNoPartner) << mode;
    Do("ip link delete bond7");
  }
  // Both count, but only the one with slaves is named.
  Do("ip link add bond0 type bond mode active-backup; ip link set eth2 master bond0;"
     "ip link add bond1 type bond");
  EXPECT_EQ((Counted{2, {"bond0"}}), ListOf(ZARNNetLinkAggrEnum));
}
