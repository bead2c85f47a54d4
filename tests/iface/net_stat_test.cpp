// The traffic counters of the interfaces.
#include <gtest/gtest.h>

#include <zarnnetsdk/iface.h>

#include "support/appliance.h"

using namespace test;

namespace {

Lines Names(const KOPANETSTATLIST* list) {
  Lines names;
  for (int i = 0; i < list->nItem; ++i)
    names.emplace_back(list->rgItem[i].name);
  return names;
}

}  // namespace

TEST(Statistics, HoldTheKernelsCountersInNaturalOrder) {
  PKOPANETSTATLIST list = KOPANetStatInit(3);
  ASSERT_NE(nullptr, list);
  EXPECT_EQ(0, list->nItem);
  EXPECT_EQ(3, KOPANetStatGetAll(list)) << "five interfaces, room for three";
  EXPECT_EQ((Lines{"eth0", "eth1", "eth2"}), Names(list)) << "down interfaces too";
  MountEmpty("/proc/self/net");
  WriteFile("/proc/net/dev",
            "Inter-|   Receive   | Transmit\n face |bytes\n"
            "  eth10:18446744073709551615 2 3 4 5 6 7 8 9 10 11 12 13 14 15 16\n"
            "tap0: 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1 1\n"
            "   eth2: 21 22");
  EXPECT_EQ(2, KOPANetStatGetAll(list));
  EXPECT_EQ((Lines{"eth2", "eth10"}), Names(list));
  EXPECT_EQ(22U, list->rgItem[0].rxPackets);
  EXPECT_EQ(0U, list->rgItem[0].txBytes) << "a cut line";
  const KOPANETSTAT& stat = list->rgItem[1];
  EXPECT_EQ(UINT64_MAX, stat.rxBytes);
  EXPECT_EQ(2U, stat.rxPackets);
  EXPECT_EQ(3U, stat.rxErrors);
  EXPECT_EQ(4U, stat.rxDropped);
  EXPECT_EQ(9U, stat.txBytes);
  EXPECT_EQ(10U, stat.txPackets);
  EXPECT_EQ(11U, stat.txErrors);
  EXPECT_EQ(12U, stat.txDropped);
  RemoveFile("/proc/net/dev");
  EXPECT_EQ(-1, KOPANetStatGetAll(list));
  EXPECT_EQ(0x0900, KOPACErrGet());
  WriteFile("/proc/net/dev/folder", "");
  EXPECT_EQ(-1, KOPANetStatGetAll(list));
  EXPECT_EQ(0x4000, KOPACErrGet()) << "opened, and not readable";
  EXPECT_EQ(2, list->nItem) << "left as it was";
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(nullptr, KOPANetStatInit(0));
  EXPECT_EQ(0x0D00, KOPACErrGet());
  EXPECT_EQ(-1, KOPANetStatGetAll(nullptr));
  KOPANetStatFree(list);
}
