// A port's link as the driver tells it: the kernel's own drivers, and older and poorer ones put in
// their place.
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <gtest/gtest.h>
#include <linux/ethtool.h>
#include <linux/sockios.h>
#include <net/if.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <zarnnetsdk/iface.h>

#include "support/appliance.h"

using namespace test;

namespace {

enum class Driver { kReal, kNew, kOld, kNone } driver = Driver::kReal;
unsigned speed;
unsigned char duplex;
unsigned char autoneg;
constexpr int kWords = 4;

// As the kernel: the number of words is learnt by asking without room, and only the right number is
// answered.
int AnswerLinkSettings(ethtool_link_settings* request) {
  const bool rightRoom = request->link_mode_masks_nwords == kWords;
  std::memset(request, 0, sizeof *request);
  request->cmd = ETHTOOL_GLINKSETTINGS;
  request->link_mode_masks_nwords = rightRoom ? kWords : -kWords;
  if (!rightRoom) return 0;
  std::memset(request->link_mode_masks, 0xFF, 3 * kWords * sizeof(__u32));
  request->speed = speed;
  request->duplex = duplex;
  request->autoneg = autoneg;
  return 0;
}

int AnswerDriver(void* request) {
  const unsigned command = *static_cast<__u32*>(request);
  if (driver == Driver::kNew && command == ETHTOOL_GLINKSETTINGS) {
    return AnswerLinkSettings(static_cast<ethtool_link_settings*>(request));
  }
  if (driver == Driver::kOld && command == ETHTOOL_GSET) {
    auto* const old = static_cast<ethtool_cmd*>(request);
    ethtool_cmd_speed_set(old, speed);
    old->duplex = duplex;
    old->autoneg = autoneg;
    return 0;
  }
  if (driver == Driver::kOld && command == ETHTOOL_GLINK) {
    static_cast<ethtool_value*>(request)->data = 1;
    return 0;
  }
  errno = EOPNOTSUPP;
  return -1;
}

std::string Link(const char* ifname) {
  ZARNNETETHINFO info{7, 7, 7, 7};
  const int result = ZARNNetGetEthInfo(ifname, &info);
  char text[80];
  std::snprintf(text, sizeof text, "%d: %d %d %d %d", result, info.speed, info.duplex, info.link,
                info.autoneg);
  return text;
}

}  // namespace

extern "C" int ioctl(int fd, unsigned long command, ...) noexcept {
  va_list args;
  va_start(args, command);
  void* const argument = va_arg(args, void*);
  va_end(args);
  if (command == SIOCETHTOOL && driver != Driver::kReal) {
    return AnswerDriver(static_cast<ifreq*>(argument)->ifr_data);
  }
  return static_cast<int>(::syscall(SYS_ioctl, fd, command, argument));
}

TEST(EthInfo, IsWhatTheKernelsDriversTell) {
  BringUp("eth0");
  Shell("ip link add br7 type bridge");
  EXPECT_EQ("0: 10000 1 1 0", Link("eth0"));
  EXPECT_EQ("0: 10000 1 0 0", Link("eth1")) << "a port that is down";
  EXPECT_EQ("0: -1 -1 0", Link("br7").substr(0, 10));
}

TEST(EthInfo, NewOldAndPoorDriversAreAsked) {
  BringUp("eth0");
  const struct {
    unsigned speed;
    unsigned char duplex, autoneg;
    const char* answer;
  } cases[] = {{100, DUPLEX_HALF, AUTONEG_ENABLE, "100 0 1 1"},
               {100000, DUPLEX_FULL, AUTONEG_DISABLE, "100000 1 1 0"},
               {0xFFFFFFFF, DUPLEX_UNKNOWN, 2, "-1 -1 1 -1"},
               {0xFFFF, DUPLEX_UNKNOWN, 2, "-1 -1 1 -1"},
               {0, DUPLEX_HALF, AUTONEG_ENABLE, "0 0 1 1"}};
  for (const Driver kind : {Driver::kNew, Driver::kOld}) {
    for (const auto& c : cases) {
      driver = kind;
      speed = c.speed;
      duplex = c.duplex;
      autoneg = c.autoneg;
      EXPECT_EQ(std::string("0: ") + c.answer, Link("eth0"));
    }
  }
  driver = Driver::kNone;
  EXPECT_EQ("0: 10000 1 1 -1", Link("eth0")) << "what /sys knows";
  EXPECT_EQ("0: -1 -1 0 -1", Link("eth1")) << "/sys does not answer for a port that is down";
}

TEST(EthInfo, AFailureLeavesTheRecordAlone) {
  KOPACErrSetEx(0, "", 0);
  EXPECT_EQ("-1: 7 7 7 7", Link("nosuch0"));
  EXPECT_EQ(0xBC00, KOPACErrGet());
  for (const char* name : {static_cast<const char*>(nullptr), "", "../eth0", "eth0\n"}) {
    KOPACErrSetEx(0, "", 0);
    EXPECT_EQ("-1: 7 7 7 7", Link(name));
    EXPECT_EQ(0x0D00, KOPACErrGet());
  }
  EXPECT_EQ(-1, ZARNNetGetEthInfo("eth0", nullptr));
}
