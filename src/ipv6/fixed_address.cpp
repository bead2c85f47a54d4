// The fixed address and default route of an interface in the running kernel.
#include "ipv6/fixed_address.h"

#include <algorithm>
#include <arpa/inet.h>
#include <charconv>
#include <linux/if_addr.h>
#include <linux/ipv6_route.h>
#include <optional>
#include <string_view>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "ipv6/config.h"

using namespace frame;

namespace {

int Opposite(int cmd) {
  return cmd == ipv6::kAdd ? ipv6::kDelete : ipv6::kAdd;
}

// ---- addresses

std::optional<ZARNNETV6ADDR> Find(const std::string& ifname, const std::string& address) {
  for (const ZARNNETV6ADDR& present : ipv6::AddressesOf(ifname)) {
    if (address == present.szAddr) return present;
  }
  return std::nullopt;
}

bool ChangeAddress(int cmd, const std::string& ifname, const std::string& address, unsigned prefix,
                   ipv6::Steps* steps) {
  if (ZARNNetIPv6IPAction(cmd, ifname.c_str(), address.c_str(), prefix, nullptr) != 0) return false;
  steps->Done([=] {
    static_cast<void>(
        ZARNNetIPv6IPAction(Opposite(cmd), ifname.c_str(), address.c_str(), prefix, nullptr));
  });
  return true;
}

// An address that a router gave would expire, and one that failed duplicate detection is not in
// use: both make way. So does one with another prefix length, which the kernel takes for the same
// address.
bool AddAddress(const std::string& ifname, const ipv6::Fixed& wanted, ipv6::Steps* steps) {
  const auto present = Find(ifname, wanted.address);
  if (present) {
    const bool lasts = (present->flags & (IFA_F_PERMANENT | IFA_F_DADFAILED)) == IFA_F_PERMANENT;
    if (lasts && present->prefix == wanted.prefix) return true;
    if (!ChangeAddress(ipv6::kDelete, ifname, wanted.address, present->prefix, steps)) return false;
  }
  return ChangeAddress(ipv6::kAdd, ifname, wanted.address, wanted.prefix, steps);
}

// The kernel drops addresses by itself when an interface goes down.
bool RemoveAddress(const std::string& ifname, const ipv6::Fixed& former, ipv6::Steps* steps) {
  const auto present = Find(ifname, former.address);
  if (!present || present->prefix != former.prefix) return true;
  return ChangeAddress(ipv6::kDelete, ifname, former.address, former.prefix, steps);
}

// ---- default routes

struct DefaultRoute {
  std::string gateway;
  bool learned;  // from a router's advertisement
};

// "fe80000000000000..." as compressed text; empty for anything else.
std::string AddressText(std::string_view hex) {
  in6_addr address{};
  if (hex.size() != 2 * sizeof address) return {};
  for (std::size_t i = 0; i < sizeof address; ++i) {
    const char* const digits = hex.data() + 2 * i;
    if (std::from_chars(digits, digits + 2, address.s6_addr[i], 16).ptr != digits + 2) return {};
  }
  char text[INET6_ADDRSTRLEN] = "";
  ::inet_ntop(AF_INET6, &address, text, sizeof text);
  return text;
}

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
    routes.push_back({AddressText(columns[4]), (flags & RTF_ADDRCONF) != 0});
  }
  return routes;
}

bool HasRoute(const std::string& ifname, const std::string& gateway) {
  const auto routes = DefaultRoutes(ifname);
  return std::any_of(routes.begin(), routes.end(), [&](const DefaultRoute& route) {
    return !route.learned && route.gateway == gateway;
  });
}

bool ChangeRoute(int cmd, const std::string& ifname, const std::string& gateway,
                 ipv6::Steps* steps) {
  if (ZARNNetIPv6IPAction(cmd, ifname.c_str(), "", 0, gateway.c_str()) != 0) {
    LOG_ERROR("%s:%d Failed to %s ipv6 default route via [%s] on [%s]",
              cmd == ipv6::kAdd ? "add" : "delete", gateway.c_str(), ifname.c_str());
    return Fail(ZARNNETERR_COMMAND, false);
  }
  steps->Done([=] {
    static_cast<void>(ZARNNetIPv6IPAction(Opposite(cmd), ifname.c_str(), "", 0, gateway.c_str()));
  });
  return true;
}

// The kernel takes no second default route of the same rank, and learned ones have that of
// configured ones. They are not put back: the next advertisement brings them.
void DropLearnedRoutes(const std::string& ifname) {
  for (const DefaultRoute& route : DefaultRoutes(ifname)) {
    if (!route.learned) continue;
    static_cast<void>(  // if it stays, adding ours tells
        ZARNNetIPv6IPAction(ipv6::kDelete, ifname.c_str(), "", 0, route.gateway.c_str()));
  }
}

bool AddRoute(const std::string& ifname, const std::string& gateway, ipv6::Steps* steps) {
  DropLearnedRoutes(ifname);
  return HasRoute(ifname, gateway) || ChangeRoute(ipv6::kAdd, ifname, gateway, steps);
}

bool RemoveRoute(const std::string& ifname, const std::string& gateway, ipv6::Steps* steps) {
  return !HasRoute(ifname, gateway) || ChangeRoute(ipv6::kDelete, ifname, gateway, steps);
}

}  // namespace

std::vector<ZARNNETV6ADDR> ipv6::AddressesOf(const std::string& ifname) {
  std::vector<ZARNNETV6ADDR> list(16);
  int count = 0;
  for (;;) {
    count = ZARNLnxV6IPGet(ifname.c_str(), list.data(), static_cast<int>(list.size()));
    if (count <= static_cast<int>(list.size())) break;
    list.resize(static_cast<std::size_t>(count));
  }
  list.resize(static_cast<std::size_t>(std::max(count, 0)));
  return list;
}

bool ipv6::Move(const std::string& ifname, const Fixed& former, const Fixed& wanted, Steps* steps) {
  const bool sameRoute = former.gateway == wanted.gateway;
  const bool sameAddress = former.address == wanted.address && former.prefix == wanted.prefix;
  if (!wanted.address.empty() && !AddAddress(ifname, wanted, steps)) return false;
  if (!former.gateway.empty() && !sameRoute && !RemoveRoute(ifname, former.gateway, steps))
    return false;
  if (!wanted.gateway.empty() && !AddRoute(ifname, wanted.gateway, steps)) return false;
  return former.address.empty() || sameAddress || RemoveAddress(ifname, former, steps);
}
