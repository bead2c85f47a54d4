// SPDX-License-Identifier: Apache-2.0
// What differs between two texts, as people and patch programs read it.
#pragma once

#include <string>

namespace change {

// Empty when nothing differs. A text that is no text is only said to differ.
std::string UnifiedDiff(const std::string& oldName, const std::string& before,
                        const std::string& newName, const std::string& after);

}  // namespace change
