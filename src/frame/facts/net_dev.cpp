// SPDX-License-Identifier: Apache-2.0
// The interfaces of /proc/net/dev that the appliance calls its own, in the order of every
// enumeration.
#include "frame/facts/net_dev.h"

#include <algorithm>
#include <string_view>

#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

namespace frame::facts {
namespace {

bool IsLeftOut(std::string_view name) {
  return name.find("mon.") != std::string_view::npos || name.starts_with("tap") ||
         name.starts_with("docker") || name.starts_with("dplv");
}

// Calls take(name, counters) for each interface of the table, as many as the system handles.
template <class Take>
bool EachInterface(Take take) {
  LineReader lines(paths::kProcNetDev);
  if (!lines.IsOpen()) return Fail(ZARNNETERR_OPEN, false);
  int count = 0;
  while (const auto line = lines.Next()) {
    const std::size_t colon = line->find(':');  // the two heading lines have none
    if (colon == std::string_view::npos) continue;
    const std::string_view name = Trimmed(line->substr(0, colon));
    if (IsLeftOut(name)) continue;
    if (count++ == kMaxInterfaces) return true;
    take(name, line->substr(colon + 1));
  }
  return !lines.Failed() || Fail(ZARNNETERR_UNEXPECTED_CONTENT, false);
}

}  // namespace

std::optional<std::vector<NetDevEntry>> ReadNetDev() {
  std::vector<NetDevEntry> entries;
  const bool read = EachInterface([&](std::string_view name, std::string_view counters) {
    entries.push_back({std::string(name), std::string(counters)});
  });
  if (!read) return std::nullopt;
  std::sort(entries.begin(), entries.end(),
            [](const NetDevEntry& a, const NetDevEntry& b) { return NaturalLess(a.name, b.name); });
  return entries;
}

std::optional<std::vector<std::string>> ListNetDev() {
  std::vector<std::string> names;
  const bool read =
      EachInterface([&](std::string_view name, std::string_view) { names.emplace_back(name); });
  if (!read) return std::nullopt;
  std::sort(names.begin(), names.end(), NaturalLess);
  return names;
}

}  // namespace frame::facts
