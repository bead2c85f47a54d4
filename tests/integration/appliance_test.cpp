// SPDX-License-Identifier: Apache-2.0
// The library with the appliance's real tools and a real second host: DHCP, start and stop of
// interfaces, carrier.
#include "support/appliance.h"

#include <cstdio>
#include <poll.h>

#include <zarnnetsdk/zarnnetsdk.h>

using namespace test;

TEST(Dhcp, ATrialReportsAnAddressAndLeavesTheInterfaceAlone) {
  BringUp("eth0");
  ZARNNETIFADDR info{};
  std::snprintf(info.szName, sizeof info.szName, "eth0");
  ASSERT_EQ(0, ZARNIGetDHCPTestNetInfo(&info));
  EXPECT_EQ(1, KOPAIsIpInRange(info.szIP, "192.168.50.100", "192.168.50.150", 2)) << info.szIP;
  EXPECT_STREQ("255.255.255.0", info.szMask);
  EXPECT_EQ(std::string::npos, Shell("ip -4 address show dev eth0").find("inet "));
}

TEST(Dhcp, AFixedAddressEndsTheClientThatHeldTheLease) {
  Shell("/etc/rc.network start eth0");
  char address[32] = "";
  EXPECT_EQ(1, ZARNILnxGetIP("eth0", address, sizeof address)) << Shell("ip address; ps ax");
  EXPECT_EQ(1, KOPAIsIpInRange(address, "192.168.50.100", "192.168.50.150", 2)) << address;
  ZARNNETIFADDR config{};
  EXPECT_EQ(0, ZARNNetIFGetIPConfig("eth0", &config));
  EXPECT_EQ(0, config.bootProto);
  EXPECT_STREQ(address, config.szIP);
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth0", "192.168.50.10", "255.255.255.0"));
  EXPECT_EQ(0, KOPACPs("dhclient", nullptr, 0)) << Shell("ps ax");
  EXPECT_EQ(0, ZARNNetIFGetIPConfig("eth0", &config));
  EXPECT_EQ(1, config.bootProto);
  EXPECT_STREQ("192.168.50.10", config.szIP);
  EXPECT_NE(std::string::npos,
            Shell("ip netns exec lan ping -c 1 -W 2 192.168.50.10").find("1 received"));
}

TEST(Interfaces, StartFromTheirFilesAndStop) {
  ASSERT_EQ(0, ZARNILnxSetIPNetmask("eth1", "192.168.60.5", "255.255.255.128"));
  Shell("/etc/rc.network stop eth1");
  EXPECT_EQ(0, ZARNNetIsIFUp("eth1"));
  Shell("/etc/rc.network start eth1");
  EXPECT_EQ(1, ZARNNetIsIFUp("eth1"));
  EXPECT_NE(std::string::npos, Shell("ip -4 address show dev eth1").find("192.168.60.5/25"));
}

TEST(Interfaces, ACarrierThatGoesIsNoticed) {
  BringUp("eth2");
  EXPECT_EQ(1, ZARNNetIfIsLink("eth2"));
  Shell("ip -n lan link set lan2 down");
  int link = 1;
  for (int i = 0; i < 300 && link == 1; ++i) {  // the kernel tells a moment later
    ::poll(nullptr, 0, 10);
    link = ZARNNetIfIsLink("eth2");
  }
  EXPECT_EQ(0, link);
}
