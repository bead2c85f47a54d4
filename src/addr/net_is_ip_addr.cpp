// SPDX-License-Identifier: Apache-2.0
// IPv4 addresses as an administrator types them: split into numbers, accepted for a host, told
// private.
#include <algorithm>

#include <zarnnetsdk/addr.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/error.h"

using namespace frame;

int cKOPAISepIP(const char* szIP, unsigned int rgPart[4]) {
  return Boundary(0, [&]() -> int {
    if (szIP == nullptr || rgPart == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    DottedParts parts{};
    const int count = SplitDotted(szIP, &parts);
    std::copy_n(parts.begin(), count, rgPart);
    return count;
  });
}

int BlKOPAIsIpAddr(const char* szIP) {
  return Boundary(0, [&]() -> int {
    if (szIP == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return IsHostAddress(szIP) ? 1 : 0;
  });
}

int ZARNNetIsPrivateIP(const char* szIP) {
  return Boundary(0, [&]() -> int {
    if (szIP == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    DottedParts parts{};
    return SplitDotted(szIP, &parts) == 4 && IsPrivate(parts) ? 1 : 0;
  });
}
