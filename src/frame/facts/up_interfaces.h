// SPDX-License-Identifier: Apache-2.0
// The interfaces that are up.
#pragma once

#include <zarnnetsdk/iface.h>

namespace frame::facts {

// Each fills the list, which may be null to count, in natural order of the names, and answers how
// many there are, at most max. -1 with 0x0D00 (max below 0), 0x0900 (no socket) or the code of the
// statistics table.

// All but loopback, those that are part of others too.
int ListUpInterfaces(KOPANetIfInfo* list, int max);

// The Ethernet ports alone.
int ListUpPorts(KOPANetIfInfo* list, int max);

}  // namespace frame::facts
