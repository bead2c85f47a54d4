// SPDX-License-Identifier: Apache-2.0
// The bonding modes and their names.
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/model/bond_modes.h"

using namespace frame;

uint32_t ZARNNetLinkAggrStringToMode(const char* szMode) {
  return Boundary(0, [&]() -> uint32_t {
    if (szMode == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, ZARNBOND_NONE);
    return model::BondModeOf(szMode);
  });
}

const char* ZARNNetLinkAggrModeToString(uint32_t mode) {
  return Boundary("unknown", [&]() -> const char* { return model::BondModeName(mode); });
}
