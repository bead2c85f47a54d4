// SPDX-License-Identifier: Apache-2.0
// The kernel's switch for router advertisements, one an interface.
#pragma once

#include <optional>
#include <string>

namespace ipv6 {

inline constexpr int kIgnoreRa = 0;
inline constexpr int kAcceptRa = 2;  // also while the appliance forwards

// Nothing when the interface has no such switch.
std::optional<int> ReadAcceptRa(const std::string& ifname);

// A switch that cannot be written is logged.
[[nodiscard]] bool WriteAcceptRa(const std::string& ifname, int value);

}  // namespace ipv6
