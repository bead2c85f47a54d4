// Hanging up, when the interface that the PPPoE client dials on is to be used otherwise.
#include <zarnnetsdk/pppoe.h>

#include "frame/error.h"
#include "frame/text.h"

using namespace frame;

int KOPADisablePPPoEOnIf(const char* ifname) try {
  if (ifname == nullptr) return FRAME_FAIL(kBadParameter, -1);
  const int status = ZARNPPPoECheckStatus(1);
  if (status != 1) return status;
  PPPOE_CONF conf{};
  if (PPPoEConfigGet(&conf) < 0) return -1;
  if (FieldText(conf.eth) != ifname) return 0;
  return ZARNPPPoEService(0) < 0 ? -1 : 0;
}
FRAME_NO_EXCEPTIONS(-1)
