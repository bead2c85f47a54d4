// SPDX-License-Identifier: Apache-2.0
// Questions to the library about one interface, answered in plain types and as JSON.
#include "query.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cstdio>
#include <memory>
#include <net/if.h>
#include <nlohmann/json.hpp>
#include <unistd.h>

#include <zarncore/zarncore.h>

namespace tool {
namespace {

constexpr int kMaxInterfaces = 32;  // the library looks at no more
constexpr int kMaxIpv6 = 64;
constexpr unsigned kReportedFlags = 0xFFFF;

std::string Dotted(std::uint32_t networkOrder) {
  std::array<char, INET_ADDRSTRLEN> text{};
  ::inet_ntop(AF_INET, &networkOrder, text.data(), text.size());
  return text.data();
}

std::string KeyOf(const std::string& path, const char* key) {
  std::array<char, 64> value{};
  const int length = KOPACFileGetKeyValue(path.c_str(), key, value.data(), value.size(), 0);
  return length > 0 ? value.data() : "";
}

Address AddressIn(const std::string& path) {
  return {KeyOf(path, "IPADDR"), KeyOf(path, "NETMASK")};
}

}  // namespace

void RequireRoot(const std::string& what) {
  if (::geteuid() != 0) throw Failure(what, std::nullopt, "only root may do this", kNotAllowed);
}

void RequireRootToAct(const Context& context, const std::string& what) {
  if (!context.change.plan) RequireRoot(what);
}

bool IsRootsLock() {
  return KOPACErrGet() == ZARNNETERR_LOCK && ::geteuid() != 0;
}

// The kernel finds an interface by an alias ("eth0:1") and by an alternative name too; under such a
// name it would get a second file.
bool KernelHas(const std::string& ifname) {
  std::array<char, IF_NAMESIZE> name{};
  const unsigned index = ::if_nametoindex(ifname.c_str());
  return index != 0 && ::if_indextoname(index, name.data()) != nullptr && ifname == name.data();
}

bool HasFile(const std::string& ifname) {
  ZARNNETIFSETTINGS settings{};
  return ZARNNetGetBridgeConfig(ifname.c_str(), &settings, nullptr) == 0;
}

bool IsPlainDotted(const std::string& text) {
  in_addr address{};
  return ::inet_pton(AF_INET, text.c_str(), &address) == 1;
}

void RequireIpv4(const std::string& what, const std::string& text) {
  if (BlKOPAIsIpAddr(text.c_str()) == 1 && IsPlainDotted(text)) return;
  throw Failure(what, ZARNNETERR_MALFORMED_ADDRESS,
                "'" + text + "' is not the IPv4 address of a host");
}

void RequireName(const std::string& what, const std::string& name) {
  if (name.empty() || name.size() > 15 || name.find('/') != std::string::npos) {
    throw Failure(what, ZARNNETERR_BAD_PARAMETER,
                  "'" + name + "' cannot be the name of an interface");
  }
}

void RequireInterface(const std::string& what, const std::string& ifname) {
  if (KernelHas(ifname)) return;
  throw Failure(what, ZARNNETERR_NOT_FOUND, "there is no interface '" + ifname + "'");
}

std::vector<std::string> KernelInterfaces() {
  const std::unique_ptr<struct if_nameindex, decltype(&::if_freenameindex)> all(
      ::if_nameindex(), &::if_freenameindex);
  std::vector<std::string> names;
  for (auto* entry = all.get(); entry != nullptr && entry->if_name != nullptr; ++entry) {
    if (std::string(entry->if_name) != "lo") names.emplace_back(entry->if_name);
  }
  return names;
}

std::vector<KOPANetIfInfo> ListInterfaces(unsigned selector) {
  std::vector<KOPANetIfInfo> list(kMaxInterfaces);
  ForgetErrors();
  const int count = KOPANetGetInterfaceInfo(list.data(), kMaxInterfaces, selector);
  if (count < 0) Fail("cannot list the interfaces of kind " + std::to_string(selector));
  list.resize(static_cast<std::size_t>(count));
  return list;
}

std::vector<KOPANetIfInfo> ListEthernetPorts() {
  std::vector<KOPANetIfInfo> list(kMaxInterfaces);
  ForgetErrors();
  const int count = KOPANetEthEnum(list.data(), kMaxInterfaces);
  if (count < 0) Fail("cannot list the Ethernet ports");
  list.resize(static_cast<std::size_t>(count));
  return list;
}

Address LiveAddress(const std::string& ifname) {
  std::uint32_t ip = 0;
  std::uint32_t mask = 0;
  if (KOPANetGetIfCfg(ifname.c_str(), &ip, &mask) != 1) return {};
  return {Dotted(ip), Dotted(mask)};
}

// The library's readers take a lock that is root's; whoever looks takes the files as they are.
std::optional<Configuration> ReadConfiguration(const std::string& ifname) {
  const std::string path = "/etc/sysconfig/network-scripts/ifcfg-" + ifname;
  if (::access(path.c_str(), F_OK) != 0) return std::nullopt;
  Configuration configuration;
  const std::string method = KeyOf(path, "BOOTPROTO");
  configuration.bootProto = method == "dhcp" || method == "static" ? method : "none";
  configuration.onBoot = KeyOf(path, "ONBOOT") == "yes";
  configuration.address = method == "dhcp"
                              ? AddressIn("/etc/dhclient/ipv4/dhcpcd-" + ifname + ".info")
                              : AddressIn(path);
  return configuration;
}

std::vector<ZARNNETV6ADDR> ReadIpv6(const std::string& ifname) {
  std::vector<ZARNNETV6ADDR> list(kMaxIpv6);
  ForgetErrors();
  const int count = ZARNLnxV6IPGet(ifname.c_str(), list.data(), kMaxIpv6);
  if (count < 0) Fail("cannot read the IPv6 addresses of " + ifname);
  list.resize(static_cast<std::size_t>(std::min(count, kMaxIpv6)));
  return list;
}

const std::vector<std::string>& BlockNames() {
  static const std::vector<std::string> names{"ha", "aha", "virtual", "quendar"};
  return names;
}

unsigned BlockBit(const std::string& name) {
  static_assert(ZARNNET_BLOCK_HA == 1 && ZARNNET_BLOCK_AHA == 2 && ZARNNET_BLOCK_VIRTUAL == 4 &&
                ZARNNET_BLOCK_QUENDAR == 8);
  const auto& names = BlockNames();
  const auto found = std::find(names.begin(), names.end(), name);
  return found == names.end() ? 0 : 1U << (found - names.begin());
}

std::vector<std::string> ReadBlocks(const std::string& ifname) {
  ForgetErrors();
  const int mask = ZARNNetIFBlockGet(ifname.c_str());
  if (mask < 0) Fail("cannot read the block flags of " + ifname);
  std::vector<std::string> set;
  for (const std::string& name : BlockNames()) {
    if ((static_cast<unsigned>(mask) & BlockBit(name)) != 0) set.push_back(name);
  }
  return set;
}

std::string MacText(const unsigned char (&mac)[6]) {
  if (std::all_of(std::begin(mac), std::end(mac), [](unsigned char byte) { return byte == 0; })) {
    return {};
  }
  std::array<char, 18> text{};
  std::snprintf(text.data(), text.size(), "%02x:%02x:%02x:%02x:%02x:%02x", mac[0], mac[1], mac[2],
                mac[3], mac[4], mac[5]);
  return text.data();
}

std::string AddressText(const Address& address) {
  if (address.ip.empty()) return {};
  const int prefix = ZARNNetNetmaskToPrefix(address.mask.c_str());
  return prefix < 0 ? address.ip : address.ip + "/" + std::to_string(prefix);
}

std::string Ipv6Text(const ZARNNETV6ADDR& address) {
  return std::string(address.szAddr) + "/" + std::to_string(address.prefix);
}

std::string ConfigurationText(const std::optional<Configuration>& configuration) {
  if (!configuration) return {};
  const std::string address = AddressText(configuration->address);
  return configuration->bootProto + (address.empty() ? "" : " " + address) +
         (configuration->onBoot ? ", on boot" : "");
}

std::vector<std::string> FlagNames(int flags) {
  constexpr std::array<const char*, 16> kNames{"UP",          "BROADCAST",  "DEBUG",     "LOOPBACK",
                                               "POINTOPOINT", "NOTRAILERS", "RUNNING",   "NOARP",
                                               "PROMISC",     "ALLMULTI",   "MASTER",    "SLAVE",
                                               "MULTICAST",   "PORTSEL",    "AUTOMEDIA", "DYNAMIC"};
  const unsigned bits = static_cast<unsigned>(flags) & kReportedFlags;
  std::vector<std::string> names;
  for (std::size_t i = 0; i < kNames.size(); ++i) {
    if ((bits >> i & 1U) != 0) names.emplace_back(kNames[i]);
  }
  return names;
}

std::string Join(const std::vector<std::string>& words, const std::string& between) {
  std::string text;
  for (const std::string& word : words)
    text += (text.empty() ? "" : between) + word;
  return text;
}

Json ToJson(const Address& address) {
  return {{"ip", TextOrNull(address.ip)}, {"mask", TextOrNull(address.mask)}};
}

Json ToJson(const std::optional<Configuration>& configuration) {
  if (!configuration) return nullptr;
  return {{"boot_proto", configuration->bootProto},
          {"on_boot", configuration->onBoot},
          {"ip", TextOrNull(configuration->address.ip)},
          {"mask", TextOrNull(configuration->address.mask)}};
}

Json ToJson(const std::vector<ZARNNETV6ADDR>& addresses) {
  Json list = Json::array();
  for (const ZARNNETV6ADDR& address : addresses) {
    list.push_back({{"addr", address.szAddr},
                    {"prefix", address.prefix},
                    {"scope", address.scope},
                    {"flags", address.flags}});
  }
  return list;
}

}  // namespace tool
