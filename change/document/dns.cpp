// SPDX-License-Identifier: Apache-2.0
// The name servers.
#include <fstream>
#include <sstream>
#include <unistd.h>

#include <zarnnetsdk/dns_route.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/paths.h"

namespace change {
namespace {

constexpr char kMode[] = "dns_mode";
const Path kModePath = "dns" / std::string("mode");
const Path kServersPath = "dns" / std::string("servers");

Shape ShapeOf() {
  return Object(
      "Name servers",
      {{"mode", Word("Which servers the resolver uses: the fixed ones (static), or those that "
                     "the interfaces learn (auto)",
                     {"static", "auto"})},
       {"servers", List("The fixed servers, in order of use; live: those of the resolver's file",
                        Text("IPv4 or IPv6 address", Format::kAddress, 45))
                       .Both()}});
}

std::vector<std::string> ServersOf(int (*reader)(PKOPACSZLIST*)) {
  Names servers;
  return reader(servers.Out()) == 0 ? servers.Texts() : std::vector<std::string>();
}

// The library's reader takes a lock that is root's; another user may read the file.
std::vector<std::string> ServersInUse() {
  if (::geteuid() == 0) return ServersOf(ZARNNetDNSListGet);
  std::vector<std::string> servers;
  std::ifstream file(frame::paths::kResolv);
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string word;
    std::string server;
    if (words >> word >> server && word == "nameserver") servers.push_back(server);
  }
  return servers;
}

Json Configured(const View& view) {
  const bool fixed = KeyOf(frame::paths::kInfo, kMode, view.unread) == "static";
  Json dns{{"mode", fixed ? "static" : "auto"}};
  if (!IsFile(frame::paths::kResolvStatic)) return dns;  // its reader would log that
  const auto servers = ServersOf(ZARNNetStaticDNSListGet);
  if (!servers.empty()) dns["servers"] = servers;
  return dns;
}

Json Live(const View&, const Json&) {
  Json dns = Json::object();
  const auto servers = ServersInUse();
  if (!servers.empty()) dns["servers"] = servers;
  return dns;
}

void Settle(Change* change, Findings* findings) {
  Json& wish = change->wish["dns"];
  if (wish.is_null()) wish = {{"mode", "auto"}};  // nothing fixed any more
  if (wish.contains("servers") && wish["servers"].is_null()) {
    wish.erase("servers");  // the stored ones stay, and are not used
    wish["mode"] = "auto";
  }
  if (wish.contains("servers") && wish["servers"].empty()) {
    findings->Add("dns_servers", kServersPath, Severity::kUsage,
                  "name at least one server, or \"mode\": \"auto\" for learned ones");
  }
  if (wish.contains("servers") && !wish.contains("mode")) wish["mode"] = "static";
  if (TextOf(Member(wish, "mode")) == "auto" && wish.contains("servers") &&
      wish["servers"] == At(change->before, kServersPath)) {
    wish.erase("servers");  // a document that was read: stored, not used
  }
  if (TextOf(Member(wish, "mode")) == "auto" && wish.contains("servers")) {
    findings->Add(
        "dns_servers", kServersPath, Severity::kUsage,
        "servers are fixed, and the mode auto uses learned ones: leave out one of the two");
  }
  change->wanted["dns"] = Member(change->before, "dns");
  change->wanted["dns"].merge_patch(wish);
}

void Plan(const Change& change, Steps* steps) {
  if (change.Concerns(kServersPath) ||
      (change.Concerns(kModePath) && TextOf(At(change.wanted, kModePath)) == "static")) {
    const auto servers = TextsOf(At(change.wanted, kServersPath));
    steps->push_back({Phase::kNames,
                      kServersPath,
                      "use the name servers " + Joined(servers),
                      "ZARNNetDNSListSet",
                      {frame::paths::kResolvStatic, frame::paths::kInfo, frame::paths::kResolv},
                      [servers] { return ZARNNetDNSListSet(Names(servers).Get()) == 0; }});
  } else if (change.Concerns(kModePath)) {
    steps->push_back({Phase::kNames,
                      kModePath,
                      "use the name servers that are learned",
                      "ZARNNetDNSModeSet",
                      {frame::paths::kInfo, frame::paths::kResolv},
                      [] { return ZARNNetDNSModeSet("auto") == 0; }});
  }
}

}  // namespace

const Section kDns{"dns", ShapeOf, Configured, Live, Settle, Plan, AwaitNothing, ReviveNothing};

}  // namespace change
