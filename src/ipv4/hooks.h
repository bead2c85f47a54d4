// SPDX-License-Identifier: Apache-2.0
// The events that tell of changes of addresses, MTUs and the host name. Each answers false when
// its event could not be set up or delivered, and has logged it then.
#pragma once

#include <string>

namespace ipv4 {

enum class Family { kV4, kV6 };

// An address that an interface is about to get; `former` is empty without one.
bool TellAddressChange(Family family, const char* ifname, const char* former, const char* wanted,
                       unsigned prefix);

bool TellMtuChange(int stage, const std::string& ifname, const std::string& mtu);

bool TellHostnameChange(const std::string& hostname);

}  // namespace ipv4
