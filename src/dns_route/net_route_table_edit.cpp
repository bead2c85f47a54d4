// SPDX-License-Identifier: Apache-2.0
// The routes to the subnets that the appliance is in. The kernel makes one for each address; here
// it is replaced by one that names the interface's address as its source, or removed where the
// interface has lost its carrier and another one may reach the subnet.
#include <bit>
#include <optional>
#include <string>
#include <vector>

#include <zarnnetsdk/dns_route.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bridges.h"
#include "frame/facts/inventory.h"
#include "frame/facts/net_dev.h"
#include "frame/facts/ovs.h"
#include "frame/facts/record.h"
#include "frame/facts/up_interfaces.h"
#include "frame/model/ifcfg.h"
#include "frame/model/ovs.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "frame/os/lock.h"

using namespace frame;

namespace {

constexpr unsigned kInstall = 0;
constexpr unsigned kRemove = 1;

// An interface's own address, which is the source of the route, and its netmask.
struct SubnetRoute {
  std::string ifname;
  std::string source;
  std::string netmask;
  std::string network;
  std::string destination;  // the network with its prefix length
};

std::optional<Ipv4> Parse(const std::string& text) {
  const auto address = ParseIpv4(text);
  if (address) return address;
  LOG_ERROR("%s:%d inet_pton error (%s)", text.c_str());
  return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt);
}

// Nothing for texts that are no addresses.
std::optional<SubnetRoute> RouteOf(const std::string& ifname, const std::string& ip,
                                   const std::string& netmask) {
  const auto mask = Parse(netmask);
  const auto address = mask ? Parse(ip) : std::nullopt;
  if (!address) return std::nullopt;
  const std::string network = DottedText(*address & *mask);
  return SubnetRoute{ifname, ip, netmask, network,
                     Format("%s/%d", network.c_str(), std::popcount(mask->value))};
}

void Remove(const SubnetRoute& route) {
  if (Run(paths::kIp, "route", "del", route.destination, "dev", route.ifname, "src",
          route.source)) {
    return;
  }
  LOG_NOTE("%s:%d %s ip route del failed, instead of route", route.ifname.c_str());
  if (!Run(paths::kRoute, "del", "-net", route.network, "netmask", route.netmask, "dev",
           route.ifname)) {
    LOG_NOTE("%s:%d cmd route del -net %s netmask %s dev %s failded", route.network.c_str(),
             route.netmask.c_str(), route.ifname.c_str());
  }
}

void Add(const SubnetRoute& route) {
  if (Run(paths::kIp, "route", "add", route.destination, "dev", route.ifname, "src",
          route.source)) {
    return;
  }
  LOG_NOTE("%s:%d %s ip route add failed, might be the same subnet, instead of route",
           route.ifname.c_str());
  if (!Run(paths::kRoute, "add", "-net", route.network, "netmask", route.netmask, "dev",
           route.ifname)) {
    LOG_NOTE("%s:%d cmd route add -net %s netmask %s dev %s failded", route.network.c_str(),
             route.netmask.c_str(), route.ifname.c_str());
  }
}

void Edit(unsigned op, const SubnetRoute& route) {
  Remove(route);
  if (op == kInstall) Add(route);
}

// The address of a switch's port is carried by the switch's own device.
std::string DeviceOf(const std::string& ifname) {
  return ifname.starts_with("eth") && facts::IsOvsPort(ifname) ? model::OvsDeviceOver(ifname)
                                                               : ifname;
}

// A lease's route is the DHCP client's, that of a member its master's.
bool IsInstalledByOthers(const std::string& device, bool dhcp) {
  if (dhcp || facts::IsBridgePort(device)) return true;
  const auto flags = InetSocket().Flags(device);
  return flags && facts::IsBondingPassive(device, *flags);
}

// Edits the route of the address that a settings file holds.
bool EditFromFile(unsigned op, const std::string& path, const std::string& device) {
  constexpr std::size_t kSize = 20;
  const KeyValue ip = ReadKey(path, keys::kIpAddr, kSize);
  if (!ip.Found()) {
    LOG_ERROR("%s:%d Get IP from %s fail", path.c_str());
    return ip.Unreadable() ? false : Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
  }
  const KeyValue netmask = ReadKey(path, keys::kNetmask, kSize);
  if (!netmask.Found()) {
    LOG_ERROR("%s:%d Get netmask from %s fail", path.c_str());
    return netmask.Unreadable() ? false : Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
  }
  // A file with an address that is none has no route to edit.
  if (const auto route = RouteOf(device, ip.text, netmask.text)) Edit(op, *route);
  return true;
}

// Edits the route of an interface with a lease or a fixed address, if it has one of its own.
bool EditOf(unsigned op, const std::string& ifname) {
  const std::string device = DeviceOf(ifname);
  if (!facts::IsOfKind(device, ZARNNETKIND_USABLE)) return true;
  const bool dhcp = dhcpd::IsDhcp(device);
  const std::string path = dhcp ? paths::DhcpInfo(device) : paths::Ifcfg(device);
  if (dhcp && !Exists(path)) {
    LOG_ERROR("%s:%d /etc/dhclient/ipv4/dhcpcd-%s.info is not exist", device.c_str());
    return Fail(ZARNNETERR_OPEN, false);
  }
  if (op > kRemove || (op == kInstall && IsInstalledByOthers(device, dhcp))) return true;
  return EditFromFile(op, path, device);
}

bool RemoveWithoutCarrier(const std::vector<KOPANetIfInfo>& list, int count) {
  constexpr int kCarrier = 2;
  for (int i = 0; i < count; ++i) {
    const KOPANetIfInfo& info = list[static_cast<std::size_t>(i)];
    if (info.link == kCarrier || EditOf(kRemove, info.name)) continue;
    LOG_ERROR("%s:%d NetRoutetableHandler clear [%s] route table fail", info.name);
    return false;
  }
  return true;
}

bool Check() {
  const Lock lock(kNetworkRead);
  if (!lock.Held()) {
    LOG_ERROR("%s:%d lock fail(%X)", KOPACErrGet());
    return Fail(ZARNNETERR_LOCK, false);
  }
  std::vector<KOPANetIfInfo> list(facts::kMaxInterfaces);
  const int count = facts::ListUpInterfaces(list.data(), facts::kMaxInterfaces);
  if (count <= 0) {
    LOG_ERROR("%s:%d %s", count == 0 ? "No interface." : "Get interface info fail.");
    return count == 0 ? Fail(ZARNNETERR_NOT_FOUND, false) : false;
  }
  // An appliance with one interface keeps its only way out, whatever its carrier says.
  return count == 1 || RemoveWithoutCarrier(list, count);
}

}  // namespace

int NetRoutetableEdit(unsigned int op, const char* szIP, const char* szMask, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (szIP == nullptr || szMask == nullptr || IsUnfitName(szIfname)) {
      LOG_ERROR("%s:%d bad parameter");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (op > kRemove) {
      LOG_ERROR("%s:%d error type");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const auto route = RouteOf(szIfname, szIP, szMask);
    if (!route) return -1;
    Edit(op, *route);
    return 0;
  });
}

int NetRoutetableHandler(unsigned int op, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return EditOf(op, szIfname) ? 0 : -1;
  });
}

int NetRoutetableCheck(void) {
  return Boundary(
      -1, [&]() -> int { return Check() ? 0 : -1; }, [] { LOG_ERROR("%s:%d malloc fail"); });
}
