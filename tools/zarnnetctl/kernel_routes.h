// SPDX-License-Identifier: Apache-2.0
// The kernel's routes, for a verb that looks whether what it asked for came to pass.
#pragma once

#include <string>

namespace tool {

// A route through the interface to the subnet of the address that its file says.
bool HasSubnetRoute(const std::string& ifname);

// A default route of IPv6 through the interface, by this gateway.
bool HasIpv6Default(const std::string& ifname, const std::string& gateway);

}  // namespace tool
