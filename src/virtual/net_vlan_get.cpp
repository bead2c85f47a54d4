// SPDX-License-Identifier: Apache-2.0
// One VLAN interface, asked of the kernel.
#include <string>
#include <string_view>

#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/facts/vlans.h"
#include "frame/model/vlan.h"
#include "frame/os/kernel.h"

using namespace frame;

namespace {

int Query(std::string_view ifname, KOPANETVLAN* record) {
  *record = KOPANETVLAN{};
  CopyText(ifname, record->szName);
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_VLAN_QUERY, -1);
  const auto vlan = facts::VlanOf(socket, ifname);
  if (!vlan) return 0;
  *record = *vlan;
  return 1;
}

}  // namespace

int KOPANetVlanValidId(unsigned int id) {
  return Boundary(
      -1, [&]() -> int { return model::IsVlanId(id) ? 0 : Fail(ZARNNETERR_BAD_PARAMETER, -1); });
}

int KOPANetVlanExist() {
  return Boundary(0, [&]() -> int { return facts::HasVlanDriver() ? 1 : 0; });
}

int KOPANetVlanGet(const char* szIfname, KOPANETVLAN* pVlan) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || pVlan == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return Query(std::string(szIfname), pVlan);  // it may be the record's own name
  });
}

int KOPANetVlanGetByRowDev(const char* szRowDev, unsigned int id, KOPANETVLAN* pVlan) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szRowDev) || pVlan == nullptr || !model::IsVlanId(id)) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    return Query(model::VlanName(szRowDev, id), pVlan);
  });
}
