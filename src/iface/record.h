// Filling the inventory's record of one interface.
#pragma once

#include <string>

#include <zarnnetsdk/iface.h>

#include "frame/os/kernel.h"

namespace inventory {

// An Open vSwitch device has carrier when what lies under it has.
bool HasCarrier(const std::string& ifname, short flags);

// Fields that the kernel has no answer for stay as they are.
void FillRecord(const frame::InetSocket& socket, const std::string& ifname, short flags,
                bool carrier, KOPANetIfInfo* info);

}  // namespace inventory
