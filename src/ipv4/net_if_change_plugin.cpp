// The arguments of the event that one interface takes another's place.
#include <zarnnetsdk/ipv4.h>

#include "frame/error.h"

int KOPANetIFChgPluginSetArgs(PKOPAPLUGIN pPlugin, const KOPACSZLIST* pOldNames,
                              const KOPACSZLIST* pNewNames, int result) try {
  if (pPlugin == nullptr || pOldNames == nullptr || pNewNames == nullptr) {
    return FRAME_FAIL(kBadParameter, -1);
  }
  const bool set = KOPAPluginSetArgByArray(pPlugin, "ORIGIN_IFNAME", pOldNames) >= 0 &&
                   KOPAPluginSetArgByArray(pPlugin, "IFNAME", pNewNames) >= 0 &&
                   KOPAPluginSetArgByInt(pPlugin, "RESULT", result) >= 0;
  return set ? 0 : -1;
}
FRAME_NO_EXCEPTIONS(-1)
