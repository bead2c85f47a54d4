// SPDX-License-Identifier: Apache-2.0
// The fixed address and default route of an interface in the running kernel.
#include "ipv6/fixed_address.h"

#include <algorithm>
#include <charconv>
#include <linux/if_addr.h>
#include <linux/ipv6_route.h>
#include <optional>
#include <vector>

#include "frame/base/address.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/addresses.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "ipv6/ip_action.h"

using namespace frame;

namespace {

using ipv6::Change;

// ---- addresses

std::optional<ZARNNETV6ADDR> Find(const std::string& ifname, const std::string& address) {
  for (const ZARNNETV6ADDR& present : ipv6::AddressesOf(ifname)) {
    if (address == present.szAddr) return present;
  }
  return std::nullopt;
}

bool Add(const std::string& ifname, const std::string& address, unsigned prefix, Undo* undo) {
  if (!ipv6::ChangeAddress(Change::kAdd, ifname, address, prefix)) return false;
  undo->Add(
      [=] { static_cast<void>(ipv6::ChangeAddress(Change::kDelete, ifname, address, prefix)); });
  return true;
}

bool Delete(const std::string& ifname, const std::string& address, unsigned prefix, Undo* undo) {
  if (!ipv6::ChangeAddress(Change::kDelete, ifname, address, prefix)) return false;
  undo->Add([=] { static_cast<void>(ipv6::ChangeAddress(Change::kAdd, ifname, address, prefix)); });
  return true;
}

// An address that a router gave would expire, and one that failed duplicate detection is not in
// use: both make way. So does one with another prefix length, which the kernel takes for the same
// address.
bool AddAddress(const std::string& ifname, const ipv6::Fixed& wanted, Undo* undo) {
  const auto present = Find(ifname, wanted.address);
  if (present) {
    const bool lasts = (present->flags & (IFA_F_PERMANENT | IFA_F_DADFAILED)) == IFA_F_PERMANENT;
    if (lasts && present->prefix == wanted.prefix) return true;
    if (!Delete(ifname, wanted.address, present->prefix, undo)) return false;
  }
  return Add(ifname, wanted.address, wanted.prefix, undo);
}

// The kernel drops addresses by itself when an interface goes down.
bool RemoveAddress(const std::string& ifname, const ipv6::Fixed& former, Undo* undo) {
  const auto present = Find(ifname, former.address);
  if (!present || present->prefix != former.prefix) return true;
  return Delete(ifname, former.address, former.prefix, undo);
}

// ---- default routes

struct DefaultRoute {
  std::string gateway;
  bool learned;  // from a router's advertisement
};

// The columns: destination and its prefix length, source and its, gateway, metric, references,
// uses, flags, name.
std::vector<DefaultRoute> DefaultRoutes(const std::string& ifname) {
  constexpr std::size_t kColumns = 10;
  std::vector<DefaultRoute> routes;
  LineReader lines(paths::kProcIpv6Route);
  if (!lines.IsOpen()) return routes;
  while (const auto line = lines.Next()) {
    const auto columns = SplitWords(*line);
    if (columns.size() != kColumns || columns[1] != "00" || columns[9] != ifname) continue;
    unsigned long flags = 0;
    std::from_chars(columns[8].data(), columns[8].data() + columns[8].size(), flags, 16);
    const auto gateway = ParseHexIpv6(columns[4]);
    routes.push_back({gateway ? Ipv6Text(*gateway) : "", (flags & RTF_ADDRCONF) != 0});
  }
  return routes;
}

bool HasRoute(const std::string& ifname, const std::string& gateway) {
  const auto routes = DefaultRoutes(ifname);
  return std::any_of(routes.begin(), routes.end(), [&](const DefaultRoute& route) {
    return !route.learned && route.gateway == gateway;
  });
}

bool ChangeRoute(Change change, const std::string& ifname, const std::string& gateway, Undo* undo) {
  const bool add = change == Change::kAdd;
  if (ipv6::ChangeDefaultRoute(change, ifname, gateway) != 0) {
    LOG_ERROR("%s:%d Failed to %s ipv6 default route via [%s] on [%s]", add ? "add" : "delete",
              gateway.c_str(), ifname.c_str());
    return false;
  }
  const Change opposite = add ? Change::kDelete : Change::kAdd;
  undo->Add([=] { static_cast<void>(ipv6::ChangeDefaultRoute(opposite, ifname, gateway)); });
  return true;
}

// The kernel takes no second default route of the same rank, and learned ones have that of
// configured ones. They are not put back: the next advertisement brings them.
void DropLearnedRoutes(const std::string& ifname) {
  for (const DefaultRoute& route : DefaultRoutes(ifname)) {
    if (!route.learned) continue;
    static_cast<void>(  // if it stays, adding ours tells
        ipv6::ChangeDefaultRoute(Change::kDelete, ifname, route.gateway));
  }
}

bool AddRoute(const std::string& ifname, const std::string& gateway, Undo* undo) {
  DropLearnedRoutes(ifname);
  return HasRoute(ifname, gateway) || ChangeRoute(Change::kAdd, ifname, gateway, undo);
}

bool RemoveRoute(const std::string& ifname, const std::string& gateway, Undo* undo) {
  return !HasRoute(ifname, gateway) || ChangeRoute(Change::kDelete, ifname, gateway, undo);
}

}  // namespace

std::vector<ZARNNETV6ADDR> ipv6::AddressesOf(const std::string& ifname) {
  return facts::KernelV6Addresses(ifname).value_or(std::vector<ZARNNETV6ADDR>{});
}

bool ipv6::Move(const std::string& ifname, const Fixed& former, const Fixed& wanted, Undo* undo) {
  const bool sameRoute = former.gateway == wanted.gateway;
  const bool sameAddress = former.address == wanted.address && former.prefix == wanted.prefix;
  if (!wanted.address.empty() && !AddAddress(ifname, wanted, undo)) return false;
  if (!former.gateway.empty() && !sameRoute && !RemoveRoute(ifname, former.gateway, undo))
    return false;
  if (!wanted.gateway.empty() && !AddRoute(ifname, wanted.gateway, undo)) return false;
  return former.address.empty() || sameAddress || RemoveAddress(ifname, former, undo);
}
