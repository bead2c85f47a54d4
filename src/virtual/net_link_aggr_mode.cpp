// The bonding modes: their ids, names and kernel options.
#include <iterator>
#include <string_view>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"

using namespace frame;

namespace {

constexpr const char* kModeNames[] = {
    "unknown",    "balance-alb",       "802.3ad",     "balance-xor", "active-backup",
    "balance-rr", "ovs-active-backup", "balance-slb", "balance-tcp",
};

}  // namespace

const ZARNBONDDESC grgBondDesc[9] = {
    {nullptr, nullptr, nullptr},
    {"6", kModeNames[1], "\"mode=6 use_carrier=0 miimon=100 updelay=100\""},
    {"4", kModeNames[2], "\"mode=4 use_carrier=0 miimon=100 updelay=100 lacp_rate=fast\""},
    {"2", kModeNames[3], "\"mode=2 use_carrier=0 miimon=100 updelay=100\""},
    {"1", kModeNames[4], "\"mode=1 use_carrier=0 miimon=100 updelay=100\""},
    {"0", kModeNames[5], "\"mode=0 use_carrier=0 miimon=100 updelay=100\""},
    {nullptr, nullptr, nullptr},  // Open vSwitch bonds have no options of the kernel's driver
    {nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr},
};

uint32_t ZARNNetLinkAggrStringToMode(const char* szMode) {
  return Boundary(0, [&]() -> uint32_t {
    if (szMode == nullptr) return 0;
    const std::string_view text(szMode);
    for (uint32_t mode = 1; mode < std::size(kModeNames); ++mode) {
      if (text.starts_with(kModeNames[mode]))
        return mode;  // lines of the kernel go on with a number
    }
    return 0;
  });
}

const char* ZARNNetLinkAggrModeToString(uint32_t mode) {
  return Boundary(kModeNames[0], [&]() -> const char* {
    return kModeNames[mode < std::size(kModeNames) ? mode : 0];
  });
}
