// SPDX-License-Identifier: Apache-2.0
// The IPv6 tunnel and the client of its broker.
#include <algorithm>
#include <sys/socket.h>

#include <zarnnetsdk/tunnel.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/paths.h"
#include "record/owned_files.h"

namespace change {
namespace {

constexpr char kDevice[] = "tun";
const Path kEnabled = "tunnel" / std::string("enabled");

Shape ShapeOf() {
  return Object("The IPv6 tunnel",
                {{"enabled", Flag("Is it meant to run; live: has it an address").Both()},
                 {"server", Text("The tunnel broker", Format::kAny, 255)},
                 {"anonymous", Flag("Without a login")},
                 {"user", Text("User id of the login", Format::kAny, 255)},
                 {"password", Text("Its password", Format::kAny, 31).Secret()},
                 {"address", Text("Address of the tunnel", Format::kIpv6, 45).ReadOnly()}});
}

Json Configured(const View& view) {
  Wiped<ZARNTUNNELCONF> settings;
  const int state = ZARNTunnelConfigGet(&settings.record);
  if (state < 0 || *settings.record.szServer == '\0') return nullptr;
  Json tunnel{{"enabled", state == 1}, {"anonymous", settings.record.blAnonymous != 0}};
  Put(&tunnel, "server", settings.record.szServer);
  Put(&tunnel, "user", settings.record.szUserId);
  if (view.secrets) Put(&tunnel, "password", settings.record.szPassword);
  return tunnel;
}

Json Live(const View& view, const Json& configured) {
  if (!configured.is_object()) return nullptr;
  Json tunnel{{"enabled", false}};
  const KernelLink* const device = view.kernel.Link(kDevice);
  if (device == nullptr) return tunnel;
  for (const KernelAddress& address : device->addresses) {
    if (address.family != AF_INET6) continue;
    tunnel["enabled"] = true;
    tunnel["address"] = address.text;
  }
  return tunnel;
}

void Settle(Change* change, Findings* findings) {
  Json& wanted = change->wanted["tunnel"];
  if (!wanted.is_object()) {
    return findings->Add("tunnel", Path("/tunnel"), Severity::kUsage,
                         "the tunnel cannot be removed: \"enabled\": false switches it off");
  }
  if (!wanted.contains("server"))
    findings->Add("tunnel", Path("/tunnel/server"), Severity::kUsage, "name the tunnel's broker");
  if (!wanted.contains("anonymous")) wanted["anonymous"] = !wanted.contains("user");
  if (IsTrue(wanted["anonymous"]) && !At(change->wish, Path("/tunnel/user")).is_null()) {
    findings->Add("tunnel", Path("/tunnel/user"), Severity::kUsage,
                  "an anonymous login has no user: leave out one of the two");
  }
}

bool Store(const Json& tunnel) {
  Wiped<ZARNTUNNELCONF> settings;
  settings.record.blAnonymous = IsTrue(Member(tunnel, "anonymous")) ? 1 : 0;
  Fill(TextOf(Member(tunnel, "server")), settings.record.szServer);
  if (settings.record.blAnonymous == 0) {
    Fill(TextOf(Member(tunnel, "user")), settings.record.szUserId);
    Fill(TextOf(Member(tunnel, "password")), settings.record.szPassword);
  }
  return ZARNTunnelConfigSet(&settings.record) == 0;
}

bool Switch(bool on, bool restart) {
  const int action = !on ? ZARNTUNNEL_STOP : restart ? ZARNTUNNEL_RESTART : ZARNTUNNEL_START;
  return KOPACFileSetKeyValue(kTunnelService, "run", on ? "yes" : "no", "%s=\"%s\"\n") == 0 &&
         ZARNTunnelExecute(action, nullptr) == 0;
}

void Plan(const Change& change, Steps* steps) {
  const Json tunnel = Member(change.wanted, "tunnel");
  const Path section("/tunnel");
  const bool settings = std::any_of(
      change.differences.begin(), change.differences.end(), [&](const auto& difference) {
        return Leads(section, difference.path) && difference.path != kEnabled;
      });
  if (settings) {
    steps->push_back({Phase::kSettings,
                      section,
                      "store the tunnel's settings",
                      "ZARNTunnelConfigSet",
                      {frame::paths::Ifcfg(kDevice), frame::paths::kTunnelPassword},
                      [tunnel] { return Store(tunnel); }});
  }
  const bool restart = change.Restarts(section);
  if (!change.Concerns(kEnabled) && !restart) return;
  const bool on = IsTrue(Member(tunnel, "enabled"));
  steps->push_back({Phase::kServices,
                    kEnabled,
                    on ? "start the tunnel" : "stop the tunnel",
                    "ZARNTunnelExecute",
                    {kTunnelService, frame::paths::kRcTun},
                    [=] { return Switch(on, restart); }});
}

void Await(const Change& change, const Json& live, std::vector<Remark>* awaited) {
  if (IsTrue(At(change.wanted, kEnabled)) && !IsTrue(At(live, kEnabled)) &&
      KOPACIsProcAlive(frame::paths::kGogoc) == 1)
    awaited->push_back({kEnabled, "the tunnel's client still tries to reach its broker"});
}

bool Revive(const Change& change) {
  const bool ran = IsTrue(At(change.live, kEnabled));
  return ZARNTunnelExecute(ran ? ZARNTUNNEL_RESTART : ZARNTUNNEL_STOP, nullptr) == 0;
}

}  // namespace

const Section kTunnel{"tunnel", ShapeOf, Configured, Live, Settle, Plan, Await, Revive};

}  // namespace change
