// SPDX-License-Identifier: Apache-2.0
// Whether a member of a bond is configured with the bond's own address.
#include <algorithm>
#include <cstring>
#include <optional>
#include <string>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bonds.h"
#include "frame/facts/ovs.h"
#include "frame/model/ovs.h"

using namespace frame;

namespace {

// Callers have room for four characters; a longer name is cut to them.
void CopyShortName(std::string_view port, char* out, int size) {
  constexpr std::size_t kGiven = 4;
  const std::size_t length = std::min(port.size(), kGiven);
  std::memcpy(out, port.data(), length);
  if (length < kGiven || size > static_cast<int>(kGiven)) out[length] = '\0';
}

// Is the port configured with the bond's address? Nothing when its file cannot be read.
std::optional<bool> HasAddress(const std::string& port, bool ovs, const std::string& bondAddress) {
  const std::string name = ovs ? model::OvsDeviceOver(port) : port;
  const auto address = ipv4::ConfiguredAddress(name);
  if (!address) {
    LOG_ERROR("%s:%d get %s's IP from config failed", name.c_str());
    return std::nullopt;
  }
  if (address->empty()) LOG_NOTE("%s:%d %s's IP is empty", name.c_str());
  return !address->empty() && *address == bondAddress;
}

}  // namespace

int ZARNNetBondIPConflict(const char* szBond, char* szOutPort, int cbOutPort) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szBond) || szOutPort == nullptr || cbOutPort < 1) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const auto slaves = facts::SlavesOf(szBond);
    if (!slaves) {
      LOG_ERROR("%s:%d get %s information failed", szBond);
      return -1;
    }
    const auto bondAddress = ipv4::ConfiguredAddress(szBond);
    if (!bondAddress) {
      LOG_ERROR("%s:%d get %s's IP failed", szBond);
      return -1;
    }
    const bool ovs = facts::OvsKindOf(szBond) == ZARNOVS_BOND;
    // A bond takes its settings from its first member, which may still show them.
    for (std::size_t i = 1; i < slaves->size(); ++i) {
      const std::string& port = (*slaves)[i];
      const auto same = HasAddress(port, ovs, *bondAddress);
      if (!same) return -1;
      if (!*same) continue;
      CopyShortName(port, szOutPort, cbOutPort);
      return 1;
    }
    return 0;
  });
}
