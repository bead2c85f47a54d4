// SPDX-License-Identifier: Apache-2.0
// Bridges: the library writes the parts in the interfaces' files, the start script makes them.
#include <algorithm>
#include <iterator>
#include <unistd.h>

#include <zarnnetsdk/virtual.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "record/programs.h"

namespace change {
namespace {

namespace keys = frame::keys;
using frame::paths::Ifcfg;
using Texts = std::vector<std::string>;

constexpr char kLocalLan[] = "local_lan";

Shape ShapeOf() {
  return Map(
      Format::kIfname, "Bridges by name",
      Object(
          "One bridge",
          {{"role", Word("An ordinary bridge, or that of the local LAN", {"bridge", kLocalLan})},
           {"primary", Text("The port whose hardware address it has", Format::kIfname, 15)},
           {"ports", List("Its ports", Text("A port", Format::kIfname, 15)).Both().Unordered()}}));
}

Json Configured(const View& view) {
  Json bridges = Json::object();
  for (const std::string& name : ConfiguredInterfaces(view.unread)) {
    const std::string path = Ifcfg(name);
    if (KeyOf(path, keys::kType, view.unread) == "bridge") {
      const bool local = KeyOf(path, keys::kLocalLan, view.unread) == "yes";
      bridges[name]["role"] = local ? kLocalLan : "bridge";
      Put(&bridges[name], "primary", KeyOf(path, keys::kPrimary, view.unread));
    }
    const std::string bridge = KeyOf(path, keys::kBridge, view.unread);
    if (!bridge.empty()) bridges[bridge]["ports"].push_back(name);
  }
  return bridges.empty() ? Json() : bridges;
}

Json Live(const View& view, const Json&) {
  Json bridges = Json::object();
  for (const auto& [name, link] : view.kernel.links) {
    if (link.kind == "bridge") bridges[name] = {{"ports", view.kernel.MembersOf(name)}};
  }
  return bridges.empty() ? Json() : bridges;
}

void SettleBridge(const Path& path, Change* change, Findings* findings) {
  Json& wanted = change->wanted[path];
  if (!wanted.is_object()) return;
  const auto complain = [&](const char* field, const char* sentence) {
    findings->Add("bridge", path / field, Severity::kUsage, sentence);
  };
  const Texts ports = TextsOf(Member(wanted, "ports"));
  if (ports.empty()) return complain("ports", "a bridge needs a port: name it");
  if (!wanted.contains("role")) wanted["role"] = "bridge";
  const std::string primary = TextOf(Member(wanted, "primary"));
  if (Has(ports, primary)) return;
  if (!At(change->wish, path / "primary").is_null())
    complain("primary", "the primary port is one of the bridge's ports");
  wanted["primary"] = ports.front();  // the one of before is no port any more
}

void Settle(Change* change, Findings* findings) {
  for (const std::string& bridge : change->NamedIn(Path("/bridges")))
    SettleBridge("bridges" / bridge, change, findings);
}

// ---- steps

ZARNNETIFSETTINGS SettingsOf(const std::string& ifname, const Json& ipv4) {
  ZARNNETIFSETTINGS settings{};
  settings.blOnBoot = 1;
  Fill(ifname, settings.szName);
  if (TextOf(Member(ipv4, "method")) != "static") return settings;
  settings.blStatic = 1;
  Fill(TextOf(Member(ipv4, "address")), settings.szIP);
  Fill(MaskOf(NumberOf(Member(ipv4, "prefix"))), settings.szMask);
  return settings;
}

bool Write(const std::string& ifname, std::uint32_t type, const std::string& reference,
           const ZARNNETIFSETTINGS* settings) {
  ZARNBRIDGEINFO info{};
  info.type = type;
  Fill(ifname, info.szName);
  Fill(reference, info.szRef);
  return ZARNNetSetBridgeConfig(settings, &info) == 0;
}

struct Bridge {
  std::string name;
  std::uint32_t type = ZARNBRIDGE_BRIDGE;
  std::string primary;
  Texts ports;
  Texts leaving;    // ports of before that stand by themselves afterwards
  Texts taken;      // ports of before that something else has afterwards, or that are gone then
  Texts going;      // of these: whose own setter has to find them
  Texts restarted;  // what of the bridge lost a VLAN, and was started for that
  Json addresses;   // of the bridge; of a port that leaves, by its name
};

// The setters know a fixed address and a lease: who has neither is noted behind them.
bool NoteNoAddress(const std::string& ifname, const Json& ipv4) {
  return TextOf(Member(ipv4, "method")) != frame::model::kNoAddress ||
         EditKeys(Ifcfg(ifname), {{keys::kBootProto, frame::model::kNoAddress}}, {});
}

bool Release(const std::string& port, const Json& ipv4) {
  const ZARNNETIFSETTINGS settings = SettingsOf(port, ipv4);
  return ZARNNetDisableBridgeSlave(&settings) == 0 && NoteNoAddress(port, ipv4);
}

// What is not there, or down already, cannot stop.
void StopAllBut(const Texts& others, Texts ifnames) {
  std::erase_if(ifnames, [&](const std::string& ifname) { return Has(others, ifname); });
  if (!ifnames.empty()) static_cast<void>(RunStartScript("stop", ifnames));
}

// Before anything else is made of them: only who has a port gives it away.
bool FreeTaken(const Bridge& bridge) {
  StopAllBut(bridge.going, bridge.taken);
  return std::all_of(bridge.taken.begin(), bridge.taken.end(), [&](const std::string& port) {
    return Release(port, Member(bridge.addresses, port));
  });
}

bool MakeBridge(const Bridge& bridge) {
  const Json& own = Member(bridge.addresses, bridge.name);
  const ZARNNETIFSETTINGS settings = SettingsOf(bridge.name, own);
  if (!Write(bridge.name, bridge.type, bridge.primary, &settings) ||
      !NoteNoAddress(bridge.name, own)) {
    return false;
  }
  for (const std::string& port : bridge.ports) {
    if (!Write(port, ZARNBRIDGE_PORT, bridge.name, nullptr)) return false;
  }
  for (const std::string& port : bridge.leaving) {
    if (!Release(port, Member(bridge.addresses, port))) return false;
  }
  Texts all = bridge.ports;
  all.insert(all.end(), bridge.leaving.begin(), bridge.leaving.end());
  all.push_back(bridge.name);
  StopAllBut(bridge.restarted, all);
  return RunStartScript("start", all);
}

// The primary port gets the bridge's address back. What else has a port then starts it.
bool RemoveBridge(const Bridge& bridge) {
  Texts ports = bridge.leaving;
  ports.insert(ports.end(), bridge.taken.begin(), bridge.taken.end());
  Texts all = ports;
  all.push_back(bridge.name);
  StopAllBut(bridge.going, all);
  for (const std::string& port : ports) {
    const bool heir = port == bridge.primary;
    if (!Release(port, Member(bridge.addresses, heir ? bridge.name : port))) return false;
  }
  ::unlink(SavedIfcfg(bridge.name).c_str());
  if (::unlink(Ifcfg(bridge.name).c_str()) != 0) return false;
  return bridge.leaving.empty() || RunStartScript("start", bridge.leaving);
}

// What the wish says, or of a new bridge what its primary port has.
Json AddressesOf(const Change& change, const Bridge& bridge) {
  Json addresses = Json::object();
  const auto ipv4Of = [&](const std::string& ifname) {
    return At(change.wanted, "interfaces" / ifname / "ipv4");
  };
  for (const Texts* const ports : {&bridge.leaving, &bridge.taken}) {
    for (const std::string& port : *ports)
      addresses[port] = ipv4Of(port);
  }
  const Json own = ipv4Of(bridge.name);
  addresses[bridge.name] = own.is_null() ? ipv4Of(bridge.primary) : own;
  return addresses;
}

Bridge BridgeOf(const Change& change, const std::string& name) {
  const Json& before = At(change.before, "bridges" / name);
  const Json& wanted = At(change.wanted, "bridges" / name);
  Bridge bridge;
  bridge.name = name;
  bridge.ports = TextsOf(Member(wanted, "ports"));
  if (TextOf(Member(wanted, "role")) == kLocalLan) bridge.type = ZARNBRIDGE_LOCAL_LAN;
  bridge.primary = TextOf(Member(wanted.is_object() ? wanted : before, "primary"));
  for (const std::string& port : TextsOf(Member(before, "ports"))) {
    if (Has(bridge.ports, port)) continue;
    const bool goes = change.Goes(port);
    if (goes) bridge.going.push_back(port);
    (goes || change.IsMadeOf(port) ? bridge.taken : bridge.leaving).push_back(port);
  }
  Texts made = bridge.ports;
  made.push_back(name);
  std::copy_if(made.begin(), made.end(), std::back_inserter(bridge.restarted),
               [&](const std::string& ifname) { return change.LosesVlan(ifname); });
  bridge.addresses = AddressesOf(change, bridge);
  return bridge;
}

void PlanBridge(const Change& change, const std::string& name, Steps* steps) {
  const Path path = "bridges" / name;
  if (!change.Concerns(path)) return;
  const Bridge bridge = BridgeOf(change, name);
  const std::vector<std::string> touches{Ifcfg(name), frame::paths::kNetworkScript};
  if (At(change.wanted, path).is_object()) {
    if (!bridge.taken.empty()) {
      steps->push_back({Phase::kFreeUses, path, "take " + Joined(bridge.taken) + " out of " + name,
                        "ZARNNetDisableBridgeSlave and the start script", touches,
                        [bridge] { return FreeTaken(bridge); }});
    }
    steps->push_back({Phase::kMakeBridge, path, "make " + name + " of " + Joined(bridge.ports),
                      "ZARNNetSetBridgeConfig and the start script", touches,
                      [bridge] { return MakeBridge(bridge); }});
  } else {
    steps->push_back({Phase::kRemoveBridge, path, "remove the bridge " + name,
                      "ZARNNetDisableBridgeSlave and the start script", touches,
                      [bridge] { return RemoveBridge(bridge); }});
  }
}

void Plan(const Change& change, Steps* steps) {
  for (const std::string& name : change.NamedIn(Path("/bridges")))
    PlanBridge(change, name, steps);
}

}  // namespace

const Section kBridges{"bridges", ShapeOf, Configured,   Live,
                       Settle,    Plan,    AwaitNothing, ReviveNothing};

}  // namespace change
