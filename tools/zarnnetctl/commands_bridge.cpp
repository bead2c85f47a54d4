// SPDX-License-Identifier: Apache-2.0
// zarnnetctl bridge and vlan: what stands on top of ports, or joins them.
#include <map>

#include "commands.h"
#include "query.h"
#include "roles.h"
#include "typed_address.h"

namespace tool {
namespace {

// How an interface gets its address, as typed: a fixed one, or else DHCP.
struct Addressing {
  std::string address;
  bool dhcp = false;
  bool notOnBoot = false;
};

ZARNNETIFSETTINGS SettingsOf(const std::string& what, const std::string& ifname,
                             const Addressing& addressing) {
  ZARNNETIFSETTINGS settings{};
  settings.blOnBoot = addressing.notOnBoot ? 0 : 1;
  ifname.copy(settings.szName, sizeof settings.szName - 1);
  if (addressing.address.empty()) return settings;
  const Address address = Validate(what, TakeApart(addressing.address, ""));
  settings.blStatic = 1;
  address.ip.copy(settings.szIP, sizeof settings.szIP - 1);
  address.mask.copy(settings.szMask, sizeof settings.szMask - 1);
  return settings;
}

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

// The roles as the file's writer numbers them.
const std::map<std::string, std::uint32_t>& Roles() {
  static const std::map<std::string, std::uint32_t> roles{{"none", ZARNBRIDGE_STANDALONE},
                                                          {"bridge", ZARNBRIDGE_BRIDGE},
                                                          {"local-bridge", ZARNBRIDGE_LOCAL_LAN},
                                                          {"port", ZARNBRIDGE_PORT}};
  return roles;
}

std::vector<std::string> RoleNames() {
  std::vector<std::string> names;
  for (const auto& [name, number] : Roles())
    names.push_back(name);
  return names;
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

// ---- bridge set

struct WantedRole {
  std::string role;
  std::string ref;
};

void SetBridge(const Context& context, const std::string& ifname, const WantedRole& wanted,
               const Addressing& addressing) {
  const std::string what = "cannot set the bridge role of " + ifname;
  RequireName(what, ifname);
  if ((wanted.role == "none") != wanted.ref.empty()) {
    throw WrongUsage("REF", "name the primary port of a bridge, or the bridge of a port");
  }
  if (!wanted.ref.empty()) RequireName(what, wanted.ref);
  RequireRoot(what);
  ZARNBRIDGEINFO info{};
  info.type = Roles().at(wanted.role);
  ifname.copy(info.szName, sizeof info.szName - 1);
  wanted.ref.copy(info.szRef, sizeof info.szRef - 1);
  const bool addressed = !addressing.address.empty() || addressing.dhcp;
  const ZARNNETIFSETTINGS settings = SettingsOf(what, ifname, addressing);
  ForgetErrors();
  if (ZARNNetSetBridgeConfig(addressed ? &settings : nullptr, &info) < 0) Fail(what);
  if (context.json) PrintJson("bridge", StoredBridgeJson(what, ifname));
}

void AddBridge(const Group& app, Context& context) {
  const Group group =
      AddGroup(app, "bridge", "Lists bridges, sets the role in an interface's file");
  AddVerb(group, context, "list", "Lists the bridges that are up",
          "  zarnnetctl bridge list --json", ListBridge);

  AddVerb(group, context, "show", "Shows the role of an interface, stored and live",
          "  zarnnetctl bridge show br0", AddIfname, ShowBridge);

  const Verb set = AddVerb(
      group, context, "set", "Writes the role into the interface's file, for the next start",
      "  zarnnetctl bridge set br0 bridge eth0 --dhcp\n  zarnnetctl bridge set eth0 port br0\n"
      "  zarnnetctl bridge set eth0 none --address 192.168.50.10/24");
  const auto changed = AddIfname(set);
  auto wanted = std::make_shared<WantedRole>();
  set.AddOption("ROLE", wanted->role, "none, port, bridge, or local-bridge for the local LAN")
      .Required()
      .OneOf(RoleNames());
  set.AddOption("REF", wanted->ref, "The bridge of a port, the primary port of a bridge")
      .Interface();
  auto addressing = std::make_shared<Addressing>();
  const Word address = set.AddOption("--address", addressing->address, "A fixed ADDRESS/PREFIX");
  set.AddFlag("--dhcp", addressing->dhcp, "An address by DHCP").Excludes(address);
  set.AddFlag("--no-boot", addressing->notOnBoot, "Not at start-up; with --address or --dhcp");
  set.Run([&context, changed, wanted, addressing] {
    SetBridge(context, *changed, *wanted, *addressing);
  });
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

void CreateVlan(const Context& context, const std::string& parent, unsigned id,
                const Addressing& addressing) {
  const std::string name = parent + "." + std::to_string(id);
  const std::string what = "cannot create the VLAN " + name;
  const ZARNNETIFSETTINGS settings = SettingsOf(what, name, addressing);
  RequireRoot(what);
  RequireInterface(what, parent);
  ForgetErrors();
  if (KOPANetVlanCreate(parent.c_str(), id, &settings) < 0) Fail(what);
  if (context.json) PrintJson("vlan", {{"name", name}, {"row_dev", parent}, {"id", id}});
}

void RemoveVlan(const Context& context, const std::string& name) {
  const std::string what = "cannot remove the VLAN " + name;
  RequireRoot(what);
  if (!ReadVlan(name)) throw Failure(what, ZARNNETERR_NOT_FOUND, "there is no VLAN '" + name + "'");
  ForgetErrors();
  if (KOPANetVlanRemove(name.c_str()) < 0) Fail(what);
  if (context.json) PrintJson("vlan", nullptr);
}

void AddVlan(const Group& app, Context& context) {
  const Group group = AddGroup(app, "vlan", "Lists, creates and removes VLANs");
  AddVerb(group, context, "list", "Lists the VLANs", "  zarnnetctl vlan list --json", ListVlan);

  const Verb create = AddVerb(
      group, context, "create", "Creates a VLAN, which takes over the address of its parent's file",
      "  zarnnetctl vlan create eth0 10\n  zarnnetctl vlan create eth0 10 --address 10.0.10.2/24");
  auto parent = std::make_shared<std::string>();
  create.AddOption("PARENT", *parent, "Interface that carries the VLAN").Required().Interface();
  auto id = std::make_shared<unsigned>();
  create.AddOption("ID", *id, "1 to 4094").Required().Within(1, 4094);
  auto addressing = std::make_shared<Addressing>();
  create.AddOption("--address", addressing->address, "A fixed ADDRESS/PREFIX instead of DHCP");
  create.Run(
      [&context, parent, id, addressing] { CreateVlan(context, *parent, *id, *addressing); });

  const Verb remove =
      AddVerb(group, context, "remove", "Removes a VLAN, whose address goes to its parent",
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
