// SPDX-License-Identifier: Apache-2.0
// A setter that takes an interface down, or replaces its address, takes what the kernel hangs on it
// with it.
#include "steps/repair.h"

#include <algorithm>
#include <sys/socket.h>

#include <zarnnetsdk/dns_route.h>

#include "document/machine.h"
#include "document/section.h"
#include "frame/model/paths.h"
#include "record/programs.h"

namespace change {
namespace {

using Texts = std::vector<std::string>;

// A VLAN goes with what it is made on: a bond or a bridge that a setter makes anew.
void RestartVlans(const Change& change, const Kernel& before, const Kernel& now, Repairs* repairs) {
  for (const auto& [name, link] : before.links) {
    const bool gone = link.kind == "vlan" && now.Link(name) == nullptr && !change.Goes(name);
    if (!gone || !IsFile(frame::paths::Ifcfg(name))) continue;
    if (RunStartScript("start", {name})) {
      repairs->made.push_back("the VLAN " + name + " was started again");
    } else {
      repairs->lost.push_back("the VLAN " + name + " is gone");
    }
  }
}

// The one that the wish replaces or takes; it was the configured one, or the first.
bool IsNamed(const Change& change, const std::string& ifname, const KernelAddress& address) {
  const Path path = "interfaces" / ifname / (address.family == AF_INET ? "ipv4" : "ipv6");
  if (!change.wish.contains(path)) return false;
  if (TextOf(Member(At(change.wanted, path), "method")) != "static") return true;
  return TextOf(At(change.live, path / "address")) == address.text ||
         TextOf(At(change.before, path / "address")) == address.text;
}

// Of what is removed nothing goes to another whose addresses are wished themselves.
bool IsNamedInstead(const Change& change, const std::string& gone, const std::string& heir,
                    const KernelAddress& address) {
  const char* const family = address.family == AF_INET ? "ipv4" : "ipv6";
  return gone != heir && At(change.wanted, "interfaces" / gone).is_null() &&
         change.wish.contains("interfaces" / heir / family);
}

bool HasOneOf(const KernelLink& link, const std::vector<KernelAddress>& addresses) {
  return std::any_of(addresses.begin(), addresses.end(), [&](const KernelAddress& had) {
    return !had.IsAutomatic() && std::any_of(link.addresses.begin(), link.addresses.end(),
                                             [&](const auto& has) { return has.text == had.text; });
  });
}

// Who has the place of an interface that joined another, carries a VLAN now, or is gone: the one
// with its address. Null for none.
const KernelLink* HeirOf(const KernelLink& before, const Kernel& now) {
  const KernelLink* const link = now.Link(before.name);
  const bool same = link != nullptr && link->master == before.master;
  if (same && std::none_of(now.links.begin(), now.links.end(),
                           [&](const auto& entry) { return entry.second.parent == before.name; }))
    return link;
  const auto heir = std::find_if(now.links.begin(), now.links.end(), [&](const auto& entry) {
    return HasOneOf(entry.second, before.addresses);
  });
  return heir != now.links.end() ? &heir->second : nullptr;
}

void RepairAddresses(const Change& change, const KernelLink& before, const Kernel& now,
                     Repairs* repairs) {
  const KernelLink* const link = HeirOf(before, now);
  for (const KernelAddress& address : before.addresses) {
    if (address.IsAutomatic() || IsNamed(change, before.name, address)) continue;
    const bool there = link != nullptr && HasOneOf(*link, {address});
    if (there || (link != nullptr && IsNamedInstead(change, before.name, link->name, address)))
      continue;
    const std::string what = "the address " + address.WithPrefix() + " of " + before.name;
    if (link != nullptr && AddAddress(address, *link)) {
      const bool moved = link->name != before.name;
      repairs->made.push_back(what + " was put back" + (moved ? ", on " + link->name : ""));
    } else if (now.Link(before.name) != nullptr) {
      repairs->lost.push_back(what + " is gone");
    }
  }
}

bool IsThere(const KernelRoute& route, const Kernel& now) {
  return std::any_of(now.routes.begin(), now.routes.end(), [&](const KernelRoute& other) {
    // Another default route of the family takes the place of the one that is gone.
    const bool same = route.isDefault ? other.isDefault : other.Words() == route.Words();
    return same && other.family == route.family;
  });
}

bool IsNamed(const Change& change, const KernelRoute& route) {
  if (!route.isDefault) return false;
  return route.family == AF_INET ? change.wish.contains(Path("/routes/gateway"))
                                 : change.wish.contains("interfaces" / route.ifname / "ipv6");
}

void RepairRoute(KernelRoute route, const Generation& before, const Kernel& now, Repairs* repairs) {
  const std::string what = "the route " + route.Words();
  const KernelLink* link = now.LinkTo(route.gateway);
  if (link == nullptr) link = HeirOf(*before.kernel.Link(route.ifname), now);
  if (link != nullptr) route.ifname = link->name;
  if (IsThere(route, now)) return;
  if (link != nullptr && AddRoute(route, now)) {
    repairs->made.push_back("the route " + route.Words() + " was put back");
  } else {
    repairs->lost.push_back(what + " is gone");
  }
}

void RepairRoutes(const Change& change, const Generation& before, const Kernel& now,
                  Repairs* repairs) {
  for (const KernelRoute& route : before.kernel.routes) {
    if (!route.IsAutomatic() && !IsThere(route, now) && !IsNamed(change, route))
      RepairRoute(route, before, now, repairs);
  }
}

Texts Servers() {
  Names servers;
  return ZARNNetDNSListGet(servers.Out()) == 0 ? servers.Texts() : Texts();
}

void RepairServers(const Change& change, const Generation& before, Repairs* repairs) {
  const Texts had = TextsOf(At(change.live, Path("/dns/servers")));
  if (had.empty() || change.wish.contains("dns") || !Servers().empty()) return;
  for (const char* path :
       {frame::paths::kLearnedServersV4, frame::paths::kLearnedServersV6, frame::paths::kResolv}) {
    PutBackFile(before, path);
  }
  const std::string what = "the name servers " + Joined(had);
  if (Servers() == had) {
    repairs->made.push_back(what + " were put back");
  } else {
    repairs->lost.push_back(what + " are gone");
  }
}

}  // namespace

Repairs Repair(const Change& change, const Generation& before) {
  Repairs repairs;
  auto now = ReadKernel();
  if (!now) return repairs;
  RestartVlans(change, before.kernel, *now, &repairs);
  now = ReadKernel();
  if (!now) return repairs;
  for (const auto& [name, link] : before.kernel.links)
    RepairAddresses(change, link, *now, &repairs);
  now = ReadKernel();
  if (now) RepairRoutes(change, before, *now, &repairs);
  RepairServers(change, before, &repairs);
  return repairs;
}

}  // namespace change
