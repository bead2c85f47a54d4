// SPDX-License-Identifier: Apache-2.0
// The interfaces that are up: all of them, or the Ethernet ports alone.
#include "frame/facts/up_interfaces.h"

#include <optional>
#include <string>

#include "frame/base/error.h"
#include "frame/facts/net_dev.h"
#include "frame/facts/record.h"
#include "frame/os/kernel.h"

namespace frame::facts {
namespace {

// Has the interface carrier, for those that belong on the list; nothing for the others.
using Carrier = std::optional<bool> (*)(const InetSocket& socket, const std::string& ifname,
                                        short flags);

// The interfaces that are up, in the order of the statistics table.
int ListUp(KOPANetIfInfo* list, int max, Carrier carrierOf) {
  if (max < 0) return Fail(ZARNNETERR_BAD_PARAMETER, -1, Place("net_interface_enum"));
  const auto names = ListNetDev();
  if (!names) return -1;
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, -1, Place("net_interface_enum"));
  int count = 0;
  for (const std::string& ifname : *names) {
    if (count >= max) break;
    const auto flags = socket.Flags(ifname);
    if (!flags || (*flags & IFF_UP) == 0) continue;
    const auto carrier = carrierOf(socket, ifname, *flags);
    if (!carrier) continue;
    if (list != nullptr) {
      list[count] = KOPANetIfInfo{};
      FillRecord(socket, ifname, *flags, *carrier, &list[count]);
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
  return HasCarrier(ifname, flags);
}

}  // namespace

int ListUpInterfaces(KOPANetIfInfo* list, int max) {
  return ListUp(list, max, CarrierOfAny);
}

int ListUpPorts(KOPANetIfInfo* list, int max) {
  return ListUp(list, max, CarrierOfPort);
}

}  // namespace frame::facts
