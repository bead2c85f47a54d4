// SPDX-License-Identifier: Apache-2.0
// Which interfaces there are, by kind.
#pragma once

#include <string_view>

#include <zarnnetsdk/iface.h>

namespace frame::facts {

// Fills the list, which may be null to count, with the interfaces of a selector (ZARNNETKIND_...)
// and answers their number. -1 with 0x0D00, 0x0900 (no socket), 0xBC00 (the statistics table is
// empty) or what that table or the look for the VLAN driver fails with; logged as
// net_get_interface_info's.
int ListInterfaces(KOPANetIfInfo* list, int max, unsigned selector);

// Is the interface one of these? No sets 0xBC00, or what the listing failed with.
bool IsOfKind(std::string_view ifname, unsigned selector);

}  // namespace frame::facts
