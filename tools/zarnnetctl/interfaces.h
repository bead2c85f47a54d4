// SPDX-License-Identifier: Apache-2.0
// The interfaces of the kernel, up or down, asked for all at once.
#pragma once

#include <string>
#include <vector>

namespace tool {

// What the kernel has of an interface, in the words that stand beside each colour.
enum class State { kUp, kNoLink, kDown, kMissing };
State StateOf(bool up, bool carrier);
std::string WordOf(State state);

struct Interface {
  std::string name;
  unsigned flags = 0;                  // IFF_...
  std::string mac;                     // empty without one
  std::vector<std::string> addresses;  // ADDRESS/PREFIX of both families, in the kernel's order

  [[nodiscard]] bool IsUp() const;
  [[nodiscard]] bool IsLoopback() const;
  [[nodiscard]] bool IsPointToPoint() const;
  [[nodiscard]] bool HasCarrier() const;
  [[nodiscard]] std::string Ipv4() const;  // the first, with its prefix
};

// The bond or bridge of the kernel that an interface is in, empty without one.
std::string MasterOf(const std::string& ifname);

// In natural order, eth2 before eth10. Throws when the kernel does not answer.
std::vector<Interface> ReadInterfaces();

}  // namespace tool
