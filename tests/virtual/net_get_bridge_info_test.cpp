// SPDX-License-Identifier: Apache-2.0
// Bridges: of the kernel, made with the real tools, and as interface files describe them.
#include <cstring>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/virtual.h>

#include "support/transcript.h"

using namespace test;

namespace {

// Is nothing left of an earlier use's bytes?
template <class Record>
bool Filled(const Record& record) {
  return std::memchr(&record, 'Z', sizeof record) == nullptr;
}

template <class Call>
void Ask(const std::string& why, Call call) {
  ZARNBRIDGEINFO info;
  std::memset(&info, 'Z', sizeof info);
  Tell(why, [&] { return call(&info); });
  Say(Filled(info)
          ? std::string(info.szName) + " is " + std::to_string(info.type) + " of " + info.szRef
          : "not filled");
}

// br0 with the ports eth0 and eth1, lan0br of the local LAN, xgbr0 that nobody lists; eth2 stands
// alone.
class Bridges : public ::testing::Test {
 protected:
  void SetUp() override {
    EXPECT_EQ(
        Shell("for b in br0 lan0br xgbr0; do ip link add $b type bridge && ip link set $b up; done;"
              "for p in eth0 eth1; do ip link set $p up master br0; done; ip link set eth2 up"),
        "");
    WriteIfcfg("br0", "DEVICE=br0\nTYPE=bridge\nPRIMARY=eth0\n");
    WriteIfcfg("lan0br", "TYPE=bridge\nLOCAL_LAN=yes\n");
    WriteIfcfg("eth0", "BRIDGE=br0\n");
  }
};

TEST_F(Bridges, RoleIsTheKernels) {
  for (const char* name : {"br0", "lan0br", "eth0", "eth1", "eth2"})
    Ask(name, [&](ZARNBRIDGEINFO* info) { return KOPANETGetBridgeInfo(name, info); });
  TELL(KOPANETGetBridgeInfo("br0", nullptr));
  for (const uint32_t kind : {0U, 2U, 4U}) {
    Ask("topology " + std::to_string(kind), [&](ZARNBRIDGEINFO* info) {
      return KOPANETGetBridgeInfoByTopology(kind == 2 ? "br0" : "eth0", info, kind);
    });
  }
  TELL(KOPANETGetBridgeInfoByTopology("", nullptr, 1));
  Shell("ip link set br0 down");
  TELL(KOPANETGetBridgeInfo("br0", nullptr));
}

TEST_F(Bridges, AreListedByRoleAndWithTheirPorts) {
  List list;
  EXPECT_EQ(KOPANetEnumBridge(list.Out(), 2), 1);
  EXPECT_EQ(KOPANetEnumBridge(list.Out(), 3), 1);
  for (const uint32_t role : {0U, 1U, 4U})
    EXPECT_EQ(KOPANetEnumBridge(list.Out(), role), 0);
  EXPECT_EQ(KOPANetEnumBridge(nullptr, 2), 1);
  EXPECT_EQ(KOPANetBridgeIfIsSlave("eth0"), 1);
  EXPECT_EQ(KOPANetBridgeIfIsSlave("br0"), 0);
  TELL(KOPANetBridgeSlaveEnum("br0", list.Out()));
  TELL(KOPANetBridgeSlaveEnum("lan0br", list.Out()));
  TELL(KOPANetBridgeSlaveEnum("eth0", list.Out()));
  EXPECT_EQ(list.Texts(), (Lines{"br0", "lan0br", "eth0", "eth1"}));
  MountEmpty("/proc/self/net");
  TELL(KOPANetEnumBridge(list.Out(), 2));
}

TEST(BridgeConfig, RoleAndSettingsAreReadFromTheFile) {
  for (const char* file :
       {"TYPE=bridge\nPRIMARY=eth0\nLOCAL_LAN=no\n",
        "TYPE=bridge\nPRIMARY=eth0\nLOCAL_LAN=yes\nBRIDGE=br9\n", "TYPE=Bridge\nBRIDGE=br0\n",
        "BRIDGE=a-name-of-twenty-chr\n", "BRIDGE=\nPRIMARY=eth0\n", "", "TYPE=bridge\n",
        "ONBOOT=yes\nBOOTPROTO=static\nIPADDR=10.0.0.5\nNETMASK=255.0.0.0\n",
        "ONBOOT=no\nBOOTPROTO=dhcp\nIPADDR=10.0.0.5\n", "BOOTPROTO=static\n"}) {
    WriteIfcfg("if0", file);
    ZARNNETIFSETTINGS settings;
    std::memset(&settings, 'Z', sizeof settings);
    Ask(file, [&](ZARNBRIDGEINFO* info) { return ZARNNetGetBridgeConfig("if0", &settings, info); });
    EXPECT_TRUE(Filled(settings));
    std::string roles;
    for (uint32_t type = 1; type <= 4; ++type)
      roles += ZARNNetIsIfBridgeType("if0", type) == 1 ? " " + std::to_string(type) : "";
    Say("role" + roles + ", static " + std::to_string(settings.blStatic) + ", on " +
        std::to_string(settings.blOnBoot) + ", " + settings.szName + " '" + settings.szIP + "' '" +
        settings.szMask + "'");
  }
  TELL(ZARNNetIsIfBridgeType("none", 4));
}

}  // namespace
