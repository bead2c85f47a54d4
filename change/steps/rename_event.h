// SPDX-License-Identifier: Apache-2.0
// The rest of the appliance hears that interfaces take the places of others.
#pragma once

#include <functional>
#include <string>
#include <vector>

namespace change {

// As setters that do so tell it, around the work: before it, and with its result behind it. Without
// the plugin facility nothing is done; what a plugin makes of it is no reason to fail.
bool WhileRenaming(const std::vector<std::string>& oldNames,
                   const std::vector<std::string>& newNames, const std::function<bool()>& work);

}  // namespace change
