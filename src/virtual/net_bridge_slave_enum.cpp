// SPDX-License-Identifier: Apache-2.0
// The ports of a bridge.
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bridges.h"
#include "frame/model/paths.h"
#include "frame/os/containers.h"
#include "frame/os/folder.h"

using namespace frame;

int KOPANetBridgeSlaveEnum(const char* szBridge, PKOPACSZLIST* ppList) {
  return Boundary(-1, [&]() -> int {
    if (IsUnfitName(szBridge) || ppList == nullptr || *ppList == nullptr) {
      LOG_ERROR("%s:%d Bad Parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (!facts::IsBridge(szBridge)) {
      LOG_ERROR("%s:%d [%s] is not bridge master.", szBridge);
      return Fail(ZARNNETERR_NOT_FOUND, -1);
    }
    const auto ports = EntriesOf(paths::SysNet(szBridge, "/brif/"));
    if (!ports) return -1;
    if (!PushTexts(*ports, ppList)) return Fail(ZARNNETERR_NO_MEMORY, -1);
    return static_cast<int>(ports->size());
  });
}
