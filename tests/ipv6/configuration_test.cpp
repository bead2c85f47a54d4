// What interface files say of IPv6: read back, and brought to the kernel at start-up; single
// addresses and routes.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/ipv6.h>

#include "support/appliance.h"

using namespace test;

namespace {

struct Conf {
  int result = 0;
  int type = 77;
  int prefix = 77;
  char address[46] = "untouched";
  char gateway[46] = "untouched";
};

Conf Get(const char* ifname = "eth0") {
  Conf c;
  c.result = ZARNNetIPv6ConfGet(ifname, &c.type, c.address, 46, &c.prefix, c.gateway, 46);
  return c;
}

std::string Read(const std::string& file) {
  WriteIfcfg("eth0", file);
  const Conf c = Get();
  return std::to_string(c.result) + " " + std::to_string(c.type) + " " + c.address + "/" +
         std::to_string(c.prefix) + " via " + c.gateway;
}

std::string SwitchPath(const std::string& ifname) {
  return "/proc/sys/net/ipv6/conf/" + ifname + "/accept_ra";
}

}  // namespace

TEST(V6Conf, TypesAndValuesAreThoseOfTheFile) {
  Shell("ip link set eth0 up");
  const std::string rest =
      "IPV6ADDR=fd00::5\nIPV6PREFIXLENG=48\nIPV6_DEFAULTGW=fe80::1";  // no last newline
  EXPECT_EQ("1 0 fd00::5/48 via fe80::1", Read("IPV6INIT=auto\n" + rest));
  EXPECT_EQ("1 1 fd00::5/48 via fe80::1", Read("IPV6INIT=off\n" + rest));
  EXPECT_EQ("1 2 fd00::5/48 via fe80::1", Read("IPV6INIT=Dhcp\n" + rest));
  EXPECT_EQ("1 3 fd00::5/48 via fe80::1", Read("IPV6INIT=\"static\"\n" + rest));
  EXPECT_EQ("1 4 fd00::5/48 via fe80::1", Read("IPV6INIT=AUTO_DHCP\n" + rest));
  EXPECT_EQ("1 0 /-1 via ", Read("IPV6INIT=auto\n"));
  EXPECT_EQ("6 0 /-1 via ", Read("IPV6INIT=manual\n" + rest));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_conf_get",
                        "ipv6 init type undefined manual, " + IfcfgPath("eth0") + ","));
  EXPECT_EQ("0 0 /-1 via ", Read(rest));
  EXPECT_EQ(1, LogCount(LOG_INFO, "net_ipv6_conf_get", "no ipv6 configtype, first time set IPv6"));
  EXPECT_EQ("-1 3 fd00::5/-1 via ", Read("IPV6INIT=static\nIPV6PREFIXLENG=x\n" + rest));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_conf_get",
                        "not valid prefix length x, " + IfcfgPath("eth0") + ","));
}

TEST(V6Conf, WhatCannotBeReadSaysSoAndOtherInterfacesAreLeftAlone) {
  EXPECT_STREQ("untouched", Get("eth1").address) << "a down interface is of no kind";
  EXPECT_EQ(0, Get("eth1").result);
  EXPECT_EQ(-1, Get(nullptr).result);
  EXPECT_EQ(0x0D00, KOPACErrGet());
  int number = 0;
  char text[46];
  EXPECT_EQ(-1, ZARNNetIPv6ConfGet("eth0", &number, text, 45, &number, text, 46));
  EXPECT_EQ(-1, ZARNNetIPv6ConfGet("eth0", &number, text, 46, nullptr, text, 46));
  Shell("ip link set eth0 up");
  RemoveFile(IfcfgPath("eth0"));
  EXPECT_EQ(-1, Get().result);
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_conf_get",
                        "can not get ipv6 key value IPV6INIT, " + IfcfgPath("eth0") + ","));
}

TEST(V6Init, EverySwitchIsAsItsFileAsks) {
  const struct {
    const char* file;
    const char* wanted;
  } cases[] = {
      {"IPV6INIT=static\n", "0\n"},
      {"IPV6INIT=STATIC\nIPV6_ACCEPT_RA=1\n", "2\n"},
      {"IPV6INIT=auto\nIPV6_ACCEPT_RA=0\n", "0\n"},
      {"IPV6INIT=auto\nIPV6_ACCEPT_RA=00\n", "2\n"},
      {"IPV6INIT=off\n", "2\n"},
      {"BOOTPROTO=dhcp\n", "2\n"},
      {"IPV6INIT=static\nIPV6_ACCEPT_RA=\n", "0\n"},
  };
  int number = 10;
  for (const auto& c : cases) {
    const std::string name = "v6t" + std::to_string(number++);
    Shell("ip link add " + name + " type dummy; [ -e /sys/class/net/" + name +
          " ] || ip link add " + name + " type veth peer name p" + name);
    WriteIfcfg(name, c.file);
  }
  Shell("ip link add br0 type bridge; ip link set eth1 master br0");
  RemoveFile(IfcfgPath("eth2"));
  // A folder where the file of eth3 should be cannot be read, and is passed over.
  RemoveFile(IfcfgPath("eth3"));
  WriteFile(IfcfgPath("eth3") + "/in-the-way", "");
  ASSERT_EQ(0, ZARNNetIpv6Init()) << LogText();
  number = 10;
  for (const auto& c : cases) {
    EXPECT_EQ(c.wanted, ReadFile(SwitchPath("v6t" + std::to_string(number++)))) << c.file;
  }
  EXPECT_EQ("1\n", ReadFile(SwitchPath("eth1"))) << "a bridge's port";
  EXPECT_EQ("1\n", ReadFile(SwitchPath("eth2"))) << "no file";
  EXPECT_EQ("1\n", ReadFile(SwitchPath("eth3")));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_init",
                        "Failed to get key IPV6_ACCEPT_RA in " + IfcfgPath("eth3")));
}

TEST(V6Init, TheFirstMissingSwitchStopsIt) {
  MountEmpty("/proc/sys/net");
  WriteFile(SwitchPath("eth0"), "1\n");
  WriteFile(SwitchPath("eth2"), "1\n");
  EXPECT_EQ(-1, ZARNNetIpv6Init());
  EXPECT_EQ("2", ReadFile(SwitchPath("eth0")));
  EXPECT_EQ("1\n", ReadFile(SwitchPath("eth2")));
  EXPECT_EQ(1, LogCount(LOG_ERR, "accept_ra", "Failed to open file [" + SwitchPath("eth1") + "]"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_init", "Failed to set ipv6 accept_ra."));
  MountEmpty("/proc/self/net");
  EXPECT_EQ(-1, ZARNNetIpv6Init());
  EXPECT_EQ(0x0200, KOPACErrGet());
}

TEST(V6Action, AGatewayChangesTheRouteAndNothingElse) {
  RecordTool("/sbin/ip", 3);
  EXPECT_EQ(3, ZARNNetIPv6IPAction(0, "eth0", "fd00::5", 64, "fe80::1"));
  EXPECT_EQ(3, ZARNNetIPv6IPAction(1, "eth0", "fd00::5", 64, "fe80::1"));
  EXPECT_EQ(-1, ZARNNetIPv6IPAction(1, "eth0", "fd00::5", 64, nullptr));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_ip_action",
                        "set IP failed. IP = fd00::5, Netmask = , prefix = 64"));
  EXPECT_EQ((Lines{"/sbin/ip -6 route add default via fe80::1 dev eth0",
                   "/sbin/ip -6 route del default via fe80::1 dev eth0",
                   "/sbin/ip -6 address del fd00::5/64 dev eth0"}),
            RecordedCalls());
  EXPECT_EQ(-1, ZARNNetIPv6IPAction(0, "eth0", "fd00::5", 129, nullptr));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_ip_action",
                        "Paramter Prefix length 129 out of range [0, 128] "));
  EXPECT_EQ(-1, ZARNNetIPv6IPAction(2, "eth0", "fd00::5", 64, nullptr));
  EXPECT_EQ(3U, RecordedCalls().size()) << "what is refused runs nothing";
}
