// SPDX-License-Identifier: Apache-2.0
// The part that an interface plays in others: bond, bridge, Open vSwitch device, VLAN.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include <zarnnetsdk/zarnnetsdk.h>

#include "output.h"

namespace tool {

struct Bond {
  std::string mode;
  bool noPartner = false;
  std::vector<std::string> slaves;
};

struct Bridge {
  std::string type;  // "bridge", "local_bridge" or "port"
  std::string ref;   // a bridge's primary port, a port's bridge
  std::vector<std::string> ports;
};

// ---- one interface; nothing where it plays no such part

std::optional<Bond> ReadBond(const std::string& ifname);
std::optional<Bridge> ReadBridge(const std::string& ifname);
std::string ReadOvs(const std::string& ifname);  // "bond", "device", "member" or empty
std::optional<KOPANETVLAN> ReadVlan(const std::string& ifname);

Json ToJson(const std::optional<Bond>& bond);
Json ToJson(const std::optional<Bridge>& bridge);
Json ToJson(const std::optional<KOPANETVLAN>& vlan);

// ---- all interfaces

std::vector<std::string> ListBonds();
std::vector<std::string> ListBridges();
std::vector<KOPANETVLAN> ListVlans();

}  // namespace tool
