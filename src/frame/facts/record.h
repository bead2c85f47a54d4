// SPDX-License-Identifier: Apache-2.0
// The record of one interface, as the kernel has it.
#pragma once

#include <string>

#include <zarnnetsdk/iface.h>

#include "frame/facts/ovs.h"
#include "frame/os/kernel.h"

namespace frame::facts {

// An Open vSwitch device has carrier when what lies under it has.
bool HasCarrier(const std::string& ifname, short flags);

// Fields that the kernel has no answer for stay as they are.
void FillRecord(const InetSocket& socket, const std::string& ifname, short flags, bool carrier,
                KOPANetIfInfo* info);

// Is the interface a passive member of a bond of the kernel or of Open vSwitch? No, with 0x0900,
// where the table of the latter cannot be opened.
bool IsBondingPassive(const std::string& ifname, short flags, const OvsBonds& bonds = {});

}  // namespace frame::facts
