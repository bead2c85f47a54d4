// Configuring IPv6: file, switch, DHCPv6 client, address and route in the real kernel, and back
// again on failure.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <syslog.h>

#include <zarnnetsdk/ipv6.h>

#include "support/appliance.h"
#include "support/children.h"

using namespace test;

namespace {

const char kSwitch[] = "/proc/sys/net/ipv6/conf/eth0/accept_ra";
const char kClientPid[] = "/tmp/dhclient6-eth0-start.pid";

std::string Addresses() {
  return Shell("ip -o -6 address show dev eth0 scope global | awk '{print $4}' | sort");
}
std::string Routes() {
  return Shell("ip -6 route show default dev eth0 | awk '{print $3}'");
}

// eth0 is up; the jobs of the DHCPv6 client are recorded.
struct V6Set : ::testing::Test {
  void SetUp() override {
    RecordTool("/sbin/start");
    RecordTool("/sbin/stop");
    BringUp("eth0");
    WriteIfcfg("eth0", "DEVICE=eth0\nIPV6DNS=fd00::53\n");
  }
  void TearDown() override {
    for (const std::string& name : FolderEntries("/etc/sysconfig/network-scripts")) {
      EXPECT_EQ(std::string::npos, name.find(".tmp")) << name << " is left behind";
    }
  }
};

}  // namespace

TEST_F(V6Set, EveryTypeComesBackAsItWasSet) {
  const struct {
    int type;
    const char* keys;
    const char* accept;
    const char* job;
  } cases[] = {
      {0, "IPV6INIT=auto\nIPV6_ACCEPT_RA=1\n", "2\n",
       "/sbin/stop dhcp-client6 IFACE=eth0 ACTION=stop"},
      {1, "IPV6INIT=off\nIPV6_ACCEPT_RA=0\n", "0\n",
       "/sbin/stop dhcp-client6 IFACE=eth0 ACTION=stop"},
      {2, "IPV6INIT=dhcp\nIPV6_ACCEPT_RA=0\n", "0\n",
       "/sbin/start dhcp-client6 IFACE=eth0 ACTION=start"},
      {3,
       "IPV6INIT=static\nIPV6_ACCEPT_RA=0\nIPV6ADDR=FD00::5\nIPV6PREFIXLENG=64\nIPV6_DEFAULTGW="
       "fe80::1\n",
       "0\n", "/sbin/stop dhcp-client6 IFACE=eth0 ACTION=stop"},
      {4, "IPV6INIT=auto_dhcp\nIPV6_ACCEPT_RA=1\n", "2\n",
       "/sbin/start dhcp-client6 IFACE=eth0 ACTION=start"},
  };
  for (const auto& c : cases) {
    RemoveFile("/run/recorded-calls");
    WriteIfcfg("eth0", "DEVICE=eth0\n");
    const bool fixed = c.type == 3;
    ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", c.type, fixed ? "FD00::5" : nullptr, fixed ? 64 : 0,
                                    fixed ? "fe80::1" : nullptr))
        << c.keys << LogText();
    EXPECT_EQ(std::string("DEVICE=eth0\n") + c.keys, ReadIfcfg("eth0"));
    EXPECT_EQ(c.accept, ReadFile(kSwitch)) << c.keys;
    EXPECT_EQ(Lines{c.job}, RecordedCalls());
    int type = -1;
    int prefix = -2;
    char address[46];
    char gateway[46];
    ASSERT_EQ(1, ZARNNetIPv6ConfGet("eth0", &type, address, 46, &prefix, gateway, 46));
    EXPECT_EQ(c.type, type);
    EXPECT_EQ(fixed ? 64 : -1, prefix);
    EXPECT_STREQ(fixed ? "FD00::5" : "", address);
    EXPECT_STREQ(fixed ? "fe80::1" : "", gateway);
  }
}

TEST_F(V6Set, StaticAddressAndRouteComeAndGo) {
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00:0::5", 64, "fe80::1")) << LogText();
  EXPECT_EQ("fd00::5/64\n", Addresses());
  EXPECT_EQ("fe80::1\n", Routes());
  const std::size_t lines = Log().size();
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, "fe80::1")) << "the same again";
  EXPECT_EQ(lines, Log().size()) << LogText();
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 48, "fd00::1")) << LogText();
  EXPECT_EQ("fd00::5/48\n", Addresses());
  EXPECT_EQ("fd00::1\n", Routes());
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::6", 48, nullptr)) << LogText();
  EXPECT_EQ("fd00::6/48\n", Addresses());
  EXPECT_EQ("", Routes());
  Shell("ip -6 address add fd00::77/64 dev eth0");
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 1, "", 0, ""));
  EXPECT_EQ("fd00::77/64\n", Addresses()) << "only its own address goes";
  EXPECT_EQ("DEVICE=eth0\nIPV6DNS=fd00::53\nIPV6INIT=off\nIPV6_ACCEPT_RA=0\n", ReadIfcfg("eth0"));
}

TEST_F(V6Set, AnInterfaceThatWasFlushedWhileOffIsSwitchedOnAgain) {
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", ZARNNET_IPV6_OFF, nullptr, 0, nullptr)) << LogText();
  ASSERT_EQ(0, ZARNLnxIPv6FlushAddr("eth0"));
  ASSERT_EQ("1\n", ReadFile("/proc/sys/net/ipv6/conf/eth0/disable_ipv6"));
  EXPECT_EQ(0, ZARNNetIPv6ConfSet("eth0", ZARNNET_IPV6_STATIC, "fd00::5", 64, nullptr))
      << LogText();
  EXPECT_EQ("fd00::5/64\n", Addresses());
}

TEST_F(V6Set, AnAddressThatExpiresBecomesFixed) {
  Shell("ip -6 address add fd00::5/64 dev eth0 valid_lft 900 preferred_lft 900 nodad");
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, nullptr)) << LogText();
  EXPECT_NE(std::string::npos, Shell("ip -6 address show dev eth0").find("valid_lft forever"));
  EXPECT_EQ(std::string::npos, Shell("ip -6 address show dev eth0").find("valid_lft 900"));
}

TEST_F(V6Set, ARouteLearnedFromARouterMakesWay) {
  WriteFile("/run/ra.conf",
            "port=0\nenable-ra\ndhcp-range=fd00:9::,ra-only\nra-param=lan,4,1800\ninterface=lan\n"
            "leasefile-ro\npid-file=/run/ra.pid\nuser=root\n");
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 0, nullptr, 0, nullptr));
  Shell(
      "ip -n lan -6 address add fd00:9::1/64 dev lan nodad; ip netns exec lan sysctl -qw "
      "net.ipv6.conf.lan.forwarding=1; ip netns exec lan dnsmasq -C /run/ra.conf");
  for (int i = 0; i < 150 && Routes().empty(); ++i)
    Shell("sleep 0.1");
  ASSERT_NE("", Routes()) << "no router was heard";
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00:9::5", 64, "fd00:9::1")) << LogText();
  EXPECT_EQ("fd00:9::1\n", Routes());
}

TEST_F(V6Set, CallsOfSeveralProcessesFollowEachOther) {
  for (int i = 0; i < 6; ++i) {
    Start([=] {
      const std::string address = "fd00::1" + std::to_string(i);
      return ZARNNetIPv6ConfSet("eth0", 3, address.c_str(), 64, i % 2 == 0 ? "fe80::1" : "fe80::2");
    });
  }
  int status = 0;
  while (::wait(&status) > 0)
    EXPECT_EQ(0, status);
  const std::string file = ReadIfcfg("eth0");
  const std::string address = Shell("sed -n s/IPV6ADDR=//p " + IfcfgPath("eth0"));
  EXPECT_EQ(address.substr(0, address.size() - 1) + "/64\n", Addresses()) << "one is left";
  EXPECT_NE(std::string::npos, file.find("IPV6_DEFAULTGW=" + Routes())) << file;
}

TEST_F(V6Set, ADuplicateAddressIsRemoved) {
  SleepForReal();
  Shell("ip -n lan -6 address add fd00::5/64 dev lan nodad");
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, nullptr));
  EXPECT_EQ("", Addresses());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_conf_set", "ipv6 dad fail, ip:fd00::5, pxleng:64"))
      << LogText();
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::6", 64, nullptr));
  EXPECT_EQ("fd00::6/64\n", Addresses());
}

TEST_F(V6Set, ARunningClientIsLeftAloneAndAStoppedOneIsNoFailure) {
  WriteFile(kClientPid, std::to_string(::getpid()) + "\n");
  EXPECT_EQ(0, ZARNNetIPv6ConfSet("eth0", 4, nullptr, 0, nullptr));
  EXPECT_EQ(Lines{}, RecordedCalls());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_conf_set", "DHCPv6 already running!"));
  WriteFile(kClientPid, "999999\n");
  RecordTool("/sbin/stop", 1);
  EXPECT_EQ(0, ZARNNetIPv6ConfSet("eth0", 1, nullptr, 0, nullptr)) << "a stale file";
  RemoveFile("/run/recorded-calls");
  RemoveFile(kClientPid);
  ASSERT_EQ(0, ::mkfifo(kClientPid, 0644));
  EXPECT_EQ(0, ZARNNetIPv6ConfSet("eth0", 4, nullptr, 0, nullptr)) << "a pipe is no client's file";
  EXPECT_EQ((Lines{"/sbin/start dhcp-client6 IFACE=eth0 ACTION=start"}), RecordedCalls());
}

TEST_F(V6Set, AFailingStepPutsEverythingBack) {
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, "fe80::1"));
  const std::string before = ReadIfcfg("eth0");
  RecordTool("/sbin/start", 1);
  EXPECT_EQ(-1, ZARNNetIPv6ConfSet("eth0", 4, nullptr, 0, nullptr));
  EXPECT_EQ(before, ReadIfcfg("eth0"));
  EXPECT_EQ("0\n", ReadFile(kSwitch));
  EXPECT_EQ("fd00::5/64\n", Addresses());
  EXPECT_EQ(0x2A00, KOPACErrGet());
  EXPECT_EQ(1,
            LogCount(LOG_ERR, "net_ipv6_conf_set", "Failed to start dhclient on interface [eth0]"));

  WriteFile(kClientPid, std::to_string(::getpid()) + "\n");
  RecordTool("/sbin/stop", 1);
  EXPECT_EQ(-1, ZARNNetIPv6ConfSet("eth0", 1, nullptr, 0, nullptr));
  EXPECT_EQ(before, ReadIfcfg("eth0"));
  EXPECT_EQ("fe80::1\n", Routes());
  EXPECT_EQ(1,
            LogCount(LOG_ERR, "net_ipv6_conf_set", "Failed to stop dhclient on interface [eth0]"));

  // A client that was stopped for nothing is started again; the kernel refuses the gateway ::1.
  RecordTool("/sbin/stop");
  RecordTool("/sbin/start");
  RemoveFile("/run/recorded-calls");
  EXPECT_EQ(-1, ZARNNetIPv6ConfSet("eth0", 3, "fd00::6", 64, "::1"));
  EXPECT_EQ(before, ReadIfcfg("eth0"));
  EXPECT_EQ("fd00::5/64\n", Addresses());
  EXPECT_EQ("fe80::1\n", Routes());
  EXPECT_EQ((Lines{"/sbin/stop dhcp-client6 IFACE=eth0 ACTION=stop",
                   "/sbin/start dhcp-client6 IFACE=eth0 ACTION=start"}),
            RecordedCalls());
}

TEST_F(V6Set, AMissingSwitchAnUnwritableFileAndAFullDiskChangeNothing) {
  const std::string before = ReadIfcfg("eth0");
  EXPECT_EQ(-1, ZARNNetIPv6ConfSet("nosuch0", 0, nullptr, 0, nullptr));
  EXPECT_FALSE(FileExists(IfcfgPath("nosuch0"))) << "a file that was not there";
  EXPECT_EQ(1, LogCount(LOG_ERR, "accept_ra",
                        "Failed to open file [/proc/sys/net/ipv6/conf/nosuch0/accept_ra]"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_conf_set", "Failed to enable ipv6 accept_ra"));
  EXPECT_EQ(-1, ZARNNetIPv6ConfSet("nosuch0", 1, nullptr, 0, nullptr));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_conf_set", "Failed to disable ipv6 accept_ra"));
  EXPECT_EQ(Lines{}, RecordedCalls());
  MountEmpty("/etc/sysconfig/network-scripts", "16k");
  WriteIfcfg("eth0", before);
  FillDisk("/etc/sysconfig/network-scripts");
  EXPECT_EQ(-1, ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, nullptr));
  EXPECT_EQ(before, ReadIfcfg("eth0"));
  EXPECT_EQ("1\n", ReadFile(kSwitch));
  EXPECT_EQ("", Addresses());
}

TEST_F(V6Set, BadArgumentsChangeNothing) {
  const std::string before = ReadIfcfg("eth0");
  const struct {
    const char* ifname;
    int type;
    const char* address;
    int prefix;
    const char* gateway;
    const char* message;
  } cases[] = {
      {nullptr, 0, nullptr, 0, nullptr, "Bad parameters."},
      {"../eth0", 0, nullptr, 0, nullptr, "Bad parameters."},
      {"eth0", 5, nullptr, 0, nullptr, "Bad parameters."},
      {"eth0", -1, nullptr, 0, nullptr, "Bad parameters."},
      {"eth0", 3, "fd00::5", 0, nullptr, "Bad parameters."},
      {"eth0", 3, "fd00::5", 129, nullptr, "Bad parameters."},
      {"eth0", 0, nullptr, -1, nullptr, "Bad parameters."},
      {"eth0", 3, nullptr, 64, nullptr, "IPv6 address illegal "},
      {"eth0", 3, "fd00::5/64", 64, nullptr, "IPv6 address illegal fd00::5/64"},
      {"eth0", 0, "fd00::5\nX=y", 0, nullptr, "IPv6 address illegal fd00::5\nX=y"},
      {"eth0", 3, "fd00::5", 64, "10.0.0.1", "IPv6 address illegal 10.0.0.1"},
  };
  for (const auto& c : cases) {
    Log().clear();
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ(-1, ZARNNetIPv6ConfSet(c.ifname, c.type, c.address, c.prefix, c.gateway))
        << c.message;
    EXPECT_EQ(0x0D00, KOPACErrGet()) << c.message;
    EXPECT_EQ(1, LogCount(LOG_ERR, "net_ipv6_conf_set", c.message)) << LogText();
  }
  EXPECT_EQ(before, ReadIfcfg("eth0"));
  EXPECT_EQ(Lines{}, RecordedCalls());
}
