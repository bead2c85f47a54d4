// One address of an interface, added, deleted or flushed in the running kernel; and the flush by
// itself.
#include <algorithm>
#include <array>
#include <cstring>
#include <string>
#include <string_view>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/ipv6.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"

using namespace frame;

namespace {

constexpr std::string_view kV4 = "-4";
constexpr std::string_view kV6 = "-6";
constexpr unsigned kMaxPrefixV4 = 32;
constexpr unsigned kMaxPrefixV6 = 128;
constexpr int kMaxOldV6 = 16;

// The stages of the change hook's first argument.
constexpr int kHookV4 = 0;
constexpr int kHookV6 = 1;

// What is asked for, checked.
struct Request {
  const char* type;
  const char* ifname;
  const char* ip;
  unsigned prefix;
  std::string cidr;
};

bool Delete(const Request& request) {
  if (Run(paths::kIp, request.type, "address", "del", request.cidr, "dev", request.ifname))
    return true;
  LOG_ERROR("%s:%d excute cmd /sbin/ip address del %s dev %s failed", request.cidr.c_str(),
            request.ifname);
  return false;
}

// ---- IPv6

struct OldV6 {
  std::array<ZARNNETV6ADDR, kMaxOldV6> addresses{};
  int count = 0;

  [[nodiscard]] bool Holds(std::string_view ip) const {
    const auto* const end = addresses.begin() + std::min(count, kMaxOldV6);
    return std::any_of(addresses.begin(), end,
                       [&](const ZARNNETV6ADDR& old) { return ip == old.szAddr; });
  }
};

bool AddV6(const Request& request, const OldV6& old) {
  if (!old.Holds(request.ip)) {
    // An event that could not be delivered never stops a change.
    static_cast<void>(ZARNNetIPChangePreHook(kHookV6, request.ifname, old.addresses[0].szAddr,
                                             request.ip, request.prefix));
  }
  if (Run(paths::kIp, "-6", "address", "add", request.cidr, "dev", request.ifname)) return true;
  LOG_ERROR("%s:%d excute cmd /sbin/ip address add %s dev %s failed", request.cidr.c_str(),
            request.ifname);
  return false;
}

int SetV6(const Request& request, bool add) {
  if (request.prefix > kMaxPrefixV6) {
    LOG_ERROR("%s:%d prefix length is wrong");
    return -1;
  }
  if (BlKOPAIsv6IpAddrValid(request.ip) != 1) {
    LOG_ERROR("%s:%d your v6ip %s is not valid", request.ip);
    return -1;
  }
  OldV6 old;
  old.count = ZARNLnxV6IPGet(request.ifname, old.addresses.data(), kMaxOldV6);
  if (old.count < 0) {
    LOG_ERROR("%s:%d get old v6 IP failed");
    return -1;
  }
  return (add ? AddV6(request, old) : Delete(request)) ? 0 : -1;
}

// ---- IPv4

// The dotted netmask of "<ip>/<prefix>". Where it cannot be worked out (prefix 0) the prefix stands
// in for it.
std::string NetmaskOf(const std::string& cidr) {
  char text[1024];
  CopyText(cidr, text);
  if (ErrKOPASubnetToIpMask(text, nullptr) < 0) {
    LOG_ERROR("%s:%d translate subnet to ip/netmask failed");
  }
  const char* const slash = std::strchr(text, '/');
  return slash != nullptr ? slash + 1 : "";
}

bool Reconfigure(const Request& request) {
  if (!Run(paths::kIfconfig, request.ifname, "0.0.0.0")) {
    LOG_ERROR("%s:%d excute command ifconfig %s 0.0.0.0 failed", request.ifname);
    return false;
  }
  const std::string netmask = NetmaskOf(request.cidr);
  if (!Run(paths::kIfconfig, request.ifname, request.ip, "netmask", netmask)) {
    LOG_ERROR("%s:%d excute command ifconfig %s %s netmask %s failed", request.ifname, request.ip,
              netmask.c_str());
    return false;
  }
  return true;
}

// Without carrier the connected route that ifconfig made would lead nowhere.
bool DropConnectedRoute(const Request& request) {
  char network[1024] = "";
  if (ZARNNetCalNetwork(request.ip, network, sizeof network) < 0) {
    LOG_ERROR("%s:%d calculate Network IP failed");
    return false;
  }
  const std::string route = Format("%s/%u", network, request.prefix);
  if (!Run(paths::kIp, "-4", "route", "del", route, "dev", request.ifname)) {
    LOG_NOTE("%s:%d excute cmd /sbin/ip route del %s dev %s failed", route.c_str(), request.ifname);
  }
  return true;
}

bool AddV4(const Request& request, const char* oldIp) {
  const bool changes = std::string_view(oldIp) != request.ip;
  if (changes) {
    // An event that could not be delivered never stops a change.
    static_cast<void>(
        ZARNNetIPChangePreHook(kHookV4, request.ifname, oldIp, request.ip, request.prefix));
  }
  if (!Reconfigure(request)) return false;
  // A changed address brings its rules along with the event; the same one again has to ask for
  // them.
  if (!changes && !Run(paths::kNetdTool, "--refresh-static-route-rules", "-4")) {
    LOG_ERROR("%s:%d Failed to refresh static route rules.");
  }
  return ZARNNetIfIsLink(request.ifname) != 0 || DropConnectedRoute(request);
}

int SetV4(const Request& request, bool add) {
  if (request.prefix > kMaxPrefixV4) {
    LOG_ERROR("%s:%d prefix length is wrong");
    return -1;
  }
  if (BlKOPAIsIpAddr(request.ip) != 1) {
    LOG_ERROR("%s:%d your ip %s is not valid", request.ip);
    return -1;
  }
  char oldIp[1024] = "";
  if (ZARNILnxGetIP(request.ifname, oldIp, sizeof oldIp) < 0) {
    LOG_ERROR("%s:%d get old v4 IP failed");
    return -1;
  }
  return (add ? AddV4(request, oldIp) : Delete(request)) ? 0 : -1;
}

const char* OrEmpty(const char* text) {
  return text != nullptr ? text : "";
}

}  // namespace

bool ipv4::SetV6Address(const std::string& ifname, const std::string& ip, unsigned prefix,
                        bool add) {
  const Request request{kV6.data(), ifname.c_str(), ip.c_str(), prefix,
                        Format("%s/%u", ip.c_str(), prefix)};
  return SetV6(request, add) == 0;
}

int ZARNNetSetIP(const char* szType, const char* szIfname, const char* szIP, unsigned int prefix,
                 const char* szAction) {
  return Boundary(-1, [&]() -> int {
    const std::string_view type = OrEmpty(szType);
    const std::string_view action = OrEmpty(szAction);
    if (action == "flush") {
      if (ZARNNetFlushIP(szType, szIfname) == 0) return 0;
      LOG_ERROR("%s:%d flush ip failed");
      return -1;
    }
    if (action != "add" && action != "del") {
      LOG_ERROR("%s:%d action command is wrong. your action is %s", OrEmpty(szAction));
      return -1;
    }
    const char* const ip = OrEmpty(szIP);
    const Request request{szType, szIfname, ip, prefix, Format("%s/%u", ip, prefix)};
    if (type == kV4) return SetV4(request, action == "add");
    if (type == kV6) return SetV6(request, action == "add");
    LOG_ERROR("%s:%d ip type is wrong, only -4 or -6");
    return -1;
  });
}
