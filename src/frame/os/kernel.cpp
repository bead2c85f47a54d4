// SPDX-License-Identifier: Apache-2.0
// The interface ioctls, over one datagram socket that lives as long as the call that needs it.
#include "frame/os/kernel.h"

#include <cerrno>
#include <cstring>
#include <linux/if_bridge.h>
#include <linux/if_vlan.h>
#include <linux/sockios.h>
#include <sys/ioctl.h>
#include <sys/socket.h>

#include "frame/base/text.h"

namespace frame {
namespace {

// The address field of an interface request is a sockaddr that holds an IPv4 one.
in_addr AddressOf(const sockaddr& field) {
  sockaddr_in address{};
  std::memcpy(&address, &field, sizeof address);
  return address.sin_addr;
}

sockaddr FieldOf(in_addr value) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr = value;
  sockaddr field{};
  std::memcpy(&field, &address, sizeof field);
  return field;
}

vlan_ioctl_args VlanRequest(int command, std::string_view ifname) {
  vlan_ioctl_args request{};
  request.cmd = command;
  CopyText(KernelName(ifname), request.device1);
  return request;
}

}  // namespace

InetSocket::InetSocket() : socket_(::socket(AF_INET, SOCK_DGRAM | SOCK_CLOEXEC, 0)) {}

bool InetSocket::Request(unsigned long command, std::string_view ifname, ifreq* request) const {
  CopyText(KernelName(ifname), request->ifr_name);
  return ::ioctl(socket_.Get(), command, request) == 0;
}

std::optional<short> InetSocket::Flags(std::string_view ifname) const {
  ifreq request{};
  if (!Request(SIOCGIFFLAGS, ifname, &request)) return std::nullopt;
  return request.ifr_flags;
}

bool InetSocket::SetFlags(std::string_view ifname, short flags) const {
  ifreq request{};
  request.ifr_flags = flags;
  return Request(SIOCSIFFLAGS, ifname, &request);
}

bool InetSocket::SetUp(std::string_view ifname, bool up) const {
  const auto flags = Flags(ifname);
  if (!flags) return false;
  return SetFlags(ifname, static_cast<short>(up ? *flags | IFF_UP : *flags & ~IFF_UP));
}

std::optional<in_addr> InetSocket::AskAddress(unsigned long command,
                                              std::string_view ifname) const {
  ifreq request{};
  request.ifr_addr.sa_family = AF_INET;
  if (!Request(command, ifname, &request)) return std::nullopt;
  return AddressOf(request.ifr_addr);
}

bool InetSocket::TellAddress(unsigned long command, std::string_view ifname,
                             in_addr address) const {
  ifreq request{};
  request.ifr_addr = FieldOf(address);
  return Request(command, ifname, &request);
}

std::optional<in_addr> InetSocket::Address(std::string_view ifname) const {
  return AskAddress(SIOCGIFADDR, ifname);
}

bool InetSocket::SetAddress(std::string_view ifname, in_addr address) const {
  return TellAddress(SIOCSIFADDR, ifname, address);
}

std::optional<in_addr> InetSocket::Netmask(std::string_view ifname) const {
  return AskAddress(SIOCGIFNETMASK, ifname);
}

// The mask carries the address family too: the kernel refuses one without it.
bool InetSocket::SetNetmask(std::string_view ifname, in_addr mask) const {
  return TellAddress(SIOCSIFNETMASK, ifname, mask);
}

std::optional<std::array<unsigned char, 6>> InetSocket::HardwareAddress(
    std::string_view ifname) const {
  ifreq request{};
  if (!Request(SIOCGIFHWADDR, ifname, &request)) return std::nullopt;
  std::array<unsigned char, 6> mac{};
  std::memcpy(mac.data(), request.ifr_hwaddr.sa_data, mac.size());
  return mac;
}

std::optional<int> InetSocket::Mtu(std::string_view ifname) const {
  ifreq request{};
  if (!Request(SIOCGIFMTU, ifname, &request)) return std::nullopt;
  return request.ifr_mtu;
}

bool InetSocket::SetMtu(std::string_view ifname, int mtu) const {
  ifreq request{};
  request.ifr_mtu = mtu;
  return Request(SIOCSIFMTU, ifname, &request);
}

bool InetSocket::Rename(std::string_view ifname, std::string_view newName) const {
  ifreq request{};
  CopyText(KernelName(newName), request.ifr_newname);
  return Request(SIOCSIFNAME, ifname, &request);
}

bool InetSocket::AskDriver(std::string_view ifname, void* driverRequest) const {
  ifreq request{};
  request.ifr_data = static_cast<char*>(driverRequest);
  return Request(SIOCETHTOOL, ifname, &request);
}

std::optional<std::string> InetSocket::VlanParent(std::string_view ifname) const {
  vlan_ioctl_args request = VlanRequest(GET_VLAN_REALDEV_NAME_CMD, ifname);
  if (::ioctl(socket_.Get(), SIOCGIFVLAN, &request) != 0) return std::nullopt;
  return std::string(FieldText(request.u.device2));
}

std::optional<int> InetSocket::VlanId(std::string_view ifname) const {
  vlan_ioctl_args request = VlanRequest(GET_VLAN_VID_CMD, ifname);
  if (::ioctl(socket_.Get(), SIOCGIFVLAN, &request) != 0) return std::nullopt;
  return request.u.VID;
}

std::optional<bool> InetSocket::HasBridges() const {
  int first = 0;  // room for the number of one
  unsigned long request[] = {BRCTL_GET_BRIDGES, reinterpret_cast<unsigned long>(&first), 1};
  const int count = ::ioctl(socket_.Get(), SIOCGIFBR, request);
  if (count < 0) return std::nullopt;
  return count > 0;
}

ZARNNETERROR RefusalCode() {
  return errno == ENODEV ? ZARNNETERR_NOT_FOUND : ZARNNETERR_REFUSED;
}

}  // namespace frame
