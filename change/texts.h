// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

namespace change {

inline std::string Joined(const std::vector<std::string>& texts, const char* between = " ") {
  std::string joined;
  for (const std::string& text : texts)
    joined += (joined.empty() ? "" : between) + text;
  return joined;
}

}  // namespace change
