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
    const auto address = socket.Address(szIfname);
    if (!address) return 0;
    const auto mask = socket.Netmask(szIfname);
    if (!mask) return 0;
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
    if (!socket.SetAddress(szIfname, in_addr{*pAddr}) && errno != EEXIST) return 0;
    return socket.SetNetmask(szIfname, in_addr{*pMask}) ? 1 : 0;
  });
}
