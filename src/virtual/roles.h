// The part an interface plays in a bridge, and the keys that hold it in the interface's file.
#pragma once

#include <cstdint>

namespace bridge {

inline constexpr std::uint32_t kStandalone = 1;
inline constexpr std::uint32_t kBridge = 2;
inline constexpr std::uint32_t kLocalLan = 3;
inline constexpr std::uint32_t kPort = 4;

inline constexpr char kTypeKey[] = "TYPE";
inline constexpr char kPrimaryKey[] = "PRIMARY";
inline constexpr char kBridgeKey[] = "BRIDGE";

}  // namespace bridge
