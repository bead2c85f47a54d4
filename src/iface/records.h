// SPDX-License-Identifier: Apache-2.0
// What several functions read of one interface.
#pragma once

#include <optional>
#include <string>

#include <zarnnetsdk/iface.h>

// Not "iface", as the folder: <net/if.h> declares a struct of that name.
namespace interfaces {

// As the kernel has it, up or down. Nothing, with 0x0D00, 0x0900 (no socket) or 0xBC00, where it
// has none.
std::optional<KOPANetIfInfo> ReadKernelRecord(const std::string& ifname);

// Fills in the boot protocol, and the configured address and mask, as ZARNNetIFGetIPConfig() does;
// logged as net_if_config's.
bool ReadIpConfig(const std::string& ifname, ZARNNETIFADDR* config);

}  // namespace interfaces
