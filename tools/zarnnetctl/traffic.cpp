// SPDX-License-Identifier: Apache-2.0
#include "traffic.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <memory>

#include "failure.h"

namespace tool {
namespace {

struct FreeList {
  void operator()(PKOPANETSTATLIST list) const { KOPANetStatFree(list); }
};

std::vector<KOPANETSTAT> ReadStatistics() {
  constexpr int kMost = 32;
  ForgetErrors();
  const std::unique_ptr<KOPANETSTATLIST, FreeList> list(KOPANetStatInit(kMost));
  if (!list || KOPANetStatGetAll(list.get()) < 0) Fail(kReadingTraffic);
  return {list->rgItem, list->rgItem + list->nItem};
}

// A counter that went back began anew, with its interface.
double PerSecond(std::uint64_t before, std::uint64_t now, double seconds) {
  return now < before || seconds <= 0 ? 0 : static_cast<double>(now - before) / seconds;
}

}  // namespace

std::vector<KOPANETSTAT> ReadTraffic(const std::vector<std::string>& ifnames) {
  std::vector<KOPANETSTAT> stats = ReadStatistics();
  const auto isUnwanted = [&](const KOPANETSTAT& stat) {
    return !ifnames.empty() &&
           std::find(ifnames.begin(), ifnames.end(), stat.name) == ifnames.end();
  };
  std::erase_if(stats, isUnwanted);
  return stats;
}

Snapshot Take(const std::vector<std::string>& ifnames) {
  return {std::chrono::steady_clock::now(), ReadTraffic(ifnames)};
}

double SecondsBetween(const Snapshot& before, const Snapshot& now) {
  return std::chrono::duration<double>(now.time - before.time).count();
}

std::vector<Rate> RatesBetween(const Snapshot& before, const Snapshot& now) {
  const double seconds = SecondsBetween(before, now);
  std::vector<Rate> rates;
  for (const KOPANETSTAT& stat : now.stats) {
    const std::string name = stat.name;
    const auto old = std::find_if(before.stats.begin(), before.stats.end(),
                                  [&](const KOPANETSTAT& other) { return name == other.name; });
    if (old == before.stats.end()) continue;
    rates.push_back({name, PerSecond(old->rxBytes, stat.rxBytes, seconds),
                     PerSecond(old->rxPackets, stat.rxPackets, seconds),
                     PerSecond(old->txBytes, stat.txBytes, seconds),
                     PerSecond(old->txPackets, stat.txPackets, seconds)});
  }
  return rates;
}

std::string Short(double number) {
  constexpr std::array<const char*, 5> kUnits{"", " k", " M", " G", " T"};
  constexpr double kStep = 1000;
  std::size_t unit = 0;
  for (; std::round(number) >= kStep && unit + 1 < kUnits.size(); ++unit)
    number /= kStep;
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.*f%s", unit > 0 && number < 100 ? 1 : 0, number,
                kUnits.at(unit));
  return text.data();
}

}  // namespace tool
