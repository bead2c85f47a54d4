// SPDX-License-Identifier: Apache-2.0
// At start-up: the kernel listens to router advertisements where the interface files want it to,
// and not elsewhere.
#include <optional>
#include <string>
#include <vector>

#include <zarnnetsdk/ipv6.h>

#include "frame/base/boundary.h"
#include "frame/base/log.h"
#include "frame/facts/bridges.h"
#include "frame/facts/net_dev.h"
#include "frame/facts/ovs.h"
#include "frame/facts/record.h"
#include "frame/model/ifcfg.h"
#include "frame/model/paths.h"
#include "frame/os/file.h"
#include "frame/os/kernel.h"
#include "frame/os/key_file.h"
#include "ipv6/accept_ra.h"
#include "ipv6/config.h"

using namespace frame;

namespace {

// An interface that is part of another one listens through that.
bool IsKept(const InetSocket& socket, const std::string& ifname) {
  const auto flags = socket.Flags(ifname);
  if (!flags || (*flags & IFF_LOOPBACK) != 0) return false;
  return !facts::IsBondingPassive(ifname, *flags) && !facts::IsBridgePort(ifname) &&
         !facts::IsOvsPort(ifname);
}

std::optional<std::vector<std::string>> KeptInterfaces() {
  auto names = facts::ListNetDev();
  if (!names) return std::nullopt;
  const InetSocket socket;
  std::erase_if(*names, [&](const std::string& ifname) { return !IsKept(socket, ifname); });
  return names;
}

// Nothing when the file cannot be read.
std::optional<bool> WantsAdvertisements(const std::string& path) {
  const KeyValue accept = ReadKey(path, keys::kIpv6AcceptRa, 16);
  if (accept.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get key %s in %s", keys::kIpv6AcceptRa, path.c_str());
    return std::nullopt;
  }
  if (accept.Found()) return accept.text != "0";
  const KeyValue type = ReadKey(path, keys::kIpv6Type, 16);
  if (type.Unreadable()) {
    LOG_ERROR("%s:%d Failed to get key %s in %s", keys::kIpv6Type, path.c_str());
    return std::nullopt;
  }
  return ipv6::TypeOf(type.text) != ZARNNET_IPV6_STATIC;
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
