// SPDX-License-Identifier: Apache-2.0
// Tells the appliance that an address of an interface is about to change.
#include <string>

#include <zarnnetsdk/ipv4.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/base/text.h"
#include "frame/facts/link.h"
#include "frame/model/events.h"
#include "frame/os/plugin_event.h"
#include "ipv4/hooks.h"

using namespace frame;

namespace {

using ipv4::Family;

// The numbers of the families in the C interface.
constexpr int kV4 = 0;
constexpr int kV6 = 1;

bool IsPrefixOfType(int type, unsigned prefix) {
  return (type == kV4 && prefix <= 32) || (type == kV6 && prefix <= 128);
}

}  // namespace

bool ipv4::TellAddressChange(Family family, const char* ifname, const char* former,
                             const char* wanted, unsigned prefix) {
  const char* const event = family == Family::kV6 ? events::kIpv6Change : events::kIpv4Change;
  const auto link = facts::HasLink(ifname);
  if (!link) {
    LOG_ERROR("%s:%d error on link detect");
    return false;
  }
  // Plugins of the IPv4 event expect -1: it never carried a prefix.
  const std::string prefixText = family == Family::kV6 ? std::to_string(prefix) : "-1";
  PluginEvent plugin;
  if (!plugin.Init(events::kNet, event)) {
    LOG_ERROR_PLAIN("KOPAPluginSDKInit failed");
    return false;
  }
  const bool set = plugin.Set(events::kIfname, ifname) &&
                   plugin.Set(events::kOriginAddress, former) &&
                   plugin.Set(events::kNewAddress, wanted) &&
                   plugin.Set(events::kPrefixLength, prefixText.c_str()) &&
                   plugin.Set(events::kIsLink, *link ? "true" : "false");
  if (!set) {
    LOG_ERROR("%s:%d KOPAPluginSetArg failed, event = %s", event);
    return false;
  }
  if (!plugin.Fire(ZARNNETSTAGE_BEFORE)) {
    LOG_ERROR("%s:%d KOPAPluginAction failed, event = %s", event);
    return false;
  }
  return true;
}

int ZARNNetIPChangePreHook(int type, const char* szIfname, const char* szOld, const char* szNew,
                           unsigned int prefix) {
  return Boundary(-1, [&]() -> int {
    if (!IsPrefixOfType(type, prefix)) return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    if (IsEmpty(szIfname)) {
      LOG_ERROR("%s:%d error on link detect");
      return Fail(ZARNNETERR_BAD_PARAMETER, -1);
    }
    const Family family = type == kV6 ? Family::kV6 : Family::kV4;
    return ipv4::TellAddressChange(family, szIfname, szOld, szNew, prefix) ? 0 : -1;
  });
}
