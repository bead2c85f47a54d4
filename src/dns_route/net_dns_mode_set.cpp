// SPDX-License-Identifier: Apache-2.0
// Which name servers count: those that the administrator fixed, or those that the interfaces learn.
#include <string_view>

#include <zarnnetsdk/dns_route.h>

#include "dns_route/resolver.h"
#include "frame/base/boundary.h"
#include "frame/base/log.h"

using namespace frame;

bool dns_route::SetMode(const char* mode) {
  return KOPACINFOSetKeyValue(kModeKey, mode) >= 0 && UpdateResolver();
}

int ZARNNetDNSModeSet(const char* szMode) {
  return Boundary(-1, [&]() -> int {
    if (szMode == nullptr) return InvalidArgument("((void *)0) != szMode", -1);
    const std::string_view mode(szMode);
    if (mode != dns_route::kStaticMode && mode != dns_route::kAutoMode)
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return dns_route::SetMode(szMode) ? 0 : -1;
  });
}
