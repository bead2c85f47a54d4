// SPDX-License-Identifier: Apache-2.0
// What an interface is to Open vSwitch.
#include <cstring>
#include <string_view>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/ovs.h"
#include "frame/model/ovs.h"

using namespace frame;

int KOPANetOVSIfIsMaster(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return facts::OvsKindOf(szIfname);
  });
}

int KOPANetOVSIfIsSlave(const char* szIfname) {
  return Boundary(
      0,
      [&]() -> int {
        if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
        return facts::IsOvsPort(szIfname) ? 1 : 0;
      },
      [] { LOG_ERROR("%s:%d Failed to alloc memory."); });
}

int KOPANetOVSGetOriginalIf(const char* szIfname, char* szOut, size_t cbOut) {
  return Boundary(-1, [&]() -> int {
    if (szIfname == nullptr || szOut == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string_view ifname(szIfname);
    constexpr std::size_t kPrefix = model::kOvsPrefix.size();
    if (ifname.size() < kPrefix || cbOut <= ifname.size() - kPrefix) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    std::memset(szOut, 0, cbOut);
    const auto port = facts::PortUnder(ifname);
    if (!port) return -1;
    CopyText(*port, szOut, cbOut);
    return 0;
  });
}
