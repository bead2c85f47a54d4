// SPDX-License-Identifier: Apache-2.0
// The MTU of an interface in the running kernel.
#pragma once

#include <string>

namespace ipv4 {

// Sets it: of the ports that carry an Open vSwitch device's traffic, and of a VLAN's parent before
// the VLAN. Each interface is taken down for it and brought up again.
bool ApplyMtu(const std::string& ifname, const std::string& mtu);

}  // namespace ipv4
