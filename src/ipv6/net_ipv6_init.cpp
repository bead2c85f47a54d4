// At start-up: the kernel listens to router advertisements where the interface files want it to,
// and not elsewhere.
#include <memory>
#include <optional>
#include <string>
#include <strings.h>
#include <vector>

#include <zarnnetsdk/iface.h>
#include <zarnnetsdk/ipv6.h>
#include <zarnnetsdk/virtual.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/facts/net_dev.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "ipv6/accept_ra.h"
#include "ipv6/config.h"

using namespace frame;

namespace {

struct FreeStatistics {
  void operator()(PKOPANETSTATLIST list) const { KOPANetStatFree(list); }
};

// An interface that is part of another one listens through that.
bool IsKept(const InetSocket& socket, const char* ifname) {
  const auto flags = socket.Flags(ifname);
  if (!flags || (*flags & IFF_LOOPBACK) != 0) return false;
  return ZARNNetIfIsBondingPassive(ifname) != 1 && KOPANetBridgeIfIsSlave(ifname) <= 0 &&
         KOPANetOVSIfIsSlave(ifname) <= 0;
}

std::optional<std::vector<std::string>> KeptInterfaces() {
  const std::unique_ptr<KOPANETSTATLIST, FreeStatistics> list(
      KOPANetStatInit(facts::kMaxInterfaces));
  if (!list || KOPANetStatGetAll(list.get()) < 0) return std::nullopt;
  const InetSocket socket;
  std::vector<std::string> names;
  for (int i = 0; i < list->nItem; ++i) {
    if (IsKept(socket, list->rgItem[i].name)) names.emplace_back(list->rgItem[i].name);
  }
  return names;
}

// Nothing when the file cannot be read.
std::optional<bool> WantsAdvertisements(const std::string& path) {
  const KeyValue accept = ReadKey(path, ipv6::kAcceptRaKey, 16);
  if (accept.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get key %s in %s", ipv6::kAcceptRaKey, path.c_str());
    return std::nullopt;
  }
  if (accept.Found()) return accept.text != "0";
  const KeyValue type = ReadKey(path, ipv6::kTypeKey, 16);
  if (type.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get key %s in %s", ipv6::kTypeKey, path.c_str());
    return std::nullopt;
  }
  return strcasecmp(type.text.c_str(), ipv6::kTypeTexts[ZARNNET_IPV6_STATIC]) != 0;
}

}  // namespace

int ZARNNetIpv6Init(void) {
  return Boundary(-1, [&]() -> int {
    const auto names = KeptInterfaces();
    if (!names) return Fail(ZARNNETERR_NO_MEMORY, -1);
    for (const std::string& ifname : *names) {
      const std::string path = paths::Ifcfg(ifname);
      if (!Exists(path)) continue;
      const auto accept = WantsAdvertisements(path);
      if (!accept) continue;
      if (!ipv6::WriteAcceptRa(ifname, *accept ? ipv6::kAcceptRa : ipv6::kIgnoreRa)) {
        LOG_ERROR("%s:%d Failed to set ipv6 accept_ra.");
        return -1;
      }
    }
    return 0;
  });
}
