// Open vSwitch devices, their bonds' members, and what lies under them.
#include <gtest/gtest.h>
#include <string>

#include <zarnnetsdk/virtual.h>

#include "support/appliance.h"

namespace {

constexpr char kBonds[] = "/sys/class/net/zarn_ovs_bonds";

TEST(Ovs, MasterAndMemberNeedTheirDevices) {
  test::MountEmpty("/sys/devices/virtual/net");
  test::MountEmpty("/sys/class/net");
  for (const char* name :
       {"ovs_eth0", "ovs_eth1", "ovs_eth10", "ovs_bond0", "ovs_ovs_bond0", "eth5"}) {
    test::WriteFile("/sys/devices/virtual/net/" + std::string(name) + "/uevent", "");
  }
  EXPECT_EQ(KOPANetOVSIfIsMaster("ovs_eth0"), 1);
  EXPECT_EQ(KOPANetOVSIfIsMaster("ovs_bond0"), 2);
  for (const char* name : {"ovs_eth7", "ovs_bond7", "eth5", "ovs_eth0/.."}) {
    EXPECT_EQ(KOPANetOVSIfIsMaster(name), 0);
    EXPECT_EQ(KOPANetOVSIfIsSlave(name), 0);
  }
  EXPECT_EQ(KOPANetOVSIfIsSlave("eth1"), 0) << "no table of bonds";
  test::WriteFile(kBonds, "eth0 eth9\n  ovs_bond0  eth7 eth10\teth2 eth1 \n");
  EXPECT_EQ(KOPANetOVSIfIsSlave("eth1"), 1);
  EXPECT_EQ(KOPANetOVSIfIsSlave("eth0"), 0) << "a line's first name is the bond's";
  EXPECT_EQ(KOPANetOVSIfIsSlave("ovs_bond0"), 0);
  EXPECT_EQ(KOPANetOVSIfIsSlave("eth7"), 0) << "listed, but without a device";
}

TEST(Ovs, OriginalNameNeedsRoom) {
  struct {
    const char* name;
    std::size_t size;
    int result;
    const char* original;
  } const rows[] = {
      {"ovs_eth0", 16, 0, "eth0"}, {"ovs_eth0", 5, 0, "eth0"},    {"ovs_eth0", 4, -1, "#"},
      {"ovs_eth0", 0, -1, "#"},    {"ovs_bond0", 16, 0, "bond0"}, {"ovs_", 16, -1, ""},
      {"eth0", 16, -1, ""},        {"ovs", 16, -1, "#"},
  };
  for (const auto& row : rows) {
    char out[32] = "#";
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(KOPANetOVSGetOriginalIf(row.name, out, row.size), row.result) << row.size;
    EXPECT_EQ(KOPACErrGet(), row.result == 0 ? 0 : 0x0D00);
    EXPECT_STREQ(out, row.original) << row.size;
  }
}

}  // namespace
