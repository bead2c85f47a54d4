// The kernel's IPv4 address and netmask of an interface, as numbers.
#include <cerrno>

#include <zarnnetsdk/iface.h>

#include "frame/kernel.h"
#include "frame/log.h"
#include "frame/text.h"

using namespace frame;

int KOPANetGetIfCfg(const char* szIfname, uint32_t* pAddr, uint32_t* pMask) try {
  if (IsEmpty(szIfname) || pAddr == nullptr || pMask == nullptr)
    return FRAME_FAIL(kBadParameter, 0);
  const InetSocket socket;
  const auto address = socket.Address(szIfname);
  if (!address) return 0;
  const auto mask = socket.Netmask(szIfname);
  if (!mask) return 0;
  *pAddr = address->s_addr;
  *pMask = mask->s_addr;
  return 1;
}
FRAME_NO_EXCEPTIONS(0)

int KOPANetSetIfCfg(const char* szIfname, const uint32_t* pAddr, const uint32_t* pMask) try {
  if (IsEmpty(szIfname) || pAddr == nullptr || pMask == nullptr)
    return FRAME_FAIL(kBadParameter, 0);
  const InetSocket socket;
  if (!socket.SetAddress(szIfname, in_addr{*pAddr}) && errno != EEXIST) return 0;
  return socket.SetNetmask(szIfname, in_addr{*pMask}) ? 1 : 0;
}
FRAME_NO_EXCEPTIONS(0)
