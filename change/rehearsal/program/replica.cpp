// SPDX-License-Identifier: Apache-2.0
// Ports become the near ends of cables (veth): a cable's far end is up where the port has carrier,
// or where that is not known because the port is down. Everything else is of its own kind where the
// kernel has it. What the links have is put on them as after a change that failed.
#include "program/replica.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <fcntl.h>
#include <fstream>
#include <linux/rtnetlink.h>
#include <linux/veth.h>
#include <net/if.h>
#include <sched.h>
#include <unistd.h>

#include "program/journal.h"
#include "record/netlink.h"

namespace rehearsal {
namespace {

using change::Kernel;
using change::KernelLink;
using change::Netlink;

using Mac = std::array<unsigned char, 6>;

bool ReadMac(const std::string& text, Mac* mac) {
  return std::sscanf(text.c_str(), "%hhx:%hhx:%hhx:%hhx:%hhx:%hhx", &(*mac)[0], &(*mac)[1],
                     &(*mac)[2], &(*mac)[3], &(*mac)[4], &(*mac)[5]) == 6;
}

class NewLink {
 public:
  explicit NewLink(const KernelLink& link) : bytes_(change::kMessageSize, '\0') {
    header_ = ::mnl_nlmsg_put_header(bytes_.data());
    auto* const base =
        static_cast<ifinfomsg*>(::mnl_nlmsg_put_extra_header(header_, sizeof(ifinfomsg)));
    base->ifi_index = link.index;
    ::mnl_attr_put_strz(header_, IFLA_IFNAME, link.name.c_str());
    // A bridge that is made with an MTU takes its ports'; one that is given it afterwards keeps it.
    if (link.kind != "bridge")
      ::mnl_attr_put_u32(header_, IFLA_MTU, static_cast<std::uint32_t>(link.mtu));
    if (Mac mac{}; ReadMac(link.mac, &mac))
      ::mnl_attr_put(header_, IFLA_ADDRESS, mac.size(), mac.data());
    if (link.kind == "vlan")
      ::mnl_attr_put_u32(header_, IFLA_LINK, static_cast<std::uint32_t>(link.parentIndex));
  }
  // Of its own kind, with the kernel's own settings of it.
  NewLink& OfKind(const KernelLink& link) {
    ::mnl_attr_put(header_, IFLA_LINKINFO | NLA_F_NESTED, link.kindMessage.size(),
                   link.kindMessage.data());
    return *this;
  }
  NewLink& OfKind(const char* kind) {
    nlattr* const info = ::mnl_attr_nest_start(header_, IFLA_LINKINFO);
    ::mnl_attr_put_strz(header_, IFLA_INFO_KIND, kind);
    ::mnl_attr_nest_end(header_, info);
    return *this;
  }
  NewLink& Cable(int cables, const std::string& farEnd, int farIndex) {
    nlattr* const info = ::mnl_attr_nest_start(header_, IFLA_LINKINFO);
    ::mnl_attr_put_strz(header_, IFLA_INFO_KIND, "veth");
    nlattr* const data = ::mnl_attr_nest_start(header_, IFLA_INFO_DATA);
    nlattr* const peer = ::mnl_attr_nest_start(header_, VETH_INFO_PEER);
    // The kernel is in no hurry to tell of carrier where both ends have one number.
    static_cast<ifinfomsg*>(::mnl_nlmsg_put_extra_header(header_, sizeof(ifinfomsg)))->ifi_index =
        farIndex;
    ::mnl_attr_put_strz(header_, IFLA_IFNAME, farEnd.c_str());
    ::mnl_attr_put_u32(header_, IFLA_NET_NS_FD, static_cast<std::uint32_t>(cables));
    ::mnl_attr_nest_end(header_, peer);
    ::mnl_attr_nest_end(header_, data);
    ::mnl_attr_nest_end(header_, info);
    return *this;
  }
  bool Make(Netlink* netlink) {
    return netlink->Tell(bytes_, RTM_NEWLINK, NLM_F_CREATE | NLM_F_EXCL);
  }

 private:
  std::string bytes_;
  nlmsghdr* header_;
};

std::string FarEndOf(const KernelLink& link) {
  return "far" + std::to_string(link.index);
}

void MakeLink(const KernelLink& link, int cables, Netlink* netlink) {
  if (!link.kind.empty()) {
    if (NewLink(link).OfKind(link).Make(netlink)) return;
    if (NewLink(link).OfKind(link.kind.c_str()).Make(netlink)) {
      Note(
          {kRemarkRecord, link.name, "the settings of this " + link.kind + " could not be copied"});
      return;
    }
    Note({kRemarkRecord, link.name,
          "a port stands in for it: the kernel makes no " + link.kind + " in the copy"});
  }
  constexpr int kFarFrom = 1000000;
  const int farIndex = static_cast<int>(link.index) + kFarFrom;
  if (!NewLink(link).Cable(cables, FarEndOf(link), farIndex).Make(netlink))
    Note({kRemarkRecord, link.name, "the kernel could not make it in the copy"});
}

// A VLAN after what it is on.
void MakeLinks(const Kernel& kernel, int cables, Netlink* netlink) {
  std::vector<const KernelLink*> left;
  for (const auto& [name, link] : kernel.links) {
    if (!link.IsLoopback()) left.push_back(&link);
  }
  while (!left.empty()) {
    const auto waits = [&](const KernelLink* link) {
      return link->kind == "vlan" && std::any_of(left.begin(), left.end(), [&](const auto* other) {
               return other->name == link->parent;
             });
    };
    const auto next = std::find_if_not(left.begin(), left.end(), waits);
    const auto one = next != left.end() ? next : left.begin();
    MakeLink(**one, cables, netlink);
    left.erase(one);
  }
}

// In the network with the far ends; then back.
void PlugIn(const Kernel& kernel, int cables) {
  const int own = ::open("/proc/self/ns/net", O_RDONLY | O_CLOEXEC);
  if (own < 0 || ::setns(cables, CLONE_NEWNET) != 0) return;
  Netlink netlink;
  for (const auto& [name, link] : kernel.links) {
    if (link.IsUp() && !link.carrier) continue;
    std::string bytes(change::kMessageSize, '\0');
    nlmsghdr* const header = ::mnl_nlmsg_put_header(bytes.data());
    auto* const base =
        static_cast<ifinfomsg*>(::mnl_nlmsg_put_extra_header(header, sizeof(ifinfomsg)));
    base->ifi_change = base->ifi_flags = IFF_UP;
    ::mnl_attr_put_strz(header, IFLA_IFNAME, FarEndOf(link).c_str());
    netlink.Tell(bytes, RTM_NEWLINK, 0);  // refused for what has no cable
  }
  static_cast<void>(::setns(own, CLONE_NEWNET));
  ::close(own);
}

// Nobody else is in this network: addresses count at once.
void SwitchProbingOff() {
  for (const char* path :
       {"/proc/sys/net/ipv6/conf/all/accept_dad", "/proc/sys/net/ipv6/conf/default/accept_dad",
        "/proc/sys/net/ipv6/conf/default/dad_transmits"})
    std::ofstream(path) << 0;
}

// What a router has given, which a change that is put back leaves to the kernel.
void AddLearned(const Kernel& kernel) {
  for (const auto& [name, link] : kernel.links) {
    for (const change::KernelAddress& address : link.addresses) {
      if (address.IsAutomatic() && address.scope == RT_SCOPE_UNIVERSE) AddAddress(address, link);
    }
  }
  for (const change::KernelRoute& route : kernel.routes) {
    if (route.IsAutomatic() && route.protocol != RTPROT_KERNEL) AddRoute(route, kernel);
  }
}

// Setters look whether a port has carrier, which it has a moment after it is plugged in.
void AwaitCarrier(const Kernel& kernel) {
  constexpr int kLooks = 300;
  constexpr useconds_t kPause = 5000;
  for (int look = 0; look < kLooks; ++look) {
    const auto made = change::ReadKernel();
    if (!made) return;
    const bool all = std::all_of(kernel.links.begin(), kernel.links.end(), [&](const auto& entry) {
      const KernelLink* const link = made->Link(entry.first);
      return link == nullptr || (entry.second.flags & ~link->flags & IFF_RUNNING) == 0;
    });
    if (all) return;
    ::usleep(kPause);
  }
}

}  // namespace

void MakeReplica(const Kernel& kernel, int cables) {
  SwitchProbingOff();
  {
    Netlink netlink;
    MakeLinks(kernel, cables, &netlink);
  }
  PlugIn(kernel, cables);
  PutBack(kernel);
  AddLearned(kernel);
  AwaitCarrier(kernel);
  const auto made = change::ReadKernel();
  if (!made) return;
  for (const std::string& difference : DifferencesOf(kernel, *made))
    Note({kRemarkRecord, "the copy's network", difference + " in the machine"});
}

}  // namespace rehearsal
