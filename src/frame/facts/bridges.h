// SPDX-License-Identifier: Apache-2.0
// The part of interfaces in bridges, as the kernel has it and as the files say.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include <zarnnetsdk/virtual.h>

#include "frame/os/kernel.h"

namespace frame::facts {

bool IsBridge(const std::string& ifname);
bool IsBridgePort(const std::string& ifname);

// The same question for one interface after another.
class BridgePorts {
 public:
  explicit BridgePorts(const InetSocket& socket);
  [[nodiscard]] bool Has(const std::string& ifname) const;

 private:
  Descriptor folder_;
  bool none_;
};

// Does the interface's file say that it leads to the local LAN?
bool IsLocalLan(const std::string& ifname);

// A ZARNBRIDGE_..., as the kernel has it.
std::uint32_t BridgeRoleOf(const std::string& ifname);

// The part that the interface's file gives it. An interface without TYPE=bridge is ZARNBRIDGE_PORT
// without a BRIDGE key and ZARNBRIDGE_STANDALONE with one: the reverse of what the kernel-based
// query and the writer mean by these two; callers compare so. Nothing, with 0x0900, without the
// file; logged as net_get_bridge_config's.
std::optional<ZARNBRIDGEINFO> ConfiguredBridgeRole(const std::string& ifname);

}  // namespace frame::facts
