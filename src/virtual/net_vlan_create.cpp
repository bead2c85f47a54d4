// SPDX-License-Identifier: Apache-2.0
// Puts a VLAN over an interface, whose addresses it takes.
#include <algorithm>
#include <optional>
#include <string>

#include <zarnnetsdk/net_int.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/vlans.h"
#include "frame/model/paths.h"
#include "frame/model/vlan.h"
#include "frame/os/kernel.h"
#include "frame/os/rewrite.h"
#include "virtual/vlan_files.h"
#include "virtual/vlan_move.h"

using namespace frame;

namespace {

bool IsUsable(const ZARNNETIFSETTINGS& settings) {
  if (settings.blStatic == 0) return true;
  return IsHostAddress(FieldText(settings.szIP)) && ParseMask(FieldText(settings.szMask));
}

// An interface carries one VLAN, whatever its id.
bool IsFree(const char* parent) {
  const auto vlans = facts::Vlans();
  if (!vlans) return false;
  const bool taken = std::any_of(vlans->begin(), vlans->end(), [&](const KOPANETVLAN& vlan) {
    return FieldText(vlan.szRowDev) == parent;
  });
  return !taken || Fail(ZARNNETERR_EXISTS, false);
}

bool CanCarry(const char* parent, unsigned id) {
  const InetSocket socket;
  if (!socket.IsOpen()) return Fail(ZARNNETERR_VLAN_QUERY, false);
  if (!socket.Flags(parent)) return Fail(ZARNNETERR_NOT_FOUND, false);
  if (facts::VlanOf(socket, parent)) return Fail(ZARNNETERR_BAD_PARAMETER, false);
  if (facts::VlanOver(socket, parent, id)) return Fail(ZARNNETERR_EXISTS, false);
  return IsFree(parent);
}

bool CopyMtu(const std::string& parent, const std::string& name) {
  const auto mtu = ipv4::StoredMtu(parent);
  if (mtu && ipv4::StoreMtu(name, *mtu)) return true;
  const InnerError inner;
  LOG_ERROR("%s:%d Set mtu config %s mtu=%s Failed.[0x%04X %s:%d]", name.c_str(),
            mtu.value_or("").c_str(), inner.code, inner.file, inner.line);
  return false;
}

// Both files are complete before the parent is stopped.
bool ReplaceFiles(const KOPANETVLAN& vlan, const ZARNNETIFSETTINGS& settings) {
  const std::string vlanPath = paths::Ifcfg(vlan.szName);
  const std::string parentPath = paths::Ifcfg(vlan.szRowDev);
  const auto vlanText = virtual_if::VlanFile(vlan, settings);
  if (!vlanText) return false;
  Rewrite vlanFile(vlanPath, paths::kVlanTemplate);
  if (!virtual_if::Prepare(&vlanFile, *vlanText)) return false;
  const auto parentText = virtual_if::ParentFileUnder(vlan.szRowDev);
  if (!parentText) return false;
  Rewrite parentFile(parentPath, paths::kVlanParentTemplate);
  if (!virtual_if::Prepare(&parentFile, *parentText)) return false;
  virtual_if::RunStartScript("stop", vlan.szRowDev);
  if (!virtual_if::TakePlace(&parentFile, parentPath) ||
      !virtual_if::TakePlace(&vlanFile, vlanPath))
    return false;
  // Not before: what a killed writer has left may have been the only copy of these settings.
  virtual_if::RemoveAbandonedFiles(vlan.szRowDev);
  return true;
}

bool Create(const KOPANETVLAN& vlan, const ZARNNETIFSETTINGS& settings) {
  const std::string parent = vlan.szRowDev;
  const std::string name = vlan.szName;
  virtual_if::DisablePppoe(parent);
  if (!CopyMtu(parent, name) || !ReplaceFiles(vlan, settings)) return false;
  virtual_if::RunStartScript("start", parent, name);
  return virtual_if::TellFollowers(parent, name);
}

}  // namespace

int KOPANetVlanCreate(const char* szRowDev, unsigned int id, const ZARNNETIFSETTINGS* pSettings) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szRowDev) || !model::IsVlanId(id) || pSettings == nullptr ||
        !IsUsable(*pSettings)) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const std::string name = model::VlanName(szRowDev, id);
    // Cut, it would be another interface's name.
    if (!FitsKernel(name)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (!CanCarry(szRowDev, id)) return -1;
    KOPANETVLAN vlan{};
    CopyText(name, vlan.szName);
    CopyText(szRowDev, vlan.szRowDev);
    vlan.id = static_cast<int32_t>(id);
    return ipv4::WhileRenaming(ipv4::Renamed::kVlan, {szRowDev}, {name},
                               [&] { return Create(vlan, *pSettings) ? 0 : -1; });
  });
}
