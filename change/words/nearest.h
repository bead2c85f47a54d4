// SPDX-License-Identifier: Apache-2.0
// The word that was most likely meant, for the library of changes and the tools around it.
#pragma once

#include <algorithm>
#include <string>
#include <vector>

namespace words {

// How many letters were left out, added, changed or swapped with their neighbour.
inline std::size_t Distance(const std::string& a, const std::string& b) {
  std::vector<std::vector<std::size_t>> table(a.size() + 1, std::vector<std::size_t>(b.size() + 1));
  for (std::size_t i = 0; i <= a.size(); ++i) {
    for (std::size_t j = 0; j <= b.size(); ++j) {
      if (i == 0 || j == 0) {
        table[i][j] = i + j;
        continue;
      }
      const std::size_t change = a[i - 1] == b[j - 1] ? 0 : 1;
      table[i][j] =
          std::min({table[i - 1][j] + 1, table[i][j - 1] + 1, table[i - 1][j - 1] + change});
      if (i > 1 && j > 1 && a[i - 1] == b[j - 2] && a[i - 2] == b[j - 1])
        table[i][j] = std::min(table[i][j], table[i - 2][j - 2] + 1);
    }
  }
  return table[a.size()][b.size()];
}

// ", did you mean 'get'?", or nothing where no word is near.
inline std::string DidYouMean(const std::string& word, const std::vector<std::string>& words) {
  constexpr std::size_t kLongest = 64;  // of a word that is one at all
  if (word.size() > kLongest) return {};
  const std::size_t most = word.size() < 3 ? 0 : word.size() < 6 ? 1 : 2;
  std::string nearest;
  std::size_t least = most + 1;
  for (const std::string& candidate : words) {
    const std::size_t distance = Distance(word, candidate);
    if (distance >= least) continue;
    nearest = candidate;
    least = distance;
  }
  return nearest.empty() ? "" : ", did you mean '" + nearest + "'?";
}

}  // namespace words
