// The bond question of an interface whose flags are known already.
#pragma once

#include <string>

namespace inventory {

// Is the interface a passive member of a bond of the kernel or of Open vSwitch?
bool IsBondingPassive(const std::string& ifname, short flags);

}  // namespace inventory
