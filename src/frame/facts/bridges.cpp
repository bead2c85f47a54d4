// SPDX-License-Identifier: Apache-2.0
// The part of interfaces in bridges, as the kernel has it and as the files say.
#include "frame/facts/bridges.h"

#include <zarncore/zarncore.h>

#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"

namespace frame::facts {
namespace {

constexpr char kPortFolder[] = "/brport";

}  // namespace

bool IsBridge(const std::string& ifname) {
  return Exists(paths::SysNet(ifname, "/bridge/"));
}

bool IsBridgePort(const std::string& ifname) {
  return Exists(paths::SysNet(ifname, kPortFolder));
}

// Looking into the folder of every interface is most of an enumeration's work, and a machine
// without bridges needs none of it. What the kernel says holds for its own folders only.
BridgePorts::BridgePorts(const InetSocket& socket)
    : folder_(OpenFolder(paths::kSysNet)),
      none_(IsInSysfs(folder_) && KOPACModuleIsLoad("bridge") == 1 &&
            socket.HasBridges() == false) {}

bool BridgePorts::Has(const std::string& ifname) const {
  if (none_) return false;
  return folder_ ? ExistsIn(folder_, "./" + ifname + kPortFolder) : IsBridgePort(ifname);
}

bool IsLocalLan(const std::string& ifname) {
  return KeyIs(paths::Ifcfg(ifname), keys::kLocalLan, "yes");
}

std::uint32_t BridgeRoleOf(const std::string& ifname) {
  if (IsBridge(ifname)) return IsLocalLan(ifname) ? ZARNBRIDGE_LOCAL_LAN : ZARNBRIDGE_BRIDGE;
  return IsBridgePort(ifname) ? ZARNBRIDGE_PORT : ZARNBRIDGE_STANDALONE;
}

std::optional<ZARNBRIDGEINFO> ConfiguredBridgeRole(const std::string& ifname) {
  if (IsUnfitName(ifname.c_str())) {
    LOG_ERROR_AT(Place("net_get_bridge_config"), "%s:%d Wrong Parameter.");
    return Fail(ZARNNETERR_BAD_PARAMETER, std::nullopt, Place("net_get_bridge_config"));
  }
  const std::string path = paths::Ifcfg(ifname);
  if (!Exists(path)) {
    LOG_ERROR_AT(Place("net_get_bridge_config"), "%s:%d Failed to access [%s].", path.c_str());
    return Fail(ZARNNETERR_OPEN, std::nullopt, Place("net_get_bridge_config"));
  }
  ZARNBRIDGEINFO info{};
  CopyText(ifname, info.szName);
  if (!KeyIs(path, keys::kType, "bridge")) {
    const bool port = ReadKeyInto(path, keys::kBridge, info.szRef);
    info.type = port ? ZARNBRIDGE_STANDALONE : ZARNBRIDGE_PORT;
    return info;
  }
  info.type = IsLocalLan(ifname) ? ZARNBRIDGE_LOCAL_LAN : ZARNBRIDGE_BRIDGE;
  if (!ReadKeyInto(path, keys::kPrimary, info.szRef)) {
    LOG_ERROR_AT(Place("net_get_bridge_config"), "%s:%d Failed to get key[%s] in file[%s].",
                 keys::kPrimary, path.c_str());
  }
  return info;
}

}  // namespace frame::facts
