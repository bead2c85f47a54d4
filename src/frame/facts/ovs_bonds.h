// The table of Open vSwitch bonds: one line a bond, its name first and its members after it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace frame {

// Is the interface a member of some Open vSwitch bond? Also no when there is no table; nothing when
// the table cannot be opened.
std::optional<bool> IsOvsBondMember(std::string_view ifname);

// The Open vSwitch bond that an interface is a member of; empty for none and for no table, nothing
// when the table cannot be opened.
std::optional<std::string> OvsBondOf(std::string_view ifname);

}  // namespace frame
