// Tells the appliance that the link of an interface came up or went down.
#include <zarnnetsdk/iface.h>

#include "frame/log.h"
#include "frame/plugin_event.h"
#include "frame/text.h"

using namespace frame;

namespace {

int Fire(const char* event, const char* ifname) {
  if (IsUnfitName(ifname)) return FRAME_FAIL(kBadParameter, -1);
  PluginEvent plugin;
  if (!plugin.Init("net", event)) {
    LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
    return -1;
  }
  if (!plugin.Set("INTERFACE", ifname)) {
    LOG_ERROR_PLAIN("KOPAPluginSetArg failed, interface = %s", ifname);
    return -1;
  }
  if (!plugin.Fire(kStageAfter)) {
    LOG_ERROR_PLAIN("KOPAPluginAction failed");
    return -1;
  }
  return 0;
}

}  // namespace

int KOPANetIfLinkUpEvent(const char* szIfname) try { return Fire("net/if_link_up", szIfname); }
FRAME_NO_EXCEPTIONS(-1)

int KOPANetIfLinkDownEvent(const char* szIfname) try { return Fire("net/if_link_down", szIfname); }
FRAME_NO_EXCEPTIONS(-1)
