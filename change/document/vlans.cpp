// SPDX-License-Identifier: Apache-2.0
// VLANs: one over an interface, which it takes the addresses of.
#include <unistd.h>
#include <utility>

#include <zarnnetsdk/virtual.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/dhcp_files.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"

namespace change {
namespace {

namespace keys = frame::keys;

Shape ShapeOf() {
  return Map(
      Format::kIfname, "VLANs by name, PARENT.ID; an interface carries one at most",
      Object("One VLAN", {{"parent", Text("The interface below", Format::kIfname, 15).Both()},
                          {"id", Number("Its number", 1, 4094).Both()}}));
}

Json Configured(const View& view) {
  Json vlans = Json::object();
  for (const std::string& name : ConfiguredInterfaces(view.unread)) {
    const std::string path = frame::paths::Ifcfg(name);
    const std::string parent = KeyOf(path, keys::kVlanParent, view.unread);
    const std::string id = KeyOf(path, keys::kVlanId, view.unread);
    if (parent.empty() || !Fits(id, Format::kNumber)) continue;
    vlans[name] = {{"parent", parent}, {"id", std::stol(id)}};
  }
  return vlans.empty() ? Json() : vlans;
}

Json Live(const View& view, const Json&) {
  Json vlans = Json::object();
  for (const auto& [name, link] : view.kernel.links) {
    if (link.kind == "vlan") vlans[name] = {{"parent", link.parent}, {"id", link.vlanId}};
  }
  return vlans.empty() ? Json() : vlans;
}

// The name tells what is not said.
void SettleVlan(const std::string& name, Change* change, Findings* findings) {
  const Path path = "vlans" / name;
  Json& wanted = change->wanted[path];
  if (!wanted.is_object()) return;
  const std::size_t dot = name.rfind('.');
  const std::string id = dot == std::string::npos ? "" : name.substr(dot + 1);
  if (!wanted.contains("parent") && dot != std::string::npos)
    wanted["parent"] = change->wish[path]["parent"] = name.substr(0, dot);
  if (!wanted.contains("id") && Fits(id, Format::kNumber))
    wanted["id"] = change->wish[path]["id"] = std::stol(id);
  const std::string right =
      TextOf(Member(wanted, "parent")) + "." + std::to_string(NumberOf(Member(wanted, "id")));
  if (right != name) {
    findings->Add("vlan", path, Severity::kUsage,
                  "a VLAN's name is its parent and its id: name it " + right);
  }
}

void Settle(Change* change, Findings* findings) {
  for (const std::string& name : change->NamedIn(Path("/vlans")))
    SettleVlan(name, change, findings);
}

ZARNNETIFSETTINGS SettingsOf(const Json& ipv4) {
  ZARNNETIFSETTINGS settings{};
  settings.blOnBoot = 1;
  if (TextOf(Member(ipv4, "method")) != "static") return settings;
  settings.blStatic = 1;
  Fill(TextOf(Member(ipv4, "address")), settings.szIP);
  Fill(MaskOf(NumberOf(Member(ipv4, "prefix"))), settings.szMask);
  return settings;
}

// The setter starts the parent. One that is a slave already does not come up before its bond does.
void PlanRemoval(const Change& change, const std::string& name, Step step, Steps* steps) {
  const std::string parent = TextOf(At(change.before, step.path / "parent"));
  const auto masters = change.MastersOf(parent);
  const bool joins = !masters.empty() && masters.front().parent_pointer() == Path("/bonds");
  const std::string bond = joins ? masters.front().back() : "";
  step.phase = Phase::kRemoveVlan;
  step.what = "remove the VLAN " + name;
  step.setter = "KOPANetVlanRemove";
  step.call = [=] {
    ::unlink(SavedIfcfg(name).c_str());
    return (!joins || ZARNNetLinkAggrConfSetSlave(parent.c_str(), 1, bond.c_str()) == 0) &&
           KOPANetVlanRemove(name.c_str()) == 0;
  };
  steps->push_back(std::move(step));
}

void PlanVlan(const Change& change, const std::string& name, Steps* steps) {
  const Path path = "vlans" / name;
  if (!change.Concerns(path)) return;
  const Json& before = At(change.before, path);
  const Json& vlan = At(change.wanted, path);
  Step step{Phase::kMakeVlan,
            path,
            "make the VLAN " + name,
            "KOPANetVlanCreate",
            {frame::paths::Ifcfg(name), frame::dhcp_files::kFolder, frame::paths::kNetworkScript},
            {}};
  if (!vlan.is_object()) return PlanRemoval(change, name, std::move(step), steps);
  if (before.is_object() && change.kernel.Link(name) != nullptr) return;  // named by what it is
  const std::string parent = TextOf(Member(vlan, "parent"));
  const long id = NumberOf(Member(vlan, "id"));
  const auto settings = SettingsOf(At(change.wanted, "interfaces" / name / "ipv4"));
  step.call = [=] {
    return KOPANetVlanCreate(parent.c_str(), static_cast<unsigned>(id), &settings) == 0;
  };
  steps->push_back(std::move(step));
}

void Plan(const Change& change, Steps* steps) {
  for (const std::string& name : change.NamedIn(Path("/vlans")))
    PlanVlan(change, name, steps);
}

}  // namespace

const Section kVlans{"vlans", ShapeOf, Configured, Live, Settle, Plan, AwaitNothing, ReviveNothing};

}  // namespace change
