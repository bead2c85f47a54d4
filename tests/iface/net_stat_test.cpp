// SPDX-License-Identifier: Apache-2.0
// The traffic counters of the interfaces.
#include <zarnnetsdk/error.h>
#include <zarnnetsdk/iface.h>

#include "support/transcript.h"

using namespace test;

TEST(Statistics, HoldTheKernelsCountersInNaturalOrder) {
  PKOPANETSTATLIST list = KOPANetStatInit(3);
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(0, list->nItem);
  Say("five interfaces, room for three");
  TELL(KOPANetStatGetAll(list));
  for (int i = 0; i < list->nItem; ++i)
    Say(list->rgItem[i].name);
  MountEmpty("/proc/self/net");
  WriteFile("/proc/net/dev",
            "Inter-|   Receive   | Transmit\n face |bytes\n"
            "  eth10:18446744073709551615 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"
            "tap0: 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1\n"
            "   eth2: 21 22");
  TELL(KOPANetStatGetAll(list));
  for (int i = 0; i < list->nItem; ++i) {
    const KOPANETSTAT& stat = list->rgItem[i];
    std::string text = stat.name;
    for (const uint64_t value : {stat.rxBytes, stat.rxPackets, stat.rxErrors, stat.rxDropped,
                                 stat.txBytes, stat.txPackets, stat.txErrors, stat.txDropped})
      text += " " + std::to_string(value);
    Say(text);
  }
  RemoveFile("/proc/net/dev");
  TELL(KOPANetStatGetAll(list));
  WriteFile("/proc/net/dev/folder", "");
  TELL(KOPANetStatGetAll(list));
  EXPECT_EQ(2, list->nItem) << "left as it was";
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(nullptr, KOPANetStatInit(0));
  EXPECT_EQ(ZARNNETERR_BAD_PARAMETER, KOPACErrGet());
  KOPANetStatFree(list);
}
