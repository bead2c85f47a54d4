// SPDX-License-Identifier: Apache-2.0
// IPv6 addresses as an administrator types them, with or without a prefix length.
#include <zarnnetsdk/addr.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/error.h"

using namespace frame;

int BlKOPAIsv6IpAddrValid(const char* szIP) {
  return Boundary(0, [&]() -> int {
    if (szIP == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return IsIpv6WithPrefix(szIP) ? 1 : 0;
  });
}
