// Tells the appliance that the host name has changed.
#include <zarnnetsdk/ipv4.h>

#include "frame/log.h"
#include "frame/plugin_event.h"

using namespace frame;

int ZARNNetHostnameChangeHook(const char* szHostname) try {
  if (szHostname == nullptr) return FRAME_FAIL(kBadParameter, -1);
  PluginEvent plugin;
  if (!plugin.Init("net", "net/hostname_change")) {
    LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
    return -1;
  }
  if (!plugin.Set("HOSTNAME", szHostname)) {
    LOG_ERROR_PLAIN("KOPAPluginSetArg failed, hostname = %s", szHostname);
    return -1;
  }
  if (!plugin.Fire(kStageAfter)) {
    LOG_ERROR_PLAIN("KOPAPluginAction failed");
    return -1;
  }
  return 0;
}
FRAME_NO_EXCEPTIONS(-1)
