// SPDX-License-Identifier: Apache-2.0
// Speed, duplex, carrier and autonegotiation of a port, as its driver tells them.
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/facts/driver.h"

using namespace frame;

int ZARNNetGetEthInfo(const char* szIfname, ZARNNETETHINFO* pInfo) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname) || pInfo == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto info = facts::DriverInfoOf(szIfname);
    if (!info) return -1;
    *pInfo = *info;
    return 0;
  });
}
