// SPDX-License-Identifier: Apache-2.0
// The modes of bonds: grgBondDesc has what the kernel and the interface files call them.
#pragma once

#include <cstdint>
#include <string_view>

#include <zarnnetsdk/virtual.h>

namespace frame::model {

inline constexpr std::uint32_t kLastKernelMode = ZARNBOND_BALANCE_RR;
inline constexpr std::uint32_t kLastMode = ZARNBOND_BALANCE_TCP;

// "unknown" for a number that is no mode.
const char* BondModeName(std::uint32_t mode);

// The mode whose name the text begins with: lines of the kernel go on with a number. ZARNBOND_NONE
// for none.
std::uint32_t BondModeOf(std::string_view text);

// The mode of the kernel's line "802.3ad 4"; ZARNBOND_NONE for one that bonds of this appliance
// never have.
std::uint32_t BondModeOfKernelLine(std::string_view line);

}  // namespace frame::model
