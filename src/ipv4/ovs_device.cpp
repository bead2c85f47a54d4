// What carries the traffic of an Open vSwitch device: the ports of a bond, or the one port under a
// device.
#include "ipv4/ovs_device.h"

#include <zarnnetsdk/virtual.h>

#include "frame/base/text.h"

using namespace frame;

namespace ipv4 {

OvsKind OvsKindOf(const char* ifname) {
  switch (KOPANetOVSIfIsMaster(ifname)) {
    case 1:
      return OvsKind::kPort;
    case 2:
      return OvsKind::kBond;
    default:
      return OvsKind::kNone;
  }
}

std::optional<std::vector<std::string>> BondMembers(const char* bond) {
  ZARNLINKAGGROPT record{};
  if (ZARNNetLinkAggrGet(bond, &record) != 0) return std::nullopt;
  std::vector<std::string> members;
  for (int i = 0; i < record.cSlave; ++i)
    members.emplace_back(FieldText(record.rgszSlave[i]));
  return members;
}

std::optional<std::string> UnderlyingPort(const char* ifname) {
  char port[sizeof(KOPANETVLAN::szName)] = "";
  if (KOPANetOVSGetOriginalIf(ifname, port, sizeof port) < 0) return std::nullopt;
  return std::string(port);
}

}  // namespace ipv4
