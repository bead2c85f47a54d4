// The setting that holds an interface's MTU.
#pragma once

#include <string>
#include <string_view>

namespace frame::model {

// Its key in the settings file. Readers of that file know keys of at most 20 characters.
inline std::string MtuKey(std::string_view ifname) {
  constexpr std::size_t kMaxName = 16;
  return std::string(ifname.substr(0, kMaxName)).append("_mtu");
}

}  // namespace frame::model
