// Which name servers count: those that the administrator fixed, or those that the interfaces learn.
#include <string_view>

#include <zarnnetsdk/dns_route.h>

#include "frame/log.h"

using namespace frame;

int ZARNNetDNSModeSet(const char* szMode) try {
  if (szMode == nullptr) return FRAME_INVALID_ARGUMENT("((void *)0) != szMode", -1);
  const std::string_view mode(szMode);
  if (mode != "static" && mode != "auto") return FRAME_FAIL(kBadParameter, -1);
  if (KOPACINFOSetKeyValue("dns_mode", szMode) < 0) return -1;
  return ZARNNetDNSUpdate() < 0 ? -1 : 0;
}
FRAME_NO_EXCEPTIONS(-1)
