// SPDX-License-Identifier: Apache-2.0
// State of one interface: up, carrier, bond membership, MAC address.
#include <zarnnetsdk/iface.h>

#include "support/transcript.h"

using namespace test;

TEST(State, UpAndDownAreTheKernels) {
  TELL(KOPANetIfDown("eth0"));
  TELL(ZARNNetIsIFUp("eth0"));
  TELL(KOPANetIfUp("eth0"));
  TELL(ZARNNetIsIFUp("eth0"));
  TELL(KOPANetISetIfFlags("eth0", 0x100));
  Say(Shell("ip link show eth0 | grep -o PROMISC"));
  TELL(KOPANetISetIfFlags("eth0", -1));
  Say("a down interface is brought up; routes go when the interface does");
  TELL(KOPANetReInitIf("eth0"));
  Shell("ip route add 10.77.0.0/16 dev eth0");
  TELL(KOPANetReInitIf("eth0"));
  for (const char* name : {"nosuch0", "eth0123456789abcdef"}) {
    TELL(ZARNNetIsIFUp(name));
    TELL(KOPANetIfUp(name));
    TELL(KOPANetReInitIf(name));
  }
}

TEST(State, CarrierIsThatOfThePortUnderAnOvsDevice) {
  BringUp("eth0");
  Shell(
      "for d in eth0 eth1 bond0; do ip link add ovs_$d type bridge; done; ip link set ovs_eth1 up");
  RemoveFile(IfcfgPath("ovs_bond0"));
  for (const char* name : {"eth0", "eth1", "nosuch0", "ovs_eth0", "ovs_eth1", "ovs_bond0"})
    Tell(name, [&] { return ZARNNetIfIsLink(name); });
  for (const std::string slaves : {"eth1 eth0", "eth1 eth2"}) {
    WriteIfcfg("ovs_bond0", "SLAVE_LIST=" + slaves + "\nBOND_MODE=balance-slb\n");
    Tell("ovs_bond0 of " + slaves, [] { return ZARNNetIfIsLink("ovs_bond0"); });
  }
}

TEST(State, AMemberOfAnOvsBondIsPassiveAndTheBondIsNot) {
  MountEmpty("/sys/class/net");
  TELL(ZARNNetIfIsBondingPassive("eth0"));
  WriteFile("/sys/class/net/zarn_ovs_bonds", "ovs_bond0 eth0 eth10\novs_bond1 eth2");
  Shell("ip link set eth3 name ovs_bond1");
  for (const char* name : {"eth0", "eth1", "eth2", "ovs_bond1"})
    Tell(name, [&] { return ZARNNetIfIsBondingPassive(name); });
}

TEST(Mac, EveryResultCodeHasItsCause) {
  char buffer[18] = "";
  const auto ask = [&buffer](int index, int size, int local) {
    Tell("port " + std::to_string(index) + (local != 0 ? " of this machine" : ""),
         [&] { return KOPANetGetMacAddr(index, buffer, size, local); });
    Say(buffer);
  };
  Shell("ip link set eth0 address 02:00:00:00:0A:0B");
  ask(0, 18, 0);
  ask(0, 6, 1);
  ask(9, 18, 0);
  ask(9, 18, 1);
  WriteFile("/etc/zarnha.conf", "active=yes\nrunning=yes\neth0_mac=02:aa:bb:cc:dd:ee\n");
  Say("in a pair");
  ask(0, 18, 0);
  ask(1, 18, 0);
  ask(0, 18, 1);
  RemoveFile("/etc/zarnha.conf");
  WriteFile("/etc.defaults/zarninfo.conf", "support_dual_head=\"yes\"\n");
  Say("one of two heads");
  ask(0, 18, 0);
}

TEST(Mac, AVirtualInterfaceAnswersForThePortUnderIt) {
  Shell("ip link set eth2 address 02:00:00:00:00:22");
  Shell("ip link add ovs_bond0 type bridge; ip link add ovs_eth2 type bridge");
  WriteIfcfg("ovs_bond0", "SLAVE_LIST=eth3 eth2\nBOND_MODE=balance-tcp\n");
  for (const char* name : {"eth2", "eth2.10", "eth2:1", "ovs_eth2", "ovs_bond0", "ovs_bond0.7",
                           "bond9", "wlan0", ".10", "", "eth"}) {
    char buffer[18] = "";
    Tell(name, [&] { return KOPANetGetMacAddrByInterface(name, buffer, sizeof buffer, 1); });
    Say(buffer);
  }
}

TEST(Topology, NamesChooseTheEntry) {
  KOPANETTOPOLOGY info{};
  const auto ask = [&info](const std::string& why) {
    Tell(why, [&] { return KOPANetTopologyGet(&info); });
    Say(std::string("'") + info.szName + "' up '" + info.szUplink + "'");
  };
  WriteFile("/etc/zarninfo.conf", "net_topology=\"router\"\n");
  ask("not supported here");
  WriteFile("/etc/zarninfo.conf", "support_net_topology=\"yes\"\nnet_topology=\"Bridge\"\n");
  ask("the bridge");
  TELL(KOPANetTopologyGet(nullptr));
  info.id = 3;
  ask("the third");
  TELL(KOPANETSetTopologyConfigs(&info));
  MountEmpty("/proc/self/net");
  WriteFile("/proc/net/vlan/config",
            "VLAN Dev name\t | VLAN ID\nName-Type: X\neth0.5\t| 5  | eth0\n");
  info = {};
  ask("a VLAN over the uplink leads outside");
}
