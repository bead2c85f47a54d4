// SPDX-License-Identifier: Apache-2.0
// The inventory against real interfaces: what is listed, in which order, with which fields.
#include <arpa/inet.h>
#include <cstring>

#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/error.h>
#include <zarnnetsdk/iface.h>

#include "support/transcript.h"

using namespace test;

namespace {

void SayRecord(const KOPANetIfInfo& info) {
  char text[160];
  std::snprintf(text, sizeof text, "%s %02x:%02x '%s' '%s' link %d %s, %u", info.name, info.mac[4],
                info.mac[5], info.ip, info.mask, info.link, (info.flags & 1) != 0 ? "up" : "down",
                info.reserved1);
  Say(text);
}

void Ask(unsigned selector, const std::string& why, int max = 64) {
  KOPANetIfInfo list[64] = {};
  const long count = Tell(why + ": kind " + std::to_string(selector),
                          [&] { return KOPANetGetInterfaceInfo(list, max, selector); });
  std::string names;
  for (long i = 0; i < count; ++i)
    names += std::string(" ") + list[i].name;
  if (count > 2) Say("names:" + names);
  for (long i = 0; i < count && count <= 2; ++i)
    SayRecord(list[i]);
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
  Shell("ip link add dummyA address 02:00:00:00:00:dd type veth peer name dummyB");
  Shell("ip link set dummyA up");
  Ask(2, "one without carrier");
}

TEST(Inventory, PortsOfBridgesDownAndForeignInterfacesAreLeftOut) {
  for (const char* name : {"eth0", "eth1", "eth2"})
    BringUp(name);
  Shell("ip link add br0 type bridge; ip link set eth1 master br0; ip link set br0 up");
  for (const std::string name : {"tap7", "docker0", "dplv1", "xmon.0", "gbr1", "mygwlan", "wlan0"})
    Shell("ip link add " + name + " type veth peer name p" + name + "; ip link set " + name +
          " up");
  Ask(2, "all");
  Ask(32 | 8, "loopback is kept out");
  WriteFile("/tmp/net_topology_bridge", "");
  Ask(8, "the wireless side is a bridge port");
  Shell("ip link delete br0; rm /tmp/net_topology_bridge");
  MountEmpty("/sys/class/net");
  WriteFile("/sys/class/net/eth2/brport", "");
  Ask(2, "no bridge of the kernel, but where its folders stand, a port");
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
  Ask(2, "in natural order");
  Ask(2, "room for three", 3);
  TELL(KOPANetGetInterfaceInfo(nullptr, 0, 2));
  TELL(ZARNNetEnumCard(2));
  Lines many;
  for (int i = 40; i >= 0; --i)
    many.push_back("eth" + std::to_string(i));
  WriteFile("/proc/net/dev", ProcNetDev(many));
  Ask(8, "the first 32 of the table, sorted");
  RemoveFile("/proc/net/dev");
  TELL(KOPANetGetInterfaceInfo(nullptr, 32, 2));
}

TEST(Inventory, BadArgumentsAndNamesNotListed) {
  KOPANetIfInfo info{};
  for (unsigned selector : {0U, 0x4U, 0x10U, 0x14U})
    Ask(selector, "no kind");
  TELL(KOPANetGetInterfaceInfo(&info, -1, 2));
  TELL(KOPANetEthEnum(&info, -1));
  EXPECT_STREQ("net_interface_enum", KOPACErrorGetFile());
  Shell("ip link set eth0 up");
  TELL(ZARNNetIsDevTypeMatch("eth0", 2));
  TELL(ZARNNetIsDevTypeMatch("eth1", 2));
  EXPECT_EQ(ZARNNETERR_NOT_FOUND, KOPACErrGet()) << "down";
  TELL(ZARNNetIsDevTypeMatch("eth0", 0));
}

TEST(Inventory, ThePairsAddressesReplaceTheOwnWhileHighAvailabilityRuns) {
  const std::string pair = "active=yes\nrunning=yes\nhas_if=yes\nheartbeat_if=eth3\n";
  WriteFile("/etc/zarnha.conf", pair + "eth0_ip=192.168.50.200\neth0_mask=255.255.0.0\n");
  Shell("ip address add 192.168.50.10/24 dev eth0");
  for (const char* name : {"eth0", "eth1", "eth3"})
    BringUp(name);
  Ask(2, "not the heartbeat interface");
  Ask(2 | 4, "the heartbeat interface too");
  Ask(2 | 0x10, "eth1 has no shared address");
  WriteFile("/etc/zarnha.conf", pair);
  Ask(2 | 0x10, "no shared address yet");
}

TEST(Inventory, EthernetPortsAreClearedAndFilled) {
  BringUp("eth0");
  BringUp("eth2");
  Shell("ip link add ethx type bridge; ip link set ethx up");
  KOPANetIfInfo list[2];
  std::memset(list, 0x55, sizeof list);
  TELL(KOPANetEthEnum(nullptr, 8));
  TELL(KOPANetEthEnum(list, 2));
  for (const KOPANetIfInfo& info : list)
    SayRecord(info);
}

TEST(InterfaceConfig, NumbersGoToTheKernelAndBack) {
  const uint32_t address = inet_addr("10.1.2.3");
  const uint32_t mask = inet_addr("255.255.240.0");
  uint32_t got[2] = {};
  TELL(KOPANetSetIfCfg("eth0", &address, &mask));
  TELL(KOPANetSetIfCfg("eth0", &address, &mask));
  TELL(KOPANetGetIfCfg("eth0", &got[0], &got[1]));
  EXPECT_TRUE(got[0] == address && got[1] == mask);
  TELL(KOPANetGetIfCfg("eth1", &got[0], &got[1]));
  TELL(KOPANetSetIfCfg("nosuch0", &address, &mask));
}

TEST(InterfaceConfig, AddressComesFromFileOrLease) {
  ZARNNETIFADDR info{};
  const auto ask = [&info](const std::string& why) {
    Tell(why, [&] { return ZARNNetIFGetIPConfig("eth0", &info); });
    Say(std::to_string(info.bootProto) + " " + info.szIP + " " + info.szMask + ", static " +
        std::to_string(ZARNNetIfIsStaticIP("eth0")));
  };
  WriteIfcfg("eth0", "BOOTPROTO=static\nIPADDR=10.0.0.1\nNETMASK=255.0.0.0\n");
  ask("fixed");
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\n");
  ask("left alone without a lease");
  WriteFile("/etc/dhclient/ipv4/dhcpcd-eth0.info", "IPADDR=192.168.50.101\n");
  ask("a lease without a mask");
  TELL(KOPANetIFIsLocalLan("eth0"));
}

TEST(InterfaceConfig, AFileWithoutBootProtocolIsRepairedAndNoneIsMade) {
  for (const char* file : {"DEVICE=eth0", "BOOTPROTO=DHCP\n", "BOOTPROTO=dhcp\n"}) {
    WriteIfcfg("eth0", file);
    Tell(file, [] { return BlZARNLnxIsDHCP("eth0"); });
  }
  RemoveFile(IfcfgPath("eth9"));
  TELL(BlZARNLnxIsDHCP("eth9"));
  Shell("mkfifo " + IfcfgPath("eth9"));
  Say("what cannot be read is not repaired");
  TELL(BlZARNLnxIsDHCP("eth9"));
}
