// SPDX-License-Identifier: Apache-2.0
// One IPv6 address or default route in the running kernel.
#pragma once

#include <string>

namespace ipv6 {

enum class Change { kAdd = 0, kDelete = 1 };  // the numbers are those of the C interface

[[nodiscard]] bool ChangeAddress(Change change, const std::string& ifname,
                                 const std::string& address, unsigned prefix);

// The exit status of the ip command, which tells of a refusal; -1 when it could not be run.
[[nodiscard]] int ChangeDefaultRoute(Change change, const std::string& ifname,
                                     const std::string& gateway);

}  // namespace ipv6
