// SPDX-License-Identifier: Apache-2.0
#include "steps/change_state.h"

#include <algorithm>
#include <utility>

#include "texts.h"

namespace change {

bool Change::Restarts(const Path& path) const {
  return std::find(options.restart.begin(), options.restart.end(), path) != options.restart.end();
}

std::vector<Path> Change::MastersOf(const std::string& ifname) const {
  const std::pair<const char*, const char*> kinds[] = {{"bonds", "slaves"}, {"bridges", "ports"}};
  std::vector<Path> masters;
  for (const auto& [section, field] : kinds) {
    const Json& things = Member(wanted, section);
    if (!things.is_object()) continue;
    for (const auto& [name, thing] : things.items()) {
      if (Has(TextsOf(Member(thing, field)), ifname)) masters.push_back(section / name);
    }
  }
  return masters;
}

std::vector<std::string> Change::VlansOver(const std::string& ifname) const {
  std::vector<std::string> names;
  const Json& vlans = Member(wanted, "vlans");
  if (!vlans.is_object()) return names;
  for (const auto& [name, vlan] : vlans.items()) {
    if (TextOf(Member(vlan, "parent")) == ifname) names.push_back(name);
  }
  return names;
}

bool Change::LosesVlan(const std::string& ifname) const {
  const Json& vlans = Member(before, "vlans");
  if (!vlans.is_object()) return false;
  const auto all = vlans.items();
  return std::any_of(all.begin(), all.end(), [&](const auto& vlan) {
    return TextOf(Member(vlan.value(), "parent")) == ifname && Goes(vlan.key());
  });
}

bool Change::Goes(const std::string& ifname) const {
  for (const char* section : {"bonds", "vlans", "bridges"}) {
    const Path path = section / ifname;
    if (At(before, path).is_object() && !At(wanted, path).is_object()) return true;
  }
  return false;
}

bool Change::Concerns(const Path& path) const {
  return std::any_of(differences.begin(), differences.end(),
                     [&](const Difference& difference) { return Meet(path, difference.path); });
}

std::vector<std::string> Change::NamedIn(const Path& map) const {
  std::vector<std::string> names;
  const Json& entries = At(wish, map);
  if (!entries.is_object()) return names;
  for (const auto& [name, value] : entries.items())
    names.push_back(name);
  return names;
}

}  // namespace change
