// SPDX-License-Identifier: Apache-2.0
// Tells the appliance that the configured, or the active, DNS servers change.
#include <zarnnetsdk/ipv4.h>
#include <zarnnetsdk/net_int.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/model/events.h"
#include "frame/os/plugin_event.h"

using namespace frame;

namespace {

bool SetServers(PluginEvent* plugin, const KOPACSZLIST* servers) {
  if (!plugin->Set(events::kServerCount, Format("%d", servers->nItem).c_str())) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, dns_number = %d", servers->nItem);
    return false;
  }
  for (int i = 1; i <= servers->nItem; ++i) {
    const char* const server = KOPACSzListGet(servers, i - 1);
    if (plugin->Set(Format(events::kServerFormat, i).c_str(), server)) continue;
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, dns[%d] = %s", i, server != nullptr ? server : "");
    return false;
  }
  return true;
}

bool Fire(PluginEvent* plugin, int stage) {
  if (plugin->Fire(stage)) return true;
  LOG_ERROR("%s:%d KOPAPluginAction failed");
  return false;
}

}  // namespace

bool ipv4::TellDnsConfigChange(int stage, const char* ifname, const KOPACSZLIST* servers) {
  PluginEvent plugin;
  if (!plugin.Init(events::kNet, events::kDnsConfigChange)) {
    LOG_ERROR("%s:%d KOPAPluginSDKInit failed");
    return false;
  }
  if (!plugin.Set(events::kInterface, ifname)) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, interface = %s", ifname);
    return false;
  }
  return SetServers(&plugin, servers) && Fire(&plugin, stage);
}

bool ipv4::TellDnsChange(int stage, const KOPACSZLIST* servers) {
  PluginEvent plugin;
  if (!plugin.Init(events::kNet, events::kDnsChange)) {
    LOG_ERROR("%s:%d KOPAPluginSDKInit failed");
    return false;
  }
  return SetServers(&plugin, servers) && Fire(&plugin, stage);
}

int ZARNNetDnsConfigChangeHook(int stage, const char* szIfname, const KOPACSZLIST* pServers) {
  return Boundary(-1, [&]() -> int {
    if (szIfname == nullptr || pServers == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::TellDnsConfigChange(stage, szIfname, pServers) ? 0 : -1;
  });
}

int ZARNNetDNSChangeHook(int stage, const KOPACSZLIST* pServers) {
  return Boundary(-1, [&]() -> int {
    if (pServers == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    return ipv4::TellDnsChange(stage, pServers) ? 0 : -1;
  });
}
