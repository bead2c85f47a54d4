// SPDX-License-Identifier: Apache-2.0
// The addresses that the kernel has on an interface, and what follows from one.
#pragma once

#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <zarnnetsdk/ipv6.h>

namespace frame::facts {

// The IPv4 address; nothing without one, logged as net_lnx_get_ip's.
std::optional<in_addr> KernelAddress(std::string_view ifname);

// Every IPv6 address. Nothing, with 0x0900, when the kernel's list cannot be opened; logged as
// net_lnx_get_v6ip's.
std::optional<std::vector<ZARNNETV6ADDR>> KernelV6Addresses(std::string_view ifname);

}  // namespace frame::facts
