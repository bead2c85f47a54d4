// Puts a VLAN over an interface, whose addresses it takes.
#include <algorithm>
#include <cstdlib>
#include <memory>
#include <string>

#include <zarnnetsdk/addr.h>
#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>
#include <zarnnetsdk/pppoe.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"
#include "frame/os/command.h"
#include "frame/os/rewrite.h"
#include "virtual/vlan_files.h"
#include "virtual/vlan_followers.h"

using namespace frame;

namespace {

bool IsUsable(const ZARNNETIFSETTINGS& settings) {
  if (settings.blStatic == 0) return true;
  const std::string ip(FieldText(settings.szIP));
  const std::string mask(FieldText(settings.szMask));
  return BlKOPAIsIpAddr(ip.c_str()) == 1 && BlKOPAIsValidIpMask(mask.c_str()) == 1;
}

// An interface carries one VLAN, whatever its id.
bool IsFree(const char* parent) {
  KOPANETVLAN* vlans = nullptr;
  int count = 0;
  if (KOPANetVlanEnum(&vlans, &count) < 0) return false;
  const std::unique_ptr<KOPANETVLAN, decltype(&std::free)> owner(vlans, &std::free);
  const bool taken = std::any_of(vlans, vlans + count, [&](const KOPANETVLAN& vlan) {
    return FieldText(vlan.szRowDev) == parent;
  });
  return !taken || Fail(ZARNNETERR_EXISTS, false);
}

bool CanCarry(const char* parent, unsigned id) {
  KOPANetIfInfo info{};
  if (ZARNNetIFGetInfo(parent, &info) < 0) return Fail(ZARNNETERR_NOT_FOUND, false);
  KOPANETVLAN vlan{};
  const int isVlan = KOPANetVlanGet(parent, &vlan);
  if (isVlan != 0) return isVlan > 0 && Fail(ZARNNETERR_BAD_PARAMETER, false);
  const int exists = KOPANetVlanGetByRowDev(parent, id, &vlan);
  if (exists != 0) return exists > 0 && Fail(ZARNNETERR_EXISTS, false);
  return IsFree(parent);
}

bool CopyMtu(const std::string& parent, const std::string& name) {
  char mtu[16] = "";
  if (ZARNConfGetMTUValue(parent.c_str(), mtu, sizeof mtu) >= 0 &&
      ZARNConfSetMTUValue(mtu, name.c_str()) >= 0) {
    return true;
  }
  const InnerError inner;
  LOG_ERROR("%s:%d Set mtu config %s mtu=%s Failed.[0x%04X %s:%d]", name.c_str(), mtu, inner.code,
            inner.file, inner.line);
  return false;
}

bool Place(Rewrite* file, const std::string& path) {
  if (!file->TakeEffect()) return false;
  if (file->SetTargetMode(0644)) return true;
  LOG_ERROR("%s:%d change %s's mode failed", path.c_str());
  return false;
}

// Both files are complete before the parent is stopped.
bool ReplaceFiles(const KOPANETVLAN& vlan, const ZARNNETIFSETTINGS& settings) {
  const std::string vlanPath = paths::Ifcfg(vlan.szName);
  const std::string parentPath = paths::Ifcfg(vlan.szRowDev);
  Rewrite vlanFile(vlanPath, paths::kVlanTemplate);
  if (!vlan::Prepare(&vlanFile, vlan::FileOf(vlan, settings))) return false;
  const auto parentText = vlan::ParentFileUnder(vlan.szRowDev);
  if (!parentText) return false;
  Rewrite parentFile(parentPath, paths::kVlanParentTemplate);
  if (!vlan::Prepare(&parentFile, *parentText)) return false;
  static_cast<void>(Run(paths::kNetworkScript, "stop", vlan.szRowDev));
  return Place(&parentFile, parentPath) && Place(&vlanFile, vlanPath);
}

int Create(const KOPANETVLAN& vlan, const ZARNNETIFSETTINGS& settings) {
  const std::string parent = vlan.szRowDev;
  const std::string name = vlan.szName;
  if (KOPADisablePPPoEOnIf(parent.c_str()) < 0) {
    const InnerError inner;
    LOG_ERROR("%s:%d Disable PPPoE interface %s Failed.[0x%04X %s:%d]", parent.c_str(), inner.code,
              inner.file, inner.line);
  }
  if (!CopyMtu(parent, name) || !ReplaceFiles(vlan, settings)) return -1;
  static_cast<void>(Run(paths::kNetworkScript, "start", parent, name));
  if (const char* const failed = vlan::TellPrograms(parent, name)) {
    LOG_ERROR("%s:%d Failed to %s -change_interface %s %s", failed, parent.c_str(), name.c_str());
    return -1;
  }
  return vlan::MoveDhcpServer(parent, name) ? 0 : -1;
}

}  // namespace

int KOPANetVlanCreate(const char* szRowDev, unsigned int id, const ZARNNETIFSETTINGS* pSettings) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szRowDev) || KOPANetVlanValidId(id) < 0 || pSettings == nullptr ||
        !IsUsable(*pSettings)) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const std::string name = Format("%s.%u", szRowDev, id);
    // Cut, it would be another interface's name.
    if (!FitsKernel(name)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (!CanCarry(szRowDev, id)) return -1;
    KOPANETVLAN vlan{};
    CopyText(name, vlan.szName);
    CopyText(szRowDev, vlan.szRowDev);
    vlan.id = static_cast<int32_t>(id);
    return ipv4::WhileRenaming(ipv4::Renamed::kVlan, {szRowDev}, {name},
                               [&] { return Create(vlan, *pSettings); });
  });
}
