// SPDX-License-Identifier: Apache-2.0
// Which interface has an address.
#include <cstring>
#include <ifaddrs.h>
#include <memory>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>

#include <zarnnetsdk/addr.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"

using namespace frame;

namespace {

struct FreeInterfaces {
  void operator()(ifaddrs* list) const { ::freeifaddrs(list); }
};
using Interfaces = std::unique_ptr<ifaddrs, FreeInterfaces>;

// An address of either family; a link-local one may name its interface ("fe80::1%eth0").
struct Wanted {
  Address address;
  std::string ifname;
};

std::optional<Wanted> Parse(std::string_view text) {
  const std::size_t percent = text.find('%');
  if (percent == std::string_view::npos) {
    const auto address = ParseAddress(text);
    return address ? std::optional(Wanted{*address, {}}) : std::nullopt;
  }
  const auto address = ParseAddress(AF_INET6, text.substr(0, percent));
  if (!address) return std::nullopt;
  return Wanted{*address, std::string(text.substr(percent + 1))};
}

// The name without the label of a second address ("eth0:1").
std::string_view NameOf(const ifaddrs& entry) {
  const std::string_view name(entry.ifa_name);
  return name.substr(0, name.find(':'));
}

bool Has(const ifaddrs& entry, const Wanted& wanted) {
  const int family = wanted.address.family;
  const Ipv6& bytes = wanted.address.bytes;
  if (entry.ifa_addr == nullptr || entry.ifa_addr->sa_family != family) return false;
  if (!wanted.ifname.empty() && NameOf(entry) != wanted.ifname) return false;
  if (family == AF_INET) {
    sockaddr_in address{};
    std::memcpy(&address, entry.ifa_addr, sizeof address);
    return std::memcmp(&address.sin_addr, bytes.data(), sizeof address.sin_addr) == 0;
  }
  sockaddr_in6 address{};
  std::memcpy(&address, entry.ifa_addr, sizeof address);
  return std::memcmp(&address.sin6_addr, bytes.data(), sizeof address.sin6_addr) == 0;
}

}  // namespace

int ZARNNetIP2If(const char* szIP, char* szIfname, int cbIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIP) || szIfname == nullptr || cbIfname <= 0)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto wanted = Parse(szIP);
    if (!wanted) return Fail(ZARNNETERR_MALFORMED_ADDRESS, -1);
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0) {
      LOG_ERROR("%s:%d Failed to list the addresses. %m");
      return Fail(ZARNNETERR_REFUSED, -1);
    }
    const Interfaces interfaces(list);
    for (const ifaddrs* entry = list; entry != nullptr; entry = entry->ifa_next) {
      if (!Has(*entry, *wanted)) continue;
      const std::string_view name = NameOf(*entry);
      // A name that is cut is another interface's.
      if (name.size() >= static_cast<std::size_t>(cbIfname))
        return Fail(ZARNNETERR_BAD_PARAMETER, -1);
      CopyText(name, szIfname, static_cast<std::size_t>(cbIfname));
      return 0;
    }
    return Fail(ZARNNETERR_NOT_FOUND, -1);
  });
}
