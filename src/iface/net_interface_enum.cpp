// The interfaces that are up: all of them, or the Ethernet ports alone.
#include <string>

#include <zarnnetsdk/iface.h>

#include "frame/kernel.h"
#include "frame/log.h"
#include "frame/net_dev.h"
#include "iface/record.h"

using namespace frame;

int KOPANetEthEnum(KOPANetIfInfo* pList, int max) try {
  if (max < 0) return FRAME_FAIL(kBadParameter, -1);
  const auto names = ListNetDev();
  if (!names) return -1;
  const InetSocket socket;
  if (!socket.IsOpen()) return -1;
  int count = 0;
  for (const std::string& ifname : *names) {
    if (count >= max) break;
    if (!ifname.starts_with("eth")) continue;
    const auto flags = socket.Flags(ifname);
    if (!flags || (*flags & IFF_UP) == 0 || socket.VlanParent(ifname)) continue;
    if (pList != nullptr) {
      pList[count] = KOPANetIfInfo{};
      inventory::FillRecord(socket, ifname, *flags, (*flags & IFF_RUNNING) != 0, &pList[count]);
    }
    ++count;
  }
  return count;
}
FRAME_NO_EXCEPTIONS(-1)

int KOPANetInterfaceEnum(KOPANetIfInfo* pList, int max, unsigned int /*kind*/) try {
  if (max < 0) return FRAME_FAIL(kBadParameter, -1);
  const auto names = ListNetDev();
  if (!names) return -1;
  const InetSocket socket;
  if (!socket.IsOpen()) return -1;
  int count = 0;
  for (const std::string& ifname : *names) {
    if (count >= max) break;
    const auto flags = socket.Flags(ifname);
    if (!flags || (*flags & IFF_UP) == 0 || (*flags & IFF_LOOPBACK) != 0) continue;
    if (pList != nullptr) {
      const bool carrier = inventory::HasCarrier(ifname, *flags);
      inventory::FillRecord(socket, ifname, *flags, carrier, &pList[count]);
    }
    ++count;
  }
  return count;
}
FRAME_NO_EXCEPTIONS(-1)
