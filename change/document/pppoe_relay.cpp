// SPDX-License-Identifier: Apache-2.0
// The relays of PPPoE, one for each interface with clients.
#include <zarnnetsdk/pppoe.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/paths.h"

namespace change {
namespace {

const Path kSection("/pppoe_relay");

Shape ShapeOf() {
  return Map(Format::kIfname, "PPPoE relays by the interface of their clients",
             Object("One relay",
                    {{"enabled", Flag("Is it meant to run; live: does it").Both()},
                     {"server", Text("The interface on the server's side", Format::kIfname, 15)}}));
}

Json Configured(const View& view) {
  Json relays = Json::object();
  for (const std::string& ifname : NamesIn(frame::paths::kPppoeRelayFolder, "", view.unread)) {
    PPPOE_RELAY_CONF conf{};
    if (ZARNNetGetPPPoERelayConfig(ifname.c_str(), &conf) != 0) continue;
    relays[ifname]["enabled"] = conf.enable == 1;
    Put(&relays[ifname], "server", conf.server);
  }
  return relays.empty() ? Json() : relays;
}

bool Runs(const std::string& ifname) {
  const std::string process = std::string(frame::paths::kPppoeRelay) + " -C " + ifname;
  return KOPACIsProcAlive(process.c_str()) == 1;
}

Json Live(const View&, const Json& configured) {
  if (!configured.is_object()) return nullptr;
  Json relays = Json::object();
  for (const auto& [ifname, relay] : configured.items())
    relays[ifname]["enabled"] = Runs(ifname);
  return relays;
}

void Settle(Change* change, Findings* findings) {
  for (const std::string& ifname : change->NamedIn(kSection)) {
    const Path path = kSection / ifname;
    const Json& relay = At(change->wanted, path);
    if (!relay.is_object()) {
      findings->Add("pppoe_relay", path, Severity::kUsage,
                    "a relay cannot be removed: \"enabled\": false switches it off");
    } else if (IsTrue(Member(relay, "enabled")) && !relay.contains("server")) {
      findings->Add("pppoe_relay", path / "server", Severity::kUsage,
                    "name the interface on the server's side");
    }
  }
}

void PlanRelay(const Change& change, const std::string& ifname, Steps* steps) {
  const Path path = kSection / ifname;
  PPPOE_RELAY_CONF conf{};
  conf.enable = IsTrue(At(change.wanted, path / "enabled")) ? 1 : 0;
  Fill(TextOf(At(change.wanted, path / "server")), conf.server);
  if (change.Concerns(path)) {
    steps->push_back({Phase::kSettings,
                      path,
                      "store the PPPoE relay of " + ifname,
                      "ZARNNetSetPPPoERelayConfig",
                      {frame::paths::kPppoeRelayFolder + ifname},
                      [=] { return ZARNNetSetPPPoERelayConfig(ifname.c_str(), &conf) == 0; }});
  }
  if (change.Concerns(path) || change.Restarts(kSection)) {
    steps->push_back({Phase::kServices,
                      path,
                      "put the PPPoE relay of " + ifname + " into effect",
                      "ZARNNetApplyPPPoERelayConfig",
                      {frame::paths::kPppoeRelay},
                      [=] { return ZARNNetApplyPPPoERelayConfig(ifname.c_str()) == 0; }});
  }
}

void Plan(const Change& change, Steps* steps) {
  const Json& relays = At(change.wanted, kSection);
  if (!relays.is_object()) return;
  for (const auto& [ifname, relay] : relays.items())
    PlanRelay(change, ifname, steps);
}

bool Revive(const Change& change) {
  bool all = true;
  for (const std::string& ifname : change.NamedIn(kSection)) {
    const bool stored = At(change.before, kSection / ifname).is_object();
    // One that was not stored before is ended by what reads as "not enabled".
    all = (!stored && !Runs(ifname)) || ZARNNetApplyPPPoERelayConfig(ifname.c_str()) == 0;
  }
  return all;
}

}  // namespace

const Section kPppoeRelay{"pppoe_relay", ShapeOf, Configured,   Live,
                          Settle,        Plan,    AwaitNothing, Revive};

}  // namespace change
