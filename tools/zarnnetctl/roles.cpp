// SPDX-License-Identifier: Apache-2.0
// The part that an interface plays in others: bond, bridge, Open vSwitch device, VLAN.
#include "roles.h"

#include <cstdlib>
#include <memory>
#include <nlohmann/json.hpp>

#include "list.h"

namespace tool {
namespace {

std::vector<std::string> BridgePorts(const std::string& bridge) {
  NameList ports;
  ForgetErrors();
  if (KOPANetBridgeSlaveEnum(bridge.c_str(), ports.Out()) < 0)
    Fail("cannot read the ports of " + bridge);
  return ports.Items();
}

}  // namespace

std::optional<Bond> ReadBond(const std::string& ifname) {
  ZARNLINKAGGROPT record{};
  ForgetErrors();
  if (ZARNNetLinkAggrGet(ifname.c_str(), &record) != 0) Fail("cannot read the bond " + ifname);
  if (record.cSlave == 0) return std::nullopt;
  Bond bond{ZARNNetLinkAggrModeToString(record.mode), record.blNoPartner != 0, {}};
  for (int i = 0; i < record.cSlave; ++i)
    bond.slaves.emplace_back(record.rgszSlave[i]);
  return bond;
}

std::optional<Bridge> ReadBridge(const std::string& ifname) {
  ZARNBRIDGEINFO info{};
  switch (KOPANETGetBridgeInfo(ifname.c_str(), &info)) {
    case ZARNBRIDGE_BRIDGE:
      return Bridge{"bridge", info.szRef, BridgePorts(ifname)};
    case ZARNBRIDGE_LOCAL_LAN:
      return Bridge{"local_bridge", info.szRef, BridgePorts(ifname)};
    case ZARNBRIDGE_PORT:
      return Bridge{"port", info.szRef, {}};
    default:
      return std::nullopt;
  }
}

std::string ReadOvs(const std::string& ifname) {
  const int master = KOPANetOVSIfIsMaster(ifname.c_str());
  if (master == ZARNOVS_BOND) return "bond";
  if (master == ZARNOVS_DEVICE) return "device";
  return KOPANetOVSIfIsSlave(ifname.c_str()) == 1 ? "member" : "";
}

std::optional<KOPANETVLAN> ReadVlan(const std::string& ifname) {
  KOPANETVLAN vlan{};
  return KOPANetVlanGet(ifname.c_str(), &vlan) == 1 ? std::optional(vlan) : std::nullopt;
}

Json ToJson(const std::optional<Bond>& bond) {
  if (!bond) return nullptr;
  return {{"mode", bond->mode}, {"no_partner", bond->noPartner}, {"slaves", bond->slaves}};
}

Json ToJson(const std::optional<Bridge>& bridge) {
  if (!bridge) return nullptr;
  return {{"type", bridge->type}, {"ref", TextOrNull(bridge->ref)}, {"ports", bridge->ports}};
}

Json ToJson(const std::optional<KOPANETVLAN>& vlan) {
  if (!vlan) return nullptr;
  return {{"row_dev", vlan->szRowDev}, {"id", vlan->id}};
}

std::vector<std::string> ListBonds() {
  NameList bonds;
  ForgetErrors();
  if (ZARNNetLinkAggrEnum(bonds.Out()) < 0) Fail("cannot list the bonds");
  return bonds.Items();
}

// Bridges of the local LAN stand behind the others.
std::vector<std::string> ListBridges() {
  constexpr unsigned kBridge = 2;
  constexpr unsigned kLocalLan = 3;
  NameList bridges;
  ForgetErrors();
  for (const unsigned role : {kBridge, kLocalLan}) {
    if (KOPANetEnumBridge(bridges.Out(), role) < 0) Fail("cannot list the bridges");
  }
  return bridges.Items();
}

std::vector<KOPANETVLAN> ListVlans() {
  KOPANETVLAN* list = nullptr;
  int count = 0;
  ForgetErrors();
  if (KOPANetVlanEnum(&list, &count) < 0) Fail("cannot list the VLANs");
  const std::unique_ptr<KOPANETVLAN, decltype(&std::free)> owner(list, &std::free);
  return count > 0 ? std::vector<KOPANETVLAN>(list, list + count) : std::vector<KOPANETVLAN>();
}

}  // namespace tool
