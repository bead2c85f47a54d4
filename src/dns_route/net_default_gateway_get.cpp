// The default gateway that the kernel uses, and the interface that it is reached through.
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <net/route.h>
#include <optional>
#include <utility>

#include <zarnnetsdk/dns_route.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"

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

void CopyIfWanted(std::string_view text, char* buffer, int size) {
  if (buffer != nullptr) CopyText(text, buffer, static_cast<std::size_t>(size));
}

}  // namespace

int DefaultGatewayGet(char* szGateway, int cbGateway, char* szIfname, int cbIfname) {
  return Boundary(-1, [&](const Place& at) -> int {
    if ((szGateway != nullptr && cbGateway <= 0) || (szIfname != nullptr && cbIfname <= 0)) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const File file = OpenFile(paths::kProcRoute, "r");
    if (!file) {
      const int reason = errno;
      LOG_ERROR_FUNC(at, "%s (%d) Failed to open /proc/net/route, errno=[%s/%d]",
                     std::strerror(reason), reason);
      return Fail(ZARNNETERR_OPEN, -1);
    }
    char line[kLineSize];
    bool heading = true;
    while (std::fgets(line, sizeof line, file.get()) != nullptr) {
      if (std::exchange(heading, false)) continue;
      const auto route = Scan(line);
      if (!route) {
        const int reason = errno;
        LOG_ERROR_FUNC(at, "%s (%d) Unknow kernel routing table format, errno=[%s/%d]",
                       std::strerror(reason), reason);
        return Fail(ZARNNETERR_UNEXPECTED_CONTENT, -1);
      }
      if (!route->IsDefault()) continue;
      const in_addr gateway{static_cast<in_addr_t>(route->gateway)};
      CopyIfWanted(DottedText(gateway), szGateway, cbGateway);
      CopyIfWanted(route->ifname, szIfname, cbIfname);
      break;
    }
    return 0;
  });
}

int ZARNNetDefaultGatewayGet(char* szBuf, int cbBuf) {
  return Boundary(-1, [&]() -> int { return DefaultGatewayGet(szBuf, cbBuf, nullptr, 0); });
}

int ZARNNetDefaultGatewayInterfaceGet(char* szBuf, int cbBuf) {
  return Boundary(-1, [&]() -> int { return DefaultGatewayGet(nullptr, 0, szBuf, cbBuf); });
}
