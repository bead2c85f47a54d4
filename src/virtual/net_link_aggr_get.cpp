// SPDX-License-Identifier: Apache-2.0
// One bond with its mode and slaves.
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/text.h"
#include "frame/facts/bonds.h"

using namespace frame;

int ZARNNetLinkAggrGet(const char* szBond, ZARNLINKAGGROPT* pOpt) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szBond) || pOpt == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return static_cast<int>(facts::ReadBond(szBond, pOpt));
  });
}

int ZARNNetLinkAggrOptSlsaveAdd(ZARNLINKAGGROPT* pOpt, const char* szSlave) {
  return Boundary(-1, [&]() -> int {
    if (pOpt == nullptr || IsEmpty(szSlave) || pOpt->cSlave < 0) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    return facts::AddSlave(szSlave, pOpt) ? 0 : -1;
  });
}
