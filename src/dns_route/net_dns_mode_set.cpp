// Which name servers count: those that the administrator fixed, or those that the interfaces learn.
#include <string_view>

#include <zarnnetsdk/dns_route.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"

using namespace frame;

int ZARNNetDNSModeSet(const char* szMode) {
  return Boundary(-1, [&]() -> int {
    if (szMode == nullptr) return InvalidArgument("((void *)0) != szMode", -1);
    const std::string_view mode(szMode);
    if (mode != "static" && mode != "auto") return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (KOPACINFOSetKeyValue("dns_mode", szMode) < 0) return -1;
    return ZARNNetDNSUpdate() < 0 ? -1 : 0;
  });
}
