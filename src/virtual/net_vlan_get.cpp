// One VLAN interface, asked of the kernel.
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"
#include "frame/facts/vlans.h"
#include "frame/os/kernel.h"

using namespace frame;

int KOPANetVlanValidId(unsigned int id) {
  return Boundary(-1, [&]() -> int {
    constexpr unsigned kLastId = 4094;  // 802.1Q reserves 0 and 4095
    return id >= 1 && id <= kLastId ? 0 : Fail(ZARNNETERR_BAD_PARAMETER, -1);
  });
}

int KOPANetVlanExist() {
  return Boundary(0, [&]() -> int { return facts::HasVlanDriver() ? 1 : 0; });
}

int KOPANetVlanGet(const char* szIfname, KOPANETVLAN* pVlan) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname) || pVlan == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const std::string_view ifname(szIfname);
    *pVlan = KOPANETVLAN{};
    CopyText(ifname, pVlan->szName);
    const InetSocket socket;
    if (!socket.IsOpen()) return Fail(ZARNNETERR_VLAN_QUERY, -1);
    const auto vlan = facts::VlanOf(socket, ifname);
    if (!vlan) return 0;
    *pVlan = *vlan;
    return 1;
  });
}

int KOPANetVlanGetByRowDev(const char* szRowDev, unsigned int id, KOPANETVLAN* pVlan) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szRowDev) || pVlan == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (KOPANetVlanValidId(id) < 0) return -1;
    return KOPANetVlanGet(Format("%s.%u", szRowDev, id).c_str(), pVlan);
  });
}
