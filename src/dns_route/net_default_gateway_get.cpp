// SPDX-License-Identifier: Apache-2.0
// The default gateway that the kernel uses, and the interface that it is reached through.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <net/route.h>
#include <optional>
#include <utility>

#include <zarnnetsdk/dns_route.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

using namespace frame;

namespace {

constexpr int kLineSize = 256;

// One line of the kernel's table. Addresses are in network byte order, printed as one number.
struct Route {
  char ifname[kLineSize];
  unsigned long destination;
  unsigned long gateway;
  unsigned flags;
  unsigned long mask;

  [[nodiscard]] bool IsDefault() const {
    constexpr unsigned kUsable = RTF_UP | RTF_GATEWAY;
    return (flags & kUsable) == kUsable && destination == 0 && mask == 0;
  }
};

std::optional<Route> Scan(const char* line) {
  constexpr int kFields = 11;
  Route route{};
  int references = 0;
  int uses = 0;
  int metric = 0;
  int mtu = 0;
  int window = 0;
  int roundTrip = 0;
  const int fields = std::sscanf(line, "%255s%lx%lx%X%d%d%d%lx%d%d%d", route.ifname,
                                 &route.destination, &route.gateway, &route.flags, &references,
                                 &uses, &metric, &route.mask, &mtu, &window, &roundTrip);
  if (fields != kFields) return std::nullopt;
  return route;
}

// The first default route, or none. False, with its code, for a table that cannot be read. The
// lines carry the name of the exported function, whichever of the three was called.
bool FindDefault(std::optional<Route>* found) {
  constexpr Place kAt(__FILE__, __LINE__, "DefaultGatewayGet");
  const File file = OpenFile(paths::kProcRoute, "r");
  if (!file) {
    const int reason = errno;
    LOG_ERROR_FUNC(kAt, "%s (%d) Failed to open /proc/net/route, errno=[%s/%d]",
                   std::strerror(reason), reason);
    return Fail(ZARNNETERR_OPEN, false);
  }
  char line[kLineSize];
  bool heading = true;
  while (std::fgets(line, sizeof line, file.get()) != nullptr) {
    if (std::exchange(heading, false)) continue;
    const auto route = Scan(line);
    if (!route) {
      const int reason = errno;
      LOG_ERROR_FUNC(kAt, "%s (%d) Unknow kernel routing table format, errno=[%s/%d]",
                     std::strerror(reason), reason);
      return Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
    }
    if (!route->IsDefault()) continue;
    *found = route;
    break;
  }
  return true;
}

// Either buffer may be null; without a default route both are left alone.
int GetDefault(char* gateway, int gatewaySize, char* ifname, int ifnameSize) {
  if ((gateway != nullptr && gatewaySize <= 0) || (ifname != nullptr && ifnameSize <= 0))
    return Fail(ZARNNETERR_BAD_PARAMETER, -1);
  std::optional<Route> route;
  if (!FindDefault(&route)) return -1;
  if (!route) return 0;
  if (gateway != nullptr) {
    const in_addr address{static_cast<in_addr_t>(route->gateway)};
    CopyText(DottedText(address), gateway, static_cast<std::size_t>(gatewaySize));
  }
  if (ifname != nullptr) CopyText(route->ifname, ifname, static_cast<std::size_t>(ifnameSize));
  return 0;
}

}  // namespace

int DefaultGatewayGet(char* szGateway, int cbGateway, char* szIfname, int cbIfname) {
  return Boundary(-1,
                  [&]() -> int { return GetDefault(szGateway, cbGateway, szIfname, cbIfname); });
}

int ZARNNetDefaultGatewayGet(char* szBuf, int cbBuf) {
  return Boundary(-1, [&]() -> int { return GetDefault(szBuf, cbBuf, nullptr, 0); });
}

int ZARNNetDefaultGatewayInterfaceGet(char* szBuf, int cbBuf) {
  return Boundary(-1, [&]() -> int { return GetDefault(nullptr, 0, szBuf, cbBuf); });
}
