// SPDX-License-Identifier: Apache-2.0
// zarnnetctl bond: link aggregations, listed, made, changed and taken apart.
#include <algorithm>

#include "commands.h"
#include "query.h"
#include "roles.h"
#include "wish.h"

namespace tool {
namespace {

constexpr char kDefaultMode[] = "active-backup";

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

// A bond that there is keeps its mode where none is named.
void Set(Context& context, const std::string& name, const std::string& mode,
         const std::vector<std::string>& slaves) {
  Json wish;
  Json& bond = wish["bonds"][name];
  bond["slaves"] = slaves;
  if (!mode.empty()) {
    bond["mode"] = mode;
  } else if (PartOf(ReadState({"bonds"}), "/bonds/" + name + "/mode").is_null()) {
    bond["mode"] = kDefaultMode;
  }
  MakeChange(context, wish);
}

void Delete(Context& context, const std::string& name) {
  Json wish;
  wish["bonds"][name] = nullptr;
  MakeChange(context, wish);
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

  const Verb set = AddChange(group, context, "set", "Makes a bond of ports, or changes one",
                             "  zarnnetctl bond set bond0 --mode 802.3ad eth0 eth1");
  const auto changed = AddName(set);
  auto mode = std::make_shared<std::string>();
  set.AddOption("--mode", *mode, "How the slaves share the traffic; a new bond's is active-backup")
      .OneOf(Modes());
  auto slaves = std::make_shared<std::vector<std::string>>();
  set.AddOption("PORT", *slaves, "Its slaves; the first gives the bond its address")
      .Interface()
      .Required()
      .Count(1, ZARNLINKAGGR_MAX_SLAVE);
  set.Run([&context, changed, mode, slaves] { Set(context, *changed, *mode, *slaves); });

  const Verb remove =
      AddChange(group, context, "delete", "Takes a bond apart; its first slave gets its address",
                "  zarnnetctl bond delete bond0");
  const auto removed = AddName(remove);
  remove.Run([&context, removed] { Delete(context, *removed); });
}

}  // namespace tool
