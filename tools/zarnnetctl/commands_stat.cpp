// SPDX-License-Identifier: Apache-2.0
// zarnnetctl stat: the traffic counters of interfaces.
#include <chrono>
#include <cmath>
#include <iostream>
#include <memory>
#include <thread>
#include <unistd.h>

#include "commands.h"
#include "query.h"
#include "traffic.h"

namespace tool {
namespace {

Json ToJson(const KOPANETSTAT& stat) {
  return {{"name", stat.name},
          {"rx_bytes", stat.rxBytes},
          {"rx_packets", stat.rxPackets},
          {"rx_errors", stat.rxErrors},
          {"rx_dropped", stat.rxDropped},
          {"tx_bytes", stat.txBytes},
          {"tx_packets", stat.txPackets},
          {"tx_errors", stat.txErrors},
          {"tx_dropped", stat.txDropped}};
}

Row ToRow(const KOPANETSTAT& stat) {
  Row row{{stat.name}};
  for (const std::uint64_t number : {stat.rxBytes, stat.rxPackets, stat.rxErrors, stat.rxDropped,
                                     stat.txBytes, stat.txPackets, stat.txErrors, stat.txDropped}) {
    row.push_back({std::to_string(number)});
  }
  return row;
}

void RequireInterfaces(const std::vector<std::string>& ifnames) {
  for (const std::string& ifname : ifnames)
    RequireInterface(kReadingTraffic, ifname);
}

void Show(const Context& context, const std::vector<std::string>& ifnames) {
  RequireInterfaces(ifnames);
  const std::vector<KOPANETSTAT> stats = ReadTraffic(ifnames);
  if (context.json) {
    Json list = Json::array();
    for (const KOPANETSTAT& stat : stats)
      list.push_back(ToJson(stat));
    return PrintJson("statistics", list);
  }
  std::vector<Row> rows{Headings({"NAME", "RX BYTES", "PACKETS", "ERRORS", "DROPPED", "TX BYTES",
                                  "PACKETS", "ERRORS", "DROPPED"})};
  for (const KOPANETSTAT& stat : stats)
    rows.push_back(ToRow(stat));
  PrintTable(rows);
}

// ---- stat --watch: the traffic of each second between two snapshots

struct Watch {
  bool on = false;
  double interval = 1;
  int count = 0;  // 0: without end
};

void PrintRates(const std::vector<Rate>& rates) {
  std::vector<Row> rows{Headings({"NAME", "RX B/S", "PACKETS/S", "TX B/S", "PACKETS/S"})};
  for (const Rate& rate : rates)
    rows.push_back({{rate.name},
                    {Short(rate.rxBytes)},
                    {Short(rate.rxPackets)},
                    {Short(rate.txBytes)},
                    {Short(rate.txPackets)}});
  PrintTable(rows);
}

void PrintRatesJson(const std::vector<Rate>& rates) {
  Json list = Json::array();
  for (const Rate& rate : rates) {
    list.push_back({{"name", rate.name},
                    {"rx_bytes_per_second", std::llround(rate.rxBytes)},
                    {"rx_packets_per_second", std::llround(rate.rxPackets)},
                    {"tx_bytes_per_second", std::llround(rate.txBytes)},
                    {"tx_packets_per_second", std::llround(rate.txPackets)}});
  }
  PrintJsonLine("rates", list);
}

// On a terminal each table is written over the one before.
class Screen {
 public:
  void Show(const std::vector<Rate>& rates) {
    if (onTerminal_ && lines_ > 0) std::cout << "\x1b[" << lines_ << "F\x1b[J";
    PrintRates(rates);
    lines_ = rates.size() + 1;
  }

 private:
  bool onTerminal_ = ::isatty(STDOUT_FILENO) == 1;
  std::size_t lines_ = 0;
};

// Ends with the count, with the output that nobody reads any more, or with a signal.
void ShowRates(const Context& context, const std::vector<std::string>& ifnames,
               const Watch& watch) {
  RequireInterfaces(ifnames);
  Screen screen;
  Snapshot before = Take(ifnames);
  for (int shown = 0; watch.count == 0 || shown < watch.count; ++shown) {
    std::this_thread::sleep_until(before.time + std::chrono::duration<double>(watch.interval));
    Snapshot now = Take(ifnames);
    const std::vector<Rate> rates = RatesBetween(before, now);
    if (context.json) {
      PrintRatesJson(rates);
    } else {
      screen.Show(rates);
    }
    if (!std::cout.flush()) return;
    before = std::move(now);
  }
}

}  // namespace

void AddStatCommands(const Group& app, Context& context) {
  const Verb verb = AddVerb(app, context, "stat", "Shows the traffic counters of interfaces",
                            "  zarnnetctl stat\n  zarnnetctl stat eth0 --json\n"
                            "  zarnnetctl stat --watch --interval 2");
  auto ifnames = std::make_shared<std::vector<std::string>>();
  verb.AddOption("IFNAME", *ifnames, "Names of the interfaces (default: all)").Interface();
  auto watch = std::make_shared<Watch>();
  const Word on = verb.AddFlag("--watch", watch->on, "Show the traffic a second, again and again");
  verb.AddOption("--interval", watch->interval, "Seconds between two looks (default: 1)")
      .Needs(on)
      .Within(0.1, 3600.0);
  verb.AddOption("--count", watch->count, "End after so many (default: without end)")
      .Needs(on)
      .Within(1, 1000000);
  verb.Run([&context, ifnames, watch] {
    if (watch->on) return ShowRates(context, *ifnames, *watch);
    Show(context, *ifnames);
  });
}

}  // namespace tool
