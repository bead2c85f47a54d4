// The PPPoE relay: settings, and the processes that follow them.
#include <cstring>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <syslog.h>

#include <zarnnetsdk/pppoe.h>

#include "support/appliance.h"
#include "support/children.h"

using namespace test;

namespace {

const std::string kFolder = "/etc/sysconfig/pppoe-relay";

PPPOE_RELAY_CONF Relay(int enable, const char* server) {
  PPPOE_RELAY_CONF conf{};
  conf.enable = enable;
  std::strcpy(conf.server, server);
  return conf;
}

// A bridge of the local LAN, which alone may relay.
void MakeLan(const std::string& bridge) {
  Shell("ip link add " + bridge + " type bridge; ip link set " + bridge + " up");
  WriteIfcfg(bridge, "TYPE=bridge\nLOCAL_LAN=yes\n");
}

int Running(const std::string& rest) {
  return KOPACIsProcAlive(("/usr/sbin/pppoe-relay -C " + rest).c_str());
}

std::string Processes() {
  return Shell("ps ax -o pid=,args= | grep '[0-9] /usr/sbin/pppoe-relay'");
}

}  // namespace

TEST(PppoeRelay, KeepsItsSettingsInOneFileAnInterface) {
  PPPOE_RELAY_CONF got = Relay(1, "stale");
  EXPECT_EQ(0, ZARNNetGetPPPoERelayConfig("lbr0", &got));
  EXPECT_EQ(0, got.enable);
  EXPECT_STREQ("", got.server);
  EXPECT_EQ("", ReadFile(kFolder + "/lbr0"));
  EXPECT_EQ(0755, FileMode(kFolder));
  const PPPOE_RELAY_CONF conf = Relay(1, "eth0");
  ASSERT_EQ(0, ZARNNetSetPPPoERelayConfig("lbr0", &conf));
  EXPECT_EQ("enable=yes\nserver=eth0\n", ReadFile(kFolder + "/lbr0"));
  EXPECT_EQ(0, ZARNNetGetPPPoERelayConfig("lbr0", &got));
  EXPECT_EQ(1, ZARNNetIsSamePPPoERelayConfig(&conf, &got));
  got.server[3] = '1';
  EXPECT_EQ(0, ZARNNetIsSamePPPoERelayConfig(&conf, &got));
  EXPECT_EQ(0, ZARNNetIsSamePPPoERelayConfig(&conf, nullptr));
  const PPPOE_RELAY_CONF bad = Relay(1, "eth0\nx");
  for (const char* name : {"../evil", ".hidden", ""})
    EXPECT_EQ(-1, ZARNNetSetPPPoERelayConfig(name, &conf)) << name;
  EXPECT_EQ(-1, ZARNNetSetPPPoERelayConfig("lbr0", &bad));
  EXPECT_EQ(-1, ZARNNetSetPPPoERelayConfig("lbr0", nullptr));
  EXPECT_EQ("enable=yes\nserver=eth0\n", ReadFile(kFolder + "/lbr0"));
  WriteFile(kFolder + "/lbr1", "x");
  EXPECT_EQ(0, ZARNNetClearPPPoERelayConfigAll());
  EXPECT_EQ(Lines{}, FolderEntries(kFolder));
}

TEST(PppoeRelay, TheFolderHoldsNothingElseForAMoment) {
  const pid_t writer = Start([] {
    for (int i = 0; i < 300; ++i) {
      const PPPOE_RELAY_CONF conf = Relay(i % 2, i % 3 == 0 ? "eth0" : "eth1");
      if (ZARNNetSetPPPoERelayConfig("lbr0", &conf) != 0) return 1;
    }
    return 0;
  });
  int status = 0;
  while (::waitpid(writer, &status, WNOHANG) == 0) {
    for (const std::string& name : FolderEntries(kFolder))
      ASSERT_EQ("lbr0", name);
  }
  EXPECT_EQ(0, status);
  EXPECT_GT(100U, FolderEntries("/run/lock/zarncore").size()) << "no lock file for each call";
}

TEST(PppoeRelay, RunsAsTheSettingsSayAndOthersAreLeftAlone) {
  MakeLan("lbr1");
  MakeLan("lbr10");
  const PPPOE_RELAY_CONF on = Relay(1, "eth0");
  const PPPOE_RELAY_CONF other = Relay(1, "eth3");
  const PPPOE_RELAY_CONF off = Relay(0, "eth0");
  for (const char* ifname : {"lbr1", "lbr10"})
    ASSERT_EQ(0, ZARNNetSetPPPoERelayConfig(ifname, &on));
  ASSERT_EQ(0, ZARNNetApplyPPPoERelayConfigAll());
  EXPECT_GT(Running("lbr1 -S eth0"), 0) << Processes();
  EXPECT_GT(Running("lbr10 -S eth0"), 0);
  const std::string before = Processes();
  ASSERT_EQ(0, ZARNNetApplyPPPoERelayConfig("lbr1"));
  EXPECT_EQ(before, Processes()) << "left alone";
  ASSERT_EQ(0, ZARNNetSetPPPoERelayConfig("lbr1", &other));
  ASSERT_EQ(0, ZARNNetApplyPPPoERelayConfig("lbr1"));
  EXPECT_EQ(0, Running("lbr1 -S eth0"));
  EXPECT_GT(Running("lbr1 -S eth3"), 0);
  ASSERT_EQ(0, ZARNNetSetPPPoERelayConfig("lbr1", &off));
  ASSERT_EQ(0, ZARNNetApplyPPPoERelayConfig("lbr1"));
  EXPECT_EQ(0, Running("lbr1"));
  EXPECT_GT(Running("lbr10"), 0) << "lbr1 is not lbr10";
  Shell("ip link set lbr10 down");
  ASSERT_EQ(0, ZARNNetApplyPPPoERelayConfig("lbr10"));
  EXPECT_EQ(0, Running("lbr10"));
  WriteIfcfg("lbr1", "TYPE=bridge\n");
  ASSERT_EQ(0, ZARNNetSetPPPoERelayConfig("lbr1", &on));
  EXPECT_EQ(0, ZARNNetApplyPPPoERelayConfig("lbr1"));
  EXPECT_EQ(0, Running("lbr1")) << "not of the local LAN";
  EXPECT_EQ(-1, ZARNNetApplyPPPoERelayConfig(nullptr));
  Shell("ip link set lbr10 up");
  const PPPOE_RELAY_CONF nowhere = Relay(1, "");
  ASSERT_EQ(0, ZARNNetSetPPPoERelayConfig("lbr10", &nowhere));
  EXPECT_EQ(-1, ZARNNetApplyPPPoERelayConfigAll()) << "the program refuses";
}
