// SPDX-License-Identifier: Apache-2.0
// The appliance's start script on the real drivers, from the files that this library writes.
#include "machine.h"

using namespace test;

namespace {

// Two ports as slaves of bond0, whose file has these lines more.
void WriteBond(uint32_t mode, const std::string& lines) {
  for (const std::string slave : {"eth0", "eth1"})
    WriteIfcfg(slave, "DEVICE=" + slave + "\nUSERCTL=no\nMASTER=bond0\nSLAVE=yes\n");
  WriteIfcfg("bond0", "DEVICE=bond0\nONBOOT=yes\nUSERCTL=no\nBONDING_OPTS=" +
                          std::string(grgBondDesc[mode].szBondingOpts) + "\n" + lines);
}

void RunScript(const std::string& arguments) {
  EXPECT_EQ("0\n", Shell("/etc/rc.network " + arguments + "; echo $?"));
}

}  // namespace

TEST(StartScript, TheDriverTakesTheOptionsOfEveryMode) {
  for (uint32_t mode = 1; mode <= 5; ++mode) {
    SCOPED_TRACE(grgBondDesc[mode].szName);
    WriteBond(mode, "BOOTPROTO=static\nIPADDR=192.168.80.1\nNETMASK=255.255.255.0\n");
    RunScript("start bond0 eth0 eth1");
    const auto bond = Link("bond0");
    ASSERT_FALSE(bond.is_null());
    const auto& info = bond["linkinfo"]["info_data"];
    EXPECT_EQ(grgBondDesc[mode].szName, info["mode"]);
    EXPECT_EQ(100, info["miimon"]);
    EXPECT_EQ(100, info["updelay"]);
    EXPECT_EQ(0, info["use_carrier"]);
    EXPECT_EQ(mode == 2 ? "fast" : "slow", info.value("ad_lacp_rate", ""));
    EXPECT_EQ("192.168.80.1", Address("bond0"));
    EXPECT_EQ((Lines{"eth0", "eth1"}), Members("bond0"));
    EXPECT_TRUE(Within(5, [] { return ZARNNetIfIsLink("bond0") == 1; }));
    ZARNLINKAGGROPT record{};
    EXPECT_EQ(0, ZARNNetLinkAggrGet("bond0", &record));
    EXPECT_EQ(mode, record.mode);
    EXPECT_EQ(mode == 2 ? 1u : 0u, record.blNoPartner);
    EXPECT_EQ(Members("bond0"), Slaves(record));
    RunScript("stop bond0 eth0 eth1");
    EXPECT_FALSE(FileExists("/sys/class/net/bond0"));
  }
}

TEST(StartScript, ABridgeOverAVlanOverABond) {
  WriteBond(4, "BOOTPROTO=none\n");
  WriteIfcfg("bond0.10",
             "DEVICE=bond0.10\nVLAN_ROW_DEVICE=bond0\nVLAN_ID=10\nONBOOT=yes\nBRIDGE=br0\n");
  WriteIfcfg("br0",
             "DEVICE=br0\nTYPE=bridge\nPRIMARY=eth2\nONBOOT=yes\nBOOTPROTO=static\n"
             "IPADDR=10.0.10.1\nNETMASK=255.255.255.0\n");
  RunScript("start br0 bond0.10 bond0 eth0 eth1");
  EXPECT_EQ((Lines{"eth0", "eth1"}), Members("bond0"));
  const auto vlan = Link("bond0.10");
  EXPECT_EQ("bond0", vlan["link"]);
  EXPECT_EQ(10, vlan["linkinfo"]["info_data"]["id"]);
  EXPECT_EQ("br0", vlan["master"]);
  Do("ip -n lan link set lan1 down");  // so that the bond uses the cable with the tagged side
  MakeTaggedSide(10, "10.0.10.2/24");
  EXPECT_TRUE(SecondHostReaches("10.0.10.1"))
      << Shell("ip -d address; cat /proc/net/bonding/bond0");
  RunScript("stop br0 bond0.10 bond0 eth0 eth1");
  for (const std::string ifname : {"bond0", "bond0.10", "br0"})
    EXPECT_FALSE(FileExists("/sys/class/net/" + ifname)) << ifname;
}
