// The state of an interface: has it carrier, is it up?
#pragma once

#include <optional>
#include <string>

namespace frame::facts {

// Has the interface carrier? An Open vSwitch device has when what lies under it has; a bond when a
// slave has. Nothing when the kernel has no answer; logged as net_if_is_link's.
std::optional<bool> HasLink(const std::string& ifname);

// Is the interface up? No for one that there is not.
bool IsUp(const std::string& ifname);

}  // namespace frame::facts
