// SPDX-License-Identifier: Apache-2.0
// The fixed address and default route of an interface in the running kernel.
#pragma once

#include <string>
#include <vector>

#include <zarnnetsdk/ipv6.h>

#include "frame/base/undo.h"

namespace ipv6 {

// What a static configuration gives an interface; texts as the kernel prints them, empty for none.
struct Fixed {
  std::string address;
  unsigned prefix = 0;
  std::string gateway;
};

// Every address that the kernel has on the interface; none where they cannot be read.
std::vector<ZARNNETV6ADDR> AddressesOf(const std::string& ifname);

// Takes the interface from one to the other. What the kernel has already is left alone, and the old
// address goes last, so that the interface is never without one.
[[nodiscard]] bool Move(const std::string& ifname, const Fixed& former, const Fixed& wanted,
                        frame::Undo* undo);

}  // namespace ipv6
