// SPDX-License-Identifier: Apache-2.0
// The kernel's IPv4 address and netmask of an interface, as numbers.
#include <cerrno>

#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/kernel.h"

using namespace frame;

int KOPANetGetIfCfg(const char* szIfname, uint32_t* pAddr, uint32_t* pMask) {
  return Boundary(0, [&]() -> int {
    if (IsEmpty(szIfname) || pAddr == nullptr || pMask == nullptr)
      return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const InetSocket socket;
    if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, 0);
    const auto address = socket.Address(szIfname);
    const auto mask = address ? socket.Netmask(szIfname) : std::nullopt;
    if (!mask) return Fail(RefusalCode(), 0);
    *pAddr = address->s_addr;
    *pMask = mask->s_addr;
    return 1;
  });
}

int KOPANetSetIfCfg(const char* szIfname, const uint32_t* pAddr, const uint32_t* pMask) {
  return Boundary(0, [&]() -> int {
    if (IsEmpty(szIfname) || pAddr == nullptr || pMask == nullptr)
      return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const InetSocket socket;
    if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, 0);
    const bool hasAddress = socket.SetAddress(szIfname, in_addr{*pAddr}) || errno == EEXIST;
    if (hasAddress && socket.SetNetmask(szIfname, in_addr{*pMask})) return 1;
    return Fail(RefusalCode(), 0);
  });
}
