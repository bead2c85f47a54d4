// SPDX-License-Identifier: Apache-2.0
// The MTU where devices stand on each other: the kernel refuses a VLAN more than its parent has.
#include "machine.h"

using namespace test;

namespace {

const Lines kStack{"bond0.7", "bond0", "eth0", "eth1"};

void ExpectMtu(int mtu) {
  for (const std::string& ifname : kStack) {
    EXPECT_EQ(mtu, Link(ifname)["mtu"]) << ifname;
    EXPECT_EQ(mtu, ZARNGetMTU(ifname.c_str())) << ifname;
    EXPECT_EQ(1, ZARNNetIsIFUp(ifname.c_str())) << ifname;
  }
}

}  // namespace

TEST(Mtu, OfAVlanOnABondReachesTheBondAndItsPortsFirst) {
  Do("ip link add bond0 type bond mode active-backup miimon 100; ip link set eth0 master bond0;"
     "ip link set eth1 master bond0; ip link set bond0 up; ip link add link bond0 name bond0.7 "
     "type vlan id 7;"
     "ip link set bond0.7 up; ip address add 10.7.0.1/24 dev bond0.7");
  EXPECT_TRUE(Contains(Shell("ip link set bond0.7 mtu 4000"), "RTNETLINK"));
  ASSERT_EQ(0, ZARNNetSetMTUEth("4000", "bond0.7")) << LogText();
  ExpectMtu(4000);
  EXPECT_EQ("10.7.0.1", Address("bond0.7"));

  EXPECT_EQ(-1, ZARNNetSetMTUEth("70000", "bond0.7"));
  ExpectMtu(4000);
  ASSERT_EQ(0, ZARNNetSetMTUEth("1500", "bond0.7")) << LogText();
  ExpectMtu(1500);
}
