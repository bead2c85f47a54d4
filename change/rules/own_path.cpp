// SPDX-License-Identifier: Apache-2.0
// Who asks over the network needs what carries his session: the address that he came to, the
// interface that has it with all below it, and the way to where he sits.
#include <algorithm>
#include <arpa/inet.h>
#include <cstring>

#include "record/caller.h"
#include "rules/rule.h"
#include "rules/rules.h"

namespace change {
namespace {

struct OwnPath {
  Session session;
  const KernelLink* link;     // with the address
  const KernelRoute* router;  // where the client is beyond one; null for a neighbour
};

const KernelAddress* AddressIn(const KernelLink& link, const std::string& text) {
  const auto found = std::find_if(link.addresses.begin(), link.addresses.end(),
                                  [&](const auto& address) { return address.text == text; });
  return found != link.addresses.end() ? &*found : nullptr;
}

const KernelLink* LinkWith(const Kernel& kernel, const std::string& text) {
  for (const auto& [name, link] : kernel.links) {
    if (AddressIn(link, text) != nullptr) return &link;
  }
  return nullptr;
}

bool IsNeighbour(const KernelAddress& own, const std::string& client) {
  constexpr unsigned kByte = 8;
  in6_addr a{};
  in6_addr b{};
  if (::inet_pton(own.family, own.text.c_str(), &a) != 1 ||
      ::inet_pton(own.family, client.c_str(), &b) != 1)
    return false;
  const unsigned whole = own.prefix / kByte;
  const unsigned rest = own.prefix % kByte;
  if (std::memcmp(a.s6_addr, b.s6_addr, whole) != 0) return false;
  const unsigned mask = 0xFFU << (kByte - rest);
  return rest == 0 || ((a.s6_addr[whole] ^ b.s6_addr[whole]) & mask & 0xFFU) == 0;
}

std::optional<OwnPath> OwnPathIn(const Kernel& kernel) {
  const auto session = CallersSession();
  if (!session) return std::nullopt;
  const KernelLink* const link = LinkWith(kernel, session->server);
  if (link == nullptr || link->IsLoopback()) return std::nullopt;
  OwnPath path{*session, link, nullptr};
  const KernelAddress& own = *AddressIn(*link, session->server);
  const KernelRoute* const route = kernel.DefaultRoute();
  const bool beyond = own.family == AF_INET && !IsNeighbour(own, session->client);
  if (beyond && route != nullptr && route->ifname == link->name) path.router = route;
  return path;
}

// The interface and all that carries it: ports of a bridge, slaves of a bond, the parent of a VLAN.
std::vector<const KernelLink*> CarriersOf(const KernelLink& link, const Kernel& kernel) {
  constexpr std::size_t kMost = 64;
  std::vector<const KernelLink*> carriers{&link};
  for (std::size_t i = 0; i < carriers.size() && i < kMost; ++i) {
    const KernelLink& upper = *carriers[i];
    if (const KernelLink* const parent = kernel.Link(upper.parent)) carriers.push_back(parent);
    for (const std::string& member : kernel.MembersOf(upper.name))
      carriers.push_back(kernel.Link(member));
  }
  return carriers;
}

std::string Sentence(const OwnPath& path, const std::string& what) {
  return what + ", over which this is asked for from " + path.session.client +
         ": have it confirmed (\"confirm\"), so that it comes back by itself, or insist";
}

// Where the change gives the address of the session to an interface; empty where it gives it to
// none.
std::string NewHomeOf(const Change& change, const OwnPath& path) {
  std::string own = path.link->name;
  const Path ipv4 = "interfaces" / own / "ipv4";
  const KernelAddress& address = *AddressIn(*path.link, path.session.server);
  const bool first =
      address.family == AF_INET && TextOf(At(change.live, ipv4 / "address")) == path.session.server;
  const Path family = address.family == AF_INET ? ipv4 : "interfaces" / own / "ipv6";
  const bool stays = !change.Concerns(family) || (address.family == AF_INET && !first);
  if (stays) return own;
  for (const std::string& ifname : AllInterfaces(change)) {
    const Path other = "interfaces" / ifname / (address.family == AF_INET ? "ipv4" : "ipv6");
    if (TextOf(At(change.wanted, other / "method")) == "static" &&
        TextOf(At(change.wanted, other / "address")) == path.session.server)
      return ifname;
  }
  return {};
}

// What carries the session and is taken down, removed or made anew.
std::string CarrierLostBy(const Change& change, const OwnPath& path) {
  for (const KernelLink* const link : CarriersOf(*path.link, change.kernel)) {
    const std::string& name = link->name;
    const Path up = "interfaces" / name / "up";
    if (change.Concerns(up) && At(change.wanted, up) == Json(false)) return "it takes down " + name;
    for (const char* section : {"bonds", "bridges", "vlans"}) {
      const Path whole = section / name;
      if (!change.Concerns(whole)) continue;
      return (At(change.wanted, whole).is_null() ? "it removes " : "it makes anew ") + name;
    }
    const auto vlans = change.VlansOver(name);
    const bool tags = std::any_of(vlans.begin(), vlans.end(), [&](const std::string& vlan) {
      return change.Concerns("vlans" / vlan) && change.kernel.Link(vlan) == nullptr;
    });
    if (tags) return "it makes " + name + " carry a VLAN alone";
  }
  return {};
}

// An interface without a master gets one: what it had of addresses is the master's or gone.
std::string MemberMadeOf(const Change& change, const OwnPath& path) {
  const std::string master = MasterOf(change, path.link->name);
  if (master.empty() || !path.link->master.empty()) return {};
  const std::string name = master.substr(master.rfind(' ') + 1);
  const Path address = "interfaces" / name / "ipv4" / "address";
  if (TextOf(At(change.wanted, address)) == path.session.server) return {};
  return "it makes " + path.link->name + " part of " + master;
}

std::string RouterLostBy(const Change& change, const OwnPath& path) {
  const Path gateway("/routes/gateway");
  if (path.router == nullptr || !change.Concerns(gateway)) return {};
  if (TextOf(At(change.wanted, gateway)) == path.router->gateway) return {};
  return "it takes away the gateway " + path.router->gateway;
}

}  // namespace

void OwnPathStays(const Change& change, Findings* findings) {
  if (change.options.confirm || change.differences.empty()) return;
  const auto path = OwnPathIn(change.kernel);
  if (!path) return;
  const auto find = [&](const Path& where, const std::string& what) {
    if (!what.empty())
      findings->Add("own_path", where, Severity::kInsistable, Sentence(*path, what));
    return !what.empty();
  };
  const Path where = "interfaces" / path->link->name;
  if (NewHomeOf(change, *path).empty()) {
    find(where, "it takes away the address " + path->session.server + " of " + path->link->name);
  } else if (!find(where, MemberMadeOf(change, *path)) &&
             !find(where, CarrierLostBy(change, *path))) {
    find(Path("/routes/gateway"), RouterLostBy(change, *path));
  }
}

std::string OwnPathLostBy(const Kernel& now, const Kernel& later) {
  const auto path = OwnPathIn(now);
  if (!path) return {};
  const KernelLink* const link = later.Link(path->link->name);
  if (link == nullptr || AddressIn(*link, path->session.server) == nullptr)
    return Sentence(
        *path, "it takes away the address " + path->session.server + " of " + path->link->name);
  for (const KernelLink* const carrier : CarriersOf(*path->link, now)) {
    const KernelLink* const same = later.Link(carrier->name);
    if (same == nullptr || same->master != carrier->master || (carrier->IsUp() && !same->IsUp()))
      return Sentence(*path, "it takes away " + carrier->name);
  }
  const KernelRoute* const route = later.DefaultRoute();
  if (path->router != nullptr && (route == nullptr || route->gateway != path->router->gateway))
    return Sentence(*path, "it takes away the gateway " + path->router->gateway);
  return {};
}

}  // namespace change
