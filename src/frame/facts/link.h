// SPDX-License-Identifier: Apache-2.0
// The state of an interface: has it carrier, is it up?
#pragma once

#include <optional>
#include <string>

namespace frame::facts {

// Has the interface carrier? An Open vSwitch device has when what lies under it has; a bond when a
// slave has. Nothing when there is no answer, with 0x0900 (no socket), 0xBC00 (no such interface; a
// bond without slaves), 0x0D00, 0x8100 or what the bond's reading fails with; logged as
// net_if_is_link's.
std::optional<bool> HasLink(const std::string& ifname);

// Is the interface up? No, with 0xBC00, for one that there is not, and with 0x0900 or 0x0A00 where
// that cannot be read.
bool IsUp(const std::string& ifname);

}  // namespace frame::facts
