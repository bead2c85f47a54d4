// Block flags: the keys, their counter, the lock on the file.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/iface.h>

#include "support/appliance.h"
#include "support/children.h"

using namespace test;

TEST(BlockFlags, CounterFollowsWhatChanges) {
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  EXPECT_EQ(0, ZARNNetIFBlockGet("eth0"));
  EXPECT_EQ(0, ZARNNetIFBlockSet("eth0", ZARNNET_BLOCK_HA | ZARNNET_BLOCK_QUENDAR, 1));
  EXPECT_EQ("DEVICE=eth0\nBLOCK_HA=yes\nBLOCK_CNT=2\nBLOCK_QUENDAR=yes\n", ReadIfcfg("eth0"));
  EXPECT_EQ(0, ZARNNetIFBlockSet("eth0", ZARNNET_BLOCK_HA, 1)) << "set already";
  EXPECT_EQ(0, ZARNNetIFBlockSet("eth0", ZARNNET_BLOCK_AHA, 0)) << "clear already";
  EXPECT_EQ(9, ZARNNetIFBlockGet("eth0"));
  EXPECT_EQ(0, ZARNNetIFBlockSet("eth0", 15, 0));
  EXPECT_EQ("DEVICE=eth0\nBLOCK_HA=no\nBLOCK_CNT=0\nBLOCK_QUENDAR=no\n", ReadIfcfg("eth0"));
  EXPECT_EQ(0, ZARNNetIFBlockGet("eth0"));
}

TEST(BlockFlags, AnOddValueWritesNoAndCounts) {
  WriteIfcfg("eth0", "");
  EXPECT_EQ(0, ZARNNetIFBlockSet("eth0", ZARNNET_BLOCK_VIRTUAL, 2));
  EXPECT_EQ("BLOCK_VIRTUAL=no\nBLOCK_CNT=1\n", ReadIfcfg("eth0"));
  EXPECT_EQ(0, ZARNNetIFBlockGet("eth0"));
  WriteIfcfg("eth0", "BLOCK_HA=yesterday\nBLOCK_AHA=yes\nBLOCK_CNT=0\n");
  EXPECT_EQ(0, ZARNNetIFBlockGet("eth0")) << "the counter decides";
  WriteIfcfg("eth0", "BLOCK_HA=yesterday\nBLOCK_AHA=Yes\nBLOCK_CNT=1\n");
  EXPECT_EQ(1, ZARNNetIFBlockGet("eth0")) << "three characters are compared";
}

TEST(BlockFlags, FailuresNameTheFlagAndTheInterface) {
  RemoveFile(IfcfgPath("eth9"));
  EXPECT_EQ(-1, ZARNNetIFBlockSet("eth9", ZARNNET_BLOCK_AHA, 1));
  ExpectLog(LOG_ERR, "net_if_block", "Failed to get key [BLOCK_AHA]");
  ExpectLog(LOG_ERR, "net_if_block", "Failed to set mode [BLOCK_AHA] of [eth9]");
  EXPECT_FALSE(FileExists(IfcfgPath("eth9")));
}

TEST(BlockFlags, TwoProcessesLoseNoCount) {
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  constexpr int kRounds = 25;
  const auto toggle = [](unsigned flag) {
    return Start([=] {
      int failures = 0;
      for (int i = 0; i < kRounds; ++i) {
        failures -= ZARNNetIFBlockSet("eth0", flag, 1);
        if (i + 1 < kRounds) failures -= ZARNNetIFBlockSet("eth0", flag, 0);
      }
      return failures;
    });
  };
  for (const pid_t child : {toggle(ZARNNET_BLOCK_HA), toggle(ZARNNET_BLOCK_AHA)})
    EXPECT_EQ(0, ExitStatusOf(child));
  EXPECT_EQ(3, ZARNNetIFBlockGet("eth0"));
  EXPECT_NE(std::string::npos, ReadIfcfg("eth0").find("BLOCK_CNT=2\n"));
}
