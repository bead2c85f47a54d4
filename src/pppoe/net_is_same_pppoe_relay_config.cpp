// Are two relay settings the same?
#include <zarnnetsdk/pppoe.h>

#include "frame/log.h"
#include "frame/text.h"

using namespace frame;

int ZARNNetIsSamePPPoERelayConfig(const PPPOE_RELAY_CONF* a, const PPPOE_RELAY_CONF* b) try {
  if (a == nullptr || b == nullptr) {
    LOG_ERROR("%s:%d Bad parameters");
    return FRAME_FAIL(kBadParameter, 0);
  }
  return a->enable == b->enable && FieldText(a->server) == FieldText(b->server) ? 1 : 0;
}
FRAME_NO_EXCEPTIONS(0)
