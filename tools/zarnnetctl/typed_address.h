// SPDX-License-Identifier: Apache-2.0
// An IPv4 address and its prefix or netmask, as typed on the command line.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

#include "output.h"

namespace tool {

// What was typed as a wish for "ipv4": ADDRESS/PREFIX alone, ADDRESS and NETMASK, or "dhcp". How it
// is put is a matter of usage; what it says the library judges.
Json Ipv4Wish(const std::string& address, const std::string& mask);

// ADDRESS/PREFIX of either family in two fields.
Json PrefixedAddress(const std::string& text);

}  // namespace tool
