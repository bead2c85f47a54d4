// Tells the appliance that an address of an interface is about to change.
#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/os/plugin_event.h"

using namespace frame;

namespace {

constexpr int kV4 = 0;
constexpr int kV6 = 1;

bool IsPrefixOfType(int type, unsigned prefix) {
  return (type == kV4 && prefix <= 32) || (type == kV6 && prefix <= 128);
}

}  // namespace

int ZARNNetIPChangePreHook(int type, const char* szIfname, const char* szOld, const char* szNew,
                           unsigned int prefix) {
  return Boundary(-1, [&]() -> int {
    if (!IsPrefixOfType(type, prefix)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    const char* const event = type == kV6 ? "net/ipv6_change" : "net/ipv4_change";
    const int link = ZARNNetIfIsLink(szIfname);
    if (link < 0) {
      LOG_ERROR("%s:%d error on link detect");
      return -1;
    }
    // Plugins of the IPv4 event expect -1: it never carried a prefix.
    const std::string prefixText = type == kV6 ? Format("%d", static_cast<int>(prefix)) : "-1";
    PluginEvent plugin;
    if (!plugin.Init("net", event)) {
      LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
      return -1;
    }
    const bool fired =
        plugin.Set("IFNAME", szIfname) && plugin.Set("ORIGIN_ADDRESS", szOld) &&
        plugin.Set("NEW_ADDRESS", szNew) && plugin.Set("PREFIX_LENGTH", prefixText.c_str()) &&
        plugin.Set("IS_LINK", link != 0 ? "true" : "false") && plugin.Fire(kStageBefore);
    return fired ? 0 : -1;
  });
}
