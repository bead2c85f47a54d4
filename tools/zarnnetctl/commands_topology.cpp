// SPDX-License-Identifier: Apache-2.0
// zarnnetctl topology, conflict and tree: how the interfaces stand to each other and to the LAN.
#include <array>
#include <iostream>

#include "commands.h"
#include "picture.h"
#include "query.h"
#include "tree.h"
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

Json NodeJson(const Node& node) {
  Json below = Json::array();
  for (const Node& child : node.below)
    below.push_back(NodeJson(child));
  return {{"name", node.name},           {"role", TextOrNull(node.role)}, {"up", node.up},
          {"state", WordOf(node.state)}, {"addresses", node.addresses},   {"below", below}};
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

// What is as it should be needs no word.
std::string Remark(const Node& node) {
  if (node.state == State::kUp) return node.role.empty() ? "" : " (" + node.role + ")";
  return " (" + (node.role.empty() ? "" : node.role + ", ") + WordOf(node.state) + ")";
}

void PrintNode(const Node& node, const Branch& branch) {
  PrintLine({{branch.own}, {node.name, node.up ? Tone::kGood : Tone::kBad}, {Remark(node)}});
  for (std::size_t i = 0; i < node.addresses.size(); ++i) {
    const bool last = node.below.empty() && i + 1 == node.addresses.size();
    PrintLine({{branch.To(last).own}, {node.addresses[i], Tone::kHeading}});
  }
  for (const Node& child : node.below)
    PrintNode(child, branch.To(&child == &node.below.back()));
}

void ShowTree(const Context& context, bool dot) {
  const std::vector<Node> nodes = ReadTree();
  if (dot) {
    std::cout << DotOf(nodes);
    return;
  }
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
                            "  zarnnetctl tree\n  zarnnetctl tree --dot | dot -Tsvg >tree.svg");
  auto dot = std::make_shared<bool>(false);
  verb.AddFlag("--dot", *dot, "As a source of Graphviz");
  verb.Run([&context, dot] {
    if (*dot && context.json) throw WrongUsage("--dot and --json are two forms: give one");
    ShowTree(context, *dot);
  });
}

}  // namespace

void AddTopologyCommands(const Group& app, Context& context) {
  AddTopology(app, context);
  AddConflict(app, context);
  AddTree(app, context);
}

}  // namespace tool
