// zarnnetctl stat: the traffic counters of interfaces.
#include <algorithm>
#include <memory>

#include "commands.h"
#include "query.h"

namespace tool {
namespace {

struct FreeList {
  void operator()(PKOPANETSTATLIST list) const { KOPANetStatFree(list); }
};

std::vector<KOPANETSTAT> ReadStatistics(const std::string& what) {
  constexpr int kMost = 32;
  ForgetErrors();
  const std::unique_ptr<KOPANETSTATLIST, FreeList> list(KOPANetStatInit(kMost));
  if (!list || KOPANetStatGetAll(list.get()) < 0) Fail(what);
  return {list->rgItem, list->rgItem + list->nItem};
}

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

void Show(const Context& context, const std::vector<std::string>& ifnames) {
  const std::string what = "cannot read the statistics";
  std::vector<KOPANETSTAT> stats = ReadStatistics(what);
  for (const std::string& ifname : ifnames)
    RequireInterface(what, ifname);
  const auto isUnwanted = [&](const KOPANETSTAT& stat) {
    return !ifnames.empty() &&
           std::find(ifnames.begin(), ifnames.end(), stat.name) == ifnames.end();
  };
  std::erase_if(stats, isUnwanted);
  if (context.json) {
    Json list = Json::array();
    for (const KOPANETSTAT& stat : stats)
      list.push_back(ToJson(stat));
    return PrintJson("statistics", list);
  }
  std::vector<Row> rows{{{"NAME", Tone::kHeading},
                         {"RX BYTES", Tone::kHeading},
                         {"PACKETS", Tone::kHeading},
                         {"ERRORS", Tone::kHeading},
                         {"DROPPED", Tone::kHeading},
                         {"TX BYTES", Tone::kHeading},
                         {"PACKETS", Tone::kHeading},
                         {"ERRORS", Tone::kHeading},
                         {"DROPPED", Tone::kHeading}}};
  for (const KOPANETSTAT& stat : stats)
    rows.push_back(ToRow(stat));
  PrintTable(rows);
}

}  // namespace

void AddStatCommands(CLI::App& app, Context& context) {
  CLI::App* const verb = AddVerb(app, context, "stat", "Shows the traffic counters of interfaces",
                                 "  zarnnetctl stat\n  zarnnetctl stat eth0 --json");
  auto ifnames = std::make_shared<std::vector<std::string>>();
  verb->add_option("IFNAME", *ifnames, "Names of the interfaces (default: all)");
  verb->callback([&context, ifnames] { Show(context, *ifnames); });
}

}  // namespace tool
