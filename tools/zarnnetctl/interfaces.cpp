// SPDX-License-Identifier: Apache-2.0
// The interfaces of the kernel, in two questions to it, however many there are.
#include "interfaces.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <bit>
#include <cstring>
#include <filesystem>
#include <ifaddrs.h>
#include <map>
#include <memory>
#include <net/if.h>
#include <netpacket/packet.h>

#include "failure.h"
#include "query.h"

namespace tool {
namespace {

int BitsIn(const unsigned char* bytes, std::size_t count) {
  int bits = 0;
  for (std::size_t i = 0; i < count; ++i)
    bits += std::popcount(bytes[i]);
  return bits;
}

// The bytes of an address of this family within its record.
const unsigned char* BytesOf(const sockaddr* address) {
  const std::size_t offset = address->sa_family == AF_INET ? offsetof(sockaddr_in, sin_addr)
                                                           : offsetof(sockaddr_in6, sin6_addr);
  return reinterpret_cast<const unsigned char*>(address) + offset;
}

std::string AddressText(const ifaddrs& entry) {
  const int family = entry.ifa_addr->sa_family;
  std::array<char, INET6_ADDRSTRLEN> text{};
  ::inet_ntop(family, BytesOf(entry.ifa_addr), text.data(), text.size());
  const int prefix = entry.ifa_netmask == nullptr
                         ? 0
                         : BitsIn(BytesOf(entry.ifa_netmask),
                                  family == AF_INET ? sizeof(in_addr) : sizeof(in6_addr));
  return std::string(text.data()) + "/" + std::to_string(prefix);
}

std::string MacOf(const sockaddr* address) {
  sockaddr_ll link{};
  std::memcpy(&link, address, sizeof link);
  unsigned char mac[6] = {};
  if (link.sll_halen != sizeof mac) return {};
  std::memcpy(mac, link.sll_addr, sizeof mac);
  return MacText(mac);
}

void Add(const ifaddrs& entry, std::map<std::string, Interface>* all) {
  // An alias such as eth0:1 is an address of its interface.
  const std::string label = entry.ifa_name;
  Interface& interface = (*all)[label.substr(0, label.find(':'))];
  if (entry.ifa_addr == nullptr) return;
  const int family = entry.ifa_addr->sa_family;
  if (family == AF_PACKET) {
    interface.flags = entry.ifa_flags;
    interface.mac = MacOf(entry.ifa_addr);
  } else if (family == AF_INET || family == AF_INET6) {
    interface.addresses.push_back(AddressText(entry));
  }
}

}  // namespace

State StateOf(bool up, bool carrier) {
  if (!up) return State::kDown;
  return carrier ? State::kUp : State::kNoLink;
}

std::string WordOf(State state) {
  switch (state) {
    case State::kUp:
      return "up";
    case State::kNoLink:
      return "no link";
    case State::kDown:
      return "down";
    case State::kMissing:
      break;
  }
  return "missing";
}

bool Interface::IsUp() const {
  return (flags & IFF_UP) != 0;
}

bool Interface::IsLoopback() const {
  return (flags & IFF_LOOPBACK) != 0;
}

bool Interface::IsPointToPoint() const {
  return (flags & IFF_POINTOPOINT) != 0;
}

bool Interface::HasCarrier() const {
  return IsUp() && (flags & IFF_RUNNING) != 0;
}

std::string Interface::Ipv4() const {
  const auto found = std::find_if(
      addresses.begin(), addresses.end(),
      [](const std::string& address) { return address.find(':') == std::string::npos; });
  return found == addresses.end() ? "" : *found;
}

std::string MasterOf(const std::string& ifname) {
  std::error_code none;
  return std::filesystem::read_symlink("/sys/class/net/" + ifname + "/master", none).filename();
}

std::vector<Interface> ReadInterfaces() {
  ifaddrs* first = nullptr;
  if (::getifaddrs(&first) != 0)
    throw Failure("cannot list the interfaces", ZARNNETERR_OPEN, "the kernel does not answer");
  const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> owner(first, &::freeifaddrs);
  std::map<std::string, Interface> all;
  for (const ifaddrs* entry = first; entry != nullptr; entry = entry->ifa_next)
    Add(*entry, &all);
  std::vector<Interface> interfaces;
  for (auto& [name, interface] : all) {
    interface.name = name;
    interfaces.push_back(std::move(interface));
  }
  std::sort(interfaces.begin(), interfaces.end(), [](const Interface& a, const Interface& b) {
    return ::strverscmp(a.name.c_str(), b.name.c_str()) < 0;
  });
  return interfaces;
}

}  // namespace tool
