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

volatile std::sig_atomic_t interrupted = 0;
volatile std::sig_atomic_t interruptedOnTheWay = 0;

}  // namespace

TEST(Effects, TheMachinesNameServersAndGateway) {
  SetUpEth0();
  MakeAll(wishes::kNames);
}

TEST(Effects, AnAddressTakesNothingElseWithIt) {
  SetUpEth0();
  Make(wishes::kAddress[0].wish);
  Say(Shell("ip -br address show eth0; ip route"));
  MakeAll({wishes::kAddress.begin() + 1, wishes::kAddress.end()});
}

TEST(Effects, ALeaseIsAwaited) {
  SetUpEth0();
  MakeAll(wishes::kLease);
}

TEST(Effects, Ipv6) {
  SetUpEth0();
  Shell("ip -6 address flush dev eth0 scope global");  // of several the kernel lists any first
  MakeAll(wishes::kIpv6);
}

// Without the driver the setters succeed all the same.
TEST(Effects, WhatTheKernelLacksIsPutBackUnlessKept) {
  SetUpEth0();
  MakeAll(wishes::kBonds);
}

TEST(Effects, ABridgeComesAndGoes) {
  SetUpEth0();
  MakeAll(wishes::kBridge);
}

TEST(Effects, TheDhcpServer) {
  SetUpEth0();
  MakeAll(wishes::kDhcpServer);
}

TEST(Effects, Services) {
  SetUpEth0();
  Mask("(  slept [0-9]+ ms|  log [0-9] service_tunnel_execute.*)", "");  // at a pace of its own
  MakeAll(wishes::kServices);
  EXPECT_EQ(State(R"({"secrets":true})")["tunnel"]["password"], "Hidden.2");
  EXPECT_EQ(State().dump().find("Hidden"), std::string::npos);
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
