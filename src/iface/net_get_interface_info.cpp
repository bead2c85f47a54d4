// SPDX-License-Identifier: Apache-2.0
// Which interfaces there are, by kind.
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/text.h"
#include "frame/facts/inventory.h"
#include "frame/facts/net_dev.h"

using namespace frame;

int KOPANetGetInterfaceInfo(KOPANetIfInfo* pList, int max, unsigned int selector) {
  return Boundary(-1, [&]() -> int { return facts::ListInterfaces(pList, max, selector); });
}

int ZARNNetEnumCard(unsigned int selector) {
  return Boundary(
      -1, [&]() -> int { return facts::ListInterfaces(nullptr, facts::kMaxInterfaces, selector); });
}

int ZARNNetIsDevTypeMatch(const char* szIfname, unsigned int selector) {
  return Boundary(0, [&]() -> int {
    if (IsEmpty(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return facts::IsOfKind(szIfname, selector) ? 1 : 0;
  });
}
