// Does an interface's file give it a certain part in a bridge?
#include <zarnnetsdk/virtual.h>

#include "frame/log.h"
#include "frame/text.h"

using namespace frame;

int ZARNNetIsIfBridgeType(const char* szIfname, uint32_t role) {
  if (IsEmpty(szIfname)) {
    LOG_ERROR("%s:%d Bad parameter");
    return FRAME_FAIL(kBadParameter, 0);
  }
  ZARNBRIDGEINFO info{};
  if (ZARNNetGetBridgeConfig(szIfname, nullptr, &info) < 0) {
    // The wrong subject, but the text by which this failure is known.
    LOG_ERROR("%s:%d Failed to get PPPoE relay config");
    return 0;
  }
  return info.type == role ? 1 : 0;
}
