// SPDX-License-Identifier: Apache-2.0
// The MTU of an interface as a text, and the setting that holds it.
#pragma once

#include <algorithm>
#include <limits>
#include <string>
#include <string_view>

#include "frame/base/text.h"

namespace frame::model {

// An MTU is handed over as decimal digits.
inline bool IsMtuText(std::string_view text) {
  return !text.empty() && text.find_first_not_of("0123456789") == std::string_view::npos;
}

// The number of such a text. What no kernel counts that far is not wrapped to a smaller MTU.
inline int MtuNumber(std::string_view text) {
  constexpr long kMost = std::numeric_limits<int>::max();
  return static_cast<int>(std::min(ToNumber(text).value_or(kMost), kMost));
}

// Its key in the settings file. Readers of that file know keys of at most 20 characters.
inline std::string MtuKey(std::string_view ifname) {
  constexpr std::size_t kMaxName = 16;
  return std::string(ifname.substr(0, kMaxName)).append("_mtu");
}

}  // namespace frame::model
