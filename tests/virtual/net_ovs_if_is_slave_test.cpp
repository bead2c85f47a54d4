// SPDX-License-Identifier: Apache-2.0
// Open vSwitch devices, their bonds' members, and what lies under them.
#include <zarnnetsdk/error.h>
#include <zarnnetsdk/virtual.h>

#include "support/appliance.h"

namespace {

TEST(Ovs, MasterAndMemberNeedTheirDevices) {
  test::MountEmpty("/sys/devices/virtual/net");
  test::MountEmpty("/sys/class/net");
  for (const std::string name :
       {"ovs_eth0", "ovs_eth1", "ovs_eth10", "ovs_bond0", "ovs_ovs_bond0", "eth5"})
    test::WriteFile("/sys/devices/virtual/net/" + name + "/uevent", "");
  EXPECT_EQ(KOPANetOVSIfIsSlave("eth1"), 0) << "no table of bonds";
  test::WriteFile("/sys/class/net/zarn_ovs_bonds",
                  "eth0 eth9\n  ovs_bond0  eth7 eth10\teth2 eth1 \n");
  const struct {
    const char* name;
    int master;
    int slave;
  } rows[] = {
      {"ovs_eth0", 1, 0}, {"ovs_bond0", 2, 0},                  // a line's first name is the bond's
      {"eth0", 0, 0},     {"eth1", 0, 1},      {"eth7", 0, 0},  // listed, but without a device
      {"ovs_eth7", 0, 0}, {"ovs_bond7", 0, 0}, {"eth5", 0, 0}, {"ovs_eth0/..", 0, 0}};
  for (const auto& row : rows) {
    EXPECT_EQ(KOPANetOVSIfIsMaster(row.name), row.master) << row.name;
    EXPECT_EQ(KOPANetOVSIfIsSlave(row.name), row.slave) << row.name;
  }
}

TEST(Ovs, OriginalNameNeedsRoom) {
  const struct {
    const char* name;
    std::size_t size;
    int result;
    const char* original;
  } rows[] = {
      {"ovs_eth0", 16, 0, "eth0"}, {"ovs_eth0", 5, 0, "eth0"},    {"ovs_eth0", 4, -1, "#"},
      {"ovs_eth0", 0, -1, "#"},    {"ovs_bond0", 16, 0, "bond0"}, {"ovs_", 16, -1, ""},
      {"eth0", 16, -1, ""},        {"ovs", 16, -1, "#"},
  };
  for (const auto& row : rows) {
    char out[32] = "#";
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(KOPANetOVSGetOriginalIf(row.name, out, row.size), row.result) << row.size;
    EXPECT_EQ(KOPACErrGet(), row.result == 0 ? ZARNNETERR_NONE : ZARNNETERR_BAD_PARAMETER);
    EXPECT_STREQ(out, row.original) << row.size;
  }
}

}  // namespace
