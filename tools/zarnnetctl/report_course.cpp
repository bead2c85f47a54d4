// SPDX-License-Identifier: Apache-2.0
// A report's sections of what becomes of the machine: drift, changes, traffic.
#include <algorithm>
#include <array>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <zarnnetchange/change.h>

#include "change_call.h"
#include "drift.h"
#include "made_changes.h"
#include "report.h"
#include "waiting.h"

namespace tool {
namespace {

constexpr std::size_t kMostChanges = 20;

std::string Seconds(double seconds) {
  std::array<char, 32> text{};
  std::snprintf(text.data(), text.size(), "%.1f", seconds);
  return text.data();
}

Row TrafficRow(const Rate& rate, const KOPANETSTAT& total) {
  Row row{{rate.name},
          {Short(rate.rxBytes)},
          {Short(rate.rxPackets)},
          {Short(rate.txBytes)},
          {Short(rate.txPackets)}};
  for (const std::uint64_t number : {total.rxBytes, total.rxErrors, total.rxDropped, total.txBytes,
                                     total.txErrors, total.txDropped}) {
    row.push_back({std::to_string(number)});
  }
  return row;
}

}  // namespace

void TellDrift(const Json& state, Page* page) {
  const Json drift = DriftOf(state);
  if (drift.empty()) return page->Say("Files and kernel agree.", Tone::kGood);
  std::vector<Row> rows{Headings({"Path", "Files", "Kernel", "Settled by: zarnnetctl apply -"})};
  for (const Json& row : drift) {
    rows.push_back({{row["path"], Tone::kBad},
                    {Side(row, "files")},
                    {Side(row, "kernel")},
                    {row["settled_by"].dump()}});
  }
  page->Table(rows);
}

void TellChanges(Page* page) {
  Report report;
  ZARNNetChangeHistory("{}", report.Out());
  const Json history = report.AsJson();
  if (history.value("result", ZARNNETCHANGE_FAILED) != ZARNNETCHANGE_DONE)
    return page->Say(history.value("reason", "out of memory"), Tone::kBad);
  const Json& changes = history["changes"];
  if (changes.empty()) return page->Say("No change was made.");
  std::vector<Row> rows{Headings({"Number", "State", "Began", "Who", "What"})};
  for (auto change = changes.rbegin(); change != changes.rend(); ++change) {
    if (rows.size() <= kMostChanges) rows.push_back(RowOf(*change));
  }
  page->Say("The last " + std::to_string(rows.size() - 1) + " of " +
            std::to_string(changes.size()) + ", the newest first.");
  page->Table(rows);
}

void TellTraffic(const Snapshot& before, const Snapshot& now, Page* page) {
  std::vector<Row> rows{
      Headings({"Name", "Received B/s", "Packets/s", "Sent B/s", "Packets/s", "Received in all",
                "Errors", "Dropped", "Sent in all", "Errors", "Dropped"})};
  const std::vector<Rate> rates = RatesBetween(before, now);
  for (const KOPANETSTAT& stat : now.stats) {
    const auto rate = std::find_if(rates.begin(), rates.end(),
                                   [&](const Rate& one) { return one.name == stat.name; });
    if (rate != rates.end()) rows.push_back(TrafficRow(*rate, stat));
  }
  page->Say("Measured for " + Seconds(SecondsBetween(before, now)) +
            " seconds while this report was made. Of the time before there are only the counters "
            "of the kernel, in all since each interface began: nothing runs here that would keep "
            "more.");
  page->Table(rows);
}

void TellDocument(const Json& state, Page* page) {
  for (const char* view : {"configured", "live"}) {
    page->Folded(view, state[view].dump(2, ' ', false, Json::error_handler_t::replace));
  }
}

}  // namespace tool
