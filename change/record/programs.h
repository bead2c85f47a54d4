// SPDX-License-Identifier: Apache-2.0
// The programs of the appliance that put a setting into effect where the library has no call for
// it.
#pragma once

#include <string>
#include <vector>

namespace change {

// "/etc/rc.network VERB IFNAME..."; true when all followed.
bool RunStartScript(const std::string& verb, const std::vector<std::string>& ifnames);

bool StartDhcpClient(const std::string& ifname);
bool StopDhcpClient(const std::string& ifname);

}  // namespace change
