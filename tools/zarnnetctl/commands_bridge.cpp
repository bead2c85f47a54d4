// SPDX-License-Identifier: Apache-2.0
// zarnnetctl bridge and vlan: what stands on top of ports, or joins them.
#include "commands.h"
#include "query.h"
#include "roles.h"
#include "typed_address.h"
#include "wish.h"

namespace tool {
namespace {

// ---- bridge list, bridge show

Json NamedBridgeJson(const std::string& name) {
  Json json{{"name", name}};
  const auto bridge = ReadBridge(name);
  if (bridge) json.update(ToJson(bridge));
  return json;
}

void ListBridge(const Context& context) {
  Json bridges = Json::array();
  std::vector<Row> rows{Headings({"NAME", "TYPE", "PRIMARY", "PORTS"})};
  for (const std::string& name : ListBridges()) {
    bridges.push_back(NamedBridgeJson(name));
    if (const auto bridge = ReadBridge(name))
      rows.push_back({{name}, {bridge->type}, {bridge->ref}, {Join(bridge->ports, " ")}});
  }
  if (context.json) return PrintJson("bridges", bridges);
  PrintList(rows, "bridges");
}

// The reader of the file answers 1 for a port and 4 for an interface that stands by itself.
std::string RoleInFile(std::uint32_t type) {
  switch (type) {
    case ZARNBRIDGE_STANDALONE:
      return "port";
    case ZARNBRIDGE_BRIDGE:
      return "bridge";
    case ZARNBRIDGE_LOCAL_LAN:
      return "local-bridge";
    default:
      return "none";
  }
}

Json StoredBridgeJson(const std::string& what, const std::string& ifname) {
  ZARNBRIDGEINFO info{};
  ForgetErrors();
  if (ZARNNetGetBridgeConfig(ifname.c_str(), nullptr, &info) < 0) {
    throw Failure(what, ZARNNETERR_NOT_FOUND, "there is no file for '" + ifname + "'");
  }
  return {{"name", ifname}, {"role", RoleInFile(info.type)}, {"ref", TextOrNull(info.szRef)}};
}

// What the kernel has, and what the file asks for at the next start.
void ShowBridge(const Context& context, const std::string& ifname) {
  const std::string what = "cannot show " + ifname;
  RequireName(what, ifname);
  const Json stored = StoredBridgeJson(what, ifname);
  const auto live = ReadBridge(ifname);
  if (context.json) {
    Json json = stored;
    json["live"] = ToJson(live);
    return PrintJson("bridge", json);
  }
  PrintTable({{{"name"}, {ifname}},
              {{"role"}, {stored["role"].get<std::string>()}},
              {{"with"}, {stored["ref"].is_null() ? "" : stored["ref"].get<std::string>()}},
              {{"live"}, {live ? live->type : ""}},
              {{"ports"}, {live ? Join(live->ports, " ") : ""}}});
}

// ---- bridge set, bridge delete

struct WantedBridge {
  std::vector<std::string> ports;
  std::string primary;
  std::string address;  // of the bridge
  bool localLan = false;
};

void SetBridge(Context& context, const std::string& name, const WantedBridge& wanted) {
  Json wish;
  Json& bridge = wish["bridges"][name];
  bridge["ports"] = wanted.ports;
  if (!wanted.primary.empty()) bridge["primary"] = wanted.primary;
  if (wanted.localLan) bridge["role"] = "local_lan";
  if (!wanted.address.empty()) wish["interfaces"][name]["ipv4"] = Ipv4Wish(wanted.address, "");
  MakeChange(context, wish);
}

void DeleteBridge(Context& context, const std::string& name) {
  Json wish;
  wish["bridges"][name] = nullptr;
  MakeChange(context, wish);
}

void AddBridge(const Group& app, Context& context) {
  const Group group = AddGroup(app, "bridge", "Lists and changes bridges");
  AddVerb(group, context, "list", "Lists the bridges that are up",
          "  zarnnetctl bridge list --json", ListBridge);

  AddVerb(group, context, "show", "Shows the role of an interface, stored and live",
          "  zarnnetctl bridge show br0", AddIfname, ShowBridge);

  const Verb set = AddChange(group, context, "set", "Makes a bridge of ports, or changes one",
                             "  zarnnetctl bridge set br0 eth0 eth1\n"
                             "  zarnnetctl bridge set br0 eth0 --address 192.168.50.10/24");
  const auto changed = AddInterface(set, "BRIDGE", "Name of the bridge, such as br0");
  auto wanted = std::make_shared<WantedBridge>();
  set.AddOption("PORT", wanted->ports, "Its ports").Required().Interface();
  set.AddOption("--primary", wanted->primary, "The port that gives it its MAC address (the first)")
      .Interface();
  set.AddOption("--address", wanted->address, "ADDRESS/PREFIX, or dhcp (the primary port's)");
  set.AddFlag("--local-lan", wanted->localLan, "The bridge of the local LAN");
  set.Run([&context, changed, wanted] { SetBridge(context, *changed, *wanted); });

  const Verb remove =
      AddChange(group, context, "delete", "Removes a bridge; its primary port gets its address",
                "  zarnnetctl bridge delete br0");
  const auto removed = AddInterface(remove, "BRIDGE", "Name of the bridge");
  remove.Run([&context, removed] { DeleteBridge(context, *removed); });
}

// ---- vlan

Json VlanJson(const KOPANETVLAN& vlan) {
  return {{"name", vlan.szName}, {"row_dev", vlan.szRowDev}, {"id", vlan.id}};
}

void ListVlan(const Context& context) {
  Json vlans = Json::array();
  std::vector<Row> rows{Headings({"NAME", "PARENT", "ID"})};
  for (const KOPANETVLAN& vlan : ListVlans()) {
    vlans.push_back(VlanJson(vlan));
    rows.push_back({{vlan.szName}, {vlan.szRowDev}, {std::to_string(vlan.id)}});
  }
  if (context.json) return PrintJson("vlans", vlans);
  PrintList(rows, "VLANs");
}

void CreateVlan(Context& context, const std::string& parent, unsigned id,
                const std::string& address) {
  const std::string name = parent + "." + std::to_string(id);
  Json wish;
  wish["vlans"][name] = {{"parent", parent}, {"id", id}};
  if (!address.empty()) wish["interfaces"][name]["ipv4"] = Ipv4Wish(address, "");
  MakeChange(context, wish);
}

void RemoveVlan(Context& context, const std::string& name) {
  Json wish;
  wish["vlans"][name] = nullptr;
  MakeChange(context, wish);
}

void AddVlan(const Group& app, Context& context) {
  const Group group = AddGroup(app, "vlan", "Lists, creates and removes VLANs");
  AddVerb(group, context, "list", "Lists the VLANs", "  zarnnetctl vlan list --json", ListVlan);

  const Verb create = AddChange(
      group, context, "create", "Creates a VLAN, which takes over the address of its parent's file",
      "  zarnnetctl vlan create eth0 10\n  zarnnetctl vlan create eth0 10 --address 10.0.10.2/24");
  auto parent = std::make_shared<std::string>();
  create.AddOption("PARENT", *parent, "Interface that carries the VLAN").Required().Interface();
  auto id = std::make_shared<unsigned>();
  create.AddOption("ID", *id, "1 to 4094").Required().Within(1, 4094);
  auto address = std::make_shared<std::string>();
  create.AddOption("--address", *address, "A fixed ADDRESS/PREFIX instead of DHCP");
  create.Run([&context, parent, id, address] { CreateVlan(context, *parent, *id, *address); });

  const Verb remove =
      AddChange(group, context, "remove", "Removes a VLAN, whose address goes to its parent",
                "  zarnnetctl vlan remove eth0.10");
  auto name = std::make_shared<std::string>();
  remove.AddOption("VLAN", *name, "Name of the VLAN, such as eth0.10").Required().Interface();
  remove.Run([&context, name] { RemoveVlan(context, *name); });
}

}  // namespace

void AddBridgeCommands(const Group& app, Context& context) {
  AddBridge(app, context);
  AddVlan(app, context);
}

}  // namespace tool
