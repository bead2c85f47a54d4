// SPDX-License-Identifier: Apache-2.0
// Addresses of either family against each other: in one subnet, in a range; and which family they
// are of.
#include <algorithm>
#include <netinet/in.h>

#include <zarnnetsdk/addr.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"

using namespace frame;

int ZARNNetIsSameSubnet(const char* szAddr1, const char* szAddr2, const char* szMask) {
  return Boundary(-1, [&]() -> int {
    if (szAddr1 == nullptr || szAddr2 == nullptr || szMask == nullptr) {
      return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    }
    const auto first = ParseAddress(szAddr1);
    const auto second = ParseAddress(szAddr2);
    const auto mask = ParseAddress(szMask);
    if (!first || !second || !mask) return 0;
    if (first->family != second->family || first->family != mask->family) return 0;
    for (std::size_t i = 0; i < mask->bytes.size(); ++i) {
      if (((first->bytes[i] ^ second->bytes[i]) & mask->bytes[i]) != 0) return 0;
    }
    return 1;
  });
}

int KOPAIsIpInRange(const char* szAddr, const char* szStart, const char* szEnd, int family) {
  return Boundary(-1, [&]() -> int {
    if (family != AF_INET && family != AF_INET6) {
      LOG_ERROR("%s:%d Unknown address family, %d.", family);
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (szAddr == nullptr || szStart == nullptr || szEnd == nullptr) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const auto address = ParseAddress(family, szAddr);
    const auto start = ParseAddress(family, szStart);
    const auto end = ParseAddress(family, szEnd);
    if (!address || !start || !end) return Fail(ZARNNETERR_MALFORMED_ADDRESS, -1);
    const auto [lowest, highest] = std::minmax(start->bytes, end->bytes);
    return lowest <= address->bytes && address->bytes <= highest ? 1 : 0;
  });
}

int ZARNNetGetAddrType(const char* szIP) {
  return Boundary(-1, [&]() -> int {
    if (szIP == nullptr) return 0;
    const auto address = ParseAddress(szIP);
    return address ? address->family : 0;
  });
}
