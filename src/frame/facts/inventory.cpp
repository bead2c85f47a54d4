// SPDX-License-Identifier: Apache-2.0
// Which interfaces there are, by kind.
#include "frame/facts/inventory.h"

#include <algorithm>
#include <net/if.h>
#include <vector>

#include <zarncore/zarncore.h>
#include <zarnhacore/zarnhacore.h>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bridges.h"
#include "frame/facts/net_dev.h"
#include "frame/facts/ovs.h"
#include "frame/facts/record.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"
#include "frame/os/shared_folder.h"

namespace frame::facts {
namespace {

// Its lines are known by the name of the function that asks for the inventory.
constexpr char kSource[] = "net_get_interface_info";

// What the caller's selector and the appliance's state make of one enumeration.
struct Selection {
  unsigned kind;
  short excludedFlags;
  bool skipBondMembers;
  bool vlanDriver;
  bool withHeartbeat;
  bool haRunning;
  bool sharedAddresses;  // report the pair's addresses
  char heartbeat[16] = "";
};

short ExcludedFlags(unsigned kind) {
  if (kind == ZARNNETKIND_PORT) return IFF_LOOPBACK | IFF_POINTOPOINT | IFF_MASTER;
  if (kind == ZARNNETKIND_ALL) return IFF_LOOPBACK;
  return IFF_LOOPBACK | IFF_POINTOPOINT;
}

Selection Select(unsigned selector, bool vlanDriver) {
  Selection selection{};
  selection.kind = selector & ~static_cast<unsigned>(ZARNNETKIND_HEARTBEAT | ZARNNETKIND_SHARED_IP);
  selection.excludedFlags = ExcludedFlags(selection.kind);
  selection.skipBondMembers =
      selection.kind == ZARNNETKIND_USABLE || selection.kind == ZARNNETKIND_ALL;
  selection.vlanDriver = vlanDriver;
  selection.withHeartbeat = (selector & ZARNNETKIND_HEARTBEAT) != 0;
  selection.haRunning = ZARNHAIsRunning() == 1;
  selection.sharedAddresses =
      selection.haRunning && (selector & ZARNNETKIND_SHARED_IP) != 0 && ZARNHAHasHAIF() == 1;
  if (selection.haRunning &&
      ZARNHAGetHeartbeatIF(selection.heartbeat, sizeof selection.heartbeat) < 0) {
    LOG_ERROR_AT(Place(kSource), "%s:%d Failed to get heartbeat interface.");
  }
  return selection;
}

// What is read once for all interfaces.
struct Memberships {
  BridgePorts bridgePorts;
  OvsBonds ovsBonds;
};

bool IsBridgedWireless(const std::string& ifname) {
  return ifname.starts_with("wlan") && IsTrustedFile(paths::kTopologyBridgeMark);
}

bool IsHeartbeat(const std::string& ifname, const Selection& selection) {
  return selection.haRunning && ifname == selection.heartbeat;
}

// The filter after the flags and the VLAN question.
bool IsListed(const std::string& ifname, short flags, const Selection& selection,
              const Memberships& members) {
  if (selection.skipBondMembers && IsBondingPassive(ifname, flags, members.ovsBonds)) return false;
  if ((flags & IFF_UP) == 0 || (flags & selection.excludedFlags) != 0) return false;
  if (members.bridgePorts.Has(ifname) || IsOvsPort(ifname, members.ovsBonds)) return false;
  if (IsBridgedWireless(ifname)) return false;
  return selection.withHeartbeat || !IsHeartbeat(ifname, selection);
}

// Each VLAN's record gives way to the last one: the order of the others changes, and callers know
// it so.
int RemoveVlans(const std::vector<std::string>& vlans, KOPANetIfInfo* list, int count) {
  if (vlans.size() > static_cast<std::size_t>(count)) {
    SetError(ZARNNETERR_BAD_PARAMETER, Place(kSource));
    return count;
  }
  for (const std::string& vlan : vlans) {
    KOPANetIfInfo* const end = list + count;
    KOPANetIfInfo* const found =
        std::find_if(list, end, [&](const KOPANetIfInfo& info) { return vlan == info.name; });
    if (found == end) continue;
    *found = list[count - 1];
    --count;
  }
  return count;
}

// Walks the table and counts, and fills, what passes the selection.
int Enumerate(const std::vector<std::string>& names, const Selection& selection, int max,
              KOPANetIfInfo* list) {
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_OPEN, -1, Place(kSource));
  if (names.empty()) return Fail(ZARNNETERR_NOT_FOUND, -1, Place(kSource));
  const Memberships members{BridgePorts(socket), OvsBonds()};
  std::vector<std::string> vlans;
  int count = 0;
  for (const std::string& ifname : names) {
    if (count >= max) break;
    if (ifname.find("gbr") != std::string::npos || ifname.find("gwlan") != std::string::npos)
      continue;
    const auto flags = socket.Flags(ifname);
    if (!flags) continue;
    if (selection.vlanDriver && socket.VlanParent(ifname)) {
      if (selection.kind == ZARNNETKIND_PORT) continue;
      if (selection.kind == ZARNNETKIND_USABLE) vlans.push_back(ifname);
    }
    if (!IsListed(ifname, *flags, selection, members)) continue;
    ZARNNETIFADDR shared{};
    if (selection.sharedAddresses && ZARNHAGetRelatedIFInfo(ifname.c_str(), &shared) < 0) continue;
    if (list != nullptr) {
      FillRecord(socket, ifname, *flags, HasCarrier(ifname, *flags), &list[count]);
      if (selection.sharedAddresses) {
        CopyText(FieldText(shared.szIP), list[count].ip);
        CopyText(FieldText(shared.szMask), list[count].mask);
      }
    }
    ++count;
  }
  return list != nullptr && selection.kind == ZARNNETKIND_USABLE ? RemoveVlans(vlans, list, count)
                                                                 : count;
}

void WarnOfMissingSharedAddresses(unsigned selector) {
  if ((selector & ZARNNETKIND_SHARED_IP) == 0 || ZARNHAHasHAIF() != 1 || ZARNHAIsActive() != 1)
    return;
  LOG_ERROR_AT(Place(kSource), "%s:%d HA is running but HA IP not ready (%d)",
               static_cast<int>(selector));
}

}  // namespace

int ListInterfaces(KOPANetIfInfo* list, int max, unsigned selector) {
  if (max < 0) return Fail(ZARNNETERR_BAD_PARAMETER, -1, Place(kSource));
  const int vlanDriver = KOPACModuleIsLoad("8021q");
  if (vlanDriver < 0) return -1;
  const Selection selection = Select(selector, vlanDriver == 1);
  if (selection.kind == 0) return Fail(ZARNNETERR_BAD_PARAMETER, -1, Place(kSource));
  const auto names = ListNetDev();
  if (!names) return -1;
  const int count = Enumerate(*names, selection, max, list);
  if (count == 0) WarnOfMissingSharedAddresses(selector);
  return count;
}

bool IsOfKind(std::string_view ifname, unsigned selector) {
  std::vector<KOPANetIfInfo> list(kMaxInterfaces);
  const int count = ListInterfaces(list.data(), kMaxInterfaces, selector);
  if (count < 0) {
    LOG_ERROR_AT(Place(kSource),
                 "%s:%d Failed to KOPANetGetInterfaceInfo(0x%X)=[%d], zarnerr=[0x%04X]", selector,
                 count, KOPACErrGet());
    return false;
  }
  const bool listed = std::any_of(list.begin(), list.begin() + count,
                                  [&](const KOPANetIfInfo& info) { return ifname == info.name; });
  return listed || Fail(ZARNNETERR_NOT_FOUND, false, Place(kSource));
}

}  // namespace frame::facts
