// SPDX-License-Identifier: Apache-2.0
// The configuration types as the interface files spell them.
#pragma once

#include <optional>
#include <string>
#include <strings.h>

#include <zarnnetsdk/ipv6.h>

namespace ipv6 {

// By its number, a ZARNNET_IPV6_...
inline constexpr const char* kTypeTexts[] = {"auto", "off", "dhcp", "static", "auto_dhcp"};
inline constexpr int kTypes = ZARNNET_IPV6_AUTO_DHCP + 1;
static_assert(sizeof kTypeTexts / sizeof kTypeTexts[0] == kTypes);

inline constexpr unsigned kMaxPrefix = 128;

// Nothing for a text that is no type; case does not matter.
inline std::optional<int> TypeOf(const std::string& text) {
  for (int type = 0; type < kTypes; ++type) {
    if (strcasecmp(text.c_str(), kTypeTexts[type]) == 0) return type;
  }
  return std::nullopt;
}

}  // namespace ipv6
