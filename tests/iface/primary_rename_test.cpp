// The primary interface, renaming a port, link events, the local LAN: files, kernel, events, and
// the DHCP client on a network that leases addresses.
#include <cstring>
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/iface.h>

#include "frame/base/text.h"
#include "frame/os/containers.h"
#include "support/appliance.h"
#include "support/kernel_answers.h"

using namespace test;

namespace {

const char kInfo[] = "/etc/zarninfo.conf";

std::string Addresses(const std::string& ifname) {
  return Shell("ip -4 -br address show dev " + ifname);
}
bool Contains(const std::string& text, std::string_view part) {
  return text.find(part) != std::string::npos;
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
  ASSERT_EQ(0, ZARNNetSetCard1(&config)) << LogText();
  EXPECT_TRUE(Contains(Addresses("eth0"), "192.168.50.20/24"));
  KOPANetIfInfo info{};
  ZARNNETIFADDR read{};
  ASSERT_EQ(0, ZARNNetGetCard1Ex(&info, &read)) << LogText();
  EXPECT_STREQ("eth0", read.szName);
  EXPECT_EQ(1, read.bootProto);
  EXPECT_STREQ("192.168.50.20", read.szIP);
  EXPECT_STREQ("255.255.255.0", read.szMask);
  EXPECT_EQ(0, std::memcmp("\x02\0\0\0\0\x10", read.rgMac, 6));
  EXPECT_STREQ("192.168.50.20", info.ip);
  EXPECT_EQ(2, info.link);
  read.bootProto = 0;
  ASSERT_EQ(0, ZARNNetSetCard1(&read)) << LogText();
  EXPECT_EQ("DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=dhcp\n", ReadIfcfg("eth0"));
  for (int i = 0; i < 50 && !Contains(Addresses("eth0"), "192.168.50.1"); ++i)
    Shell("sleep 0.1");
  EXPECT_TRUE(Contains(Addresses("eth0"), "192.168.50.1")) << Shell("ls /etc/dhclient/ipv4");
  ASSERT_EQ(0, ZARNNetGetCard1(&read)) << LogText();
  EXPECT_EQ(0, read.bootProto);
  EXPECT_TRUE(Contains(Addresses("eth0"), read.szIP)) << read.szIP;
  ASSERT_EQ(0, ZARNNetSetCard1(&config)) << LogText();
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
  const std::string file = ReadIfcfg("eth0");
  ZARNNETIFADDR config = Config(2);
  Refused(0x0D00, [&] { return ZARNNetSetCard1(&config); });
  Refused(0x0D00, [] { return ZARNNetSetCard1(nullptr); });
  config = Config(1, "192.168.50.300", "255.255.255.0");
  Refused(0x1000, [&] { return ZARNNetSetCard1(&config); });
  config = Config(1, "192.168.50.3", "255.0.255.0");
  Refused(0x1000, [&] { return ZARNNetSetCard1(&config); });
  config = Config(0);
  frame::CopyText("eth1", config.szName);
  Refused(0xBC00, [&] { return ZARNNetSetCard1(&config); });
  RecordTool("/sbin/start", 1);
  RecordTool("/sbin/stop");
  config = Config(0);
  Refused(0x2A00, [&] { return ZARNNetSetCard1(&config); });
  EXPECT_EQ(file, ReadIfcfg("eth0"));
  EXPECT_EQ((Lines{"/sbin/stop dhcp-client IFACE=eth0", "/sbin/start dhcp-client IFACE=eth0"}),
            RecordedCalls());
  EXPECT_EQ(5U, FolderEntries("/etc/sysconfig/network-scripts").size()) << "a copy stayed";
  RemoveFile(IfcfgPath("eth0"));
  Refused(0x2A00, [&] { return ZARNNetSetCard1(&config); });
  EXPECT_FALSE(FileExists(IfcfgPath("eth0"))) << "there was none before";
}

TEST(PrimaryInterface, LeavesItsBondForDhcpWhateverItsOldClientDoes) {
  WriteIfcfg("eth0", "DEVICE=eth0\nIPADDR=10.0.0.5\nNETMASK=255.0.0.0\nMASTER=bond0\nSLAVE=yes\n");
  RecordTool("/sbin/stop", 1);
  RecordTool("/sbin/start");
  ZARNNETIFADDR config = Config(0);
  ASSERT_EQ(0, ZARNNetSetCard1(&config)) << LogText();
  EXPECT_EQ("DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=dhcp\n", ReadIfcfg("eth0"));
  ExpectLog(LOG_ERR, "net_card1", "unable to stop dhcp-client instance on eth0");
  RecordTool("/sbin/start", 1);
  Refused(0x2A00, [&] { return ZARNNetSetCard1(&config); });
  ExpectLog(LOG_ERR, "ZARNNetSetCard1", "unable to start dhcp-client instance on eth0");
  config = Config(1, "192.168.50.$(x)", "255.255.255.0");
  Refused(0x0D00, [&] { return ZARNNetSetCard1(&config); });
}

namespace {

struct Rename : testing::Test {
  Rename() {
    WriteIfcfg("eth1", "# port\nDEVICE=eth1\nBOOTPROTO=static\nBLOCK_CNT=0");
    WriteFile(kInfo, "eth0_mtu=\"9000\"\neth1_mtu=\"1400\"\nlast=\"1\"");
    RecordTool("/sbin/stop", 1);
    RecordTool("/sbin/start");
  }
  // Files, kernel and lists of files as before.
  static void Unchanged() {
    EXPECT_EQ("# port\nDEVICE=eth1\nBOOTPROTO=static\nBLOCK_CNT=0", ReadIfcfg("eth1"));
    EXPECT_EQ("eth0_mtu=\"9000\"\neth1_mtu=\"1400\"\nlast=\"1\"", ReadFile(kInfo));
    EXPECT_TRUE(FileExists("/sys/class/net/eth1"));
    EXPECT_EQ((Lines{"ifcfg-eth0", "ifcfg-eth1", "ifcfg-eth2", "ifcfg-eth3", "ifcfg-tun"}),
              FolderEntries("/etc/sysconfig/network-scripts"));
    EXPECT_EQ("", Shell("ls /etc | grep zarninfo.conf."));
  }
};

}  // namespace

TEST_F(Rename, APortHasItsNewNameInKernelFileAndSettings) {
  Shell("ip address add 10.1.1.1/24 dev eth1");
  BringUp("eth1");
  ASSERT_EQ(0, ZARNNetRenameEth("eth1", "eth7")) << LogText();
  EXPECT_TRUE(Contains(Shell("ip -br link show eth7"), "UP")) << Shell("ip link");
  EXPECT_TRUE(Contains(Addresses("eth7"), "10.1.1.1/24"));
  EXPECT_FALSE(FileExists("/sys/class/net/eth1"));
  EXPECT_EQ("# port\nDEVICE=eth7\nBOOTPROTO=static\nBLOCK_CNT=0", ReadIfcfg("eth7"));
  EXPECT_EQ((Lines{"ifcfg-eth0", "ifcfg-eth2", "ifcfg-eth3", "ifcfg-eth7", "ifcfg-tun"}),
            FolderEntries("/etc/sysconfig/network-scripts"));
  EXPECT_EQ("eth0_mtu=\"9000\"\nlast=\"1\"\neth7_mtu=\"1400\"\n", ReadFile(kInfo));
  EXPECT_EQ("", Shell("ls /etc | grep zarninfo.conf."));
  ASSERT_EQ(2U, Events().size());
  EXPECT_TRUE(Contains(Events()[0], "net/ifname_change pre ")) << Events()[0];
  EXPECT_TRUE(Contains(Events()[1], "net/ifname_change post ")) << Events()[1];
  EXPECT_TRUE(Contains(Events()[1], "eth1") && Contains(Events()[1], "eth7") &&
              Contains(Events()[1], "RESULT=0"))
      << Events()[1];
  EXPECT_EQ(Lines{}, RecordedCalls());
  RemoveFile(IfcfgPath("eth2"));
  ASSERT_EQ(0, ZARNNetRenameEth("eth2", "eth8")) << "without file and setting, down";
  EXPECT_TRUE(Contains(Shell("ip -br link show eth8"), "DOWN"));
  EXPECT_FALSE(FileExists(IfcfgPath("eth8")));
}

TEST_F(Rename, ADhcpClientFollowsThePort) {
  WriteIfcfg("eth1", "DEVICE=eth1\nBOOTPROTO=dhcp\n");
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth1.info", "IPADDR=10.1.1.1\n");
  RecordTool("/sbin/stop");
  ASSERT_EQ(0, ZARNNetRenameEth("eth1", "eth7"));
  EXPECT_EQ(Lines{}, FolderEntries("/etc/dhclient/ipv4")) << "a lease of a name that is gone";
  EXPECT_EQ((Lines{"/sbin/stop dhcp-client IFACE=eth1", "/sbin/start dhcp-client IFACE=eth7"}),
            RecordedCalls());
}

TEST_F(Rename, WhatCannotBeDoneLeavesEverythingAsItWas) {
  BringUp("eth1");
  for (const char* const bad :
       {"", "eth%d", "eth1:1", "a/b", "eth 9", "eth1.7", "sixteencharacter"})
    Refused(0x0D00, [&] { return ZARNNetRenameEth("eth1", bad); });
  Refused(0xBC00, [] { return ZARNNetRenameEth("eth9", "eth7"); });
  Refused(0xBC00, [] { return ZARNNetRenameEth("lo", "eth7"); });
  Shell("ip link property add dev eth1 altname port1");
  Refused(0xBC00, [] { return ZARNNetRenameEth("port1", "eth7"); });
  Refused(0xBB00, [] { return ZARNNetRenameEth("eth1", "eth2"); });
  Refused(0xBB00, [] { return ZARNNetRenameEth("eth1", "tun"); });
  Unchanged();
  EXPECT_EQ(Lines{}, Events());
  Kernel().refuseRename = true;
  Refused(0x8100, [] { return ZARNNetRenameEth("eth1", "eth7"); });
  Kernel().refuseRename = false;
  Unchanged();
  EXPECT_EQ((Lines{"eth1 down", "eth1 up"}), Kernel().changes);
  ASSERT_EQ(2U, Events().size());
  EXPECT_TRUE(Contains(Events()[1], "RESULT=-1")) << Events()[1];
  Shell("ip link add br0 type bridge; ip link set eth1 master br0");
  Refused(0x8100, [] { return ZARNNetRenameEth("eth1", "eth7"); });
  Shell("ip link delete br0");
  {
    const LockHolder other(0x806);
    Refused(0x0400, [] { return ZARNNetRenameEth("eth1", "eth7"); });
  }
  Unchanged();
  MountEmpty("/etc/sysconfig/network-scripts", "4k");
  WriteIfcfg("eth1", "DEVICE=eth1\n");
  Refused(0x2800, [] { return ZARNNetRenameEth("eth1", "eth7"); });
  EXPECT_EQ("DEVICE=eth1\n", ReadIfcfg("eth1"));
  EXPECT_EQ(Lines{"ifcfg-eth1"}, FolderEntries("/etc/sysconfig/network-scripts"));
}

// A killed call leaves the file under both names, before the kernel's renaming and after it.
TEST_F(Rename, WhatAKilledCallLeftIsBroughtToItsEnd) {
  const std::string settings = "BOOTPROTO=dhcp\nONBOOT=yes\nBLOCK_CNT=0\n";
  RecordTool("/sbin/stop", 1);
  for (const bool isRenamed : {false, true}) {
    WriteIfcfg("eth1", "DEVICE=eth1\n" + settings);
    WriteIfcfg("eth7", (isRenamed ? "DEVICE=eth7\n" : "DEVICE=eth1\n") + settings);
    WriteFile(kInfo, isRenamed ? "eth1_mtu=\"1400\"\neth7_mtu=\"1400\"\n" : "eth1_mtu=\"1400\"\n");
    if (isRenamed) Shell("ip link set eth1 name eth7");
    ASSERT_EQ(0, ZARNNetRenameEth("eth1", "eth7")) << isRenamed << LogText();
    EXPECT_TRUE(Contains(Shell("ip -br link show eth7"), "UP")) << Shell("ip link");
    EXPECT_EQ("DEVICE=eth7\n" + settings, ReadIfcfg("eth7"));
    EXPECT_FALSE(FileExists(IfcfgPath("eth1")));
    EXPECT_EQ("eth7_mtu=\"1400\"\n", ReadFile(kInfo));
    Shell("ip link set eth7 down; ip link set eth7 name eth1");
  }
  EXPECT_EQ((Lines{"/sbin/stop dhcp-client IFACE=eth1", "/sbin/start dhcp-client IFACE=eth7",
                   "/sbin/stop dhcp-client IFACE=eth1", "/sbin/start dhcp-client IFACE=eth7"}),
            RecordedCalls());
  WriteIfcfg("eth1", "DEVICE=eth1\n");  // another port's file is no trace of a rename
  Refused(0xBB00, [] { return ZARNNetRenameEth("eth1", "eth7"); });
  RemoveFile(IfcfgPath("eth7"));
  WriteIfcfg("eth1", "DEVICE=eth1\n" + settings);
  RecordTool("/sbin/start", 1);
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(0, ZARNNetRenameEth("eth1", "eth7"));
  EXPECT_EQ(0x2A00, KOPACErrGet()) << "a port without its client";
  EXPECT_TRUE(Contains(LogText(), "ZARNNetRenameEth(")) << LogText();
}

TEST(LinkEvents, NameTheInterface) {
  EXPECT_EQ(0, KOPANetIfLinkUpEvent("eth0"));
  EXPECT_EQ(0, KOPANetIfLinkDownEvent("bond0"));
  EXPECT_EQ((Lines{"net/if_link_up post INTERFACE=eth0", "net/if_link_down post INTERFACE=bond0"}),
            Events());
  Refused(0x0D00, [] { return KOPANetIfLinkUpEvent("eth0\nX=1"); });
  Refused(0x0D00, [] { return KOPANetIfLinkDownEvent(nullptr); });
}

TEST(LocalLan, IsTheListOfTheFactorySettings) {
  const char factory[] = "/etc.defaults/zarninfo.conf";
  frame::StringList list(1);
  WriteFile(factory, "maxlanport=\"2\"\n");
  EXPECT_EQ(0, KOPANetGetLocalLanConfig(list.Out()));
  WriteFile(factory, "local_lan=\"eth1, eth2 wlan0\"");
  EXPECT_EQ(3, KOPANetGetLocalLanConfig(list.Out()));
  EXPECT_EQ((Lines{"eth1", "eth2", "wlan0"}), Items(list.Get()));
  std::string names = "local_lan=\"";
  for (int i = 0; i < 33; ++i)
    names += "eth" + std::to_string(i) + " ";
  WriteFile(factory, names + "\"\n");
  Refused(0x0100, [&] { return KOPANetGetLocalLanConfig(list.Out()); });
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_get_local_lan_config", "local lan exceed NUM_MAXIFACES"));
  EXPECT_EQ(3, list.Count());
  RemoveFile(factory);
  Refused(0x0900, [&] { return KOPANetGetLocalLanConfig(list.Out()); });
  Refused(0x0D00, [] { return KOPANetGetLocalLanConfig(nullptr); });
}
