// SPDX-License-Identifier: Apache-2.0
// zarnnetctl bond: link aggregations, listed, made, changed and taken apart.
#include <algorithm>

#include "commands.h"
#include "query.h"
#include "roles.h"

namespace tool {
namespace {

constexpr unsigned kDelete = 0;  // the mode that takes a bond apart

// ---- bond list, bond show

Bond RequireBond(const std::string& what, const std::string& name) {
  const auto bond = ReadBond(name);
  if (!bond) throw Failure(what, ZARNNETERR_NOT_FOUND, "there is no bond '" + name + "'");
  return *bond;
}

Json BondJson(const std::string& name, const Bond& bond) {
  Json json{{"name", name}};
  json.update(ToJson(std::optional(bond)));
  return json;
}

void List(const Context& context) {
  Json bonds = Json::array();
  std::vector<Row> rows{Headings({"NAME", "MODE", "SLAVES"})};
  for (const std::string& name : ListBonds()) {
    const auto bond = ReadBond(name);
    if (!bond) continue;
    bonds.push_back(BondJson(name, *bond));
    rows.push_back({{name}, {bond->mode}, {Join(bond->slaves, " ")}});
  }
  if (context.json) return PrintJson("bonds", bonds);
  PrintList(rows, "bonds");
}

void Show(const Context& context, const std::string& name) {
  const Bond bond = RequireBond("cannot show " + name, name);
  if (context.json) return PrintJson("bond", BondJson(name, bond));
  PrintTable({{{"name"}, {name}},
              {{"mode"}, {bond.mode}},
              {{"partner"}, bond.noPartner ? Cell{"none", Tone::kBad} : Cell{""}},
              {{"slaves"}, {Join(bond.slaves, " ")}}});
}

// ---- bond set, bond delete

std::vector<std::string> Modes() {
  std::vector<std::string> modes;
  for (const ZARNBONDDESC& mode : grgBondDesc) {
    if (mode.szName != nullptr) modes.emplace_back(mode.szName);
  }
  return modes;
}

ZARNLINKAGGROPT NewRecord(const std::string& what, const std::string& name) {
  ZARNLINKAGGROPT record{};
  if (name.empty() || name.size() >= sizeof record.szName) {
    throw Failure(what, ZARNNETERR_BAD_PARAMETER, "the name of a bond has 1 to 15 characters");
  }
  name.copy(record.szName, sizeof record.szName - 1);
  return record;
}

void Set(const Context& context, const std::string& name, const std::string& mode,
         const std::vector<std::string>& slaves) {
  const std::string what = "cannot set the bond " + name;
  ZARNLINKAGGROPT record = NewRecord(what, name);
  RequireRoot(what);
  record.mode = ZARNNetLinkAggrStringToMode(mode.c_str());
  for (const std::string& slave : slaves) {
    RequireInterface(what, slave);
    ForgetErrors();
    if (ZARNNetLinkAggrOptSlsaveAdd(&record, slave.c_str()) < 0) Fail(what + " of " + slave);
  }
  ForgetErrors();
  if (ZARNNetLinkAggrSet(&record) < 0) Fail(what);
  if (context.json) PrintJson("bond", BondJson(name, RequireBond(what, name)));
}

void Delete(const Context& context, const std::string& name) {
  const std::string what = "cannot delete the bond " + name;
  ZARNLINKAGGROPT record = NewRecord(what, name);
  record.mode = kDelete;
  RequireRoot(what);
  RequireBond(what, name);
  ForgetErrors();
  if (ZARNNetLinkAggrSet(&record) < 0) Fail(what);
  if (context.json) PrintJson("bond", nullptr);
}

std::shared_ptr<std::string> AddName(const Verb& verb) {
  return AddInterface(verb, "BOND", "Name of the bond, such as bond0");
}

}  // namespace

void AddBondCommands(const Group& app, Context& context) {
  const Group group = AddGroup(app, "bond", "Lists and changes link aggregations");
  AddVerb(group, context, "list", "Lists the bonds that have slaves",
          "  zarnnetctl bond list --json", List);
  AddVerb(group, context, "show", "Shows the mode and the slaves of a bond",
          "  zarnnetctl bond show bond0", AddName, Show);

  const Verb set = AddVerb(group, context, "set", "Makes a bond of ports, or changes one",
                           "  zarnnetctl bond set bond0 --mode 802.3ad eth0 eth1");
  const auto changed = AddName(set);
  auto mode = std::make_shared<std::string>("active-backup");
  set.AddOption("--mode", *mode, "How the slaves share the traffic (active-backup)").OneOf(Modes());
  auto slaves = std::make_shared<std::vector<std::string>>();
  set.AddOption("PORT", *slaves, "Its slaves; the first gives the bond its address")
      .Interface()
      .Required()
      .Count(2, ZARNLINKAGGR_MAX_SLAVE);
  set.Run([&context, changed, mode, slaves] { Set(context, *changed, *mode, *slaves); });

  AddVerb(group, context, "delete", "Takes a bond apart; its first slave gets its address",
          "  zarnnetctl bond delete bond0", AddName, Delete);
}

}  // namespace tool
