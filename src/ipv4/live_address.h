// SPDX-License-Identifier: Apache-2.0
// The IPv4 address of an interface in the running kernel.
#pragma once

#include <string>

namespace ipv4 {

// Gives the interface this address in place of the one that it has.
bool AddAddress(const std::string& ifname, const std::string& ip, unsigned prefix);

}  // namespace ipv4
