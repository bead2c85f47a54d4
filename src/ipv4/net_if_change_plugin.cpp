// The arguments of the event that one interface takes another's place.
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"

using namespace frame;

int KOPANetIFChgPluginSetArgs(PKOPAPLUGIN pPlugin, const KOPACSZLIST* pOldNames,
                              const KOPACSZLIST* pNewNames, int result) {
  return Boundary(-1, [&]() -> int {
    if (pPlugin == nullptr || pOldNames == nullptr || pNewNames == nullptr) {
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const bool set = KOPAPluginSetArgByArray(pPlugin, "ORIGIN_IFNAME", pOldNames) >= 0 &&
                     KOPAPluginSetArgByArray(pPlugin, "IFNAME", pNewNames) >= 0 &&
                     KOPAPluginSetArgByInt(pPlugin, "RESULT", result) >= 0;
    return set ? 0 : -1;
  });
}
