// The appliance's start script on the real drivers, from the files that this library writes.
#include <zarnnetsdk/zarnnetsdk.h>

#include "machine.h"

using namespace test;

namespace {

void ExpectSlaves(const Lines& expected) {
  Lines slaves;
  for (const auto& link : Ip("link show master bond0"))
    slaves.push_back(link["ifname"]);
  EXPECT_EQ(expected, slaves);
}

}  // namespace

TEST(StartScript, TheDriverTakesTheOptionsOfEveryMode) {
  for (const char* slave : {"eth0", "eth1"})
    WriteIfcfg(slave, "DEVICE=" + std::string(slave) + "\nUSERCTL=no\nMASTER=bond0\nSLAVE=yes\n");
  for (uint32_t mode = 1; mode <= 5; ++mode) {
    WriteIfcfg("bond0", "DEVICE=bond0\nONBOOT=yes\nUSERCTL=no\nBONDING_OPTS=" + std::string(grgBondDesc[mode].szBondingOpts) +
                            "\nBOOTPROTO=static\nIPADDR=192.168.80.1\nNETMASK=255.255.255.0\n");
    EXPECT_EQ("0\n", Shell("/etc/rc.network start bond0 eth0 eth1; echo $?")) << mode;
    const auto bond = Ip("address show dev bond0");
    ASSERT_EQ(1u, bond.size()) << mode;
    const auto& info = bond[0]["linkinfo"]["info_data"];
    EXPECT_EQ(grgBondDesc[mode].szName, info["mode"]) << mode;
    EXPECT_EQ(100, info["miimon"]);
    EXPECT_EQ(100, info["updelay"]);
    EXPECT_EQ(0, info["use_carrier"]);
    EXPECT_EQ(mode == 2 ? "fast" : "slow", info.value("ad_lacp_rate", ""));
    EXPECT_EQ("192.168.80.1", bond[0]["addr_info"][0]["local"]);
    ExpectSlaves({"eth0", "eth1"});
    EXPECT_TRUE(Within(5, [] { return ZARNNetIfIsLink("bond0") == 1; })) << mode;
    ZARNLINKAGGROPT record{};
    EXPECT_EQ(0, ZARNNetLinkAggrGet("bond0", &record));
    EXPECT_EQ(mode, record.mode);
    EXPECT_EQ("0\n", Shell("/etc/rc.network stop bond0 eth0 eth1; echo $?")) << mode;
    EXPECT_FALSE(FileExists("/sys/class/net/bond0"));
  }
}

TEST(StartScript, ABridgeOverAVlanOverABond) {
  WriteIfcfg("eth0", "DEVICE=eth0\nMASTER=bond0\nSLAVE=yes\n");
  WriteIfcfg("eth1", "DEVICE=eth1\nMASTER=bond0\nSLAVE=yes\n");
  WriteIfcfg("bond0", "DEVICE=bond0\nONBOOT=yes\nBONDING_OPTS=" + std::string(grgBondDesc[4].szBondingOpts) + "\nBOOTPROTO=none\n");
  WriteIfcfg("bond0.10", "DEVICE=bond0.10\nVLAN_ROW_DEVICE=bond0\nVLAN_ID=10\nONBOOT=yes\nBRIDGE=br0\n");
  WriteIfcfg("br0", "DEVICE=br0\nTYPE=bridge\nPRIMARY=eth2\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=10.0.10.1\nNETMASK=255.255.255.0\n");
  EXPECT_EQ("0\n", Shell("/etc/rc.network start br0 bond0.10 bond0 eth0 eth1; echo $?"));
  ExpectSlaves({"eth0", "eth1"});
  const auto vlan = Ip("link show dev bond0.10");
  EXPECT_EQ("bond0", vlan[0]["link"]);
  EXPECT_EQ(10, vlan[0]["linkinfo"]["info_data"]["id"]);
  EXPECT_EQ("br0", vlan[0]["master"]);
  // The tagged side: a VLAN on one of the other ends of the bond's cables.
  Do("ip -n lan link set lan0 nomaster; ip -n lan link set lan1 down; ip -n lan link add link lan0 name tagged type vlan id 10;"
     "ip -n lan link set tagged up; ip -n lan address add 10.0.10.2/24 dev tagged");
  EXPECT_TRUE(Within(15, [] {
    return Contains(Shell("ip netns exec lan ping -c 1 -W 1 10.0.10.1"), "1 received");
  })) << Shell("ip -d address; cat /proc/net/bonding/bond0");
  EXPECT_EQ("0\n", Shell("/etc/rc.network stop br0 bond0.10 bond0 eth0 eth1; echo $?"));
  EXPECT_FALSE(FileExists("/sys/class/net/bond0"));
  EXPECT_FALSE(FileExists("/sys/class/net/bond0.10"));
  EXPECT_FALSE(FileExists("/sys/class/net/br0"));
}
