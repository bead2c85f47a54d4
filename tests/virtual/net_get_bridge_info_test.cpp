// Bridges: of the kernel, made with the real tools, and as interface files describe them.
#include <cstring>
#include <gtest/gtest.h>
#include <string>
#include <syslog.h>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/virtual.h>

#include "support/appliance.h"

namespace {

constexpr char kConfigSource[] = "net_get_bridge_config";

// br0 with the ports eth0 and eth1, lan0br of the local LAN, xgbr0 that nobody lists; eth2 stands
// alone.
class Bridges : public ::testing::Test {
 protected:
  void SetUp() override {
    EXPECT_EQ(
        test::Shell(
            "for b in br0 lan0br xgbr0; do ip link add $b type bridge && ip link set $b up; done;"
            "for p in eth0 eth1; do ip link set $p up master br0; done; ip link set eth2 up"),
        "");
    test::WriteIfcfg("br0", "DEVICE=br0\nTYPE=bridge\nPRIMARY=eth0\n");
    test::WriteIfcfg("lan0br", "TYPE=bridge\nLOCAL_LAN=yes\n");
    test::WriteIfcfg("eth0", "BRIDGE=br0\n");
  }

  int Info(const char* name) {
    std::memset(&info_, 0x5A, sizeof info_);
    return KOPANETGetBridgeInfo(name, &info_);
  }

  ZARNBRIDGEINFO info_{};
};

TEST_F(Bridges, RoleIsTheKernels) {
  struct {
    const char* name;
    int role;
    const char* reference;
  } const rows[] = {
      {"br0", 2, "eth0"}, {"lan0br", 3, ""}, {"eth0", 4, "br0"}, {"eth1", 4, ""}, {"eth2", 1, ""}};
  for (const auto& row : rows) {
    EXPECT_EQ(Info(row.name), row.role) << row.name;
    EXPECT_EQ(info_.type, static_cast<uint32_t>(row.role));
    EXPECT_STREQ(info_.szName, row.name);
    EXPECT_STREQ(info_.szRef, row.reference) << row.name;
    EXPECT_EQ(KOPANETGetBridgeInfo(row.name, nullptr), row.role);
  }
  test::ExpectLog(LOG_ERR, "net_get_bridge_info",
                  "Failed to get key[PRIMARY] in file[" + test::IfcfgPath("lan0br") + "].");
  test::ExpectLog(LOG_ERR, "net_get_bridge_info",
                  "Failed to get key[BRIDGE] in file[" + test::IfcfgPath("eth1") + "].");
  test::Shell("ip link set br0 down");
  EXPECT_EQ(Info("br0"), 0) << "down, whatever its file says";
  for (const uint32_t kind : {0U, 4U})
    EXPECT_EQ(KOPANETGetBridgeInfoByTopology("eth0", &info_, kind), 0);
  EXPECT_EQ(KOPANETGetBridgeInfoByTopology("", &info_, 1), 0) << "empty rows end the table";
  EXPECT_EQ(KOPANETGetBridgeInfoByTopology("br0", &info_, 2), 2);
  EXPECT_STREQ(info_.szRef, "eth0");
}

TEST_F(Bridges, AreListedByRoleAndWithTheirPorts) {
  PKOPACSZLIST list = KOPACSzListAlloc(1);
  EXPECT_EQ(KOPANetEnumBridge(&list, 2), 1);
  EXPECT_EQ(KOPANetEnumBridge(&list, 3), 1);
  for (const uint32_t role : {0U, 1U, 4U})
    EXPECT_EQ(KOPANetEnumBridge(&list, role), 0);
  EXPECT_EQ(test::Items(list), (test::Lines{"br0", "lan0br"}));
  EXPECT_EQ(KOPANetEnumBridge(nullptr, 2), 1);
  KOPACSzListRemoveAll(list);
  EXPECT_EQ(KOPANetBridgeSlaveEnum("br0", &list), 2);
  EXPECT_EQ(test::Items(list), (test::Lines{"eth0", "eth1"}));
  EXPECT_EQ(KOPANetBridgeSlaveEnum("lan0br", &list), 0);
  EXPECT_EQ(KOPANetBridgeSlaveEnum("eth0", &list), -1);
  test::ExpectLog(LOG_ERR, "net_bridge_slave_enum", "[eth0] is not bridge master.");
  test::MountEmpty("/proc/self/net");
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(KOPANetEnumBridge(&list, 2), -1);
  EXPECT_EQ(KOPACErrGet(), 0x0200);
  KOPACSzListFree(list);
}

TEST(BridgeConfig, TypeIsReadFromTheFile) {
  struct {
    const char* file;
    uint32_t type;
    const char* reference;
  } const rows[] = {
      {"TYPE=bridge\nPRIMARY=eth0\nLOCAL_LAN=no\n", 2, "eth0"},
      {"TYPE=bridge\nPRIMARY=eth0\nLOCAL_LAN=yes\nBRIDGE=br9\n", 3, "eth0"},
      {"TYPE=Bridge\nBRIDGE=br0\n", 1, "br0"},
      {"BRIDGE=a-name-of-twenty-chr\n", 1, "a-name-of-twent"},
      {"BRIDGE=\nPRIMARY=eth0\n", 4, ""},
      {"", 4, ""},
      {"TYPE=bridge\n", 2, ""},
  };
  for (const auto& row : rows) {
    test::WriteIfcfg("if0", row.file);
    ZARNBRIDGEINFO info;
    std::memset(&info, 0x5A, sizeof info);
    EXPECT_EQ(ZARNNetGetBridgeConfig("if0", nullptr, &info), 0);
    EXPECT_EQ(info.type, row.type) << row.file;
    EXPECT_STREQ(info.szName, "if0");
    EXPECT_STREQ(info.szRef, row.reference) << row.file;
    for (uint32_t type = 1; type <= 4; ++type) {
      EXPECT_EQ(ZARNNetIsIfBridgeType("if0", type), type == row.type ? 1 : 0) << row.file;
    }
  }
  const std::string message = "Failed to get key[PRIMARY] in file[" + test::IfcfgPath("if0") + "].";
  test::ExpectLog(LOG_ERR, kConfigSource, message, 5);
  EXPECT_EQ(ZARNNetIsIfBridgeType("none", 4), 0);
  const std::string none = "Failed to access [" + test::IfcfgPath("none") + "].";
  test::ExpectLog(LOG_ERR, kConfigSource, none);
}

TEST(BridgeConfig, SettingsAreReadFromTheFile) {
  struct {
    const char* file;
    ZARNNETIFSETTINGS settings;
  } const rows[] = {
      {"ONBOOT=yes\nBOOTPROTO=static\nIPADDR=10.0.0.5\nNETMASK=255.0.0.0\n",
       {1, 1, "if0", "10.0.0.5", "255.0.0.0"}},
      {"ONBOOT=no\nBOOTPROTO=dhcp\nIPADDR=10.0.0.5\n", {0, 0, "if0", "", ""}},
      {"BOOTPROTO=static\n", {1, 0, "if0", "", ""}},
  };
  for (const auto& row : rows) {
    test::WriteIfcfg("if0", row.file);
    ZARNNETIFSETTINGS settings;
    std::memset(&settings, 0x5A, sizeof settings);
    EXPECT_EQ(ZARNNetGetBridgeConfig("if0", &settings, nullptr), 0);
    EXPECT_EQ(std::memcmp(&settings, &row.settings, sizeof settings), 0) << row.file;
  }
  const std::string message = "Failed to get key[PRIMARY] in file[" + test::IfcfgPath("if0") + "].";
  test::ExpectLog(LOG_ERR, kConfigSource, message, 2);
}

}  // namespace
