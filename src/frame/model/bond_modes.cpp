// SPDX-License-Identifier: Apache-2.0
// The modes of bonds, by their numbers in the public enum.
#include "frame/model/bond_modes.h"

#include <iterator>
#include <string>

namespace {

// One name a mode. The table that is exported has none for the modes of Open vSwitch, of which the
// kernel's driver has no options either.
constexpr const char* kNames[] = {
    "unknown",    "balance-alb",       "802.3ad",     "balance-xor", "active-backup",
    "balance-rr", "ovs-active-backup", "balance-slb", "balance-tcp",
};
static_assert(std::size(kNames) == frame::model::kLastMode + 1);

}  // namespace

extern "C" {
const ZARNBONDDESC grgBondDesc[9] = {
    {nullptr, nullptr, nullptr},
    {"6", kNames[1], "\"mode=6 use_carrier=0 miimon=100 updelay=100\""},
    {"4", kNames[2], "\"mode=4 use_carrier=0 miimon=100 updelay=100 lacp_rate=fast\""},
    {"2", kNames[3], "\"mode=2 use_carrier=0 miimon=100 updelay=100\""},
    {"1", kNames[4], "\"mode=1 use_carrier=0 miimon=100 updelay=100\""},
    {"0", kNames[5], "\"mode=0 use_carrier=0 miimon=100 updelay=100\""},
    {nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr},
};
}

namespace frame::model {

const char* BondModeName(std::uint32_t mode) {
  return kNames[mode <= kLastMode ? mode : 0U];
}

std::uint32_t BondModeOf(std::string_view text) {
  for (std::uint32_t mode = 1; mode <= kLastMode; ++mode) {
    if (text.starts_with(kNames[mode])) return mode;
  }
  return ZARNBOND_NONE;
}

std::uint32_t BondModeOfKernelLine(std::string_view line) {
  for (std::uint32_t mode = 1; mode <= kLastKernelMode; ++mode) {
    const ZARNBONDDESC& desc = grgBondDesc[mode];
    if (line.starts_with(std::string(desc.szName) + " " + desc.szKernelMode)) return mode;
  }
  return ZARNBOND_NONE;
}

}  // namespace frame::model
