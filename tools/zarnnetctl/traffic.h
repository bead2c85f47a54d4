// SPDX-License-Identifier: Apache-2.0
// The traffic counters of interfaces, and what they count in a second.
#pragma once

#include <chrono>
#include <string>
#include <vector>

#include <zarnnetsdk/zarnnetsdk.h>

namespace tool {

inline constexpr char kReadingTraffic[] = "cannot read the statistics";

// The counters of the interfaces named, or of all.
std::vector<KOPANETSTAT> ReadTraffic(const std::vector<std::string>& ifnames = {});

struct Snapshot {
  std::chrono::steady_clock::time_point time;
  std::vector<KOPANETSTAT> stats;
};

Snapshot Take(const std::vector<std::string>& ifnames = {});

// In bytes and packets a second.
struct Rate {
  std::string name;
  double rxBytes, rxPackets, txBytes, txPackets;
};

double SecondsBetween(const Snapshot& before, const Snapshot& now);

// Of the interfaces that are in both snapshots.
std::vector<Rate> RatesBetween(const Snapshot& before, const Snapshot& now);

// "1.5 M": three digits are enough to watch.
std::string Short(double number);

}  // namespace tool
