// Bonds of the kernel's driver, opposite a switch that speaks LACP: the second bond, at the other ends of the cables.
#include <zarnnetsdk/zarnnetsdk.h>

#include "machine.h"

using namespace test;

namespace {

struct Bonds {
  int count = -1;
  Lines names;
};

Bonds Enumerate() {
  Bonds bonds;
  PKOPACSZLIST list = KOPACSzListAlloc(8);
  bonds.count = ZARNNetLinkAggrEnum(&list);
  bonds.names = Items(list);
  KOPACSzListFree(list);
  return bonds;
}

Lines Slaves(const ZARNLINKAGGROPT& bond) {
  return Lines(bond.rgszSlave, bond.rgszSlave + bond.cSlave);
}

std::string Driver(const std::string& bond, const std::string& attribute) {
  return ReadFile("/sys/class/net/" + bond + "/bonding/" + attribute);
}

}  // namespace

TEST(Bond, OfTheDriverReadsBackWithAndWithoutPartner) {
  EXPECT_EQ(0, ZARNNetLinkAggrExist());  // the driver's list of bonds has no line while it is empty
  EXPECT_EQ(0, Enumerate().count);
  Do("ip link add bond0 type bond mode 802.3ad miimon 100 lacp_rate fast; ip link add bond1 type bond;"
     "ip link set eth1 master bond0; ip link set eth0 master bond0; ip link set bond0 up");

  EXPECT_EQ(1, ZARNNetLinkAggrExist());
  ZARNLINKAGGROPT bond{};
  ASSERT_EQ(0, ZARNNetLinkAggrGet("bond0", &bond)) << LogText();
  EXPECT_EQ("802.3ad 4\n", Driver("bond0", "mode"));
  EXPECT_EQ(2u, bond.mode);
  EXPECT_EQ((Lines{"eth0", "eth1"}), Slaves(bond));
  EXPECT_EQ((Lines{"eth1", "eth0"}), Words(Driver("bond0", "slaves")));
  EXPECT_TRUE(Contains(ReadFile("/proc/net/bonding/bond0"), "Partner Mac Address: 00:00:00:00:00:00"));
  EXPECT_EQ(1u, bond.blNoPartner);
  const Bonds both = Enumerate();
  EXPECT_EQ(2, both.count);
  EXPECT_EQ(Lines{"bond0"}, both.names);
  EXPECT_EQ(1, ZARNNetIfIsBondingPassive("eth0"));
  EXPECT_EQ(0, ZARNNetIfIsBondingPassive("bond0"));

  Do("ip -n lan link set lan0 nomaster; ip -n lan link set lan1 nomaster;"
     "ip -n lan link add trunk type bond mode 802.3ad miimon 100 lacp_rate fast;"
     "ip -n lan link set lan0 down; ip -n lan link set lan1 down;"
     "ip -n lan link set lan0 master trunk; ip -n lan link set lan1 master trunk; ip -n lan link set trunk up;"
     "ip -n lan address add 192.168.70.1/24 dev trunk; ip address add 192.168.70.2/24 dev bond0");
  const std::string partner = Ip("-n lan link show dev trunk")[0]["address"];
  ASSERT_TRUE(Within(30, [&] {
    return Contains(ReadFile("/proc/net/bonding/bond0"), "Partner Mac Address: " + partner);
  })) << ReadFile("/proc/net/bonding/bond0");
  ASSERT_EQ(0, ZARNNetLinkAggrGet("bond0", &bond));
  EXPECT_EQ(0u, bond.blNoPartner);
  EXPECT_TRUE(Within(10, [] { return Contains(Shell("ping -c 1 -W 1 192.168.70.1"), "1 received"); }));
  EXPECT_EQ(1, ZARNNetIfIsLink("bond0"));
}

TEST(Bond, EveryModeOfTheDriverHasItsNumber) {
  const struct {
    const char* mode;
    unsigned id;
  } cases[] = {{"balance-alb", 1}, {"802.3ad", 2},    {"balance-xor", 3}, {"active-backup", 4},
               {"balance-rr", 5},  {"broadcast", 0}, {"balance-tlb", 0}};
  for (const auto& [mode, id] : cases) {
    Do("ip link set eth2 down; ip link add bond7 type bond miimon 100 mode " + std::string(mode) + "; ip link set eth2 master bond7");
    ZARNLINKAGGROPT bond{};
    EXPECT_EQ(0, ZARNNetLinkAggrGet("bond7", &bond)) << mode;
    EXPECT_EQ(mode, Words(Driver("bond7", "mode"))[0]);
    EXPECT_EQ(id, bond.mode) << mode;
    EXPECT_EQ(Lines{"eth2"}, Slaves(bond)) << mode;
    EXPECT_EQ(0u + (id == 2), bond.blNoPartner) << mode;
    Do("ip link delete bond7");
  }
}
