// SPDX-License-Identifier: Apache-2.0
// Has an interface carrier?
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/text.h"
#include "frame/facts/link.h"

using namespace frame;

int ZARNNetIfIsLink(const char* szIfname) {
  return Boundary(-1, [&]() -> int {
    if (IsEmpty(szIfname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto carrier = facts::HasLink(szIfname);
    if (!carrier) return -1;
    return *carrier ? 1 : 0;
  });
}
