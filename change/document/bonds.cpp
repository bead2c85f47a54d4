// SPDX-License-Identifier: Apache-2.0
// Bonds: several ports as one.
#include <algorithm>

#include <zarnnetsdk/virtual.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/bond_modes.h"
#include "frame/model/ifcfg.h"
#include "frame/model/ovs.h"
#include "frame/model/paths.h"
#include "record/programs.h"
#include "steps/rename_event.h"

namespace change {
namespace {

namespace keys = frame::keys;

Shape ShapeOf() {
  std::vector<std::string> modes;
  for (std::uint32_t mode = 1; mode <= frame::model::kLastMode; ++mode)
    modes.emplace_back(ZARNNetLinkAggrModeToString(mode));
  return Map(Format::kIfname, "Bonds by name",
             Object("One bond",
                    {{"mode", Word("How its ports share the traffic", std::move(modes)).Both()},
                     {"slaves", List("Its ports, at least two", Text("A port", Format::kIfname, 15))
                                    .Both()
                                    .Unordered()},
                     {"partner", Flag("802.3ad: does a switch answer").ReadOnly()}}));
}

// The mode whose options the file has, or whose number they begin with.
std::string ModeIn(const std::string& options) {
  for (std::uint32_t mode = 1; mode <= frame::model::kLastKernelMode; ++mode) {
    const std::string number = grgBondDesc[mode].szKernelMode;
    if ((options + " ").find("mode=" + number + " ") != std::string::npos)
      return grgBondDesc[mode].szName;
  }
  return {};
}

Json Configured(const View& view) {
  Json bonds = Json::object();
  for (const std::string& name : ConfiguredInterfaces(view.unread)) {
    const std::string path = frame::paths::Ifcfg(name);
    const std::string mode = ModeIn(KeyOf(path, keys::kBondingOpts, view.unread));
    if (!mode.empty()) bonds[name]["mode"] = mode;
    const std::string bond = KeyOf(path, keys::kMaster, view.unread);
    if (!bond.empty() && KeyOf(path, keys::kSlave, view.unread) == "yes")
      bonds[bond]["slaves"].push_back(name);
  }
  return bonds.empty() ? Json() : bonds;
}

Json LiveBond(const ZARNLINKAGGROPT& record) {
  Json bond{{"slaves", Json::array()}};
  if (record.mode != ZARNBOND_NONE) bond["mode"] = ZARNNetLinkAggrModeToString(record.mode);
  for (int i = 0; i < record.cSlave; ++i)
    bond["slaves"].push_back(record.rgszSlave[i]);
  if (record.mode == ZARNBOND_8023AD) bond["partner"] = record.blNoPartner == 0;
  return bond;
}

Json Live(const View& view, const Json&) {
  Json bonds = Json::object();
  for (const auto& [name, link] : view.kernel.links) {
    const bool bond = link.kind == "bond" || name.starts_with(frame::model::kOvsBondPrefix);
    ZARNLINKAGGROPT record{};
    if (bond && ZARNNetLinkAggrGet(name.c_str(), &record) == 0) bonds[name] = LiveBond(record);
  }
  return bonds.empty() ? Json() : bonds;
}

void Complain(const Path& path, const char* sentence, Findings* findings) {
  findings->Add("bond", path, Severity::kUsage, sentence);
}

void SettleBond(const Path& path, Change* change, Findings* findings) {
  const Json& bond = At(change->wanted, path);
  if (!bond.is_object()) return;
  const std::string mode = TextOf(Member(bond, "mode"));
  auto slaves = TextsOf(Member(bond, "slaves"));
  std::sort(slaves.begin(), slaves.end());
  const bool twice = std::adjacent_find(slaves.begin(), slaves.end()) != slaves.end();
  if (mode.empty()) Complain(path / "mode", "name the mode, such as \"active-backup\"", findings);
  if (ZARNNetLinkAggrStringToMode(mode.c_str()) > frame::model::kLastKernelMode) {
    Complain(path / "mode", "this mode is made by Open vSwitch itself: name one of the kernel's",
             findings);
  }
  if (slaves.size() < 2 || twice)
    Complain(path / "slaves", "a bond needs two different ports: name them", findings);
  if (slaves.size() > ZARNLINKAGGR_MAX_SLAVE)
    Complain(path / "slaves", "a bond has at most 32 ports", findings);
}

void Settle(Change* change, Findings* findings) {
  for (const std::string& bond : change->NamedIn(Path("/bonds")))
    SettleBond("bonds" / bond, change, findings);
}

bool SetBond(const std::string& name, const std::string& mode,
             const std::vector<std::string>& slaves) {
  ZARNLINKAGGROPT record{};
  Fill(name, record.szName);
  record.mode = ZARNNetLinkAggrStringToMode(mode.c_str());
  for (const std::string& slave : slaves) {
    if (ZARNNetLinkAggrOptSlsaveAdd(&record, slave.c_str()) != 0) return false;
  }
  return ZARNNetLinkAggrSet(&record) == 0;
}

// The setter would hand the bridge that the bond is part of to a slave.
bool SetBondOutsideItsBridge(const std::string& name, const std::string& mode,
                             const std::vector<std::string>& slaves) {
  const std::string path = frame::paths::Ifcfg(name);
  const std::string bridge = KeyOf(path, keys::kBridge);
  if (bridge.empty()) return SetBond(name, mode, slaves);
  return EditKeys(path, {}, {keys::kBridge}) && SetBond(name, mode, slaves) &&
         EditKeys(path, {{keys::kBridge, bridge}}, {}) && RunStartScript("start", {name});
}

bool RemoveBond(const std::string& name) {
  ZARNLINKAGGROPT record{};
  Fill(name, record.szName);
  record.mode = ZARNBOND_NONE;
  return ZARNNetLinkAggrSet(&record) == 0;
}

// The setter would start the ports that something else is made of: they went down twice.
bool TakeApart(const std::string& name, const std::vector<std::string>& free) {
  ZARNLINKAGGROPT record{};
  if (ZARNNetLinkAggrGet(name.c_str(), &record) != 0) return false;
  const std::vector<std::string> slaves(record.rgszSlave, record.rgszSlave + record.cSlave);
  return WhileRenaming({name}, slaves, [&] {
    std::vector<std::string> all = slaves;
    all.push_back(name);
    static_cast<void>(RunStartScript("stop", all));
    const bool done = ZARNNetLinkAggrConfDel(&record) == 0;
    return (free.empty() || RunStartScript("start", free)) && done;
  });
}

// Slaves of before that are none any more. The setter leaves them down, and gives the first the
// bond's address as if there were no bond any more.
struct Leaving {
  std::vector<std::string> free;  // they are part of nothing else
  std::string heir;
  bool taken = false;  // one of them is part of something else
};

Leaving LeavingOf(const Change& change, const std::string& name) {
  const auto before = TextsOf(At(change.before, "bonds" / name / "slaves"));
  const auto slaves = TextsOf(At(change.wanted, "bonds" / name / "slaves"));
  Leaving leaving;
  for (const std::string& slave : before) {
    if (Has(slaves, slave)) continue;
    if (change.IsMadeOf(slave)) {
      leaving.taken = true;
    } else {
      leaving.free.push_back(slave);
    }
    if (slave == before.front()) leaving.heir = slave;
  }
  return leaving;
}

bool LetGo(const Leaving& leaving) {
  const bool disinherited =
      leaving.heir.empty() ||
      EditKeys(frame::paths::Ifcfg(leaving.heir), {{keys::kBootProto, frame::model::kNoAddress}},
               {keys::kIpAddr, keys::kNetmask});
  return disinherited && (leaving.free.empty() || RunStartScript("start", leaving.free));
}

void PlanBond(const Change& change, const std::string& name, Steps* steps) {
  const Path path = "bonds" / name;
  if (!change.Concerns(path)) return;
  const std::vector<std::string> touches{frame::paths::Ifcfg(name), frame::paths::kNetworkScript};
  const Json& bond = At(change.wanted, path);
  const Leaving leaving = LeavingOf(change, name);
  if (!bond.is_object()) {
    steps->push_back(
        {Phase::kRemoveBond, path, "remove the bond " + name,
         leaving.taken ? "ZARNNetLinkAggrConfDel and the start script" : "ZARNNetLinkAggrSet",
         touches,
         [=] { return leaving.taken ? TakeApart(name, leaving.free) : RemoveBond(name); }});
    return;
  }
  const std::string mode = TextOf(bond["mode"]);
  const auto slaves = TextsOf(bond["slaves"]);
  steps->push_back({Phase::kMakeBond, path,
                    "make " + name + " of " + Joined(slaves) + " (" + mode + ")",
                    "ZARNNetLinkAggrSet", touches,
                    [=] { return SetBondOutsideItsBridge(name, mode, slaves) && LetGo(leaving); }});
}

void Plan(const Change& change, Steps* steps) {
  for (const std::string& name : change.NamedIn(Path("/bonds")))
    PlanBond(change, name, steps);
}

}  // namespace

const Section kBonds{"bonds", ShapeOf, Configured, Live, Settle, Plan, AwaitNothing, ReviveNothing};

}  // namespace change
