// SPDX-License-Identifier: Apache-2.0
// The interface ioctls, over one datagram socket that lives as long as the call that needs it.
#pragma once

#include <array>
#include <cstdint>
#include <net/if.h>
#include <netinet/in.h>
#include <optional>
#include <string>
#include <string_view>

#include "frame/base/address.h"
#include "frame/base/error.h"
#include "frame/os/file.h"

namespace frame {

// Every query answers nothing when the kernel refuses; errno says why. Names are cut to 15
// characters.
class InetSocket {
 public:
  InetSocket();

  [[nodiscard]] bool IsOpen() const { return static_cast<bool>(socket_); }

  [[nodiscard]] std::optional<short> Flags(std::string_view ifname) const;
  [[nodiscard]] bool SetFlags(std::string_view ifname, short flags) const;
  [[nodiscard]] bool SetUp(std::string_view ifname, bool up) const;
  [[nodiscard]] std::optional<in_addr> Address(std::string_view ifname) const;
  [[nodiscard]] bool SetAddress(std::string_view ifname, in_addr address) const;
  [[nodiscard]] std::optional<in_addr> Netmask(std::string_view ifname) const;
  [[nodiscard]] bool SetNetmask(std::string_view ifname, in_addr mask) const;
  [[nodiscard]] std::optional<std::array<unsigned char, 6>> HardwareAddress(
      std::string_view ifname) const;

  [[nodiscard]] std::optional<int> Mtu(std::string_view ifname) const;
  [[nodiscard]] bool SetMtu(std::string_view ifname, int mtu) const;

  // The interface has to be down.
  [[nodiscard]] bool Rename(std::string_view ifname, std::string_view newName) const;

  // Hands a request of the driver settings interface (linux/ethtool.h) to the interface's driver,
  // which answers in place.
  [[nodiscard]] bool AskDriver(std::string_view ifname, void* driverRequest) const;

  // The VLAN driver's answers: the parent of a VLAN (nothing for any other interface), and its id.
  [[nodiscard]] std::optional<std::string> VlanParent(std::string_view ifname) const;
  [[nodiscard]] std::optional<int> VlanId(std::string_view ifname) const;

  // Is there any bridge? The question loads the driver where it can be loaded: to be asked only
  // where that is there.
  [[nodiscard]] std::optional<bool> HasBridges() const;

 private:
  [[nodiscard]] bool Request(unsigned long command, std::string_view ifname, ifreq* request) const;
  [[nodiscard]] std::optional<in_addr> AskAddress(unsigned long command,
                                                  std::string_view ifname) const;
  [[nodiscard]] bool TellAddress(unsigned long command, std::string_view ifname,
                                 in_addr address) const;

  Descriptor socket_;
};

// The code of a query that the kernel has just refused: there is no such interface, or it refuses
// this. It goes by errno, which stays as it is.
ZARNNETERROR RefusalCode();

}  // namespace frame
