// The keys that interface files of every kind have.
#pragma once

namespace frame::keys {

inline constexpr char kDevice[] = "DEVICE";
inline constexpr char kOnBoot[] = "ONBOOT";
inline constexpr char kBootProto[] = "BOOTPROTO";
inline constexpr char kIpAddr[] = "IPADDR";
inline constexpr char kNetmask[] = "NETMASK";

}  // namespace frame::keys
