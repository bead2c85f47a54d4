// The MTU where devices stand on each other: the kernel refuses a VLAN more than its parent has.
#include <zarnnetsdk/zarnnetsdk.h>

#include "machine.h"

using namespace test;

namespace {

int KernelMtu(const std::string& ifname) {
  return Ip("link show dev " + ifname)[0]["mtu"];
}

}  // namespace

TEST(Mtu, OfAVlanOnABondReachesTheBondAndItsPortsFirst) {
  Do("ip link add bond0 type bond mode active-backup miimon 100; ip link set eth0 master bond0;"
     "ip link set eth1 master bond0; ip link set bond0 up; ip link add link bond0 name bond0.7 "
     "type vlan id 7;"
     "ip link set bond0.7 up; ip address add 10.7.0.1/24 dev bond0.7");
  EXPECT_TRUE(Contains(Shell("ip link set bond0.7 mtu 4000"), "RTNETLINK"));
  ASSERT_EQ(0, ZARNNetSetMTUEth("4000", "bond0.7")) << LogText();
  for (const char* ifname : {"bond0.7", "bond0", "eth0", "eth1"}) {
    EXPECT_EQ(4000, KernelMtu(ifname)) << ifname;
    EXPECT_EQ(4000, ZARNGetMTU(ifname)) << ifname;
    EXPECT_EQ(1, ZARNNetIsIFUp(ifname)) << ifname;
  }
  EXPECT_TRUE(Contains(Shell("ip -4 address show dev bond0.7"), "10.7.0.1/24"));

  EXPECT_EQ(-1, ZARNNetSetMTUEth("70000", "bond0.7"));
  for (const char* ifname : {"bond0.7", "bond0", "eth0", "eth1"}) {
    EXPECT_EQ(4000, KernelMtu(ifname)) << ifname;
    EXPECT_EQ(1, ZARNNetIsIFUp(ifname)) << ifname;
  }
  ASSERT_EQ(0, ZARNNetSetMTUEth("1500", "bond0.7")) << LogText();
  EXPECT_EQ(1500, KernelMtu("bond0.7"));
  EXPECT_EQ(1500, KernelMtu("eth1"));
}
