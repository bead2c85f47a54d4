// SPDX-License-Identifier: Apache-2.0
// Are two relay settings the same?
#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"

using namespace frame;

int ZARNNetIsSamePPPoERelayConfig(const PPPOE_RELAY_CONF* a, const PPPOE_RELAY_CONF* b) {
  return Boundary(0, [&]() -> int {
    if (a == nullptr || b == nullptr) {
      LOG_ERROR("%s:%d Bad parameters");
      return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    }
    return a->enable == b->enable && FieldText(a->server) == FieldText(b->server) ? 1 : 0;
  });
}
