// SPDX-License-Identifier: Apache-2.0
// Tells the services in one event which kinds of network change took place.
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/model/events.h"
#include "frame/os/lock.h"
#include "frame/os/plugin_event.h"

using namespace frame;

namespace {

bool FireStage(PluginEvent* plugin, int stage, int daemonAction, unsigned flags) {
  const auto bit = [flags](unsigned number) { return static_cast<int>((flags >> number) & 1U); };
  return plugin->IsUsable() && plugin->Set(events::kServiceIpChange, bit(0)) &&
         plugin->Set(events::kServiceHostnameChange, bit(1)) &&
         plugin->Set(events::kServiceMtuChange, bit(2)) &&
         plugin->Set(events::kServiceDaemonAction, daemonAction) &&
         plugin->Set(events::kResult, 0) && plugin->Fire(stage);
}

}  // namespace

int KOPAServicePlugin(int daemonAction, unsigned int flags) {
  return Boundary(-1, [&]() -> int {
    const Lock lock(kServicePlugin);
    if (!lock.Held()) {
      LOG_ERROR("%s:%d Lock failed");
      return Fail(ZARNNETERR_LOCK, -1);
    }
    PluginEvent plugin;
    if (!plugin.Init(events::kService, events::kServiceChange)) {
      const InnerError inner;
      LOG_ERROR("%s:%d Fail to do plugin init[0x%04X %s:%d]", inner.code, inner.file, inner.line);
      return -1;
    }
    if (!FireStage(&plugin, ZARNNETSTAGE_BEFORE, daemonAction, flags)) {
      LOG_ERROR("%s:%d Fail to execute service plugin (PRE)");
    }
    if (!FireStage(&plugin, ZARNNETSTAGE_AFTER, daemonAction, flags)) {
      LOG_ERROR("%s:%d Fail to execute service plugin (POST)");
    }
    return 0;
  });
}

int KOPAServiceStopBeforeIPChange(void) {
  return Boundary(-1, [&]() -> int { return KOPAServicectlJobStop("pppoerelay") < 0 ? -1 : 0; });
}
