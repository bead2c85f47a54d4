// SPDX-License-Identifier: Apache-2.0
// The kernel's links, addresses and routes, compared and put back.
#include <algorithm>
#include <arpa/inet.h>
#include <cstring>
#include <fstream>
#include <linux/rtnetlink.h>
#include <net/if.h>
#include <unistd.h>

#include "record/kernel.h"
#include "record/netlink.h"
#include "texts.h"

namespace change {
namespace {

using Texts = std::vector<std::string>;

Texts AddressesOf(const KernelLink& link, int family) {
  Texts texts;
  for (const KernelAddress& address : link.addresses) {
    if (address.family == family && !address.IsAutomatic()) texts.push_back(address.WithPrefix());
  }
  // Of IPv4 the first of a subnet is the one that the machine speaks with; of IPv6 the order is
  // the kernel's own.
  if (family == AF_INET6) std::sort(texts.begin(), texts.end());
  return texts;
}

std::string OrNone(const Texts& texts) {
  return texts.empty() ? "none" : Joined(texts);
}

Texts RoutesOf(const Kernel& kernel) {
  Texts routes;
  for (const KernelRoute& route : kernel.routes) {
    if (!route.IsAutomatic()) routes.push_back(route.Words());
  }
  std::sort(routes.begin(), routes.end());
  return routes;
}

void Compare(const std::string& what, const std::string& before, const std::string& now,
             Texts* differences) {
  if (before != now) differences->push_back(what + " is " + now + ", it was " + before);
}

void CompareLinks(const KernelLink& before, const KernelLink& now, Texts* differences) {
  const auto updown = [](const KernelLink& link) {
    return std::string(link.IsUp() ? "up" : "down");
  };
  const auto masterOf = [](const KernelLink& link) {
    return link.master.empty() ? std::string("none") : link.master;
  };
  Compare(before.name, updown(before), updown(now), differences);
  Compare("the MTU of " + before.name, std::to_string(before.mtu), std::to_string(now.mtu),
          differences);
  Compare("the master of " + before.name, masterOf(before), masterOf(now), differences);
  for (const int family : {AF_INET, AF_INET6}) {
    Compare("the addresses of " + before.name, OrNone(AddressesOf(before, family)),
            OrNone(AddressesOf(now, family)), differences);
  }
}

// A message that sets parts of a link.
class LinkMessage {
 public:
  explicit LinkMessage(int index) : bytes_(kMessageSize, '\0') {
    header_ = ::mnl_nlmsg_put_header(bytes_.data());
    base_ = static_cast<ifinfomsg*>(::mnl_nlmsg_put_extra_header(header_, sizeof(ifinfomsg)));
    base_->ifi_index = index;
  }
  LinkMessage& Up(bool up) {
    base_->ifi_change = IFF_UP;
    base_->ifi_flags = up ? IFF_UP : 0;
    return *this;
  }
  LinkMessage& Put(std::uint16_t attribute, int value) {
    ::mnl_attr_put_u32(header_, attribute, static_cast<std::uint32_t>(value));
    return *this;
  }
  void Send(Netlink* netlink) { netlink->Tell(bytes_, RTM_NEWLINK, 0); }

 private:
  std::string bytes_;
  nlmsghdr* header_;
  ifinfomsg* base_;
};

void PutBackLink(const KernelLink& before, const Kernel& now, Netlink* netlink) {
  const KernelLink* const link = now.Link(before.name);
  if (link == nullptr) return;
  if (link->master != before.master) {
    const KernelLink* const master = now.Link(before.master);
    const bool bond = master != nullptr && master->kind == "bond";
    if (bond) LinkMessage(link->index).Up(false).Send(netlink);  // it takes nothing that is up
    LinkMessage(link->index).Put(IFLA_MASTER, master != nullptr ? master->index : 0).Send(netlink);
  }
  if (link->mtu != before.mtu) LinkMessage(link->index).Put(IFLA_MTU, before.mtu).Send(netlink);
  LinkMessage(link->index).Up(before.IsUp()).Send(netlink);
}

// Of IPv4 the order matters: any difference, and all go and come again.
void PutBackAddresses(const KernelLink& before, const KernelLink& now, Netlink* netlink) {
  const bool anew = AddressesOf(before, AF_INET) != AddressesOf(now, AF_INET);
  for (const KernelAddress& address : now.addresses) {
    const bool known =
        std::any_of(before.addresses.begin(), before.addresses.end(),
                    [&](const auto& other) { return other.WithPrefix() == address.WithPrefix(); });
    const bool goes = address.family == AF_INET ? anew : !known && !address.IsAutomatic();
    if (goes) netlink->Tell(address.message, RTM_DELADDR, 0);
  }
  for (const KernelAddress& address : before.addresses) {
    if (!address.IsAutomatic()) AddAddress(address, now);
  }
}

void PutBackRoutes(const Kernel& before, const Kernel& now, Netlink* netlink) {
  const Texts wanted = RoutesOf(before);
  for (const KernelRoute& route : now.routes) {
    const bool known = std::binary_search(wanted.begin(), wanted.end(), route.Words());
    if (!known && !route.IsAutomatic()) netlink->Tell(route.message, RTM_DELROUTE, 0);
  }
  const Texts present = RoutesOf(now);
  for (const bool ofLink : {true, false}) {  // a gateway has to be reachable before it is one
    for (const KernelRoute& route : before.routes) {
      const bool there = std::binary_search(present.begin(), present.end(), route.Words());
      if (!there && !route.IsAutomatic() && route.gateway.empty() == ofLink) AddRoute(route, now);
    }
  }
}

void PutBackSwitches(const Kernel& before, const Kernel& now) {
  for (const auto& [path, value] : before.ipv6Switch) {
    const auto found = now.ipv6Switch.find(path);
    if (found != now.ipv6Switch.end() && found->second != value) std::ofstream(path) << value;
  }
}

}  // namespace

std::vector<std::string> DifferencesOf(const Kernel& before, const Kernel& now) {
  Texts differences;
  Compare("the host name", before.hostname, now.hostname, &differences);
  for (const auto& [name, link] : before.links) {
    if (const KernelLink* const other = now.Link(name)) {
      CompareLinks(link, *other, &differences);
    } else {
      differences.push_back(name + " is gone");
    }
  }
  for (const auto& [name, link] : now.links) {
    if (before.Link(name) == nullptr) differences.push_back(name + " is new");
  }
  Compare("the routes", OrNone(RoutesOf(before)), OrNone(RoutesOf(now)), &differences);
  for (const auto& [path, value] : before.ipv6Switch) {
    const auto found = now.ipv6Switch.find(path);
    if (found != now.ipv6Switch.end()) Compare(path, value, found->second, &differences);
  }
  return differences;
}

bool AddAddress(const KernelAddress& address, const KernelLink& link) {
  Netlink netlink;
  std::string message = address.message;
  auto* const base = static_cast<ifaddrmsg*>(::mnl_nlmsg_get_payload(HeaderOf(&message)));
  base->ifa_index = static_cast<unsigned>(link.index);
  return netlink.Tell(message, RTM_NEWADDR, NLM_F_CREATE | NLM_F_REPLACE);
}

bool AddRoute(const KernelRoute& route, const Kernel& now) {
  const KernelLink* const link = now.Link(route.ifname);
  if (link == nullptr) return false;
  std::string message = route.message;
  // The kernel takes no route that says of itself that its link has no carrier.
  static_cast<rtmsg*>(::mnl_nlmsg_get_payload(HeaderOf(&message)))->rtm_flags &=
      ~static_cast<unsigned>(RTNH_F_DEAD | RTNH_F_LINKDOWN);
  // A link that was made anew has a new number.
  const auto renumber = [](const nlattr* attribute, void* index) {
    if (::mnl_attr_get_type(attribute) == RTA_OIF)
      std::memcpy(::mnl_attr_get_payload(attribute), index, sizeof(int));
    return MNL_CB_OK;
  };
  int index = link->index;
  ::mnl_attr_parse(HeaderOf(&message), sizeof(rtmsg), renumber, &index);
  Netlink netlink;
  return netlink.Tell(message, RTM_NEWROUTE, NLM_F_CREATE);
}

void PutBack(const Kernel& before) {
  Netlink netlink;
  const auto changed = ReadKernel();
  if (!changed) return;
  if (changed->hostname != before.hostname)
    static_cast<void>(!::sethostname(before.hostname.c_str(), before.hostname.size()));
  PutBackSwitches(before, *changed);
  for (const auto& [name, link] : before.links)
    PutBackLink(link, *changed, &netlink);
  for (const auto& [name, link] : before.links) {
    if (const KernelLink* const now = changed->Link(name)) PutBackAddresses(link, *now, &netlink);
  }
  if (const auto now = ReadKernel()) PutBackRoutes(before, *now, &netlink);
}

}  // namespace change
