// SPDX-License-Identifier: Apache-2.0
// Does an interface's file give it a certain part in a bridge?
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/bridges.h"

using namespace frame;

int ZARNNetIsIfBridgeType(const char* szIfname, uint32_t role) {
  return Boundary(0, [&]() -> int {
    if (IsEmpty(szIfname)) {
      LOG_ERROR("%s:%d Bad parameter");
      return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    }
    const auto info = facts::ConfiguredBridgeRole(szIfname);
    if (!info) {
      // The wrong subject, but the text by which this failure is known.
      LOG_ERROR("%s:%d Failed to get PPPoE relay config");
      return 0;
    }
    return info->type == role ? 1 : 0;
  });
}
