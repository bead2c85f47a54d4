// Bonds as the kernel's files and Open vSwitch's interface files tell of them.
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <syslog.h>

#include <zarnnetsdk/virtual.h>

#include "support/appliance.h"

namespace {

constexpr char kSource[] = "net_link_aggr_get";
constexpr char kMasters[] = "/sys/class/net/bonding_masters";

class Bonds : public ::testing::Test {
 protected:
  void SetUp() override {
    test::MountEmpty("/sys/class/net");
    test::MountEmpty("/proc/self/net");
    KOPACErrSetEx(0, "", 0);
  }

  static void Bond(const std::string& name, const std::string& slaves, const std::string& mode) {
    test::WriteFile("/sys/class/net/" + name + "/bonding/slaves", slaves);
    if (!mode.empty()) test::WriteFile("/sys/class/net/" + name + "/bonding/mode", mode);
  }

  // Over a record full of an earlier use's bytes.
  int Get(const char* name) {
    std::memset(&record_, 0x5A, sizeof record_);
    return ZARNNetLinkAggrGet(name, &record_);
  }

  test::Lines Slaves() const {
    test::Lines slaves;
    for (int i = 0; i < record_.cSlave; ++i)
      slaves.emplace_back(record_.rgszSlave[i]);
    return slaves;
  }

  ZARNLINKAGGROPT record_{};
};

TEST_F(Bonds, ModeLineGivesTheMode) {
  const char* const lines[] = {"balance-alb 6\n", "802.3ad 4\n", "balance-xor 2\n",
                               "active-backup 1\n", "balance-rr 0\n"};
  for (uint32_t mode = 1; mode <= 5; ++mode) {
    Bond("bond0", "eth10\teth2 eth1\n", lines[mode - 1]);
    EXPECT_EQ(Get("bond0"), 0);
    EXPECT_EQ(record_.mode, mode);
    EXPECT_EQ(record_.blNoPartner, mode == 2 ? 1U : 0U);
    EXPECT_EQ(Slaves(), (test::Lines{"eth1", "eth10", "eth2"})) << "sorted as text";
    EXPECT_EQ(ZARNNetLinkAggrStringToMode(lines[mode - 1]), mode);
  }
  Bond("bond0", "eth0\n", "balance-tlb 5\n");
  EXPECT_EQ(Get("bond0"), 0);
  EXPECT_EQ(record_.mode, 0U);
  test::ExpectLog(LOG_ERR, kSource, "Non-supported bonding mode [balance-tlb 5]");
}

TEST_F(Bonds, PartnerIsMissingUntilItHasAnAddress) {
  Bond("bond0", "eth0\n", "802.3ad 4\n");
  struct {
    const char* status;
    uint32_t missing;
  } const rows[] = {
      {"LACP rate: fast\n\tPartner Mac Address: 02:00:00:00:00:07\n", 0},
      {"\tPartner Mac Address: 00:00:00:00:00:00\n\tPartner Mac Address: 02:00:00:00:00:07\n", 1},
      {"\tPartner Mac Address:  \n", 1},
      {"Partner Mac Address: 02:00:00:00:00:07\n", 1},
      {"", 1},
  };
  for (const auto& row : rows) {
    test::WriteFile("/proc/net/bonding/bond0", row.status);
    EXPECT_EQ(Get("bond0"), 0);
    EXPECT_EQ(record_.blNoPartner, row.missing) << row.status;
  }
}

TEST_F(Bonds, FailuresAndMissingSlavesAreToldApart) {
  EXPECT_EQ(Get("a-name-of-twenty-chr"), 0) << "no bond at all";
  EXPECT_STREQ(record_.szName, "a-name-of-twent");
  EXPECT_EQ(record_.cSlave, 0);
  Bond("bond0", "\n", "802.3ad 4\n");
  EXPECT_EQ(Get("bond0"), 0);
  EXPECT_EQ(record_.mode, 0U) << "a bond without slaves has no mode";
  Bond("bond1", "eth0\n", "");
  EXPECT_EQ(Get("bond1"), -1);
  EXPECT_EQ(KOPACErrGet(), 0x0900);
  test::WriteFile("/sys/class/net/bond1/bonding/mode", "");
  EXPECT_EQ(Get("bond1"), -1);
  EXPECT_EQ(KOPACErrGet(), 0x0A00);
  Bond("bond2", "eth0 eth1 eth0\n", "802.3ad 4\n");
  EXPECT_EQ(Get("bond2"), -1);
  EXPECT_EQ(KOPACErrGet(), 0xBB00);
}

TEST_F(Bonds, SlavesStayWithinTheRecord) {
  ZARNLINKAGGROPT record{};
  for (int i = 0; i < ZARNLINKAGGR_MAX_SLAVE; ++i) {
    EXPECT_EQ(ZARNNetLinkAggrOptSlsaveAdd(&record, ("eth" + std::to_string(i)).c_str()), 0);
    EXPECT_EQ(KOPACErrGet(), 0xBC00) << "the search that found nothing leaves its code";
  }
  const ZARNLINKAGGROPT full = record;
  EXPECT_EQ(ZARNNetLinkAggrOptSlsaveAdd(&record, "eth32"), -1);
  EXPECT_EQ(KOPACErrGet(), 0xBD00);
  EXPECT_EQ(std::memcmp(&record, &full, sizeof record), 0);
  record.cSlave = 0;
  EXPECT_EQ(ZARNNetLinkAggrOptSlsaveAdd(&record, "a-name-of-twenty-chr"), 0);
  EXPECT_STREQ(record.rgszSlave[0], "a-name-of-twent");
  EXPECT_EQ(ZARNNetLinkAggrOptSlsaveAdd(&record, "a-name-of-twenty"), -1) << "the same once cut";
  EXPECT_EQ(KOPACErrGet(), 0xBB00);
}

TEST_F(Bonds, EnumCountsAllAndListsThoseWithSlaves) {
  PKOPACSZLIST list = KOPACSzListAlloc(1);
  EXPECT_EQ(ZARNNetLinkAggrExist(), 0);
  EXPECT_EQ(ZARNNetLinkAggrEnum(&list), 0) << "no driver";
  EXPECT_EQ(KOPACErrGet(), 0);
  test::WriteFile(kMasters, "bond2 bond0 bond10 bond7");
  EXPECT_EQ(ZARNNetLinkAggrExist(), 1);
  Bond("bond2", "eth0 eth1\n", "");
  Bond("bond0", "\n", "");
  Bond("bond10", "eth2", "");
  EXPECT_EQ(ZARNNetLinkAggrEnum(&list), 4);
  EXPECT_EQ(test::Items(list), (test::Lines{"bond2", "bond10"}));
  test::RemoveFile(kMasters);
  test::WriteFile(std::string(kMasters) + "/unreadable", "");
  EXPECT_EQ(ZARNNetLinkAggrExist(), -1);
  EXPECT_EQ(ZARNNetLinkAggrEnum(&list), -1);
  EXPECT_EQ(KOPACErrGet(), 0x0A00);
  KOPACSzListFree(list);
}

// The ports are the kernel's own: a member that it does not know is left out.
TEST_F(Bonds, OvsBondIsReadFromItsFile) {
  test::MountEmpty("/sys/devices/virtual/net");
  test::WriteFile("/sys/devices/virtual/net/ovs_bond0/uevent", "");
  EXPECT_EQ(Get("ovs_bond0"), 1) << "no file";
  test::WriteIfcfg("ovs_bond0", "SLAVE_LIST=\"  eth1  gone0 ovs_bond0 eth0 \"\n");
  EXPECT_EQ(Get("ovs_bond0"), 1);
  test::ExpectLog(LOG_ERR, kSource, "Failed to get key [BLOCK_CNT]");
  test::ExpectLog(LOG_ERR, kSource, "Failed to get key [BOND_MODE]");
  test::WriteIfcfg("ovs_bond0", test::ReadIfcfg("ovs_bond0") + "BOND_MODE=balance-tcp\n");
  EXPECT_EQ(Get("ovs_bond0"), 0);
  EXPECT_EQ(Slaves(), (test::Lines{"eth0", "eth1"}));
  EXPECT_EQ(record_.mode, 8U);
  test::WriteIfcfg("ovs_bond0", "SLAVE_LIST=eth0 eth0\nBOND_MODE=balance-slb\n");
  EXPECT_EQ(Get("ovs_bond0"), 1);
  test::ExpectLog(LOG_ERR, kSource, "Failed to add the slave eth0 into ZARNLINKAGGROPT");
}

TEST(BondModes, TableAndNamesAgree) {
  for (uint32_t mode = 1; mode <= 8; ++mode) {
    const ZARNBONDDESC& desc = grgBondDesc[mode];
    const std::string name = ZARNNetLinkAggrModeToString(mode);
    EXPECT_EQ(ZARNNetLinkAggrStringToMode((name + "x").c_str()), mode) << "the beginning decides";
    EXPECT_EQ(desc.szName == nullptr, mode > 5) << name;
    if (desc.szName == nullptr) continue;
    EXPECT_EQ(name, desc.szName);
    EXPECT_EQ(desc.szBondingOpts, "\"mode=" + std::string(desc.szKernelMode) +
                                      " use_carrier=0 miimon=100 updelay=100" +
                                      (mode == 2 ? " lacp_rate=fast\"" : "\""));
  }
  for (const uint32_t mode : {0U, 9U, ~0U})
    EXPECT_STREQ(ZARNNetLinkAggrModeToString(mode), "unknown");
  for (const char* name : {"", "balance-", "unknown"})
    EXPECT_EQ(ZARNNetLinkAggrStringToMode(name), 0U) << name;
}

}  // namespace
