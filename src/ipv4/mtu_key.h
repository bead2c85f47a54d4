// The key under which the settings file has the MTU of an interface.
#pragma once

#include <string>
#include <string_view>

namespace ipv4 {

// Readers of the settings file know keys of at most 20 characters.
inline std::string MtuKey(std::string_view ifname) {
  constexpr std::size_t kMaxName = 16;
  return std::string(ifname.substr(0, kMaxName)).append("_mtu");
}

}  // namespace ipv4
