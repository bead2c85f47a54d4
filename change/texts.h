// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace change {

inline bool Has(const std::vector<std::string>& texts, const std::string& text) {
  return std::find(texts.begin(), texts.end(), text) != texts.end();
}

inline std::string Joined(const std::vector<std::string>& texts, const char* between = " ") {
  std::string joined;
  for (const std::string& text : texts)
    joined += (joined.empty() ? "" : between) + text;
  return joined;
}

}  // namespace change
