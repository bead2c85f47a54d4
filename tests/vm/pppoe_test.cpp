// SPDX-License-Identifier: Apache-2.0
// PPPoE to a real access concentrator on the second host: the client, and the
// relay for a host behind the appliance.
#include "machine.h"

using namespace test;

namespace {

// What the distribution's scripts want beside the account: through the kernel's
// driver, no name servers of the peer's.
constexpr char kScriptSettings[] =
    "DEMAND=no\nDNSTYPE=NOCHANGE\nPEERDNS=no\nCONNECT_TIMEOUT=40\nCONNECT_POLL=1\n"
    "PIDFILE=/run/pppoe.pid\nSYNCHRONOUS=no\nCLAMPMSS=1412\nLCP_INTERVAL=20\nLCP_FAILURE=3\n"
    "PPPOE_TIMEOUT=80\nFIREWALL=NONE\nLINUX_PLUGIN=rp-pppoe.so\n";
constexpr char kPassword[] = "it's #a secret";

// On the second host, in folders of its own: both ends write their process
// numbers to /run.
void StartConcentrator(const std::string& account) {
  const std::string folder = "/etc/netns/lan/ppp/";
  WriteFile(folder + "pppoe-server-options",
            "require-pap\nlcp-echo-interval 10\nlcp-echo-failure 3\n");
  WriteFile(folder + "pap-secrets", "\"" + account + "\" * \"" + kPassword + "\" *\n", 0600);
  WriteFile(folder + "options", "auth\nlock\n");
  Do("ip netns exec lan unshare --mount sh -c 'mount -t tmpfs run /run; exec "
     "pppoe-server -I lan -L 10.67.0.1 -R 10.67.0.10"
     " -N 4 -C concentrator -F' >/var/log/concentrator 2>&1 </dev/null &");
  ASSERT_TRUE(
      Within(10, [] { return Contains(Shell("pppoe-discovery -I eth0"), "concentrator"); }));
}

PPPOE_CONF Account(const char* user) {
  PPPOE_CONF conf{};
  std::snprintf(conf.eth, sizeof conf.eth, "eth0");
  std::snprintf(conf.user, sizeof conf.user, "%s", user);
  std::snprintf(conf.password, sizeof conf.password, "%s", kPassword);
  std::snprintf(conf.mtu, sizeof conf.mtu, "1480");
  conf.defaultroute = 1;
  return conf;
}

}  // namespace

TEST(PPPoE, ASessionComesUpIsToldOfAndEnds) {
  BringUp("eth0");
  StartConcentrator("o'neil@line");
  WriteFile("/etc/ppp/pppoe.conf", kScriptSettings);
  const PPPOE_CONF conf = Account("o'neil@line");
  ASSERT_EQ(0, PPPoEConfigSet(&conf)) << LogText();
  char ifname[16] = "";
  EXPECT_EQ(0, ZARNPPPoECheckStatus(0));
  EXPECT_EQ(-1, ZARNPPPoeIntfGet(ifname, sizeof ifname));

  ASSERT_EQ(0, ZARNPPPoEService(1))
      << LogText() << Shell("cat /var/log/concentrator; ps ax; ip address");
  EXPECT_EQ(1, ZARNPPPoECheckStatus(0));
  ASSERT_EQ(0, ZARNPPPoeIntfGet(ifname, sizeof ifname))
      << LogText() << Shell("/usr/sbin/pppoe-status");
  EXPECT_STREQ("ppp0", ifname);
  char address[20] = "", mask[20] = "";
  EXPECT_EQ(0, ZARNPPPoeNetInfoGet(address, sizeof address, mask, sizeof mask)) << LogText();
  EXPECT_EQ(1480, Link("ppp0")["mtu"]);
  EXPECT_EQ(Address("ppp0"), address);
  EXPECT_STREQ("10.67.0.10", address);
  EXPECT_STREQ("255.255.255.255", mask);
  EXPECT_TRUE(Contains(Shell("ip -4 route"), "default dev ppp0"));
  EXPECT_TRUE(Contains(Shell("ping -c 1 -W 5 10.67.0.1"), "1 received"));
  EXPECT_EQ(1, ZARNNetIsDevTypeMatch("ppp0", 8));
  EXPECT_EQ(0, ZARNNetIsDevTypeMatch("ppp0", 2));

  EXPECT_EQ(0, KOPADisablePPPoEOnIf("eth1"));
  EXPECT_EQ(1, ZARNPPPoECheckStatus(0));
  EXPECT_EQ(0, KOPADisablePPPoEOnIf("eth0")) << LogText();
  EXPECT_TRUE(Within(10, [] { return !FileExists("/sys/class/net/ppp0"); }));
  EXPECT_EQ(0, ZARNPPPoECheckStatus(0));
  EXPECT_EQ(-1, ZARNPPPoeNetInfoGet(address, sizeof address, mask, sizeof mask));
}

TEST(PPPoE, AWrongPasswordGetsNoSession) {
  BringUp("eth0");
  StartConcentrator("somebody-else");
  WriteFile("/etc/ppp/pppoe.conf", std::string(kScriptSettings) + "CONNECT_TIMEOUT=8\n");
  const PPPOE_CONF conf = Account("o'neil@line");
  ASSERT_EQ(0, PPPoEConfigSet(&conf)) << LogText();
  EXPECT_EQ(-1, ZARNPPPoEService(1));
  EXPECT_EQ(0, ZARNPPPoECheckStatus(0));
  EXPECT_TRUE(Contains(ReadFile("/etc/zarninfo.conf"), "pppoe_enable=\"no\""));
}

TEST(PPPoE, TheRelayTakesAHostBehindTheBridgeToTheConcentrator) {
  BringUp("eth0");
  StartConcentrator("somebody");
  Do("ip netns add home; ip -n lan link set lan1 netns home; ip -n home link set lan1 up;"
     "ip link add br0 type bridge; ip link set eth1 master br0 up; ip link set br0 up");
  WriteIfcfg("br0", "DEVICE=br0\nTYPE=bridge\nPRIMARY=eth1\nLOCAL_LAN=yes\n");
  const std::string discover = "ip netns exec home pppoe-discovery -I lan1 -t 1";
  EXPECT_FALSE(Contains(Shell(discover), "concentrator"));

  PPPOE_RELAY_CONF conf{};
  conf.enable = 1;
  std::snprintf(conf.server, sizeof conf.server, "eth0");
  ASSERT_EQ(0, ZARNNetSetPPPoERelayConfig("br0", &conf)) << LogText();
  ASSERT_EQ(0, ZARNNetApplyPPPoERelayConfig("br0")) << LogText();
  EXPECT_TRUE(Within(10, [&] { return Contains(Shell(discover), "concentrator"); }))
      << Shell("ps ax");
  const std::string before = Shell("pgrep -x pppoe-relay");
  EXPECT_EQ(0, ZARNNetApplyPPPoERelayConfigAll()) << LogText();
  EXPECT_EQ(before, Shell("pgrep -x pppoe-relay"));

  conf.enable = 0;
  ASSERT_EQ(0, ZARNNetSetPPPoERelayConfig("br0", &conf));
  ASSERT_EQ(0, ZARNNetApplyPPPoERelayConfig("br0")) << LogText();
  EXPECT_TRUE(Within(5, [] { return Shell("pgrep -x pppoe-relay").empty(); })) << Shell("ps ax");
}
