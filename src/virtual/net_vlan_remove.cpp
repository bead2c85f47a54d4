// Removes a VLAN and gives its addresses back to its parent.
#include <string>
#include <unistd.h>

#include <zarnnetsdk/net_int.h>
#include <zarnnetsdk/pppoe.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/mtu.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/rewrite.h"
#include "virtual/vlan_files.h"
#include "virtual/vlan_followers.h"

using namespace frame;

namespace {

bool ReplaceFiles(const KOPANETVLAN& vlan) {
  const auto text = vlan::ParentFileWithout(vlan);
  if (!text) return false;
  const std::string path = paths::Ifcfg(vlan.szRowDev);
  Rewrite file(path, paths::kVlanRemovedTemplate);
  if (!vlan::Prepare(&file, *text)) return false;
  static_cast<void>(Run(paths::kNetworkScript, "stop", vlan.szRowDev, vlan.szName));
  if (!file.TakeEffect()) return false;
  if (!file.SetTargetMode(0644)) {
    LOG_ERROR("%s:%d change %s's mode failed", path.c_str());
    return false;
  }
  ::unlink(paths::Ifcfg(vlan.szName).c_str());
  return true;
}

int Remove(const KOPANETVLAN& vlan) {
  const std::string parent = vlan.szRowDev;
  const std::string name = vlan.szName;
  if (KOPADisablePPPoEOnIf(name.c_str()) < 0) {
    const InnerError inner;
    LOG_ERROR("%s:%d Disable PPPoE interface %s Failed.[0x%04X %s:%d]", name.c_str(), inner.code,
              inner.file, inner.line);
  }
  // A setting that stays behind does no harm.
  static_cast<void>(KOPACINFORemoveKey(model::MtuKey(name).c_str()));
  if (!ReplaceFiles(vlan)) return -1;
  static_cast<void>(Run(paths::kNetworkScript, "start", parent));
  if (const char* const failed = vlan::TellPrograms(name, parent)) {
    LOG_ERROR("%s:%d Failed to %s -change_interface %s %s", failed, name.c_str(), parent.c_str());
    return -1;
  }
  return vlan::MoveDhcpServer(name, parent) ? 0 : -1;
}

}  // namespace

int KOPANetVlanRemove(const char* szVlan) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szVlan)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    KOPANETVLAN vlan{};
    if (KOPANetVlanGet(szVlan, &vlan) != 1) return -1;
    return ipv4::WhileRenaming(ipv4::Renamed::kVlan, {vlan.szName}, {vlan.szRowDev},
                               [&] { return Remove(vlan); });
  });
}
