// SPDX-License-Identifier: Apache-2.0
// Block flags: the keys, their counter, the lock on the file.
#include <zarnnetsdk/iface.h>

#include "support/children.h"
#include "support/transcript.h"

using namespace test;

TEST(BlockFlags, CounterFollowsWhatChanges) {
  constexpr unsigned kHa = ZARNNET_BLOCK_HA;
  WriteIfcfg("eth0", "DEVICE=eth0\n");
  TELL(ZARNNetIFBlockGet("eth0"));
  TELL(ZARNNetIFBlockSet("eth0", kHa | ZARNNET_BLOCK_QUENDAR, 1));
  TELL(ZARNNetIFBlockSet("eth0", kHa, 1));
  TELL(ZARNNetIFBlockSet("eth0", ZARNNET_BLOCK_AHA, 0));
  TELL(ZARNNetIFBlockGet("eth0"));
  TELL(ZARNNetIFBlockSet("eth0", 15, 0));
  TELL(ZARNNetIFBlockGet("eth0"));
  RemoveFile(IfcfgPath("eth9"));
  TELL(ZARNNetIFBlockSet("eth9", ZARNNET_BLOCK_AHA, 1));
}

TEST(BlockFlags, AnOddValueWritesNoAndCounts) {
  WriteIfcfg("eth0", "");
  TELL(ZARNNetIFBlockSet("eth0", ZARNNET_BLOCK_VIRTUAL, 2));
  for (const char* file :
       {"BLOCK_VIRTUAL=no\nBLOCK_CNT=1\n", "BLOCK_HA=yesterday\nBLOCK_AHA=yes\nBLOCK_CNT=0\n",
        "BLOCK_HA=yesterday\nBLOCK_AHA=Yes\nBLOCK_CNT=1\n"}) {
    WriteIfcfg("eth0", file);
    Tell(file, [] { return ZARNNetIFBlockGet("eth0"); });
  }
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
