// SPDX-License-Identifier: Apache-2.0
// IPv4 netmasks: which texts are one, and how many bits they cover.
#include <algorithm>
#include <cstring>
#include <string_view>

#include <zarnnetsdk/addr.h>

#include "frame/base/address.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"

using namespace frame;

int cKOPAICalMask(const unsigned int rgPart[4]) {
  return Boundary(0, [&]() -> int {
    if (rgPart == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const auto prefix = PrefixOf({rgPart[0], rgPart[1], rgPart[2], rgPart[3]});
    return static_cast<int>(prefix.value_or(0));
  });
}

int BlKOPAIsIpMask(char* szMask) {
  return Boundary(0, [&]() -> int {
    if (szMask == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, 0);
    const auto mask = ParseMask(std::string_view(szMask).substr(0, kDottedJudged));
    if (!mask) return 0;
    // No part is shorter than its decimal form, so the text has room for it.
    CopyText(DottedText(*mask), szMask, std::strlen(szMask) + 1);
    return 1;
  });
}

int BlKOPAIsValidIpMask(const char* szMask) {
  return Boundary(0, [&]() -> int {
    if (szMask == nullptr) return InvalidArgument("NULL != szMask", 0);
    return ParseMask(szMask) ? 1 : 0;
  });
}

int ZARNNetNetmaskToPrefix(const char* szMask) {
  return Boundary(-1, [&]() -> int {
    if (szMask == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const auto bits = OneBitsOf(szMask);
    return bits ? static_cast<int>(*bits) : -1;
  });
}
