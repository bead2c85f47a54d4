// SPDX-License-Identifier: Apache-2.0
// Removes a VLAN and gives its addresses back to its parent.
#include <string>
#include <unistd.h>

#include <zarnnetsdk/net_int.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/text.h"
#include "frame/facts/vlans.h"
#include "frame/model/mtu.h"
#include "frame/model/paths.h"
#include "frame/os/kernel.h"
#include "frame/os/rewrite.h"
#include "virtual/vlan_files.h"
#include "virtual/vlan_move.h"

using namespace frame;

namespace {

bool ReplaceFiles(const KOPANETVLAN& vlan) {
  const auto text = virtual_if::ParentFileWithout(vlan);
  if (!text) return false;
  virtual_if::RemoveAbandonedFiles(vlan.szRowDev);
  const std::string path = paths::Ifcfg(vlan.szRowDev);
  Rewrite file(path, paths::kVlanRemovedTemplate);
  if (!virtual_if::Prepare(&file, *text)) return false;
  virtual_if::RunStartScript("stop", vlan.szRowDev, vlan.szName);
  if (!virtual_if::TakePlace(&file, path)) return false;
  ::unlink(paths::Ifcfg(vlan.szName).c_str());
  return true;
}

bool Remove(const KOPANETVLAN& vlan) {
  const std::string parent = vlan.szRowDev;
  const std::string name = vlan.szName;
  virtual_if::DisablePppoe(name);
  // A setting that stays behind does no harm.
  static_cast<void>(KOPACINFORemoveKey(model::MtuKey(name).c_str()));
  if (!ReplaceFiles(vlan)) return false;
  virtual_if::RunStartScript("start", parent);
  return virtual_if::TellFollowers(name, parent);
}

}  // namespace

int KOPANetVlanRemove(const char* szVlan) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szVlan)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const InetSocket socket;
    if (!socket.IsOpen()) return Fail(ZARNNETERR_VLAN_QUERY, -1);
    const auto vlan = facts::VlanOf(socket, szVlan);
    if (!vlan) return Fail(ZARNNETERR_NOT_FOUND, -1);
    return ipv4::WhileRenaming(ipv4::Renamed::kVlan, {vlan->szName}, {vlan->szRowDev},
                               [&] { return Remove(*vlan) ? 0 : -1; });
  });
}
