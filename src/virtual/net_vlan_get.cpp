// One VLAN interface, asked of the kernel.
#include <zarnnetsdk/virtual.h>

#include "frame/error.h"
#include "frame/file.h"
#include "frame/kernel.h"
#include "frame/paths.h"
#include "frame/text.h"

using namespace frame;

int KOPANetVlanValidId(unsigned int id) {
  constexpr unsigned kLastId = 4094;  // 802.1Q reserves 0 and 4095
  return id >= 1 && id <= kLastId ? 0 : FRAME_FAIL(kBadParameter, -1);
}

int KOPANetVlanExist() try { return Exists(paths::kProcVlanConfig) ? 1 : 0; }
FRAME_NO_EXCEPTIONS(0)

int KOPANetVlanGet(const char* szIfname, KOPANETVLAN* pVlan) try {
  if (IsEmpty(szIfname) || pVlan == nullptr) return FRAME_FAIL(kBadParameter, -1);
  const std::string_view ifname(szIfname);
  *pVlan = KOPANETVLAN{};
  CopyText(ifname, pVlan->szName);
  const InetSocket socket;
  if (!socket.IsOpen()) return FRAME_FAIL(kVlanQuery, -1);
  // The question takes 15 characters, and a longer name must not be answered with another
  // interface's VLAN.
  if (!FitsKernel(ifname)) return 0;
  const auto parent = socket.VlanParent(ifname);
  if (!parent) return 0;
  CopyText(*parent, pVlan->szRowDev);
  const auto id = socket.VlanId(ifname);
  if (!id) return 0;
  pVlan->id = *id;
  return 1;
}
FRAME_NO_EXCEPTIONS(-1)

int KOPANetVlanGetByRowDev(const char* szRowDev, unsigned int id, KOPANETVLAN* pVlan) try {
  if (IsEmpty(szRowDev) || pVlan == nullptr) return FRAME_FAIL(kBadParameter, -1);
  if (KOPANetVlanValidId(id) < 0) return -1;
  return KOPANetVlanGet(Format("%s.%u", szRowDev, id).c_str(), pVlan);
}
FRAME_NO_EXCEPTIONS(-1)
