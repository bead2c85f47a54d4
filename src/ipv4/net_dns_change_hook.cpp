// Tells the appliance that the configured, or the active, DNS servers change.
#include <zarnnetsdk/ipv4.h>

#include "frame/log.h"
#include "frame/plugin_event.h"
#include "frame/text.h"

using namespace frame;

namespace {

bool SetServers(PluginEvent* plugin, const KOPACSZLIST* servers) {
  if (!plugin->Set("NITEMS", Format("%d", servers->nItem).c_str())) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, dns_number = %d", servers->nItem);
    return false;
  }
  for (int i = 1; i <= servers->nItem; ++i) {
    const char* const server = KOPACSzListGet(servers, i - 1);
    if (plugin->Set(Format("DNS_%d", i).c_str(), server)) continue;
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

int ZARNNetDnsConfigChangeHook(int stage, const char* szIfname, const KOPACSZLIST* pServers) try {
  if (szIfname == nullptr || pServers == nullptr) return FRAME_FAIL(kBadParameter, -1);
  PluginEvent plugin;
  if (!plugin.Init("net", "net/dns_config_change")) {
    LOG_ERROR("%s:%d KOPAPluginSDKInit failed");
    return -1;
  }
  if (!plugin.Set("INTERFACE", szIfname)) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, interface = %s", szIfname);
    return -1;
  }
  return SetServers(&plugin, pServers) && Fire(&plugin, stage) ? 0 : -1;
}
FRAME_NO_EXCEPTIONS(-1)

int ZARNNetDNSChangeHook(int stage, const KOPACSZLIST* pServers) try {
  if (pServers == nullptr) return FRAME_FAIL(kBadParameter, -1);
  PluginEvent plugin;
  if (!plugin.Init("net", "net/dns_change")) {
    LOG_ERROR("%s:%d KOPAPluginSDKInit failed");
    return -1;
  }
  return SetServers(&plugin, pServers) && Fire(&plugin, stage) ? 0 : -1;
}
FRAME_NO_EXCEPTIONS(-1)
