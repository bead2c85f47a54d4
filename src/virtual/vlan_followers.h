// Those who have to hear that an interface's address is on another one now.
#pragma once

#include <string>

namespace vlan {

// Gives a started interface the time to appear, then tells the firewall and traffic control. The
// program that failed, which ends it; null when none did.
const char* TellPrograms(const std::string& oldName, const std::string& newName);

// Moves the DHCP server's settings and restarts it.
bool MoveDhcpServer(const std::string& oldName, const std::string& newName);

}  // namespace vlan
