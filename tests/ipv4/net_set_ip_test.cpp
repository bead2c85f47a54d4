// Addresses in the running kernel: which commands, in which order, what is announced, what a
// failure leaves.
#include <gtest/gtest.h>
#include <syslog.h>

#include <zarnnetsdk/ipv4.h>

#include "support/appliance.h"

using namespace test;

namespace {

const char kNetdTool[] = "/usr/zarn/sbin/zarnnetdtool";

// Every program that an address change runs, recorded; eth0 is down, so it has no carrier.
struct RecordedTools : ::testing::Test {
  void SetUp() override {
    for (const char* path : {"/sbin/ip", "/sbin/ifconfig", kNetdTool})
      RecordTool(path);
    RecordTool("/bin/ipcalc", 0, "NETWORK=192.168.50.0\n");
  }
};

std::string Addresses(const std::string& ifname) {
  return Shell("ip -o -4 address show dev " + ifname + " | awk '{print $4}'");
}

}  // namespace

TEST_F(RecordedTools, NewAddressIsAnnouncedAndItsRouteDroppedWithoutCarrier) {
  EXPECT_EQ(0, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  EXPECT_EQ(
      (Lines{"/sbin/ifconfig eth0 0.0.0.0",
             "/sbin/ifconfig eth0 192.168.50.10 netmask 255.255.255.0",
             "/bin/ipcalc -n 192.168.50.10", "/sbin/ip -4 route del 192.168.50.0/24 dev eth0"}),
      RecordedCalls());
  EXPECT_EQ((Lines{"net/ipv4_change pre IFNAME=eth0 IS_LINK=false NEW_ADDRESS=192.168.50.10 "
                   "ORIGIN_ADDRESS=0.0.0.0 PREFIX_LENGTH=-1"}),
            Events());
}

TEST_F(RecordedTools, FailedRouteDeletionIsANoteAndNoFailure) {
  RecordTool("/sbin/ip", 2);
  EXPECT_EQ(0, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  EXPECT_EQ(1, LogCount(LOG_INFO, "net_set_ip",
                        "excute cmd /sbin/ip route del 192.168.50.0/24 dev eth0 failed"))
      << LogText();
}

TEST_F(RecordedTools, AFailingCommandEndsTheChangeWhereItStands) {
  RecordTool("/bin/ipcalc", 1);
  EXPECT_EQ(-1, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_ip", "calculate Network IP failed")) << LogText();
  RecordTool("/sbin/ifconfig", 1);
  RemoveFile("/run/recorded-calls");
  EXPECT_EQ(-1, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  EXPECT_EQ((Lines{"/sbin/ifconfig eth0 0.0.0.0"}), RecordedCalls());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_ip", "excute command ifconfig eth0 0.0.0.0 failed"));
  RemoveFile("/sbin/ifconfig");
  EXPECT_EQ(-1, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add")) << "a missing program";
}

TEST_F(RecordedTools, DeletingAndFlushingAnnounceNothing) {
  EXPECT_EQ(0, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 32, "del"));
  EXPECT_EQ(0, ZARNNetSetIP("-6", "eth0", "fd00::1", 128, "del"));
  EXPECT_EQ(0, ZARNNetSetIP("-4", "eth0", nullptr, 99, "flush"))
      << "address and prefix are ignored";
  EXPECT_EQ(
      (Lines{"/sbin/ip -4 address del 192.168.50.10/32 dev eth0",
             "/sbin/ip -6 address del fd00::1/128 dev eth0", "/sbin/ip -4 address flush dev eth0"}),
      RecordedCalls());
  EXPECT_EQ(Lines{}, Events());
}

TEST_F(RecordedTools, WhatCannotBeMeantIsRefusedBeforeAnythingRuns) {
  struct Case {
    const char* type;
    const char* ifname;
    const char* ip;
    unsigned prefix;
    const char* action;
    const char* message;
  };
  const Case cases[] = {
      {"-4", "eth0", "10.0.0.1", 24, "replace", "action command is wrong. your action is replace"},
      {"-4", "eth0", "10.0.0.1", 24, nullptr, "action command is wrong. your action is "},
      {"-5", "eth0", "10.0.0.1", 24, "add", "ip type is wrong, only -4 or -6"},
      {nullptr, "eth0", "10.0.0.1", 24, "add", "ip type is wrong, only -4 or -6"},
      {"-4", "eth0", "10.0.0.1", 33, "add", "prefix length is wrong"},
      {"-6", "eth0", "fd00::1", 129, "add", "prefix length is wrong"},
      {"-4", "eth0", "300.1.1.1", 24, "add", "your ip 300.1.1.1 is not valid"},
      {"-4", "eth0", nullptr, 24, "del", "your ip  is not valid"},
      {"-6", "eth0", "fd00::g", 64, "del", "your v6ip fd00::g is not valid"},
      {"-4", "", "10.0.0.1", 24, "add", "get old v4 IP failed"},
      {"-6", nullptr, "fd00::1", 64, "add", "get old v6 IP failed"},
      {"-4", "", nullptr, 0, "flush", "flush ip failed"},
  };
  for (const Case& c : cases) {
    Log().clear();
    EXPECT_EQ(-1, ZARNNetSetIP(c.type, c.ifname, c.ip, c.prefix, c.action)) << c.message;
    EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_ip", c.message)) << LogText();
  }
  EXPECT_EQ(Lines{}, RecordedCalls());
  EXPECT_EQ(Lines{}, Events());
}

TEST(RealKernel, TheSameAddressAgainRefreshesTheRulesInsteadOfAnnouncing) {
  RecordTool(kNetdTool, 3);
  ASSERT_EQ(0, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add")) << LogText();
  EXPECT_EQ("192.168.50.10/24\n", Addresses("eth0"));
  EXPECT_EQ(1U, Events().size());
  EXPECT_EQ(Lines{}, RecordedCalls()) << "a new address does not refresh";
  ASSERT_EQ(0, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  EXPECT_EQ(1U, Events().size());
  EXPECT_EQ((Lines{std::string(kNetdTool) + " --refresh-static-route-rules -4"}), RecordedCalls());
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_ip", "Failed to refresh static route rules."));
  ASSERT_EQ(0, ZARNNetSetIP("-4", "eth0", "10.1.2.3", 32, "add")) << LogText();
  EXPECT_EQ("10.1.2.3/32\n", Addresses("eth0")) << "the new address replaces the old one";
  ASSERT_EQ(0, ZARNNetFlushIP("-4", "eth0"));
  EXPECT_EQ("", Addresses("eth0"));
}

TEST(RealKernel, AnAddressThatTheKernelRefusesLeavesTheInterfaceWithoutOne) {
  ASSERT_EQ(0, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  WriteFile("/run/ifconfig", ReadFile("/sbin/ifconfig"), 0755);
  WriteFile("/sbin/ifconfig",
            "#!/bin/sh\n[ \"$2\" = 0.0.0.0 ] && exec /run/ifconfig \"$@\"\nexit 1\n", 0755);
  EXPECT_EQ(-1, ZARNNetSetIP("-4", "eth0", "192.168.50.11", 24, "add"));
  EXPECT_EQ("", Addresses("eth0"));
  EXPECT_EQ(1, LogCount(LOG_ERR, "net_set_ip",
                        "excute command ifconfig eth0 192.168.50.11 netmask 255.255.255.0 failed"));
}

TEST(RealKernel, OnlyAnIpv6AddressThatIsNewIsAnnounced) {
  Shell("ip link set eth0 up");
  ASSERT_EQ(0, ZARNNetSetIP("-6", "eth0", "fd00::10", 64, "add")) << LogText();
  EXPECT_NE(std::string::npos, Shell("ip -6 address show dev eth0").find("fd00::10/64"));
  ASSERT_EQ(1U, Events().size());
  EXPECT_NE(std::string::npos, Events()[0].find("net/ipv6_change pre IFNAME=eth0"));
  EXPECT_NE(std::string::npos, Events()[0].find("NEW_ADDRESS=fd00::10"));
  EXPECT_NE(std::string::npos, Events()[0].find("PREFIX_LENGTH=64"));
  EXPECT_EQ(-1, ZARNNetSetIP("-6", "eth0", "fd00::10", 64, "add")) << "the kernel has it already";
  EXPECT_EQ(1U, Events().size());
  ASSERT_EQ(0, ZARNNetSetIP("-6", "eth0", "fd00::10", 64, "del"));
  EXPECT_EQ(std::string::npos, Shell("ip -6 address show dev eth0").find("fd00::10/64"));
}
