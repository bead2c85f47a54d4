// A bond through its life: made of two ports, changed, deleted, with the ports'
// settings before and after.
#include <algorithm>

#include <zarnnetsdk/zarnnetsdk.h>

#include "machine.h"

using namespace test;

namespace {

ZARNLINKAGGROPT Wanted(uint32_t mode, const Lines& slaves) {
  ZARNLINKAGGROPT bond{};
  std::snprintf(bond.szName, sizeof bond.szName, "bond0");
  bond.mode = mode;
  for (const std::string& slave : slaves)
    ZARNNetLinkAggrOptSlsaveAdd(&bond, slave.c_str());
  return bond;
}

std::string Attribute(const std::string& name) {
  return ReadFile("/sys/class/net/bond0/bonding/" + name);
}

std::string Address(const std::string& ifname) {
  const auto link = Ip("-4 address show dev " + ifname);
  return link.empty() || link[0]["addr_info"].empty()
             ? ""
             : link[0]["addr_info"][0]["local"].get<std::string>();
}

void ExpectReadBack(uint32_t mode, const Lines& slaves, uint32_t noPartner) {
  ZARNLINKAGGROPT bond{};
  ASSERT_EQ(0, ZARNNetLinkAggrGet("bond0", &bond)) << LogText();
  EXPECT_EQ(mode, bond.mode);
  EXPECT_EQ(noPartner, bond.blNoPartner);
  EXPECT_EQ(slaves, Lines(bond.rgszSlave, bond.rgszSlave + bond.cSlave));
  Lines kernels = Words(Attribute("slaves"));
  std::sort(kernels.begin(), kernels.end());
  EXPECT_EQ(slaves, kernels);
  for (const std::string& slave : slaves)
    EXPECT_TRUE(Contains(ReadFile("/proc/net/bonding/bond0"), "Slave Interface: " + slave + "\n"));
}

// The other ends of the cables as an LACP trunk of the second host, and back on
// its bridge.
void MakeTrunk() {
  Do("ip -n lan link add trunk type bond mode 802.3ad miimon 100 lacp_rate "
     "fast;"
     "for plug in lan0 lan1; do ip -n lan link set $plug nomaster; ip -n lan "
     "link set $plug down;"
     "  ip -n lan link set $plug master trunk; done; ip -n lan link set trunk "
     "master lan up");
}
void CutTrunk() {
  Do("ip -n lan link delete trunk; for plug in lan0 lan1; do ip -n lan link "
     "set $plug master lan up; done");
}

bool SecondHostReaches(const std::string& address) {
  return Within(20, [&] {
    return Contains(Shell("ip netns exec lan ping -c 1 -W 1 " + address), "1 received");
  });
}

}  // namespace

TEST(BondChange, MadeChangedAndDeleted) {
  SleepForReal();
  Do("/etc/rc.network start eth0 eth1");
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0")) << LogText();
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth1", "192.168.51.10", "255.255.255.0")) << LogText();
  const Lines slaves{"eth0", "eth1"};

  ZARNLINKAGGROPT bond = Wanted(2, slaves);
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&bond)) << LogText();
  EXPECT_TRUE(Contains(ReadFile("/proc/net/bonding/bond0"), "Bonding Mode: IEEE 802.3ad"))
      << Shell("ip address");
  EXPECT_EQ("fast 1\n", Attribute("lacp_rate"));
  ExpectReadBack(2, slaves, 1);
  EXPECT_EQ("192.168.50.10", Address("bond0"));
  EXPECT_EQ("", Address("eth0"));
  MakeTrunk();
  EXPECT_TRUE(SecondHostReaches("192.168.50.10")) << ReadFile("/proc/net/bonding/bond0");
  // Frames pass before the aggregator in use is the one that the partner answered.
  EXPECT_TRUE(Within(20, [] {
    const auto info = Ip("link show dev bond0")[0]["linkinfo"]["info_data"];
    return info["ad_info"].value("partner_mac", "00:00:00:00:00:00") != "00:00:00:00:00:00";
  })) << ReadFile("/proc/net/bonding/bond0");
  ExpectReadBack(2, slaves, 0);
  CutTrunk();

  bond = Wanted(4, slaves);
  ASSERT_EQ(0, ZARNNetLinkAggrSet(&bond)) << LogText();
  EXPECT_EQ("active-backup 1\n", Attribute("mode"));
  ExpectReadBack(4, slaves, 0);
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
  Lines events;
  for (const std::string& line : Events())
    if (line.starts_with("net/ifname_change")) events.push_back(line);
  EXPECT_EQ(4u, events.size()) << Shell("cat /var/log/plugin-events.log");  // made and deleted
}
