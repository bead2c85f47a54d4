// SPDX-License-Identifier: Apache-2.0
// A port's link as the driver tells it: the kernel's own drivers, and poorer ones put in their
// place.
#include <cstdio>
#include <linux/ethtool.h>

#include <zarnnetsdk/error.h>
#include <zarnnetsdk/iface.h>

#include "support/kernel_answers.h"

using namespace test;

namespace {

std::string Link(const char* ifname) {
  ZARNNETETHINFO info{7, 7, 7, 7};
  const int result = ZARNNetGetEthInfo(ifname, &info);
  char text[80];
  std::snprintf(text, sizeof text, "%d: %d %d %d %d", result, info.speed, info.duplex, info.link,
                info.autoneg);
  return text;
}

}  // namespace

TEST(EthInfo, IsWhatTheKernelsDriversTellAlsoPoorOnes) {
  BringUp("eth0");
  Shell("ip link add br7 type bridge");
  EXPECT_EQ("0: 10000 1 1 0", Link("eth0"));
  EXPECT_EQ("0: 10000 1 0 0", Link("eth1")) << "a port that is down";
  EXPECT_EQ("0: -1 -1 0", Link("br7").substr(0, 10));
  const struct {
    PoorDriver driver;
    const char* answer;
  } cases[] = {{{100, DUPLEX_HALF, AUTONEG_ENABLE}, "0: 100 0 1 1"},
               {{100000, DUPLEX_FULL, AUTONEG_DISABLE}, "0: 100000 1 1 0"},
               {{0xFFFFFFFF}, "0: -1 -1 1 -1"},
               {{0xFFFF}, "0: -1 -1 1 -1"},
               {{0}, "0: 0 -1 1 -1"}};
  for (const auto& c : cases) {
    Kernel().driver = c.driver;
    EXPECT_EQ(c.answer, Link("eth0"));
  }
  Kernel().driver = PoorDriver{};
  EXPECT_EQ("0: 10000 1 1 -1", Link("eth0")) << "what /sys knows";
  EXPECT_EQ("0: -1 -1 0 -1", Link("eth1")) << "/sys does not answer for a port that is down";
}

TEST(EthInfo, AFailureLeavesTheRecordAlone) {
  EXPECT_EQ("-1: 7 7 7 7", Link("nosuch0"));
  EXPECT_EQ(ZARNNETERR_NOT_FOUND, KOPACErrGet());
  EXPECT_EQ("-1: 7 7 7 7", Link("../eth0"));
}
