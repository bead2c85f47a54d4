// SPDX-License-Identifier: Apache-2.0
// An address goes from a port to the bond over it, which the DHCP server serves from then on.
#include "change/moves.h"

#include <zarnnetchange/change.h>

#include "machine.h"

using namespace test;

TEST(Moves, FromAPortToTheBondOverIt) {
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0")) << LogText();
  const char* const wish =
      R"({"dhcp_server":{"enabled":true,"interfaces":{"bond0":{"ipv4":{"subnets":{"0":{"prefix":24,)"
      R"("start":"192.168.50.100","end":"192.168.50.150"}}}}}},"interfaces":{"eth0":{"ipv4":null},)"
      R"("bond0":{"ipv4":{"address":"192.168.50.10","prefix":24}}},)"
      R"("bonds":{"bond0":{"mode":"active-backup","slaves":["eth0","eth1"]}}})";
  char* report = nullptr;
  int result = -1;
  const auto interruptions = InterruptionsIn(
      [&] { result = ZARNNetChangeApply(wish, nullptr, nullptr, nullptr, &report); });
  EXPECT_EQ(result, ZARNNETCHANGE_DONE) << report;
  ZARNNetChangeFree(report);
  for (const auto& [ifname, count] : interruptions)
    EXPECT_LE(count, 1) << ifname;
  EXPECT_EQ(Members("bond0"), (Lines{"eth0", "eth1"}));
  EXPECT_EQ(Address("bond0"), "192.168.50.10");
  EXPECT_EQ(Address("eth0"), "");
}
