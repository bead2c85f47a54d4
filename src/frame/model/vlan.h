// SPDX-License-Identifier: Apache-2.0
// How VLANs are numbered and named.
#pragma once

#include <string>
#include <string_view>

namespace frame::model {

// 802.1Q reserves 0 and 4095.
inline constexpr unsigned kLastVlanId = 4094;

inline bool IsVlanId(unsigned id) {
  return id >= 1 && id <= kLastVlanId;
}

// "eth0.10": the name of a VLAN over an interface.
inline std::string VlanName(std::string_view parent, unsigned id) {
  return std::string(parent).append(".").append(std::to_string(id));
}

}  // namespace frame::model
