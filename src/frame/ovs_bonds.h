// The table of Open vSwitch bonds: one line a bond, its name first and its members after it.
#pragma once

#include <optional>
#include <string_view>

namespace frame {

// Is the interface a member of some Open vSwitch bond? Also no when there is no table; nothing when
// the table cannot be opened.
std::optional<bool> IsOvsBondMember(std::string_view ifname);

}  // namespace frame
