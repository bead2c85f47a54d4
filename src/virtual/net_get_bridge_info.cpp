// SPDX-License-Identifier: Apache-2.0
// Bridges as the kernel has them: what is one, what is a port of one, and the part an interface
// plays.
#include <algorithm>
#include <iterator>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bridges.h"
#include "frame/facts/link.h"
#include "frame/facts/net_dev.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/key_file.h"

using namespace frame;

namespace {

// Whom the interface belongs with: a bridge's primary port, a port's bridge.
void ReadReference(const char* ifname, ZARNBRIDGEINFO* info) {
  if (info->type == ZARNBRIDGE_STANDALONE) return;
  const char* const key = info->type == ZARNBRIDGE_PORT ? keys::kBridge : keys::kPrimary;
  const std::string path = paths::Ifcfg(ifname);
  if (!ReadKeyInto(path, key, info->szRef)) {
    LOG_ERROR("%s:%d Failed to get key[%s] in file[%s].", key, path.c_str());
  }
}

bool IsWanted(const std::string& ifname, uint32_t role) {
  return ifname.find("gbr") == std::string::npos && facts::BridgeRoleOf(ifname) == role;
}

}  // namespace

int KOPANetBridgeIfIsMaster(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return facts::IsBridge(szIfname) ? 1 : 0;
  });
}

int KOPANetBridgeIfIsSlave(const char* szIfname) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    return facts::IsBridgePort(szIfname) ? 1 : 0;
  });
}

int KOPANetEnumBridge(PKOPACSZLIST* ppList, uint32_t role) {
  return Boundary(-1, [&]() -> int {
    const auto names = facts::ListNetDev();
    if (!names) return Fail(ZARNNETERR_NO_MEMORY, -1);
    if (role != ZARNBRIDGE_BRIDGE && role != ZARNBRIDGE_LOCAL_LAN) return 0;
    int count = 0;
    for (const std::string& ifname : *names) {
      if (!IsWanted(ifname, role)) continue;
      if (ppList != nullptr && KOPACSzListPush(ppList, ifname.c_str()) < 0) {
        return Fail(ZARNNETERR_NO_MEMORY, -1);
      }
      ++count;
    }
    return count;
  });
}

int KOPANETGetBridgeInfo(const char* szIfname, ZARNBRIDGEINFO* pInfo) {
  return Boundary(0, [&]() -> int {
    if (IsUnfitName(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    if (!facts::IsUp(szIfname)) return 0;
    const uint32_t role = facts::BridgeRoleOf(szIfname);
    if (pInfo != nullptr) {
      *pInfo = ZARNBRIDGEINFO{};
      pInfo->type = role;
      CopyText(szIfname, pInfo->szName);
      ReadReference(szIfname, pInfo);
    }
    return static_cast<int>(role);
  });
}

int KOPANETGetBridgeInfoByTopology(const char* szIfname, ZARNBRIDGEINFO* pInfo, uint32_t kind) {
  return Boundary(0, [&]() -> int {
    if (szIfname == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    if (kind < 1 || kind >= std::size(grgTopologyIFInfo)) return 0;
    for (const ZARNBRIDGEINFO& entry : grgTopologyIFInfo[kind]) {
      const std::string_view name = FieldText(entry.szName);
      if (name.empty()) return 0;
      if (name != szIfname) continue;
      if (pInfo != nullptr) *pInfo = entry;
      return static_cast<int>(entry.type);
    }
    return 0;
  });
}
