// SPDX-License-Identifier: Apache-2.0
// Rules about names: of what there is, and of what is made.
#include <algorithm>

#include <zarnnetsdk/iface.h>

#include "document/shape.h"
#include "frame/model/paths.h"
#include "rules/rule.h"
#include "words/nearest.h"

namespace change {
namespace {

// Is it there, or made by this change?
bool Exists(const Change& change, const std::string& ifname) {
  if (change.kernel.Link(ifname) != nullptr) return true;
  for (const char* section : {"bonds", "bridges", "vlans"}) {
    if (Member(Member(change.wanted, section), ifname).is_object()) return true;
  }
  return false;
}

void Require(const Change& change, const Path& path, const std::string& ifname,
             Findings* findings) {
  if (Exists(change, ifname)) return;
  std::vector<std::string> names;
  for (const auto& [name, link] : change.kernel.links)
    names.push_back(name);
  const std::string near = words::DidYouMean(ifname, names);
  findings->Add(
      "no_such_interface", path, Severity::kNotFound,
      "there is no interface " + ifname + (near.empty() ? "; there are " + Joined(names) : near));
}

void RequireMembers(const Change& change, const char* section, const char* field,
                    Findings* findings) {
  for (const std::string& name : change.NamedIn(Path() / section)) {
    const Path path = section / name / field;
    for (const std::string& member : TextsOf(At(change.wish, path)))
      Require(change, path, member, findings);
  }
}

void RequireWhatGoes(const Change& change, const char* section, Findings* findings) {
  for (const std::string& name : change.NamedIn(Path() / section)) {
    const Path path = section / name;
    const bool known = At(change.before, path).is_object() || At(change.live, path).is_object();
    if (known || !At(change.wish, path).is_null()) continue;
    findings->Add("no_such_thing", path, Severity::kNotFound,
                  "there is no " + name + " in " + section + ", so it cannot be removed");
  }
}

void RequireText(const Change& change, const Path& path, Findings* findings) {
  const std::string ifname = TextOf(At(change.wish, path));
  if (!ifname.empty()) Require(change, path, ifname, findings);
}

}  // namespace

void NamesExist(const Change& change, Findings* findings) {
  for (const std::string& ifname : change.NamedIn(Path("/interfaces"))) {
    const bool goes = At(change.wish, "interfaces" / ifname).is_null();
    if (!goes && change.Concerns("interfaces" / ifname))
      Require(change, "interfaces" / ifname, ifname, findings);
  }
  RequireMembers(change, "bonds", "slaves", findings);
  RequireMembers(change, "bridges", "ports", findings);
  for (const char* section : {"bonds", "bridges", "vlans"})
    RequireWhatGoes(change, section, findings);
  for (const std::string& vlan : change.NamedIn(Path("/vlans"))) {
    const Path path = "vlans" / vlan / "parent";
    if (change.Concerns("vlans" / vlan)) RequireText(change, path, findings);
  }
  for (const std::string& ifname : change.NamedIn(Path("/dhcp_server/interfaces"))) {
    const Path path = Path("/dhcp_server/interfaces") / ifname;
    if (change.Concerns(path)) Require(change, path, ifname, findings);
  }
  for (const std::string& ifname : change.NamedIn(Path("/pppoe_relay"))) {
    const Path path = "pppoe_relay" / ifname;
    if (!change.Concerns(path)) continue;
    Require(change, path, ifname, findings);
    RequireText(change, path / "server", findings);
  }
  if (change.Concerns(Path("/pppoe"))) RequireText(change, Path("/pppoe/interface"), findings);
}

void NewNamesAreFree(const Change& change, Findings* findings) {
  const struct {
    const char* section;
    const char* kind;
  } kinds[] = {{"bonds", "bond"}, {"bridges", "bridge"}, {"vlans", "vlan"}};
  for (const auto& [section, kind] : kinds) {
    for (const std::string& name : change.NamedIn(Path() / section)) {
      const KernelLink* const link = change.kernel.Link(name);
      const bool other = link != nullptr && link->kind != kind && !name.starts_with("ovs_");
      if (!other || !At(change.wanted, section / name).is_object()) continue;
      findings->Add("name_is_taken", section / name, Severity::kRefused,
                    "there is an interface " + name + " of another kind: choose another name");
    }
  }
}

void TopologyIsSupported(const Change& change, Findings* findings) {
  if (!change.wish.contains("topology")) return;
  const std::string support = KeyOf(frame::paths::kInfo, "support_net_topology");
  if (support == "yes" || Member(change.before, "topology").is_object()) return;
  findings->Add("no_topologies", Path("/topology"), Severity::kRefused,
                "this machine has no topologies (its settings do not say "
                "support_net_topology=\"yes\"): leave the section out");
}

}  // namespace change
