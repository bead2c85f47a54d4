// SPDX-License-Identifier: Apache-2.0
// How Open vSwitch devices are named: "ovs_" and what they are over.
#pragma once

#include <string>
#include <string_view>

namespace frame::model {

inline constexpr std::string_view kOvsPrefix = "ovs_";
inline constexpr std::string_view kOvsBondPrefix = "ovs_bond";

inline bool IsOvsName(std::string_view ifname) {
  return ifname.starts_with(kOvsPrefix);
}
inline std::string OvsDeviceOver(std::string_view ifname) {
  return std::string(kOvsPrefix).append(ifname);
}

}  // namespace frame::model
