// SPDX-License-Identifier: Apache-2.0
#include "tree.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <string_view>

#include "query.h"
#include "roles.h"

namespace tool {
namespace {

using States = std::map<std::string, State>;

States ReadStates() {
  States states;
  for (const Interface& interface : ReadInterfaces())
    states[interface.name] = StateOf(interface.IsUp(), interface.HasCarrier());
  return states;
}

std::vector<std::string> AddressesOf(const std::string& ifname) {
  std::vector<std::string> texts;
  const std::string ipv4 = AddressText(LiveAddress(ifname));
  if (!ipv4.empty()) texts.push_back(ipv4);
  for (const ZARNNETV6ADDR& address : ReadIpv6(ifname))
    texts.push_back(Ipv6Text(address));
  return texts;
}

// Of what the library counts for nothing while it is down, or has no word for.
std::string KindOf(const std::string& ifname) {
  const std::string folder = "/sys/class/net/" + ifname + "/";
  if (std::filesystem::exists(folder + "tun_flags")) return "tunnel";
  constexpr std::string_view kKey = "DEVTYPE=";
  std::ifstream event(folder + "uevent");
  for (std::string line; std::getline(event, line);) {
    if (line.starts_with(kKey)) return line.substr(kKey.size());
  }
  return {};
}

Node ReadNode(const std::string& ifname, const States& states) {
  const auto known = states.find(ifname);
  const State state = known == states.end() ? State::kMissing : known->second;
  Node node{ifname, "", state, ZARNNetIsIFUp(ifname.c_str()) == 1, AddressesOf(ifname), {}};
  std::vector<std::string> below;
  if (const auto bond = ReadBond(ifname)) {
    node.role = "bond " + bond->mode;
    below = bond->slaves;
  } else if (const auto bridge = ReadBridge(ifname); bridge && bridge->type != "port") {
    node.role = bridge->type == "bridge" ? "bridge" : "bridge of the local LAN";
    below = bridge->ports;
  } else if (const auto vlan = ReadVlan(ifname)) {
    node.role = "VLAN " + std::to_string(vlan->id);
    below = {vlan->szRowDev};
  } else {
    node.role = KindOf(ifname);
  }
  for (const std::string& name : below)
    node.below.push_back(ReadNode(name, states));
  return node;
}

void CollectBelow(const Node& node, std::set<std::string>* names) {
  for (const Node& child : node.below) {
    names->insert(child.name);
    CollectBelow(child, names);
  }
}

void CollectOnce(const Node& node, std::set<std::string>* names, std::vector<const Node*>* nodes) {
  if (!names->insert(node.name).second) return;
  nodes->push_back(&node);
  for (const Node& child : node.below)
    CollectOnce(child, names, nodes);
}

}  // namespace

std::vector<Node> ReadTree() {
  const States states = ReadStates();
  std::vector<Node> nodes;
  std::set<std::string> covered;
  for (const std::string& ifname : KernelInterfaces()) {
    nodes.push_back(ReadNode(ifname, states));
    CollectBelow(nodes.back(), &covered);
  }
  std::erase_if(nodes, [&](const Node& node) { return covered.contains(node.name); });
  return nodes;
}

std::vector<const Node*> EachOnce(const std::vector<Node>& tree) {
  std::set<std::string> names;
  std::vector<const Node*> nodes;
  for (const Node& node : tree)
    CollectOnce(node, &names, &nodes);
  return nodes;
}

}  // namespace tool
