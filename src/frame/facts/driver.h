// SPDX-License-Identifier: Apache-2.0
// What the driver of a port tells of its link.
#pragma once

#include <optional>
#include <string>

#include <zarnnetsdk/iface.h>

namespace frame::facts {

// Speed, duplex, carrier and autonegotiation; what the kernel does not know is -1. Nothing, with
// 0x0900 (no socket) or 0xBC00 (no such interface), where it cannot be asked; logged as
// net_get_eth_info's.
std::optional<ZARNNETETHINFO> DriverInfoOf(const std::string& ifname);

}  // namespace frame::facts
