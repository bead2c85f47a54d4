// SPDX-License-Identifier: Apache-2.0
// The broadcast and the network address of a subnet, as the system's ipcalc works them out.
#pragma once

#include <cstddef>
#include <optional>
#include <string>

namespace frame::facts {

struct IpcalcAnswer {
  bool hasLine;  // it printed something
  std::optional<std::string> address;
};

// The address comes with a prefix or a mask, as ipcalc takes it; of the line that it prints size -
// 1 characters are read. An answer without an address has set 0x2A00, and is logged as
// net_cal_broadcast's.
IpcalcAnswer BroadcastOf(const std::string& address, std::size_t size = 1024);
IpcalcAnswer NetworkOf(const std::string& address, std::size_t size = 1024);

}  // namespace frame::facts
