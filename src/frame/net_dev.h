// The interfaces of /proc/net/dev that the appliance calls its own, in the order of every enumeration.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace frame {

inline constexpr int kMaxInterfaces = 32;

// Reads /proc/net/dev once: at most 32 names in natural order, without monitors, taps and the containers'
// interfaces. Nothing, with 0x0900 set, when the file cannot be opened.
std::optional<std::vector<std::string>> ListNetDev();

}  // namespace frame
