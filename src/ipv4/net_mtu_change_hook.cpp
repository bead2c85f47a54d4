// Tells the appliance that the MTU of an interface changes.
#include <zarnnetsdk/ipv4.h>

#include "frame/log.h"
#include "frame/plugin_event.h"

using namespace frame;

int ZARNNetMTUChangeHook(const char* szIfname, const char* szMTU, int stage) try {
  if (szIfname == nullptr || szMTU == nullptr) return FRAME_FAIL(kBadParameter, -1);
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
}
FRAME_NO_EXCEPTIONS(-1)
