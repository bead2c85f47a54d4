// Tells the appliance that a configured default gateway changes.
#include <zarnnetsdk/ipv4.h>

#include "frame/log.h"
#include "frame/plugin_event.h"
#include "frame/text.h"

using namespace frame;

int ZARNNetGatewayConfigChangeHook(int stage, const char* szType, const char* szIfname,
                                   const char* szOld, const char* szNew) try {
  for (const char* text : {szType, szIfname, szOld, szNew}) {
    if (text == nullptr) return FRAME_FAIL(kBadParameter, -1);
  }
  PluginEvent plugin;
  if (!plugin.Init("net", "net/gateway_config_change")) {
    LOG_ERROR("%s:%d KOPAPluginSDKInit failed");
    return -1;
  }
  if (!plugin.Set("TYPE", szType)) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, Type = %s", szType);
    return -1;
  }
  if (!plugin.Set("INTERFACE", szIfname)) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, Interface = %s", szIfname);
    return -1;
  }
  if (!plugin.Set("GATEWAY_OLD", szOld)) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, GatewayOld = %s", szOld);
    return -1;
  }
  if (!plugin.Set("GATEWAY_NEW", szNew)) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, GatewayNew = %s", szNew);
    return -1;
  }
  if (!plugin.Fire(stage)) {
    LOG_ERROR("%s:%d KOPAPluginAction failed");
    return -1;
  }
  return 0;
}
FRAME_NO_EXCEPTIONS(-1)
