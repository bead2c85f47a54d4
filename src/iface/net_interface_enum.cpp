// The interfaces that are up: all of them, or the Ethernet ports alone.
#include <optional>
#include <string>

#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/facts/net_dev.h"
#include "frame/facts/record.h"
#include "frame/os/kernel.h"

using namespace frame;

namespace {

// Has the interface carrier, for those that belong on the list; nothing for the others.
using Carrier = std::optional<bool> (*)(const InetSocket& socket, const std::string& ifname,
                                        short flags);

// The interfaces that are up, in the order of the statistics table.
int ListUp(KOPANetIfInfo* list, int max, Carrier carrierOf) {
  if (max < 0) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
  const auto names = facts::ListNetDev();
  if (!names) return -1;
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, -1);
  int count = 0;
  for (const std::string& ifname : *names) {
    if (count >= max) break;
    const auto flags = socket.Flags(ifname);
    if (!flags || (*flags & IFF_UP) == 0) continue;
    const auto carrier = carrierOf(socket, ifname, *flags);
    if (!carrier) continue;
    if (list != nullptr) {
      list[count] = KOPANetIfInfo{};
      facts::FillRecord(socket, ifname, *flags, *carrier, &list[count]);
    }
    ++count;
  }
  return count;
}

std::optional<bool> CarrierOfPort(const InetSocket& socket, const std::string& ifname,
                                  short flags) {
  if (!ifname.starts_with("eth") || socket.VlanParent(ifname)) return std::nullopt;
  return (flags & IFF_RUNNING) != 0;
}

std::optional<bool> CarrierOfAny(const InetSocket& /*socket*/, const std::string& ifname,
                                 short flags) {
  if ((flags & IFF_LOOPBACK) != 0) return std::nullopt;
  return facts::HasCarrier(ifname, flags);
}

}  // namespace

int KOPANetEthEnum(KOPANetIfInfo* pList, int max) {
  return Boundary(-1, [&]() -> int { return ListUp(pList, max, CarrierOfPort); });
}

int KOPANetInterfaceEnum(KOPANetIfInfo* pList, int max, unsigned int /*kind*/) {
  return Boundary(-1, [&]() -> int { return ListUp(pList, max, CarrierOfAny); });
}
