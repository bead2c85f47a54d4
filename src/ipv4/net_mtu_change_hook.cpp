// Tells the appliance that the MTU of an interface changes.
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/os/plugin_event.h"

using namespace frame;

int ZARNNetMTUChangeHook(const char* szIfname, const char* szMTU, int stage) {
  return Boundary(-1, [&]() -> int {
    if (szIfname == nullptr || szMTU == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    PluginEvent plugin;
    if (!plugin.Init("net", "net/mtu_change")) {
      LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
      return -1;
    }
    if (!plugin.Set("IFACE", szIfname) || !plugin.Set("MTU_VALUE", szMTU)) {
      LOG_ERROR_PLAIN("KOPAPluginSetArg failed, device = %s, MTU value = %s", szIfname, szMTU);
      return -1;
    }
    if (!plugin.Fire(stage)) {
      LOG_ERROR_PLAIN("KOPAPluginAction failed");
      return -1;
    }
    return 0;
  });
}
