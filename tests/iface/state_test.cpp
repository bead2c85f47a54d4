// State of one interface: up, carrier, bond membership, MAC address.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/iface.h>

#include "support/appliance.h"

using namespace test;

TEST(State, UpAndDownAreTheKernels) {
  EXPECT_EQ(0, ZARNNetIsIFUp("eth0"));
  EXPECT_EQ(1, KOPANetIfDown("eth0")) << "down already";
  EXPECT_EQ(1, KOPANetIfUp("eth0"));
  EXPECT_EQ(1, ZARNNetIsIFUp("eth0"));
  EXPECT_NE(std::string::npos, Shell("ip link show eth0").find(",UP"));
  EXPECT_EQ(1, KOPANetISetIfFlags("eth0", 0x100)) << "promiscuous";
  EXPECT_NE(std::string::npos, Shell("ip link show eth0").find("PROMISC"));
  EXPECT_EQ(1, KOPANetISetIfFlags("eth0", -1));
  EXPECT_EQ(0, ZARNNetIsIFUp("eth0"));
  EXPECT_EQ(1, KOPANetReInitIf("eth0")) << "a down interface is brought up";
  EXPECT_EQ(1, ZARNNetIsIFUp("eth0"));
  for (const char* name : {"nosuch0", "eth0123456789abcdef"}) {
    EXPECT_EQ(0, ZARNNetIsIFUp(name));
    EXPECT_EQ(0, KOPANetIfUp(name));
    EXPECT_EQ(0, KOPANetReInitIf(name));
  }
}

TEST(State, ReInitReallyTakesTheInterfaceDown) {
  Shell("ip link set eth0 up; ip route add 10.77.0.0/16 dev eth0");
  EXPECT_EQ(1, KOPANetReInitIf("eth0"));
  EXPECT_EQ("", Shell("ip route show 10.77.0.0/16")) << "routes go when the interface does";
}

TEST(State, CarrierIsThatOfThePortUnderAnOvsDevice) {
  BringUp("eth0");
  EXPECT_EQ(1, ZARNNetIfIsLink("eth0"));
  EXPECT_EQ(0, ZARNNetIfIsLink("eth1"));
  EXPECT_EQ(-1, ZARNNetIfIsLink("nosuch0"));
  ExpectLog(LOG_INFO, "net_if_is_link", "get link status failed on nosuch0");
  Shell(
      "ip link add ovs_eth0 type bridge; ip link add ovs_eth1 type bridge; ip link set ovs_eth1 "
      "up");
  EXPECT_EQ(1, ZARNNetIfIsLink("ovs_eth0"));
  EXPECT_EQ(0, ZARNNetIfIsLink("ovs_eth1"));
  Shell("ip link add ovs_bond0 type bridge");
  EXPECT_EQ(-1, ZARNNetIfIsLink("ovs_bond0")) << "no file to read the slaves from";
  ExpectLog(LOG_ERR, "net_if_is_link", "Failed to get OVS bond slave of ovs_bond0");
  WriteIfcfg("ovs_bond0", "SLAVE_LIST=eth1 eth0\nBOND_MODE=balance-slb\n");
  EXPECT_EQ(1, ZARNNetIfIsLink("ovs_bond0"));
  WriteIfcfg("ovs_bond0", "SLAVE_LIST=eth1 eth2\nBOND_MODE=balance-slb\n");
  EXPECT_EQ(0, ZARNNetIfIsLink("ovs_bond0"));
}

TEST(State, AMemberOfAnOvsBondIsPassiveAndTheBondIsNot) {
  MountEmpty("/sys/class/net");
  EXPECT_EQ(0, ZARNNetIfIsBondingPassive("eth0"));
  WriteFile("/sys/class/net/zarn_ovs_bonds", "ovs_bond0 eth0 eth10\novs_bond1 eth2");
  EXPECT_EQ(1, ZARNNetIfIsBondingPassive("eth0"));
  EXPECT_EQ(0, ZARNNetIfIsBondingPassive("eth1")) << "the whole word";
  EXPECT_EQ(1, ZARNNetIfIsBondingPassive("eth2")) << "the last line without newline";
  Shell("ip link set eth3 name ovs_bond1");
  EXPECT_EQ(0, ZARNNetIfIsBondingPassive("ovs_bond1"));
}

TEST(Mac, EveryResultCodeHasItsCause) {
  char buffer[18] = "";
  Shell("ip link set eth0 address 02:00:00:00:0A:0B");
  EXPECT_EQ(0, KOPANetGetMacAddr(0, buffer, sizeof buffer, 0));
  EXPECT_STREQ("02:00:00:00:0a:0b", buffer);
  EXPECT_EQ(0, KOPANetGetMacAddr(0, buffer, 6, 1));
  EXPECT_STREQ("02:00", buffer) << "cut to the buffer";
  EXPECT_EQ(2, KOPANetGetMacAddr(9, buffer, sizeof buffer, 0));
  EXPECT_STREQ("", buffer);
  EXPECT_EQ(1, KOPANetGetMacAddr(9, buffer, sizeof buffer, 1));
  WriteFile("/etc/zarnha.conf", "active=yes\nrunning=yes\neth0_mac=02:aa:bb:cc:dd:ee\n");
  EXPECT_EQ(0, KOPANetGetMacAddr(0, buffer, sizeof buffer, 0));
  EXPECT_STREQ("02:aa:bb:cc:dd:ee", buffer) << "the pair's";
  EXPECT_EQ(3, KOPANetGetMacAddr(1, buffer, sizeof buffer, 0));
  EXPECT_EQ(0, KOPANetGetMacAddr(0, buffer, sizeof buffer, 1));
  EXPECT_STREQ("02:00:00:00:0a:0b", buffer) << "the port's own";
  RemoveFile("/etc/zarnha.conf");
  WriteFile("/etc.defaults/zarninfo.conf", "support_dual_head=\"yes\"\n");
  EXPECT_EQ(4, KOPANetGetMacAddr(0, buffer, sizeof buffer, 0));
}

TEST(Mac, AVirtualInterfaceAnswersForThePortUnderIt) {
  char buffer[18] = "";
  Shell(
      "ip link set eth2 address 02:00:00:00:00:22; ip link add ovs_bond0 type bridge; ip link add "
      "ovs_eth2 type bridge");
  WriteIfcfg("ovs_bond0", "SLAVE_LIST=eth3 eth2\nBOND_MODE=balance-tcp\n");
  for (const char* name : {"eth2", "eth2.10", "eth2:1", "ovs_eth2", "ovs_bond0", "ovs_bond0.7"}) {
    EXPECT_EQ(0, KOPANetGetMacAddrByInterface(name, buffer, sizeof buffer, 1)) << name;
    EXPECT_STREQ("02:00:00:00:00:22", buffer) << name;
  }
  for (const char* name : {"bond9", "wlan0", ".10", "", "eth"}) {
    EXPECT_EQ(1, KOPANetGetMacAddrByInterface(name, buffer, sizeof buffer, 1)) << name;
  }
  ExpectLog(LOG_ERR, "net_get_mac", "No slave on bond [bond9]");
  ExpectLog(LOG_DEBUG, "net_get_mac", "Failed to get interface idx: wlan0");
}

TEST(Topology, NamesChooseTheEntry) {
  KOPANETTOPOLOGY info{};
  WriteFile("/etc/zarninfo.conf", "net_topology=\"router\"\n");
  EXPECT_EQ(0U, KOPANetTopologyGet(&info)) << "not supported here";
  EXPECT_STREQ("", info.szName);
  WriteFile("/etc/zarninfo.conf", "support_net_topology=\"yes\"\nnet_topology=\"Bridge\"\n");
  EXPECT_EQ(2U, KOPANetTopologyGet(&info));
  EXPECT_STREQ("br0", info.szUplink);
  EXPECT_EQ(2U, KOPANetTopologyGet(nullptr));
  info.id = 3;
  EXPECT_EQ(3U, KOPANetTopologyGet(&info));
  EXPECT_STREQ("router", info.szName);
  EXPECT_EQ(0, KOPANETSetTopologyConfigs(&info));
  EXPECT_EQ("support_net_topology=\"yes\"\nnet_topology=\"router\"\n",
            ReadFile("/etc/zarninfo.conf"));
  MountEmpty("/proc/self/net");
  WriteFile("/proc/net/vlan/config",
            "VLAN Dev name\t | VLAN ID\nName-Type: X\neth0.5\t| 5  | eth0\n");
  info = {};
  EXPECT_EQ(3U, KOPANetTopologyGet(&info));
  EXPECT_STREQ("eth0.5", info.szUplink) << "a VLAN over the uplink leads outside";
}
