// The ports of a bridge.
#include <zarnnetsdk/virtual.h>

#include "frame/log.h"
#include "frame/paths.h"
#include "frame/text.h"

using namespace frame;

int KOPANetBridgeSlaveEnum(const char* szBridge, PKOPACSZLIST* ppList) try {
  constexpr int kNameSize = 64;
  if (IsUnfitName(szBridge) || ppList == nullptr || *ppList == nullptr) {
    LOG_ERROR("%s:%d Bad Parameter.");
    return FRAME_FAIL(kBadParameter, -1);
  }
  if (KOPANetBridgeIfIsMaster(szBridge) <= 0) {
    LOG_ERROR("%s:%d [%s] is not bridge master.", szBridge);
    return -1;
  }
  return KOPACFileEnumDir(paths::SysNet(szBridge, "/brif/").c_str(), nullptr, ppList, kNameSize);
}
FRAME_NO_EXCEPTIONS(-1)
