// The record of one interface, up or down.
#include <cstring>
#include <gtest/gtest.h>
#include <net/if.h>

#include <zarnnetsdk/iface.h>

#include "support/appliance.h"

using namespace test;

TEST(IfGetInfo, TellsOfAnInterfaceUpOrDown) {
  Shell(
      "ip link add one0 type bridge; ip link set one0 address 02:00:00:00:00:77;"
      "ip address add 10.7.0.5/20 dev one0");
  WriteIfcfg("one0", "BOOTPROTO=static\nIPADDR=10.7.0.6\nNETMASK=255.0.0.0\n");
  KOPANetIfInfo info;
  ZARNNETIFADDR config{};
  std::memset(&info, 0x5A, sizeof info);
  ASSERT_EQ(0, ZARNNetIFGetInfoEx("one0", &info, &config));
  EXPECT_STREQ("one0", info.name);
  EXPECT_EQ(0, std::memcmp(info.mac, "\x02\0\0\0\0\x77", 6));
  EXPECT_STREQ("10.7.0.5", info.ip);
  EXPECT_STREQ("255.255.240.0", info.mask);
  EXPECT_EQ(0, info.link);
  EXPECT_EQ(0, info.flags & IFF_UP);
  EXPECT_EQ(1, config.bootProto);
  EXPECT_STREQ("10.7.0.6", config.szIP);
  EXPECT_STREQ("255.0.0.0", config.szMask);
  Shell("ip link set one0 up");
  ASSERT_EQ(0, ZARNNetIFGetInfo("one0", &info));
  EXPECT_NE(0, info.flags & IFF_UP);
}

TEST(IfGetInfo, RefusalsLeaveTheRecords) {
  KOPANetIfInfo info;
  std::memset(&info, 0x5A, sizeof info);
  const KOPANetIfInfo before = info;
  ZARNNETIFADDR config{};
  EXPECT_EQ(0, Shell("ip link add exactly15chars0 type bridge").size());
  for (const char* name : {"none0", "exactly15chars0x"}) {
    EXPECT_EQ(-1, ZARNNetIFGetInfoEx(name, &info, &config));
    EXPECT_EQ(0xBC00, KOPACErrGet()) << name;
  }
  EXPECT_EQ(-1, ZARNNetIFGetInfoEx("exactly15chars0", &info, &config)) << "no address configured";
  EXPECT_EQ(0, std::memcmp(&info, &before, sizeof info));
  EXPECT_EQ(0, ZARNNetIFGetInfo("exactly15chars0", &info));
}
