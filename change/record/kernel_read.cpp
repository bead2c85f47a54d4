// SPDX-License-Identifier: Apache-2.0
// The kernel's links, addresses and routes, read.
#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <fstream>
#include <linux/if_link.h>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <unistd.h>

#include "frame/model/paths.h"
#include "record/kernel.h"
#include "record/link_kind.h"
#include "record/netlink.h"

namespace change {
namespace {

// The attributes of one message, by number.
template <std::size_t N>
using Attributes = std::array<const nlattr*, N>;

template <std::size_t N>
int Note(const nlattr* attribute, void* data) {
  const std::uint16_t type = ::mnl_attr_get_type(attribute);
  if (type < N) (*static_cast<Attributes<N>*>(data))[type] = attribute;
  return MNL_CB_OK;
}

template <std::size_t N>
Attributes<N> AttributesOf(const nlmsghdr* header, unsigned offset) {
  Attributes<N> attributes{};
  ::mnl_attr_parse(header, offset, Note<N>, &attributes);
  return attributes;
}

template <std::size_t N>
Attributes<N> NestedIn(const nlattr* attribute) {
  Attributes<N> attributes{};
  if (attribute != nullptr) ::mnl_attr_parse_nested(attribute, Note<N>, &attributes);
  return attributes;
}

std::string Text(const nlattr* attribute) {
  return attribute != nullptr ? ::mnl_attr_get_str(attribute) : "";
}
std::uint32_t Number(const nlattr* attribute) {
  return attribute != nullptr ? ::mnl_attr_get_u32(attribute) : 0;
}

std::string AddressText(int family, const nlattr* attribute) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const std::size_t length = family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr);
  if (attribute == nullptr || ::mnl_attr_get_payload_len(attribute) < length) return {};
  ::inet_ntop(family, ::mnl_attr_get_payload(attribute), text.data(), text.size());
  return text.data();
}

std::string MacText(const nlattr* attribute) {
  constexpr std::uint16_t kLength = 6;
  if (attribute == nullptr || ::mnl_attr_get_payload_len(attribute) != kLength) return {};
  const auto* const b = static_cast<const unsigned char*>(::mnl_attr_get_payload(attribute));
  std::array<char, 18> text{};
  std::snprintf(text.data(), text.size(), "%02X:%02X:%02X:%02X:%02X:%02X", b[0], b[1], b[2], b[3],
                b[4], b[5]);
  return text.data();
}

std::string BytesOf(const nlmsghdr* header) {
  return {reinterpret_cast<const char*>(header), header->nlmsg_len};
}

void ReadKind(const nlattr* info, KernelLink* link) {
  constexpr std::size_t kVlanAttributes = IFLA_VLAN_ID + 1;
  const auto nested = NestedIn<IFLA_INFO_SLAVE_DATA + 1>(info);
  link->kind = Text(nested[IFLA_INFO_KIND]);
  if (link->kind == "veth" || link->kind == "dummy") link->kind.clear();
  if (link->kind.empty()) return;
  link->kindMessage = KindToMake(link->kind, nested[IFLA_INFO_DATA]);
  if (link->kind != "vlan") return;
  const auto vlan = NestedIn<kVlanAttributes>(nested[IFLA_INFO_DATA]);
  if (vlan[IFLA_VLAN_ID] != nullptr) link->vlanId = ::mnl_attr_get_u16(vlan[IFLA_VLAN_ID]);
}

KernelLink LinkOf(const nlmsghdr* header) {
  const auto* const base = static_cast<const ifinfomsg*>(::mnl_nlmsg_get_payload(header));
  const auto attributes = AttributesOf<IFLA_MAX_MTU + 1>(header, sizeof *base);
  KernelLink link;
  link.name = Text(attributes[IFLA_IFNAME]);
  link.index = base->ifi_index;
  link.flags = base->ifi_flags;
  link.mtu = static_cast<int>(Number(attributes[IFLA_MTU]));
  link.leastMtu = static_cast<int>(Number(attributes[IFLA_MIN_MTU]));
  link.mostMtu = static_cast<int>(Number(attributes[IFLA_MAX_MTU]));
  link.masterIndex = static_cast<int>(Number(attributes[IFLA_MASTER]));
  link.parentIndex = static_cast<int>(Number(attributes[IFLA_LINK]));
  link.carrier = (base->ifi_flags & IFF_RUNNING) != 0;
  link.mac = MacText(attributes[IFLA_ADDRESS]);
  ReadKind(attributes[IFLA_LINKINFO], &link);
  return link;
}

void NameRelations(std::map<std::string, KernelLink>* links) {
  std::map<int, std::string> names;
  for (const auto& [name, link] : *links)
    names[link.index] = name;
  for (auto& [name, link] : *links) {
    if (link.masterIndex != 0) link.master = names[link.masterIndex];
    if (link.kind == "vlan") link.parent = names[link.parentIndex];
  }
}

void TakeAddress(const nlmsghdr* header, std::map<std::string, KernelLink>* links) {
  const auto* const base = static_cast<const ifaddrmsg*>(::mnl_nlmsg_get_payload(header));
  const auto attributes = AttributesOf<IFA_FLAGS + 1>(header, sizeof *base);
  const auto link = std::find_if(links->begin(), links->end(), [&](const auto& entry) {
    return entry.second.index == static_cast<int>(base->ifa_index);
  });
  if (link == links->end()) return;
  const nlattr* const local =
      attributes[IFA_LOCAL] != nullptr ? attributes[IFA_LOCAL] : attributes[IFA_ADDRESS];
  KernelAddress address;
  address.family = base->ifa_family;
  address.text = AddressText(base->ifa_family, local);
  address.prefix = base->ifa_prefixlen;
  address.scope = base->ifa_scope;
  address.flags =
      attributes[IFA_FLAGS] != nullptr ? Number(attributes[IFA_FLAGS]) : base->ifa_flags;
  address.message = BytesOf(header);
  link->second.addresses.push_back(std::move(address));
}

void TakeRoute(const nlmsghdr* header, const std::map<std::string, KernelLink>& links,
               std::vector<KernelRoute>* routes) {
  const auto* const base = static_cast<const rtmsg*>(::mnl_nlmsg_get_payload(header));
  const auto attributes = AttributesOf<RTA_TABLE + 1>(header, sizeof *base);
  const bool cloned = (base->rtm_flags & RTM_F_CLONED) != 0;
  if (base->rtm_table != RT_TABLE_MAIN || base->rtm_type != RTN_UNICAST || cloned) return;
  const int index = static_cast<int>(Number(attributes[RTA_OIF]));
  const auto link = std::find_if(links.begin(), links.end(),
                                 [&](const auto& entry) { return entry.second.index == index; });
  if (link == links.end()) return;
  KernelRoute route;
  route.family = base->rtm_family;
  route.isDefault = base->rtm_dst_len == 0;
  if (!route.isDefault)
    route.target = AddressText(base->rtm_family, attributes[RTA_DST]) + "/" +
                   std::to_string(base->rtm_dst_len);
  route.gateway = AddressText(base->rtm_family, attributes[RTA_GATEWAY]);
  route.ifname = link->first;
  route.metric = Number(attributes[RTA_PRIORITY]);
  route.protocol = base->rtm_protocol;
  route.scope = base->rtm_scope;
  route.message = BytesOf(header);
  routes->push_back(std::move(route));
}

// False when the switch is there and cannot be read.
bool ReadSwitch(const std::string& path, Kernel* kernel) {
  errno = 0;
  std::ifstream file(path);
  if (!file.is_open()) return errno == ENOENT || errno == ENOTDIR;
  return static_cast<bool>(std::getline(file, kernel->ipv6Switch[path]));
}

bool ReadSwitches(Kernel* kernel) {
  return std::all_of(kernel->links.begin(), kernel->links.end(), [&](const auto& link) {
    return ReadSwitch(frame::paths::Ipv6Switch(link.first), kernel) &&
           ReadSwitch(frame::paths::AcceptRa(link.first), kernel);
  });
}

std::optional<Kernel> ReadOnce() {
  Kernel kernel;
  Netlink netlink;
  std::array<char, HOST_NAME_MAX + 1> name{};
  if (::gethostname(name.data(), name.size() - 1) == 0) kernel.hostname = name.data();
  const bool read = netlink.Dump(RTM_GETLINK, AF_UNSPEC, [&](const nlmsghdr* header) {
    KernelLink link = LinkOf(header);
    kernel.links.emplace(link.name, std::move(link));
  }) && netlink.Dump(RTM_GETADDR, AF_UNSPEC, [&](const nlmsghdr* header) {
    TakeAddress(header, &kernel.links);
  }) && netlink.Dump(RTM_GETROUTE, AF_UNSPEC, [&](const nlmsghdr* header) {
    TakeRoute(header, kernel.links, &kernel.routes);
  });
  NameRelations(&kernel.links);
  if (!read || !ReadSwitches(&kernel)) return std::nullopt;
  return kernel;
}

}  // namespace

// What changes while it is told is told anew.
std::optional<Kernel> ReadKernel() {
  constexpr int kTries = 3;
  std::optional<Kernel> kernel;
  for (int i = 0; i < kTries && !kernel; ++i)
    kernel = ReadOnce();
  return kernel;
}

bool KernelAddress::IsAutomatic() const {
  const bool learned = family == AF_INET6 && (flags & IFA_F_PERMANENT) == 0;
  return learned || (family == AF_INET6 && scope == RT_SCOPE_LINK);
}

bool KernelRoute::IsAutomatic() const {
  return protocol == RTPROT_KERNEL || protocol == RTPROT_RA || protocol == RTPROT_REDIRECT;
}

std::string KernelRoute::Words() const {
  std::string words = isDefault ? "default" : target;
  if (!gateway.empty()) words += " via " + gateway;
  return words + " dev " + ifname;
}

bool KernelLink::IsUp() const {
  return (flags & IFF_UP) != 0;
}
bool KernelLink::IsLoopback() const {
  return (flags & IFF_LOOPBACK) != 0;
}

const KernelLink* Kernel::Link(const std::string& name) const {
  const auto found = links.find(name);
  return found != links.end() ? &found->second : nullptr;
}

const KernelRoute* Kernel::DefaultRoute() const {
  const auto found = std::find_if(routes.begin(), routes.end(), [](const KernelRoute& route) {
    return route.isDefault && route.family == AF_INET;
  });
  return found != routes.end() ? &*found : nullptr;
}

const KernelLink* Kernel::LinkTo(const std::string& address) const {
  const auto number = [](const std::string& text) {
    in_addr value{};
    return ::inet_pton(AF_INET, text.c_str(), &value) == 1 ? ntohl(value.s_addr) : 0;
  };
  constexpr unsigned kBits = 32;
  for (const auto& [name, link] : links) {
    for (const KernelAddress& own : link.addresses) {
      if (own.family != AF_INET || own.prefix == 0 || link.IsLoopback()) continue;
      const unsigned rest = kBits - own.prefix;
      if (number(own.text) >> rest == number(address) >> rest) return &link;
    }
  }
  return nullptr;
}

std::vector<std::string> Kernel::MembersOf(const std::string& master) const {
  std::vector<std::string> members;
  for (const auto& [name, link] : links) {
    if (link.master == master) members.push_back(name);
  }
  return members;
}

}  // namespace change
