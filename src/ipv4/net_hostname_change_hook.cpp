// Tells the appliance that the host name has changed.
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/os/plugin_event.h"

using namespace frame;

int ZARNNetHostnameChangeHook(const char* szHostname) {
  return Boundary(-1, [&]() -> int {
    if (szHostname == nullptr) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
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
  });
}
