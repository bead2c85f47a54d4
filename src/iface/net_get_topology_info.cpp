// SPDX-License-Identifier: Apache-2.0
// The network topologies of an appliance with a wireless interface, and which one is in force.
#include <string>
#include <strings.h>

#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/vlans.h"
#include "frame/model/paths.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

constexpr char kTopologyKey[] = "net_topology";

uint32_t CurrentTopology() {
  const KeyValue name = ReadKey(paths::kInfo, kTopologyKey, sizeof KOPANETTOPOLOGY::szName);
  if (!name.Found()) {
    LOG_ERROR("%s:%d Failed to get key[%s] in [%s]", kTopologyKey, paths::kInfo);
    return 0;
  }
  for (const KOPANETTOPOLOGY& topology : gTopologyInfo) {
    if (strcasecmp(topology.szName, name.text.c_str()) == 0) return topology.id;
  }
  return 0;
}

// Where a VLAN runs over the uplink, the VLAN is what leads outside.
void PreferVlan(KOPANETTOPOLOGY* info) {
  const auto vlans = facts::Vlans();
  if (!vlans) return;
  for (const KOPANETVLAN& vlan : *vlans) {
    if (FieldText(vlan.szRowDev) != FieldText(info->szUplink)) continue;
    CopyText(FieldText(vlan.szName), info->szUplink);
    return;
  }
}

}  // namespace

uint32_t KOPANetTopologyGet(KOPANETTOPOLOGY* pInfo) {
  return Boundary(0U, [&]() -> uint32_t {
    if (!KeyIs(paths::kInfo, "support_net_topology", "yes")) return 0;
    const uint32_t current = CurrentTopology();
    if (pInfo == nullptr) return current;
    const uint32_t wanted = pInfo->id != 0 ? pInfo->id : current;
    if (wanted >= std::size(gTopologyInfo)) {
      SetError(ZARNNETERR_BAD_PARAMETER);
      return 0;
    }
    *pInfo = gTopologyInfo[wanted];
    PreferVlan(pInfo);
    return wanted;
  });
}

int KOPANETSetTopologyConfigs(const KOPANETTOPOLOGY* pInfo) {
  return Boundary(-1, [&]() -> int {
    if (pInfo == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string name(FieldText(pInfo->szName));
    // An empty name is no topology's, and may be stored.
    if (!name.empty() && IsUnfitName(name.c_str())) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return KOPACINFOSetKeyValue(kTopologyKey, name.c_str()) < 0 ? -1 : 0;
  });
}
