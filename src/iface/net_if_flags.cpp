// The administrative state of one interface: asked of /sys, changed through the kernel's flags.
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/link.h"
#include "frame/os/kernel.h"

using namespace frame;

namespace {

// Sets the flags of a change that is not negative, keeps those of (change - 1) otherwise.
bool ChangeFlags(const char* ifname, int change) {
  const InetSocket socket;
  const auto flags = socket.Flags(ifname);
  if (!flags) return false;
  const int wanted = change >= 0 ? (*flags | change) : (*flags & (change - 1));
  return socket.SetFlags(ifname, static_cast<short>(wanted));
}

int ChangeFlagsOf(const char* ifname, int change) {
  if (IsEmpty(ifname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
  return ChangeFlags(ifname, change) ? 1 : 0;
}

}  // namespace

int ZARNNetIsIFUp(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return 0;
    return facts::IsUp(szIfname) ? IFF_UP : 0;
  });
}

int KOPANetISetIfFlags(const char* szIfname, int change) {
  return Boundary(0, [&]() -> int { return ChangeFlagsOf(szIfname, change); });
}

int KOPANetIfUp(const char* szIfname) {
  return Boundary(0, [&]() -> int { return ChangeFlagsOf(szIfname, IFF_UP); });
}

int KOPANetIfDown(const char* szIfname) {
  return Boundary(0, [&]() -> int { return ChangeFlagsOf(szIfname, -IFF_UP); });
}

int KOPANetReInitIf(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsEmpty(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const InetSocket socket;
    const auto flags = socket.Flags(szIfname);
    if (!flags) return 0;
    const auto down = static_cast<short>(*flags & ~IFF_UP);
    if ((*flags & IFF_UP) != 0 && !socket.SetFlags(szIfname, down)) return 0;
    return socket.SetFlags(szIfname, static_cast<short>(down | IFF_UP)) ? 1 : 0;
  });
}
