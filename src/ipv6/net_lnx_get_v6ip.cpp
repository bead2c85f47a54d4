// SPDX-License-Identifier: Apache-2.0
// The IPv6 addresses that the kernel has on an interface.
#include <algorithm>

#include <zarnnetsdk/ipv6.h>

#include "frame/base/boundary.h"
#include "frame/base/text.h"
#include "frame/facts/addresses.h"

using namespace frame;

int ZARNLnxV6IPGet(const char* szIfname, ZARNNETV6ADDR* rgAddr, int cAddr) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || rgAddr == nullptr || cAddr <= 0) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    std::fill_n(rgAddr, cAddr, ZARNNETV6ADDR{});
    const auto addresses = facts::KernelV6Addresses(szIfname);
    if (!addresses) return -1;
    const int count = static_cast<int>(addresses->size());
    std::copy_n(addresses->begin(), std::min(count, cAddr), rgAddr);
    return count;  // more than the caller has room for are counted too
  });
}
