// SPDX-License-Identifier: Apache-2.0
// The further options of an IPv4 subnet: which values are acceptable, how they are read.
#pragma once

#include <string>
#include <string_view>

#include <zarnnetsdk/dhcp_options.h>
#include <zarnnetsdk/dhcpd.h>

namespace dhcpd {

using Option = ZARNNET_DHCP_OPTION;

// The option of this name; null when there is none.
const Option* FindOption(std::string_view name);

bool TakesList(const Option& option);

// Is the option one that the server knows, with a value of its kind? Says in the log why not.
bool IsAcceptable(const DHCP_OPTION& option);

// What stands in the line of an acceptable option: its list joined by commas, of which its value is
// no part, or its value.
std::string ValueText(const DHCP_OPTION& option);

// Reads the options of a subnet's fragment into a chain, which DHCPOptionFree() frees. Lines that
// are none of ours, or wrong, are passed over. False, with a null chain, when the file cannot be
// read.
[[nodiscard]] bool ReadOptions(const char* subnetName, const std::string& path,
                               DHCP_OPTION** chain);

}  // namespace dhcpd
