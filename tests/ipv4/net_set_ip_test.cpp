// SPDX-License-Identifier: Apache-2.0
// Addresses in the running kernel: which commands, in which order, what is announced, what a
// failure leaves.
#include <zarnnetsdk/ipv4.h>

#include "support/transcript.h"

using namespace test;

namespace {

const char kNetdTool[] = "/usr/zarn/sbin/zarnnetdtool";

// Every program that an address change runs, recorded; eth0 is down, so it has no carrier.
struct RecordedTools : ::testing::Test {
  RecordedTools() {
    for (const char* path : {"/sbin/ip", "/sbin/ifconfig", kNetdTool})
      RecordTool(path);
    RecordTool("/bin/ipcalc", 0, "NETWORK=192.168.50.0\n");
  }
};

}  // namespace

TEST_F(RecordedTools, NewAddressIsAnnouncedAndItsRouteDroppedWithoutCarrier) {
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  RecordTool("/sbin/ip", 2);
  Say("a route that cannot be deleted is a note and no failure");
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
}

TEST_F(RecordedTools, AFailingCommandEndsTheChangeWhereItStands) {
  RecordTool("/bin/ipcalc", 1);
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  RecordTool("/sbin/ifconfig", 1);
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  RemoveFile("/sbin/ifconfig");
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
}

TEST_F(RecordedTools, DeletingAndFlushingAnnounceNothing) {
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.10", 32, "del"));
  TELL(ZARNNetSetIP("-6", "eth0", "fd00::1", 128, "del"));
  TELL(ZARNNetSetIP("-4", "eth0", nullptr, 99, "flush"));
}

TEST_F(RecordedTools, WhatCannotBeMeantIsRefusedBeforeAnythingRuns) {
  TELL(ZARNNetSetIP("-4", "eth0", "10.0.0.1", 24, "replace"));
  TELL(ZARNNetSetIP("-5", "eth0", "10.0.0.1", 24, "add"));
  TELL(ZARNNetSetIP("-4", "eth0", "10.0.0.1", 33, "add"));
  TELL(ZARNNetSetIP("-6", "eth0", "fd00::1", 129, "add"));
  TELL(ZARNNetSetIP("-4", "eth0", "300.1.1.1", 24, "add"));
  TELL(ZARNNetSetIP("-4", "eth0", nullptr, 24, "del"));
  TELL(ZARNNetSetIP("-6", "eth0", "fd00::g", 64, "del"));
  TELL(ZARNNetSetIP("-6", nullptr, "fd00::1", 64, "add"));
  TELL(ZARNNetSetIP("-4", "", nullptr, 0, "flush"));
  TELL(ZARNNetSetIP("-4", "-s", nullptr, 0, "flush"));
  TELL(ZARNNetSetIP("-5", "eth0", nullptr, 0, "flush"));
  TELL(ZARNNetSetIP("-6", "-s", "fd00::1", 64, "del"));
  TELL(ZARNNetSetIP("-4", "eth0", "10.0.0.00000000000000000000000001 up", 24, "add"));
}

TEST(RealKernel, TheSameAddressAgainRefreshesTheRulesInsteadOfAnnouncing) {
  RecordTool(kNetdTool, 3);
  BringUp("eth0");
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  TELL(ZARNNetSetIP("-4", "eth0", "10.1.2.3", 32, "add"));
  TELL(ZARNNetFlushIP("-4", "eth0"));
}

TEST(RealKernel, AnAddressThatTheKernelRefusesLeavesTheInterfaceWithoutOne) {
  BringUp("eth0");
  ASSERT_EQ(0, ZARNNetSetIP("-4", "eth0", "192.168.50.10", 24, "add"));
  WriteFile("/run/ifconfig", ReadFile("/sbin/ifconfig"), 0755);
  WriteFile("/sbin/ifconfig",
            "#!/bin/sh\n[ \"$2\" = 0.0.0.0 ] && exec /run/ifconfig \"$@\"\nexit 1\n", 0755);
  TELL(ZARNNetSetIP("-4", "eth0", "192.168.50.11", 24, "add"));
}

TEST(RealKernel, OnlyAnIpv6AddressThatIsNewIsAnnounced) {
  BringUp("eth0");
  TELL(ZARNNetSetIP("-6", "eth0", "fd00::10", 64, "add"));
  TELL(ZARNNetSetIP("-6", "eth0", "fd00::10", 64, "add"));
  TELL(ZARNNetSetIP("-6", "eth0", "fd00::10", 64, "del"));
}
