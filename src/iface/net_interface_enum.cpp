// SPDX-License-Identifier: Apache-2.0
// The interfaces that are up: all of them, or the Ethernet ports alone.
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/facts/up_interfaces.h"

using namespace frame;

int KOPANetEthEnum(KOPANetIfInfo* pList, int max) {
  return Boundary(-1, [&]() -> int { return facts::ListUpPorts(pList, max); });
}

int KOPANetInterfaceEnum(KOPANetIfInfo* pList, int max, unsigned int /*kind*/) {
  return Boundary(-1, [&]() -> int { return facts::ListUpInterfaces(pList, max); });
}
