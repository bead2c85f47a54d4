// SPDX-License-Identifier: Apache-2.0
// The programs of the appliance that put a setting into effect where the library has no call for
// it, and the library's own.
#pragma once

#include <string>
#include <vector>

namespace change {

// "/etc/rc.network VERB IFNAME..."; true when all followed.
bool RunStartScript(const std::string& verb, const std::vector<std::string>& ifnames);

bool StartDhcpClient(const std::string& ifname);
bool StopDhcpClient(const std::string& ifname);

// The path of a program that is installed with this library; empty when it is not there.
std::string OwnProgram(const std::string& name);

}  // namespace change
