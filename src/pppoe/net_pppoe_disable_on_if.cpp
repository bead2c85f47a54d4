// Hanging up, when the interface that the PPPoE client dials on is to be used otherwise.
#include <zarnnetsdk/pppoe.h>

#include "frame/base/boundary.h"
#include "frame/base/error.h"
#include "frame/base/text.h"

using namespace frame;

int KOPADisablePPPoEOnIf(const char* ifname) {
  return Boundary(-1, [&]() -> int {
    if (ifname == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const int status = ZARNPPPoECheckStatus(1);
    if (status != 1) return status;
    PPPOE_CONF conf{};
    if (PPPoEConfigGet(&conf) < 0) return -1;
    if (FieldText(conf.eth) != ifname) return 0;
    return ZARNPPPoEService(0) < 0 ? -1 : 0;
  });
}
