// SPDX-License-Identifier: Apache-2.0
// The PPPoE relay: settings, and the processes that follow them.
#include <cstring>

#include <zarnnetsdk/pppoe.h>

#include "support/children.h"
#include "support/transcript.h"

using namespace test;

namespace {

const std::string kFolder = "/etc/sysconfig/pppoe-relay";

PPPOE_RELAY_CONF Relay(int enable, const char* server) {
  PPPOE_RELAY_CONF conf{};
  conf.enable = enable;
  std::strcpy(conf.server, server);
  return conf;
}

void Set(const char* ifname, int enable, const std::string& server) {
  const PPPOE_RELAY_CONF conf = Relay(enable, server.c_str());
  Tell(std::string(ifname) + (enable != 0 ? " on to " : " off to ") + server,
       [&] { return ZARNNetSetPPPoERelayConfig(ifname, &conf); });
}

// A bridge of the local LAN, which alone may relay.
void MakeLan(const std::string& bridge) {
  Shell("ip link add " + bridge + " type bridge; ip link set " + bridge + " up");
  WriteIfcfg(bridge, "TYPE=bridge\nLOCAL_LAN=yes\n");
}

void Apply(const char* ifname) {
  TELL(ZARNNetApplyPPPoERelayConfig(ifname));
  Say(Shell("ps ax -o args= | grep '^/usr/sbin/pppoe-relay' | sort -u"));
}

}  // namespace

TEST(PppoeRelay, KeepsItsSettingsInOneFileAnInterface) {
  RemoveFile(kFolder);
  PPPOE_RELAY_CONF got = Relay(1, "stale");
  TELL(ZARNNetGetPPPoERelayConfig("lbr0", &got));
  Say(std::to_string(got.enable) + " '" + got.server + "'");
  for (const char* name : {"lbr0", "../evil", ".hidden", ""})
    Set(name, 1, "eth0");
  Set("lbr0", 1, "eth0\nx");
  TELL(ZARNNetGetPPPoERelayConfig("lbr0", &got));
  const PPPOE_RELAY_CONF conf = Relay(1, "eth0");
  EXPECT_EQ(1, ZARNNetIsSamePPPoERelayConfig(&conf, &got));
  got.server[3] = '1';
  EXPECT_EQ(0, ZARNNetIsSamePPPoERelayConfig(&conf, &got));
  WriteFile(kFolder + "/lbr1", "x");
  TELL(ZARNNetClearPPPoERelayConfigAll());
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
  Set("lbr1", 1, "eth0");
  Set("lbr10", 1, "eth0");
  TELL(ZARNNetApplyPPPoERelayConfigAll());
  const std::string process = Shell("pgrep -of 'pppoe-relay -C lbr1 '");
  Apply("lbr1");
  EXPECT_EQ(process, Shell("pgrep -of 'pppoe-relay -C lbr1 '")) << "left alone";
  Set("lbr1", 1, "eth3");
  Apply("lbr1");
  Set("lbr1", 0, "eth0");
  Apply("lbr1");
  Shell("ip link set lbr10 down");
  Apply("lbr10");
  WriteIfcfg("lbr1", "TYPE=bridge\n");
  Set("lbr1", 1, "eth0");
  Say("not of the local LAN");
  Apply("lbr1");
  Shell("ip link set lbr10 up");
  Set("lbr10", 1, "");
  Say("the program refuses");
  TELL(ZARNNetApplyPPPoERelayConfigAll());
}
