// SPDX-License-Identifier: Apache-2.0
// zarnnetctl topology, conflict and tree: how the interfaces stand to each other and to the LAN.
#include <algorithm>
#include <array>
#include <set>

#include "commands.h"
#include "query.h"
#include "roles.h"
#include "wish.h"

namespace tool {
namespace {

// ---- topology

std::vector<std::string> Topologies() {
  std::vector<std::string> names;
  for (const KOPANETTOPOLOGY& topology : gTopologyInfo) {
    if (topology.id != 0) names.emplace_back(topology.szName);
  }
  return names;
}

Json TopologyJson() {
  KOPANETTOPOLOGY topology = gTopologyInfo[0];
  const std::uint32_t id = KOPANetTopologyGet(&topology);
  Json layout = Json::array();
  for (const ZARNBRIDGEINFO& row : grgTopologyIFInfo[id]) {
    if (row.szName[0] == '\0') continue;
    layout.push_back({{"name", row.szName}, {"role", row.type}, {"ref", TextOrNull(row.szRef)}});
  }
  return {{"id", id}, {"name", topology.szName}, {"uplink", topology.szUplink}, {"layout", layout}};
}

void GetTopology(const Context& context) {
  const Json topology = TopologyJson();
  if (context.json) return PrintJson("topology", topology);
  PrintTable({{{"name"}, {topology["name"].get<std::string>()}},
              {{"uplink"}, {topology["uplink"].get<std::string>()}}});
}

void AddTopology(const Group& app, Context& context) {
  const Group group = AddGroup(app, "topology", "Reads and stores the network topology");
  const Verb get = AddVerb(group, context, "get", "Shows the topology and its uplink",
                           "  zarnnetctl topology get --json");
  get.Run([&context] { GetTopology(context); });
  const Verb set =
      AddChange(group, context, "set", "Stores the topology", "  zarnnetctl topology set bridge");
  auto name = std::make_shared<std::string>();
  set.AddOption("NAME", *name, "The topology").Required().OneOf(Topologies());
  set.Run([&context, name] { MakeChange(context, {{"topology", {{"name", *name}}}}); });
}

// ---- conflict

void ProbeAddress(const Context& context, const std::string& ifname, const std::string& address) {
  const std::string what = "cannot probe for " + address + " at " + ifname;
  RequireIpv4(what, address);
  RequireRoot(what);
  RequireInterface(what, ifname);
  ForgetErrors();
  const int result = ZARNIIpConflict(ifname.c_str(), address.c_str());
  if (result < 0) Fail(what);
  if (context.json) {
    return PrintJson("conflict", {{"name", ifname}, {"ip", address}, {"conflict", result == 1}});
  }
  PrintTable({{{address}, result == 1 ? Cell{"in use", Tone::kBad} : Cell{"free", Tone::kGood}}});
}

// A bond and one of its ports with the same address, as their files have it.
void CompareBond(const Context& context, const std::string& bond) {
  const std::string what = "cannot compare the addresses of " + bond;
  RequireRoot(what);
  RequireInterface(what, bond);
  std::array<char, 16> port{};
  ForgetErrors();
  const int result = ZARNNetBondIPConflict(bond.c_str(), port.data(), int{port.size()});
  if (result < 0) Fail(what);
  if (context.json) {
    return PrintJson("conflict", {{"name", bond},
                                  {"port", TextOrNull(result == 1 ? port.data() : "")},
                                  {"conflict", result == 1}});
  }
  PrintTable({{{bond},
               result == 1 ? Cell{std::string("shares its address with ") + port.data(), Tone::kBad}
                           : Cell{"no port has its address", Tone::kGood}}});
}

void AddConflict(const Group& app, Context& context) {
  const Verb verb =
      AddVerb(app, context, "conflict", "Asks the LAN whether another host has an address",
              "  zarnnetctl conflict eth0 192.168.50.10\n  zarnnetctl conflict bond0");
  const auto ifname = AddIfname(verb);
  auto address = std::make_shared<std::string>();
  verb.AddOption("ADDRESS", *address,
                 "IPv4 address; without it, a bond is compared with its ports");
  verb.Run([&context, ifname, address] {
    if (address->empty()) return CompareBond(context, *ifname);
    ProbeAddress(context, *ifname, *address);
  });
}

// ---- tree

// One interface with what lies under it: the ports of a bridge, the slaves of a bond, the parent
// of a VLAN.
struct Node {
  std::string name;
  std::string role;
  bool up = false;
  std::vector<std::string> addresses;
  std::vector<Node> below;
};

std::vector<std::string> AddressesOf(const std::string& ifname) {
  std::vector<std::string> texts;
  const std::string ipv4 = AddressText(LiveAddress(ifname));
  if (!ipv4.empty()) texts.push_back(ipv4);
  for (const ZARNNETV6ADDR& address : ReadIpv6(ifname))
    texts.push_back(Ipv6Text(address));
  return texts;
}

Node ReadNode(const std::string& ifname) {
  Node node{ifname, "", ZARNNetIsIFUp(ifname.c_str()) == 1, AddressesOf(ifname), {}};
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
  }
  for (const std::string& name : below)
    node.below.push_back(ReadNode(name));
  return node;
}

void CollectBelow(const Node& node, std::set<std::string>* names) {
  for (const Node& child : node.below) {
    names->insert(child.name);
    CollectBelow(child, names);
  }
}

// The interfaces under which all others stand.
std::vector<Node> ReadTree() {
  std::vector<Node> nodes;
  std::set<std::string> covered;
  for (const std::string& ifname : KernelInterfaces()) {
    nodes.push_back(ReadNode(ifname));
    CollectBelow(nodes.back(), &covered);
  }
  std::erase_if(nodes, [&](const Node& node) { return covered.contains(node.name); });
  return nodes;
}

Json NodeJson(const Node& node) {
  Json below = Json::array();
  for (const Node& child : node.below)
    below.push_back(NodeJson(child));
  return {{"name", node.name},
          {"role", TextOrNull(node.role)},
          {"up", node.up},
          {"addresses", node.addresses},
          {"below", below}};
}

// The lines that lead to a name stand before it: one text for its own line, one for those below.
struct Branch {
  std::string own;
  std::string below;

  [[nodiscard]] Branch To(bool last) const {
    static const bool drawn = HasUtf8();
    if (!drawn) return {below + (last ? "`- " : "|- "), below + (last ? "   " : "|  ")};
    return {below + (last ? "└─ " : "├─ "), below + (last ? "   " : "│  ")};
  }
};

void PrintNode(const Node& node, const Branch& branch) {
  PrintLine({{branch.own},
             {node.name, node.up ? Tone::kGood : Tone::kBad},
             {node.role.empty() ? "" : " (" + node.role + ")"}});
  for (std::size_t i = 0; i < node.addresses.size(); ++i) {
    const bool last = node.below.empty() && i + 1 == node.addresses.size();
    PrintLine({{branch.To(last).own}, {node.addresses[i], Tone::kHeading}});
  }
  for (const Node& child : node.below)
    PrintNode(child, branch.To(&child == &node.below.back()));
}

void ShowTree(const Context& context) {
  const std::vector<Node> nodes = ReadTree();
  if (!context.json) {
    for (const Node& node : nodes)
      PrintNode(node, {});
    return;
  }
  Json tree = Json::array();
  for (const Node& node : nodes)
    tree.push_back(NodeJson(node));
  PrintJson("tree", tree);
}

void AddTree(const Group& app, Context& context) {
  const Verb verb = AddVerb(app, context, "tree",
                            "Draws bridges over ports, bonds over slaves, VLANs over parents",
                            "  zarnnetctl tree");
  verb.Run([&context] { ShowTree(context); });
}

}  // namespace

void AddTopologyCommands(const Group& app, Context& context) {
  AddTopology(app, context);
  AddConflict(app, context);
  AddTree(app, context);
}

}  // namespace tool
