// SPDX-License-Identifier: Apache-2.0
// What changes do to the machine, and that they take it back.
#include <array>
#include <csignal>
#include <gtest/gtest.h>
#include <unistd.h>
#include <zarnnetchange/change.h>

#include "record/change_lock.h"
#include "support/transcript.h"
#include "wish.h"

using namespace test;

namespace {

// A port as an administrator has it: a second address, the default route, an address of IPv6.
void SetUpEth0() {
  Mask("^    [-+]([0-9]+)$", "PID");
  Mask(R"(^    [-+](.*\\x[0-9a-f][0-9a-f].*)$)", "CIPHER");
  MakeCipherKey();
  WriteIfcfg("eth0",
             "DEVICE=eth0\nONBOOT=yes\nBOOTPROTO=static\nIPADDR=192.168.50.10\n"
             "NETMASK=255.255.255.0\n");
  BringUp("eth0");
  Shell(
      "echo 0 >/proc/sys/net/ipv6/conf/eth0/dad_transmits;"
      "ip address add 192.168.50.10/24 dev eth0; ip address add 10.7.0.1/16 dev eth0;"
      "ip -6 address add 2001:db8::5/64 dev eth0 nodad;"
      "ip route add default via 192.168.50.1 dev eth0; ip route add 10.99.0.0/16 via 10.7.0.9");
}

volatile std::sig_atomic_t interrupted = 0;
volatile std::sig_atomic_t interruptedOnTheWay = 0;

}  // namespace

TEST(Effects, TheMachinesNameServersAndGateway) {
  SetUpEth0();
  Make(R"({"host":{"name":"nas"},"dns":{"servers":["192.168.50.1","2001:db8::53"]},)"
       R"("routes":{"gateway":"192.168.50.1"}})");
  Make(R"({"host":{"name":"nas"},"dns":{"mode":"static"},"routes":{"gateway":"192.168.50.1"}})");
  Make(R"({"dns":null,"routes":{"gateway":null}})");
}

TEST(Effects, AnAddressTakesNothingElseWithIt) {
  SetUpEth0();
  Make(R"({"interfaces":{"eth0":{"ipv4":{"address":"192.168.50.11"}}}})");
  Say(Shell("ip -br address show eth0; ip route"));
  Make(R"({"interfaces":{"eth0":{"mtu":1400,"block":["ha"],"on_boot":false}}})");
  Make(R"({"interfaces":{"eth0":{"ipv4":{"method":"none"},"block":null}}})", R"({"insist":true})");
}

TEST(Effects, ALeaseIsAwaited) {
  SetUpEth0();
  Make(R"({"interfaces":{"eth1":{"ipv4":{"method":"dhcp"}}}})");
  Make(R"({"interfaces":{"eth1":{"ipv4":null}}})");
}

TEST(Effects, Ipv6) {
  SetUpEth0();
  Shell("ip -6 address flush dev eth0 scope global");  // of several the kernel lists any first
  Make(R"({"interfaces":{"eth0":{"ipv6":{"method":"static","address":"fd00::10","prefix":64}}}})");
  Make(R"({"interfaces":{"eth0":{"ipv6":{"method":"auto"}}}})");
}

// Without the driver the setters succeed all the same.
TEST(Effects, WhatTheKernelLacksIsPutBackUnlessKept) {
  SetUpEth0();
  const std::string bond =
      R"({"bonds":{"bond0":{"mode":"active-backup","slaves":["eth2","eth3"]}}})";
  Make(bond);
  Make(R"({"vlans":{"eth0.7":{}}})");
  Make(bond, R"({"keep":true})");
  Make(bond);
  Make(R"({"bonds":{"bond0":null}})", R"({"keep":true})");
}

TEST(Effects, ABridgeComesAndGoes) {
  SetUpEth0();
  Make(R"({"bridges":{"br0":{"ports":["eth0","eth1"]}}})");
  Say(Shell("ip -br address; ip route"));
  Make(R"({"bridges":{"br0":{"ports":["eth0"]}}})");
  Make(R"({"bridges":{"br0":null}})");
  Say(Shell("ip -br address; ip route"));
}

TEST(Effects, TheDhcpServer) {
  SetUpEth0();
  Make(R"({"dhcp_server":{"enabled":true,"vendors":{"Example":{"43":"01:04:00"}},)"
       R"("interfaces":{"eth0":{"ipv4":{"subnets":{"0":{"prefix":24,"start":"192.168.50.100",)"
       R"("end":"192.168.50.150","router":"192.168.50.1","dns":["192.168.50.1"],)"
       R"("options":{"mtu":1400,"ntp-server":["192.168.50.1","192.168.50.2"]}}}}}}}})");
  Make("{}", R"({"restart":["/dhcp_server"]})");
  Make(
      R"({"dhcp_server":{"interfaces":{"eth0":{"ipv4":{"subnets":{"0":{"options":{"mtu":null}}}}}}}})");
  Make(R"({"dhcp_server":{"enabled":false}})");
}

TEST(Effects, Services) {
  SetUpEth0();
  Mask("(  slept [0-9]+ ms|  log [0-9] service_tunnel_execute.*)", "");  // at a pace of its own
  Make(R"({"pppoe":{"interface":"eth1","user":"bob","password":"Hidden.1","default_route":true}})");
  Make(R"({"pppoe_relay":{"eth0":{"enabled":true,"server":"eth1"}}})");
  Make(R"({"pppoe_relay":{"eth0":{"enabled":false}}})");
  Make(R"({"tunnel":{"server":"broker.example","user":"bob","password":"Hidden.2"}})");
  Make(R"({"pppoe":{"enabled":true}})");
  Make("{}", R"({"restart":["/pppoe"]})");
  Make(R"({"pppoe":{"enabled":false}})");
  Say("the broker does not answer");
  WriteFile("/etc/gogoc/broker", "silent\n");
  Make(R"({"tunnel":{"enabled":true}})");
  Make(R"({"tunnel":{"enabled":false}})");
  EXPECT_EQ(State(R"({"secrets":true})")["tunnel"]["password"], "Hidden.2");
  EXPECT_EQ(State().dump().find("Hidden"), std::string::npos);
}

// Every section's file once on a disk that takes no writing: the machine is as it was.
TEST(Effects, AFailedWriteLeavesNothing) {
  SetUpEth0();
  struct Row {
    const char* folder;
    const char* wish;
  };
  const Row rows[] = {
      {"/etc/sysconfig",
       R"({"interfaces":{"eth0":{"mtu":1400,"ipv4":{"address":"192.168.50.12"}}}})"},
      {"/etc/sysconfig", R"({"bonds":{"bond0":{"mode":"802.3ad","slaves":["eth1","eth2"]}}})"},
      {"/etc/sysconfig", R"({"vlans":{"eth0.7":{}}})"},
      {"/etc/sysconfig", R"({"bridges":{"br0":{"ports":["eth1"]}}})"},
      {"/etc/sysconfig",
       R"({"dns":{"servers":["192.168.50.1"]},"routes":{"gateway":"192.168.50.1"}})"},
      {"/etc/dhcpd", R"({"dhcp_server":{"interfaces":{"eth0":{"ipv4":{"enabled":true}}}}})"},
      {"/etc/ppp", R"({"pppoe":{"interface":"eth1","user":"bob"}})"},
      {"/etc/gogoc", R"({"tunnel":{"server":"b.example","user":"bob","password":"x"}})"},
  };
  for (const Row& row : rows) {
    const std::string folder = row.folder;
    Shell("mount --bind " + folder + " " + folder + " && mount -o remount,ro,bind " + folder);
    Say("on a read-only " + folder);
    Make(row.wish);
    Shell("umount " + folder);
  }
}

TEST(Effects, OneChangeAtATime) {
  Mask("process ([0-9]+)", "N");
  Mask("since ([0-9TZ:-]+)", "THEN");
  const change::ChangeLock lock("somebody else's program", 0);
  Make(R"({"host":{"name":"nas"}})", R"({"wait":0})");
}

TEST(Effects, OthersMayAskAndNotChange) {
  SetUpEth0();
  ASSERT_EQ(::seteuid(65534), 0);
  EXPECT_EQ(ZARNNetChangeCheck(R"({"host":{"name":"nas"}})", nullptr, nullptr), ZARNNETCHANGE_DONE);
  EXPECT_EQ(ZARNNetChangeApply(R"({"host":{"name":"nas"}})", nullptr, nullptr, nullptr, nullptr),
            ZARNNETCHANGE_NOT_ALLOWED);
  EXPECT_EQ(State()["interfaces"]["eth0"]["ipv4"]["address"], "192.168.50.10");
  EXPECT_EQ(ZARNNetChangeRead(R"({"secrets":true})", nullptr), ZARNNETCHANGE_NOT_ALLOWED);
  ASSERT_EQ(::seteuid(0), 0);
}

TEST(Effects, ASignalWaitsForTheEnd) {
  SetUpEth0();
  std::signal(SIGINT, [](int) { interrupted = 1; });
  const auto progress = [](const char* text, void* texts) {
    ::raise(SIGINT);
    interruptedOnTheWay = interrupted;
    *static_cast<std::string*>(texts) += text;
  };
  std::string texts;
  EXPECT_EQ(ZARNNetChangeApply(R"({"host":{"name":"nas"}})", "{}", progress, &texts, nullptr),
            ZARNNETCHANGE_DONE);
  EXPECT_EQ(interruptedOnTheWay, 0);
  EXPECT_EQ(interrupted, 1);
  EXPECT_NE(texts.find("name the machine nas"), std::string::npos);
}
