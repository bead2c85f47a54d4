// SPDX-License-Identifier: Apache-2.0
// Tells the appliance that the MTU of an interface changes.
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/events.h"
#include "frame/os/plugin_event.h"
#include "ipv4/hooks.h"

using namespace frame;

bool ipv4::TellMtuChange(int stage, const std::string& ifname, const std::string& mtu) {
  PluginEvent plugin;
  if (!plugin.Init(events::kNet, events::kMtuChange)) {
    LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
    return false;
  }
  if (!plugin.Set(events::kMtuInterface, ifname.c_str()) ||
      !plugin.Set(events::kMtuValue, mtu.c_str())) {
    LOG_ERROR_PLAIN("KOPAPluginSetArg failed, device = %s, MTU value = %s", ifname.c_str(),
                    mtu.c_str());
    return false;
  }
  if (!plugin.Fire(stage)) {
    LOG_ERROR_PLAIN("KOPAPluginAction failed");
    return false;
  }
  return true;
}

int ZARNNetMTUChangeHook(const char* szIfname, const char* szMTU, int stage) {
  return Boundary(-1, [&]() -> int {
    if (szIfname == nullptr || szMTU == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::TellMtuChange(stage, szIfname, szMTU) ? 0 : -1;
  });
}
