// The IPv6 keys of an interface file and the configuration types.
#pragma once

#include <zarnnetsdk/ipv6.h>

namespace ipv6 {

inline constexpr char kTypeKey[] = "IPV6INIT";
inline constexpr char kAddressKey[] = "IPV6ADDR";
inline constexpr char kPrefixKey[] = "IPV6PREFIXLENG";
inline constexpr char kGatewayKey[] = "IPV6_DEFAULTGW";
inline constexpr char kAcceptRaKey[] = "IPV6_ACCEPT_RA";

// The type's text, by its number.
inline constexpr const char* kTypeTexts[] = {"auto", "off", "dhcp", "static", "auto_dhcp"};
inline constexpr int kTypes = sizeof kTypeTexts / sizeof kTypeTexts[0];

inline constexpr int kMaxPrefix = 128;

// The commands of ZARNNetIPv6IPAction().
inline constexpr int kAdd = 0;
inline constexpr int kDelete = 1;

}  // namespace ipv6
