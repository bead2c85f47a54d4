// SPDX-License-Identifier: Apache-2.0
// Tells the appliance that the host name has changed.
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/events.h"
#include "frame/os/plugin_event.h"
#include "ipv4/hooks.h"

using namespace frame;

bool ipv4::TellHostnameChange(const std::string& hostname) {
  PluginEvent plugin;
  if (!plugin.Init(events::kNet, events::kHostnameChange)) {
    LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
    return false;
  }
  if (!plugin.Set(events::kHostname, hostname.c_str())) {
    LOG_ERROR_PLAIN("KOPAPluginSetArg failed, hostname = %s", hostname.c_str());
    return false;
  }
  if (!plugin.Fire(ZARNNETSTAGE_AFTER)) {
    LOG_ERROR_PLAIN("KOPAPluginAction failed");
    return false;
  }
  return true;
}

int ZARNNetHostnameChangeHook(const char* szHostname) {
  return Boundary(-1, [&]() -> int {
    if (szHostname == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::TellHostnameChange(szHostname) ? 0 : -1;
  });
}
