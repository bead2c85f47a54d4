// SPDX-License-Identifier: Apache-2.0
// One address of an interface, added or deleted in the running kernel. An IPv4 address that is
// added takes the place of the one that is there, with its events, rules and routes.
#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/addresses.h"
#include "frame/facts/ipcalc.h"
#include "frame/facts/link.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "ipv4/flush.h"
#include "ipv4/hooks.h"
#include "ipv4/live_address.h"

using namespace frame;

namespace {

using ipv4::Family;

// An address for an interface, as the caller writes it: so it stands in commands, events and logs.
struct Request {
  std::string ifname;
  std::string ip;
  unsigned prefix;

  [[nodiscard]] std::string Cidr() const { return Format("%s/%u", ip.c_str(), prefix); }
};

bool Delete(const char* type, const Request& request) {
  const std::string cidr = request.Cidr();
  if (Run(paths::kIp, type, "address", "del", cidr, "dev", request.ifname)) return true;
  LOG_ERROR("%s:%d excute cmd /sbin/ip address del %s dev %s failed", cidr.c_str(),
            request.ifname.c_str());
  return Fail(ZARNNETERR_COMMAND, false);
}

// ---- IPv6

using Addresses = std::vector<ZARNNETV6ADDR>;

// Plugins take the first address for the former one; those beyond the sixteenth are not looked at.
void AnnounceIfNew(const Request& request, const Addresses& present) {
  constexpr std::size_t kMost = 16;
  const auto end = present.begin() + static_cast<std::ptrdiff_t>(std::min(present.size(), kMost));
  const bool held = std::any_of(present.begin(), end,
                                [&](const ZARNNETV6ADDR& old) { return request.ip == old.szAddr; });
  if (held) return;
  // An event that could not be delivered never stops a change.
  static_cast<void>(ipv4::TellAddressChange(Family::kV6, request.ifname.c_str(),
                                            present.empty() ? "" : present.front().szAddr,
                                            request.ip.c_str(), request.prefix));
}

bool AddV6(const Request& request, const Addresses& present) {
  AnnounceIfNew(request, present);
  const std::string cidr = request.Cidr();
  if (Run(paths::kIp, "-6", "address", "add", cidr, "dev", request.ifname)) return true;
  LOG_ERROR("%s:%d excute cmd /sbin/ip address add %s dev %s failed", cidr.c_str(),
            request.ifname.c_str());
  return Fail(ZARNNETERR_COMMAND, false);
}

bool SetV6(const Request& request, bool add) {
  constexpr unsigned kMaxPrefix = 128;
  if (request.prefix > kMaxPrefix) {
    LOG_ERROR("%s:%d prefix length is wrong");
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  if (!IsIpv6WithPrefix(request.ip)) {
    LOG_ERROR("%s:%d your v6ip %s is not valid", request.ip.c_str());
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  if (IsUnfitName(request.ifname.c_str())) {
    LOG_ERROR("%s:%d get old v6 IP failed");
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  const auto present = facts::KernelV6Addresses(request.ifname);
  if (!present) {
    LOG_ERROR("%s:%d get old v6 IP failed");
    return false;
  }
  return add ? AddV6(request, *present) : Delete("-6", request);
}

// ---- IPv4

// Where there is no netmask (prefix 0) the prefix stands in for it.
std::string NetmaskOf(unsigned prefix) {
  if (prefix > 0) return DottedText(MaskOf(prefix));
  LOG_ERROR("%s:%d translate subnet to ip/netmask failed");
  return "0";
}

bool Reconfigure(const Request& request) {
  if (!Run(paths::kIfconfig, request.ifname, "0.0.0.0")) {
    LOG_ERROR("%s:%d excute command ifconfig %s 0.0.0.0 failed", request.ifname.c_str());
    return Fail(ZARNNETERR_COMMAND, false);
  }
  const std::string netmask = NetmaskOf(request.prefix);
  if (!Run(paths::kIfconfig, request.ifname, request.ip, "netmask", netmask)) {
    LOG_ERROR("%s:%d excute command ifconfig %s %s netmask %s failed", request.ifname.c_str(),
              request.ip.c_str(), netmask.c_str());
    return Fail(ZARNNETERR_COMMAND, false);
  }
  return true;
}

// Without carrier the connected route that ifconfig made would lead nowhere.
bool DropConnectedRoute(const Request& request) {
  const auto network = facts::NetworkOf(request.ip).address;
  if (!network) {
    LOG_ERROR("%s:%d calculate Network IP failed");
    return false;
  }
  const std::string route = Format("%s/%u", network->c_str(), request.prefix);
  if (!Run(paths::kIp, "-4", "route", "del", route, "dev", request.ifname)) {
    LOG_NOTE("%s:%d excute cmd /sbin/ip route del %s dev %s failed", route.c_str(),
             request.ifname.c_str());
  }
  return true;
}

bool AddV4(const Request& request, const std::string& former) {
  const bool changes = former != request.ip;
  if (changes) {
    // An event that could not be delivered never stops a change.
    static_cast<void>(ipv4::TellAddressChange(Family::kV4, request.ifname.c_str(), former.c_str(),
                                              request.ip.c_str(), request.prefix));
  }
  if (!Reconfigure(request)) return false;
  // A changed address brings its rules along with the event; the same one again has to ask for
  // them.
  if (!changes && !Run(paths::kNetdTool, "--refresh-static-route-rules", "-4")) {
    LOG_ERROR("%s:%d Failed to refresh static route rules.");
  }
  const bool keepsRoute = facts::HasLink(request.ifname).value_or(true);  // when in doubt
  return keepsRoute || DropConnectedRoute(request);
}

bool SetV4(const Request& request, bool add) {
  constexpr unsigned kMaxPrefix = 32;
  if (request.prefix > kMaxPrefix) {
    LOG_ERROR("%s:%d prefix length is wrong");
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  // Of a long text the beginning is judged, and a program gets all of it.
  if (IsUnfitAddress(request.ip.c_str()) || !IsHostAddress(request.ip)) {
    LOG_ERROR("%s:%d your ip %s is not valid", request.ip.c_str());
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  if (IsUnfitName(request.ifname.c_str())) {
    LOG_ERROR("%s:%d get old v4 IP failed");
    return Fail(ZARNNETERR_BAD_PARAMETER, false);
  }
  const auto former = facts::KernelAddress(request.ifname);
  return add ? AddV4(request, DottedText(former.value_or(in_addr{}))) : Delete("-4", request);
}

const char* OrEmpty(const char* text) {
  return text != nullptr ? text : "";
}

bool Flush(const char* type, const char* ifname) {
  if (ipv4::FlushAddresses(type, ifname)) return true;
  LOG_ERROR("%s:%d flush ip failed");
  return false;
}

bool Set(std::string_view type, const Request& request, bool add) {
  if (type == "-4") return SetV4(request, add);
  if (type == "-6") return SetV6(request, add);
  LOG_ERROR("%s:%d ip type is wrong, only -4 or -6");
  return Fail(ZARNNETERR_BAD_PARAMETER, false);
}

}  // namespace

bool ipv4::AddAddress(const std::string& ifname, const std::string& ip, unsigned prefix) {
  return SetV4({ifname, ip, prefix}, true);
}

bool ipv4::SetV6Address(const std::string& ifname, const std::string& ip, unsigned prefix,
                        bool add) {
  return SetV6({ifname, ip, prefix}, add);
}

int ZARNNetSetIP(const char* szType, const char* szIfname, const char* szIP, unsigned int prefix,
                 const char* szAction) {
  return Boundary(-1, [&]() -> int {
    const std::string_view action = OrEmpty(szAction);
    if (action == "flush") return Flush(szType, szIfname) ? 0 : -1;
    if (action != "add" && action != "del") {
      LOG_ERROR("%s:%d action command is wrong. your action is %s", OrEmpty(szAction));
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const Request request{OrEmpty(szIfname), OrEmpty(szIP), prefix};
    return Set(OrEmpty(szType), request, action == "add") ? 0 : -1;
  });
}
