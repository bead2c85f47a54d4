// SPDX-License-Identifier: Apache-2.0
// The topology of an appliance with a wireless interface.
#include <algorithm>
#include <iterator>

#include <zarnnetsdk/iface.h>

#include "document/section.h"
#include "frame/model/paths.h"

namespace change {
namespace {

const Path kName = "topology" / std::string("name");

Shape ShapeOf() {
  std::vector<std::string> names;
  for (const KOPANETTOPOLOGY& topology : gTopologyInfo) {
    if (topology.id != 0) names.emplace_back(topology.szName);
  }
  return Object("The network topology, where the machine supports topologies",
                {{"name", Word("Its name", std::move(names))},
                 {"uplink", Text("The interface to the outside", Format::kIfname, 15).ReadOnly()}});
}

Json Configured(const View&) {
  const std::uint32_t id = KOPANetTopologyGet(nullptr);
  if (id == 0) return nullptr;
  return {{"name", gTopologyInfo[id].szName}};
}

Json Live(const View&, const Json&) {
  KOPANETTOPOLOGY topology{};
  if (KOPANetTopologyGet(&topology) == 0) return nullptr;
  return {{"uplink", topology.szUplink}};
}

void Plan(const Change& change, Steps* steps) {
  if (!change.Concerns(kName)) return;
  const std::string name = TextOf(At(change.wanted, kName));
  const auto* const topology =
      std::find_if(std::begin(gTopologyInfo), std::end(gTopologyInfo),
                   [&](const KOPANETTOPOLOGY& row) { return name == row.szName; });
  if (topology == std::end(gTopologyInfo)) return;
  steps->push_back({Phase::kSettings,
                    kName,
                    "store the topology " + name,
                    "KOPANETSetTopologyConfigs",
                    {frame::paths::kInfo},
                    [topology] { return KOPANETSetTopologyConfigs(topology) == 0; }});
}

}  // namespace

const Section kTopology{"topology",    ShapeOf, Configured,   Live,
                        SettleNothing, Plan,    AwaitNothing, ReviveNothing};

}  // namespace change
