// Subnet routes in the kernel, and what is done where the tools refuse.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/dns_route.h>

#include "support/appliance.h"

using namespace test;

namespace {

const char kStatic[] = "BOOTPROTO=static\nIPADDR=192.168.50.10\nNETMASK=255.255.255.0\n";

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
  ASSERT_EQ(0, NetRoutetableHandler(0, "eth0")) << LogText();
  EXPECT_EQ("192.168.50.0/24 scope link src 192.168.50.10 \n", Routes("eth0"));
  Shell(
      "ip route del 192.168.50.0/24 dev eth0; ip route add 192.168.50.0/24 dev eth0 src "
      "192.168.50.99");
  ASSERT_EQ(0, NetRoutetableHandler(0, "eth0"));
  EXPECT_EQ("192.168.50.0/24 scope link src 192.168.50.10 \n", Routes("eth0"))
      << "the older tool removes a route with another source";
  EXPECT_EQ(
      1, LogCount(LOG_INFO, "net_route_table_edit", "eth0 ip route del failed, instead of route"))
      << LogText();
  EXPECT_EQ(0, NetRoutetableHandler(7, "eth0"));
  EXPECT_NE("", Routes("eth0"));
  EXPECT_EQ(0, NetRoutetableHandler(1, "eth0"));
  EXPECT_EQ("", Routes("eth0"));
}

TEST(SubnetRoute, RefusalsOfBothToolsAreNotedAndFailNothing) {
  RecordTool("/sbin/ip", 2);
  RecordTool("/sbin/route", 3);
  EXPECT_EQ(0, NetRoutetableEdit(0, "10.20.30.40", "255.255.240.0", "eth1"));
  const std::string place = " 10.20.16.0/20 dev eth1 src 10.20.30.40";
  const std::string old = " -net 10.20.16.0 netmask 255.255.240.0 dev eth1";
  EXPECT_EQ((Lines{"/sbin/ip route del" + place, "/sbin/route del" + old,
                   "/sbin/ip route add" + place, "/sbin/route add" + old}),
            RecordedCalls());
  for (const std::string& message :
       {std::string("eth1 ip route del failed, instead of route"),
        "cmd route del" + old + " failded",
        std::string("eth1 ip route add failed, might be the same subnet, instead of route"),
        "cmd route add" + old + " failded"}) {
    EXPECT_EQ(1, LogCount(LOG_INFO, "net_route_table_edit", message)) << LogText();
  }
  RemoveFile("/run/recorded-calls");
  const struct {
    unsigned op;
    const char* ip;
    const char* mask;
    const char* ifname;
    const char* message;
  } bad[] = {{0, nullptr, "255.0.0.0", "eth1", "bad parameter"},
             {0, "10.0.0.1", nullptr, "eth1", "bad parameter"},
             {0, "10.0.0.1", "255.0.0.0", nullptr, "bad parameter"},
             {2, "10.0.0.1", "255.0.0.0", "eth1", "error type"},
             {1, "10.0.0.1", "255.0.0", "eth1", "inet_pton error (255.0.0)"},
             {1, "10.0.0", "255.0.0.0", "eth1", "inet_pton error (10.0.0)"}};
  for (const auto& c : bad) {
    Log().clear();
    EXPECT_EQ(-1, NetRoutetableEdit(c.op, c.ip, c.mask, c.ifname));
    EXPECT_EQ(1, LogCount(LOG_ERR, "net_route_table_edit", c.message)) << LogText();
  }
  EXPECT_EQ(-1, NetRoutetableHandler(0, nullptr));
  EXPECT_EQ(0x0D00, KOPACErrGet());
  EXPECT_EQ(Lines{}, RecordedCalls());
}

TEST(SubnetRoute, OfALeaseIsRemovedButNeverInstalled) {
  RecordTool("/sbin/ip");
  Shell("ifconfig eth0 up");
  const std::string lease = "/etc/dhclient/ipv4/dhcpcd-eth0.info";
  WriteIfcfg("eth0", "BOOTPROTO=dhcp\nIPADDR=10.0.0.1\nNETMASK=255.0.0.0\n");
  for (const unsigned op : {0U, 1U, 7U})
    EXPECT_EQ(-1, NetRoutetableHandler(op, "eth0")) << op;
  EXPECT_EQ(3, LogCount(LOG_ERR, "net_route_table_edit", lease + " is not exist"));
  WriteFile(lease, "IPADDR=192.168.50.100\n");
  EXPECT_EQ(-1, NetRoutetableHandler(1, "eth0"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_route_table_edit", "Get netmask from " + lease + " fail"));
  WriteFile(lease, "IPADDR=192.168.50.100\nNETMASK=255.255.255.128\n");
  EXPECT_EQ(0, NetRoutetableHandler(0, "eth0"));
  EXPECT_EQ(Lines{}, RecordedCalls());
  EXPECT_EQ(0, NetRoutetableHandler(1, "eth0"));
  EXPECT_EQ((Lines{"/sbin/ip route del 192.168.50.0/25 dev eth0 src 192.168.50.100"}),
            RecordedCalls());
  WriteIfcfg("eth0", "BOOTPROTO=static\n");
  EXPECT_EQ(-1, NetRoutetableHandler(1, "eth0"));
  EXPECT_EQ(
      1, LogCount(LOG_ERR, "net_route_table_edit", "Get IP from " + IfcfgPath("eth0") + " fail"));
}

TEST(SubnetRoute, OfASwitchPortIsThatOfItsDeviceAndABridgePortHasNone) {
  Shell(
      "ip link add ovs_eth1 type veth peer name below; ip link set ovs_eth1 up; ip link set below "
      "up;"
      "ip link add br0 type bridge; ip link set eth2 master br0 up; ip link set eth1 up");
  for (const char* ifname : {"ovs_eth1", "eth1", "eth2"})
    WriteIfcfg(ifname, kStatic);
  RecordTool("/sbin/ip");
  EXPECT_EQ(0, NetRoutetableHandler(0, "eth2"));
  EXPECT_EQ(0, NetRoutetableHandler(0, "nosuch0"));
  EXPECT_EQ(Lines{}, RecordedCalls());
  MountEmpty("/sys/class/net");
  WriteFile("/sys/class/net/zarn_ovs_bonds", "ovs_bond0 eth1\n");
  EXPECT_EQ(0, NetRoutetableHandler(1, "eth1"));
  EXPECT_EQ((Lines{"/sbin/ip route del 192.168.50.0/24 dev ovs_eth1 src 192.168.50.10"}),
            RecordedCalls());
}

TEST(SubnetRoutes, AreClearedWhereThereIsNoCarrierUnlessItIsTheOnlyInterface) {
  EXPECT_EQ(-1, NetRoutetableCheck());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_route_table_edit", "No interface."));
  Configure("eth1", "192.168.51.10");
  PullCable("1");
  const std::string route = Routes("eth1");
  EXPECT_NE(std::string::npos, route.find("192.168.51.0/24")) << route;
  EXPECT_EQ(0, NetRoutetableCheck());
  EXPECT_EQ(route, Routes("eth1")) << "the only interface";
  Configure("eth0", "192.168.50.10");
  const std::string kept = Routes("eth0");
  ASSERT_EQ(0, NetRoutetableCheck()) << LogText();
  EXPECT_EQ("", Routes("eth1"));
  EXPECT_EQ(kept, Routes("eth0"));
  WriteIfcfg("eth1", "BOOTPROTO=dhcp\n");
  EXPECT_EQ(-1, NetRoutetableCheck());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_route_table_edit",
                        "NetRoutetableHandler clear [eth1] route table fail"));
  const LockHolder other(0x106);
  EXPECT_EQ(-1, NetRoutetableCheck());
  EXPECT_EQ(0x0400, KOPACErrGet());
  EXPECT_NE(std::string::npos, LogText().find(" lock fail(")) << LogText();
}
