// What carries the traffic of an Open vSwitch device: the ports of a bond, or the one port under a
// device.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace ipv4 {

enum class OvsKind { kNone = 0, kPort = 1, kBond = 2 };

OvsKind OvsKindOf(const char* ifname);

// Each answers nothing when the device's record cannot be read; the caller logs it.
std::optional<std::vector<std::string>> BondMembers(const char* bond);
std::optional<std::string> UnderlyingPort(const char* ifname);

}  // namespace ipv4
