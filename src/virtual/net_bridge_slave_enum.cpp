// The ports of a bridge.
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/paths.h"

using namespace frame;

int KOPANetBridgeSlaveEnum(const char* szBridge, PKOPACSZLIST* ppList) {
  return Boundary(-1, [&]() -> int {
    constexpr int kNameSize = 64;
    if (IsUnfitName(szBridge) || ppList == nullptr || *ppList == nullptr) {
      LOG_ERROR("%s:%d Bad Parameter.");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    if (KOPANetBridgeIfIsMaster(szBridge) <= 0) {
      LOG_ERROR("%s:%d [%s] is not bridge master.", szBridge);
      return -1;
    }
    return KOPACFileEnumDir(paths::SysNet(szBridge, "/brif/").c_str(), nullptr, ppList, kNameSize);
  });
}
