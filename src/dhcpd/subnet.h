// SPDX-License-Identifier: Apache-2.0
// The fragments of the numbered subnets of an interface, for the functions that check and call.
// What fails is logged.
#pragma once

#include <zarnnetsdk/dhcpd.h>

namespace dhcpd {

inline constexpr char kStateful[] = "stateful";  // a range of its own, of the IPv6 modes

// An IPv4 subnet with a wrong option fails, and what stands before that option is served all the
// same.
[[nodiscard]] bool WriteSubnet(const char* ifname, unsigned subnet, bool v6,
                               const DHCP_SUBNET_CONF& conf);

// Fills a record that is empty but for its switch.
[[nodiscard]] bool ReadSubnet(const char* ifname, unsigned subnet, bool v6, DHCP_SUBNET_CONF* conf);

}  // namespace dhcpd
