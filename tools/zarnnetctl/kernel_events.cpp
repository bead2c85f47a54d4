// SPDX-License-Identifier: Apache-2.0
// What the kernel tells of links, addresses and routes as it changes them.
#include "kernel_events.h"

#include <arpa/inet.h>
#include <array>
#include <cerrno>
#include <cstring>
#include <linux/if_addr.h>
#include <linux/rtnetlink.h>
#include <map>
#include <net/if.h>
#include <nlohmann/json.hpp>

namespace tool {
namespace {

using Attributes = std::map<int, const nlattr*>;

Attributes AttributesOf(const nlmsghdr& message, std::size_t head) {
  Attributes attributes;
  const auto* attribute =
      static_cast<const nlattr*>(::mnl_nlmsg_get_payload_offset(&message, head));
  const auto* const end = static_cast<const char*>(::mnl_nlmsg_get_payload_tail(&message));
  const auto left = [&] {
    return static_cast<int>(end - reinterpret_cast<const char*>(attribute));
  };
  for (; ::mnl_attr_ok(attribute, left()); attribute = ::mnl_attr_next(attribute))
    attributes[::mnl_attr_get_type(attribute)] = attribute;
  return attributes;
}

std::string NameOf(unsigned index) {
  std::array<char, IF_NAMESIZE> name{};
  return ::if_indextoname(index, name.data()) != nullptr ? name.data() : std::to_string(index);
}

std::string AddressOf(const nlattr* attribute) {
  std::array<char, INET6_ADDRSTRLEN> text{};
  const int family = ::mnl_attr_get_payload_len(attribute) == sizeof(in_addr) ? AF_INET : AF_INET6;
  ::inet_ntop(family, ::mnl_attr_get_payload(attribute), text.data(), text.size());
  return text.data();
}

Json Event(const char* kind, const char* action, const std::string& ifname) {
  return {{"kind", kind}, {"action", action}, {"interface", ifname}};
}

Json LinkEvent(const nlmsghdr& message) {
  const auto& head = *static_cast<const ifinfomsg*>(::mnl_nlmsg_get_payload(&message));
  const Attributes attributes = AttributesOf(message, sizeof head);
  const auto name = attributes.find(IFLA_IFNAME);
  const auto mtu = attributes.find(IFLA_MTU);
  const auto master = attributes.find(IFLA_MASTER);
  Json event = Event("link", message.nlmsg_type == RTM_NEWLINK ? "changed" : "removed",
                     name == attributes.end() ? NameOf(static_cast<unsigned>(head.ifi_index))
                                              : ::mnl_attr_get_str(name->second));
  event["up"] = (head.ifi_flags & IFF_UP) != 0;
  event["carrier"] = (head.ifi_flags & IFF_RUNNING) != 0;
  event["mtu"] = mtu == attributes.end() ? Json() : Json(::mnl_attr_get_u32(mtu->second));
  event["master"] =
      master == attributes.end() ? Json() : Json(NameOf(::mnl_attr_get_u32(master->second)));
  return event;
}

Json AddressEvent(const nlmsghdr& message) {
  const auto& head = *static_cast<const ifaddrmsg*>(::mnl_nlmsg_get_payload(&message));
  const Attributes attributes = AttributesOf(message, sizeof head);
  const auto local = attributes.find(IFA_LOCAL);  // the own end of a link from point to point
  const auto address = local == attributes.end() ? attributes.find(IFA_ADDRESS) : local;
  if (address == attributes.end()) return nullptr;
  Json event = Event("address", message.nlmsg_type == RTM_NEWADDR ? "added" : "removed",
                     NameOf(head.ifa_index));
  event["address"] = AddressOf(address->second) + "/" + std::to_string(head.ifa_prefixlen);
  return event;
}

// Routes of the main table that lead somewhere; the kernel's own for each address are not told.
Json RouteEvent(const nlmsghdr& message) {
  const auto& head = *static_cast<const rtmsg*>(::mnl_nlmsg_get_payload(&message));
  if (head.rtm_table != RT_TABLE_MAIN || head.rtm_type != RTN_UNICAST) return nullptr;
  const Attributes attributes = AttributesOf(message, sizeof head);
  const auto to = attributes.find(RTA_DST);
  const auto gateway = attributes.find(RTA_GATEWAY);
  const auto out = attributes.find(RTA_OIF);
  Json event = Event("route", message.nlmsg_type == RTM_NEWROUTE ? "added" : "removed",
                     out == attributes.end() ? "" : NameOf(::mnl_attr_get_u32(out->second)));
  event["to"] = to == attributes.end()
                    ? "default"
                    : AddressOf(to->second) + "/" + std::to_string(head.rtm_dst_len);
  event["gateway"] = gateway == attributes.end() ? Json() : Json(AddressOf(gateway->second));
  return event;
}

Json EventOf(const nlmsghdr& message) {
  switch (message.nlmsg_type) {
    case RTM_NEWLINK:
    case RTM_DELLINK:
      return LinkEvent(message);
    case RTM_NEWADDR:
    case RTM_DELADDR:
      return AddressEvent(message);
    case RTM_NEWROUTE:
    case RTM_DELROUTE:
      return RouteEvent(message);
    default:
      return nullptr;
  }
}

void TakeFrom(const char* buffer, std::size_t size, std::vector<Json>* events) {
  int left = static_cast<int>(size);
  const auto* message = static_cast<const nlmsghdr*>(static_cast<const void*>(buffer));
  for (; ::mnl_nlmsg_ok(message, left); message = ::mnl_nlmsg_next(message, &left)) {
    Json event = EventOf(*message);
    if (!event.is_null()) events->push_back(std::move(event));
  }
}

}  // namespace

KernelEvents::KernelEvents()
    : socket_(::mnl_socket_open2(NETLINK_ROUTE, SOCK_CLOEXEC | SOCK_NONBLOCK)) {
  constexpr unsigned kGroups =
      RTMGRP_LINK | RTMGRP_IPV4_IFADDR | RTMGRP_IPV6_IFADDR | RTMGRP_IPV4_ROUTE | RTMGRP_IPV6_ROUTE;
  if (socket_ == nullptr || ::mnl_socket_bind(socket_.get(), kGroups, MNL_SOCKET_AUTOPID) < 0) {
    throw Failure("cannot listen to the kernel", std::nullopt, std::strerror(errno));
  }
}

std::vector<Json> KernelEvents::Take() {
  constexpr std::size_t kLargest = 32768;  // the kernel's datagrams are no larger
  std::vector<Json> events;
  alignas(nlmsghdr) std::array<char, kLargest> buffer;
  for (;;) {
    const ssize_t size = ::mnl_socket_recvfrom(socket_.get(), buffer.data(), buffer.size());
    if (size > 0)
      TakeFrom(buffer.data(), static_cast<std::size_t>(size), &events);
    else if (size < 0 && errno == ENOBUFS)
      events.push_back(Event("lost", "lost", ""));
    else if (size >= 0 || errno != EINTR)
      return events;
  }
}

}  // namespace tool
