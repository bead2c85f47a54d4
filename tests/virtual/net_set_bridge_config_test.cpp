// The part in a bridge as it is written: whole files, and what is refused.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/virtual.h>

#include "support/appliance.h"

using namespace test;

namespace {

const ZARNNETIFSETTINGS kStatic{1, 0, "eth0", "10.0.0.5", "255.0.0.0"};
const ZARNNETIFSETTINGS kDhcp{0, 1, "eth0", "ignored\nX=1", ""};
const char kOld[] =
    "DEVICE=eth0\nTYPE=bridge\nPRIMARY=eth9\nBRIDGE=br9\nLOCAL_LAN=yes\nMTU=9000\nIPADDR=1.1.1.1\n"
    "NETMASK=255.255.0.0\nBOOTPROTO=static\nONBOOT=maybe";

Lines Sorted(const std::string& text) {
  WriteFile("/tmp/unsorted", text);
  Lines lines{Shell("sort /tmp/unsorted")};
  return lines;
}

TEST(BridgeWriter, WritesEachRoleAndKeepsTheOldFile) {
  struct {
    uint32_t type;
    const ZARNNETIFSETTINGS* settings;
    const char* file;
  } const rows[] = {
      {1, nullptr,
       "BOOTPROTO=static\nDEVICE=eth0\nIPADDR=1.1.1.1\nMTU=9000\nNETMASK=255.255.0.0\nONBOOT="
       "maybe\n"},
      {2, &kStatic,
       "BOOTPROTO=static\nDEVICE=eth0\nIPADDR=10.0.0.5\nMTU=9000\nNETMASK=255.0.0.0\nONBOOT="
       "no\nPRIMARY=ref0\nTYPE=bridge\n"},
      {3, &kDhcp,
       "BOOTPROTO=dhcp\nDEVICE=eth0\nLOCAL_LAN=yes\nMTU=9000\nONBOOT=yes\nPRIMARY=ref0\nTYPE="
       "bridge\n"},
      {4, &kDhcp, "BOOTPROTO=dhcp\nBRIDGE=ref0\nDEVICE=eth0\nMTU=9000\nONBOOT=yes\n"},
  };
  for (const auto& row : rows) {
    WriteIfcfg("eth0", kOld);
    const ZARNBRIDGEINFO info{row.type, "eth0", "ref0"};
    ASSERT_EQ(0, ZARNNetSetBridgeConfig(row.settings, &info)) << LogText();
    EXPECT_EQ(Sorted(row.file), Sorted(ReadIfcfg("eth0"))) << row.type;
    EXPECT_EQ(kOld, ReadFile(IfcfgPath("eth0") + ".saved"));
  }
  ASSERT_EQ(0, ZARNNetDisableBridgeSlave(&kStatic));
  EXPECT_EQ(Sorted("BOOTPROTO=static\nDEVICE=eth0\nIPADDR=10.0.0.5\nMTU=9000\nNETMASK=255.0.0."
                   "0\nONBOOT=yes\n"),
            Sorted(ReadIfcfg("eth0")));
  EXPECT_NE(std::string::npos, ReadFile(IfcfgPath("eth0") + ".saved").find("BRIDGE=ref0"));
  const ZARNBRIDGEINFO fresh{4, "eth7", "br0"};
  ASSERT_EQ(0, ZARNNetSetBridgeConfig(nullptr, &fresh));
  EXPECT_EQ(Sorted("BRIDGE=br0\nDEVICE=eth7\n"), Sorted(ReadIfcfg("eth7")));
  EXPECT_FALSE(FileExists(IfcfgPath("eth7") + ".saved"));
}

TEST(BridgeWriter, RefusesWhatIsNoRoleNameOrAddress) {
  WriteIfcfg("eth0", kOld);
  const ZARNBRIDGEINFO wrong[] = {
      {1, "", ""}, {4, "../eth0", "br0"}, {4, "eth0", "br0\nX=1"}, {5, "eth0", ""}};
  for (const ZARNBRIDGEINFO& info : wrong) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNNetSetBridgeConfig(nullptr, &info));
    EXPECT_EQ(0x0D00, KOPACErrGet());
  }
  EXPECT_EQ(-1, ZARNNetSetBridgeConfig(&kStatic, nullptr));
  const ZARNNETIFSETTINGS evil{1, 1, "eth0", "1.1.1.1\nX=1", "255.0.0.0"};
  EXPECT_EQ(-1, ZARNNetDisableBridgeSlave(&evil));
  EXPECT_EQ(-1, ZARNNetDisableBridgeSlave(nullptr));
  EXPECT_EQ(4, LogCount(LOG_ERR, "net_set_bridge_config", "Wrong Parameter.")) << LogText();
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_bridge_config",
                        "Failed to set bridge config with wrong type."));
  EXPECT_EQ(kOld, ReadIfcfg("eth0"));
  EXPECT_FALSE(FileExists(IfcfgPath("eth0") + ".saved"));
}

}  // namespace
