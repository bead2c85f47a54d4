// SPDX-License-Identifier: Apache-2.0
// The interfaces of /proc/net/dev that the appliance calls its own, in the order of every
// enumeration.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace frame::facts {

inline constexpr int kMaxInterfaces = 32;

// An interface of the table, and its counters as the line has them.
struct NetDevEntry {
  std::string name;
  std::string counters;
};

// Reads /proc/net/dev once: at most 32 interfaces in natural order of their names, without
// monitors, taps and the containers' interfaces. Nothing, with 0x0900 or 0x4000 set, when the file
// cannot be opened or read.
std::optional<std::vector<NetDevEntry>> ReadNetDev();

// The names alone.
std::optional<std::vector<std::string>> ListNetDev();

}  // namespace frame::facts
