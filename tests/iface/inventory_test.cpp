// The inventory against real interfaces: what is listed, in which order, with which fields.
#include <arpa/inet.h>
#include <cstring>
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/iface.h>

#include "support/appliance.h"

using namespace test;

namespace {

Lines Names(unsigned selector, int max = 64) {
  std::vector<KOPANetIfInfo> list(64);
  const int count = KOPANetGetInterfaceInfo(list.data(), max, selector);
  Lines names;
  for (int i = 0; i < count; ++i)
    names.emplace_back(list[static_cast<std::size_t>(i)].name);
  return names;
}

std::string ProcNetDev(const Lines& names) {
  std::string text = "Inter-|   Receive\n face |bytes\n";
  for (const std::string& name : names)
    text += "  " + name + ": 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0 0\n";
  return text;
}

}  // namespace

TEST(Inventory, RecordsSayWhatTheKernelHas) {
  Shell("ip link set eth1 address 02:00:00:00:0a:0b; ip address add 10.9.8.7/20 dev eth1");
  BringUp("eth1");
  Shell("ip link add dummyA type veth peer name dummyB; ip link set dummyA up");
  std::vector<KOPANetIfInfo> list(8);
  ASSERT_EQ(2, KOPANetGetInterfaceInfo(list.data(), 8, 2)) << "eth1 and dummyA are up";
  const KOPANetIfInfo& info = list[1];
  EXPECT_STREQ("eth1", info.name);
  EXPECT_STREQ("10.9.8.7", info.ip);
  EXPECT_STREQ("255.255.240.0", info.mask);
  EXPECT_EQ(0, std::memcmp(info.mac, "\x02\0\0\0\x0a\x0b", 6));
  EXPECT_EQ(2, info.link);
  EXPECT_EQ(1, info.flags & 1);
  EXPECT_STREQ("dummyA", list[0].name);
  EXPECT_STREQ("", list[0].ip);
  EXPECT_EQ(0, list[0].link) << "the peer is down";
}

TEST(Inventory, PortsOfBridgesDownAndForeignInterfacesAreLeftOut) {
  Shell("for i in 0 1 2 3; do ip link set eth$i up; done; ip link set eth3 down");
  Shell("ip link add br0 type bridge; ip link set eth1 master br0; ip link set br0 up");
  for (const char* name : {"tap7", "docker0", "dplv1", "xmon.0", "gbr1", "mygwlan", "wlan0"}) {
    Shell(std::string("ip link add ") + name + " type veth peer name p" + name +
          " && ip link set " + name + " up");
  }
  EXPECT_EQ((Lines{"br0", "eth0", "eth2", "wlan0"}), Names(2));
  EXPECT_EQ((Lines{"br0", "eth0", "eth2", "wlan0"}), Names(32 | 8)) << "kind 40 keeps loopback out";
  WriteFile("/tmp/net_topology_bridge", "");
  EXPECT_EQ((Lines{"br0", "eth0", "eth2"}), Names(8)) << "the wireless side is a bridge port then";
}

TEST(Inventory, OrderIsNaturalAndCountsAreBounded) {
  std::string commands;
  for (int i = 4; i <= 40; ++i) {
    const std::string n = std::to_string(i);
    commands +=
        "link add eth" + n + " type veth peer name peer" + n + "\nlink set eth" + n + " up\n";
  }
  WriteFile("/run/batch", commands);
  Shell("ip -batch /run/batch; for i in 0 1 2 3; do ip link set eth$i up; done");
  MountEmpty("/proc/self/net");
  WriteFile("/proc/net/dev",
            ProcNetDev({"eth10", "eth2", "eth1", "eth0.10", "eth0.5", "eth0", "lo"}));
  EXPECT_EQ((Lines{"eth0", "eth1", "eth2", "eth10"}), Names(2));
  EXPECT_EQ((Lines{"eth0", "eth1"}), Names(2, 2));
  EXPECT_EQ(0, KOPANetGetInterfaceInfo(nullptr, 0, 2));
  EXPECT_EQ(4, ZARNNetEnumCard(2));
  Lines many;
  for (int i = 40; i >= 0; --i)
    many.push_back("eth" + std::to_string(i));
  WriteFile("/proc/net/dev", ProcNetDev(many));
  const Lines listed = Names(8);
  ASSERT_EQ(32U, listed.size());
  EXPECT_EQ("eth9", listed.front()) << "the first 32 of the table, sorted";
  EXPECT_EQ("eth40", listed.back());
  RemoveFile("/proc/net/dev");
  EXPECT_EQ(-1, KOPANetGetInterfaceInfo(nullptr, 32, 2));
  EXPECT_EQ(0x0900, KOPACErrGet());
}

TEST(Inventory, BadArgumentsAndNamesNotListed) {
  KOPANetIfInfo info{};
  EXPECT_EQ(-1, KOPANetGetInterfaceInfo(&info, -1, 2));
  EXPECT_EQ(0x0D00, KOPACErrGet());
  for (unsigned selector : {0U, 0x4U, 0x10U, 0x14U})
    REFUSED(0x0D00, KOPANetGetInterfaceInfo(&info, 1, selector));
  EXPECT_EQ(-1, KOPANetEthEnum(&info, -1));
  EXPECT_STREQ("net_interface_enum", KOPACErrorGetFile());
  Shell("ip link set eth0 up");
  EXPECT_EQ(1, ZARNNetIsDevTypeMatch("eth0", 2));
  EXPECT_EQ(0, ZARNNetIsDevTypeMatch("eth1", 2)) << "down";
  EXPECT_EQ(0xBC00, KOPACErrGet());
  EXPECT_EQ(0, ZARNNetIsDevTypeMatch("eth0", 0));
  ExpectLog(LOG_ERR, "net_get_interface_info",
            "Failed to KOPANetGetInterfaceInfo(0x0)=[-1], zarnerr=[0x0D00]");
}

TEST(Inventory, ThePairsAddressesReplaceTheOwnWhileHighAvailabilityRuns) {
  WriteFile("/etc/zarnha.conf",
            "active=yes\nrunning=yes\nhas_if=yes\nheartbeat_if=eth3\neth0_ip=192.168.50.200\neth0_"
            "mask=255.255.0.0\n");
  Shell("ip address add 192.168.50.10/24 dev eth0; for i in 0 1 3; do ip link set eth$i up; done");
  EXPECT_EQ((Lines{"eth0", "eth1"}), Names(2)) << "not the heartbeat interface";
  EXPECT_EQ((Lines{"eth0", "eth1", "eth3"}), Names(2 | 4));
  std::vector<KOPANetIfInfo> list(4);
  ASSERT_EQ(1, KOPANetGetInterfaceInfo(list.data(), 4, 2 | 0x10)) << "eth1 has no shared address";
  EXPECT_STREQ("192.168.50.200", list[0].ip);
  EXPECT_STREQ("255.255.0.0", list[0].mask);
  WriteFile("/etc/zarnha.conf", "active=yes\nrunning=yes\nhas_if=yes\nheartbeat_if=eth3\n");
  EXPECT_EQ(0, KOPANetGetInterfaceInfo(list.data(), 4, 2 | 0x10));
  ExpectLog(LOG_ERR, "net_get_interface_info", "HA is running but HA IP not ready (18)");
}

TEST(Inventory, EthernetPortsAreClearedAndFilled) {
  Shell(
      "ip link set eth0 up; ip link set eth2 up; ip link add ethx type bridge; ip link set ethx "
      "up");
  KOPANetIfInfo list[2];
  std::memset(list, 0x55, sizeof list);
  EXPECT_EQ(3, KOPANetEthEnum(nullptr, 8));
  ASSERT_EQ(2, KOPANetEthEnum(list, 2));
  EXPECT_STREQ("eth2", list[1].name);
  EXPECT_STREQ("", list[1].ip);
  EXPECT_EQ(0U, list[1].reserved1);
}

TEST(InterfaceConfig, NumbersGoToTheKernelAndBack) {
  const uint32_t address = inet_addr("10.1.2.3");
  const uint32_t mask = inet_addr("255.255.240.0");
  EXPECT_EQ(1, KOPANetSetIfCfg("eth0", &address, &mask));
  EXPECT_EQ(1, KOPANetSetIfCfg("eth0", &address, &mask)) << "the same again";
  EXPECT_NE(std::string::npos, Shell("ip -4 address show eth0").find("10.1.2.3/20"));
  uint32_t gotAddress = 0;
  uint32_t gotMask = 0;
  EXPECT_EQ(1, KOPANetGetIfCfg("eth0", &gotAddress, &gotMask));
  EXPECT_EQ(address, gotAddress);
  EXPECT_EQ(mask, gotMask);
  EXPECT_EQ(0, KOPANetGetIfCfg("eth1", &gotAddress, &gotMask));
  EXPECT_EQ(0, KOPANetSetIfCfg("nosuch0", &address, &mask));
}

TEST(InterfaceConfig, AddressComesFromFileOrLease) {
  ZARNNETIFADDR info{};
  WriteIfcfg("eth0", "BOOTPROTO=static\nIPADDR=10.0.0.1\nNETMASK=255.0.0.0\n");
  EXPECT_EQ(0, ZARNNetIFGetIPConfig("eth0", &info));
  EXPECT_EQ(1, info.bootProto);
  EXPECT_STREQ("10.0.0.1", info.szIP);
  EXPECT_STREQ("255.0.0.0", info.szMask);
  WriteIfcfg("eth1", "BOOTPROTO=dhcp\n");
  EXPECT_EQ(0, ZARNNetIFGetIPConfig("eth1", &info));
  EXPECT_EQ(0, info.bootProto);
  EXPECT_STREQ("10.0.0.1", info.szIP) << "left alone without a lease";
  ExpectLog(LOG_INFO, "net_if_config", "/etc/dhclient/ipv4/dhcpcd-eth1.info is not exist");
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth1.info", "IPADDR=192.168.50.101\n");
  EXPECT_EQ(-1, ZARNNetIFGetIPConfig("eth1", &info)) << "a lease without a mask";
  EXPECT_EQ(1, ZARNNetIfIsStaticIP("eth0"));
  EXPECT_EQ(0, ZARNNetIfIsStaticIP("eth1"));
  EXPECT_EQ(0, KOPANetIFIsLocalLan("eth0"));
}

TEST(InterfaceConfig, AFileWithoutBootProtocolIsRepairedAndNoneIsMade) {
  WriteIfcfg("eth0", "DEVICE=eth0");
  EXPECT_EQ(0, BlZARNLnxIsDHCP("eth0"));
  EXPECT_EQ("DEVICE=eth0\nBOOTPROTO=static\n", ReadIfcfg("eth0"));
  EXPECT_EQ(1, ZARNNetIfIsStaticIP("eth0"));
  RemoveFile(IfcfgPath("eth9"));
  EXPECT_EQ(0, BlZARNLnxIsDHCP("eth9"));
  EXPECT_FALSE(FileExists(IfcfgPath("eth9")));
  WriteIfcfg("eth0", "BOOTPROTO=DHCP\n");
  EXPECT_EQ(0, BlZARNLnxIsDHCP("eth0")) << "the case counts";
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  EXPECT_EQ(1, BlZARNLnxIsDHCP("eth0"));
}
