// SPDX-License-Identifier: Apache-2.0
// Tells the appliance that a configured default gateway changes.
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/events.h"
#include "frame/os/plugin_event.h"

using namespace frame;

int ZARNNetGatewayConfigChangeHook(int stage, const char* szType, const char* szIfname,
                                   const char* szOld, const char* szNew) {
  return Boundary(-1, [&]() -> int {
    for (const char* text : {szType, szIfname, szOld, szNew}) {
      if (text == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    PluginEvent plugin;
    if (!plugin.Init(events::kNet, events::kGatewayConfigChange)) {
      LOG_ERROR("%s:%d KOPAPluginSDKInit failed");
      return -1;
    }
    if (!plugin.Set(events::kGatewayType, szType)) {
      LOG_ERROR("%s:%d KOPAPluginSetArg failed, Type = %s", szType);
      return -1;
    }
    if (!plugin.Set(events::kInterface, szIfname)) {
      LOG_ERROR("%s:%d KOPAPluginSetArg failed, Interface = %s", szIfname);
      return -1;
    }
    if (!plugin.Set(events::kGatewayOld, szOld)) {
      LOG_ERROR("%s:%d KOPAPluginSetArg failed, GatewayOld = %s", szOld);
      return -1;
    }
    if (!plugin.Set(events::kGatewayNew, szNew)) {
      LOG_ERROR("%s:%d KOPAPluginSetArg failed, GatewayNew = %s", szNew);
      return -1;
    }
    if (!plugin.Fire(stage)) {
      LOG_ERROR("%s:%d KOPAPluginAction failed");
      return -1;
    }
    return 0;
  });
}
