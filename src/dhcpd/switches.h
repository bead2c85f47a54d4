// SPDX-License-Identifier: Apache-2.0
// The server's switches of interfaces, and its restart, for the other sources of the folder.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace dhcpd {

// Is the server switched on for an interface, whose stem is that of a family?
bool IsServed(const char* stem, std::string_view ifname);

// The interfaces with a switch, on or off; "pxe" may be among them. Nothing when the folder cannot
// be read, logged as dhcp_utils'.
std::optional<std::vector<std::string>> InterfacesWithSwitch(const char* stem);

// Restarts the server. Only the script's status 1 is a failure, logged as dhcp_utils'.
bool RestartUnlessRefused();

}  // namespace dhcpd
