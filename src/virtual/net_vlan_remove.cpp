// Removes a VLAN and gives its addresses back to its parent.
#include <string>
#include <unistd.h>

#include <zarnnetsdk/pppoe.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/mtu.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/containers.h"
#include "frame/os/rewrite.h"
#include "virtual/rename_event.h"
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
    StringList oldNames(1);
    StringList newNames(1);
    if (KOPACSzListPush(oldNames.Out(), vlan.szName) < 0 ||
        KOPACSzListPush(newNames.Out(), vlan.szRowDev) < 0) {
      return Fail(ZARNNETERR_NO_MEMORY, -1);
    }
    virtual_if::RenameEvent event;
    if (!event.Init()) {
      const InnerError inner;
      LOG_ERROR("%s:%d Fail to init plugin) [0x%04X %s:%d]", inner.code, inner.file, inner.line);
      return -1;
    }
    if (!event.Before(oldNames.Get(), newNames.Get())) {
      const InnerError inner;
      LOG_ERROR("%s:%d Fail to execute net plugin (PRE) [0x%04X %s:%d]", inner.code, inner.file,
                inner.line);
    }
    const int result = Remove(vlan);
    if (!event.After(oldNames.Get(), newNames.Get(), result)) {
      const InnerError inner;
      LOG_ERROR("%s:%d Fail to execute net plugin (POST) [0x%04X %s:%d]", inner.code, inner.file,
                inner.line);
    }
    return result;
  });
}
