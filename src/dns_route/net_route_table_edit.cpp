// The routes to the subnets that the appliance is in. The kernel makes one for each address; here
// it is replaced by one that names the interface's address as its source, or removed where the
// interface has lost its carrier and another one may reach the subnet.
#include <arpa/inet.h>
#include <bit>
#include <string>
#include <vector>

#include <zarnnetsdk/dhcpd.h>
#include <zarnnetsdk/dns_route.h>
#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/net_dev.h"
#include "frame/model/ifcfg.h"
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

struct SubnetRoute {
  const char* ifname;
  const char* source;  // the interface's own address
  const char* netmask;
  std::string network;
  std::string destination;  // the network with its prefix length
};

bool Parse(const char* text, in_addr* address) {
  if (::inet_pton(AF_INET, text, address) == 1) return true;
  LOG_ERROR("%s:%d inet_pton error (%s)", text);
  return Fail(ZARNNETERR_BAD_PARAMETER, false);
}

std::string NetworkText(in_addr address, in_addr mask) {
  return DottedText(in_addr{address.s_addr & mask.s_addr});
}

void Remove(const SubnetRoute& route) {
  if (Run(paths::kIp, "route", "del", route.destination, "dev", route.ifname, "src",
          route.source)) {
    return;
  }
  LOG_NOTE("%s:%d %s ip route del failed, instead of route", route.ifname);
  if (!Run(paths::kRoute, "del", "-net", route.network, "netmask", route.netmask, "dev",
           route.ifname)) {
    LOG_NOTE("%s:%d cmd route del -net %s netmask %s dev %s failded", route.network.c_str(),
             route.netmask, route.ifname);
  }
}

void Add(const SubnetRoute& route) {
  if (Run(paths::kIp, "route", "add", route.destination, "dev", route.ifname, "src",
          route.source)) {
    return;
  }
  LOG_NOTE("%s:%d %s ip route add failed, might be the same subnet, instead of route",
           route.ifname);
  if (!Run(paths::kRoute, "add", "-net", route.network, "netmask", route.netmask, "dev",
           route.ifname)) {
    LOG_NOTE("%s:%d cmd route add -net %s netmask %s dev %s failded", route.network.c_str(),
             route.netmask, route.ifname);
  }
}

// The address of a switch's port is carried by the switch's own device.
std::string DeviceOf(const std::string& ifname) {
  if (ifname.starts_with("eth") && KOPANetOVSIfIsSlave(ifname.c_str()) != 0) {
    return "ovs_" + ifname;
  }
  return ifname;
}

// A lease's route is the DHCP client's, that of a member its master's.
bool IsInstalledByOthers(const std::string& device, bool dhcp) {
  return dhcp || KOPANetBridgeIfIsSlave(device.c_str()) != 0 ||
         ZARNNetIfIsBondingPassive(device.c_str()) != 0;
}

// Edits the route of the address that a settings file holds.
int EditFromFile(unsigned op, const std::string& path, const std::string& device) {
  char ip[20] = "";
  char netmask[20] = "";
  if (!ReadKeyInto(path, keys::kIpAddr, ip)) {
    LOG_ERROR("%s:%d Get IP from %s fail", path.c_str());
    return -1;
  }
  if (!ReadKeyInto(path, keys::kNetmask, netmask)) {
    LOG_ERROR("%s:%d Get netmask from %s fail", path.c_str());
    return -1;
  }
  // A file with an address that is none has no route to edit; that is logged there.
  static_cast<void>(NetRoutetableEdit(op, ip, netmask, device.c_str()));
  return 0;
}

int RemoveWithoutCarrier(const std::vector<KOPANetIfInfo>& list, int count) {
  constexpr int kCarrier = 2;
  for (int i = 0; i < count; ++i) {
    const KOPANetIfInfo& info = list[static_cast<std::size_t>(i)];
    if (info.link == kCarrier) continue;
    if (NetRoutetableHandler(kRemove, info.name) == -1) {
      LOG_ERROR("%s:%d NetRoutetableHandler clear [%s] route table fail", info.name);
      return -1;
    }
  }
  return 0;
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
    in_addr mask{};
    in_addr address{};
    if (!Parse(szMask, &mask) || !Parse(szIP, &address)) return -1;
    const std::string network = NetworkText(address, mask);
    const SubnetRoute route{szIfname, szIP, szMask, network,
                            Format("%s/%d", network.c_str(), std::popcount(mask.s_addr))};
    Remove(route);
    if (op == kInstall) Add(route);
    return 0;
  });
}

int NetRoutetableHandler(unsigned int op, const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    constexpr unsigned kUsableKind = 2;
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string device = DeviceOf(szIfname);
    if (ZARNNetIsDevTypeMatch(device.c_str(), kUsableKind) != 1) return 0;
    const bool dhcp = BlZARNLnxIsDHCP(device.c_str()) == 1;
    const std::string path = dhcp ? paths::DhcpInfo(device) : paths::Ifcfg(device);
    if (dhcp && !Exists(path)) {
      LOG_ERROR("%s:%d /etc/dhclient/ipv4/dhcpcd-%s.info is not exist", device.c_str());
      return -1;
    }
    if (op > kRemove || (op == kInstall && IsInstalledByOthers(device, dhcp))) return 0;
    return EditFromFile(op, path, device);
  });
}

int NetRoutetableCheck(void) {
  return Boundary(
      -1,
      [&]() -> int {
        const Lock lock(kNetworkRead);
        if (!lock.Held()) {
          LOG_ERROR("%s:%d lock fail(%X)", KOPACErrGet());
          return Fail(ZARNNETERR_LOCK, -1);
        }
        std::vector<KOPANetIfInfo> list(facts::kMaxInterfaces);
        const int count = KOPANetInterfaceEnum(list.data(), facts::kMaxInterfaces, 0);
        if (count <= 0) {
          LOG_ERROR("%s:%d %s", count == 0 ? "No interface." : "Get interface info fail.");
          return -1;
        }
        // An appliance with one interface keeps its only way out, whatever its carrier says.
        return count == 1 ? 0 : RemoveWithoutCarrier(list, count);
      },
      [&] { LOG_ERROR("%s:%d malloc fail"); });
}
