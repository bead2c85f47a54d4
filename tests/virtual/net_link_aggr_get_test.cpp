// SPDX-License-Identifier: Apache-2.0
// Bonds as the kernel's files and Open vSwitch's interface files tell of them.
#include <cstring>

#include <zarnnetsdk/error.h>
#include <zarnnetsdk/virtual.h>

#include "support/transcript.h"

using namespace test;

namespace {

constexpr char kMasters[] = "/sys/class/net/bonding_masters";

std::string Text(const ZARNLINKAGGROPT& record) {
  std::string text = std::string(record.szName) + ", mode " + std::to_string(record.mode) +
                     (record.blNoPartner != 0 ? ", no partner:" : ":");
  for (int i = 0; i < record.cSlave; ++i)
    text += std::string(" ") + record.rgszSlave[i];
  return text;
}

// Over a record full of an earlier use's bytes.
void Get(const std::string& name, const std::string& why) {
  ZARNLINKAGGROPT record;
  std::memset(&record, 0x5A, sizeof record);
  if (Tell(why, [&] { return ZARNNetLinkAggrGet(name.c_str(), &record); }) >= 0) Say(Text(record));
}

class Bonds : public ::testing::Test {
 protected:
  void SetUp() override {
    MountEmpty("/sys/class/net");
    MountEmpty("/proc/self/net");
  }
  static void Bond(const std::string& name, const std::string& slaves, const std::string& mode) {
    WriteFile("/sys/class/net/" + name + "/bonding/slaves", slaves);
    WriteFile("/sys/class/net/" + name + "/bonding/mode", mode);
  }
};

TEST_F(Bonds, ModeLineGivesTheModeAndTheStatusThePartner) {
  for (const char* mode : {"balance-alb 6\n", "802.3ad 4\n", "balance-xor 2\n", "active-backup 1\n",
                           "balance-rr 0\n", "balance-tlb 5\n"}) {
    Bond("bond0", "eth10\teth2 eth1\n", mode);
    Get("bond0", mode);
  }
  Bond("bond0", "eth0\n", "802.3ad 4\n");
  for (const char* status :
       {"LACP rate: fast\n\tPartner Mac Address: 02:00:00:00:00:07\n",
        "\tPartner Mac Address: 00:00:00:00:00:00\n\tPartner Mac Address: 02:00:00:00:00:07\n",
        "\tPartner Mac Address:  \n", "Partner Mac Address: 02:00:00:00:00:07\n", ""}) {
    WriteFile("/proc/net/bonding/bond0", status);
    Get("bond0", status);
  }
}

TEST_F(Bonds, FailuresAndMissingSlavesAreToldApart) {
  Get("a-name-of-twenty-chr", "no bond at all");
  Bond("bond0", "\n", "802.3ad 4\n");
  Get("bond0", "a bond without slaves has no mode");
  WriteFile("/sys/class/net/bond1/bonding/slaves", "eth0\n");
  Get("bond1", "no file of the mode");
  Bond("bond1", "eth0\n", "");
  Get("bond1", "an empty file of the mode");
  Bond("bond2", "eth0 eth1 eth0\n", "802.3ad 4\n");
  Get("bond2", "a slave twice");
}

TEST_F(Bonds, SlavesStayWithinTheRecord) {
  ZARNLINKAGGROPT record{};
  for (int i = 0; i < ZARNLINKAGGR_MAX_SLAVE; ++i) {
    EXPECT_EQ(ZARNNetLinkAggrOptSlsaveAdd(&record, ("eth" + std::to_string(i)).c_str()), 0);
    EXPECT_EQ(KOPACErrGet(), ZARNNETERR_NOT_FOUND) << "left by the search that found nothing";
  }
  TELL(ZARNNetLinkAggrOptSlsaveAdd(&record, "eth32"));
  Say(Text(record));
  record.cSlave = 0;
  TELL(ZARNNetLinkAggrOptSlsaveAdd(&record, "a-name-of-twenty-chr"));
  TELL(ZARNNetLinkAggrOptSlsaveAdd(&record, "a-name-of-twenty"));
  Say(Text(record));
}

TEST_F(Bonds, EnumCountsAllAndListsThoseWithSlaves) {
  List list;
  TELL(ZARNNetLinkAggrExist());
  TELL(ZARNNetLinkAggrEnum(list.Out()));
  EXPECT_EQ(ZARNNETERR_NONE, KOPACErrGet()) << "no driver";
  WriteFile(kMasters, "bond2 bond0 bond10 bond7");
  Bond("bond2", "eth0 eth1\n", "");
  Bond("bond0", "\n", "");
  Bond("bond10", "eth2", "");
  TELL(ZARNNetLinkAggrExist());
  TELL(ZARNNetLinkAggrEnum(list.Out()));
  EXPECT_EQ(list.Texts(), (Lines{"bond2", "bond10"}));
  RemoveFile(kMasters);
  WriteFile(std::string(kMasters) + "/unreadable", "");
  TELL(ZARNNetLinkAggrExist());
  TELL(ZARNNetLinkAggrEnum(list.Out()));
}

// The ports are the kernel's own: a member that it does not know is left out.
TEST_F(Bonds, OvsBondIsReadFromItsFile) {
  MountEmpty("/sys/devices/virtual/net");
  WriteFile("/sys/devices/virtual/net/ovs_bond0/uevent", "");
  RemoveFile(IfcfgPath("ovs_bond0"));
  Get("ovs_bond0", "no file");
  for (const char* file : {"SLAVE_LIST=\"  eth1  gone0 ovs_bond0 eth0 \"\n",
                           "SLAVE_LIST=\"  eth1  gone0 ovs_bond0 eth0 \"\nBOND_MODE=balance-tcp\n",
                           "SLAVE_LIST=eth0 eth0\nBOND_MODE=balance-slb\n"}) {
    WriteIfcfg("ovs_bond0", file);
    Get("ovs_bond0", file);
  }
}

TEST(BondModes, TableAndNamesAgree) {
  for (uint32_t mode = 1; mode <= 8; ++mode) {
    const ZARNBONDDESC& desc = grgBondDesc[mode];
    const std::string name = ZARNNetLinkAggrModeToString(mode);
    Tell(name + "x", [&] { return ZARNNetLinkAggrStringToMode((name + "x").c_str()); });
    if (desc.szName != nullptr)
      Say(std::string(desc.szName) + ", " + desc.szKernelMode + ", " + desc.szBondingOpts);
  }
  for (const uint32_t mode : {0U, 9U, ~0U})
    EXPECT_STREQ(ZARNNetLinkAggrModeToString(mode), "unknown");
  for (const char* name : {"", "balance-", "unknown"})
    EXPECT_EQ(ZARNNetLinkAggrStringToMode(name), 0U) << name;
}

}  // namespace
