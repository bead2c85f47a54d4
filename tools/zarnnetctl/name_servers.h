// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace tool {

// The servers that the resolver uses. Empty where the library does not tell, with its code.
std::optional<std::vector<std::string>> NameServersInUse();

}  // namespace tool
