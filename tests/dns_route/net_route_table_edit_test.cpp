// SPDX-License-Identifier: Apache-2.0
// Subnet routes in the kernel, and what is done where the tools refuse.
#include <zarnnetsdk/dns_route.h>

#include "support/transcript.h"

using namespace test;

namespace {

std::string Routes(const std::string& ifname) {
  return Shell("ip -o route show dev " + ifname);
}

// A port with an address, in its file and in the kernel.
void Configure(const std::string& ifname, const std::string& ip) {
  WriteIfcfg(ifname, "BOOTPROTO=static\nIPADDR=" + ip + "\nNETMASK=255.255.255.0\n");
  Shell("ip address add " + ip + "/24 dev " + ifname);
  BringUp(ifname);
}

void PullCable(const std::string& number) {
  Shell("ip netns exec lan ip link set lan" + number + " down");
  for (int i = 0; i < 300 && ReadFile("/sys/class/net/eth" + number + "/carrier") != "0\n"; ++i)
    Shell("sleep 0.01");
}

}  // namespace

TEST(SubnetRoute, NamesTheInterfacesOwnAddressAsItsSource) {
  Configure("eth0", "192.168.50.10");
  Shell("ip address add 192.168.50.99/24 dev eth0");
  TELL(NetRoutetableHandler(0, "eth0"));
  Say(Routes("eth0"));
  Shell(
      "ip route del 192.168.50.0/24 dev eth0; ip route add 192.168.50.0/24 dev eth0 src "
      "192.168.50.99");
  Say("the older tool removes a route with another source");
  TELL(NetRoutetableHandler(0, "eth0"));
  Say(Routes("eth0"));
  TELL(NetRoutetableHandler(7, "eth0"));
  TELL(NetRoutetableHandler(1, "eth0"));
}

TEST(SubnetRoute, RefusalsOfBothToolsAreNotedAndFailNothing) {
  RecordTool("/sbin/ip", 2);
  RecordTool("/sbin/route", 3);
  TELL(NetRoutetableEdit(0, "10.20.30.40", "255.255.240.0", "eth1"));
  TELL(NetRoutetableEdit(2, "10.0.0.1", "255.0.0.0", "eth1"));
  TELL(NetRoutetableEdit(1, "10.0.0.1", "255.0.0", "eth1"));
  TELL(NetRoutetableEdit(1, "10.0.0", "255.0.0.0", "eth1"));
}

TEST(SubnetRoute, OfALeaseIsRemovedButNeverInstalled) {
  RecordTool("/sbin/ip");
  Shell("ifconfig eth0 up");
  const std::string lease = "/etc/dhclient/ipv4/dhcpcd-eth0.info";
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\nIPADDR=10.0.0.1\nNETMASK=255.0.0.0\n");
  TELL(NetRoutetableHandler(0, "eth0"));
  TELL(NetRoutetableHandler(1, "eth0"));
  TELL(NetRoutetableHandler(7, "eth0"));
  WriteFile(lease, "IPADDR=192.168.50.100\n");
  TELL(NetRoutetableHandler(1, "eth0"));
  WriteFile(lease, "IPADDR=192.168.50.100\nNETMASK=255.255.255.128\n");
  TELL(NetRoutetableHandler(0, "eth0"));
  TELL(NetRoutetableHandler(1, "eth0"));
  WriteIfcfg("eth0", "BOOTPROTO=static\n");
  TELL(NetRoutetableHandler(1, "eth0"));
}

TEST(SubnetRoute, OfASwitchPortIsThatOfItsDeviceAndABridgePortHasNone) {
  Shell(
      "ip link add ovs_eth1 type veth peer name below; ip link set ovs_eth1 up; ip link set below "
      "up;"
      "ip link add br0 type bridge; ip link set eth2 master br0 up; ip link set eth1 up");
  for (const char* ifname : {"ovs_eth1", "eth1", "eth2"})
    WriteIfcfg(ifname, "BOOTPROTO=static\nIPADDR=192.168.50.10\nNETMASK=255.255.255.0\n");
  RecordTool("/sbin/ip");
  TELL(NetRoutetableHandler(0, "eth2"));
  TELL(NetRoutetableHandler(0, "nosuch0"));
  MountEmpty("/sys/class/net");
  WriteFile("/sys/class/net/zarn_ovs_bonds", "ovs_bond0 eth1\n");
  TELL(NetRoutetableHandler(1, "eth1"));
}

TEST(SubnetRoutes, AreClearedWhereThereIsNoCarrierUnlessItIsTheOnlyInterface) {
  TELL(NetRoutetableCheck());
  Configure("eth1", "192.168.51.10");
  PullCable("1");
  Say("the only interface keeps its route");
  TELL(NetRoutetableCheck());
  Configure("eth0", "192.168.50.10");
  TELL(NetRoutetableCheck());
  WriteIfcfg("eth1", "BOOTPROTO=dhcp\n");
  TELL(NetRoutetableCheck());
}
