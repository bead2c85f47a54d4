// SPDX-License-Identifier: Apache-2.0
// The VLANs that the kernel has.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <zarnnetsdk/virtual.h>

#include "frame/os/kernel.h"

namespace frame::facts {

bool HasVlanDriver();

// The VLAN of this name; nothing for any other interface, and for a name that the kernel would cut.
std::optional<KOPANETVLAN> VlanOf(const InetSocket& socket, std::string_view ifname);

// The VLAN with this id over an interface.
std::optional<KOPANETVLAN> VlanOver(const InetSocket& socket, std::string_view parent, unsigned id);

// Every VLAN, in the driver's order; none without it. Nothing, with 0x0900 or 0x4000, when its
// table cannot be read; logged as net_vlan_enum's.
std::optional<std::vector<KOPANETVLAN>> Vlans();

}  // namespace frame::facts
