// SPDX-License-Identifier: Apache-2.0
// The primary interface, renaming a port, link events, the local LAN: files, kernel, events, and
// the DHCP client on a network that leases addresses.
#include <cstring>

#include <zarnnetsdk/error.h>
#include <zarnnetsdk/iface.h>

#include "frame/base/text.h"
#include "support/kernel_answers.h"
#include "support/transcript.h"

using namespace test;

namespace {

const char kInfo[] = "/etc/zarninfo.conf";

std::string Addresses(const std::string& ifname) {
  return Shell("ip -4 -br address show dev " + ifname);
}

ZARNNETIFADDR Config(int bootProto, std::string_view ip = "", std::string_view mask = "") {
  ZARNNETIFADDR config{};
  config.bootProto = bootProto;
  frame::CopyText(ip, config.szIP);
  frame::CopyText(mask, config.szMask);
  return config;
}

std::string Primary() {
  ZARNNETIFADDR config{};
  return ZARNNetGetCard1(&config) == 0 ? config.szName : frame::Format("0x%04X", KOPACErrGet());
}

}  // namespace

TEST(PrimaryInterface, IsSetReadAndMovedBetweenAFixedAddressAndDhcp) {
  BringUp("eth0");
  ZARNNETIFADDR config = Config(1, "192.168.50.20", "255.255.255.0");
  ASSERT_EQ(0, ZARNNetSetCard1(&config));
  EXPECT_TRUE(Contains(Addresses("eth0"), "192.168.50.20/24"));
  KOPANetIfInfo info{};
  ZARNNETIFADDR read{};
  ASSERT_EQ(0, ZARNNetGetCard1Ex(&info, &read));
  EXPECT_STREQ("eth0", read.szName);
  EXPECT_EQ(1, read.bootProto);
  EXPECT_STREQ("192.168.50.20", read.szIP);
  EXPECT_STREQ("255.255.255.0", read.szMask);
  EXPECT_EQ(0, std::memcmp("\x02\0\0\0\0\x10", read.rgMac, 6));
  EXPECT_STREQ("192.168.50.20", info.ip);
  EXPECT_EQ(2, info.link);
  read.bootProto = 0;
  ASSERT_EQ(0, ZARNNetSetCard1(&read));
  EXPECT_EQ("DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=dhcp\n", ReadIfcfg("eth0"));
  for (int i = 0; i < 50 && !Contains(Addresses("eth0"), "192.168.50.1"); ++i)
    Shell("sleep 0.1");
  EXPECT_TRUE(Contains(Addresses("eth0"), "192.168.50.1")) << Shell("ls /etc/dhclient/ipv4");
  ASSERT_EQ(0, ZARNNetGetCard1(&read));
  EXPECT_EQ(0, read.bootProto);
  EXPECT_TRUE(Contains(Addresses("eth0"), read.szIP)) << read.szIP;
  ASSERT_EQ(0, ZARNNetSetCard1(&config));
  EXPECT_TRUE(Contains(Addresses("eth0"), "192.168.50.20/24"));
  EXPECT_EQ("", Shell("pgrep -x dhclient"));
}

TEST(PrimaryInterface, IsWhatCoversTheFirstPort) {
  Shell("ip link add br0 type bridge; ip link set eth0 master br0");
  WriteIfcfg("br0", "BOOTPROTO=static\nIPADDR=10.0.0.1\nNETMASK=255.0.0.0\n");
  EXPECT_EQ("br0", Primary());
  MountEmpty("/sys/class/net");
  WriteFile("/sys/class/net/zarn_ovs_bonds", "ovs_bond0 eth1 eth0\n");
  WriteIfcfg("ovs_bond0", "BOOTPROTO=static\nIPADDR=10.0.0.2\nNETMASK=255.0.0.0\n");
  EXPECT_EQ("ovs_bond0", Primary());
  RemoveFile("/sys/class/net/zarn_ovs_bonds");
  MountEmpty("/sys/devices/virtual/net");
  WriteFile("/sys/devices/virtual/net/ovs_eth0", "");
  WriteIfcfg("ovs_eth0", "BOOTPROTO=static\nIPADDR=10.0.0.3\nNETMASK=255.0.0.0\n");
  EXPECT_EQ("ovs_eth0", Primary());
  for (int port = 0; port < 4; ++port)
    Shell("ip link delete eth" + std::to_string(port));
  EXPECT_EQ("0xBC00", Primary());
}

TEST(PrimaryInterface, BadSettingsChangeNothing) {
  ZARNNETIFADDR other = Config(0);
  frame::CopyText("eth1", other.szName);
  const auto set = [](const char* why, ZARNNETIFADDR config) {
    Tell(why, [&] { return ZARNNetSetCard1(&config); });
  };
  set("no such protocol", Config(2));
  set("no address", Config(1, "192.168.50.300", "255.255.255.0"));
  set("no mask", Config(1, "192.168.50.3", "255.0.255.0"));
  set("another interface", other);
  RecordTool("/sbin/start", 1);
  RecordTool("/sbin/stop");
  set("no client starts", Config(0));
  RemoveFile(IfcfgPath("eth0"));
  set("no client starts, and there was no file before", Config(0));
}

namespace {

struct Rename : testing::Test {
  Rename() {
    WriteIfcfg("eth1", "# port\nDEVICE=eth1\nBOOTPROTO=static\nBLOCK_CNT=0");
    WriteFile(kInfo, "eth0_mtu=\"9000\"\neth1_mtu=\"1400\"\nlast=\"1\"");
    RecordTool("/sbin/stop", 1);
    RecordTool("/sbin/start");
  }
};

void RenameTo(const char* oldName, const char* newName) {
  Tell(std::string(oldName) + " to " + newName, [&] { return ZARNNetRenameEth(oldName, newName); });
}

}  // namespace

TEST_F(Rename, APortHasItsNewNameInKernelFileAndSettings) {
  Shell("ip address add 10.1.1.1/24 dev eth1");
  BringUp("eth1");
  RenameTo("eth1", "eth7");
  RemoveFile(IfcfgPath("eth2"));
  Say("without file and setting, down");
  RenameTo("eth2", "eth8");
}

TEST_F(Rename, ADhcpClientFollowsThePort) {
  WriteIfcfg("eth1", "DEVICE=eth1\nBOOTPROTO=dhcp\n");
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth1.info", "IPADDR=10.1.1.1\n");
  RecordTool("/sbin/stop");
  RenameTo("eth1", "eth7");
}

TEST_F(Rename, WhatCannotBeDoneLeavesEverythingAsItWas) {
  BringUp("eth1");
  for (const char* const bad : {"eth%d", "eth1:1", "a/b", "eth 9", "eth1.7", "sixteencharacter"})
    RenameTo("eth1", bad);
  RenameTo("eth9", "eth7");
  RenameTo("lo", "eth7");
  Shell("ip link property add dev eth1 altname port1");
  RenameTo("port1", "eth7");
  RenameTo("eth1", "eth2");
  RenameTo("eth1", "tun");
  Kernel().refuseRename = true;
  Say("the kernel refuses");
  RenameTo("eth1", "eth7");
  Kernel().refuseRename = false;
  Shell("ip link add br0 type bridge; ip link set eth1 master br0");
  Say("a bridge's port");
  RenameTo("eth1", "eth7");
  Shell("ip link delete br0");
  {
    const LockHolder other(0x806);
    Say("the settings are locked");
    RenameTo("eth1", "eth7");
  }
  MountEmpty("/etc/sysconfig/network-scripts", "4k");
  WriteIfcfg("eth1", "DEVICE=eth1\n");
  Say("a full disk");
  Mask("the file of eth1. (.*)$", "REASON");
  RenameTo("eth1", "eth7");
}

TEST(LinkEvents, NameTheInterface) {
  TELL(KOPANetIfLinkUpEvent("eth0"));
  TELL(KOPANetIfLinkDownEvent("bond0"));
}

TEST(LocalLan, IsTheListOfTheFactorySettings) {
  const char factory[] = "/etc.defaults/zarninfo.conf";
  List list;
  WriteFile(factory, "maxlanport=\"2\"\n");
  EXPECT_EQ(0, KOPANetGetLocalLanConfig(list.Out()));
  WriteFile(factory, "local_lan=\"eth1, eth2 wlan0\"");
  EXPECT_EQ(3, KOPANetGetLocalLanConfig(list.Out()));
  EXPECT_EQ((Lines{"eth1", "eth2", "wlan0"}), list.Texts());
  std::string names = "local_lan=\"";
  for (int i = 0; i < 33; ++i)
    names += "eth" + std::to_string(i) + " ";
  WriteFile(factory, names + "\"\n");
  Refused(ZARNNETERR_TABLE_FULL, [&] { return KOPANetGetLocalLanConfig(list.Out()); });
  ExpectLog(LOG_ERR, "net_get_local_lan_config", "local lan exceed NUM_MAXIFACES");
  EXPECT_EQ(3U, list.Texts().size());
  RemoveFile(factory);
  Refused(ZARNNETERR_OPEN, [&] { return KOPANetGetLocalLanConfig(list.Out()); });
}
