// SPDX-License-Identifier: Apache-2.0
// Tells the appliance that the link of an interface came up or went down.
#include <zarnnetsdk/iface.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/events.h"
#include "frame/os/plugin_event.h"

using namespace frame;

namespace {

int Fire(const char* event, const char* ifname) {
  if (IsUnfitName(ifname)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
  PluginEvent plugin;
  if (!plugin.Init(events::kNet, event)) {
    LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
    return -1;
  }
  if (!plugin.Set(events::kInterface, ifname)) {
    LOG_ERROR_PLAIN("KOPAPluginSetArg failed, interface = %s", ifname);
    return -1;
  }
  if (!plugin.Fire(ZARNNETSTAGE_AFTER)) {
    LOG_ERROR_PLAIN("KOPAPluginAction failed");
    return -1;
  }
  return 0;
}

}  // namespace

int KOPANetIfLinkUpEvent(const char* szIfname) {
  return Boundary(-1, [&]() -> int { return Fire(events::kLinkUp, szIfname); });
}

int KOPANetIfLinkDownEvent(const char* szIfname) {
  return Boundary(-1, [&]() -> int { return Fire(events::kLinkDown, szIfname); });
}
