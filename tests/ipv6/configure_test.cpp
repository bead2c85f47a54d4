// SPDX-License-Identifier: Apache-2.0
// Configuring IPv6: file, switch, DHCPv6 client, address and route in the real kernel, and back
// again on failure.
#include <sys/stat.h>

#include <zarnnetsdk/ipv6.h>

#include "support/children.h"
#include "support/transcript.h"

using namespace test;

namespace {

const char kClientPid[] = "/tmp/dhclient6-eth0-start.pid";

std::string Addresses() {
  return Shell("ip -o -6 address show dev eth0 scope global | awk '{print $4}' | sort");
}
std::string Routes() {
  return Shell("ip -6 route show default dev eth0 | awk '{print $3}'");
}

// eth0 is up; the jobs of the DHCPv6 client are recorded.
struct V6Set : ::testing::Test {
  V6Set() {
    RecordTool("/sbin/start");
    RecordTool("/sbin/stop");
    BringUp("eth0");
    Mask("(  slept [0-9]+ ms)", "");        // as long as the kernel takes for its own address
    Mask("ORIGIN_ADDRESS=([^ ]+)", "...");  // the first of the kernel's, in no order
    WriteIfcfg("eth0", "DEVICE=eth0\nIPV6DNS=fd00::53\n");
  }
};

}  // namespace

TEST_F(V6Set, EveryTypeComesBackAsItWasSet) {
  for (int wanted = 0; wanted <= 4; ++wanted) {
    WriteIfcfg("eth0", "DEVICE=eth0\n");
    const bool fixed = wanted == 3;
    Tell("type " + std::to_string(wanted), [&] {
      return ZARNNetIPv6ConfSet("eth0", wanted, fixed ? "FD00::5" : nullptr, fixed ? 64 : 0,
                                fixed ? "fe80::1" : nullptr);
    });
    int type = -1;
    int prefix = -2;
    char address[46];
    char gateway[46];
    ASSERT_EQ(1, ZARNNetIPv6ConfGet("eth0", &type, address, 46, &prefix, gateway, 46));
    Say(std::to_string(type) + " " + address + "/" + std::to_string(prefix) + " via " + gateway);
  }
}

TEST_F(V6Set, StaticAddressAndRouteComeAndGo) {
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00:0::5", 64, "fe80::1"));
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, "fe80::1"));
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 48, "fd00::1"));
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::6", 48, nullptr));
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::6", 0, nullptr));
  Shell("ip -6 address add fd00::77/64 dev eth0");
  Say("only its own address goes");
  TELL(ZARNNetIPv6ConfSet("eth0", 1, "", 0, ""));
  ASSERT_EQ(0, ZARNLnxIPv6FlushAddr("eth0"));
  Say("flushed while off, it is switched on again");
  TELL(ZARNNetIPv6ConfSet("eth0", ZARNNET_IPV6_STATIC, "fd00::5", 64, nullptr));
}

TEST_F(V6Set, AnAddressThatExpiresBecomesFixed) {
  Shell("ip -6 address add fd00::5/64 dev eth0 valid_lft 900 preferred_lft 900 nodad");
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, nullptr));
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
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00:9::5", 64, "fd00:9::1"));
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
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, nullptr));
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::6", 64, nullptr));
}

TEST_F(V6Set, ARunningClientIsLeftAloneAndAStoppedOneIsNoFailure) {
  WriteFile(kClientPid, std::to_string(::getpid()) + "\n");
  TELL(ZARNNetIPv6ConfSet("eth0", 4, nullptr, 0, nullptr));
  WriteFile(kClientPid, "999999\n");
  RecordTool("/sbin/stop", 1);
  TELL(ZARNNetIPv6ConfSet("eth0", 1, nullptr, 0, nullptr));
  RemoveFile(kClientPid);
  ASSERT_EQ(0, ::mkfifo(kClientPid, 0644));
  Say("a pipe is no client's file");
  TELL(ZARNNetIPv6ConfSet("eth0", 4, nullptr, 0, nullptr));
}

TEST_F(V6Set, AFailingStepPutsEverythingBack) {
  ASSERT_EQ(0, ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, "fe80::1"));
  RecordTool("/sbin/start", 1);
  TELL(ZARNNetIPv6ConfSet("eth0", 4, nullptr, 0, nullptr));
  WriteFile(kClientPid, std::to_string(::getpid()) + "\n");
  RecordTool("/sbin/stop", 1);
  TELL(ZARNNetIPv6ConfSet("eth0", 1, nullptr, 0, nullptr));
  RecordTool("/sbin/stop");
  RecordTool("/sbin/start");
  Say("a gateway that the kernel refuses: the client was stopped for nothing, and is started "
      "again");
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::6", 64, "::1"));
}

TEST_F(V6Set, AMissingSwitchChangesNothing) {
  TELL(ZARNNetIPv6ConfSet("nosuch0", 0, nullptr, 0, nullptr));
  TELL(ZARNNetIPv6ConfSet("nosuch0", 1, nullptr, 0, nullptr));
}

TEST_F(V6Set, BadArgumentsChangeNothing) {
  TELL(ZARNNetIPv6ConfSet("eth0", 5, nullptr, 0, nullptr));
  TELL(ZARNNetIPv6ConfSet("eth0", -1, nullptr, 0, nullptr));
  TELL(ZARNNetIPv6ConfSet("-s", 0, nullptr, 0, nullptr));
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 129, nullptr));
  TELL(ZARNNetIPv6ConfSet("eth0", 0, nullptr, -1, nullptr));
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::5/64", 64, nullptr));
  TELL(ZARNNetIPv6ConfSet("eth0", 0, "fd00::5\nX=y", 0, nullptr));
  TELL(ZARNNetIPv6ConfSet("eth0", 3, "fd00::5", 64, "10.0.0.1"));
}
