// SPDX-License-Identifier: Apache-2.0
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
  if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  const auto flags = socket.Flags(ifname);
  if (!flags) return Fail(RefusalCode(), false);
  const int wanted = change >= 0 ? (*flags | change) : (*flags & (change - 1));
  return socket.SetFlags(ifname, static_cast<short>(wanted)) || Fail(RefusalCode(), false);
}

bool TakeDownAndUp(const char* ifname) {
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  const auto flags = socket.Flags(ifname);
  if (!flags) return Fail(RefusalCode(), false);
  const auto down = static_cast<short>(*flags & ~IFF_UP);
  const bool isDown = (*flags & IFF_UP) == 0 || socket.SetFlags(ifname, down);
  return (isDown && socket.SetFlags(ifname, static_cast<short>(down | IFF_UP))) ||
         Fail(RefusalCode(), false);
}

int ChangeFlagsOf(const char* ifname, int change) {
  if (IsEmpty(ifname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
  return ChangeFlags(ifname, change) ? 1 : 0;
}

}  // namespace

int ZARNNetIsIFUp(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
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
    return TakeDownAndUp(szIfname) ? 1 : 0;
  });
}
