// The MTU of an interface: in the settings, in the kernel, and in what plugins hear.
#include <gtest/gtest.h>
#include <syslog.h>
#include <utility>

#include <zarnnetsdk/ipv4.h>

#include "support/kernel_answers.h"

using namespace test;

namespace {

const char kInfo[] = "/etc/zarninfo.conf";

Lines operator+(Lines a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

Lines Applied(const std::string& ifname, const std::string& mtu) {
  return {ifname + " down", ifname + " " + mtu, ifname + " up"};
}

Lines TakeChanges() {
  return std::exchange(Kernel().changes, {});
}

std::string State(const std::string& ifname) {
  const bool up = Shell("ip link show " + ifname).find(",UP") != std::string::npos;
  std::string mtu = ReadFile("/sys/class/net/" + ifname + "/mtu");
  if (!mtu.empty()) mtu.pop_back();
  return mtu + (up ? " up" : " down");
}

Lines MtuEvents(const std::string& ifname, const std::string& mtu) {
  const std::string arguments = " IFACE=" + ifname + " MTU_VALUE=" + mtu;
  return {"net/mtu_change pre" + arguments, "net/mtu_change post" + arguments};
}

Lines TakeEvents() {
  const Lines events = Events();
  RemoveFile("/var/log/plugin-events.log");
  return events;
}

void AddOvsBond() {
  Shell("ip link add ovs_bond0 type bridge");
  WriteIfcfg("ovs_bond0", "SLAVE_LIST=eth1 eth0\nBOND_MODE=balance-slb\n");
}

}  // namespace

TEST(MtuSetting, IsKeptUnderTheNameThatCarriesTheTraffic) {
  char mtu[8] = "stale";
  WriteFile(kInfo, "a=\"1\"\neth0_mtu=\"1400\"\nb=\"2\"");
  Kernel().vlanParents["eth0.10"] = "eth0";
  Shell("ip link add ovs_eth2 type bridge");
  EXPECT_EQ(0, ZARNConfGetMTUValue("eth1", mtu, sizeof mtu));
  EXPECT_STREQ("1500", mtu);
  EXPECT_EQ(0, ZARNConfSetMTUValue("9000", "eth0.10"));
  EXPECT_EQ(0, ZARNConfSetMTUValue("2000", "ovs_eth2"));
  EXPECT_EQ(0, ZARNConfSetMTUValue("2001", "a-name-too-long-for-the-kernel"));
  EXPECT_EQ(
      "a=\"1\"\neth0_mtu=\"9000\"\nb=\"2\"\neth0.10_mtu=\"9000\"\neth2_mtu=\"2000\"\n"
      "a-name-too-long-_mtu=\"2001\"\n",
      ReadFile(kInfo));
  EXPECT_EQ(0, ZARNConfGetMTUValue("ovs_eth2", mtu, sizeof mtu));
  EXPECT_STREQ("2000", mtu);
  EXPECT_EQ(0, ZARNConfGetMTUValue("eth0", mtu, 3)) << "cut to the buffer";
  EXPECT_STREQ("90", mtu);
  EXPECT_EQ(Lines{}, Kernel().changes) << "the kernel is left alone";
}

TEST(MtuSetting, AFailureLeavesTheFile) {
  char mtu[8];
  const char kOld[] = "eth0_mtu=\"1400\"\n";
  WriteFile(kInfo, kOld);
  EXPECT_EQ(-1, ZARNConfSetMTUValue("9000\nadmin=\"yes", "eth0"));
  EXPECT_EQ(1, LogText().starts_with("3 net_conf_mtu_value:")) << LogText();
  EXPECT_NE(std::string::npos, LogText().find(" Failed to set eth0 MTU config value[0x"));
  EXPECT_EQ(-1, ZARNConfSetMTUValue("9000", "eth0=\"1\"\nadmin"));
  for (const auto& [value, name] :
       {std::pair<const char*, const char*>{nullptr, "eth0"}, {"", "eth0"}, {"9000", nullptr}}) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNConfSetMTUValue(value, name));
    EXPECT_EQ(0x0D00, KOPACErrGet());
  }
  {
    const LockHolder other(0x806);
    EXPECT_EQ(-1, ZARNConfSetMTUValue("9000", "eth0"));
    EXPECT_NE(std::string::npos, LogText().find(" Failed to lock zarninfo [0x")) << LogText();
  }
  EXPECT_EQ(kOld, ReadFile(kInfo));
  MountEmpty("/etc", "16k");
  WriteFile(kInfo, kOld);
  FillDisk("/etc");
  Kernel().vlanParents["eth0.10"] = "eth0";
  Log().clear();
  EXPECT_EQ(-1, ZARNConfSetMTUValue("9000", "eth0.10"));
  EXPECT_EQ(2U, Log().size()) << "both writes are tried: " << LogText();
  EXPECT_EQ(kOld, ReadFile(kInfo));
  const LockHolder free(0x806);
  RemoveFile(kInfo);
  EXPECT_EQ(-1, ZARNConfGetMTUValue("eth0", mtu, sizeof mtu));
  EXPECT_NE(std::string::npos, LogText().find("3 ZARNConfGetMTUValue (")) << LogText();
}

TEST(MtuApply, TheKernelHasTheValueAndTheInterfaceIsUp) {
  EXPECT_EQ(0, ZARNNetSetMTUEth("1400", "eth0")) << LogText();
  EXPECT_EQ("1400 up", State("eth0"));
  EXPECT_EQ(1, LogCount(LOG_WARNING, "net_set_mtu_eth",
                        "we temporarily do the eth up/down in sdk when setting MTU"));
  for (const char* refused : {"5", "0", "-1", "99999999", "x"}) {
    EXPECT_EQ(-1, ZARNNetSetMTUEth(refused, "eth0")) << refused;
    EXPECT_EQ("1400 up", State("eth0")) << refused;
  }
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_mtu_eth", "Failed to set MTU 5 of eth0")) << LogText();
  EXPECT_EQ(-1, ZARNNetSetMTUEth("1400", "nosuch0"));
  EXPECT_EQ(0, ZARNGetMTU("nosuch0"));
  EXPECT_EQ(1400, ZARNGetMTU("eth0"));
  Shell("ip link set eth3 name fifteen-letters");
  EXPECT_EQ(-1, ZARNNetSetMTUEth("1400", "fifteen-letters6"))
      << "not the interface it would be if cut";
  EXPECT_EQ(0, ZARNGetMTU("fifteen-letters6"));
  EXPECT_EQ("1500 down", State("fifteen-letters"));
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ(-1, ZARNNetSetMTUEth("1400", "eth0-of-17-letters"));
  EXPECT_EQ(0x0D00, KOPACErrGet());
  EXPECT_EQ(-1, ZARNGetMTU("eth0-of-17-letters"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_get_mtu", "interface name is too long"));
}

TEST(MtuApply, AVlanFollowsItsParent) {
  Shell("ip link add eth0.10 type bridge");
  Kernel().vlanParents = {
      {"eth0.10", "eth0"}, {"eth1", "eth1"}, {"eth2", "eth3"}, {"eth3", "eth2"}};
  EXPECT_EQ(0, ZARNNetSetMTUEth("1400", "eth0.10"));
  EXPECT_EQ(Applied("eth0", "1400") + Applied("eth0.10", "1400"), TakeChanges());
  EXPECT_EQ(-1, ZARNNetSetMTUEth("5", "eth0.10")) << "the parent refuses";
  EXPECT_EQ(Applied("eth0", "5") + Lines{"eth0.10 up"}, TakeChanges());
  for (const char* endless : {"eth1", "eth2"}) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNNetSetMTUEth("1400", endless));
    EXPECT_EQ(0x8100, KOPACErrGet());
    EXPECT_EQ("1500 up", State(endless));
  }
}

TEST(MtuApply, OpenSwitchDevicesStandForTheirPorts) {
  Shell("ip link add ovs_eth2 type bridge; ip link add ovs_ type bridge");
  EXPECT_EQ(0, ZARNNetSetMTUEth("1400", "ovs_eth2"));
  EXPECT_EQ(Applied("eth2", "1400"), TakeChanges());
  EXPECT_EQ(1400, ZARNGetMTUSetting("ovs_eth2"));
  AddOvsBond();
  EXPECT_EQ(0, ZARNNetSetMTUEth("1300", "ovs_bond0")) << LogText();
  EXPECT_EQ(Applied("eth0", "1300") + Applied("eth1", "1300"), TakeChanges());
  EXPECT_EQ(0, ZARNNetSetMTUEth("1350", "eth1"));
  EXPECT_EQ(1350, ZARNGetMTUSetting("ovs_bond0")) << "the largest";
  TakeChanges();
  EXPECT_EQ(-1, ZARNNetSetMTUEth("5", "ovs_bond0"));
  EXPECT_EQ(Applied("eth0", "5"), TakeChanges()) << "stops at the first that refuses";
  EXPECT_EQ(
      1, LogCount(LOG_ERR, "net_set_mtu_eth", "Failed to set the MTU 5 to OVS bonding slave eth0"));
  RemoveFile(IfcfgPath("ovs_bond0"));
  for (const char* broken : {"ovs_bond0", "ovs_"}) {
    EXPECT_EQ(-1, ZARNNetSetMTUEth("1400", broken));
    EXPECT_EQ(-1, ZARNGetMTUSetting(broken));
  }
  for (const char* source : {"net_set_mtu_eth", "net_get_mtu"}) {
    EXPECT_EQ(1, LogCount(LOG_ERR, source, "Failed to get OVS bond slave of ovs_bond0"));
    EXPECT_EQ(1, LogCount(LOG_ERR, source, "get ovs origin interface error"));
  }
}

TEST(Mtu, IsStoredAppliedAndTold) {
  EXPECT_EQ(0, ZARNNetSetMTUValue("1400", "eth0")) << LogText();
  EXPECT_EQ("eth0_mtu=\"1400\"\n", ReadFile(kInfo));
  EXPECT_EQ("1400 up", State("eth0"));
  EXPECT_EQ(MtuEvents("eth0", "1400"), TakeEvents());
  EXPECT_EQ(5000, SleptMilliseconds());
  Shell("ip link add ovs_eth2 type bridge");
  WriteFile("/usr/zarn/plugins/net/mtu_change/99-broken", "#!/bin/sh\nexit 1\n", 0755);
  EXPECT_EQ(0, ZARNNetSetMTUValue("1400", "ovs_eth2")) << "a failing plugin stops nothing";
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_mtu_value", "Failed to send mtu change prehook"));
  EXPECT_EQ("eth0_mtu=\"1400\"\neth2_mtu=\"1400\"\n", ReadFile(kInfo));
  EXPECT_EQ("1400 up", State("eth2"));
  EXPECT_EQ(MtuEvents("ovs_eth2", "1400"), TakeEvents());
}

TEST(Mtu, JumboIsKeptBackFromSlowLinksOnly) {
  const struct {
    unsigned speed;
    const char* mtu;
    bool applied;
  } cases[] = {{100, "9000", false},
               {999, "1500", false},
               {100, "1499", true},
               {1000, "9000", true},
               {0xFFFFFFFF, "9000", true}};
  for (const auto& c : cases) {
    Kernel().driver = PoorDriver{c.speed};
    Shell("ip link set eth0 mtu 1450");
    EXPECT_EQ(0, ZARNNetSetMTUValue(c.mtu, "eth0"));
    EXPECT_EQ(c.applied ? Applied("eth0", c.mtu) : Lines{}, TakeChanges()) << c.speed;
    EXPECT_EQ("eth0_mtu=\"" + std::string(c.mtu) + "\"\n", ReadFile(kInfo));
    EXPECT_EQ(MtuEvents("eth0", c.mtu), TakeEvents());
  }
  EXPECT_EQ(1,
            LogCount(LOG_WARNING, "net_set_mtu_value",
                     "Skip setting Jumbo MTU 9000 to eth0 which link-speed is lower than 1Gbps."));
}

TEST(Mtu, AfterAFailureThereIsNoSecondEventExceptForABond) {
  EXPECT_EQ(-1, ZARNNetSetMTUValue("5", "eth0"));
  EXPECT_EQ(-1, ZARNNetSetMTUValue("1400", "nosuch0"));
  EXPECT_EQ("eth0_mtu=\"5\"\nnosuch0_mtu=\"1400\"\n", ReadFile(kInfo)) << "stored first and kept";
  EXPECT_EQ("1500 up", State("eth0"));
  EXPECT_EQ((Lines{MtuEvents("eth0", "5")[0], MtuEvents("nosuch0", "1400")[0]}), TakeEvents());
  EXPECT_EQ(0, SleptMilliseconds());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_mtu_value", "Failed to set MTU 5 of eth0"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_mtu_value", "Can not get EthInfo(BC00).")) << LogText();
  WriteFile(kInfo, "");
  AddOvsBond();
  EXPECT_EQ(-1, ZARNNetSetMTUValue("5", "ovs_bond0"));
  EXPECT_EQ("ovs_bond0_mtu=\"5\"\neth0_mtu=\"5\"\n", ReadFile(kInfo))
      << "stops at the first member";
  EXPECT_EQ(MtuEvents("ovs_bond0", "5"), TakeEvents());
  EXPECT_EQ(5000, SleptMilliseconds());
  EXPECT_EQ(0, ZARNNetSetMTUValue("1400", "ovs_bond0"));
  EXPECT_EQ("ovs_bond0_mtu=\"1400\"\neth0_mtu=\"1400\"\neth1_mtu=\"1400\"\n", ReadFile(kInfo));
  EXPECT_EQ("1400 up", State("eth1"));
}
