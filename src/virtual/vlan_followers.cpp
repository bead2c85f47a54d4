// Those who have to hear that an interface's address is on another one now.
#include "virtual/vlan_followers.h"

#include <unistd.h>

#include <zarnnetsdk/dhcpd.h>

#include "frame/model/paths.h"
#include "frame/os/command.h"

using namespace frame;

const char* vlan::TellPrograms(const std::string& oldName, const std::string& newName) {
  constexpr unsigned kSeconds = 2;
  for (unsigned left = kSeconds; left > 0;)
    left = ::sleep(left);  // a signal cuts a sleep short
  for (const char* action : {"--change-adapter", "--change-security-adapter"}) {
    if (!Run(paths::kFirewall, action, oldName, newName)) return paths::kFirewall;
  }
  if (!Run(paths::kTrafficControl, "-change_interface", oldName, newName)) {
    return paths::kTrafficControl;
  }
  return nullptr;
}

bool vlan::MoveDhcpServer(const std::string& oldName, const std::string& newName) {
  return DHCPDConfChangeInterface(oldName.c_str(), newName.c_str()) >= 0 &&
         KOPANetDHCPServerRestart() >= 0;
}
