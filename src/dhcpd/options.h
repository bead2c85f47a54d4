// The further options of an IPv4 subnet: which values are acceptable, how they are read.
#pragma once

#include <string>

#include <zarnnetsdk/dhcpd.h>

namespace dhcpd {

// Is the option one that the server knows, with a value of its kind? Says in the log why not.
bool IsAcceptable(const DHCP_OPTION& option);

// What stands in the option's line: its value, or its list joined by commas.
std::string ValueText(const DHCP_OPTION& option);

// Reads the options of a subnet's fragment into a chain, which DHCPOptionFree() frees. Lines that
// are none of ours, or wrong, are passed over. False, with a null chain, when the file cannot be
// read.
[[nodiscard]] bool ReadOptions(const char* subnetName, const std::string& path,
                               DHCP_OPTION** chain);

}  // namespace dhcpd
