// SPDX-License-Identifier: Apache-2.0
// Dropping every address of one family that an interface has in the running kernel.
#pragma once

#include <string>

namespace ipv4 {

// The type is "-4" or "-6", as the ip command takes it. False for others too.
bool FlushAddresses(const char* type, const char* ifname);

// IPv6 is switched off and, unless the interface's file wants it so, on again.
bool FlushV6(const std::string& ifname);

}  // namespace ipv4
